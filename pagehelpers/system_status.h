// SPDX-License-Identifier: MIT
//
// system_status.h: the system script's report on the attached disks and devices. Each value is on a
// line of its own, between tags.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "core/core.h"

namespace pagehelpers {

inline constexpr const char* kInternalDisk = "<HDDInfo>";

/// A line of the report; longer ones come in pieces.
using ReportLine = std::array<char, 512>;

/// Builds the shell line that writes the report into a file.
[[nodiscard]] core::CommandLine reportCommand(const char* path);

[[nodiscard]] bool contains(const ReportLine& line, const char* tag);

/// The text after a tag that the line contains, up to the next "<" or the line's end, at most 40
/// characters.
[[nodiscard]] std::string_view valueBehind(const ReportLine& line, const char* tag);

/// The same text as a decimal number, as core::decimalInt reads it; 0 if it is none.
[[nodiscard]] std::int32_t numberBehind(const ReportLine& line, const char* tag);

} // namespace pagehelpers
