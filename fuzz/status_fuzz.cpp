// SPDX-License-Identifier: MIT
//
// Reads the start of a status file, and the records in it.
#include "fuzz/fuzz.h"
#include "sharestatus/status_format.h"

namespace {

using namespace sharestatus;

/// @return how many bytes the records take
std::size_t checkRecords(TableReader& table)
{
    std::size_t size = 0;
    while (const auto entry = table.next()) {
        fuzz::require(entry->name.size() <= kMaxNameSize && entry->date.size() == kDateSize);
        fuzz::require(entry->name.find('\n') == std::string_view::npos);
        size += kNameOffset + entry->name.size() + 1;
    }
    return size;
}

void checkTable(std::string_view payload)
{
    TableReader table(payload);
    const std::size_t size = checkRecords(table);
    fuzz::require(!table.isWhole() || table.isAtEnd());
    fuzz::require(!table.isAtEnd() || payload.empty() || payload.size() == kHeaderSize + size);
}

/// A good status has the same bytes when it is written again; no other status has.
void checkImage(std::string_view image, const StatusReading& reading)
{
    const StatusImage again = encodeStatus(reading.payload);
    fuzz::require(image.starts_with(again.text()) == reading.isGood());
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view image = fuzz::textOf(data, size);
    checkTable(image);
    const StatusReading reading = decodeStatus(image);
    if (reading.isComplete) {
        checkTable(reading.payload);
        checkImage(image, reading);
    }
    return 0;
}
