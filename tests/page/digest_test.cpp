// SPDX-License-Identifier: MIT
#include "page/digest.h"

#include <gtest/gtest.h>

namespace {

TEST(Digest, isSha256InHexadecimalDigits)
{
    EXPECT_EQ(page::digestOf("abc"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(page::digestOf(""),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

} // namespace
