// SPDX-License-Identifier: MIT
#include "client/doctor_program.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using namespace client;

class DoctorProgram : public root::UntracedTest {
  protected:
    static Surroundings surroundings()
    {
        Surroundings surroundings;
        surroundings.settings.path = "/stubs:/usr/bin";
        surroundings.folder = "/tmp";
        return surroundings;
    }
};

TEST_F(DoctorProgram, isFoundInTheFoldersOfTheSettings)
{
    root::stub("tool", "true");
    root::writeFile("/stubs/text", "no program");
    std::filesystem::create_directory("/stubs/folder");
    EXPECT_EQ(findProgram(surroundings(), "tool"), "/stubs/tool");
    EXPECT_EQ(findProgram(surroundings(), "sudo"), "/usr/bin/sudo");
    EXPECT_EQ(findProgram(surroundings(), "text"), std::nullopt);
    EXPECT_EQ(findProgram(surroundings(), "folder"), std::nullopt);
    EXPECT_EQ(findProgram(surroundings(), "/stubs/tool"), "/stubs/tool");
    EXPECT_EQ(findProgram(surroundings(), "/stubs/text"), std::nullopt);
}

TEST_F(DoctorProgram, hasTheEnvironmentOfARequestAndNoInput)
{
    root::stub(
        "tool",
        "env | grep -v PWD | sort; echo \"<$*>\"; read line || echo nothing; echo bad >&2; exit 3");
    const Ended ended = runProgram(surroundings(), {"tool", "a  b", "c"});
    EXPECT_EQ(ended.code, 3);
    EXPECT_EQ(ended.output, "HOME=/\nLC_ALL=C\nPATH=/stubs:/usr/bin\n<a  b c>\nnothing\n");
    EXPECT_EQ(ended.errors, "bad\n");
}

TEST_F(DoctorProgram, mayPrintMoreThanIsKept)
{
    root::stub("tool", "head -c 1000000 /dev/zero; head -c 1000000 /dev/zero >&2; kill -9 $$");
    const Ended ended = runProgram(surroundings(), {"tool"});
    EXPECT_EQ(ended.code, 128 + 9);
    EXPECT_EQ(ended.output.size(), std::size_t{256} << 10);
    EXPECT_EQ(ended.errors.size(), std::size_t{256} << 10);
}

TEST_F(DoctorProgram, thatIsMissingOrFailsIsComplainedOf)
{
    EXPECT_EQ(askProgram(surroundings(), {"missing", "-d"}).complaint,
              wrong("There is no program missing in /stubs:/usr/bin.",
                    "install it, or set path in /etc/vokcontrol.conf"));
    root::stub("tool", "exit 4");
    EXPECT_EQ(askProgram(surroundings(), {"tool", "-d"}).complaint,
              wrong("tool -d ended with 4.",
                    "run it by hand and correct it; porting.md says what it has to answer"));
    root::stub("tool", "echo one >&2; echo two >&2; exit 4");
    EXPECT_EQ(askProgram(surroundings(), {"tool"}).complaint,
              wrong("tool ended with 4 and said: one.",
                    "run it by hand and correct it; porting.md says what it has to answer"));
    root::stub("tool", "echo fine");
    const ProgramAnswer answer = askProgram(surroundings(), {"tool"});
    EXPECT_EQ(answer.complaint, std::nullopt);
    EXPECT_EQ(answer.text, "fine\n");
}

TEST_F(DoctorProgram, scriptAnswersIntoAFile)
{
    root::stub("php", "[ \"$1 $2\" = '/etc/inc/api_x.php getIt' ] && echo answer >\"$3\"");
    const ProgramAnswer answer = askScript(surroundings(), "api_x.php", "getIt");
    EXPECT_EQ(answer.complaint, std::nullopt);
    EXPECT_EQ(answer.text, "answer\n");

    root::stub("php", "exit 0");
    EXPECT_EQ(askScript(surroundings(), "api_x.php", "getIt").complaint,
              wrong("getIt ended with 0, but wrote no file.",
                    "have it write its answer into the file that is its argument"))
        << "and the former answer does not count";
    root::stub("php", "exit 1");
    EXPECT_EQ(askScript(surroundings(), "api_x.php", "getIt").complaint,
              wrong("sudo /usr/bin/php /etc/inc/api_x.php getIt FILE ended with 1.",
                    "run it by hand and correct it; porting.md says what it has to answer"));
    Surroundings nowhere = surroundings();
    nowhere.folder = "";
    EXPECT_EQ(askScript(nowhere, "api_x.php", "getIt").complaint,
              unchecked("Not checked: no file can be made in /tmp."));
}

} // namespace
