// SPDX-License-Identifier: MIT
//
// copyText: text on the heap.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <malloc.h>
#include <string>

#include "core/core.h"
#include "tests/support/faults.h"

namespace {

TEST(Memory, copyHoldsTheWholeText)
{
    for (const std::string& text :
         {std::string(), std::string("a"), std::string("\xC3\xA9lise \"'$`\\\n\x01\xFF"),
          std::string(4000, 'n'), std::string(100000, 'n')}) {
        const core::Text copy = core::copyText(text.c_str());
        ASSERT_TRUE(copy);
        EXPECT_EQ(copy.get(), text);
    }
}

TEST(Memory, copyEndsAtTheFirstZeroByte)
{
    const core::Text copy = core::copyText("ab\0cd");
    ASSERT_TRUE(copy);
    EXPECT_STREQ(copy.get(), "ab");
}

TEST(Memory, copyDoesNotShareItsBytes)
{
    std::string text = "anna";
    const core::Text copy = core::copyText(text.c_str());
    ASSERT_TRUE(copy);
    text = "beth";
    EXPECT_STREQ(copy.get(), "anna");
    copy.get()[0] = 'A';
    EXPECT_EQ(text, "beth");
}

TEST(Memory, withoutMemoryThereIsNoCopyAndErrnoIsSet)
{
    const faults::Guard noMemory = faults::failStrdup();
    errno = 0;
    const core::Text copy = core::copyText("anna");
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_FALSE(copy);
}

TEST(Memory, copyIsReleasedWithItsOwner)
{
    const auto inUse = [] {
        const struct mallinfo2 heap = ::mallinfo2();
        return heap.uordblks + heap.hblkhd;
    };
    const std::string text(100000, 'n');
    const std::size_t before = inUse();
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(core::copyText(text.c_str()));
    }
    EXPECT_EQ(inUse(), before);
}

TEST(Memory, blockOfTheCLibraryCanBeOwned)
{
    core::Text block(static_cast<char*>(std::calloc(1, 50)));
    ASSERT_TRUE(block);
    block = core::copyText("anna");
    EXPECT_STREQ(block.get(), "anna");
    block.reset();
    EXPECT_FALSE(block);
}

} // namespace
