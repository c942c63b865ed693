// SPDX-License-Identifier: MIT
#include "text/catalogue.h"

#include <array>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

#include "tests/support/catalogue.h"

namespace {

using catalogue::compiled;
using catalogue::Entries;
using text::Catalogue;

std::string description(const std::string& rule)
{
    return "Language: de\nPlural-Forms: " + rule + "\nMIME-Version: 1.0\n";
}

Entries german()
{
    using namespace std::string_literals;
    return {{"", description("nplurals=2; plural=(n != 1);")},
            {"Shares", "Freigaben"},
            {"month\4May", "Mai"},
            {"untranslated", ""},
            {"{} share\0{} shares"s, "{} Freigabe\0{} Freigaben"s}};
}

std::optional<Catalogue> read(const std::string& content)
{
    std::ofstream("catalogue.mo", std::ios::binary) << content;
    return Catalogue::read("catalogue.mo");
}

std::string found(const char* translation)
{
    return (translation != nullptr) ? translation : "(none)";
}

TEST(Catalogue, findsWhatItHas)
{
    const std::optional<Catalogue> catalogue = read(compiled(german()));
    ASSERT_TRUE(catalogue);
    EXPECT_EQ(found(catalogue->find("Shares")), "Freigaben");
    EXPECT_EQ(found(catalogue->find("month\4May")), "Mai");
    for (const char* other : {"May", "Share", "Sharess", "untranslated", "A", "zzz"}) {
        EXPECT_EQ(found(catalogue->find(other)), "(none)") << other;
    }
}

TEST(Catalogue, takesThePluralFormOfTheLanguage)
{
    struct Case {
        const char* rule;
        std::array<const char*, 4> forms; ///< of 0, 1, 2 and 1,000,000
    };
    constexpr auto kCases = std::to_array<Case>({
        {"nplurals=2; plural=(n != 1);", {"many", "one", "many", "many"}},
        {"nplurals=2; plural=(n > 1);", {"one", "one", "many", "many"}},
        {"nplurals=1; plural=0;", {"one", "one", "one", "one"}},
    });
    for (const Case& each : kCases) {
        using namespace std::string_literals;
        const std::optional<Catalogue> catalogue =
            read(compiled({{"", description(each.rule)}, {"a\0b"s, "one\0many"s}}));
        ASSERT_TRUE(catalogue) << each.rule;
        EXPECT_EQ(found(catalogue->find("a", 0)), each.forms[0]) << each.rule;
        EXPECT_EQ(found(catalogue->find("a", 1)), each.forms[1]) << each.rule;
        EXPECT_EQ(found(catalogue->find("a", 2)), each.forms[2]) << each.rule;
        EXPECT_EQ(found(catalogue->find("a", 1000000)), each.forms[3]) << each.rule;
        EXPECT_EQ(found(catalogue->find("b", 1)), "(none)") << each.rule;
    }
}

TEST(Catalogue, hasNoFormThatTheFileLacks)
{
    const std::optional<Catalogue> catalogue =
        read(compiled({{"", description("nplurals=2; plural=(n != 1);")}, {"a", "one"}}));
    ASSERT_TRUE(catalogue);
    EXPECT_EQ(found(catalogue->find("a", 1)), "one");
    EXPECT_EQ(found(catalogue->find("a", 2)), "(none)");
}

TEST(Catalogue, isNoneWithoutAFileOrARule)
{
    EXPECT_FALSE(Catalogue::read("missing.mo"));
    EXPECT_FALSE(Catalogue::read("/"));
    EXPECT_FALSE(read(""));
    EXPECT_FALSE(read(compiled({})));
    EXPECT_FALSE(read(compiled({{"Shares", "Freigaben"}})));
    EXPECT_FALSE(read(compiled({{"", "Language: de\n"}})));
    EXPECT_FALSE(read(compiled({{"", description("nplurals=3; plural=(n%10);")}})));
    std::string otherMark = compiled(german());
    otherMark[0] = 'x';
    EXPECT_FALSE(read(otherMark));
}

/// How many bytes a file gives for two of the sentences; nothing if it is no catalogue.
std::size_t sizeFoundIn(const std::string& content)
{
    const std::optional<Catalogue> catalogue = read(content);
    return catalogue ? found(catalogue->find("Shares")).size() +
                           found(catalogue->find("{} share", 2)).size()
                     : 0;
}

TEST(Catalogue, ofAnyLengthOrWithAnyByteChangedIsReadWithinItsBounds)
{
    const std::string whole = compiled(german());
    EXPECT_EQ(sizeFoundIn(whole), 21U);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_LE(sizeFoundIn(whole.substr(0, size)), whole.size()) << size;
    }
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string changed = whole;
        changed[at] = static_cast<char>(changed[at] ^ 0x7F);
        EXPECT_LE(sizeFoundIn(changed), whole.size()) << at;
    }
}

} // namespace
