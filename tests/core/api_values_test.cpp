// SPDX-License-Identifier: MIT
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

using Lines = std::vector<std::string>;
using root::trace;

class ApiValues : public root::Test {
  protected:
    const std::string output = root::workFile("getSysVar");
    const std::string line = "sudo /usr/bin/php /etc/inc/api_system.php tovGet " + output;

    static void answer(const std::string& text)
    {
        root::writeFile("/stubs/answer", text);
        root::stub("php", "cat /stubs/answer >\"$3\"");
    }

    void expectValue(const std::string& text, const std::string& value)
    {
        watch::restart();
        answer(text);
        EXPECT_EQ(getSysVar("<key>", "tovGet"), value) << text;
        EXPECT_EQ(watch::calls(), (Lines{line, trace("getSysVar(): " + line + " -- iRet: 0"),
                                         trace("getSysVar retBuf:" + value)}));
        EXPECT_FALSE(root::exists(output));
        testing::internal::CaptureStdout();
        EXPECT_EQ(kytegetSysVar("<key>", "tovGet"), value) << text;
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(watch::calls().size(), 4U) << "kytegetSysVar reports nothing";
        EXPECT_EQ(watch::calls().back(), line);
    }
};

TEST_F(ApiValues, valueIsAfterTheKey)
{
    expectValue("<xml>\n  <key>tower</key>\n</xml>\n", "tower");
    expectValue("<key></key>\n", "");
    expectValue("nothing\n", "");
    expectValue("", "");
}

TEST_F(ApiValues, valueWithoutAMarkKeepsItsNewline)
{
    expectValue("<key>tower\n", "tower\n");
    expectValue("<key>tower", "tower");
}

TEST_F(ApiValues, lastOccurrenceWins)
{
    expectValue("<key>one</key>\n<key>two</key>\n", "two");
    expectValue("<key>one\n<key>two</key>\n", "two");
    expectValue("<key>one</key>\nother\n<key>two\n", "two\n");
    expectValue("<key>one</key> <key>same line</key>\n", "one");
}

TEST_F(ApiValues, longLineIsReadInPieces)
{
    expectValue("<key>" + std::string(600, 'v') + "</key>\n", std::string(506, 'v'));
}

TEST_F(ApiValues, failingScriptIsAnEmptyValueAndItsOutputStays)
{
    root::stub("php", "echo '<key>x</key>' >\"$3\"; exit 2");
    EXPECT_STREQ(getSysVar("<key>", "tovGet"), "");
    EXPECT_EQ(watch::calls(), (Lines{line, trace("getSysVar failed: " + line + " -- iRet: 512")}));
    EXPECT_TRUE(root::exists(output));
    EXPECT_STREQ(kytegetSysVar("<key>", "tovGet"), "");
}

TEST_F(ApiValues, shellThatCannotStartIsAnEmptyValue)
{
    watch::answer("sudo", -1, EAGAIN);
    EXPECT_STREQ(getSysVar("<key>", "tovGet"), "");
    EXPECT_EQ(watch::calls().back(), trace("getSysVar failed: " + line + " -- iRet: -1"));
}

TEST_F(ApiValues, missingOutputIsTraced)
{
    root::stub("php", "exit 0");
    EXPECT_STREQ(getSysVar("<key>", "tovGet"), "");
    EXPECT_EQ(watch::calls(), (Lines{line, trace("getSysVar(): " + line + " -- iRet: 0"),
                                     trace("getSysVar failed: open file " + output +
                                           " -- err: No such file or directory")}));
}

TEST_F(ApiValues, unreadableOutputIsTracedAndRemoved)
{
    root::stub("php", ": >\"$3\"; chmod 0 \"$3\"");
    EXPECT_STREQ(getSysVar("<key>", "tovGet"), "");
    EXPECT_EQ(watch::calls().back(),
              trace("getSysVar failed: open file " + output + " -- err: Permission denied"));
    EXPECT_FALSE(root::exists(output));
}

TEST_F(ApiValues, eachAccessorHasABufferOfItsOwn)
{
    watch::mayBeStrange("tool");
    answer("<a>1</a>\n<b>2</b>\n<c>3</c>\n");
    const char* first = getSysVar("<a>", "tovGet");
    const char* second = kytegetSysVar("<b>", "tovGet");
    testing::internal::CaptureStdout();
    root::stub("tool", "cat /stubs/answer >\"$1\"");
    const char* third = kyteGetVar("tool", "<c>");
    testing::internal::GetCapturedStdout();
    EXPECT_STREQ(first, "1");
    EXPECT_STREQ(second, "2");
    EXPECT_STREQ(third, "3");
    EXPECT_EQ(getSysVar("<b>", "tovGet"), first);
    EXPECT_STREQ(first, "2");
}

TEST_F(ApiValues, anyCommandIsRunAndMessagesAreComments)
{
    watch::mayBeStrange("tool");
    root::stub("tool", "echo \"<key>$1</key>\" >\"$2\"");
    testing::internal::CaptureStdout();
    EXPECT_STREQ(kyteGetVar("tool -x", "<key>"), "-x");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "//<!-- getSysVar(): tool -x " + output +
                                                          " -- iRet: 0-->\n"
                                                          "//<!-- getSysVar retBuf:-x-->\n");
    EXPECT_EQ(watch::calls(), Lines{"tool -x " + output});
    EXPECT_FALSE(root::exists(output));
}

TEST_F(ApiValues, failuresOfACommandAreComments)
{
    watch::mayBeStrange("");
    testing::internal::CaptureStdout();
    EXPECT_STREQ(kyteGetVar("exit 3;", "<key>"), "");
    EXPECT_STREQ(kyteGetVar("true", "<key>"), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "//<!-- getSysVar failed: exit 3; " + output + " -- iRet: 768-->\n" +
                  "//<!-- getSysVar(): true " + output + " -- iRet: 0-->\n" +
                  "//<!-- getSysVar failed: open file " + output +
                  " -- err: No such file or directory-->\n");
    EXPECT_EQ(watch::calls().size(), 2U) << "and no traces";
}

TEST_F(ApiValues, longCommandIsRunWhole)
{
    watch::mayBeStrange("tool");
    const std::string argument(4000, 'a');
    root::stub("tool", "echo \"<key>${#1}</key>\" >\"$2\"");
    testing::internal::CaptureStdout();
    EXPECT_STREQ(kyteGetVar(("tool " + argument).c_str(), "<key>"), "4000");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "//<!-- " + ("getSysVar(): tool " + argument).substr(0, 1999) + "-->\n" +
                  "//<!-- getSysVar retBuf:4000-->\n");
    root::stub("php", "echo \"<key>${#2}</key>\" >\"$3\"");
    EXPECT_STREQ(kytegetSysVar("<key>", argument.c_str()), "4000");
}

TEST_F(ApiValues, outputIsClosedAndRemovedBeforeTheValueIsTraced)
{
    answer("<key>tower</key>\n");
    bool isThere = true;
    bool isOpen = true;
    watch::after("echo \"getSysVar retBuf", [&] {
        isThere = root::exists(output);
        isOpen = root::isOpen(output);
    });
    EXPECT_STREQ(getSysVar("<key>", "tovGet"), "tower");
    EXPECT_FALSE(isThere);
    EXPECT_FALSE(isOpen);
}

TEST_F(ApiValues, commentsAreFlushedAtOnce)
{
    watch::mayBeStrange("t");
    root::stub("tool", "echo \"<key>x</key>\" >\"$1\"");
    EXPECT_EQ(root::printedPieces([] {
                  EXPECT_STREQ(kyteGetVar("tool", "<key>"), "x");
                  EXPECT_STREQ(kyteGetVar("true", "<key>"), "");
              }),
              (Lines{"//<!-- getSysVar(): tool " + output + " -- iRet: 0-->\n",
                     "//<!-- getSysVar retBuf:x-->\n",
                     "//<!-- getSysVar(): true " + output + " -- iRet: 0-->\n",
                     "//<!-- getSysVar failed: open file " + output +
                         " -- err: No such file or directory-->\n"}));
}

// ---- setSysVar --------------------------------------------------------------------------------

class SetApiValue : public root::Test {
  protected:
    const std::string output = root::workFile("setSysVar");
    const std::string line = "sudo /usr/bin/php /etc/inc/api_system.php tovSet a value > " + output;
};

TEST_F(SetApiValue, argumentReachesTheScriptUnchanged)
{
    root::stub("php", "echo \"$#:$*\" >/tmp/seen; echo printed");
    EXPECT_EQ(setSysVar("a value", "tovSet"), 0);
    EXPECT_EQ(watch::calls(), (Lines{line, trace("setSysVar(): " + line + " -- iRet: 0")}));
    EXPECT_EQ(root::readFile("/tmp/seen"), "4:/etc/inc/api_system.php tovSet a value\n");
    EXPECT_FALSE(root::exists(output));
}

TEST_F(SetApiValue, outputIsRemovedAfterTheResultIsTraced)
{
    root::stub("php", "echo printed");
    std::string atTheTrace;
    watch::after("echo \"setSysVar(): ", [&] { atTheTrace = root::readFile(output); });
    EXPECT_EQ(setSysVar("a value", "tovSet"), 0);
    EXPECT_EQ(atTheTrace, "printed\n");
    EXPECT_FALSE(root::exists(output));
}

TEST_F(SetApiValue, failureLeavesTheOutput)
{
    root::stub("php", "echo why; exit 1");
    EXPECT_EQ(setSysVar("a value", "tovSet"), -1);
    EXPECT_EQ(watch::calls(), (Lines{line, trace("setSysVar failed: " + line + " -- iRet: 256")}));
    EXPECT_EQ(root::readFile(output), "why\n");
}

TEST_F(SetApiValue, shellThatCannotStartIsAFailure)
{
    watch::answer("sudo", -1, EAGAIN);
    EXPECT_EQ(setSysVar("a value", "tovSet"), -1);
    EXPECT_EQ(watch::calls().back(), trace("setSysVar failed: " + line + " -- iRet: -1"));
}

TEST_F(SetApiValue, longValueReachesTheScriptWhole)
{
    const std::string value(4000, 'v');
    root::stub("php", "printf %s \"$3\" >/tmp/seen");
    EXPECT_EQ(setSysVar(value.c_str(), "tovSet"), 0);
    EXPECT_EQ(root::readFile("/tmp/seen"), value);
}

TEST_F(SetApiValue, lineIsCutAt4351Characters)
{
    watch::mayBeStrange("sudo");
    const std::string front = "sudo /usr/bin/php /etc/inc/api_system.php tovSet ";
    const std::string back = " > " + output;
    const std::string value(4351 - front.size() - back.size(), 'v');
    for (const std::string& text : {value, value + "v", std::string(9000, 'v')}) {
        watch::restart();
        watch::answer("sudo", 0, 0);
        EXPECT_EQ(setSysVar(text.c_str(), "tovSet"), 0);
        const std::string cut = (front + text + back).substr(0, 4351);
        EXPECT_EQ(watch::calls(), (Lines{cut, trace(("setSysVar(): " + cut).substr(0, 1999))}));
    }
}

} // namespace
