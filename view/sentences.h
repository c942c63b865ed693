// SPDX-License-Identifier: MIT
//
// sentences.h: the status codes in words. Some commands share a code and mean something else by it.
#pragma once

#include <string>
#include <string_view>

#include "cmdsvc/protocol.h"

namespace view {

/// Why the appliance has refused: a whole sentence in the language of the person who reads it, with
/// a capital and a full stop, and what to do if that is not plain.
[[nodiscard]] std::string refusalForPeople(std::string_view command, cmdsvc::Status status);

/// The same with the code at the end: "There is no private file on the appliance. (0x70000001)"
[[nodiscard]] std::string refusalSentence(std::string_view command, cmdsvc::Status status);

/// The same with the code in front, for who looks at the protocol.
[[nodiscard]] std::string explainStatus(std::string_view command, cmdsvc::Status status);

} // namespace view
