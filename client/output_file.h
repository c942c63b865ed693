// SPDX-License-Identifier: MIT
//
// output_file.h: writes bytes to the target that the command line names. A command may run as root
// in a folder that others can write to, so links are not followed and no file is damaged.
#pragma once

#include <string>
#include <string_view>

namespace client {

/// The name of standard output on a command line.
inline constexpr const char* kStandardStream = "-";

/// Checks a target before the bytes for it are requested: it must not be a terminal or a symbolic
/// link.
/// @param path  a file, or "-" for standard output
/// @throws Failure of wrong usage
void checkTarget(const std::string& path);

/// Writes bytes to a target.
///
/// A file gets all bytes or is not changed: they are written to a new file with a random name in
/// its folder (".vokctl.XXXXXX"), which is then renamed. It gets the permissions of the former
/// file, or 0600. Devices and FIFOs are written directly.
/// @param path  a file, or "-" for standard output
/// @throws Failure as checkTarget() does, or if the bytes cannot be written
void writeTarget(const std::string& path, std::string_view bytes);

} // namespace client
