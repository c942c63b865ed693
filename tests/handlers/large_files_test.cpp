// SPDX-License-Identifier: MIT
//
// Files of more than 2 GiB, which need 64-bit file sizes on 32-bit machines.
#include <array>
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/request.h"
#include "vokcontrol.h"

namespace {

namespace fs = std::filesystem;

using request::frame;
using request::Lines;
using root::le32;
using root::trace;

const std::string kBuildFile = "/etc/buildinfo.txt";
const std::string kPrivateFile = "/etc/pelconfig/vokcontrol/vokcontrol-private.txt";

constexpr std::uintmax_t kGibibyte = 1U << 30U;

/// Makes a file that begins with a text; zeros follow up to its size, and take no space.
void makeLarge(const std::string& path, const std::string& start, std::uintmax_t size)
{
    root::writeFile(path, start);
    fs::resize_file(path, size);
}

std::string sizeTrace(const std::string& path, const std::string& size)
{
    return trace("file " + path + " size = " + size + " bytes");
}

class LargeFiles : public request::Test {
  protected:
    void TearDown() override
    {
        fs::remove(kBuildFile);
        request::Test::TearDown();
    }
};

TEST_F(LargeFiles, tooLargeABuildFileIsRefused)
{
    const std::vector<std::pair<std::uintmax_t, std::string>> sizes = {
        {2 * kGibibyte - 1, "2147483647"},
        {2 * kGibibyte, "-2147483648"},
        {4 * kGibibyte, "0"},
        {5 * kGibibyte + 7, "1073741831"}};
    for (const auto& [size, shown] : sizes) {
        SCOPED_TRACE(size);
        makeLarge(kBuildFile, "1.0\n", size);
        expectError(request::process(frame("vers", 0)), "erro " + le32(0x40000004), 0x40000004,
                    {sizeTrace(kBuildFile, shown)});
    }
}

/// The answer has the low 32 bits of the size, and that many bytes of the file.
TEST_F(LargeFiles, privateFileIsSentUpToTheSizeInTheHeader)
{
    makeLarge(kPrivateFile, "abcdef", 4 * kGibibyte + 3);
    expectEnd(request::process(frame("gpvt", 0)), "gprt " + le32(2) + "\n" + le32(3) + "\n" + "abc",
              {sizeTrace(kPrivateFile, "3"), trace("sending buffer abc")});
}

TEST_F(LargeFiles, publishedStatusIsReadWhateverFollowsIt)
{
    makeLarge(root::kStatusFile, le32(4) + "\x01\x02\x10\x03", 3 * kGibibyte);
    std::array<char, 4096> buffer{};
    EXPECT_EQ(Read_Status_file(buffer.data()), 3);
    EXPECT_EQ(std::string(buffer.data(), 4), "\x01\x02\x10\x03");
    const std::string what = std::string("Read_Status_file ") + root::kStatusFile;
    EXPECT_EQ(watch::calls(),
              (Lines{trace(what + " - len1 = 4 "), trace("Read_Status_file - len = 4 "),
                     trace("Read_Status_file - chksum  = 3 3")}));
}

} // namespace
