// SPDX-License-Identifier: MIT
//
// exchange.h: one request and its answer, for commands that know what they expect. Whatever else
// comes back is a Failure: a refusal in the words of that command, or an answer that cannot be
// read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "client/answer.h"
#include "client/connection.h"
#include "client/frame.h"
#include "cmdsvc/commands.h"

namespace client {

/// A command, and the values of its parameters in the order of its row.
struct Request {
    const cmdsvc::Command& command;
    std::vector<Value> values = {};
};

/// Sends a request. A command that answers codes alone may answer 20 bytes, one that answers text 1
/// MiB, and the private file 16 MiB; more cannot be read.
/// @return its good answer
[[nodiscard]] Answer ask(const Connection& connection, const Request& request);

/// Sends a request whose good answer says no more than that all went well.
void askToDo(const Connection& connection, const Request& request);

/// A good answer, and its body as lines.
struct Listing {
    Answer answer;
    std::vector<std::string> lines;
};

/// Sends a request whose good answer is a header with lines of text.
[[nodiscard]] Listing askForLines(const Connection& connection, const Request& request);

/// Sends a request whose good answer begins so, after its tag.
/// @return the bytes that follow
[[nodiscard]] std::string askForBytes(const Connection& connection, const Request& request,
                                      std::string_view start = "");

/// What an answer's bytes hold for a command that asks for its good answer.
/// @return the good answer
[[nodiscard]] Answer acceptAnswer(const cmdsvc::Command& command, std::string_view bytes);

/// The failure of an answer that makes no sense.
[[noreturn]] void failUnreadable(const Request& request, const Answer& answer);

} // namespace client
