// SPDX-License-Identifier: MIT
//
// command_table.h: what a row of the command table says. The table itself, one row a command,
// stands with the handlers that it names.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace cmdsvc {

/// The parameter counts that a command takes.
struct CountRule {
    bool isChecked;
    std::uint8_t least;
    std::uint8_t most;

    [[nodiscard]] constexpr bool accepts(std::uint8_t count) const
    {
        return !isChecked || (count >= least && count <= most);
    }
};

inline constexpr CountRule kAnyCount = {false, 0, 0};

[[nodiscard]] constexpr CountRule exactly(std::uint8_t count)
{
    return {true, count, count};
}

[[nodiscard]] constexpr CountRule between(std::uint8_t least, std::uint8_t most)
{
    return {true, least, most};
}

/// How a request with a wrong count ends. Its answer is the row's code as a bare word; the answer
/// stream stays open, and the process's end or the next request completes it.
enum class WrongCountExit {
    kNone,        ///< no count is wrong
    kPlain,       ///< closes the slot, removes the work file; gives back the trace's result
    kCountTraced, ///< the same, and first traces the count
    kLineTraced,  ///< the same as kPlain; the request line is traced before the count is checked
    kKeepsFile,   ///< leaves the slot's file open; gives back -1
};

using Handler = void (*)();

struct CommandRow {
    std::string_view code;
    CountRule count;
    std::uint32_t wrongCountCode;
    WrongCountExit exit;
    Handler handler;
};

/// Every command, in alphabetical order.
[[nodiscard]] std::span<const CommandRow> commandTable();

} // namespace cmdsvc
