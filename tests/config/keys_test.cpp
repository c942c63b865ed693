// SPDX-License-Identifier: MIT
#include "config/keys.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>

#include "config/lines.h"
#include "tests/support/root.h"

namespace {

using config::Configuration;
using config::Key;

/// A key that there is.
const Key& find(std::string_view section, std::string_view name)
{
    for (const Key& key : config::keys()) {
        if (key.section == section && key.name == name) {
            return key;
        }
    }
    throw std::invalid_argument(std::string(name));
}

bool take(std::string_view section, std::string_view name, std::string_view value,
          Configuration& configuration)
{
    return config::take(find(section, name), value, configuration);
}

/// Values that a key refuses change nothing.
void expectRefused(std::string_view section, std::string_view name,
                   const std::vector<std::string>& values)
{
    for (const std::string& value : values) {
        Configuration configuration;
        EXPECT_FALSE(take(section, name, value, configuration)) << name << " = " << value;
        EXPECT_TRUE(configuration == Configuration()) << name << " = " << value;
    }
}

/// The keys, in order, as they stand in a text: "[service] timeout = 60".
std::vector<std::string> keysIn(const std::string& text, const std::string& heading,
                                const std::string& line)
{
    std::vector<std::string> found;
    std::string section;
    std::istringstream lines(text);
    std::smatch match;
    for (std::string each; std::getline(lines, each);) {
        if (std::regex_match(each, match, std::regex(heading))) {
            section = match[1];
            std::transform(section.begin(), section.end(), section.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        } else if (std::regex_match(each, match, std::regex(line))) {
            found.push_back("[" + section + "] " +
                            std::regex_replace(match[1].str(), std::regex(R"(\\)"), ""));
        }
    }
    return found;
}

std::vector<std::string> keysOfFile()
{
    return keysIn(root::readFile("/build/texts/vokcontrol.conf"), R"(\[(.*)\])", "#([a-z-]+ =.*)");
}

TEST(Keys, fileAndManualHaveTheKeysOfTheTable)
{
    std::vector<std::string> names;
    for (const Key& key : config::keys()) {
        names.push_back("[" + std::string(key.section) + "] " + key.name);
    }
    const std::vector<std::string> shipped = keysOfFile();
    std::vector<std::string> shippedNames;
    for (const std::string& key : shipped) {
        shippedNames.push_back(key.substr(0, key.find(" =")));
    }
    EXPECT_EQ(shippedNames, names);
    EXPECT_EQ(keysIn(root::readFile("/build/texts/man/vokcontrol.conf.5"), R"(\.SH ([A-Z]+))",
                     R"(\.B ([a-z\\-]+ =.*))"),
              shipped);
}

TEST(Keys, shippedFileChangesNothing)
{
    const std::string shipped = root::readFile("/build/texts/vokcontrol.conf");
    EXPECT_TRUE(config::readLines("file", shipped) == Configuration());
}

TEST(Keys, shippedFileNamesTheDefaults)
{
    std::string shipped = root::readFile("/build/texts/vokcontrol.conf");
    shipped = std::regex_replace(shipped, std::regex("#([a-z-]+ =)"), "$1");
    EXPECT_TRUE(config::readLines("file", shipped) == Configuration());
}

TEST(Keys, eachGoesIntoItsMember)
{
    Configuration all;
    EXPECT_TRUE(take("service", "socket", "/run/other.sock", all));
    EXPECT_TRUE(take("service", "group", "staff", all));
    EXPECT_TRUE(take("service", "view-group", "lookers", all));
    EXPECT_TRUE(take("service", "timeout", "61", all));
    EXPECT_TRUE(take("service", "deadline", "11", all));
    EXPECT_TRUE(take("service", "password-pause", "17", all));
    EXPECT_TRUE(take("service", "path", "/opt/bin:/usr/bin", all));
    EXPECT_TRUE(take("client", "timeout", "91", all));
    EXPECT_TRUE(take("pages", "administrators", "anna, Otto Meier,\tzo\xC3\xAB", all));
    EXPECT_TRUE(take("pages", "hosts", "nas.example,nas", all));
    EXPECT_TRUE(take("pages", "trust-web-server", "yes", all));
    EXPECT_TRUE(take("thresholds", "full-warning", "80", all));
    EXPECT_TRUE(take("thresholds", "full-critical", "85", all));
    EXPECT_TRUE(take("thresholds", "backup-age", "8", all));
    EXPECT_TRUE(take("thresholds", "stale", "25", all));
    EXPECT_TRUE(take("backup", "good-states", "1, 4", all));
    EXPECT_TRUE(take("backup", "failed-states", "2", all));
    EXPECT_TRUE(take("backup", "words", "0: never run, 9:failed", all));
    EXPECT_TRUE(take("notify", "account", "mailer", all));
    EXPECT_TRUE(take("notify", "timeout", "31", all));
    Configuration expected = {.socket = "/run/other.sock",
                              .group = "staff",
                              .viewGroup = "lookers",
                              .timeout = 61,
                              .deadline = 11,
                              .passwordPause = 17,
                              .path = "/opt/bin:/usr/bin",
                              .clientTimeout = 91,
                              .administrators = {"anna", "Otto Meier", "zo\xC3\xAB"},
                              .hosts = {"nas.example", "nas"},
                              .trustWebServer = true,
                              .fullWarning = 80,
                              .fullCritical = 85,
                              .backupAge = 8,
                              .stale = 25,
                              .goodStates = "14",
                              .failedStates = "2",
                              .words = {},
                              .notifyAccount = "mailer",
                              .notifyTimeout = 31};
    expected.words[0] = "never run";
    expected.words[9] = "failed";
    EXPECT_TRUE(all == expected);
}

TEST(Keys, numberIsWholeAndInsideItsLimits)
{
    expectRefused("service", "timeout", {"", "0", "86401", "-1", "+5", "5s", "0x10", "1.5", " 5"});
    expectRefused("thresholds", "full-warning", {"0", "101", "4294967297", "90 %"});
    Configuration configuration;
    EXPECT_TRUE(take("service", "timeout", "1", configuration));
    EXPECT_TRUE(take("service", "timeout", "86400", configuration));
    EXPECT_TRUE(take("service", "password-pause", "0", configuration));
    EXPECT_EQ(configuration.timeout, 86400U);
    EXPECT_EQ(configuration.passwordPause, 0U);
}

TEST(Keys, textThatBreaksItsRuleIsRefused)
{
    expectRefused("service", "socket", {"", "run/x", "/run/\x7F", "/" + std::string(106, 'a')});
    expectRefused("service", "group", {"", "-x", "a b", "a,b", std::string(33, 'g')});
    expectRefused("service", "path", {"", "bin", "/usr/bin:", ":/usr/bin", "/a::/b", "/a:b"});
    expectRefused("pages", "administrators", {",", "anna,", "anna,,otto", "an\x01na"});
    expectRefused("pages", "hosts", {"nas:80", "n as", "nas,", std::string(254, 'n')});
    expectRefused("pages", "trust-web-server", {"", "Yes", "true", "1"});
    Configuration configuration;
    EXPECT_TRUE(take("service", "socket", "/" + std::string(105, 'a'), configuration));
}

TEST(Keys, statesAreSingleDigits)
{
    expectRefused("backup", "good-states", {"12", "a", "1,", "1,1", "-1", "1 2"});
    expectRefused("backup", "words",
                  {"1", "done", "1:", ":done", "1: done,", "10: done", "1: a, 1: b", "1: a: b"});
}

TEST(Keys, emptyListHasNothing)
{
    Configuration configuration = {.administrators = {"anna"}, .goodStates = "1"};
    configuration.words[1] = "done";
    EXPECT_TRUE(take("pages", "administrators", "", configuration));
    EXPECT_TRUE(take("backup", "good-states", "", configuration));
    EXPECT_TRUE(take("backup", "words", "", configuration));
    EXPECT_TRUE(configuration == Configuration());
}

TEST(Keys, allowedValuesAreSaid)
{
    EXPECT_EQ(config::allowedValue(find("service", "socket")),
              "an absolute path of at most 106 bytes");
    EXPECT_EQ(config::allowedValue(find("thresholds", "full-warning")),
              "a whole number from 1 to 100");
    EXPECT_EQ(config::allowedValue(find("pages", "hosts")),
              "host names, without ports, with commas between them");
    EXPECT_EQ(config::allowedValue(find("pages", "trust-web-server")), "yes or no");
    EXPECT_EQ(config::allowedValue(find("backup", "good-states")),
              "digits from 0 to 9, each once, with commas between them");
    EXPECT_EQ(config::allowedValue(find("backup", "words")),
              "digits, each once, and a word for each: 1: done, 2: failed");
}

} // namespace
