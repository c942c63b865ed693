// SPDX-License-Identifier: MIT
#include "core/variable_line.h"

#include <algorithm>

namespace core {
namespace {

std::string_view skipBlanks(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
}

bool isAtEnd(FILE* file)
{
    const int next = std::fgetc(file);
    if (next == EOF) {
        return true;
    }
    std::ungetc(next, file);
    return false;
}

} // namespace

bool VariableFileReader::next()
{
    const bool startsLine = !isWithinLine_;
    size_ = 0;
    int byte = 0;
    while (size_ < buffer_.size() - 1 && byte != '\n') {
        byte = ::getc_unlocked(file_); // the module has one thread
        if (byte == EOF) {
            break;
        }
        buffer_[size_] = static_cast<char>(byte);
        ++size_;
    }
    if (size_ == 0) {
        return false;
    }
    isWithinLine_ = byte != '\n';
    isWhole_ = startsLine && (!isWithinLine_ || isAtEnd(file_));
    return true;
}

std::optional<std::string_view> VariableFileReader::line() const
{
    if (!isWhole_) {
        return std::nullopt;
    }
    return piece().substr(0, piece().find('\0'));
}

std::optional<std::string_view> valueOf(std::string_view line, std::string_view name)
{
    if (!line.starts_with(name)) {
        return std::nullopt;
    }
    const std::string_view rest = skipBlanks(line.substr(name.size()));
    if (!rest.starts_with('=')) {
        return std::nullopt;
    }
    const std::string_view value = skipBlanks(rest.substr(1));
    return value.substr(0, value.find_first_of("\r\n"));
}

} // namespace core
