// SPDX-License-Identifier: MIT
//
// sentences.h: the status codes in words. Some commands share a code and mean something else by it.
#pragma once

#include <string>
#include <string_view>

#include "cmdsvc/protocol.h"

namespace view {

/// A status code that a command has answered, in words: why the appliance has refused.
[[nodiscard]] std::string refusalSentence(std::string_view command, cmdsvc::Status status);

/// The same for people alone: a sentence with a capital and a full stop, without the code.
[[nodiscard]] std::string refusalForPeople(std::string_view command, cmdsvc::Status status);

/// The same with the code in front, for who looks at the protocol.
[[nodiscard]] std::string explainStatus(std::string_view command, cmdsvc::Status status);

} // namespace view
