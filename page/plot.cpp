// SPDX-License-Identifier: MIT
#include "page/plot.h"

#include <algorithm>
#include <string>

#include "page/plot_axes.h"
#include "view/wording.h"

namespace page {
namespace {

/// A place between two ends, in thousandths.
std::uint64_t placeOf(std::uint64_t value, std::uint64_t start, std::uint64_t end)
{
    return (value - start) * 1000 / std::max<std::uint64_t>(end - start, 1);
}

/// The two axes, and where something is in the picture, in thousandths of it.
struct Axes {
    std::time_t first;
    std::time_t last;
    std::vector<std::uint64_t> sizes;

    [[nodiscard]] std::uint64_t across(std::time_t time) const
    {
        return placeOf(static_cast<std::uint64_t>(time - first), 0,
                       static_cast<std::uint64_t>(last - first));
    }

    [[nodiscard]] std::uint64_t down(std::uint64_t kibibytes) const
    {
        return 1000 - placeOf(kibibytes, sizes.front(), sizes.back());
    }
};

/// Thousandths as "12.5%".
Html percent(std::uint64_t thousandths)
{
    return Html() << Text{std::to_string(thousandths / 10)} << "."
                  << Text{std::to_string(thousandths % 10)} << "%";
}

Html sizeLabels(const Axes& axes)
{
    Html out;
    out << R"(<svg class="sizes">)";
    for (const std::uint64_t size : axes.sizes) {
        out << R"(<text x="100%" y=")" << percent(axes.down(size)) << R"(">)"
            << Text{view::formatKibibytes(size)} << "</text>";
    }
    return out << "</svg>\n";
}

/// What is at the edge does not reach beyond it. Every second label is left out in narrow windows.
Html timeLabels(const Axes& axes, const std::vector<TimeTick>& ticks)
{
    constexpr std::uint64_t kLeft = 50;
    constexpr std::uint64_t kRight = 950;
    Html out;
    out << R"(<svg class="times">)";
    for (std::size_t i = 0; i < ticks.size(); ++i) {
        const std::uint64_t x = axes.across(ticks[i].time);
        out << R"(<text class=")"
            << (x < kLeft    ? Literal("start")
                : x > kRight ? Literal("end")
                             : Literal("middle"))
            << (i % 2 == 1 ? Literal(" second") : Literal("")) << R"(" x=")" << percent(x)
            << R"(" y="50%">)" << Text{ticks[i].label} << "</text>";
    }
    return out << "</svg>\n";
}

Html grid(const Axes& axes, const std::vector<TimeTick>& ticks)
{
    Html out;
    for (const std::uint64_t size : axes.sizes) {
        const Html y = percent(axes.down(size));
        out << R"(<line x1="0" x2="100%" y1=")" << y << R"(" y2=")" << y << R"("/>)";
    }
    for (const TimeTick& tick : ticks) {
        const Html x = percent(axes.across(tick.time));
        out << R"(<line class="tick" x1=")" << x << R"(" x2=")" << x << R"(" y1="100%" y2="97%"/>)";
    }
    return out << "\n";
}

Html line(const Axes& axes, const std::vector<PlotPoint>& points)
{
    std::string pairs;
    for (const PlotPoint& point : points) {
        pairs += pairs.empty() ? "" : " ";
        pairs += std::to_string(axes.across(point.time)) + "," +
                 std::to_string(axes.down(point.kibibytes));
    }
    return Html() << R"(<svg viewBox="0 0 1000 1000" preserveAspectRatio="none"><polyline points=")"
                  << Text{pairs} << R"("/></svg>)"
                  << "\n";
}

Html marks(const Axes& axes, const std::vector<PlotPoint>& points)
{
    Html out;
    for (const PlotPoint& point : points) {
        out << R"(<circle cx=")" << percent(axes.across(point.time)) << R"(" cy=")"
            << percent(axes.down(point.kibibytes)) << R"(" r="3"/>)";
    }
    return out << "\n";
}

} // namespace

Html plot(const std::vector<PlotPoint>& points, std::time_t first, std::time_t last,
          Literal describedBy)
{
    const auto [least, most] = std::ranges::minmax_element(points, {}, &PlotPoint::kibibytes);
    const Axes axes = {first, last, sizeTicks(least->kibibytes, most->kibibytes)};
    const std::vector<TimeTick> ticks = timeTicks(first, last);
    return Html() << R"(<div class="plot" role="img" aria-labelledby=")" << describedBy << "\">\n"
                  << sizeLabels(axes) << "<svg class=\"area\">\n"
                  << grid(axes, ticks) << line(axes, points) << marks(axes, points) << "</svg>\n"
                  << timeLabels(axes, ticks) << "</div>\n";
}

} // namespace page
