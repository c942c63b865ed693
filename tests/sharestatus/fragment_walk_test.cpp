// SPDX-License-Identifier: MIT
#include "sharestatus/fragment_walk.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

Names walk(std::string line)
{
    sharestatus::FragmentWalk names(line.data());
    Names found;
    while (const char* name = names.next()) {
        found.emplace_back(name);
    }
    return found;
}

TEST(FragmentWalk, namesNeedNoSeparatorsBesidesTheirQuotes)
{
    EXPECT_EQ(walk("return [\"Music\"\"Photos\"\"a\"];"), (Names{"Music", "Photos", "a"}));
}

TEST(FragmentWalk, emptyListHoldsNoNames)
{
    EXPECT_EQ(walk("return [];\n"), Names{});
    EXPECT_EQ(walk("return [\"\"];"), Names{});
    EXPECT_EQ(walk("["), Names{});
    EXPECT_EQ(walk(""), Names{});
}

TEST(FragmentWalk, textWithoutABracketHoldsNoNames)
{
    EXPECT_EQ(walk("return \"Music\";"), Names{});
}

TEST(FragmentWalk, textWithoutABracketIsNotChanged)
{
    std::string line = "return,\"Music\"];";
    EXPECT_EQ(sharestatus::FragmentWalk(line.data()).next(), nullptr);
    EXPECT_EQ(line, "return,\"Music\"];");
}

TEST(FragmentWalk, textBeforeTheFirstBracketIsNotWalked)
{
    EXPECT_EQ(walk("return,\"x\" [\"Music\"[\"y\"];"), (Names{"Music", "y"}));
}

TEST(FragmentWalk, blanksAndSignsInsideANameAreKept)
{
    EXPECT_EQ(walk("[\"Family Videos\"\"a-b (c)\"];"), (Names{"Family Videos", "a-b (c)"}));
}

TEST(FragmentWalk, leadingCharactersThatStartNoNameAreSkipped)
{
    EXPECT_EQ(walk("[\"-dash\"\"  blank\"\".hidden\"\"---\"];"),
              (Names{"dash", "blank", "hidden"}));
}

TEST(FragmentWalk, underscoreDigitsAndLettersStartAName)
{
    EXPECT_EQ(walk("[\"_x\"\"9y\"\"Zz\"\"az\"];"), (Names{"_x", "9y", "Zz", "az"}));
}

TEST(FragmentWalk, everyFirstByteIsJudgedByTheSameRule)
{
    for (int first = 1; first < 256; ++first) {
        for (const int second : {0x7F, 0x80, 0xBF, 0xC0}) {
            const char begin = static_cast<char>(first);
            if (begin == ',' || begin == '"' || begin == ']') {
                continue;
            }
            const bool isWord = (first < 0x80) && (std::isalnum(first) != 0 || first == '_');
            const bool isTwoByte =
                first >= 0xC3 && first <= 0xDF && second >= 0x80 && second <= 0xBF;
            const std::string name = {begin, static_cast<char>(second), '-'};
            EXPECT_EQ(walk("[\"" + name + "\"];"), (isWord || isTwoByte) ? Names{name} : Names{})
                << first << " " << second;
        }
    }
}

TEST(FragmentWalk, noBreakSpaceStartsNoName)
{
    EXPECT_EQ(walk("[\"\xC2\xA0nbsp\"];"), Names{"nbsp"});
}

TEST(FragmentWalk, accentedLetterStartsAName)
{
    EXPECT_EQ(walk("[\"\xC3\x89"
                   "conomies\"];"),
              Names{"\xC3\x89"
                    "conomies"});
}

TEST(FragmentWalk, leadByteAtTheEndOfTheLineStartsNoName)
{
    EXPECT_EQ(walk("[\xC3"), Names{});
}

TEST(FragmentWalk, restOfALongNameIsWalkedFromTheSixtySeventhCharacter)
{
    const std::string head(64, 'h');
    EXPECT_EQ(walk("[\"" + head + "12" + "tail\"];"), (Names{head + "12tail", "tail"}));
    EXPECT_EQ(walk("[\"" + head + "\"\"next\"];"), (Names{head, "next"}));
    EXPECT_EQ(walk("[\"" + head + "1\"\"next\"];"), (Names{head + "1", "next"}));
    EXPECT_EQ(walk("[\"" + head + "12\"\"next\"];"), (Names{head + "12", "next"}));
}

TEST(FragmentWalk, restOfAVeryLongNameIsCutAgain)
{
    const std::string name(64 + 2 + 64 + 2 + 3, 'n');
    EXPECT_EQ(walk("[\"" + name + "\"];"), (Names{name, name.substr(66), name.substr(132)}));
}

TEST(FragmentWalk, characterAfterASingleSeparatorIsSkipped)
{
    EXPECT_EQ(walk("[one,two,three]"), (Names{"one", "wo", "hree"}));
    EXPECT_EQ(walk("[\"one\",\"two\"]"), (Names{"one", "two"}));
}

TEST(FragmentWalk, bracketEndsANameAndTextAfterItIsWalked)
{
    EXPECT_EQ(walk("[\"a]b\"];tail"), (Names{"a", "tail"}));
    EXPECT_EQ(walk("[\"a]-b\"];\n"), (Names{"a", "b"}));
}

TEST(FragmentWalk, newlineBelongsToAnUnendedName)
{
    EXPECT_EQ(walk("[\"open\n"), Names{"open\n"});
}

} // namespace
