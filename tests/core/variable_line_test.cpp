// SPDX-License-Identifier: MIT
#include "core/variable_line.h"

#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using core::valueOf;

TEST(VariableLine, valueIsAfterTheEqualsSign)
{
    EXPECT_EQ(valueOf("name=5\n", "name"), "5");
    EXPECT_EQ(valueOf("name = 5\n", "name"), "5");
    EXPECT_EQ(valueOf("name \t=\t 5 and more \n", "name"), "5 and more ");
    EXPECT_EQ(valueOf("name=\n", "name"), "");
    EXPECT_EQ(valueOf("name=", "name"), "");
    EXPECT_EQ(valueOf("name=a=b\n", "name"), "a=b");
}

TEST(VariableLine, carriageReturnEndsTheValue)
{
    EXPECT_EQ(valueOf("name=5\r\n", "name"), "5");
    EXPECT_EQ(valueOf("name=a\rb\n", "name"), "a");
}

TEST(VariableLine, otherNamesDoNotMatch)
{
    for (const char* line : {"names=5\n", "name", "name 5\n", " name=5\n", "name word=5\n",
                             "nam=5\n", "Name=5\n", "", "\n"}) {
        EXPECT_FALSE(valueOf(line, "name")) << line;
    }
}

TEST(VariableLine, nameIsLiteral)
{
    EXPECT_EQ(valueOf("a.b*[c]=1\n", "a.b*[c]"), "1");
    EXPECT_FALSE(valueOf("axb=1\n", "a.b"));
}

class VariableFile : public root::Test {
  protected:
    struct Piece {
        std::string bytes;
        bool isLine;
        bool operator==(const Piece&) const = default;
    };

    static std::vector<Piece> pieces(const std::string& content)
    {
        root::writeFile("/tmp/file", content);
        const core::File file = core::openFile("/tmp/file", "r");
        core::VariableFileReader reader(file.get());
        std::vector<Piece> found;
        while (reader.next()) {
            found.push_back({std::string(reader.piece()), reader.line().has_value()});
        }
        return found;
    }
};

TEST_F(VariableFile, linesAreReadOneByOne)
{
    EXPECT_EQ(pieces("a=1\n\nb=2"),
              (std::vector<Piece>{{"a=1\n", true}, {"\n", true}, {"b=2", true}}));
    EXPECT_EQ(pieces(""), std::vector<Piece>{});
}

TEST_F(VariableFile, piecesOfALongLineAreNoLines)
{
    const std::string part(511, 'x');
    EXPECT_EQ(pieces(part + part + "tail=1\nnext=2\n"),
              (std::vector<Piece>{
                  {part, false}, {part, false}, {"tail=1\n", false}, {"next=2\n", true}}));
    EXPECT_EQ(pieces(part + "\nnext=2\n"),
              (std::vector<Piece>{{part, false}, {"\n", false}, {"next=2\n", true}}));
}

TEST_F(VariableFile, longestLineFillsTheBuffer)
{
    const std::string line = std::string(510, 'x') + "\n";
    EXPECT_EQ(pieces(line + "next\n"), (std::vector<Piece>{{line, true}, {"next\n", true}}));
    const std::string last(511, 'x');
    EXPECT_EQ(pieces(last), (std::vector<Piece>{{last, true}}));
    EXPECT_EQ(pieces(last + "y"), (std::vector<Piece>{{last, false}, {"y", false}}));
}

TEST_F(VariableFile, zeroByteEndsTheLineButNotThePiece)
{
    root::writeFile("/tmp/file", std::string("a=1\0b\n", 6));
    const core::File file = core::openFile("/tmp/file", "r");
    core::VariableFileReader reader(file.get());
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.piece(), std::string("a=1\0b\n", 6));
    EXPECT_EQ(reader.line(), "a=1");
    EXPECT_FALSE(reader.endsWithinLine());
}

TEST_F(VariableFile, endWithinALineIsRecognised)
{
    for (const auto& [content, isWithin] :
         {std::pair{"", false}, std::pair{"a\n", false}, std::pair{"a", true}}) {
        root::writeFile("/tmp/file", content);
        const core::File file = core::openFile("/tmp/file", "r");
        core::VariableFileReader reader(file.get());
        bool endsWithinLine = false;
        while (reader.next()) {
            endsWithinLine = reader.endsWithinLine();
        }
        EXPECT_EQ(endsWithinLine, isWithin) << content;
    }
}

} // namespace
