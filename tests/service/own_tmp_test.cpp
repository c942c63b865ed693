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
const std::string kSocket = "/run/vokcontrol.sock";

unsigned modeOf(const std::string& path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

std::string complaint(const std::string& reason)
{
    return "cannot have a /tmp of its own: " + reason +
           ". Work files in everybody's /tmp can be forged; --shared-tmp uses it all the same";
}

/// Why there is no own /tmp; "" if there is one.
std::string whyNot(const std::string& socket = kSocket, const std::string& folder = kRun)
{
    try {
        service::useOwnTmp(socket, folder);
    } catch (const service::NoOwnTmp& failure) {
        return failure.what();
    }
    return "";
}

class OwnTmp : public root::UntracedTest {
  protected:
    void TearDown() override
    {
        user = 0;
        root::UntracedTest::TearDown();
    }

    static std::string foreign(const std::string& path)
    {
        return complaint(path + " belongs to somebody else, or others may write to it; remove it");
    }
};

TEST_F(OwnTmp, foldersAreMadeForTheServiceAlone)
{
    EXPECT_EQ(whyNot(), complaint("mounts: Operation not permitted"));
    EXPECT_EQ(modeOf(kRun), 0700U);
    EXPECT_EQ(modeOf(kOwn), 0700U);
}

TEST_F(OwnTmp, folderThatIsThereIsClosedAndKeepsWhatItHas)
{
    fs::create_directories(kOwn);
    fs::permissions(kOwn, fs::perms(0755));
    root::writeFile(kOwn + "/trace", "traces\n");
    EXPECT_EQ(whyNot(), complaint("mounts: Operation not permitted"));
    EXPECT_EQ(modeOf(kRun), 0755U);
    EXPECT_EQ(modeOf(kOwn), 0700U);
    EXPECT_EQ(root::readFile(kOwn + "/trace"), "traces\n");
}

TEST_F(OwnTmp, tmpThatIsTheFolderAlreadyIsGood)
{
    fs::permissions("/tmp", fs::perms(0755));
    EXPECT_EQ(whyNot(kSocket, "/"), "");
    EXPECT_EQ(modeOf("/tmp"), 0700U);
    fs::permissions("/tmp", fs::perms(0755));
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

TEST_F(OwnTmp, socketInTmpIsRefused)
{
    fs::create_directory_symlink("/tmp", "/stubs/link");
    for (const char* socket : {"/tmp/socket", "/tmp/a/b", "//tmp/../tmp/s", "/stubs/link/socket"}) {
        EXPECT_EQ(whyNot(socket),
                  complaint("nobody would find the socket " + std::string(socket) + " there"));
        EXPECT_FALSE(root::exists(kRun));
    }
    EXPECT_EQ(whyNot("/tmpx/socket"), complaint("mounts: Operation not permitted"));
}

TEST_F(OwnTmp, whoIsNotRootHasEverybodysAndSaysSo)
{
    user = 1000;
    testing::internal::CaptureStderr();
    EXPECT_EQ(whyNot("/tmp/socket"), "");
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        "vokserve: runs without root's rights, and so with everybody's /tmp, where work files "
        "can be forged\n");
    EXPECT_FALSE(root::exists(kRun));
}

} // namespace
