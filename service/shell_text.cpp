// SPDX-License-Identifier: MIT
#include "service/shell_text.h"

#include <algorithm>

namespace service {
namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isAlphanumeric(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isBeyondAscii(char c)
{
    return static_cast<unsigned char>(c) >= 0x80;
}

bool isControl(char c)
{
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

bool isOneOf(char c, std::string_view set)
{
    return set.find(c) != std::string_view::npos;
}

/// What is a plain character even outside of quotes. A blank only separates arguments.
bool isPlain(char c)
{
    return isAlphanumeric(c) || isBeyondAscii(c) || isOneOf(c, " .,_-+@%=:");
}

/// Whether a "$" begins something that can run a command, or an assignment. Parameters alone
/// ("$HOME",
/// "$$") are expanded and do nothing.
bool beginsExpansion(std::string_view text)
{
    std::size_t next = 1;
    // The shell joins lines before it looks any further.
    while (text.substr(next).starts_with("\\\n")) {
        next += 2;
    }
    return text[0] == '$' && next < text.size() && isOneOf(text[next], "({[");
}

/// Follows a text that begins between double quotes, through quotes of its own. Nothing in it may
/// run a command wherever it is: between the quotes no back-quote and no "$(", outside of them
/// nothing but plain characters. A quote that stays open leaves a line that the shell refuses as a
/// whole.
bool isHarmlessInDoubleQuotes(std::string_view text)
{
    bool isQuoted = true;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            isQuoted = !isQuoted;
        } else if (!isQuoted) {
            if (!isPlain(c)) {
                return false;
            }
        } else if (c == '\\') {
            ++i; // the next character is only a character
        } else if (c == '`' || beginsExpansion(text.substr(i))) {
            return false;
        }
    }
    return true;
}

/// Between single quotes, and traced, all on one line.
bool isHarmlessInSingleQuotes(std::string_view text)
{
    const bool isOneLine = std::ranges::none_of(text, isControl);
    const bool leavesQuotes = std::ranges::any_of(text, [](char c) { return isOneOf(c, "'\"\\"); });
    return isOneLine && !leavesQuotes && isHarmlessInDoubleQuotes(text);
}

bool isName(std::string_view text)
{
    return std::ranges::all_of(text, isPlain) && !text.starts_with('-') && text != "." &&
           text != "..";
}

bool isWord(std::string_view text)
{
    return std::ranges::all_of(text,
                               [](char c) { return isAlphanumeric(c) || isOneOf(c, " ._-"); }) &&
           !text.starts_with('-');
}

bool isClock(std::string_view text)
{
    return std::ranges::all_of(text, [](char c) { return isDigit(c) || c == '.'; });
}

} // namespace

bool isHarmless(std::string_view text, ShellContext context)
{
    switch (context) {
    case ShellContext::kNowhere:
        return true;
    case ShellContext::kDoubleQuotes:
        return isHarmlessInDoubleQuotes(text);
    case ShellContext::kSingleQuotes:
        return isHarmlessInSingleQuotes(text);
    case ShellContext::kName:
        return isName(text);
    case ShellContext::kWord:
        return isWord(text);
    case ShellContext::kClock:
        return isClock(text);
    }
    return false;
}

} // namespace service
