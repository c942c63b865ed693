// SPDX-License-Identifier: MIT
//
// channel.h: what a command handler works with: the request's line and the rest of its bytes, the
// answer, the current-file slot, and the ways to end with an error. The answer itself goes to
// fout_buf (core.h).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "core/core.h"

#pragma GCC visibility push(default)
extern "C" {

/// Answers with a status frame of 10 bytes: the command's name, a blank, the code, a zero byte. The
/// request line is gone afterwards.
///
/// @param name  four characters
/// @return what system() gave back for the trace
int SendReturnStatus(std::uint32_t code, const char* name);

} // extern "C"
#pragma GCC visibility pop

namespace cmdsvc {

/// Handlers' work file: what a shell line printed, or a list that a handler reads while it answers.
inline constexpr const char* kWorkFile = "/tmp/vokcontrol.tmp";

/// The request's first line, and afterwards whatever a handler builds in it.
extern std::array<char, core::kLineSize> requestLine;

/// The request's bytes behind what has been read of them.
[[nodiscard]] FILE* requestStream();

/// Reads the next line behind what has been read into the request line: at most 4094 bytes. Where
/// nothing is left to read, the request line keeps what it holds.
void readParameterLine();

/// Cuts the newline at the end of a text, by default the request line's.
/// @return false when there is none: the line is not whole, or holds a zero byte
bool cutNewline(char* text = requestLine.data());

// ---- The current-file slot --------------------------------------------------------------------
//
// The one file that a handler reads while it answers, so that an error exit can close it.

/// Closes what is open in the slot, then opens a file there, for reading unless the mode says
/// otherwise.
/// @return the file, or null with errno set by this open
FILE* openCurrentFile(const char* path, const char* mode = "r");

[[nodiscard]] FILE* currentFile();

/// Closes the slot's file and clears the slot, so that a second close does nothing.
/// @return false when the close failed, with errno set
bool closeCurrentFile();

// ---- Answers ----------------------------------------------------------------------------------

void writeAnswer(std::string_view bytes);

/// A status code as a bare word.
void writeWord(std::uint32_t code);

/// Tag, blank, count and newline; lines of text follow it.
void writeHeader(std::string_view tag, std::uint32_t count);

// ---- Error exits ------------------------------------------------------------------------------

/// The handlers' common error exit: answers "erro " and the code, closes the slot, removes the work
/// file, traces the code.
void endWithError(std::uint32_t code);

/// The same with the code as a bare word.
/// @return what system() gave back for the trace
int endWithWord(std::uint32_t code);

/// Like endWithWord, for the commands of remote access and passwords: the work file is only removed
/// where the slot holds a file, and that stays open.
void endWithWordKeepingFile(std::uint32_t code);

// ---- One request ------------------------------------------------------------------------------

/// Opens the request in fin_buf and a new answer file, and releases the streams of the request
/// before where its exit left them open.
/// @return false when one of them cannot be opened
[[nodiscard]] bool openChannel(int number);

/// Reads the request's first line: at most 4094 bytes, zeros behind them.
void readRequestLine();

/// Ends the answer.
void closeAnswer();

} // namespace cmdsvc
