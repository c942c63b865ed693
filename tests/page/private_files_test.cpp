// SPDX-License-Identifier: MIT
#include "page/private_files.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

constexpr const char* kFolder = "/tmp/kept";
constexpr const char* kFile = "/tmp/kept/file";

class PrivateFiles : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        page::requirePrivateFolder(kFolder);
    }

    static unsigned modeOf(const char* path)
    {
        struct stat found = {};
        EXPECT_EQ(::lstat(path, &found), 0);
        return found.st_mode & 07777U;
    }

    static std::string complaintOf(void (*work)())
    {
        try {
            work();
        } catch (const std::runtime_error& failure) {
            return failure.what();
        }
        return "";
    }
};

const std::string kNotPrivate = " is not private to the account that the pages run as";

TEST_F(PrivateFiles, folderIsForItsOwnerAlone)
{
    EXPECT_EQ(modeOf(kFolder), 0700U);
    EXPECT_NO_THROW(page::requirePrivateFolder(kFolder)) << "one that is there is taken";
}

TEST_F(PrivateFiles, foldersOfOthersAreNotBelieved)
{
    const auto require = [] { page::requirePrivateFolder(kFolder); };
    ASSERT_EQ(::chmod(kFolder, 0750), 0);
    EXPECT_EQ(complaintOf(require), kFolder + kNotPrivate);
    ASSERT_EQ(::rmdir(kFolder), 0);
    ASSERT_EQ(::mkdir("/tmp/elsewhere", 0700), 0);
    ASSERT_EQ(::symlink("/tmp/elsewhere", kFolder), 0);
    EXPECT_EQ(complaintOf(require), kFolder + kNotPrivate);
    EXPECT_EQ(complaintOf([] { page::requirePrivateFolder("/tmp/none/kept"); }),
              "cannot make /tmp/none/kept: " + root::kNotThere);
}

TEST_F(PrivateFiles, fileIsReplacedAsAWhole)
{
    page::replacePrivateFile(kFile, "a long content");
    page::replacePrivateFile(kFile, "short");
    EXPECT_EQ(page::readPrivateFile(kFile), "short");
    EXPECT_EQ(modeOf(kFile), 0600U);
    EXPECT_EQ(root::list(kFolder), std::vector<std::string>{"file"});
}

TEST_F(PrivateFiles, whatAKilledProcessLeftDoesNotMatter)
{
    root::writeFile("/tmp/kept/file.new", "half");
    page::replacePrivateFile(kFile, "whole");
    EXPECT_EQ(page::readPrivateFile(kFile), "whole");
}

TEST_F(PrivateFiles, missingFileHasNoContent)
{
    EXPECT_EQ(page::readPrivateFile(kFile), std::nullopt);
}

TEST_F(PrivateFiles, whatOthersCouldHaveWrittenIsNotBelieved)
{
    const auto read = [] { (void)page::readPrivateFile(kFile); };
    root::writeFile(kFile, "");
    ASSERT_EQ(::chmod(kFile, 0620), 0);
    EXPECT_EQ(complaintOf(read), kFile + kNotPrivate);
    ASSERT_EQ(::unlink(kFile), 0);
    ASSERT_EQ(::mkfifo(kFile, 0600), 0);
    EXPECT_EQ(complaintOf(read), kFile + kNotPrivate);
    ASSERT_EQ(::unlink(kFile), 0);
    page::replacePrivateFile("/tmp/kept/other", "");
    ASSERT_EQ(::symlink("/tmp/kept/other", kFile), 0);
    EXPECT_EQ(complaintOf(read),
              std::string("cannot open ") + kFile + ": Too many levels of symbolic links");
    EXPECT_EQ(complaintOf([] { (void)page::openPrivateFile(kFile); }),
              std::string("cannot open ") + kFile + ": Too many levels of symbolic links");
}

TEST_F(PrivateFiles, lockKeepsOthersOutUntilItIsClosed)
{
    const auto isFree = [] {
        const page::Descriptor other = page::openPrivateFile(kFile);
        return ::flock(other.number(), LOCK_EX | LOCK_NB) == 0;
    };
    {
        const page::Descriptor lock = page::lockPrivateFile(kFile);
        EXPECT_EQ(modeOf(kFile), 0600U);
        EXPECT_FALSE(isFree());
    }
    EXPECT_TRUE(isFree());
}

} // namespace
