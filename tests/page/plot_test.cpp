// SPDX-License-Identifier: MIT
#include "page/plot.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using page::plot;

constexpr std::time_t kDay = 86400;
constexpr std::time_t kSunday = 1795305600; // 2026-11-22 00:00:00 UTC

TEST(Plot, hasAxesALineAndMarks)
{
    EXPECT_EQ(plot({{kSunday - 4 * kDay, 0}, {kSunday - 2 * kDay, 250}, {kSunday - kDay, 400}},
                   kSunday - 4 * kDay, kSunday, "words")
                  .text(),
              R"(<div class="plot" role="img" aria-labelledby="words">
<svg class="sizes"><text x="100%" y="100.0%">0 KB</text><text x="100%" y="75.0%">100 KB</text><text x="100%" y="50.0%">200 KB</text><text x="100%" y="25.0%">300 KB</text><text x="100%" y="0.0%">400 KB</text></svg>
<svg class="area">
<line x1="0" x2="100%" y1="100.0%" y2="100.0%"/><line x1="0" x2="100%" y1="75.0%" y2="75.0%"/><line x1="0" x2="100%" y1="50.0%" y2="50.0%"/><line x1="0" x2="100%" y1="25.0%" y2="25.0%"/><line x1="0" x2="100%" y1="0.0%" y2="0.0%"/><line class="tick" x1="0.0%" x2="0.0%" y1="100%" y2="97%"/><line class="tick" x1="25.0%" x2="25.0%" y1="100%" y2="97%"/><line class="tick" x1="50.0%" x2="50.0%" y1="100%" y2="97%"/><line class="tick" x1="75.0%" x2="75.0%" y1="100%" y2="97%"/><line class="tick" x1="100.0%" x2="100.0%" y1="100%" y2="97%"/>
<svg viewBox="0 0 1000 1000" preserveAspectRatio="none"><polyline points="0,1000 500,375 750,0"/></svg>
<circle cx="0.0%" cy="100.0%" r="3"/><circle cx="50.0%" cy="37.5%" r="3"/><circle cx="75.0%" cy="0.0%" r="3"/>
</svg>
<svg class="times"><text class="start" x="0.0%" y="50%">18 Nov</text><text class="middle second" x="25.0%" y="50%">19 Nov</text><text class="middle" x="50.0%" y="50%">20 Nov</text><text class="middle second" x="75.0%" y="50%">21 Nov</text><text class="end" x="100.0%" y="50%">22 Nov</text></svg>
</div>
)");
}

TEST(Plot, oneEntryIsAMark)
{
    EXPECT_EQ(plot({{kSunday - 1, 1}}, kSunday - 2, kSunday, "a").text(),
              R"(<div class="plot" role="img" aria-labelledby="a">
<svg class="sizes"><text x="100%" y="100.0%">0 KB</text><text x="100%" y="0.0%">1 KB</text></svg>
<svg class="area">
<line x1="0" x2="100%" y1="100.0%" y2="100.0%"/><line x1="0" x2="100%" y1="0.0%" y2="0.0%"/><line class="tick" x1="100.0%" x2="100.0%" y1="100%" y2="97%"/>
<svg viewBox="0 0 1000 1000" preserveAspectRatio="none"><polyline points="500,0"/></svg>
<circle cx="50.0%" cy="0.0%" r="3"/>
</svg>
<svg class="times"><text class="end" x="100.0%" y="50%">22 Nov</text></svg>
</div>
)");
}

} // namespace
