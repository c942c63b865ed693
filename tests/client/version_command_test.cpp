// SPDX-License-Identifier: MIT
//
// "vokctl version" as people and scripts call it.
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/scripted_service.h"
#include "tests/support/vokserve.h"

namespace {

using root::Exchange;
using root::exchange;
using root::le32;
using Strings = std::vector<std::string>;

const std::string kBuildFile = "/etc/buildinfo.txt";

class VersionCommand : public root::AnsweringTest {
  protected:
    void TearDown() override
    {
        std::filesystem::remove_all(kBuildFile);
        root::AnsweringTest::TearDown();
    }

    static void expectVersion(const std::string& content, const std::string& line)
    {
        root::writeFile(kBuildFile, content);
        expectEnd(vokctl({"version"}), 0, line + "\n", "");
    }

    static void expectRefusal(const std::string& sentence)
    {
        expectEnd(vokctl({"version"}), 1, "", "vokctl: " + sentence + "\n");
    }
};

TEST_F(VersionCommand, frameHasNoParameters)
{
    const Exchange exchanged = exchange({"version"}, {"vert " + le32(1) + "\n1.0\n"});
    EXPECT_EQ(exchanged.frames, Strings{"vers " + le32(0) + "\n"});
    expectEnd(exchanged.ended, 0, "1.0\n", "");
}

TEST_F(VersionCommand, buildIsOneLine)
{
    expectVersion("1.0\nbuild 7\n", "1.0 - build 7 - ");
    expectVersion("1.0", "1.0");
    expectVersion("\xFF", "");
    expectVersion(std::string(4085, 'x'), std::string(4085, 'x'));
    // What the appliance left out is not the client's to tell.
    expectVersion(std::string(4083, 'x') + "\n", std::string(4083, 'x'));
}

TEST_F(VersionCommand, hostileTextNeverReachesTheTerminalRaw)
{
    expectVersion("1.0\x1B[2J\x01\xC3\xA9\xE9", "1.0\\u{1b}[2J\\u{1}\xC3\xA9\\xe9");
}

/// A build may end in the nine bytes of an error.
TEST_F(VersionCommand, textThatLooksLikeAnErrorIsNone)
{
    expectVersion("1.0 erro abc", "1.0 erro abc");
}

TEST_F(VersionCommand, refusalsAreSaidInWords)
{
    expectRefusal("The appliance's build is not known, because /etc/buildinfo.txt cannot be read. "
                  "(0x40000003)");
    const std::string badSize = "The appliance's build cannot be shown, because /etc/buildinfo.txt "
                                "is empty or too long. (0x40000004)";
    root::writeFile(kBuildFile, "");
    expectRefusal(badSize);
    root::writeFile(kBuildFile, std::string(4086, 'x'));
    expectRefusal(badSize);
    root::writeFile(kBuildFile, "1.0\n");
    std::filesystem::permissions(kBuildFile, std::filesystem::perms(0));
    expectRefusal("The appliance's build cannot be read; see whether /etc/buildinfo.txt is there. "
                  "(0x40000001)");
    const Exchange exchanged = exchange({"version"}, {"erro " + le32(0x40000002)});
    expectEnd(exchanged.ended, 1, "",
              "vokctl: The appliance's build cannot be read; see whether /etc/buildinfo.txt is "
              "there. (0x40000002)\n");
}

TEST_F(VersionCommand, otherAnswersCannotBeRead)
{
    const std::string unreadable = "vokctl: the answer cannot be read: ";
    const std::vector<std::pair<std::string, std::string>> answers = {
        {"", "empty: the command was ignored, is not known, or failed before it answered"},
        {"vert " + le32(1) + "\n", "\"vert\" with count 1"},
        {"vert " + le32(1) + "\na\nb\n", "\"vert\" with count 1\n  a\n  b"},
        {"verx " + le32(1) + "\na\n", "of a shape that this client does not know"},
        {le32(0), "of a shape that this client does not know"},
        {"vert ", "of a shape that this client does not know"},
    };
    for (const auto& [answer, description] : answers) {
        expectEnd(exchange({"version"}, {answer}).ended, 7, "", unreadable + description + "\n");
    }
}

TEST_F(VersionCommand, unreachableServiceAndWrongUsage)
{
    expectEnd(
        root::run({root::built("vokctl"), "version", "--socket", "/tmp/none"}), 3, "",
        "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is vokserve "
        "running?\n");
    EXPECT_EQ(vokctl({"version", "extra"}).exitCode, 2);
    EXPECT_EQ(vokctl({"version", "--json"}).exitCode, 2);
    EXPECT_EQ(vokctl({"version", "--timeout", "0"}).exitCode, 2);
}

} // namespace
