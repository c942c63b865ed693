// SPDX-License-Identifier: MIT
//
// The status file: publishing it, reading it, and both at once.
#include "sharestatus/status_file.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <malloc.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/core.h"
#include "tests/support/faults.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;
using root::le32;
using root::trace;
using root::zeros;

constexpr std::size_t kMebibyte = 1048576;

/// A whole status file.
std::string fileOf(const std::string& payload, char check)
{
    const std::string image =
        le32(static_cast<std::uint32_t>(payload.size() + 1)) + payload + check;
    return image + zeros(kMebibyte - image.size());
}

// ---- Publishing -------------------------------------------------------------------------------

class PublishStatus : public root::Test {};

TEST_F(PublishStatus, fileIsCreatedWhole)
{
    sharestatus::publishStatus("\x01\x02\x10");
    EXPECT_EQ(root::readFile(root::kStatusFile), fileOf("\x01\x02\x10", 3));
    EXPECT_EQ(watch::calls(), Lines{});
}

TEST_F(PublishStatus, emptyPayloadIsPublished)
{
    sharestatus::publishStatus("");
    EXPECT_EQ(root::readFile(root::kStatusFile), fileOf("", 0));
}

TEST_F(PublishStatus, largestPayloadIsPublished)
{
    const std::string payload(4096, '\x03');
    sharestatus::publishStatus(payload);
    EXPECT_EQ(root::readFile(root::kStatusFile), fileOf(payload, 0));
}

/// The number of write calls that this process has made.
unsigned long writes()
{
    const std::string counts = root::readFile("/proc/self/io");
    const std::string name = "syscw: ";
    return std::stoul(counts.substr(counts.find(name) + name.size()));
}

TEST_F(PublishStatus, fileTakesTwoWrites)
{
    for (const std::size_t size : {0U, 1U, 4092U, 4096U}) {
        const std::string payload(size, '\x01');
        const unsigned long before = writes();
        sharestatus::publishStatus(payload);
        EXPECT_EQ(writes() - before, 2U) << size;
    }
}

TEST_F(PublishStatus, memoryIsReleased)
{
    const auto inUse = [] {
        const struct mallinfo2 heap = ::mallinfo2();
        return heap.uordblks + heap.hblkhd;
    };
    sharestatus::publishStatus("x");
    const std::size_t before = inUse();
    for (int i = 0; i < 10; ++i) {
        sharestatus::publishStatus("x");
    }
    EXPECT_EQ(inUse(), before);
}

TEST_F(PublishStatus, fileIsRewrittenInPlace)
{
    sharestatus::publishStatus(std::string(4096, 'x'));
    const core::File reader = core::openFile(root::kStatusFile, "r");
    sharestatus::publishStatus("y");
    EXPECT_EQ(root::readFile(root::kStatusFile), fileOf("y", 9));
    // A reader that had the file open reads the new status.
    std::array<char, 6> seen{};
    EXPECT_EQ(std::fread(seen.data(), 1, seen.size(), reader.get()), 6U);
    EXPECT_EQ(std::string(seen.begin(), seen.end()), le32(2) + "y\x09");
}

/// The number of write calls that this process has made.
long writeCalls()
{
    std::ifstream counters("/proc/self/io");
    std::string name;
    long count = -1;
    while (name != "syscw:" && counters >> name >> count) {
    }
    EXPECT_EQ(name, "syscw:");
    return count;
}

/// After each further write a reader could find a half-written status.
TEST_F(PublishStatus, zerosAndStatusAreOneWriteEach)
{
    for (const std::size_t size : {0U, 1U, 4091U, 4092U, 4096U}) {
        const long before = writeCalls();
        sharestatus::publishStatus(std::string(size, 'x'));
        EXPECT_EQ(writeCalls() - before, 2) << size;
    }
}

TEST_F(PublishStatus, shorterFileGrowsAndLongerFileIsCut)
{
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{7}, kMebibyte - 1, kMebibyte + 1, 2 * kMebibyte}) {
        root::writeFile(root::kStatusFile, std::string(size, '#'));
        sharestatus::publishStatus("z");
        EXPECT_EQ(root::readFile(root::kStatusFile), fileOf("z", 10)) << size;
    }
}

TEST_F(PublishStatus, missingFolderIsIgnored)
{
    std::filesystem::remove_all(root::kStatusFolder);
    sharestatus::publishStatus("z");
    EXPECT_EQ(root::list("/etc/pelconfig"), Lines{});
}

TEST_F(PublishStatus, folderInItsPlaceIsIgnored)
{
    std::filesystem::create_directory(root::kStatusFile);
    sharestatus::publishStatus("z");
    EXPECT_TRUE(std::filesystem::is_directory(root::kStatusFile));
}

TEST_F(PublishStatus, readOnlyFileIsNotChanged)
{
    root::writeFile(root::kStatusFile, "kept");
    std::filesystem::permissions(root::kStatusFile, std::filesystem::perms(0444));
    sharestatus::publishStatus("z");
    EXPECT_EQ(root::readFile(root::kStatusFile), "kept");
}

TEST_F(PublishStatus, readOnlyFolderKeepsItsContent)
{
    std::filesystem::permissions(root::kStatusFolder, std::filesystem::perms(0555));
    sharestatus::publishStatus("z");
    EXPECT_EQ(root::list(root::kStatusFolder), Lines{"__bksts"});
}

TEST_F(PublishStatus, existingFileIsWrittenOnAFullDisk)
{
    sharestatus::publishStatus("old");
    root::fillDisk("/etc/pelconfig");
    sharestatus::publishStatus("new");
    EXPECT_EQ(root::readFile(root::kStatusFile), fileOf("new", 10));
}

TEST_F(PublishStatus, newFileOnAFullDiskReadsAsNoData)
{
    root::fillDisk("/etc/pelconfig");
    sharestatus::publishStatus("new");
    EXPECT_EQ(root::readFile(root::kStatusFile), zeros(kMebibyte));
    std::array<char, 4096> buffer{};
    EXPECT_EQ(Read_Status_file(buffer.data()), 0);
}

// ---- Reading ----------------------------------------------------------------------------------

class ReadStatus : public root::Test {
  protected:
    std::array<char, 4096> buffer{};

    ReadStatus() { buffer.fill('#'); }

    [[nodiscard]] std::string bytes() const { return {buffer.data(), buffer.size()}; }

    [[nodiscard]] static Lines lengthTraces(const std::string& length)
    {
        return {trace("Read_Status_file /etc/pelconfig/vokcontrol/__shrStatus - len1 = " + length +
                      " "),
                trace("Read_Status_file - len = " + length + " ")};
    }

    /// Reads a file and compares result and traces. The last trace has the sums, if there is one.
    void expectRead(const std::string& content, int result, const std::string& length,
                    const std::string& sums)
    {
        watch::restart();
        root::writeFile(root::kStatusFile, content);
        EXPECT_EQ(Read_Status_file(buffer.data()), result);
        Lines calls = lengthTraces(length);
        if (!sums.empty()) {
            calls.push_back(trace("Read_Status_file - chksum  = " + sums));
        }
        EXPECT_EQ(watch::calls(), calls);
    }
};

TEST_F(ReadStatus, payloadIsAtTheStartOfTheBuffer)
{
    expectRead(fileOf("\x01\x02\x10", 3), 3, "4", "3 3");
    EXPECT_EQ(bytes(), "\x01\x02\x10\x03" + zeros(4092));
}

TEST_F(ReadStatus, emptyPayloadHasLengthZero)
{
    expectRead(fileOf("", 0), 0, "1", "0 0");
}

TEST_F(ReadStatus, payloadOfFourThousandNinetySixBytesIsTaken)
{
    std::string payload(4096, '\x01');
    payload[4095] = '\x02';
    expectRead(fileOf(payload, 1), 4096, "1001", "1 1");
    EXPECT_EQ(bytes(), payload);
}

TEST_F(ReadStatus, checksumOfTheLargestPayloadIsChecked)
{
    expectRead(fileOf(std::string(4096, '\x01'), 1), 0, "1001", "0 1");
}

TEST_F(ReadStatus, lengthAboveFourThousandNinetySevenIsNoData)
{
    expectRead(le32(4098) + zeros(5000), 0, "1002", "");
    expectRead(le32(0x7FFFFFFF) + zeros(5000), 0, "7fffffff", "");
}

TEST_F(ReadStatus, lengthBelowOneIsNoData)
{
    expectRead(zeros(kMebibyte), 0, "0", "");
    expectRead(le32(0xFFFFFFFF) + zeros(5000), 0, "ffffffff", "");
    expectRead(le32(0x80000000) + zeros(5000), 0, "80000000", "");
}

TEST_F(ReadStatus, wrongChecksumIsNoData)
{
    expectRead(fileOf("\x01\x02\x10", 4), 0, "4", "3 4");
    expectRead(fileOf("\x01\x02\x11", 3), 0, "4", "4 3");
    // The checksum has four bits: a change by a multiple of 16 is not detected.
    expectRead(fileOf("\x01\x02\x20", 3), 3, "4", "3 3");
    // The whole checksum byte is compared.
    expectRead(fileOf("\x01\x02\x10", 0x13), 0, "4", "3 13");
}

TEST_F(ReadStatus, bytesAreUnsigned)
{
    expectRead(fileOf("\xFF\xF4", 3), 2, "3", "3 3");
    expectRead(fileOf("\xFF", '\xFF'), 0, "2", "f ff");
}

TEST_F(ReadStatus, fileCutShortIsNoData)
{
    expectRead("", 0, "0", "");
    expectRead("\x0B", 0, "b", "0 0");
    expectRead(le32(11), 0, "b", "0 0");
    expectRead(le32(11) + zeros(10), 0, "b", "0 0");
    expectRead(le32(11) + "\x03\x02", 0, "b", "5 0");
    expectRead(le32(11) + zeros(11), 10, "b", "0 0");
}

/// A file that a writer changes before each of the first reads.
class ChangingFile : public root::Test {
  protected:
    sharestatus::StatusImage image{};
    int looks = 0;

    /// @return the bytes that were read
    std::string read(int lastChange)
    {
        root::writeFile(root::kStatusFile, "0");
        const faults::Guard writer = faults::beforePread([this, lastChange](int look) {
            looks = look;
            if (look <= lastChange) {
                root::writeFile(root::kStatusFile, std::to_string(look));
            }
        });
        EXPECT_TRUE(sharestatus::loadStatus(image));
        return std::string(image.text());
    }
};

TEST_F(ChangingFile, isReadTwiceIfItDoesNotChange)
{
    EXPECT_EQ(read(0), "0");
    EXPECT_EQ(looks, 2);
}

TEST_F(ChangingFile, isReadUntilTwoReadsAgree)
{
    EXPECT_EQ(read(3), "3");
    EXPECT_EQ(looks, 4);
    EXPECT_EQ(read(7), "7");
    EXPECT_EQ(looks, 8);
}

TEST_F(ChangingFile, isEmptyIfNoTwoOfEightReadsAgree)
{
    EXPECT_EQ(read(8), "");
    EXPECT_EQ(looks, 8);
    EXPECT_EQ(read(1000), "");
    EXPECT_EQ(looks, 8);
}

TEST_F(ReadStatus, missingFileIsTraced)
{
    EXPECT_EQ(Read_Status_file(buffer.data()), 0);
    EXPECT_EQ(
        watch::calls(),
        Lines{trace("Read_Status_file - failed open file: "
                    "/etc/pelconfig/vokcontrol/__shrStatus -- 2(No such file or directory)")});
    EXPECT_EQ(bytes(), std::string(4096, '#'));
}

TEST_F(ReadStatus, unreadableFileIsTraced)
{
    root::writeFile(root::kStatusFile, fileOf("x", 8));
    std::filesystem::permissions(root::kStatusFile, std::filesystem::perms(0));
    EXPECT_EQ(Read_Status_file(buffer.data()), 0);
    EXPECT_EQ(watch::calls(),
              Lines{trace("Read_Status_file - failed open file: "
                          "/etc/pelconfig/vokcontrol/__shrStatus -- 13(Permission denied)")});
}

TEST_F(ReadStatus, folderInTheFilesPlaceIsNoData)
{
    std::filesystem::create_directory(root::kStatusFile);
    EXPECT_EQ(Read_Status_file(buffer.data()), 0);
    EXPECT_EQ(watch::calls(), lengthTraces("0"));
}

TEST_F(ReadStatus, everyLengthWordIsSafe)
{
    for (std::uint32_t length = 0; length < 5000; length += 13) {
        root::writeFile(root::kStatusFile, le32(length) + std::string(5000, '\x10'));
        sharestatus::StatusImage image;
        ASSERT_TRUE(sharestatus::loadStatus(image));
        const auto reading = sharestatus::decodeStatus(image.text());
        EXPECT_EQ(reading.isComplete, length >= 1 && length <= 4097) << length;
    }
}

// ---- Both at once -----------------------------------------------------------------------------

/// A payload that shows whether it is whole: its first two bytes determine its size and all its
/// bytes.
std::string numberedPayload(unsigned number)
{
    const std::size_t size = 2 + (number * 379) % 4095;
    std::string payload = root::le16(number);
    for (std::size_t i = 2; i < size; ++i) {
        payload += static_cast<char>(1 + (number * 31 + i * 7) % 251);
    }
    return payload;
}

bool isWhole(std::string_view payload)
{
    if (payload.size() < 2) {
        return false;
    }
    const unsigned number =
        static_cast<unsigned char>(payload[0]) + 256U * static_cast<unsigned char>(payload[1]);
    return payload == numberedPayload(number);
}

TEST_F(PublishStatus, constantReaderFindsAWholePayloadOrNone)
{
    constexpr unsigned kPublications = 5000;
    sharestatus::publishStatus(numberedPayload(0));
    const pid_t writer = ::fork();
    if (writer == 0) {
        for (unsigned number = 1; number <= kPublications; ++number) {
            sharestatus::publishStatus(numberedPayload(number));
        }
        ::_exit(0);
    }
    unsigned whole = 0;
    unsigned none = 0;
    unsigned torn = 0;
    while (::waitpid(writer, nullptr, WNOHANG) == 0) {
        ASSERT_EQ(std::filesystem::file_size(root::kStatusFile), kMebibyte) << "it never shrinks";
        sharestatus::StatusImage image;
        ASSERT_TRUE(sharestatus::loadStatus(image));
        const auto reading = sharestatus::decodeStatus(image.text());
        if (!reading.isGood()) {
            ++none;
        } else if (isWhole(reading.payload)) {
            ++whole;
        } else {
            ++torn;
        }
    }
    std::printf("%u publications: %u whole, %u none, %u torn\n", kPublications, whole, none, torn);
    EXPECT_EQ(torn, 0U);
    EXPECT_GT(whole, 0U);
    EXPECT_GT(none, 0U) << "the reader never came in between: the test has shown nothing";
}

} // namespace
