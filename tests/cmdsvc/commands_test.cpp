// SPDX-License-Identifier: MIT
//
// Compares the commands' rows with docs/protocol.md, whose table is written by hand.
#include "cmdsvc/commands.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>

#include "tests/support/root.h"

namespace {

using cmdsvc::AnswerShape;
using cmdsvc::Command;
using cmdsvc::Layout;
using cmdsvc::Parameter;
using cmdsvc::RefusalShape;
using cmdsvc::Status;
using Strings = std::vector<std::string>;

/// The build folder's copy of a text from the source tree.
std::string readText(const std::string& name)
{
    const std::string text = root::readFile("/build/texts/" + name);
    EXPECT_NE(text, "") << name;
    return text;
}

/// The pattern's group in each match; "^" is the start of a line.
Strings findAll(const std::string& text, const std::string& pattern)
{
    const std::regex expression(pattern, std::regex::ECMAScript | std::regex::multiline);
    Strings found;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match) {
        found.push_back(match->str(1));
    }
    return found;
}

// ---- A row as the protocol's page has it ------------------------------------------------------

std::string hex(Status status)
{
    std::string text(10, '\0');
    std::snprintf(text.data(), text.size() + 1, "0x%08X", cmdsvc::wordOf(status));
    return text;
}

std::string rightOf(const Command& row)
{
    return (row.right == cmdsvc::Right::kView) ? "view" : "full";
}

std::string countOf(const Command& row)
{
    if (!row.count.isChecked) {
        return "any";
    }
    const std::string least = std::to_string(row.count.least);
    return (row.count.least == row.count.most) ? least
                                               : least + " or " + std::to_string(row.count.most);
}

std::string layoutOf(const Parameter& parameter)
{
    switch (parameter.layout) {
    case Layout::kLine:
        return (parameter.room == cmdsvc::kLineRoom)
                   ? "line"
                   : "line of " + std::to_string(parameter.room - 1);
    case Layout::kNumber:
        return "word";
    case Layout::kNumberLine:
        return "word as a line";
    case Layout::kByte:
        return "byte";
    case Layout::kText:
        return "text";
    case Layout::kRest:
        return "rest";
    case Layout::kInFirstLine:
        break;
    }
    return "in the first line from " + std::to_string(parameter.offset) + " (" +
           std::to_string(parameter.restOffset) + ")";
}

std::string limitOf(const Parameter& parameter)
{
    if (parameter.limit.longest == 0) {
        return "";
    }
    return ", at most " + std::to_string(parameter.limit.longest) + " or " +
           hex(parameter.limit.code);
}

std::string parametersOf(const Command& row)
{
    std::string text;
    for (const Parameter& parameter : row.parameters) {
        text += (text.empty() ? "" : "; ") + std::string(parameter.name) + ": " +
                layoutOf(parameter) + limitOf(parameter);
    }
    return text;
}

std::string goodAnswerOf(const Command& row)
{
    const std::string tag(row.answer.tag);
    switch (row.answer.shape) {
    case AnswerShape::kNone:
        return "nothing";
    case AnswerShape::kWord:
        return "word " + hex(row.answer.code);
    case AnswerShape::kStatus:
        return "status " + hex(row.answer.code);
    case AnswerShape::kHeader:
        return "header `" + tag + "`";
    case AnswerShape::kBytes:
        break;
    }
    return "bytes after `" + tag + "`";
}

std::string shapeOf(RefusalShape shape)
{
    switch (shape) {
    case RefusalShape::kAsWord:
        return "word";
    case RefusalShape::kAsError:
        return "error";
    case RefusalShape::kAsStatus:
        return "status";
    case RefusalShape::kNeverRefuses:
        break;
    }
    return "never";
}

std::string refusalOf(const Command& row)
{
    const cmdsvc::Refusals& refusals = row.refusals;
    std::string text = shapeOf(refusals.shape);
    if (refusals.malformed != cmdsvc::kGood) {
        text += "; malformed " + hex(refusals.malformed);
    }
    if (refusals.malformedShape != refusals.shape) {
        text += " as a " + shapeOf(refusals.malformedShape);
    }
    return text;
}

std::string tableRow(const Command& row)
{
    const Strings cells = {
        rightOf(row),      countOf(row),      row.count.isChecked ? hex(row.wrongCountCode) : "",
        parametersOf(row), goodAnswerOf(row), refusalOf(row)};
    std::string text = "| `" + std::string(row.code) + "` |";
    for (const std::string& cell : cells) {
        text += (cell.empty() ? "" : " " + cell) + " |";
    }
    return text;
}

// ---- Tests ------------------------------------------------------------------------------------

/// The codes of the commands for which this is true.
Strings codesIf(bool (*isWanted)(const Command& row))
{
    Strings codes;
    for (const Command& row : cmdsvc::kCommands) {
        if (isWanted(row)) {
            codes.emplace_back(row.code);
        }
    }
    return codes;
}

bool isAny(const Command& /*row*/)
{
    return true;
}

TEST(Commands, protocolsTableHasEveryRow)
{
    Strings expected;
    for (const Command& row : cmdsvc::kCommands) {
        expected.push_back(tableRow(row));
    }
    EXPECT_EQ(findAll(readText("protocol.md"), "^(\\| `[^\n]*)$"), expected);
}

TEST(Commands, whoMayOnlyLookMaySendTheseAndNoOthers)
{
    EXPECT_EQ(codesIf([](const Command& row) { return row.right == cmdsvc::Right::kView; }),
              (Strings{"dscr", "frst", "getv", "gps1", "gpsn", "grst", "gsp1", "gspc", "gub1",
                       "gubs", "ipcf", "lsts", "lstu", "qlps", "rtov", "vers", "wags"}));
    EXPECT_EQ(codesIf([](const Command& row) { return row.right == cmdsvc::Right::kFull; }),
              (Strings{"crat", "gpvt", "host", "pshr", "sgss", "shar", "spvt", "sub1", "subs",
                       "wall", "warp", "wasu"}));
}

TEST(Commands, rightThatNobodyHasDeclaredIsTheFullOne)
{
    EXPECT_EQ(cmdsvc::Right{}, cmdsvc::Right::kFull);
}

TEST(Commands, protocolDescribesEachCommandOnce)
{
    Strings described;
    for (const std::string& heading : findAll(readText("protocol.md"), "^### ([a-z0-9, ]+):")) {
        std::ranges::copy(findAll(heading, "(\\w+)"), std::back_inserter(described));
    }
    std::ranges::sort(described);
    EXPECT_EQ(described, codesIf(isAny));
}

TEST(Commands, protocolHasAnExampleInEachDescription)
{
    const std::string page = readText("protocol.md");
    EXPECT_EQ(findAll(page, "^<!-- example (\\w+)"), findAll(page, "^### (\\w{4})[a-z0-9, ]*:"));
}

} // namespace
