// SPDX-License-Identifier: MIT
#include "page/escape.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using page::escape;

const std::string kMark = "\xEF\xBF\xBD"; // U+FFFD

TEST(Escape, keepsPlainTextAsItIs)
{
    const std::string text = "Économies 2026 (\xE7\xAE\x80, \xF0\x9F\x8E\x89) = a/b;c\n\td";
    EXPECT_EQ(escape(text), text);
    EXPECT_EQ(escape(""), "");
}

TEST(Escape, writesWhatMeansSomethingAsReference)
{
    EXPECT_EQ(escape("<img src=x onerror=alert(1)>"), "&lt;img src=x onerror=alert(1)&gt;");
    EXPECT_EQ(escape(R"(a&b"c'd)"), "a&amp;b&quot;c&#39;d");
    EXPECT_EQ(escape("-->"), "--&gt;");
}

TEST(Escape, replacesCharactersThatControlSomething)
{
    EXPECT_EQ(escape(std::string_view("a\0b\rc\x1B[31m\x7F", 11)),
              "a" + kMark + "b" + kMark + "c" + kMark + "[31m" + kMark);
    EXPECT_EQ(escape("\xC2\x85"), kMark) << "U+0085";
    EXPECT_EQ(escape("\xE2\x80\xA8\xE2\x80\xA9"), kMark + kMark) << "ends of lines in script";
}

TEST(Escape, replacesEachByteThatIsNoUtf8)
{
    EXPECT_EQ(escape("a\xFF"), "a" + kMark);
    EXPECT_EQ(escape("\xC3"), kMark) << "cut short";
    EXPECT_EQ(escape("\xC3<"), kMark + "&lt;") << "what follows is not swallowed";
    EXPECT_EQ(escape("\xC0\xBC"), kMark + kMark) << "a longer form of \"<\"";
    EXPECT_EQ(escape("\xE0\x80\xBC"), kMark + kMark + kMark);
    EXPECT_EQ(escape("\xED\xA0\x80"), kMark + kMark + kMark) << "half of a pair";
    EXPECT_EQ(escape("\xF4\x90\x80\x80"), kMark + kMark + kMark + kMark) << "beyond U+10FFFF";
    EXPECT_EQ(escape("\x80"), kMark);
}

} // namespace
