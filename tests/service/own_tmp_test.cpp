// SPDX-License-Identifier: MIT
//
// What stands in for /tmp has to be the service's own. That it does, and what that keeps out, shows
// the sample appliance (own_tmp_test.sh); here nobody has the right to mount anything.
#include "service/own_tmp.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

namespace fs = std::filesystem;

uid_t user = 0;

} // namespace

/// Stands before the C library's.
extern "C" uid_t geteuid() noexcept
{
    return user;
}

namespace {

const std::string kRun = "/stubs/run";
const std::string kOwn = kRun + "/tmp";

unsigned modeOf(const std::string& path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

std::string complaint(const std::string& reason)
{
    return "cannot have a /tmp of its own: " + reason +
           ". Other accounts can forge the work files in a shared /tmp; to use it anyway: "
           "--shared-tmp";
}

/// Why there is no own /tmp; "" if there is one.
std::string whyNot(const std::string& folder = kRun)
{
    try {
        service::useOwnTmp(folder);
    } catch (const service::NoOwnTmp& failure) {
        return failure.what();
    }
    return "";
}

class OwnTmp : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        fs::permissions("/tmp", fs::perms(01777));
    }

    void TearDown() override
    {
        user = 0;
        fs::permissions("/tmp", fs::perms(0755));
        root::UntracedTest::TearDown();
    }

    static std::string foreign(const std::string& path)
    {
        return complaint(path +
                         " belongs to another account, or others may write to it; remove it");
    }
};

TEST_F(OwnTmp, foldersAreMadeForTheServiceAlone)
{
    EXPECT_EQ(whyNot(), complaint("unsharing mounts: Operation not permitted"));
    EXPECT_EQ(modeOf(kRun), 0700U);
    EXPECT_EQ(modeOf(kOwn), 0700U);
}

TEST_F(OwnTmp, folderThatIsThereIsClosedAndKeepsWhatItHas)
{
    fs::create_directories(kOwn);
    fs::permissions(kOwn, fs::perms(0755));
    root::writeFile(kOwn + "/trace", "traces\n");
    EXPECT_EQ(whyNot(), complaint("unsharing mounts: Operation not permitted"));
    EXPECT_EQ(modeOf(kRun), 0755U);
    EXPECT_EQ(modeOf(kOwn), 0700U);
    EXPECT_EQ(root::readFile(kOwn + "/trace"), "traces\n");
}

TEST_F(OwnTmp, tmpThatIsTheFolderAlreadyIsGood)
{
    fs::permissions("/tmp", fs::perms(0755));
    EXPECT_EQ(whyNot("/"), "");
    EXPECT_EQ(modeOf("/tmp"), 0700U);
}

TEST_F(OwnTmp, linksAndFilesAreNoFolders)
{
    fs::create_directories("/stubs/elsewhere/tmp");
    fs::permissions("/stubs/elsewhere/tmp", fs::perms(0755));
    fs::create_directory_symlink("/stubs/elsewhere", kRun);
    EXPECT_EQ(whyNot(), complaint(kRun + ": Not a directory"));
    fs::remove(kRun);
    fs::create_directory(kRun);
    fs::create_directory_symlink("/stubs/elsewhere/tmp", kOwn);
    EXPECT_EQ(whyNot(), complaint(kOwn + ": Not a directory"));
    EXPECT_EQ(modeOf("/stubs/elsewhere/tmp"), 0755U);
    fs::remove(kOwn);
    root::writeFile(kOwn, "a file");
    EXPECT_EQ(whyNot(), complaint(kOwn + ": Not a directory"));
    EXPECT_EQ(root::readFile(kOwn), "a file");
    fs::remove(kOwn);
    fs::remove(kRun);
    root::writeFile(kRun, "");
    EXPECT_EQ(whyNot(), complaint(kRun + ": Not a directory"));
}

TEST_F(OwnTmp, folderOfOthersIsRefused)
{
    fs::create_directories(kOwn);
    for (const unsigned mode : {0777U, 0720U, 0702U, 01777U}) {
        fs::permissions(kOwn, fs::perms(mode));
        EXPECT_EQ(whyNot(), foreign(kOwn));
        EXPECT_EQ(modeOf(kOwn), mode);
        fs::permissions(kOwn, fs::perms(0700));
        fs::permissions(kRun, fs::perms(mode));
        EXPECT_EQ(whyNot(), foreign(kRun));
        fs::permissions(kRun, fs::perms(0700));
    }
}

TEST_F(OwnTmp, tmpThatOnlyRootCanWriteToIsKeptWithoutTheRightToMount)
{
    for (const unsigned mode : {0755U, 0700U, 01755U}) {
        fs::permissions("/tmp", fs::perms(mode));
        EXPECT_EQ(whyNot(), "") << mode;
        EXPECT_EQ(modeOf("/tmp"), mode);
    }
    for (const unsigned mode : {0775U, 0757U, 01777U}) {
        fs::permissions("/tmp", fs::perms(mode));
        EXPECT_EQ(whyNot(), complaint("unsharing mounts: Operation not permitted")) << mode;
    }
}

TEST_F(OwnTmp, whoIsNotRootHasEverybodysAndSaysSo)
{
    user = 1000;
    testing::internal::CaptureStderr();
    EXPECT_EQ(whyNot(), "");
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        "vokserve: does not run as root, so it uses the shared /tmp, where other accounts can "
        "forge its work files\n");
    EXPECT_FALSE(root::exists(kRun));
}

} // namespace
