// SPDX-License-Identifier: MIT
#include "view/backup_report.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using view::BackupReport;
using view::findReport;

class Report : public root::UntracedTest {
  protected:
    static BackupReport reportOf(const std::string& content)
    {
        root::writeFile("/etc/pelconfig/vokcontrol/__bksts/__bkMedia", content);
        return findReport("Media");
    }
};

TEST_F(Report, isNoneWithoutAFile)
{
    EXPECT_EQ(findReport("Media"), BackupReport::kNone);
    EXPECT_EQ(findReport(std::string(300, 'x')), BackupReport::kNone);
    std::filesystem::remove_all(root::kStatusFolder);
    EXPECT_EQ(findReport("Media"), BackupReport::kNone);
}

TEST_F(Report, isNewerIfTheNextCollectionWillReadIt)
{
    EXPECT_EQ(reportOf("111182026"), BackupReport::kNewer);
    EXPECT_EQ(reportOf("111182026\n"), BackupReport::kNewer);
    EXPECT_EQ(reportOf("1111820269 and more"), BackupReport::kNewer);
}

TEST_F(Report, isUnreadableOtherwise)
{
    for (const char* content :
         {"", "1", "11118202", "11118202\n", "x11182026", "100000000", "113182026", "1111x2026"}) {
        EXPECT_EQ(reportOf(content), BackupReport::kUnreadable) << content;
    }
    std::filesystem::permissions("/etc/pelconfig/vokcontrol/__bksts/__bkMedia",
                                 std::filesystem::perms(0));
    EXPECT_EQ(findReport("Media"), BackupReport::kUnreadable);
}

/// No share's name leads out of the folder.
TEST_F(Report, isNoFileOfAnotherFolder)
{
    std::filesystem::create_directory("/etc/pelconfig/vokcontrol/__bksts/__bka");
    root::writeFile("/etc/pelconfig/secret", "111182026");
    EXPECT_EQ(findReport("a/../../../secret"), BackupReport::kNone);
}

} // namespace
