// SPDX-License-Identifier: MIT
#include "client/plot.h"

#include <gtest/gtest.h>

namespace {

using client::PlotPoint;
using client::renderPlot;

constexpr std::time_t kDay = 86400;
constexpr std::time_t kStart = 1767571200; // 2026-01-05

TEST(Plot, risesFromTheLeastToTheMost)
{
    std::vector<PlotPoint> points;
    for (std::time_t day = 0; day < 60; ++day) {
        points.push_back({kStart + day * kDay, 1000000 + static_cast<std::uint64_t>(day) * 10000});
    }
    EXPECT_EQ(renderPlot(points),
              "1.5 GB |                                                       *****\n"
              "       |                                               ********\n"
              "       |                                      *********\n"
              "       |                              ********\n"
              "       |                      ********\n"
              "       |             *********\n"
              "       |     ********\n"
              "1.0 GB |*****\n"
              "        2026-01-05                                        2026-03-05\n");
}

TEST(Plot, leavesGapsWhereNothingIsKnown)
{
    EXPECT_EQ(renderPlot({{kStart, 604}, {kStart + 59 * kDay, 5}}), "604 KB |*\n"
                                                                    "       |\n"
                                                                    "       |\n"
                                                                    "       |\n"
                                                                    "       |\n"
                                                                    "       |\n"
                                                                    "       |\n"
                                                                    "  5 KB |" +
                                                                        std::string(59, ' ') +
                                                                        "*\n"
                                                                        "        2026-01-05       "
                                                                        "                         "
                                                                        "        2026-03-05\n");
}

TEST(Plot, isOneLineIfNothingChanges)
{
    EXPECT_EQ(renderPlot({{kStart, 604}, {kStart + 1, 604}}),
              "604 KB |*" + std::string(58, ' ') +
                  "*\n"
                  "        2026-01-05                                        2026-01-05\n");
}

TEST(Plot, takesTheLargestOfAColumn)
{
    std::vector<PlotPoint> points = {{kStart, 100}, {kStart + 1, 900}, {kStart + 2, 500}};
    points.push_back({kStart + 1000 * kDay, 100});
    EXPECT_EQ(renderPlot(points).substr(0, 10), "900 KB |*\n");
}

TEST(Plot, needsTwoPoints)
{
    EXPECT_EQ(renderPlot({}), "");
    EXPECT_EQ(renderPlot({{kStart, 5}}), "");
}

} // namespace
