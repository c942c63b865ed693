// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "client/doctor_checks.h"
#include "tests/support/root.h"

namespace {

using namespace client;
namespace fs = std::filesystem;

class DoctorFiles : public root::UntracedTest {
  protected:
    static Diagnosis say(Diagnosis (*examine)(const Surroundings&, const Check&),
                         unsigned full = 100)
    {
        Surroundings surroundings;
        surroundings.settings.fullWarning = full;
        surroundings.now = 1795253583; // 2026-11-21 09:33:03 UTC
        return examine(surroundings, {"it", false, nullptr, examine});
    }

    static void setMode(const char* path, mode_t mode) { ASSERT_EQ(::chmod(path, mode), 0); }
};

TEST_F(DoctorFiles, foldersAreRootsAlone)
{
    EXPECT_EQ(say(examineFolders), good("They are there, and only root may change them."));
    setMode("/etc/pelconfig/vokcontrol", 01775);
    EXPECT_EQ(say(examineFolders),
              wrong("/etc/pelconfig/vokcontrol has mode 1775, so that others may write to it.",
                    "chmod go-w /etc/pelconfig/vokcontrol"));
    setMode("/etc/pelconfig/vokcontrol", 0755);
    fs::remove("/etc/pelconfig/vokcontrol/__bksts");
    EXPECT_EQ(say(examineFolders), wrong("There is no /etc/pelconfig/vokcontrol/__bksts.",
                                         "mkdir -p /etc/pelconfig/vokcontrol/__bksts"));
    root::writeFile("/etc/pelconfig/vokcontrol/__bksts", "");
    EXPECT_EQ(say(examineFolders),
              wrong("/etc/pelconfig/vokcontrol/__bksts is not a folder.",
                    "move it away, then mkdir -p /etc/pelconfig/vokcontrol/__bksts"));
}

TEST_F(DoctorFiles, variablesAndLockHaveTheirModes)
{
    EXPECT_EQ(say(examineVariables).remedy, "touch /etc/pelconfig/system_var");
    root::writeFile(root::kVariables, "");
    setMode(root::kVariables.c_str(), 0644);
    EXPECT_EQ(say(examineVariables), good("It is there, and only root may change it."));
    setMode(root::kVariables.c_str(), 0664);
    EXPECT_EQ(say(examineVariables).sign, Sign::kWrong);

    const char* lock = "/etc/pelconfig/system_var_lck";
    root::writeFile(lock, "");
    setMode(lock, 0640);
    EXPECT_EQ(say(examineLock),
              wrong("/etc/pelconfig/system_var_lck has mode 640, so that others may open it.",
                    "chmod go= /etc/pelconfig/system_var_lck"));
    setMode(lock, 0600);
    EXPECT_EQ(say(examineLock), good("Only root may lock the variables."));
    fs::remove(lock);
    fs::create_symlink("/etc/passwd", lock);
    EXPECT_EQ(say(examineLock),
              wrong("/etc/pelconfig/system_var_lck is not a plain file.",
                    "move it away, then install -m 600 /dev/null /etc/pelconfig/system_var_lck"));
}

TEST_F(DoctorFiles, privateFileNeedNotBeThere)
{
    const char* file = "/etc/pelconfig/vokcontrol/vokcontrol-private.txt";
    EXPECT_EQ(say(examinePrivateFile), unneeded("No client has stored one."));
    root::writeFile(file, "");
    setMode(file, 0600);
    EXPECT_EQ(say(examinePrivateFile), good("Only root may open it."));
    setMode(file, 0644);
    EXPECT_EQ(say(examinePrivateFile).sign, Sign::kWrong);
}

TEST_F(DoctorFiles, workFolderAndTmpAreNotEverybodys)
{
    EXPECT_EQ(say(examineWorkFolder),
              wrong("There is no /run/vokcontrol.", "start the service, which makes it"));
    fs::create_directory("/run/vokcontrol");
    setMode("/run/vokcontrol", 0700);
    EXPECT_EQ(say(examineWorkFolder), good("Only root may open it."));
    fs::remove("/run/vokcontrol");

    EXPECT_EQ(say(examineTmp), good("Only root may write to it."));
    setMode("/tmp", 0777);
    EXPECT_EQ(say(examineTmp),
              wrong("/tmp has mode 777, so that everybody may remove the files of others.",
                    "chmod 1777 /tmp"));
    setMode("/tmp", 01777);
    EXPECT_EQ(say(examineTmp),
              good("Everybody may use it, and nobody may remove the files of others."));
}

TEST_F(DoctorFiles, fileSystemsHaveSpaceLeft)
{
    EXPECT_EQ(say(examineSettingsSpace).sign, Sign::kGood);
    root::fillDisk("/etc/pelconfig");
    EXPECT_EQ(say(examineSettingsSpace),
              wrong("Only 0 KB are free in /etc/pelconfig/vokcontrol, too little for the status "
                    "and the variables.",
                    "remove what is not needed there"));
    root::freeDisk("/etc/pelconfig");
    EXPECT_EQ(say(examineWorkSpace).sign, Sign::kGood);
    root::fillDisk("/tmp");
    EXPECT_EQ(say(examineWorkSpace), wrong("Only 0 KB are free in /tmp, too little for work files.",
                                           "remove what is not needed there"));
    root::freeDisk("/tmp");
    EXPECT_EQ(say(examineShareSpace, 101).sign, Sign::kGood);
    EXPECT_EQ(say(examineShareSpace, 0).sign, Sign::kWrong);
    EXPECT_EQ(say(examineShareSpace, 0).remedy, "delete what is not needed, or move it elsewhere");
}

TEST_F(DoctorFiles, clockIsNotBeforeWhatWasWritten)
{
    EXPECT_EQ(say(examineClock), good("The clock says 21 November 2026, 09:33 UTC."));
    root::writeFile(root::kVariables, "");
    const ::timespec times[2] = {{1795253583 + 61, 0}, {1795253583 + 61, 0}};
    ::utimensat(AT_FDCWD, root::kVariables.c_str(), times, 0);
    EXPECT_EQ(
        say(examineClock),
        wrong(
            "The clock says 21 November 2026, 09:33 UTC, but /etc/pelconfig/system_var was written "
            "21 November 2026, 09:34 UTC.",
            "set the clock; if it is right, touch /etc/pelconfig/system_var"));
}

} // namespace
