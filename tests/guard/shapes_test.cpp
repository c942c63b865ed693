// SPDX-License-Identifier: MIT
#include "guard/shapes.h"

#include <gtest/gtest.h>
#include <map>

#include "guard/values.h"

namespace {

std::string replaceAll(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// A place of a shape.
struct Place {
    std::string text; ///< with its braces
    char sign;
    std::string name;
};

std::vector<Place> placesOf(std::string_view words)
{
    std::vector<Place> places;
    for (std::size_t at = 0; (at = words.find('{', at)) != std::string_view::npos; ++at) {
        const std::string text(words.substr(at, words.find('}', at) - at + 1));
        places.push_back({text, text[1], text.substr(2, text.size() - 3)});
    }
    return places;
}

const std::map<char, std::string> kPlain = {
    {'"', "Tom & Jerry films"}, {'\'', "pa$$ \"w`ord\\"},   {'#', "4711"},
    {'_', "tovGet_1"},          {'=', "my nas-2 12:3.4/5"}, {'/', "/tmp/a /tmp/b"}};

/// A shape's line with plain values, and another text in one place.
std::string fill(const guard::Shape& shape, const Place* other = nullptr,
                 const std::string& value = "")
{
    std::string line(shape.words);
    if (other != nullptr) {
        line.replace(line.find(other->text), other->text.size(), value);
    }
    for (const Place& place : placesOf(shape.words)) {
        line = replaceAll(line, place.text, kPlain.at(place.sign));
    }
    return line;
}

bool isKnown(const std::string& line)
{
    return guard::judge(line).isKnown;
}

TEST(Shapes, everyShapeIsKnownWithPlainValues)
{
    for (const guard::Shape& shape : guard::shapes()) {
        const guard::Verdict verdict = guard::judge(fill(shape));
        EXPECT_TRUE(verdict.isKnown) << shape.words;
        EXPECT_EQ(verdict.operation, shape.operation) << shape.words;
    }
}

TEST(Shapes, aLineThatIsCutIsNotKnown)
{
    for (const guard::Shape& shape : guard::shapes()) {
        const std::string line = fill(shape);
        // If a value is last, a part of it is a value, too.
        const std::size_t last =
            shape.words.ends_with('}') ? kPlain.at(placesOf(shape.words).back().sign).size() : 0;
        for (std::size_t size = 0; size < line.size() - last; ++size) {
            EXPECT_FALSE(isKnown(line.substr(0, size))) << line.substr(0, size);
        }
    }
}

TEST(Shapes, aLineWithMoreThanItsShapeIsNotKnown)
{
    for (const guard::Shape& shape : guard::shapes()) {
        const std::string line = fill(shape);
        for (const char* more :
             {";",  "\n", "&",  "|cat", ">/tmp/x", " >/tmp/x", "#", " #", "\"", "'", "`x`",
              "$x", "\\", "<x", "*",    "~",       "(",        ")", "{",  "!",  "?", "["}) {
            EXPECT_FALSE(isKnown(line + more)) << line << more;
            EXPECT_FALSE(isKnown(more + line)) << more << line;
        }
        const bool endsInWords = shape.words.ends_with("{=time}");
        EXPECT_EQ(isKnown(line + " x"), endsInWords) << line;
    }
}

TEST(Shapes, aLineWithAnotherWordIsNotKnown)
{
    for (const guard::Shape& shape : guard::shapes()) {
        const std::string line = fill(shape);
        const std::size_t end = shape.words.find('{');
        for (std::size_t i = 0; i < std::min(end, line.size()); ++i) {
            std::string changed = line;
            changed[i] = (changed[i] == ';') ? ':' : ';';
            EXPECT_FALSE(isKnown(changed)) << changed;
        }
    }
}

/// The characters that each kind of place may hold.
bool mayHold(char sign, char c)
{
    const bool isDigit = c >= '0' && c <= '9';
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    switch (sign) {
    case '"':
        return std::string_view("\"$`\\\n").find(c) == std::string_view::npos;
    case '\'':
        return c != '\'' && c != '\n';
    case '#':
        return isDigit;
    case '_':
        return isDigit || isLetter || c == '_';
    default:
        return isDigit || isLetter || static_cast<unsigned char>(c) >= 0x80 ||
               std::string_view(" .,_-+@%=:/").find(c) != std::string_view::npos;
    }
}

TEST(Shapes, eachByteIsAllowedWhereAShellDoesNotInterpretIt)
{
    for (const guard::Shape& shape : guard::shapes()) {
        for (const Place& place : placesOf(shape.words)) {
            const std::string plain = kPlain.at(place.sign);
            for (int byte = 1; byte < 256; ++byte) {
                const char c = static_cast<char>(byte);
                const std::string line = fill(shape, &place, plain + c + plain);
                // After a function's name a blank begins the value.
                const bool isTwoPlaces =
                    c == ' ' && place.sign == '_' &&
                    shape.words.find("{_function} {=value}") != std::string_view::npos;
                EXPECT_EQ(isKnown(line), mayHold(place.sign, c) || isTwoPlaces)
                    << shape.words << " " << byte;
            }
        }
    }
}

/// The operation of the first shape that is equal up to a place.
std::string_view firstLike(const guard::Shape& shape, const Place& place)
{
    const std::string_view start = shape.words.substr(0, shape.words.find(place.text));
    return std::ranges::find_if(guard::shapes(),
                                [&](const guard::Shape& each) {
                                    return each.words.starts_with(std::string(start) + place.text);
                                })
        ->operation;
}

TEST(Shapes, aRefusalNamesTheOperationAndThePlace)
{
    for (const guard::Shape& shape : guard::shapes()) {
        for (const Place& place : placesOf(shape.words)) {
            const guard::Verdict verdict = guard::judge(fill(shape, &place, "a'`x`\"$(x)\n"));
            EXPECT_FALSE(verdict.isKnown);
            EXPECT_EQ(verdict.place, place.name) << shape.words;
            EXPECT_EQ(verdict.operation, firstLike(shape, place)) << shape.words;
        }
    }
}

TEST(Shapes, aLineUnlikeAllShapesIsAnUnknownOperation)
{
    for (const char* line : {"", "reboot", "#", "\n", ";", "Sudo"}) {
        const guard::Verdict verdict = guard::judge(line);
        EXPECT_FALSE(verdict.isKnown) << line;
        EXPECT_EQ(verdict.operation, "an unknown one") << line;
        EXPECT_EQ(verdict.place, "its words") << line;
    }
    EXPECT_EQ(guard::judge("du -sm").operation, "measuring a share");
    EXPECT_EQ(guard::judge("du -sm").place, "its words");
}

TEST(Shapes, emptyValuesOptionsAndOtherThanPathsAreRefused)
{
    EXPECT_TRUE(isKnown("du -sk \"/share/\" > /tmp/pelsts1.tmp"));
    EXPECT_TRUE(isKnown("sudo /usr/bin/php /etc/inc/api_user.php tovAddUser '' ''"));
    const std::string system = "sudo /usr/bin/php /etc/inc/api_system.php ";
    EXPECT_TRUE(isKnown(system + "tovSet a > /tmp/setSysVar1"));
    EXPECT_TRUE(isKnown(system + "tovSet a  b  > /tmp/setSysVar1"));
    EXPECT_TRUE(isKnown(system + "tovSet a -b > /tmp/setSysVar1"));
    EXPECT_TRUE(isKnown(system + "tovSet  > /tmp/setSysVar1"));
    EXPECT_FALSE(isKnown(system + "tovSet -b > /tmp/setSysVar1"));
    EXPECT_FALSE(isKnown(system + "tovSet 2> /tmp/setSysVar1"));
    EXPECT_FALSE(isKnown(system + "tovSet a > /tmp/setSysVar"));
    EXPECT_FALSE(isKnown(system + "tovSet a > /tmp/setSysVar1 "));
    EXPECT_FALSE(isKnown(system + " a > /tmp/setSysVar1"));
    EXPECT_TRUE(isKnown(system + "tovGet /tmp/getSysVar1"));
    EXPECT_FALSE(isKnown(system + "tovGet x /tmp/getSysVar1"));
    EXPECT_TRUE(isKnown("sudo rm -f /a /b"));
    EXPECT_FALSE(isKnown("sudo rm -f "));
    EXPECT_FALSE(isKnown("sudo rm -f a"));
    EXPECT_FALSE(isKnown("sudo rm -f -r /"));
    EXPECT_FALSE(isKnown("sudo rm -f /a -r"));
    EXPECT_FALSE(isKnown("sudo rm -f /a b"));
}

TEST(Shapes, aNameIsMeasurableIfItsLineIsKnown)
{
    for (int byte = 1; byte < 256; ++byte) {
        const std::string name = "a" + std::string(1, static_cast<char>(byte));
        EXPECT_EQ(guard::isMeasurable(name),
                  isKnown("du -sk \"/share/" + name + "\" > /tmp/pelsts1.tmp"))
            << byte;
    }
    EXPECT_TRUE(guard::isMeasurable(""));
}

} // namespace
