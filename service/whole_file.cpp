// SPDX-License-Identifier: MIT
#include "service/whole_file.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace service {

std::optional<std::string> readWholeFile(const std::string& path)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return std::nullopt;
    }
    std::string bytes;
    std::array<char, 4096> piece;
    ssize_t size = 0;
    while ((size = ::read(file, piece.data(), piece.size())) > 0) {
        bytes.append(piece.data(), static_cast<std::size_t>(size));
    }
    ::close(file);
    return (size == 0) ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace service
