// SPDX-License-Identifier: MIT
#include "sharestatus/status_format.h"

#include <algorithm>

#include "core/bytes.h"

namespace sharestatus {

TableWriter::TableWriter(std::span<char> buffer) : buffer_(buffer)
{
    std::ranges::fill(buffer_, '\0');
}

bool TableWriter::hasRoom() const
{
    return size_ + kMaxEntrySize <= buffer_.size();
}

void TableWriter::append(const WorkRecord& record, std::string_view name)
{
    const std::string_view stored = name.substr(0, kMaxNameSize);
    char* out = buffer_.data() + size_;
    out = std::copy_n(record.begin(), kNameOffset, out);
    out = std::ranges::copy(stored, out).out;
    *out = '\n';
    size_ += kNameOffset + stored.size() + 1;
    ++count_;
}

void TableWriter::finish()
{
    core::putU16(buffer_.subspan<kCountOffset, kCountSize>(), count_);
}

TableReader::TableReader(std::string_view payload)
{
    if (payload.size() < kHeaderSize) {
        rest_ = payload;
        return;
    }
    missing_ = core::getU16(std::span(payload).subspan<kCountOffset, kCountSize>());
    rest_ = payload.substr(kHeaderSize);
}

std::optional<ShareEntry> TableReader::next()
{
    if (missing_ == 0 || rest_.size() <= kNameOffset) {
        return std::nullopt;
    }
    const std::string_view named = rest_.substr(kNameOffset, kMaxNameSize + 1);
    const std::size_t nameSize = named.find('\n');
    if (nameSize == std::string_view::npos) {
        return std::nullopt;
    }
    const ShareEntry entry = {
        .used = core::getU16(std::span(rest_).subspan<kUsageOffset, kUsageSize>()),
        .unit = rest_[kUnitOffset],
        .date = rest_.substr(kDateOffset, kDateSize),
        .state = rest_[kStateOffset],
        .name = named.substr(0, nameSize),
    };
    rest_.remove_prefix(kNameOffset + nameSize + 1);
    --missing_;
    return entry;
}

bool TableReader::isWhole() const
{
    return missing_ == 0 && isAtEnd();
}

std::uint8_t checksum(std::string_view payload)
{
    unsigned sum = 0;
    for (const char c : payload) {
        sum += core::byteOf(c);
    }
    return static_cast<std::uint8_t>(sum % 16);
}

StatusImage encodeStatus(std::string_view payload)
{
    StatusImage image;
    const std::size_t length = payload.size() + kCheckSize;
    core::putU32(std::span(image.bytes).first<kLengthSize>(), static_cast<std::uint32_t>(length));
    char* end = std::ranges::copy(payload, image.bytes.data() + kLengthSize).out;
    *end = static_cast<char>(checksum(payload));
    image.size = kLengthSize + length;
    return image;
}

StatusReading decodeStatus(std::string_view image)
{
    StatusReading reading{};
    reading.length = core::u32At(image, 0);
    // Readers take the length as a signed number: from 0x80000000 on it is below 1, too.
    reading.isInBounds = reading.length >= kCheckSize && reading.length <= kMaxLength;
    if (!reading.isInBounds) {
        return reading;
    }
    const std::size_t payloadSize = reading.length - kCheckSize;
    const std::string_view content = image.substr(std::min(kLengthSize, image.size()));
    reading.payload = content.substr(0, payloadSize);
    reading.sum = checksum(reading.payload);
    reading.isComplete = content.size() > payloadSize;
    reading.check = reading.isComplete ? core::byteOf(content[payloadSize]) : std::uint8_t{0};
    return reading;
}

} // namespace sharestatus
