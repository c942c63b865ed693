// SPDX-License-Identifier: MIT
//
// core.h: what every other folder uses: traces, the process-wide buffers, bounded formatting, the
// one function that runs shell lines, and files that close themselves.
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
/// double quotes and is not escaped, so the shell interprets quotes, back-quotes, "$" and "\" in
/// it, and a line that the shell cannot parse leaves no trace. The first trace of a process
/// truncates the file, so that the file holds only the latest process's traces; all later ones
/// append.
///
/// @return what system() returned for the echo line. errno is not changed.
[[gnu::format(printf, 1, 2)]] int dbg_trace(const char* format, ...);

/// The answer to the current request. After a wrong parameter count or an unknown command it stays
/// open until the next request begins; other code may flush it then, but never close it.
extern FILE* fout_buf;

} // extern "C"
#pragma GCC visibility pop

namespace core {

/// The longest line of text that the module reads in one piece, with its terminator.
inline constexpr std::size_t kLineSize = 4096;

/// The longest text that a value accessor returns, with its terminator.
inline constexpr std::size_t kValueSize = 512;

/// The longest message of a trace or a script comment, with its terminator.
inline constexpr std::size_t kMessageSize = 2000;

/// The longest shell line that is built and run at once, and the longest line of its output.
inline constexpr std::size_t kCommandSize = 2048;

/// Room for such a line.
using CommandLine = std::array<char, kCommandSize>;

// ---- Formatting -------------------------------------------------------------------------------

/// Formats as printf does into a fixed buffer. Text that does not fit is cut; the result always
/// ends in a NUL (an empty buffer is not changed).
[[gnu::format(printf, 2, 3)]] void formatBounded(std::span<char> out, const char* format, ...);

/// The same with a list of arguments.
[[gnu::format(printf, 2, 0)]] void vformatBounded(std::span<char> out, const char* format,
                                                  std::va_list arguments);

// ---- Numbers ----------------------------------------------------------------------------------

/// The decimal number at the start of a text. White space and a sign may come before it, anything
/// after it. The result does not depend on the machine's size of a long.
///
/// @return 0 if there is no number; for one beyond 64 bits, the nearest number within them
[[nodiscard]] std::int64_t decimalNumber(const char* text);

/// The same number's low 32 bits as a signed number: 2147483648 gives -2147483648, and 4294967297
/// gives 1.
[[nodiscard]] std::int32_t decimalInt(const char* text);

// ---- Shell ------------------------------------------------------------------------------------

/// How one shell line ended: the result of system(), unchanged, and the errno of this call (0 if it
/// set none).
struct ShellRun {
    int result;
    int error;
};

/// Runs one shell line through system(). Sets errno to 0 before, so that an error of an older call
/// is never judged or printed.
ShellRun runShellLine(const char* line);

/// The strict judgement: the line ran and succeeded.
[[nodiscard]] constexpr bool succeeded(ShellRun run)
{
    return run.result == 0;
}

/// The shell ran, but its status is lost because its process was reaped elsewhere (the caller
/// ignores SIGCHLD).
[[nodiscard]] bool reapedElsewhere(ShellRun run);

/// The tolerant judgement, for lines of which only the output file matters: the shell was started;
/// its status does not count.
[[nodiscard]] bool hasRun(ShellRun run);

// If not even the start matters, drop the result of runShellLine.

// The administration scripts, one per area; a function's name and its arguments follow.
inline constexpr const char* kShareScript = "sudo /usr/bin/php /etc/inc/api_share.php";
inline constexpr const char* kUserScript = "sudo /usr/bin/php /etc/inc/api_user.php";
inline constexpr const char* kPelScript = "sudo /usr/bin/php /etc/inc/api_pel.php";
inline constexpr const char* kSystemScript = "sudo /usr/bin/php /etc/inc/api_system.php";

// ---- Script comments --------------------------------------------------------------------------

/// Prints a message to standard output as a comment that has no effect in a page's script or
/// markup. It is cut at 1999 characters and flushed at once. errno is not changed.
[[gnu::format(printf, 1, 2)]] void printComment(const char* format, ...);

// ---- Files ------------------------------------------------------------------------------------

struct FileCloser {
    void operator()(FILE* file) const noexcept;
};

/// An open file that closes itself.
using File = std::unique_ptr<FILE, FileCloser>;

/// Opens a file as fopen does; programs that shell lines start do not inherit it. Empty on failure,
/// with errno set.
/// @param mode  as for fopen, such as "r" or "r+"
[[nodiscard]] File openFile(const char* path, const char* mode);

/// Reads the next piece of text into a fixed buffer, up to a newline (kept) or the buffer's end.
/// @return false at the end of the file or on an error; the buffer then holds an empty text.
bool readLine(FILE* file, std::span<char> line);

// ---- Memory -----------------------------------------------------------------------------------

struct MemoryReleaser {
    void operator()(void* block) const noexcept;
};

/// Text on the heap, released with its owner.
using Text = std::unique_ptr<char, MemoryReleaser>;

/// A copy of a text; empty if there is no memory for it, with errno set.
[[nodiscard]] Text copyText(const char* text);

// ---- Work files -------------------------------------------------------------------------------

/// The number at the start of a file's first line, as decimalInt reads it from the line's first 511
/// characters. It is 0 if the line holds no number or is only a newline.
/// @param otherwise  the result for an empty file or one that cannot be read
[[nodiscard]] std::int32_t readNumber(FILE* file, std::int32_t otherwise);

/// The name of a file that a shell line writes its output to.
using WorkFileName = std::array<char, 64>;

/// "/tmp/", the name, and the id of this process (a forked child has its own).
[[nodiscard]] WorkFileName workFileName(const char* name);

/// Removes a work file; traces "cannot remove file %s: %s" if that fails.
void removeWorkFile(const char* path);

} // namespace core
