// SPDX-License-Identifier: MIT
#include "service/shell_text.h"

#include <algorithm>
#include <string>

#include "cmdsvc/protocol.h"
#include "cmdsvc/request_reader.h"
#include "core/bytes.h"

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

/// Whether the shell reads a character as itself even outside of quotes, or as a blank that
/// separates arguments.
bool isPlain(char c)
{
    return isAlphanumeric(c) || isBeyondAscii(c) || isOneOf(c, " .,_-+@%=:");
}

/// Whether a "$" begins something that can run a command or assign a variable. A plain variable
/// ("$HOME", "$$") is expanded and does nothing.
bool beginsExpansion(std::string_view text)
{
    std::size_t next = 1;
    // The shell joins lines before it reads on.
    while (text.substr(next).starts_with("\\\n")) {
        next += 2;
    }
    return text[0] == '$' && next < text.size() && isOneOf(text[next], "({[");
}

/// Checks a text that begins between double quotes and may contain quotes. Nothing in it may run a
/// command: between the quotes no back-quote and no "$(", outside of them only plain characters. If
/// a quote stays open, the shell refuses the whole line.
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

/// Checks a text between single quotes, which is also traced. It must be one line.
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

/// A byte 0xFF in a user's name would end every list of users there.
bool isNewUserName(std::string_view text)
{
    return isName(text) && text.find('\xFF') == std::string_view::npos;
}

/// Some clients escape special characters; the handler drops every backslash.
bool isEscapedName(std::string_view text)
{
    std::string kept(text);
    std::erase(kept, '\\');
    return isName(kept);
}

/// A trace shows a size's bytes as text. A size below that of a request has at most two bytes that
/// are not zero, and so few characters do nothing in the shell.
bool isSize(std::string_view line)
{
    const bool isWhole = line.size() > cmdsvc::kWordSize;
    return isHarmlessInDoubleQuotes(cmdsvc::textOf(line)) ||
           (isWhole && core::u32At(line, 0) < VOK_REQUEST_SIZE);
}

} // namespace

bool isHarmless(std::string_view text, cmdsvc::ShellContext context)
{
    switch (context) {
    case cmdsvc::ShellContext::kNowhere:
        return true;
    case cmdsvc::ShellContext::kDoubleQuotes:
        return isHarmlessInDoubleQuotes(text);
    case cmdsvc::ShellContext::kSingleQuotes:
        return isHarmlessInSingleQuotes(text);
    case cmdsvc::ShellContext::kName:
        return isName(text);
    case cmdsvc::ShellContext::kNameLine:
        return isName(cmdsvc::withoutNewline(text));
    case cmdsvc::ShellContext::kNewUser:
        return isNewUserName(text);
    case cmdsvc::ShellContext::kWord:
        return isWord(text);
    case cmdsvc::ShellContext::kClock:
        return isClock(text);
    case cmdsvc::ShellContext::kEscaped:
        return isEscapedName(text);
    case cmdsvc::ShellContext::kSize:
        return isSize(text);
    }
    return false;
}

} // namespace service
