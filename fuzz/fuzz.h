// SPDX-License-Identifier: MIT
//
// fuzz.h: what the fuzz targets share. A target is one program with an LLVMFuzzerTestOneInput; it
// runs in a throwaway root, whose files are its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// One run of the target. Ends the process if something is wrong.
/// @return 0
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

[[nodiscard]] inline std::string_view textOf(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the process if a condition that must always hold does not.
void require(bool holds);

/// Writes a whole file; ends the process if that fails.
void writeFile(const char* path, std::string_view content);

/// Removes the files in a folder, but not its folders.
void emptyFolder(const char* path);

} // namespace fuzz
