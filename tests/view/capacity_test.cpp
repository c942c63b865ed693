// SPDX-License-Identifier: MIT
#include "view/capacity.h"

#include <gtest/gtest.h>
#include <sys/statvfs.h>

#include "tests/support/root.h"

namespace {

using view::Capacity;
using view::formatCapacity;
using view::readCapacity;

class DiskCapacity : public root::UntracedTest {};

TEST_F(DiskCapacity, isThatOfTheFileSystem)
{
    root::writeFile("/tmp/file", std::string(1U << 20, 'x'));
    const std::optional<Capacity> capacity = readCapacity("/tmp");
    ASSERT_TRUE(capacity);
    EXPECT_EQ(capacity->total, 16384U) << "16 MiB, as the test's root has it";
    EXPECT_EQ(capacity->total, capacity->used + capacity->free);
    EXPECT_GE(capacity->used, 1024U);
    EXPECT_LT(capacity->used, 2048U);
}

TEST_F(DiskCapacity, isThatOfTheSharesUnlessSaidOtherwise)
{
    struct statvfs status = {};
    ASSERT_EQ(::statvfs("/share", &status), 0);
    EXPECT_EQ(readCapacity()->total, std::uint64_t{status.f_blocks} * status.f_frsize / 1024);
}

TEST_F(DiskCapacity, isNotKnownOfWhatIsNotThereOrHasNoSize)
{
    EXPECT_FALSE(readCapacity("/nowhere"));
    EXPECT_FALSE(readCapacity("/proc"));
}

TEST(Capacity, isFullerTheLessIsFree)
{
    EXPECT_EQ((Capacity{1000, 0, 1000}).percentFull(), 0U);
    EXPECT_EQ((Capacity{1000, 1, 999}).percentFull(), 1U);
    EXPECT_EQ((Capacity{1000, 850, 150}).percentFull(), 85U);
    EXPECT_EQ((Capacity{1000, 851, 149}).percentFull(), 86U);
    EXPECT_EQ((Capacity{1000, 999, 1}).percentFull(), 99U) << "something can still be written";
    EXPECT_EQ((Capacity{1000, 1000, 0}).percentFull(), 100U);
    EXPECT_EQ((Capacity{1000, 950, 0}).percentFull(), 100U) << "the rest is kept back";
    EXPECT_EQ((Capacity{0, 0, 0}).percentFull(), 0U);
    constexpr std::uint64_t kHuge = std::uint64_t{1} << 62;
    EXPECT_EQ((Capacity{2 * kHuge, kHuge, kHuge}).percentFull(), 50U);
}

TEST(Capacity, isSaidInTheUnitsOfAStatus)
{
    EXPECT_EQ(formatCapacity({500000000, 312000000, 188000000}), "312 of 500 GB used, 188 GB free");
    EXPECT_EQ(formatCapacity({1400000, 900000, 500000}), "900 MB of 1.4 GB used, 500 MB free");
    EXPECT_EQ(formatCapacity({16384, 0, 16384}), "0 KB of 16 MB used, 16 MB free");
}

} // namespace
