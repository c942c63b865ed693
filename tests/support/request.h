// SPDX-License-Identifier: MIT
//
// request.h: what tests of the command service share: send a request through the dispatcher, and
// compare all that it leaves.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/root.h"

namespace request {

using Lines = std::vector<std::string>;

/// Where a command's shell line leaves its output. An error exit removes the file.
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

/// A request: code, blank, count, newline, and what follows.
[[nodiscard]] std::string frame(std::string_view code, std::uint32_t count,
                                std::string_view rest = "");

/// The same, but its first line is so long that the request takes all 4096 bytes: no zero follows.
[[nodiscard]] std::string filledFrame(std::string_view code, std::uint32_t count,
                                      std::string_view rest);

/// What a request has answered and asked of the system.
struct Outcome {
    int result;
    std::string answer;
    Lines calls;
    std::string printed; ///< to standard output
};

/// Puts a frame into fin_buf, zeros behind it, and starts a new list of calls. Interventions of the
/// test's own can be made from here on.
void load(std::string_view frame);

/// Has the frame in fin_buf processed under a number. What an exit has left in an open stream
/// counts as answered.
[[nodiscard]] Outcome run(int number = 7);

/// Both at once.
[[nodiscard]] Outcome process(std::string_view frame, int number = 7);

/// Calls a handler by its exported name: it reads on where the request before has been read to, and
/// no dispatcher has traced anything.
[[nodiscard]] Outcome call(void (*handler)());

/// From here on nothing can be written to the answer in hand.
void loseAnswer();

/// What the request before has left to read, without the newlines and zeros at its end; afterwards
/// nothing is left. "wags" reads and traces it, and so the list of calls starts anew.
[[nodiscard]] std::string unread();

// ---- Calls ------------------------------------------------------------------------------------

/// The calls that begin every request: the code and the count; more calls follow them.
[[nodiscard]] Lines opening(std::string_view code, std::uint32_t count, const Lines& more = {});

/// The same for a frame, whatever its first line holds.
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
    /// Compares all that the loaded request leaves when its handler has run.
    /// @param calls  that follow the dispatcher's two traces
    /// @param left  files, as leftBehind() names them
    static void expectEnd(const Outcome& outcome, const std::string& answer, const Lines& calls,
                          Lines left = {}, const std::string& printed = "");

    /// Has the loaded request processed, and compares the same.
    static void expectEnd(const std::string& answer, const Lines& calls, const Lines& left = {},
                          const std::string& printed = "");

    /// The same; which files are left, and what is printed, the test compares itself.
    static void expectReply(const Outcome& outcome, const std::string& answer, const Lines& calls);

    /// The request ends with an error; the exit's trace is the last call.
    static void expectError(const Outcome& outcome, const std::string& answer, std::uint32_t code,
                            const Lines& calls, const Lines& left = {},
                            const std::string& printed = "");
};

} // namespace request
