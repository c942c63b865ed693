// SPDX-License-Identifier: MIT
#include <filesystem>
#include <gtest/gtest.h>

#include "client/doctor_checks.h"
#include "tests/support/root.h"

namespace {

using namespace client;

class DoctorScripts : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        std::filesystem::create_directories("/etc/inc");
        root::stub("php", "[ \"$*\" = '-l /etc/inc/api_user.php' ]");
    }
    void TearDown() override
    {
        std::filesystem::remove_all("/etc/inc");
        root::UntracedTest::TearDown();
    }

    static Diagnosis say(const Check& check)
    {
        Surroundings surroundings;
        surroundings.settings.path = "/stubs:/usr/bin";
        surroundings.folder = "/tmp";
        return check.examine(surroundings, check);
    }
};

TEST_F(DoctorScripts, scriptIsThereCanBeReadAndNamesItsFunctions)
{
    const Check check = {"api_user.php", true, nullptr, examineScript};
    EXPECT_EQ(say(check), wrong("There is no /etc/inc/api_user.php.",
                                "install the appliance's administration scripts"));
    root::writeFile("/etc/inc/api_user.php", "tovGetUsers");
    EXPECT_EQ(say(check), wrong("Nothing in /etc/inc names its function tovAddUser.",
                                "add the function; porting.md says what it does"));
    root::writeFile("/etc/inc/shared.php", "function tovAddUser");
    EXPECT_EQ(say(check), good("PHP can read it."));
    root::stub("php", "exit 255");
    EXPECT_EQ(say(check), wrong("PHP cannot read /etc/inc/api_user.php.",
                                "see what is wrong: php -l /etc/inc/api_user.php"));
}

TEST_F(DoctorScripts, eachFunctionIsAskedAndItsAnswerJudged)
{
    root::stub("php", "case \"$1 $2\" in\n"
                      "'/etc/inc/s.php list') echo '<sharelist>' ;;\n"
                      "'/etc/inc/s.php users') echo '<userlist>' ;;\n"
                      "'/etc/inc/s.php disks') echo none ;;\n"
                      "'/etc/inc/s.php tongue') echo '<languag>' ;;\n"
                      "'/etc/inc/s.php name') echo '<nmbdSysname>nas<' ;;\n"
                      "esac >$3");
    EXPECT_EQ(say({"list", true, "s.php", examineShareList}).reason,
              "It lists 0 shares, 0 of them internal.");
    EXPECT_EQ(say({"users", true, "s.php", examineUserList}).reason, "It lists 0 users.");
    EXPECT_EQ(say({"disks", true, "s.php", examineDevices}).reason, "It names no internal disk.");
    EXPECT_EQ(say({"tongue", true, "s.php", examineLanguage}).reason,
              "The value after <languag> is \"\", which is not a language that the module knows.");
    EXPECT_EQ(say({"name", true, "s.php", examineMachineName}).reason, "The name is nas.");
}

TEST_F(DoctorScripts, functionThatFailsIsComplainedOf)
{
    root::stub("php", "exit 1");
    EXPECT_EQ(say({"list", true, "s.php", examineShareList}).reason,
              "sudo /usr/bin/php /etc/inc/s.php list FILE ended with 1.");
}

} // namespace
