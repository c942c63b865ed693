// SPDX-License-Identifier: MIT
#include "client/frame.h"

#include <gtest/gtest.h>

#include "client/failure.h"
#include "tests/support/root.h"

namespace {

using client::makeFrame;
using client::Value;
using cmdsvc::Command;
using cmdsvc::command;
using root::le32;
using Values = std::vector<Value>;

const std::string kZero(1, '\0');
const std::string kForbidden = "2: a name or a value cannot contain a newline or a zero byte";

/// How making a frame failed, as "CODE: SENTENCE"; empty if it did not.
std::string failureOf(const Command& row, const Values& values)
{
    try {
        static_cast<void>(makeFrame(row, values));
    } catch (const client::Failure& failure) {
        return std::to_string(failure.code()) + ": " + failure.what();
    }
    return "";
}

// ---- Parts ------------------------------------------------------------------------------------

TEST(Frame, firstLineHasCodeBlankCountAndNewline)
{
    EXPECT_EQ(client::firstLine("crat", 2), std::string("crat \x02\0\0\0\n", 10));
    EXPECT_EQ(client::firstLine("crat", 0x04030201), "crat \x01\x02\x03\x04\n");
}

TEST(Frame, wordIsLittleEndian)
{
    EXPECT_EQ(client::wordBytes(0), std::string(4, '\0'));
    EXPECT_EQ(client::wordBytes(0xFF030201), "\x01\x02\x03\xFF");
}

// ---- Whole requests ---------------------------------------------------------------------------

struct FrameRow {
    const Command& row;
    Values values;
    std::string frame;
};

TEST(Frame, everyCommandHasItsBytes)
{
    const std::vector<FrameRow> rows = {
        {command("crat"), {"carla", "a secret"}, "crat " + le32(2) + "\ncarla\na secret\n"},
        {command("dscr"), {}, "dscr " + le32(0) + "\n"},
        {command("frst"), {}, "frst " + le32(0) + "\n"},
        {command("getv"), {1U}, "getv " + le32(1) + "\n" + le32(1) + "\n"},
        {command("gps1"), {}, "gps1 " + le32(0) + "\n"},
        {command("gpsn"), {}, "gpsn " + le32(0) + "\n"},
        {command("gpvt"), {}, "gpvt " + le32(0) + "\n"},
        {command("grst"), {}, "grst " + le32(0) + "\n"},
        {command("gsp1"), {"Photos"}, "gsp1 " + le32(1) + "\nPhotos\n"},
        {command("gspc"), {"Nowhere"}, "gspc \x07Nowhere\n"},
        {command("gub1"), {}, "gub1 " + le32(0) + "\n"},
        {command("gubs"), {}, "gubs " + le32(0) + "\n"},
        {command("host"),
         {"112118302026.00", "cellar", "HOME", "en"},
         "host " + le32(4) + "\n112118302026.00\ncellar\nHOME\nen\n"},
        {command("ipcf"), {}, "ipcf " + le32(0) + "\n"},
        {command("lsts"), {}, "lsts " + le32(0) + "\n"},
        {command("lstu"), {}, "lstu " + le32(0) + "\n"},
        {command("pshr"), {"guest", "Music"}, "pshr " + le32(3) + "\nguest\nMusic\n"},
        {command("qlps"), {}, "qlps " + le32(0) + "\n"},
        {command("rtov"), {}, "rtov " + le32(2) + "\n"},
        {command("sgss"), {}, "sgss " + le32(0) + "\n"},
        {command("shar"), {"anna", "Papers"}, "shar " + le32(3) + "\nanna\nPapers\n"},
        {command("spvt"), {5U, "hello"}, "spvt " + le32(2) + "\n" + le32(5) + "\nhello\n"},
        {command("sub1"), {1U, 32U, "anna"}, "sub1 " + le32(2) + "\n\x01 anna\n"},
        {command("subs"),
         {" \x01"
          "anna"},
         "subs \x06 \x01"
         "anna\n"},
        {command("vers"), {}, "vers " + le32(0) + "\n"},
        {command("wags"), {"system"}, "wags " + le32(1) + "\nsystem\n"},
        {command("wags"), {"user", "anna"}, "wags " + le32(2) + "\nuser\nanna\n"},
        {command("wall"), {"anna", "secret"}, "wall " + le32(2) + "\nanna\nsecret\n"},
        {command("warp"), {"anna", "a@b", "A"}, "warp " + le32(3) + "\nanna\na@b\nA\n"},
        {command("wasu"), {"anna", "", "", 0U}, "wasu " + le32(4) + "\nanna\n\n\n" + kZero + "\n"},
    };
    for (const FrameRow& each : rows) {
        EXPECT_EQ(makeFrame(each.row, each.values), each.frame);
    }
}

TEST(Frame, textsAreSentAsTheyAre)
{
    EXPECT_EQ(makeFrame(command("gsp1"), {"\xC3\x89\xFF'\"\\\t\r"}),
              "gsp1 " + le32(1) + "\n\xC3\x89\xFF'\"\\\t\r\n");
    EXPECT_EQ(makeFrame(command("gsp1"), {""}), "gsp1 " + le32(1) + "\n\n");
    const std::string bytes = "a\n" + kZero + "\n";
    EXPECT_EQ(makeFrame(command("spvt"), {4U, bytes}),
              "spvt " + le32(2) + "\n" + le32(4) + "\n" + bytes + "\n");
}

TEST(Frame, numbersAreSentAsTheyAre)
{
    // A byte that is a newline is a byte all the same.
    EXPECT_EQ(makeFrame(command("sub1"), {10U, 32U, "a"}), "sub1 " + le32(2) + "\n\n a\n");
    EXPECT_EQ(makeFrame(command("sub1"), {255U, 0U, "a"}),
              "sub1 " + le32(2) + "\n\xFF" + kZero + "a\n");
    EXPECT_EQ(makeFrame(command("getv"), {0x0A0B0C0DU}), "getv " + le32(1) + "\n\x0D\x0C\x0B\n\n");
}

TEST(Frame, lengthInTheFirstLineMayBeANewline)
{
    EXPECT_EQ(makeFrame(command("gspc"), {"Nowhere..."}), "gspc \nNowhere...\n");
    EXPECT_EQ(makeFrame(command("subs"), {" \x03johannes"}), "subs \n \x03johannes\n");
    // What comes before the name is no text.
    EXPECT_EQ(makeFrame(command("subs"), {" " + kZero + "a"}), "subs \x03 " + kZero + "a\n");
    EXPECT_EQ(makeFrame(command("subs"), {" \na"}), "subs \x03 \na\n");
}

TEST(Frame, newlineOrZeroByteInATextIsWrongUsage)
{
    for (const std::string& text :
         {std::string("a\nb"), std::string("\n"), std::string("a\n"), "a" + kZero + "b", kZero}) {
        EXPECT_EQ(failureOf(command("gsp1"), {text}), kForbidden);
        EXPECT_EQ(failureOf(command("crat"), {"carla", text}), kForbidden);
        EXPECT_EQ(failureOf(command("sub1"), {1U, 32U, text}), kForbidden);
        EXPECT_EQ(failureOf(command("gspc"), {text}), kForbidden);
        EXPECT_EQ(failureOf(command("subs"), {" \1" + text}), kForbidden);
    }
    EXPECT_EQ(failureOf(command("gsp1"), {"a"}), "");
}

TEST(Frame, checkedLineIsTheSameText)
{
    const std::string text = "Tax papers";
    EXPECT_EQ(&client::checkedLine(text), &text);
}

} // namespace
