// SPDX-License-Identifier: MIT
#include "pagehelpers/system_status.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace {

using pagehelpers::contains;
using pagehelpers::numberBehind;
using pagehelpers::ReportLine;
using pagehelpers::valueBehind;

ReportLine line(std::string_view text)
{
    ReportLine result = {};
    text.copy(result.data(), result.size() - 1);
    return result;
}

TEST(SystemStatus, reportIsWrittenByTheSystemScript)
{
    EXPECT_STREQ(pagehelpers::reportCommand("/tmp/report7").data(),
                 "sudo /usr/bin/php /etc/inc/api_system.php tovGetSystemStatus /tmp/report7");
}

TEST(SystemStatus, tagIsFoundAnywhereInALine)
{
    EXPECT_TRUE(contains(line("<HDDInfo>"), pagehelpers::kInternalDisk));
    EXPECT_TRUE(contains(line("  x<HDDInfo>y\n"), "<HDDInfo>"));
    EXPECT_FALSE(contains(line(""), "<HDDInfo>"));
    EXPECT_FALSE(contains(line("<HDDInfo"), "<HDDInfo>"));
    EXPECT_FALSE(contains(line("</HDDInfo>"), "<HDDInfo>"));
    EXPECT_FALSE(contains(line("<hddinfo>"), "<HDDInfo>"));
}

TEST(SystemStatus, zeroByteEndsALine)
{
    EXPECT_FALSE(contains(line(std::string_view("a\0<tag>", 7)), "<tag>"));
    EXPECT_EQ(valueBehind(line(std::string_view("<tag>a\0b</tag>", 14)), "<tag>"), "a");
}

TEST(SystemStatus, valueEndsAtTheNextTag)
{
    EXPECT_EQ(valueBehind(line("  <tag>value</tag>\n"), "<tag>"), "value");
    EXPECT_EQ(valueBehind(line("<tag> a > b <i>c</i></tag>\n"), "<tag>"), " a > b ");
    EXPECT_EQ(valueBehind(line("<tag></tag>\n"), "<tag>"), "");
    EXPECT_EQ(valueBehind(line("<tag>one</tag><tag>two</tag>\n"), "<tag>"), "one");
}

TEST(SystemStatus, valueEndsWithItsLine)
{
    EXPECT_EQ(valueBehind(line("<tag>value\n"), "<tag>"), "value");
    EXPECT_EQ(valueBehind(line("<tag>value\r\n"), "<tag>"), "value");
    EXPECT_EQ(valueBehind(line("<tag>va\rlue</tag>\n"), "<tag>"), "va");
    EXPECT_EQ(valueBehind(line("<tag>\r</tag>\n"), "<tag>"), "");
    EXPECT_EQ(valueBehind(line("<tag>value"), "<tag>"), "value");
    EXPECT_EQ(valueBehind(line("<tag>"), "<tag>"), "");
    EXPECT_EQ(valueBehind(line("<tag>\n"), "<tag>"), "");
}

TEST(SystemStatus, valueIsCutAt40Characters)
{
    for (const std::size_t size : {39U, 40U, 41U, 400U, 600U}) {
        const std::string value(size, 'v');
        EXPECT_EQ(valueBehind(line("<tag>" + value + "</tag>\n"), "<tag>"),
                  value.substr(0, std::min<std::size_t>(size, 40)));
    }
}

TEST(SystemStatus, numberIsDecimal)
{
    EXPECT_EQ(numberBehind(line("<tag>12</tag>\n"), "<tag>"), 12);
    EXPECT_EQ(numberBehind(line("<tag> -3 disks</tag>\n"), "<tag>"), -3);
    EXPECT_EQ(numberBehind(line("<tag>+010</tag>\n"), "<tag>"), 10);
    EXPECT_EQ(numberBehind(line("<tag>2147483647</tag>\n"), "<tag>"),
              std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(numberBehind(line("<tag>-2147483648</tag>\n"), "<tag>"),
              std::numeric_limits<std::int32_t>::min());
}

TEST(SystemStatus, numberBeyondThirtyTwoBitsKeepsItsLowBits)
{
    EXPECT_EQ(numberBehind(line("<tag>2147483648</tag>\n"), "<tag>"),
              std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(numberBehind(line("<tag>4294967297</tag>\n"), "<tag>"), 1);
    EXPECT_EQ(numberBehind(line("<tag>99999999999</tag>\n"), "<tag>"), 1215752191);
}

TEST(SystemStatus, textWithoutANumberIsZero)
{
    for (const char* value : {"", "x", "x1", "-", "</tag>", "</tag>5", "<b>5</b>"}) {
        EXPECT_EQ(numberBehind(line(std::string("<tag>") + value), "<tag>"), 0) << value;
    }
    EXPECT_EQ(numberBehind(line("<tag>0x1F</tag>\n"), "<tag>"), 0);
}

} // namespace
