// SPDX-License-Identifier: MIT
//
// "vokctl users" as people and scripts call it.
#include <gtest/gtest.h>

#include "tests/support/vokserve.h"

namespace {

class UsersCommand : public root::ServedTest {
  protected:
    static void stubUsers(const std::vector<std::string>& names)
    {
        std::string answer;
        for (const std::string& name : names) {
            answer += "<username>" + name + "</username>\n";
        }
        root::writeFile("/stubs/users", answer);
        root::stub("php", "cat /stubs/users >\"$3\"");
    }
};

TEST_F(UsersCommand, namesComeOneALine)
{
    stubUsers({"bob", "\xC3\x89lise"});
    expectEnd(vokctl({"users", "list"}), 0, "bob\n\xC3\x89lise\n", "");
    stubUsers({});
    expectEnd(vokctl({"users", "list"}), 0, "", "");
}

TEST_F(UsersCommand, jsonIsForPrograms)
{
    stubUsers({"bob", "\xC3\x89lise"});
    expectEnd(vokctl({"users", "list", "--json"}), 0,
              "{\n  \"users\": [\n    \"bob\",\n    \"\\u00c9lise\"\n  ]\n}\n", "");
    stubUsers({});
    expectEnd(vokctl({"users", "list", "--json"}), 0, "{\n  \"users\": []\n}\n", "");
}

TEST_F(UsersCommand, hostileNamesNeverReachTheTerminalRaw)
{
    stubUsers({"a\x1B[2Jz"});
    expectEnd(vokctl({"users", "list"}), 0, "a\\u{1b}[2Jz\n", "");
}

TEST_F(UsersCommand, twoHundredNames)
{
    std::vector<std::string> names;
    std::string output;
    for (int i = 0; i < 200; ++i) {
        names.push_back("user" + std::to_string(i));
        output += names.back() + "\n";
    }
    stubUsers(names);
    expectEnd(vokctl({"users", "list"}), 0, output, "");
}

TEST_F(UsersCommand, refusalIsSaidInWords)
{
    // The list cannot be made where a folder stands in its place that is not empty; what is there is
    // then read, and cannot be removed.
    root::stub("php", ": >\"$3\"");
    ASSERT_EQ(root::run({"mkdir", "-p", "/tmp/vokcontrol.tmp/inside"}).exitCode, 0);
    expectEnd(vokctl({"users", "list"}), 1, "",
              "vokctl: 0xFF000006: the appliance cannot remove its work file\n");
}

TEST_F(UsersCommand, handlerThatCrashesGivesAnAnswerThatCannotBeRead)
{
    root::stub("php", "read -r pid comm state ppid group rest </proc/self/stat; kill -9 $group");
    expectEnd(vokctl({"users", "list"}), 7, "",
              "vokctl: the answer cannot be read; it is empty: the command was ignored, is not "
              "known, or failed before it answered\n");
}

TEST_F(UsersCommand, unreachableServiceAndWrongUsage)
{
    const root::Ended away =
        root::run({root::built("vokctl"), "users", "list", "--socket", "/tmp/none"});
    expectEnd(away, 3, "",
              "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is vokserve "
              "running?\n");
    EXPECT_EQ(vokctl({"users"}).exitCode, 2);
    EXPECT_EQ(vokctl({"users", "list", "extra"}).exitCode, 2);
    EXPECT_EQ(vokctl({"users", "list", "--timeout", "0"}).exitCode, 2);
}

TEST_F(UsersCommand, slowApplianceIsWaitedForSoLong)
{
    root::stub("php", "sleep 3");
    expectEnd(vokctl({"users", "list", "--timeout", "1"}), 5, "",
              "vokctl: the service has not answered within 1 seconds. It may be busy; try again, or "
              "raise --timeout.\n");
}

} // namespace
