// SPDX-License-Identifier: MIT
//
// What names new users and shares must not have: byte by byte, and for every kind of line that a
// password file can hold.
#include "service/new_name.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/root.h"

namespace {

using service::judgeNewShare;
using service::judgeNewUser;
using enum service::NewName;

/// The bytes that a name must not have at a place.
std::string misreadBytes(const std::string& before, const std::string& after)
{
    std::string misread;
    for (int byte = 1; byte < 256; ++byte) {
        const std::string name = before + static_cast<char>(byte) + after;
        EXPECT_EQ(judgeNewUser(name), judgeNewShare(name)) << name;
        if (judgeNewShare(name) == kMisread) {
            misread += static_cast<char>(byte);
        }
    }
    return misread;
}

class NewName : public root::Test {
  protected:
    static constexpr auto kFiles = std::to_array<const char*>({"/etc/passwd", "/etc/group"});

    void SetUp() override
    {
        root::Test::SetUp();
        for (const char* path : kFiles) {
            kept_.push_back(root::readFile(path));
            std::filesystem::remove(path);
        }
    }

    void TearDown() override
    {
        for (std::size_t i = 0; i < kFiles.size(); ++i) {
            root::writeFile(kFiles[i], kept_[i]);
        }
        root::Test::TearDown();
    }

    /// What a new user of the name "zoe" would be beside such a line.
    static service::NewName zoeBeside(const std::string& line)
    {
        root::writeFile("/etc/passwd", line);
        return judgeNewUser("zoe");
    }

  private:
    std::vector<std::string> kept_;
};

TEST_F(NewName, fewBytesAreMisread)
{
    EXPECT_EQ(misreadBytes("a", "b"), "%,:=");
    EXPECT_EQ(misreadBytes("", "b"), " %+,.:=@");
    EXPECT_EQ(misreadBytes("a", ""), " %,:=");
    EXPECT_EQ(misreadBytes("", ""), " %+,.:=@");
}

TEST_F(NewName, emptyNameIsGood)
{
    EXPECT_EQ(judgeNewUser(""), kGood);
    EXPECT_EQ(judgeNewShare(""), kGood);
}

TEST_F(NewName, sectionsAreReservedInAnyLetters)
{
    for (const char* name : {"global", "homes", "printers", "GLOBAL", "hOmEs", "Printers"}) {
        EXPECT_EQ(judgeNewUser(name), kReserved) << name;
        EXPECT_EQ(judgeNewShare(name), kReserved) << name;
    }
    for (const char* name : {"glob", "globals", "home", "homes2", "printer", "global x"}) {
        EXPECT_EQ(judgeNewUser(name), kGood) << name;
        EXPECT_EQ(judgeNewShare(name), kGood) << name;
    }
}

TEST_F(NewName, someAccountsAreReservedWithoutAPasswordFile)
{
    for (const char* name : {"root", "daemon", "nobody", "Root", "DAEMON"}) {
        EXPECT_EQ(judgeNewUser(name), kReserved) << name;
        EXPECT_EQ(judgeNewShare(name), kGood) << name;
    }
    EXPECT_EQ(judgeNewUser("zoe"), kGood);
}

TEST_F(NewName, numbersOfPeopleAreNotTheSystems)
{
    for (const char* number :
         {"0", "1", "999", "60000", "65534", "4294967295", "99999999999", ""}) {
        EXPECT_EQ(zoeBeside("zoe:x:" + std::string(number) + ":7::/:/bin/sh\n"), kReserved)
            << number;
    }
    for (const char* number : {"1000", "1001", "59999"}) {
        EXPECT_EQ(zoeBeside("zoe:x:" + std::string(number) + ":7::/:/bin/sh\n"), kGood) << number;
    }
}

TEST_F(NewName, lineThatIsCutOrOddIsTheSystems)
{
    for (const char* line : {"zoe:", "zoe:x", "zoe:x:", "zoe:x:many:", "zoe:x:-1:", "zoe::5"}) {
        EXPECT_EQ(zoeBeside(line), kReserved) << line;
    }
    for (const char* line :
         {"", "\n\n", "zoe", "zo:x:5:", "zoes:x:5:", "x:zoe:5:", ":zoe:5", ":"}) {
        EXPECT_EQ(zoeBeside(line), kGood) << line;
    }
}

TEST_F(NewName, everyLineOfBothFilesCounts)
{
    const std::string others = "a:x:1:\nb:x:1001:\n\n";
    EXPECT_EQ(zoeBeside(others + "Zoe:x:5:5::/:\n"), kReserved);
    EXPECT_EQ(zoeBeside(others + "zoe:x:1001:\nzoe:x:5:"), kReserved);
    EXPECT_EQ(zoeBeside(others), kGood);
    root::writeFile("/etc/group", others + "zoe:x:998:\n");
    EXPECT_EQ(judgeNewUser("zoe"), kReserved);
    EXPECT_EQ(judgeNewShare("zoe"), kGood);
    root::writeFile("/etc/group", others + "zoe:x:1000:\n");
    EXPECT_EQ(judgeNewUser("zoe"), kGood);
}

TEST_F(NewName, misreadComesBeforeReserved)
{
    EXPECT_EQ(judgeNewUser(" root"), kMisread);
    EXPECT_EQ(judgeNewShare("global "), kMisread);
}

} // namespace
