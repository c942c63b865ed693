// SPDX-License-Identifier: MIT
//
// core.h: the ground that every other folder stands on. Traces, the process-wide buffers, bounded
// formatting, the one door to the shell, and files that close themselves.
//
// The module is single-threaded; nothing here locks.
#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>

#include "vokcontrol.h"

#pragma GCC visibility push(default)
extern "C" {

/// Writes one trace line to /tmp/dbg_vokcontrol.txt.
///
/// The message is formatted as printf does and cut at 1999 characters. It goes to the shell between
/// double quotes and is not escaped, so quotes, back-quotes, "$" and "\" in it are the shell's to
/// interpret, and a line that the shell cannot parse leaves no trace. The first trace of a process
/// truncates the file, so that the file holds the latest process's story; all later ones append.
///
/// @return what system() gave back for the echo line. errno is left as it was found.
[[gnu::format(printf, 1, 2)]] int dbg_trace(const char* format, ...);

/// The answer to the request in hand. A wrong parameter count or an unknown command leaves it open
/// until the next request begins; others may flush it then, but never close it.
extern FILE* fout_buf;

} // extern "C"
#pragma GCC visibility pop

namespace core {

/// Longest line of text that the module takes in one piece, its terminator counted.
inline constexpr std::size_t kLineSize = 4096;

/// The longest text that a value accessor gives back, its terminator counted.
inline constexpr std::size_t kValueSize = 512;

/// A message of a trace or a script comment, its terminator counted.
inline constexpr std::size_t kMessageSize = 2000;

/// A shell line that is built and run at once, or a line of what it printed.
inline constexpr std::size_t kCommandSize = 2048;

/// Room for such a line.
using CommandLine = std::array<char, kCommandSize>;

// ---- Formatting -------------------------------------------------------------------------------

/// Formats as printf does into a fixed buffer. Text that does not fit is cut; the result always
/// ends in a NUL (an empty buffer is left alone).
[[gnu::format(printf, 2, 3)]] void formatBounded(std::span<char> out, const char* format, ...);

/// The same, for functions that take such arguments themselves.
[[gnu::format(printf, 2, 0)]] void vformatBounded(std::span<char> out, const char* format,
                                                  std::va_list arguments);

// ---- Numbers ----------------------------------------------------------------------------------

/// The decimal number at the start of a text. White space and a sign may stand before it, anything
/// behind it. It is the same on every machine, whatever the size of a long there.
///
/// @return 0 where no number stands; for one beyond 64 bits the nearest number that they hold
[[nodiscard]] std::int64_t decimalNumber(const char* text);

/// The same number's low 32 bits as a signed number: 2147483648 gives -2147483648, and 4294967297
/// gives 1.
[[nodiscard]] std::int32_t decimalInt(const char* text);

// ---- Shell ------------------------------------------------------------------------------------

/// What one shell line came to: the raw result of system(), and the errno that this very call left
/// (0 when it left none).
struct ShellRun {
    int result;
    int error;
};

/// Runs one shell line through system(). errno is 0 beforehand, so that what is judged or printed
/// afterwards is never an older call's.
ShellRun runShellLine(const char* line);

/// The plain judgement: the line ran and everything in it went well.
[[nodiscard]] constexpr bool succeeded(ShellRun run)
{
    return run.result == 0;
}

/// The shell ran, but somebody else reaped it (a caller that ignores SIGCHLD), so that no status
/// could be collected.
[[nodiscard]] bool reapedElsewhere(ShellRun run);

/// The tolerant judgement, for lines whose output file is what matters: the shell was started,
/// whatever it came to.
[[nodiscard]] bool hasRun(ShellRun run);

// The third judgement, none at all, is runShellLine with its result dropped.

// The scripts of the administration layer, one an area; a function's name and its arguments follow.
inline constexpr const char* kShareScript = "sudo /usr/bin/php /etc/inc/api_share.php";
inline constexpr const char* kUserScript = "sudo /usr/bin/php /etc/inc/api_user.php";
inline constexpr const char* kPelScript = "sudo /usr/bin/php /etc/inc/api_pel.php";
inline constexpr const char* kSystemScript = "sudo /usr/bin/php /etc/inc/api_system.php";

// ---- Script comments --------------------------------------------------------------------------

/// Prints a message to standard output, for a page to carry: as a comment that is inert in script
/// and in markup. It is cut at 1999 characters and flushed at once. errno is left as it was found.
[[gnu::format(printf, 1, 2)]] void printComment(const char* format, ...);

// ---- Files ------------------------------------------------------------------------------------

struct FileCloser {
    void operator()(FILE* file) const noexcept;
};

/// An open file that closes itself.
using File = std::unique_ptr<FILE, FileCloser>;

/// Opens a file as fopen does, closed to what shell lines start; empty on failure, with errno set.
/// @param mode  one of fopen's, such as "r" or "r+"
[[nodiscard]] File openFile(const char* path, const char* mode);

/// Reads the next piece of text into a fixed buffer, up to a newline (kept) or the buffer's end.
/// @return false at the end of the file or on an error; the buffer then holds an empty text.
bool readLine(FILE* file, std::span<char> line);

// ---- Memory -----------------------------------------------------------------------------------

struct MemoryReleaser {
    void operator()(void* block) const noexcept;
};

/// Text on the heap; it is released with its owner.
using Text = std::unique_ptr<char, MemoryReleaser>;

/// A copy of a text; empty when memory has run out, with errno set.
[[nodiscard]] Text copyText(const char* text);

// ---- Work files -------------------------------------------------------------------------------

/// The number at the start of a file's first line, as decimalInt reads it from the line's first 511
/// characters. A line that holds no number gives 0, and so does one that is only a newline.
/// @param otherwise  the result for an empty file, and for one that cannot be read
[[nodiscard]] std::int32_t readNumber(FILE* file, std::int32_t otherwise);

/// A name for a file that a shell line leaves its output in.
using WorkFileName = std::array<char, 64>;

/// "/tmp/", the name, and the id of this very process (a child after fork has its own).
[[nodiscard]] WorkFileName workFileName(const char* name);

/// Removes a work file; traces "cannot remove file %s: %s" when that fails.
void removeWorkFile(const char* path);

} // namespace core
