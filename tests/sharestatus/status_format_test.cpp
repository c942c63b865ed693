// SPDX-License-Identifier: MIT
#include "sharestatus/status_format.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "tests/support/root.h"

namespace {

using namespace sharestatus;
using root::le16;
using root::le32;
using root::zeros;

WorkRecord makeRecord()
{
    WorkRecord record{};
    const std::string head = le16(0x0102) + "M" + "11212026" + "7";
    std::ranges::copy(head, record.begin());
    return record;
}

std::string_view text(const std::array<char, kMaxPayloadSize>& buffer, std::size_t size)
{
    return {buffer.data(), size};
}

// ---- Table ------------------------------------------------------------------------------------

TEST(StatusFormat, emptyTableIsTenZeros)
{
    std::array<char, kMaxPayloadSize> buffer;
    buffer.fill('#');
    TableWriter table(buffer);
    table.finish();
    EXPECT_EQ(text(buffer, buffer.size()), zeros(4096));
    EXPECT_EQ(table.size(), 10U);
}

TEST(StatusFormat, recordIsTwelveBytesNameAndNewline)
{
    std::array<char, kMaxPayloadSize> buffer;
    TableWriter table(buffer);
    table.append(makeRecord(), "Music");
    table.finish();
    EXPECT_EQ(text(buffer, table.size()),
              zeros(5) + le16(1) + zeros(3) + "\x02\x01M112120267Music\n");
    EXPECT_EQ(table.count(), 1U);
}

TEST(StatusFormat, nameIsCutAtSixtyFourBytes)
{
    std::array<char, kMaxPayloadSize> buffer;
    TableWriter table(buffer);
    table.append(makeRecord(), std::string(65, 'n'));
    EXPECT_EQ(table.size(), 10U + 77U);
    EXPECT_EQ(text(buffer, table.size()).substr(22), std::string(64, 'n') + "\n");
}

TEST(StatusFormat, roomIsForTheLongestRecord)
{
    std::array<char, 87> buffer;
    EXPECT_FALSE(TableWriter(std::span(buffer).first(86)).hasRoom());
    TableWriter table(buffer);
    EXPECT_TRUE(table.hasRoom());
    table.append(makeRecord(), std::string(64, 'n'));
    EXPECT_EQ(table.size(), buffer.size());
    EXPECT_FALSE(table.hasRoom());
}

TEST(StatusFormat, countHasTwoBytes)
{
    std::array<char, kMaxPayloadSize> buffer;
    TableWriter table(buffer);
    unsigned records = 0;
    for (; table.hasRoom(); ++records) {
        table.append(WorkRecord{}, "x");
    }
    table.finish();
    EXPECT_EQ(records, 287U);
    EXPECT_EQ(text(buffer, 10), zeros(5) + le16(287) + zeros(3));
    TableReader reader(text(buffer, table.size()));
    while (reader.next()) {
    }
    EXPECT_TRUE(reader.isWhole());
}

TEST(StatusFormat, tableIsReadAsWritten)
{
    std::array<char, kMaxPayloadSize> buffer;
    TableWriter writer(buffer);
    writer.append(makeRecord(), "Music");
    writer.append(WorkRecord{}, "x");
    writer.finish();

    TableReader reader(text(buffer, writer.size()));
    const auto first = reader.next();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->used, 0x0102);
    EXPECT_EQ(first->unit, 'M');
    EXPECT_EQ(first->date, "11212026");
    EXPECT_EQ(first->state, '7');
    EXPECT_EQ(first->name, "Music");
    EXPECT_FALSE(reader.isWhole());
    const auto second = reader.next();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->used, 0);
    EXPECT_EQ(second->unit, '\0');
    EXPECT_EQ(second->date, zeros(8));
    EXPECT_EQ(second->state, '\0');
    EXPECT_EQ(second->name, "x");
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.isWhole());
}

TEST(StatusFormat, sizeOfTenIsNotTakenForANewline)
{
    std::array<char, kMaxPayloadSize> buffer;
    TableWriter writer(buffer);
    WorkRecord record{};
    record[0] = '\n';
    writer.append(record, "a");
    writer.append(record, "b");
    writer.finish();
    TableReader reader(text(buffer, writer.size()));
    EXPECT_EQ(reader.next()->used, 10);
    EXPECT_EQ(reader.next()->name, "b");
    EXPECT_TRUE(reader.isWhole());
}

TEST(StatusFormat, tableCutAtAnyLengthIsNotWhole)
{
    std::array<char, kMaxPayloadSize> buffer;
    TableWriter writer(buffer);
    writer.append(makeRecord(), "Music");
    writer.append(makeRecord(), std::string(64, 'n'));
    writer.finish();
    for (std::size_t size = 1; size < writer.size(); ++size) {
        TableReader reader(text(buffer, size));
        while (reader.next()) {
        }
        EXPECT_FALSE(reader.isWhole()) << size;
    }
}

TEST(StatusFormat, tableWithBytesAfterItsRecordsIsNotWhole)
{
    std::array<char, kMaxPayloadSize> buffer;
    TableWriter writer(buffer);
    writer.append(makeRecord(), "Music");
    writer.finish();
    TableReader reader(text(buffer, writer.size() + 1));
    EXPECT_TRUE(reader.next());
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.isWhole());
}

TEST(StatusFormat, endIsReachedIfNoBytesFollow)
{
    std::array<char, kMaxPayloadSize> buffer;
    TableWriter writer(buffer);
    writer.append(makeRecord(), "Music");
    writer.append(makeRecord(), "Photos");
    writer.finish();
    TableReader reader(text(buffer, writer.size()));
    EXPECT_FALSE(reader.isAtEnd());
    EXPECT_TRUE(reader.next());
    EXPECT_FALSE(reader.isAtEnd());
    EXPECT_TRUE(reader.next());
    EXPECT_TRUE(reader.isAtEnd());
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.isAtEnd());
}

TEST(StatusFormat, endDoesNotDependOnTheHeadersCount)
{
    const std::string record = zeros(12) + "Music\n";
    const std::string counted = zeros(5) + le16(7) + zeros(3) + record;
    TableReader tooMany(counted);
    EXPECT_TRUE(tooMany.next());
    EXPECT_FALSE(tooMany.next());
    EXPECT_TRUE(tooMany.isAtEnd());
    EXPECT_FALSE(tooMany.isWhole());

    const std::string uncounted = zeros(5) + le16(0) + zeros(3) + record;
    TableReader tooFew(uncounted);
    EXPECT_FALSE(tooFew.next());
    EXPECT_FALSE(tooFew.isAtEnd());
    EXPECT_FALSE(tooFew.isWhole());
}

TEST(StatusFormat, endIsNotReachedIfARecordIsCut)
{
    const std::string record = zeros(12) + "Music\n";
    for (std::size_t size = 1; size < record.size(); ++size) {
        const std::string payload = zeros(5) + le16(1) + zeros(3) + record.substr(0, size);
        TableReader reader(payload);
        EXPECT_FALSE(reader.next()) << size;
        EXPECT_FALSE(reader.isAtEnd()) << size;
    }
}

TEST(StatusFormat, payloadWithoutAHeaderIsAtItsEndOnlyIfItIsEmpty)
{
    EXPECT_TRUE(TableReader("").isAtEnd());
    for (std::size_t size = 1; size < 10; ++size) {
        EXPECT_FALSE(TableReader(zeros(size)).isAtEnd()) << size;
    }
    EXPECT_TRUE(TableReader(zeros(10)).isAtEnd());
}

TEST(StatusFormat, recordWithoutANewlineInReachIsNone)
{
    const std::string payload =
        zeros(5) + le16(1) + zeros(3) + zeros(12) + std::string(65, 'n') + "\n";
    TableReader reader(payload);
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.isWhole());
}

TEST(StatusFormat, payloadOfAFailedCollectionIsWholeAndEmpty)
{
    TableReader reader("");
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.isWhole());
}

// ---- File -------------------------------------------------------------------------------------

TEST(StatusFormat, checksumIsTheSumModuloSixteen)
{
    EXPECT_EQ(checksum(""), 0);
    EXPECT_EQ(checksum(std::string(1, '\xFF') + '\xF4'), 3); // 0x1F3
    EXPECT_EQ(checksum(std::string(4096, '\xFF')), 0);
    EXPECT_EQ(checksum("\x0F"), 15);
    EXPECT_EQ(checksum("\x10"), 0);
}

TEST(StatusFormat, imageIsLengthPayloadAndCheck)
{
    EXPECT_EQ(encodeStatus("").text(), le32(1) + zeros(1));
    EXPECT_EQ(encodeStatus(zeros(10)).text(), le32(11) + zeros(11));
    EXPECT_EQ(encodeStatus("\x01\x02\x09").text(), le32(4) + "\x01\x02\x09\x0C");
    const std::string largest(4096, '\x01');
    EXPECT_EQ(encodeStatus(largest).text(), le32(4097) + largest + zeros(1));
}

TEST(StatusFormat, imageOfEverySizeIsReadAsWritten)
{
    std::string payload;
    for (std::size_t size = 0; size <= 4096; ++size) {
        const StatusImage image = encodeStatus(payload);
        const StatusReading reading = decodeStatus(image.text());
        ASSERT_TRUE(reading.isGood()) << size;
        ASSERT_EQ(reading.payload, payload) << size;
        ASSERT_EQ(reading.length, size + 1);
        payload += static_cast<char>(size * 7);
    }
}

TEST(StatusFormat, zerosAfterTheCheckAreIgnored)
{
    const std::string image = le32(3) + "ab" + "\x03" + zeros(100);
    const StatusReading reading = decodeStatus(image);
    EXPECT_TRUE(reading.isGood());
    EXPECT_EQ(reading.payload, "ab");
}

TEST(StatusFormat, imageCutAtAnyLengthIsNotComplete)
{
    const StatusImage image = encodeStatus("payload");
    for (std::size_t size = 0; size < image.size; ++size) {
        const StatusReading reading = decodeStatus(image.text().substr(0, size));
        EXPECT_FALSE(reading.isComplete) << size;
        EXPECT_FALSE(reading.isGood()) << size;
    }
}

TEST(StatusFormat, lengthOfAShortImageReadsItsMissingBytesAsZero)
{
    EXPECT_EQ(decodeStatus("").length, 0U);
    EXPECT_EQ(decodeStatus("\x05").length, 5U);
    EXPECT_EQ(decodeStatus("\x05\x06\x07").length, 0x070605U);
}

TEST(StatusFormat, lengthOutsideItsBoundsIsNoData)
{
    for (const std::uint32_t length :
         {0U, 4098U, 0x10000U, 0x7FFFFFFFU, 0x80000000U, 0x80000001U, 0xFFFFFFFFU}) {
        const StatusReading reading = decodeStatus(le32(length) + zeros(8000));
        EXPECT_FALSE(reading.isComplete) << length;
        EXPECT_EQ(reading.length, length);
    }
    EXPECT_TRUE(decodeStatus(le32(1) + zeros(1)).isGood());
    EXPECT_TRUE(decodeStatus(le32(4097) + zeros(4097)).isGood());
}

TEST(StatusFormat, everyOtherChecksumIsWrong)
{
    const std::string payload = "\x01\x02\x04";
    for (int check = 0; check < 256; ++check) {
        const StatusReading reading = decodeStatus(le32(4) + payload + static_cast<char>(check));
        EXPECT_EQ(reading.isGood(), check == 7) << check;
        EXPECT_TRUE(reading.isComplete);
        EXPECT_EQ(reading.sum, 7);
        EXPECT_EQ(reading.check, check);
    }
}

TEST(Units, areFoundOnlyByTheirLetters)
{
    EXPECT_EQ(sharestatus::findUnit('K')->kibibytes, 1U);
    EXPECT_EQ(sharestatus::findUnit('M')->kibibytes, 1000U);
    EXPECT_EQ(sharestatus::findUnit('G')->kibibytes, 1000000U);
    for (const char letter : {'\0', 'k', 'T', '1'}) {
        EXPECT_EQ(sharestatus::findUnit(letter), nullptr) << letter;
    }
}

} // namespace
