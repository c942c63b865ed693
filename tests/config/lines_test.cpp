// SPDX-License-Identifier: MIT
#include "config/lines.h"

#include <gtest/gtest.h>

namespace {

using config::Configuration;
using config::readLines;

std::string complaintOf(std::string_view content)
{
    try {
        static_cast<void>(readLines("/etc/file", content));
    } catch (const config::BadConfiguration& failure) {
        return failure.what();
    }
    return "none";
}

TEST(Lines, nothingIsTheDefaults)
{
    EXPECT_TRUE(readLines("f", "") == Configuration());
    EXPECT_TRUE(readLines("f", "\n# timeout = 5\n  ; x\n\t\n[service]\n[pages]\n[service]") ==
                Configuration());
}

TEST(Lines, keysAreTakenWhereverTheyStand)
{
    const Configuration expected = {.timeout = 5, .clientTimeout = 7, .administrators = {"anna"}};
    EXPECT_TRUE(readLines("f", "[pages]\nadministrators=anna\n[client]\ntimeout=7\n"
                               "[service]\ntimeout=5\n") == expected);
    // Blanks, an older system's line ends, a section that goes on later, no last newline.
    EXPECT_TRUE(readLines("f", "  [service]\r\n[client] \t\n\ttimeout \t=  7  \r\n"
                               " [service]\n  timeout: 5 ; seconds\n[pages]\n"
                               "administrators = anna") == expected);
}

TEST(Lines, commentMayBeOfAnyLength)
{
    EXPECT_TRUE(readLines("f", "#" + std::string(5000, 'x') + "\n[service]\ntimeout = 5") ==
                Configuration{.timeout = 5});
}

TEST(Lines, unknownSectionIsToldWithItsLine)
{
    constexpr const char* kThereAre = " is not a section; known sections: [service], [client], "
                                      "[pages], [thresholds], [backup] and [notify]";
    EXPECT_EQ(complaintOf("\n[servcie]\ntimeout = 5\n"),
              std::string("/etc/file:2: \"[servcie]\"") + kThereAre);
    EXPECT_EQ(complaintOf("[]"), std::string("/etc/file:1: \"[]\"") + kThereAre);
    EXPECT_EQ(complaintOf("[service] timeout = 5"),
              std::string("/etc/file:1: \"[service] timeout = 5\"") + kThereAre);
    EXPECT_EQ(complaintOf("[\x1B[2J\x7F\xC3\xA4]"),
              std::string("/etc/file:1: \"[?[2J???]\"") + kThereAre);
}

TEST(Lines, unknownKeyIsToldWithItsLine)
{
    EXPECT_EQ(
        complaintOf("[pages]\nhosts = a\nhost = b\n"),
        "/etc/file:3: \"host\" is not a key of [pages]; known keys: administrators, hosts and "
        "trust-web-server");
    EXPECT_EQ(complaintOf("[client]\nsocket = /x\n"),
              "/etc/file:2: \"socket\" is not a key of [client]; known keys: timeout");
    EXPECT_EQ(complaintOf("# x\ntimeout = 5\n[service]\n"),
              "/etc/file:2: the key \"timeout\" is before the first section; move it into a "
              "section");
    EXPECT_EQ(complaintOf("[service]\n= 5\n").substr(0, 41),
              "/etc/file:2: \"\" is not a key of [service]");
}

TEST(Lines, badValueIsToldWithItsLineAndNotShown)
{
    EXPECT_EQ(complaintOf("[service]\n\ntimeout = secret\n[x]"),
              "/etc/file:3: timeout must be a whole number from 1 to 86400");
    EXPECT_EQ(complaintOf("[service]\ntimeout =\n"),
              "/etc/file:2: timeout must be a whole number from 1 to 86400");
}

TEST(Lines, keyThatStandsTwiceIsTold)
{
    EXPECT_EQ(complaintOf("[service]\ntimeout = 5\n[client]\ntimeout = 5\n[service]\ntimeout = 5"),
              "/etc/file:6: timeout is set in line 2 already; remove one of the two lines");
}

TEST(Lines, lineThatIsNeitherKeyNorSectionIsTold)
{
    constexpr const char* kNeither = ": this is neither \"key = value\" nor a [section]";
    EXPECT_EQ(complaintOf("[service]\ntimeout 5\ntimeout = x"),
              std::string("/etc/file:2") + kNeither);
    EXPECT_EQ(complaintOf("hello"), std::string("/etc/file:1") + kNeither);
}

TEST(Lines, firstOfSeveralIsTold)
{
    EXPECT_EQ(complaintOf("[service]\ntimeout = x\ndeadline\n"),
              "/etc/file:2: timeout must be a whole number from 1 to 86400");
}

TEST(Lines, longLineIsToldAndNotCut)
{
    const std::string start = "[pages]\nadministrators = ";
    const std::string longest = start + std::string(182, 'a');
    EXPECT_EQ(readLines("f", longest + "\n").administrators,
              std::vector<std::string>{std::string(182, 'a')});
    EXPECT_EQ(complaintOf(longest + "a\n"), "/etc/file:2: the line is longer than 199 bytes");
}

TEST(Lines, zeroByteIsTold)
{
    EXPECT_EQ(complaintOf(std::string_view("[service]\ntimeout = 5\0 0", 24)),
              "/etc/file:2: the line contains a zero byte");
}

TEST(Lines, keysThatDoNotGoTogetherAreTold)
{
    EXPECT_EQ(complaintOf("[thresholds]\nfull-critical = 80\n"),
              "/etc/file:2: full-warning must not be above full-critical");
    EXPECT_EQ(complaintOf("[thresholds]\nfull-critical = 98\nfull-warning = 99\n\n"),
              "/etc/file:3: full-warning must not be above full-critical");
    EXPECT_EQ(complaintOf("[thresholds]\nfull-critical = 90\n"), "none");
    EXPECT_EQ(complaintOf("[backup]\nfailed-states = 2, 3\ngood-states = 1, 3\n"),
              "/etc/file:3: a state cannot be in both good-states and failed-states");
}

} // namespace
