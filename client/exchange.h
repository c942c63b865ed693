// SPDX-License-Identifier: MIT
//
// exchange.h: one request and its answer, for commands that know what they expect. Whatever else
// comes back is a Failure: a refusal in the words of that command, or an answer that cannot be
// read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "client/answer.h"
#include "client/request.h"
#include "cmdsvc/protocol.h"

namespace client {

/// A request: code, parameter count, and the bytes behind its first line.
struct Request {
    std::string_view code;
    std::uint32_t count = 0;
    std::string parameters = {};
    std::string line =
        {}; ///< the first line's bytes, where it carries parameters instead of a count
};

/// A text as a parameter line. It must not hold a newline or a zero byte.
[[nodiscard]] std::string parameterLine(const std::string& text);

/// Sends a request whose good answer is a status code, as a rule 0.
void askToDo(const Connection& connection, const Request& request,
             std::uint32_t good = cmdsvc::kGood);

/// Sends a request whose good answer is a header with this tag.
/// @return the answer, its bytes behind the header as lines
[[nodiscard]] Answer askForLines(const Connection& connection, const Request& request,
                                 std::string_view tag);

/// Sends a request whose good answer starts so.
/// @return the bytes behind that
[[nodiscard]] std::string askForBytes(const Connection& connection, const Request& request,
                                      std::string_view start);

/// The failure of an answer that makes no sense.
[[noreturn]] void failUnreadable(const Request& request, const Answer& answer);

} // namespace client
