// SPDX-License-Identifier: MIT
//
// request.h: sends a request through the dispatcher, and compares all that it leaves.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/root.h"

namespace request {

using Lines = std::vector<std::string>;

/// The output of a command's shell line. An error exit removes the file.
inline const std::string kWorkFile = "/tmp/vokcontrol.tmp";

// Codes that more than one command answers.
inline constexpr std::uint32_t kGood = 0;
inline constexpr std::uint32_t kNoMemory = 0xFF000001;
inline constexpr std::uint32_t kMalformed = 0xFF000003;
inline constexpr std::uint32_t kFailed = 0xFF000004;
inline constexpr std::uint32_t kCannotStat = 0xFF000005;
inline constexpr std::uint32_t kCannotRemove = 0xFF000006;
inline constexpr std::uint32_t kCannotOpen = 0xFF000007;
inline constexpr std::uint32_t kCannotClose = 0xFF000008;

/// A way in which a shell line fails.
struct Failure {
    std::string script; ///< what the script does; empty if no shell is started
    int result;         ///< of system()
    int error;
    std::string reason;
};

extern const std::vector<Failure> kFailures;

// ---- Requests ---------------------------------------------------------------------------------

/// A request: code, blank, count, newline, and the bytes after them.
[[nodiscard]] std::string frame(std::string_view code, std::uint32_t count,
                                std::string_view rest = "");

/// The same with a first line so long that the request has 4096 bytes: no zero follows.
[[nodiscard]] std::string filledFrame(std::string_view code, std::uint32_t count,
                                      std::string_view rest);

/// A request's answer, result, output and calls.
struct Outcome {
    int result;
    std::string answer;
    Lines calls;
    std::string printed; ///< to standard output
};

/// Puts a frame into fin_buf, zeros after it, and starts a new list of calls. After it a test can
/// change how calls end.
void load(std::string_view frame);

/// Processes the frame in fin_buf under a number. Bytes that an exit left in an open stream count
/// as answered.
[[nodiscard]] Outcome run(int number = 7);

/// load() and run().
[[nodiscard]] Outcome process(std::string_view frame, int number = 7);

/// Calls a handler by its exported function: it reads the rest of the previous request, and the
/// dispatcher traces nothing.
[[nodiscard]] Outcome call(void (*handler)());

/// Makes all writes to the current answer fail.
void loseAnswer();

/// Takes the rest of the previous request, without the newlines and zeros at its end. "wags" reads
/// and traces it, so the list of calls starts again.
[[nodiscard]] std::string unread();

// ---- Calls ------------------------------------------------------------------------------------

/// The calls that begin every request, the code and the count, and then MORE.
[[nodiscard]] Lines opening(std::string_view code, std::uint32_t count, const Lines& more = {});

/// The same for a frame with any first line.
[[nodiscard]] Lines openingOf(std::string_view frame, const Lines& more = {});

/// The traces of the first 30 bytes of a line, each as a number and as a character.
[[nodiscard]] Lines lineTraces(std::string_view line);

/// The trace that ends an error exit.
[[nodiscard]] std::string exitTrace(std::uint32_t code);

// ---- What is left -----------------------------------------------------------------------------

/// The files in /tmp and in its folder "work", besides the traces and the answer.
[[nodiscard]] Lines leftBehind();

/// Tests of commands.
class Test : public root::Test {
  protected:
    /// Compares all that the loaded request leaves after its handler.
    /// @param calls  after the dispatcher's two traces
    /// @param left  files, as leftBehind() names them
    static void expectEnd(const Outcome& outcome, const std::string& answer, const Lines& calls,
                          Lines left = {}, const std::string& printed = "");

    /// Processes the loaded request, and compares the same.
    static void expectEnd(const std::string& answer, const Lines& calls, const Lines& left = {},
                          const std::string& printed = "");

    /// The same without files and output, which the test compares itself.
    static void expectReply(const Outcome& outcome, const std::string& answer, const Lines& calls);

    /// The request ends with an error; the exit's trace is the last call.
    static void expectError(const Outcome& outcome, const std::string& answer, std::uint32_t code,
                            const Lines& calls, const Lines& left = {},
                            const std::string& printed = "");
};

} // namespace request
