// SPDX-License-Identifier: MIT
#include "sharestatus/semaphore_format.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using sharestatus::decodeSemaphore;
using sharestatus::encodeSemaphore;
using sharestatus::Semaphore;

std::string encoded(const Semaphore& semaphore)
{
    const auto bytes = encodeSemaphore(semaphore);
    return {bytes.begin(), bytes.end()};
}

Semaphore markedAt(std::uint32_t time)
{
    return {.busy = 1, .reserved = 0, .time = time};
}

TEST(SemaphoreFormat, encodedMarkHasSixBytesInOrder)
{
    EXPECT_EQ(encoded({.busy = 1, .reserved = 0xEE, .time = 0x87654321}),
              "\x01\xEE\x21\x43\x65\x87");
}

TEST(SemaphoreFormat, bytesAreDecodedAsEncodedAndMoreAreIgnored)
{
    const Semaphore semaphore = decodeSemaphore("\x02\x80\xFF\xFE\xFD\xFC-and more");
    EXPECT_EQ(semaphore.busy, 2);
    EXPECT_EQ(semaphore.reserved, 0x80);
    EXPECT_EQ(semaphore.time, 0xFCFDFEFFU);
}

TEST(SemaphoreFormat, missingBytesAreZero)
{
    EXPECT_EQ(encoded(decodeSemaphore("")), std::string(6, '\0'));
    EXPECT_EQ(encoded(decodeSemaphore("\x01")), std::string("\x01\0\0\0\0\0", 6));
    EXPECT_EQ(encoded(decodeSemaphore("\x01\x02\x03")), std::string("\x01\x02\x03\0\0\0", 6));
}

TEST(SemaphoreFormat, markIsFreshForTwoHours)
{
    const std::uint32_t now = 1800000000;
    EXPECT_TRUE(markedAt(now).isBusyAt(now));
    EXPECT_TRUE(markedAt(now - 7199).isBusyAt(now));
    EXPECT_FALSE(markedAt(now - 7200).isBusyAt(now));
    EXPECT_FALSE(markedAt(0).isBusyAt(now));
}

TEST(SemaphoreFormat, markFromTheFutureIsFresh)
{
    const std::uint32_t now = 1800000000;
    EXPECT_TRUE(markedAt(now + 1).isBusyAt(now));
    EXPECT_TRUE(markedAt(now + 1000000).isBusyAt(now));
}

TEST(SemaphoreFormat, ageIsRightAcrossTheEndOfTheClocksRange)
{
    EXPECT_TRUE(markedAt(0xFFFFFFF0U).isBusyAt(7199 - 16));
    EXPECT_FALSE(markedAt(0xFFFFFFF0U).isBusyAt(7200 - 16));
    EXPECT_TRUE(markedAt(0x7FFFFFF0U).isBusyAt(0x7FFFFFF0U + 7199U));
}

TEST(SemaphoreFormat, anyFlagExceptZeroIsBusy)
{
    for (const int flag : {1, 2, 0x31, 0x80, 0xFF}) {
        EXPECT_TRUE((Semaphore{static_cast<std::uint8_t>(flag), 0, 5}).isBusyAt(5)) << flag;
    }
    EXPECT_FALSE((Semaphore{0, 0xFF, 5}).isBusyAt(5));
}

} // namespace
