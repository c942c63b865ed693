// SPDX-License-Identifier: MIT
#include "service/new_name.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <string>

#include "core/bytes.h"

namespace service {
namespace {

/// Sections of the file server's configuration that are not shares.
constexpr auto kSections = std::to_array<std::string_view>({"global", "homes", "printers"});

/// Accounts that the file server and the shell need, even if they are not in the password file.
constexpr auto kSystemAccounts = std::to_array<std::string_view>({"root", "daemon", "nobody"});

bool isOneOf(std::string_view name, const auto& names)
{
    return std::ranges::any_of(
        names, [name](std::string_view each) { return core::equalIgnoringCase(name, each); });
}

/// ":" ends a field of the password file, "," ends a name in a list of users, "=" ends a setting's
/// name, and "%" begins a variable of the file server. "@" and "+" name groups, "." hides a folder.
/// The file server drops blanks at both ends.
bool isMisread(std::string_view name)
{
    constexpr std::string_view kNeverFirst = "@+. ";
    return name.find_first_of(":,=%") != std::string_view::npos ||
           (!name.empty() &&
            (kNeverFirst.find(name.front()) != std::string_view::npos || name.back() == ' '));
}

/// Whether this text begins with a number that people's accounts and groups have.
bool isOfPeople(std::string_view text)
{
    constexpr unsigned kFirst = 1000;
    constexpr unsigned kLast = 59'999;
    unsigned number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number >= kFirst && number <= kLast;
}

/// Whether a line "NAME:PASSWORD:NUMBER:..." has this name and is not a person's.
bool isOwnLine(std::string_view line, std::string_view name)
{
    const std::size_t nameEnd = line.find(':');
    if (nameEnd == std::string_view::npos ||
        !core::equalIgnoringCase(line.substr(0, nameEnd), name)) {
        return false;
    }
    const std::size_t passwordEnd = line.find(':', nameEnd + 1);
    return passwordEnd == std::string_view::npos || !isOfPeople(line.substr(passwordEnd + 1));
}

bool isOwnIn(const char* path, std::string_view name)
{
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (isOwnLine(line, name)) {
            return true;
        }
    }
    return false;
}

bool isOwnAccount(std::string_view name)
{
    return isOneOf(name, kSystemAccounts) || isOwnIn("/etc/passwd", name) ||
           isOwnIn("/etc/group", name);
}

} // namespace

NewName judgeNewUser(std::string_view name)
{
    const NewName asSection = judgeNewShare(name);
    return (asSection == NewName::kGood && isOwnAccount(name)) ? NewName::kReserved : asSection;
}

NewName judgeNewShare(std::string_view name)
{
    if (isMisread(name)) {
        return NewName::kMisread;
    }
    return isOneOf(name, kSections) ? NewName::kReserved : NewName::kGood;
}

} // namespace service
