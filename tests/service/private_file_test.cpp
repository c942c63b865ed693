// SPDX-License-Identifier: MIT
#include "service/private_file.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace fs = std::filesystem;

namespace {

using service::describeFile;
using service::inspect;
using service::kPrivateFile;
using service::kSavedFile;
using service::Links;
using service::Plan;
using service::Repair;
using service::repairPrivateFile;
using service::Seen;

const std::string kNew = "the new one";
const std::string kPath = "/stubs/something";
const std::string kDigestOfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

// ---- What stands at a path --------------------------------------------------------------------

class FileDescription : public root::Test {};

TEST_F(FileDescription, nothingIsNone)
{
    EXPECT_EQ(describeFile(kPath, Links::kAsTheyAre), "none");
    EXPECT_EQ(describeFile(kPath, Links::kFollowed), "none");
}

TEST_F(FileDescription, regularFileHasItsSizeAndDigest)
{
    root::writeFile(kPath, "abc");
    EXPECT_EQ(describeFile(kPath, Links::kAsTheyAre), "file 3 " + kDigestOfAbc);
    root::writeFile(kPath, "");
    EXPECT_EQ(describeFile(kPath, Links::kAsTheyAre),
              "file 0 e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST_F(FileDescription, linkHasItsTargetOrIsFollowed)
{
    root::writeFile("/stubs/two\nlines", "abc");
    fs::create_symlink("two\nlines", kPath);
    EXPECT_EQ(describeFile(kPath, Links::kAsTheyAre), "link two lines") << "in one line";
    EXPECT_EQ(describeFile(kPath, Links::kFollowed), "file 3 " + kDigestOfAbc);
    EXPECT_EQ(inspect(kPath), (Seen{"link two lines", "file 3 " + kDigestOfAbc}));
}

TEST_F(FileDescription, linkToNothingIsALinkAndNoFile)
{
    fs::create_symlink("nowhere", kPath);
    EXPECT_EQ(inspect(kPath), (Seen{"link nowhere", "none"}));
}

TEST_F(FileDescription, folderIsNoFile)
{
    fs::create_directory(kPath);
    fs::permissions(kPath, fs::perms(0700));
    EXPECT_EQ(inspect(kPath), (Seen{"other 16832 0", "other 16832 0"}));
}

// ---- A repair ---------------------------------------------------------------------------------

class FileRepair : public root::Test {
  protected:
    /// What an upload finds where a file with this content stands.
    static Plan planOver(const std::string& former)
    {
        root::writeFile(kPrivateFile, former);
        return {inspect(kPrivateFile), kNew};
    }

    static void expectRepaired(const Plan& plan, Repair repair, const std::string& content)
    {
        EXPECT_EQ(repairPrivateFile(plan), repair);
        EXPECT_EQ(root::readFile(kPrivateFile), content);
        EXPECT_EQ(root::list("/etc/pelconfig/vokcontrol"),
                  (std::vector<std::string>{"__bksts", "vokcontrol-private.txt"}));
        EXPECT_FALSE(root::exists(kSavedFile));
    }
};

TEST_F(FileRepair, formerFileThatWasNotTouchedStays)
{
    const Plan plan = planOver("old");
    root::writeFile(kSavedFile, "ol");
    expectRepaired(plan, Repair::kFormerStayed, "old");
}

TEST_F(FileRepair, savedFileComesBackForAPart)
{
    const Plan plan = planOver("old");
    root::writeFile(kSavedFile, "old");
    root::writeFile(kPrivateFile, "the n");
    expectRepaired(plan, Repair::kFormerBack, "old");
}

TEST_F(FileRepair, savedFileComesBackWhereNothingStands)
{
    const Plan plan = planOver("old");
    root::writeFile(kSavedFile, "old");
    fs::remove(kPrivateFile);
    expectRepaired(plan, Repair::kFormerBack, "old");
}

TEST_F(FileRepair, savedFileOfAnotherContentDoesNotComeBack)
{
    const Plan plan = planOver("old");
    root::writeFile(kSavedFile, "od");
    root::writeFile(kPrivateFile, "the n");
    expectRepaired(plan, Repair::kNewWhole, kNew);
}

TEST_F(FileRepair, newFileThatIsCompletedIsForItsUserAlone)
{
    const Plan plan = planOver("old");
    root::writeFile(kPrivateFile, "the n");
    expectRepaired(plan, Repair::kNewWhole, kNew);
    EXPECT_EQ(fs::status(kPrivateFile).permissions(), fs::perms(0600));
}

TEST_F(FileRepair, newFileThatIsWholeStays)
{
    const Plan plan = planOver("old");
    root::writeFile(kPrivateFile, kNew);
    expectRepaired(plan, Repair::kNewWhole, kNew);
}

TEST_F(FileRepair, deviceIsLeftAlone)
{
    const Plan plan = planOver("old");
    fs::remove(kPrivateFile);
    fs::create_symlink("/dev/null", kPrivateFile);
    EXPECT_EQ(repairPrivateFile(plan), Repair::kLeftAlone);
    EXPECT_EQ(fs::read_symlink(kPrivateFile), "/dev/null");
}

} // namespace
