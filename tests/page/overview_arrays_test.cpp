// SPDX-License-Identifier: MIT
#include "page/overview_arrays.h"

#include <gtest/gtest.h>

namespace {

using view::ArrayTask;
using view::DiskArray;

/// The card with these items in it.
std::string card(const std::string& items)
{
    return "<section class=\"card\" aria-labelledby=\"arrays\">\n"
           "<h2 id=\"arrays\">Disk health</h2>\n"
           "<ul class=\"devices\">" +
           items + "\n</ul>\n</section>\n";
}

std::string item(const std::string& name, const std::string& level, const std::string& rest)
{
    return "\n<li><div><h3><bdi>" + name + "</bdi> <span class=\"quiet\">" + level +
           "</span></h3><p>" + rest + "</div></li>";
}

std::string badge(const std::string& colour, const std::string& sign, const std::string& word)
{
    return "<span class=\"badge " + colour + "\"><span aria-hidden=\"true\">" + sign + "</span> " +
           word + "</span>";
}

const std::string kHealthy = badge("recent", "&#10003;", "Healthy");
const std::string kDegraded = badge("old", "&#10005;", "Degraded");

DiskArray mirror(unsigned working)
{
    return {.name = "md0", .level = "raid1", .isRunning = true, .wanted = 2, .working = working};
}

DiskArray busy(unsigned working, const ArrayTask& task)
{
    DiskArray array = mirror(working);
    array.task = task;
    return array;
}

TEST(ArraysCard, isNotThereWithoutArrays)
{
    EXPECT_EQ(page::arraysCard({}).text(), "");
}

TEST(ArraysCard, saysHowEachArrayIs)
{
    DiskArray failed = mirror(2);
    failed.failed = {"sdc1"};
    const DiskArray stopped = {.name = "md<1>"};
    const DiskArray striped = {.name = "md2", .level = "raid0", .isRunning = true};
    EXPECT_EQ(page::arraysCard({mirror(2), mirror(1), failed, stopped, striped}).text(),
              card(item("md0", "raid1", kHealthy + " 2 of 2 disks at work.</p>") +
                   item("md0", "raid1", kDegraded + " 1 of 2 disks at work.</p>") +
                   item("md0", "raid1",
                        badge("ageing", "!", "Disk failed") + " 2 of 2 disks at work.</p>") +
                   item("md&lt;1&gt;", "", badge("old", "&#10005;", "Stopped") + "</p>") +
                   item("md2", "raid0", kHealthy + "</p>")));
}

TEST(ArraysCard, showsHowFarATaskIs)
{
    using enum ArrayTask::Kind;
    EXPECT_EQ(
        page::arraysCard({busy(1, {.kind = kRebuild, .percent = 12, .minutes = 128}),
                          busy(2, {.kind = kCheck, .percent = 8}),
                          busy(2, {.kind = kReshape, .isWaiting = true})})
            .text(),
        card(item("md0", "raid1",
                  badge("ageing", "!", "Rebuilding") +
                      " 1 of 2 disks at work.</p><p class=\"quiet\" id=\"task-0\">Rebuilding: 12 % "
                      "done, about 128 minutes left.</p><progress aria-labelledby=\"task-0\" "
                      "max=\"100\" value=\"12\"></progress>") +
             item("md0", "raid1",
                  kHealthy + " 2 of 2 disks at work.</p><p class=\"quiet\" id=\"task-1\">Being "
                             "checked: 8 % done.</p><progress aria-labelledby=\"task-1\" "
                             "max=\"100\" value=\"8\"></progress>") +
             item("md0", "raid1",
                  kHealthy + " 2 of 2 disks at work.</p><p class=\"quiet\" id=\"task-2\">Being "
                             "reshaped: waits for its turn.</p>")));
}

} // namespace
