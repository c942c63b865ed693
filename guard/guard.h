// SPDX-License-Identifier: MIT
//
// guard.h: what stands between the module and the shell in our own programs. The module hands every
// line to system() as it is, names and all; a program that links vok_guarded in has a system() that
// looks at each line first.
//
// Nothing here allocates, throws or keeps anything of a line.
#pragma once

namespace guard {

/// Where the shell finds programs, as an entry of an environment.
inline constexpr const char* kDefaultPath =
    "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

/// Has the shell find programs elsewhere. What the program itself was started with never counts.
/// @param entry  "PATH=" and the folders; it has to outlive every line
void usePath(const char* entry);

/// Has refusals written to this descriptor instead of standard error.
void logTo(int descriptor);

/// Does what system() does for a line that may run:
///
///   a trace        writes its text to the trace file as it stands, without a shell
///   a known shape  runs it with /bin/sh, with an environment of PATH, HOME and the C locale, no
///                  signal ignored or blocked, and no descriptor but the standard ones
///
/// Any other line does not run. One log line says "PROGRAM: a shell line was refused:", what it was
/// for and which of its places was wrong, and never its text.
///
/// @return what system() gives; of a line that was refused, as of one that a shell cannot parse: an
///         exit with 2. Without a line (a null pointer) 1. errno is what the shell's start or the
///         wait for it left, else as it was found.
int carryOut(const char* line);

} // namespace guard
