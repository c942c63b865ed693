// SPDX-License-Identifier: MIT
//
// answer.h: what the bytes of an answer mean. Values in, values out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace client {

enum class Shape {
    kEmpty,  ///< nothing: the command was ignored, is not known, or failed before it answered
    kWord,   ///< a status code
    kError,  ///< "erro " and a status code
    kStatus, ///< the command's name and a status code
    kHeader, ///< a tag and a count; lines of text follow
    kTagged, ///< a tag; whatever the command has to say follows
    kUnreadable
};

struct Answer {
    Shape shape = Shape::kUnreadable;
    std::string tag;                            ///< of a status or a header
    std::uint32_t value = 0;                    ///< the status code, or the header's count
    std::vector<std::string> lines;             ///< of a header, without their newlines
    std::optional<std::uint32_t> trailingError; ///< an error behind a header's lines
};

/// Reads an answer by its shape.
[[nodiscard]] Answer readAnswer(std::string_view bytes);

/// A status code that a command has answered, in words: why the appliance has refused.
[[nodiscard]] std::string refusalSentence(std::string_view command, std::uint32_t code);

/// An answer to a command in words.
[[nodiscard]] std::string describeAnswer(const Answer& answer, std::string_view command);

/// The bytes of an answer, sixteen a line, by number and by character.
[[nodiscard]] std::string hexdump(std::string_view bytes);

} // namespace client
