// SPDX-License-Identifier: MIT
#include "view/share_folders.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using view::listShareFolders;
using Strings = std::vector<std::string>;

class ShareFolders : public root::UntracedTest {};

TEST_F(ShareFolders, areTheFoldersInOrder)
{
    for (const char* name : {"b", "a b", "\xC3\x89t\xC3\xA9", "-x", "A", "\xE5\x86\x99"}) {
        std::filesystem::create_directory("/share/" + std::string(name));
    }
    EXPECT_EQ(listShareFolders(),
              (Strings{"-x", "A", "a b", "b", "\xC3\x89t\xC3\xA9", "\xE5\x86\x99"}));
}

TEST_F(ShareFolders, areNothingElse)
{
    EXPECT_EQ(listShareFolders(), Strings{});
    for (const char* name : {".hidden", "lost+found", "Shown"}) {
        std::filesystem::create_directory("/share/" + std::string(name));
    }
    root::writeFile("/share/file", "");
    std::filesystem::create_symlink("/share/Shown", "/share/link");
    EXPECT_EQ(listShareFolders(), Strings{"Shown"});
}

/// An external share is a file system of its own, as /etc/pelconfig is here.
TEST_F(ShareFolders, areOnTheSameFileSystem)
{
    std::filesystem::create_directory("/etc/inside");
    const Strings all = listShareFolders("/etc").value();
    std::filesystem::remove("/etc/inside");
    EXPECT_NE(std::find(all.begin(), all.end(), "inside"), all.end());
    EXPECT_EQ(std::find(all.begin(), all.end(), "pelconfig"), all.end());
}

TEST_F(ShareFolders, areNotKnownIfTheyCannotBeRead)
{
    EXPECT_EQ(listShareFolders("/nowhere"), std::nullopt);
    root::writeFile("/tmp/file", "");
    EXPECT_EQ(listShareFolders("/tmp/file"), std::nullopt);
}

} // namespace
