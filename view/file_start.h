// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <ctime>
#include <string>

namespace view {

/// The start of a file at one moment, or why it could not be read.
struct FileStart {
    std::string bytes;
    std::time_t modified = 0;
    int error = 0;       ///< an errno value; 0 if the file could be read
    bool isOpen = false; ///< whether it could be opened
};

/// Reads at most this many bytes, with one call: the file may be rewritten at any time.
[[nodiscard]] FileStart readFileStart(const char* path, std::size_t size);

} // namespace view
