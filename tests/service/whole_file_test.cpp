// SPDX-License-Identifier: MIT
#include "service/whole_file.h"

#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using service::readWholeFile;

class WholeFile : public root::Test {};

TEST_F(WholeFile, everyByteIsRead)
{
    std::string bytes;
    for (int value = 0; value < 256; ++value) {
        bytes += static_cast<char>(value);
    }
    const std::string content = "\r\n\x1A" + bytes + std::string(70'000, '\xFF') + "\n\n";
    root::writeFile("/tmp/whole", content);
    EXPECT_EQ(readWholeFile("/tmp/whole"), content);
}

TEST_F(WholeFile, emptyFileHasNoBytes)
{
    root::writeFile("/tmp/whole", "");
    EXPECT_EQ(readWholeFile("/tmp/whole"), "");
}

TEST_F(WholeFile, missingFileIsNone)
{
    EXPECT_EQ(readWholeFile("/tmp/missing"), std::nullopt);
}

TEST_F(WholeFile, folderIsNone)
{
    EXPECT_EQ(readWholeFile("/tmp"), std::nullopt);
}

} // namespace
