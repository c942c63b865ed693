// SPDX-License-Identifier: MIT
#include "core/bytes.h"

#include <array>
#include <cctype>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Bytes, sixteenBitsAreLeastSignificantFirst)
{
    std::array<char, 2> out{};
    core::putU16(out, 0x80FE);
    EXPECT_EQ(std::string(out.begin(), out.end()), "\xFE\x80");
    EXPECT_EQ(core::getU16(out), 0x80FE);
}

TEST(Bytes, thirtyTwoBitsAreLeastSignificantFirst)
{
    std::array<char, 4> out{};
    core::putU32(out, 0xF1E2D3C4);
    EXPECT_EQ(std::string(out.begin(), out.end()), "\xC4\xD3\xE2\xF1");
    EXPECT_EQ(core::getU32(out), 0xF1E2D3C4U);
    EXPECT_EQ(core::u32Bytes(0xF1E2D3C4), out);
}

TEST(Bytes, limitsAreDecodedAsEncoded)
{
    for (const std::uint32_t value : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        std::array<char, 4> out{};
        core::putU32(out, value);
        EXPECT_EQ(core::getU32(out), value);
    }
}

TEST(Bytes, wordIsTakenFromAnyOffset)
{
    const std::string_view bytes = "\x01\xF2\x03\xF4\x05";
    EXPECT_EQ(core::u32At(bytes, 0), 0xF403F201U);
    EXPECT_EQ(core::u32At(bytes, 1), 0x05F403F2U);
}

TEST(Bytes, missingBytesOfAWordAreZero)
{
    const std::string_view bytes = "\x01\xF2\x03\xF4\x05";
    EXPECT_EQ(core::u32At(bytes, 2), 0x0005F403U);
    EXPECT_EQ(core::u32At(bytes, 4), 5U);
    EXPECT_EQ(core::u32At(bytes, 5), 0U);
    EXPECT_EQ(core::u32At(bytes, 6), 0U);
    EXPECT_EQ(core::u32At("", 0), 0U);
}

TEST(Bytes, alphanumericAgreesWithTheCLocaleForEveryByte)
{
    for (int value = 0; value < 256; ++value) {
        EXPECT_EQ(core::isAsciiAlphanumeric(static_cast<std::uint8_t>(value)),
                  std::isalnum(value) != 0)
            << value;
    }
}

TEST(Bytes, upperCaseAgreesWithTheCLocaleForEveryByte)
{
    for (int value = 0; value < 256; ++value) {
        EXPECT_EQ(core::byteOf(core::toAsciiUpper(static_cast<char>(value))), std::toupper(value))
            << value;
    }
}

TEST(Bytes, hexadecimalDigitsAreAppendedToAnyText)
{
    std::string text = "0x";
    core::appendHex(text, std::string("\0\x0F\xA9\xFF", 4));
    EXPECT_EQ(text, "0x000fa9ff");
    core::appendHex(text, std::array<unsigned char, 2>{0x12, 0xDE});
    EXPECT_EQ(text, "0x000fa9ff12de");
    core::appendHex(text, std::string());
    EXPECT_EQ(text, "0x000fa9ff12de");
}

} // namespace
