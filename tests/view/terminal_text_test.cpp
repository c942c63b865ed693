// SPDX-License-Identifier: MIT
#include "view/terminal_text.h"

#include <gtest/gtest.h>

namespace {

using view::makePrintable;

void expectText(std::string_view in, const std::string& text, std::size_t columns)
{
    const view::TerminalText out = makePrintable(in);
    EXPECT_EQ(out.text, text);
    EXPECT_EQ(out.columns, columns) << text;
}

TEST(TerminalText, plainTextStaysPlain)
{
    expectText("", "", 0);
    expectText("Family Videos", "Family Videos", 13);
    std::string all;
    for (char c = ' '; c < '\x7F'; ++c) {
        if (c != '\\') {
            all += c;
        }
    }
    expectText(all, all, all.size());
}

TEST(TerminalText, charactersOfTheWorldStayAndTakeTheirColumns)
{
    expectText("\xC3\x89"
               "conomies",
               "\xC3\x89"
               "conomies",
               9);
    expectText("e\xCC\x81", "e\xCC\x81", 1); // a letter and a combining accent
    expectText("\xE5\x86\x99\xE7\x9C\x9F", "\xE5\x86\x99\xE7\x9C\x9F", 4); // two wide characters
    expectText("\xF0\x9F\x93\xB7", "\xF0\x9F\x93\xB7", 2);                 // a picture
}

TEST(TerminalText, everyControlCharacterIsShownByItsNumber)
{
    expectText("\x1B[2J\x07", "\\u{1b}[2J\\u{7}", 14);
    expectText(std::string("a\0b", 3), "a\\u{0}b", 7);
    expectText("\t\r\n\x7F", "\\u{9}\\u{d}\\u{a}\\u{7f}", 21);
    expectText("\xC2\x80\xC2\x9B\xC2\x9F", "\\u{80}\\u{9b}\\u{9f}", 18);
    for (int c = 0; c < 0x20; ++c) {
        EXPECT_EQ(makePrintable(std::string(1, static_cast<char>(c))).text.substr(0, 3), "\\u{")
            << c;
    }
}

TEST(TerminalText, charactersThatTurnTheLineRoundAreShownByTheirNumbers)
{
    expectText("\xE2\x80\xAE"
               "gpj",
               "\\u{202e}gpj", 11);
    expectText("\xE2\x81\xA6\xE2\x81\xA9", "\\u{2066}\\u{2069}", 16);
    expectText("\xE2\x80\x8B\xEF\xBB\xBF\xC2\xAD", "\\u{200b}\\u{feff}\\u{ad}", 22);
    expectText("\xE2\x80\xA8\xD8\x9C", "\\u{2028}\\u{61c}", 15);
}

TEST(TerminalText, bytesThatAreNoUtf8AreShownByTheirValues)
{
    expectText("\x80\xFF", "\\x80\\xff", 8);
    expectText("\xC3", "\\xc3", 4); // cut in the middle of a character
    expectText("\xE2\x82", "\\xe2\\x82", 8);
    expectText("\xC3(", "\\xc3(", 5);
    expectText("\xC0\xAF", "\\xc0\\xaf", 8); // longer than it need be
    expectText("\xE0\x80\xAF", "\\xe0\\x80\\xaf", 12);
    expectText("\xED\xA0\x80", "\\xed\\xa0\\x80", 12); // half of a pair
    expectText("\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80", 16);
}

TEST(TerminalText, backslashIsDoubled)
{
    expectText("a\\u{1b}", "a\\\\u{1b}", 8);
}

} // namespace
