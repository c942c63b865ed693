// SPDX-License-Identifier: MIT
//
// guard.h: checks the module's shell lines in our own programs. The module hands every line to
// system() with names and values unchanged; a program that links vok_guarded in has a system() that
// checks each line first.
//
// Nothing here allocates memory, throws, or keeps a part of a line.
#pragma once

namespace guard {

/// Where the shell finds programs, as an entry of an environment.
inline constexpr const char* kDefaultPath =
    "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

/// Sets the folders in which the shell finds programs. The program's own PATH is never used.
/// @param entry  "PATH=" and the folders; it must outlive every line
void usePath(const char* entry);

/// Writes refusals to this descriptor instead of standard error.
void logTo(int descriptor);

/// Replaces system(). Runs a line that is one of these:
///
///   a trace        writes its text to the trace file unchanged, without a shell
///   a known shape  runs it with /bin/sh, with an environment of PATH, HOME and the C locale, no
///                  signal ignored or blocked, and no descriptor but the standard ones
///
/// Any other line does not run. The log gets "PROGRAM: a shell line was refused:", the line's
/// operation and the place that was wrong, but never the line's text.
///
/// @return like system(); for a refused line, like a line that a shell cannot parse: an exit with
///         2; for a null pointer 1. errno is changed only if the shell's start or the wait for it
///         fails.
int carryOut(const char* line);

} // namespace guard
