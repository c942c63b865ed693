// SPDX-License-Identifier: MIT
//
// shapes.h: the shapes of shell lines. The guard runs only a line with one of them.
#pragma once

#include <span>
#include <string_view>

namespace guard {

/// The shell lines of one operation: its name, and their words with the places of the values.
///
/// A place is a name in braces, with a sign that says what it may hold (values.h has the
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

/// All shapes.
[[nodiscard]] std::span<const Shape> shapes();

/// The judgement of a line. Without a shape: the operation with the most similar shape, and the
/// place where the line differs from it.
struct Verdict {
    bool isKnown;
    std::string_view operation;
    std::string_view place;
};

/// Compares the whole line, up to its last character.
[[nodiscard]] Verdict judge(std::string_view line);

} // namespace guard
