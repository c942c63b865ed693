// SPDX-License-Identifier: MIT
#include "page/overview_capacity.h"

#include <gtest/gtest.h>

namespace {

using page::Html;
using view::Capacity;
using view::ShareRow;
using view::Situation;
using view::Space;

constexpr std::uint64_t kGigabyte = 1000000;

ShareRow share(const std::string& name, std::optional<Space> used)
{
    return {.name = name, .used = used, .backupState = {}, .backupDay = {}};
}

std::string card(const std::vector<ShareRow>& shares, std::optional<Capacity> capacity,
                 const Html& action = {}, std::optional<double> daysUntilFull = {})
{
    Situation situation;
    situation.status.shares = shares;
    situation.capacity = capacity;
    return page::capacityCard(situation, daysUntilFull, action).text();
}

TEST(CapacityCard, showsTheLargestSharesAndAllElse)
{
    const Capacity capacity = {500 * kGigabyte, 312 * kGigabyte, 180 * kGigabyte};
    EXPECT_EQ(
        card({share("a", Space{1, 'G'}), share("<b>", Space{50, 'G'}), share("none", std::nullopt),
              share("empty", Space{0, 'K'}), share("c", Space{100, 'G'}), share("d", Space{2, 'G'}),
              share("e", Space{3, 'G'}), share("f", Space{500, 'M'})},
             capacity, Html() << "<form></form>\n"),
        R"(<section class="card" aria-labelledby="capacity">
<div class="head"><h2 id="capacity">312 of 500 GB used, 180 GB free</h2>
<form></form>
</div>
<svg class="stack" role="img" aria-labelledby="capacity" viewBox="0 0 1000 10" preserveAspectRatio="none"><rect class="part1" x="0" width="198" height="10"/><rect class="part2" x="200" width="98" height="10"/><rect class="part3" x="300" width="4" height="10"/><rect class="part4" x="306" width="2" height="10"/><rect class="part5" x="310" width="2" height="10"/><rect class="part6" x="314" width="309" height="10"/></svg>
<ul class="legend">
<li><span class="swatch part1"></span><bdi>c</bdi> 100 GB</li>
<li><span class="swatch part2"></span><bdi>&lt;b&gt;</bdi> 50 GB</li>
<li><span class="swatch part3"></span><bdi>e</bdi> 3.0 GB</li>
<li><span class="swatch part4"></span><bdi>d</bdi> 2.0 GB</li>
<li><span class="swatch part5"></span>3 other shares 1.5 GB</li>
<li><span class="swatch part6"></span>Other data 155 GB</li>
<li><span class="swatch rest"></span>Free 180 GB</li>
</ul>
</section>
)");
}

TEST(CapacityCard, doesWithoutTheCapacity)
{
    EXPECT_EQ(card({share("a", Space{3, 'M'}), share("b", Space{1, 'M'})}, std::nullopt),
              R"(<section class="card" aria-labelledby="capacity">
<div class="head"><h2 id="capacity">4.0 MB in shares; the disk&#39;s capacity is not known</h2>
</div>
<svg class="stack" role="img" aria-labelledby="capacity" viewBox="0 0 1000 10" preserveAspectRatio="none"><rect class="part1" x="0" width="748" height="10"/><rect class="part2" x="750" width="248" height="10"/></svg>
<ul class="legend">
<li><span class="swatch part1"></span><bdi>a</bdi> 3.0 MB</li>
<li><span class="swatch part2"></span><bdi>b</bdi> 1.0 MB</li>
</ul>
</section>
)");
}

TEST(CapacityCard, saysWhenTheDiskWillBeFull)
{
    const std::string without = card({share("a", Space{3, 'M'})}, std::nullopt);
    const std::string with = card({share("a", Space{3, 'M'})}, std::nullopt, {}, 152);
    const std::string end = "</section>\n";
    EXPECT_EQ(with, without.substr(0, without.size() - end.size()) +
                        "<p class=\"forecast\">If it goes on filling like this, the disk is full "
                        "in about 5 months.</p>\n" +
                        end);
}

TEST(CapacityCard, emptyShareIsNamedButNotDrawn)
{
    EXPECT_EQ(card({share("a", Space{0, 'K'})}, std::nullopt),
              R"(<section class="card" aria-labelledby="capacity">
<div class="head"><h2 id="capacity">0 KB in shares; the disk&#39;s capacity is not known</h2>
</div>
<svg class="stack" role="img" aria-labelledby="capacity" viewBox="0 0 1000 10" preserveAspectRatio="none"></svg>
<ul class="legend">
<li><span class="swatch part1"></span><bdi>a</bdi> 0 KB</li>
</ul>
</section>
)");
}

TEST(CapacityCard, barIsNeverLongerThanItIs)
{
    // The status is older than the disk's figures: much has been deleted since.
    const Capacity capacity = {10 * kGigabyte, 1 * kGigabyte, 9 * kGigabyte};
    EXPECT_EQ(card({share("a", Space{20, 'G'})}, capacity),
              R"(<section class="card" aria-labelledby="capacity">
<div class="head"><h2 id="capacity">1.0 of 10 GB used, 9.0 GB free</h2>
</div>
<svg class="stack" role="img" aria-labelledby="capacity" viewBox="0 0 1000 10" preserveAspectRatio="none"><rect class="part1" x="0" width="998" height="10"/></svg>
<ul class="legend">
<li><span class="swatch part1"></span><bdi>a</bdi> 20 GB</li>
<li><span class="swatch rest"></span>Free 9.0 GB</li>
</ul>
</section>
)");
}

} // namespace
