// SPDX-License-Identifier: MIT
//
// "vokctl doctor" as people call it.
#include <gtest/gtest.h>

#include "client/doctor.h"
#include "tests/support/root.h"

namespace {

using Strings = std::vector<std::string>;

class DoctorCommand : public root::UntracedTest {
  protected:
    static root::Ended doctor(const Strings& arguments)
    {
        Strings command = {root::built("vokctl"), "doctor"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return root::run(command);
    }
};

TEST_F(DoctorCommand, checksHaveNames)
{
    std::string names;
    for (const client::Check& check : client::checks()) {
        names += std::string(check.name) + "\n";
    }
    EXPECT_EQ(doctor({"--list"}).output, names);
}

TEST_F(DoctorCommand, endsWithOneIfSomethingIsWrong)
{
    root::writeFile("/stubs/settings", "[service]\npath = /stubs\n");
    root::stub("date", "echo 11222026");
    const root::Ended well = doctor({"date", "--config", "/stubs/settings"});
    EXPECT_EQ(well.exitCode, 0);
    EXPECT_EQ(well.output, "ok  date  It prints the date.\n\n"
                           "Wrong: 0, not checked: 0, checks in all: 1.\n");
    root::stub("date", "echo");
    const root::Ended ill = doctor({"date", "--config", "/stubs/settings"});
    EXPECT_EQ(ill.exitCode, 1);
    EXPECT_EQ(
        ill.output,
        "WRONG  date  It printed \"\" for +%m%d%Y. What to do: have it print the eight digits "
        "MMDDYYYY; porting.md has an example.\n\n"
        "Wrong: 1, not checked: 0, checks in all: 1.\n");
    EXPECT_EQ(ill.errors, "");
    EXPECT_EQ(root::list("/tmp"), Strings{}) << "and leaves nothing there";
}

TEST_F(DoctorCommand, socketOfTheCommandLineWins)
{
    EXPECT_EQ(doctor({"--json", "socket", "--socket", "/tmp/none"}).output, R"({
  "wrong": 1,
  "unchecked": 0,
  "checks": [
    {
      "name": "socket",
      "result": "wrong",
      "reason": "There is no /tmp/none.",
      "remedy": "systemctl start vokserve.socket, or /etc/init.d/vokcontrol start"
    }
  ]
}
)");
}

TEST_F(DoctorCommand, unknownCheckIsWrongUsage)
{
    const root::Ended ended = doctor({"no-such"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors, "vokctl: there is no check no-such; vokctl doctor --list names all\n");
    EXPECT_EQ(doctor({"--timeout", "0"}).exitCode, 2);
}

TEST_F(DoctorCommand, settingsThatCannotBeReadAreACheckOfTheirOwn)
{
    root::writeFile("/stubs/settings", "nonsense\n");
    const root::Ended ended = doctor({"settings", "tmp", "--config", "/stubs/settings"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.output.find("WRONG  settings  /stubs/settings:1: "), 0U) << ended.output;
    EXPECT_NE(ended.output.find("\nok     tmp       Only root"), std::string::npos) << ended.output;
}

} // namespace
