// SPDX-License-Identifier: MIT
#include "config/keys.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace config {
namespace {

using C = Configuration;

// ---- Parts of a text --------------------------------------------------------------------------

std::string_view trim(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t";
    const std::size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

/// The parts of a text before, between and after the separators, without the blanks around them.
std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t end = 0; end != std::string_view::npos; start = end + 1) {
        end = text.find(separator, start);
        parts.push_back(trim(text.substr(start, end - start)));
    }
    return parts;
}

/// The items of a list with commas. An empty text has none.
std::vector<std::string_view> itemsOf(std::string_view text)
{
    return text.empty() ? std::vector<std::string_view>() : split(text, ',');
}

// ---- What texts must be like ------------------------------------------------------------------

bool isAlphanumeric(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isOneOf(char c, std::string_view characters)
{
    return characters.find(c) != std::string_view::npos;
}

bool isControl(char c)
{
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

bool isPlain(std::string_view text, std::string_view furtherCharacters, std::size_t most)
{
    return !text.empty() && text.size() <= most &&
           std::all_of(text.begin(), text.end(),
                       [&](char c) { return isAlphanumeric(c) || isOneOf(c, furtherCharacters); });
}

bool isAbsolute(std::string_view path)
{
    return path.starts_with('/') && std::none_of(path.begin(), path.end(), isControl);
}

/// The service first makes its socket at this path and "~", which must fit with a zero byte.
bool isSocketPath(std::string_view path)
{
    return isAbsolute(path) && path.size() <= 106;
}

bool isGroup(std::string_view name)
{
    return isPlain(name, "_-.", 32) && !name.starts_with('-');
}

bool isFolders(std::string_view folders)
{
    const std::vector<std::string_view> parts = split(folders, ':');
    return std::all_of(parts.begin(), parts.end(), isAbsolute);
}

bool isWord(std::string_view text)
{
    return !text.empty() && std::none_of(text.begin(), text.end(), isControl);
}

bool isAccountOrNone(std::string_view name)
{
    return name.empty() || isGroup(name);
}

bool isHost(std::string_view name)
{
    return isPlain(name, "-.", 253);
}

constexpr Rule kSocketPath = {isSocketPath, "an absolute path of at most 106 bytes"};
constexpr Rule kGroup = {isGroup, "the name of a group"};
constexpr Rule kFolders = {isFolders, "absolute paths of folders with colons between them"};
constexpr Rule kAccount = {isWord, "names of accounts"};
constexpr Rule kAccountOrNone = {isAccountOrNone, "the name of an account, or nothing"};
constexpr Rule kHost = {isHost, "host names, without ports"};

// ---- The table --------------------------------------------------------------------------------

constexpr unsigned kHourInSeconds = 60 * 60;
constexpr unsigned kDayInSeconds = 24 * 60 * 60;

constexpr auto kKeys = std::to_array<Key>({
    {"service", "socket", Text{&C::socket, kSocketPath}},
    {"service", "group", Text{&C::group, kGroup}},
    {"service", "view-group", Text{&C::viewGroup, kGroup}},
    {"service", "timeout", Number{&C::timeout, 1, kDayInSeconds}},
    {"service", "deadline", Number{&C::deadline, 1, kDayInSeconds}},
    {"service", "password-pause", Number{&C::passwordPause, 0, kDayInSeconds}},
    {"service", "path", Text{&C::path, kFolders}},

    {"client", "timeout", Number{&C::clientTimeout, 1, kDayInSeconds}},

    {"pages", "administrators", List{&C::administrators, kAccount}},
    {"pages", "hosts", List{&C::hosts, kHost}},
    {"pages", "trust-web-server", YesNo{&C::trustWebServer}},

    {"thresholds", "full-warning", Number{&C::fullWarning, 1, 100}},
    {"thresholds", "full-critical", Number{&C::fullCritical, 1, 100}},
    {"thresholds", "backup-age", Number{&C::backupAge, 1, 3650}},
    {"thresholds", "stale", Number{&C::stale, 1, 8760}},

    {"backup", "good-states", Digits{&C::goodStates}},
    {"backup", "failed-states", Digits{&C::failedStates}},
    {"backup", "words", Words{&C::words}},

    {"notify", "account", Text{&C::notifyAccount, kAccountOrNone}},
    {"notify", "timeout", Number{&C::notifyTimeout, 1, kHourInSeconds}},
});

// ---- Values -----------------------------------------------------------------------------------

bool isDigit(std::string_view text)
{
    return text.size() == 1 && text[0] >= '0' && text[0] <= '9';
}

std::optional<std::string> readValue(const Text& reading, std::string_view value)
{
    return reading.rule.holds(value) ? std::optional(std::string(value)) : std::nullopt;
}

std::optional<std::vector<std::string>> readValue(const List& reading, std::string_view value)
{
    const std::vector<std::string_view> parts = itemsOf(value);
    if (!std::all_of(parts.begin(), parts.end(), reading.rule.holds)) {
        return std::nullopt;
    }
    return std::vector<std::string>(parts.begin(), parts.end());
}

std::optional<unsigned> readValue(const Number& reading, std::string_view value)
{
    unsigned number = 0;
    const char* end = value.data() + value.size();
    const auto read = std::from_chars(value.data(), end, number);
    const bool isWhole = read.ec == std::errc() && read.ptr == end;
    const bool isInside = number >= reading.least && number <= reading.most;
    return (isWhole && isInside) ? std::optional(number) : std::nullopt;
}

std::optional<bool> readValue(const YesNo& /*reading*/, std::string_view value)
{
    const bool isYes = value == "yes";
    return (isYes || value == "no") ? std::optional(isYes) : std::nullopt;
}

std::optional<std::string> readValue(const Digits& /*reading*/, std::string_view value)
{
    std::string digits;
    for (const std::string_view part : itemsOf(value)) {
        if (!isDigit(part) || isOneOf(part[0], digits)) {
            return std::nullopt;
        }
        digits += part;
    }
    return digits;
}

/// Adds a digit's word. Returns false if one of them is not allowed or the digit has a word
/// already.
bool addWord(std::array<std::string, 10>& words, std::string_view digit, std::string_view word)
{
    if (!isDigit(digit) || !isWord(word)) {
        return false;
    }
    std::string& place = words[static_cast<std::size_t>(digit[0] - '0')];
    const bool isFirst = place.empty();
    place = word;
    return isFirst;
}

std::optional<std::array<std::string, 10>> readValue(const Words& /*reading*/,
                                                     std::string_view value)
{
    std::array<std::string, 10> words;
    for (const std::string_view item : itemsOf(value)) {
        const std::vector<std::string_view> sides = split(item, ':');
        if (sides.size() != 2 || !addWord(words, sides[0], sides[1])) {
            return std::nullopt;
        }
    }
    return words;
}

// ---- What is allowed --------------------------------------------------------------------------

std::string describe(const Text& reading)
{
    return reading.rule.words;
}

std::string describe(const List& reading)
{
    return std::string(reading.rule.words) + ", with commas between them";
}

std::string describe(const Number& reading)
{
    return "a whole number from " + std::to_string(reading.least) + " to " +
           std::to_string(reading.most);
}

std::string describe(const YesNo& /*reading*/)
{
    return "yes or no";
}

std::string describe(const Digits& /*reading*/)
{
    return "digits from 0 to 9, each once, with commas between them";
}

std::string describe(const Words& /*reading*/)
{
    return "digits, each once, and a word for each: 1: done, 2: failed";
}

} // namespace

std::span<const Key> keys()
{
    return kKeys;
}

bool take(const Key& key, std::string_view value, Configuration& configuration)
{
    return std::visit(
        [&](const auto& reading) {
            auto read = readValue(reading, value);
            const bool isRead = read.has_value();
            if (isRead) {
                configuration.*reading.member = *std::move(read);
            }
            return isRead;
        },
        key.reading);
}

std::string allowedValue(const Key& key)
{
    return std::visit([](const auto& reading) { return describe(reading); }, key.reading);
}

} // namespace config
