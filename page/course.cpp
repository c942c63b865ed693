// SPDX-License-Identifier: MIT
#include "page/course.h"

#include <algorithm>
#include <cstdint>

#include "history/trend.h"
#include "page/past.h"
#include "text/translation.h"

namespace page {
namespace {

using history::Point;
using Points = std::vector<Point>;

constexpr std::int64_t kWidth = 300;
constexpr std::int64_t kHeight = 40;
constexpr std::int64_t kMargin = 3; // for the width of the line

Points measuredSince(const Points& points, std::time_t since)
{
    Points measured;
    std::ranges::copy_if(points, std::back_inserter(measured), [since](const Point& point) {
        return point.used && point.published >= since;
    });
    return measured;
}

std::int64_t sizeOf(const Point& point)
{
    return static_cast<std::int64_t>(point.used->kibibytes());
}

/// Where a size is, from the top. Changes of less than a tenth of a share do not fill the height:
/// they are not to look like much.
struct Scale {
    std::int64_t middle; ///< twice the size in the middle
    std::int64_t range;

    [[nodiscard]] std::int64_t at(std::int64_t size) const
    {
        return kHeight / 2 - (2 * size - middle) * (kHeight - 2 * kMargin) / (2 * range);
    }
};

Scale scaleOf(const Points& points)
{
    const auto [least, most] = std::ranges::minmax_element(points, {}, sizeOf);
    const std::int64_t low = sizeOf(*least);
    const std::int64_t high = sizeOf(*most);
    return {low + high, std::max({high - low, high / 10, std::int64_t{1}})};
}

/// "10,20 20,19 "
std::string pairsOf(const Points& points, std::time_t start, std::time_t end)
{
    const Scale scale = scaleOf(points);
    std::string pairs;
    for (const Point& point : points) {
        const std::int64_t x = std::int64_t{point.published - start} * kWidth / (end - start);
        pairs += pairs.empty() ? "" : " ";
        pairs += std::to_string(x) + "," + std::to_string(scale.at(sizeOf(point)));
    }
    return pairs;
}

} // namespace

// The entry that the last one is compared with may be two days older than is said.
std::string wordChange(const Points& points, std::chrono::days most)
{
    constexpr std::chrono::days kTolerance{2};
    const std::time_t last = points.empty() ? 0 : points.back().published;
    const Points measured = measuredSince(points, daysBefore(last, most + kTolerance));
    const std::chrono::days days = history::knownDays(measured, most);
    if (days < std::chrono::days(1)) {
        return "";
    }
    const auto change = history::changeOver(measured, days);
    if (!change) {
        return "";
    }
    const auto count = static_cast<std::uint64_t>(days.count());
    return text::fill(text::trn("{1} in {2} day", "{1} in {2} days", count),
                      {history::formatChange(*change), std::to_string(count)});
}

Html courseOf(const Points& points, std::time_t now)
{
    const std::time_t start = daysBefore(now, kCourseDays);
    const Points measured = measuredSince(points, start);
    if (history::knownDays(measured, kCourseDays) < std::chrono::days(1)) {
        return {};
    }
    return Html() << R"(<svg class="course" viewBox="0 0 300 40" preserveAspectRatio="none" )"
                  << R"(aria-hidden="true"><polyline points=")"
                  << Text{pairsOf(measured, start, now)} << R"("/></svg> <span class="quiet">)"
                  << Text{wordChange(points, kCourseDays)} << "</span>";
}

} // namespace page
