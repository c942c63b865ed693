// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <ctime>
#include <string>

namespace client {

/// The start of a file as it was at one moment, or why it could not be read.
struct FileStart {
    std::string bytes;
    std::time_t modified = 0;
    int error = 0; ///< an errno value; 0 when the file could be read
};

/// Reads at most so many bytes, in one go: the file may be rewritten at any time.
[[nodiscard]] FileStart readFileStart(const char* path, std::size_t size);

} // namespace client
