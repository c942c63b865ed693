// SPDX-License-Identifier: MIT
#include "page/own_tmp.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

class OwnTmp : public root::Test {
  protected:
    void TearDown() override
    {
        EXPECT_EQ(::chmod("/tmp", 0755), 0);
        root::Test::TearDown();
    }
};

TEST_F(OwnTmp, folderOfRootThatOthersCannotWriteToIsClosed)
{
    std::filesystem::create_directory("/tmp/folder");
    const auto isClosedWith = [](mode_t mode) {
        EXPECT_EQ(::chmod("/tmp/folder", mode), 0);
        return page::isClosedToOthers("/tmp/folder");
    };
    EXPECT_TRUE(isClosedWith(0700));
    EXPECT_TRUE(isClosedWith(0755));
    EXPECT_FALSE(isClosedWith(0775));
    EXPECT_FALSE(isClosedWith(01777));
    EXPECT_FALSE(isClosedWith(0757));
}

TEST_F(OwnTmp, whatIsNoFolderIsNotClosed)
{
    root::writeFile("/tmp/file", "");
    std::filesystem::create_directory_symlink("/etc", "/tmp/link");
    for (const char* path : {"/tmp/file", "/tmp/link", "/tmp/none"}) {
        EXPECT_FALSE(page::isClosedToOthers(path)) << path;
    }
}

TEST_F(OwnTmp, closedOneIsTaken)
{
    EXPECT_NO_THROW(page::requireOwnTmp());
}

/// Here root has no right to mount anything.
TEST_F(OwnTmp, openOneIsAFailureIfNoOtherCanBeHad)
{
    ASSERT_EQ(::chmod("/tmp", 01777), 0);
    try {
        page::requireOwnTmp();
        FAIL();
    } catch (const std::runtime_error& failure) {
        EXPECT_EQ(failure.what(),
                  "others can write to /tmp, and a /tmp of the pages' own cannot be had: Operation "
                  "not permitted" +
                      std::string());
    }
    EXPECT_TRUE(page::isClosedToOthers("/run/vokcontrol/tmp"));
}

} // namespace
