// SPDX-License-Identifier: MIT
#include "service/request_reader.h"

#include <algorithm>

namespace service {

RequestReader::RequestReader(std::string_view request)
{
    request.copy(buffer_.data(), buffer_.size());
    // One byte less than the buffer, so that the handlers' copy always ends in a zero.
    const std::string_view line = takeLine(buffer_.size() - 1);
    line.copy(line_.data(), line_.size());
    firstLineSize_ = line.size();
}

std::string_view RequestReader::parameters() const
{
    return std::string_view(buffer_.data(), buffer_.size()).substr(firstLineSize_);
}

std::string_view RequestReader::takeLine(std::size_t size)
{
    const std::string_view room = rest().substr(0, size - 1);
    const std::size_t newline = room.find('\n');
    const std::string_view line =
        room.substr(0, (newline == std::string_view::npos) ? newline : newline + 1);
    position_ += line.size();
    return line;
}

std::string_view RequestReader::takeByte()
{
    const std::string_view byte = rest().substr(0, 1);
    position_ += byte.size();
    return byte;
}

std::string_view RequestReader::rest() const
{
    return std::string_view(buffer_.data(), buffer_.size()).substr(position_);
}

std::string_view textOf(std::string_view bytes)
{
    return bytes.substr(0, bytes.find('\0'));
}

} // namespace service
