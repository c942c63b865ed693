// SPDX-License-Identifier: MIT
#include "page/overview_capacity.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "history/trend.h"
#include "text/translation.h"
#include "view/wording.h"

namespace page {
namespace {

using text::tr;
using view::ShareRow;

/// The class of a part's colour, in the bar and in the legend.
constexpr auto kColours = std::to_array<Literal>({"part1", "part2", "part3", "part4"});

/// A part of the bar.
struct Part {
    Literal colour;
    Html label;
    std::uint64_t size; ///< KiB
};

Html nameOf(const ShareRow& share)
{
    return Html() << "<bdi>" << Text{share.name} << "</bdi>";
}

std::uint64_t sizeOf(const ShareRow& share)
{
    return share.used ? share.used->kibibytes() : 0;
}

std::vector<ShareRow> largestFirst(std::vector<ShareRow> shares)
{
    std::erase_if(shares, [](const ShareRow& share) { return !share.used; });
    std::ranges::stable_sort(shares, std::ranges::greater(), sizeOf);
    return shares;
}

/// The largest shares, and all others as one.
std::vector<Part> shareParts(const std::vector<ShareRow>& all)
{
    const std::vector<ShareRow> shares = largestFirst(all);
    const std::size_t named = std::min(shares.size(), kColours.size());
    std::vector<Part> parts;
    for (std::size_t i = 0; i < named; ++i) {
        parts.push_back({kColours.at(i), nameOf(shares[i]), sizeOf(shares[i])});
    }
    if (named < shares.size()) {
        const std::vector<ShareRow> others(shares.begin() + static_cast<std::ptrdiff_t>(named),
                                           shares.end());
        const std::string label =
            text::fill(text::trn("{} other share", "{} other shares", others.size()),
                       {std::to_string(others.size())});
        parts.push_back({"part5", Html() << Text{label}, view::totalUsed(others)});
    }
    return parts;
}

/// What the disk holds besides, if that is enough to be seen. Sizes of shares are cut off, so a
/// little always remains.
void addRest(const view::Capacity& capacity, std::uint64_t shares, std::vector<Part>& parts)
{
    constexpr std::uint64_t kLeastPart = 100;
    const std::uint64_t rest = capacity.used - std::min(capacity.used, shares);
    if (rest > capacity.total / kLeastPart) {
        parts.push_back({"part6", Html() << Text{tr("Other data")}, rest});
    }
}

// ---- Markup -----------------------------------------------------------------------------------

Html rectangle(const Part& part, std::uint64_t start, std::uint64_t width)
{
    return Html() << R"(<rect class=")" << part.colour << R"(" x=")" << Text{std::to_string(start)}
                  << R"(" width=")" << Text{std::to_string(width)} << R"(" height="10"/>)";
}

/// The text beside it says the same, so that is its text, too.
Html bar(const std::vector<Part>& parts, std::uint64_t whole)
{
    constexpr std::uint64_t kSteps = 1000;
    constexpr std::uint64_t kSmallest = 4; // can just be seen
    constexpr std::uint64_t kGap = 2;
    Html out;
    out << R"(<svg class="stack" role="img" aria-labelledby="capacity" viewBox="0 0 1000 10" )"
        << R"(preserveAspectRatio="none">)";
    std::uint64_t start = 0;
    for (const Part& part : parts) {
        if (part.size == 0) {
            continue;
        }
        const std::uint64_t width =
            std::max(part.size * kSteps / std::max(whole, part.size), kSmallest);
        out << rectangle(part, start, width - kGap);
        start += width;
    }
    out << "</svg>\n";
    return out;
}

Html legendItem(Literal colour, const Html& label, std::uint64_t size)
{
    return Html() << R"(<li><span class="swatch )" << colour << R"("></span>)" << label << " "
                  << Text{view::formatKibibytes(size)} << "</li>\n";
}

Html legend(const std::vector<Part>& parts, const std::optional<view::Capacity>& capacity)
{
    Html out;
    out << R"(<ul class="legend">
)";
    for (const Part& part : parts) {
        out << legendItem(part.colour, part.label, part.size);
    }
    if (capacity) {
        out << legendItem("rest", Html() << Text{tr("Free")}, capacity->free);
    }
    out << "</ul>\n";
    return out;
}

std::string sentence(const view::Situation& situation)
{
    if (situation.capacity) {
        return view::formatCapacity(*situation.capacity);
    }
    return text::fill(tr("{} in shares; the disk's capacity is not known"),
                      {view::formatKibibytes(view::totalUsed(situation.status.shares))});
}

Html forecast(const std::optional<double>& daysUntilFull)
{
    if (!daysUntilFull) {
        return {};
    }
    const std::string words = text::fill(tr("If it goes on filling like this, the disk is {}."),
                                         {history::formatForecast(*daysUntilFull)});
    return Html() << R"(<p class="forecast">)" << Text{words} << "</p>\n";
}

} // namespace

Html capacityCard(const view::Situation& situation, const std::optional<double>& daysUntilFull,
                  const Html& action)
{
    const std::uint64_t shares = view::totalUsed(situation.status.shares);
    std::vector<Part> parts = shareParts(situation.status.shares);
    if (situation.capacity) {
        addRest(*situation.capacity, shares, parts);
    }
    const std::uint64_t total = situation.capacity ? situation.capacity->total : 0;
    return Html() << R"(<section class="card" aria-labelledby="capacity">
<div class="head"><h2 id="capacity">)"
                  << Text{sentence(situation)} << "</h2>\n"
                  << action << "</div>\n"
                  << bar(parts, std::max(total, shares)) << legend(parts, situation.capacity)
                  << forecast(daysUntilFull) << "</section>\n";
}

} // namespace page
