// SPDX-License-Identifier: MIT
//
// shapes.h: the shapes of all lines that may run. A line has one of them or it does not run.
#pragma once

#include <span>
#include <string_view>

namespace guard {

/// The lines of one kind: what they are for, and their words with the places of the values.
///
/// A place is a name in braces, with a sign that tells what it may hold (values.h has the
/// characters):
///
///   {"share}     between double quotes   no character that a shell reads there
///   {'user}      between single quotes   the same
///   {#process}   a number                at least one digit
///   {_function}  a name                  at least one letter, digit or underscore
///   {=value}     words                   no "-" first
///   {/files}     paths                   words, each with a "/" first
struct Shape {
    std::string_view operation;
    std::string_view words;
};

/// All shapes, to be read beside the lines in the module's sources.
[[nodiscard]] std::span<const Shape> shapes();

/// What a line is. Of one without a shape: the operation that it comes nearest to, and the place
/// where it leaves that operation's shape.
struct Verdict {
    bool isKnown;
    std::string_view operation;
    std::string_view place;
};

/// Looks at the whole line, up to its last character.
[[nodiscard]] Verdict judge(std::string_view line);

} // namespace guard
