// SPDX-License-Identifier: MIT
//
// keys.h: the keys of the configuration file. A new key needs a member of Configuration, a row of
// the table in keys.cpp, and a line in vokcontrol.conf(5) and in packaging/vokcontrol.conf.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "config/configuration.h"

namespace config {

/// A check of a text, and the words in which a message says what is allowed.
struct Rule {
    bool (*holds)(std::string_view text);
    const char* words; ///< "the name of a group"
};

/// How the value of a key is read, and the member that it goes into.
struct Text {
    std::string Configuration::*member;
    const Rule& rule;
};

/// Texts with commas between them; an empty value is an empty list.
struct List {
    std::vector<std::string> Configuration::*member;
    const Rule& rule;
};

/// A decimal number from least to most.
struct Number {
    unsigned Configuration::*member;
    unsigned least;
    unsigned most;
};

/// "yes" or "no".
struct YesNo {
    bool Configuration::*member;
};

/// Digits with commas between them, each at most once.
struct Digits {
    std::string Configuration::*member;
};

/// "1: done, 2: failed": a word for each of some digits.
struct Words {
    std::array<std::string, 10> Configuration::*member;
};

using Reading = std::variant<Text, List, Number, YesNo, Digits, Words>;

struct Key {
    const char* section;
    const char* name;
    Reading reading;
};

/// All keys, those of a section together.
[[nodiscard]] std::span<const Key> keys();

/// Reads a value.
/// @return false if the value is not allowed; then the configuration is not changed
[[nodiscard]] bool take(const Key& key, std::string_view value, Configuration& configuration);

/// What the value of a key must be: "a whole number from 1 to 100".
[[nodiscard]] std::string allowedValue(const Key& key);

} // namespace config
