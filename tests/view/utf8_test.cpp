// SPDX-License-Identifier: MIT
#include "view/utf8.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace {

void expectCharacter(std::string_view text, char32_t code, std::size_t size)
{
    const std::optional<view::Character> character = view::firstCharacter(text);
    ASSERT_TRUE(character) << text;
    EXPECT_EQ(character->code, code) << text;
    EXPECT_EQ(character->size, size) << text;
}

/// A character as UTF-8, by the scheme's own rule and without a library.
std::string encode(char32_t code)
{
    const auto trail = [code](unsigned shift) {
        return static_cast<char>(0x80U | ((code >> shift) & 0x3FU));
    };
    if (code < 0x80) {
        return {static_cast<char>(code)};
    }
    if (code < 0x800) {
        return {static_cast<char>(0xC0U | (code >> 6U)), trail(0)};
    }
    if (code < 0x10000) {
        return {static_cast<char>(0xE0U | (code >> 12U)), trail(6), trail(0)};
    }
    return {static_cast<char>(0xF0U | (code >> 18U)), trail(12), trail(6), trail(0)};
}

TEST(FirstCharacter, isReadWhateverFollows)
{
    expectCharacter("ab", 'a', 1);
    expectCharacter(std::string_view("\0b", 2), 0, 1);
    expectCharacter("\xC3\x89x", 0xC9, 2);
    expectCharacter("\xE7\xAE\x80\xFF", 0x7B80, 3);
    expectCharacter("\xF0\x9F\x8E\x89", 0x1F389, 4);
}

TEST(FirstCharacter, everyCodeOfUnicodeIsReadAndNoOther)
{
    for (std::uint32_t code = 0; code < 0x120000; ++code) {
        const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
        const std::string bytes = encode(code);
        const auto character = view::firstCharacter(bytes);
        if (isSurrogate || code > 0x10FFFF) {
            ASSERT_FALSE(character) << code;
        } else {
            ASSERT_TRUE(character) << code;
            ASSERT_EQ(character->code, code);
            ASSERT_EQ(character->size, bytes.size());
        }
    }
}

TEST(FirstCharacter, bytesThatStartNoneGiveNone)
{
    for (const char* bytes : {
             "",
             "\x80",
             "\xBF",
             "\xFF",
             "\xC3",             // cut in the middle
             "\xE2\x82",         //
             "\xF0\x9F\x8E",     //
             "\xC3(",            // another character begins in the middle
             "\xE2\x82(",        //
             "\xC0\xAF",         // longer than it need be
             "\xE0\x80\xAF",     //
             "\xF0\x80\x80\xAF", //
             "\xED\xA0\x80",     // half of a pair
             "\xF4\x90\x80\x80", // beyond the last code
             "\xF8\x88\x80\x80\x80",
         }) {
        EXPECT_FALSE(view::firstCharacter(bytes)) << bytes;
    }
}

TEST(IsUtf8, tellsTextFromBytes)
{
    EXPECT_TRUE(view::isUtf8(""));
    EXPECT_TRUE(view::isUtf8("\x1B plain \xC3\x89 \xF0\x9F\x93\xB7"));
    EXPECT_FALSE(view::isUtf8("\xC3"));
    EXPECT_FALSE(view::isUtf8("a\x80"));
    EXPECT_FALSE(view::isUtf8("a\x80z"));
}

} // namespace
