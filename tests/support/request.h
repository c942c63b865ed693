// SPDX-License-Identifier: MIT
//
// request.h: what tests of the command service do: send a request through the dispatcher, and
// compare the whole answer and every call.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace request {

/// A request: code, blank, count, newline, and what follows.
[[nodiscard]] std::string frame(std::string_view code, std::uint32_t count,
                                std::string_view rest = "");

struct Outcome {
    int result;
    std::string answer;
    std::vector<std::string> calls;
};

/// Puts a frame into fin_buf, zeros behind it, and starts a new list of calls. Interventions of the
/// test's own can be made from here on.
void load(std::string_view frame);

/// Has the frame in fin_buf processed under a number. What an exit has left in an open stream
/// counts as answered.
[[nodiscard]] Outcome run(int number = 7);

/// Both at once.
[[nodiscard]] Outcome process(std::string_view frame, int number = 7);

/// From here on nothing can be written to the answer in hand.
void loseAnswer();

/// What no handler has read of the request, without the zeros behind it.
[[nodiscard]] std::string unread();

/// The calls that begin every request: the code and the count.
[[nodiscard]] std::vector<std::string> opening(std::string_view code, std::uint32_t count);

/// An opening with more calls behind it.
[[nodiscard]] std::vector<std::string> opening(std::string_view code, std::uint32_t count,
                                               const std::vector<std::string>& more);

/// The trace that ends an error exit.
[[nodiscard]] std::string exitTrace(std::uint32_t code);

} // namespace request
