// SPDX-License-Identifier: MIT
//
// exchange.h: sends one request and returns its good answer. Any other answer throws a Failure: the
// command's refusal as a sentence, or that the answer cannot be read.
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

/// Sends a request. An answer may have 20 bytes if it is only codes, 16 MiB if it is the private
/// file, and else 1 MiB; a longer one is a failure.
/// @return its good answer
[[nodiscard]] Answer ask(const Connection& connection, const Request& request);

/// Sends a request whose good answer contains nothing else.
void askToDo(const Connection& connection, const Request& request);

/// A good answer, and its body as lines.
struct Listing {
    Answer answer;
    std::vector<std::string> lines;
};

/// Sends a request whose good answer is a header with lines of text.
[[nodiscard]] Listing askForLines(const Connection& connection, const Request& request);

/// Sends a request whose good answer begins with these bytes, after its tag.
/// @return the bytes that follow
[[nodiscard]] std::string askForBytes(const Connection& connection, const Request& request,
                                      std::string_view start = "");

/// Reads an answer's bytes. Throws a Failure if they are not the good answer.
/// @param reasons  what the appliance's programs wrote meanwhile, for the Failure
/// @return the good answer
[[nodiscard]] Answer acceptAnswer(const cmdsvc::Command& command, std::string_view bytes,
                                  const std::string& reasons = {});

/// Throws the Failure for an answer that cannot be read.
[[noreturn]] void failUnreadable(const Request& request, const Answer& answer);

} // namespace client
