// SPDX-License-Identifier: MIT
#include "client/answer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

#include "tests/support/root.h"

namespace {

using client::Answer;
using client::describeAnswer;
using client::readAnswer;
using client::readLines;
using client::Verdict;
using cmdsvc::Command;
using cmdsvc::command;
using cmdsvc::Status;
using root::le32;
using Lines = std::vector<std::string>;

const std::string kZero(1, '\0');

std::string error(std::uint32_t code)
{
    return "erro " + le32(code);
}

std::string status(const std::string& name, std::uint32_t code)
{
    return name + " " + le32(code) + kZero;
}

/// An answer as one text, so that a test sees all of it.
std::string read(const Command& row, const std::string& bytes)
{
    const Answer answer = readAnswer(row, bytes);
    const std::string code = std::to_string(cmdsvc::wordOf(answer.status));
    switch (answer.verdict) {
    case Verdict::kGood:
        return "good " + code + " " + std::to_string(answer.count) + " " + answer.body;
    case Verdict::kRefused:
        return "refused " + code;
    case Verdict::kNotServed:
        return "not served " + code;
    case Verdict::kEmpty:
        return "empty";
    case Verdict::kUnreadable:
        break;
    }
    return "unreadable";
}

// ---- Good answers -----------------------------------------------------------------------------

TEST(Answer, wordIsGoodOrARefusal)
{
    EXPECT_EQ(read(command("crat"), le32(0)), "good 0 0 ");
    EXPECT_EQ(read(command("crat"), le32(0x10000001)), "refused 268435457");
    // What looks like text is a status code all the same.
    EXPECT_EQ(read(command("crat"), "crat"), "refused 1952543331");
    EXPECT_EQ(read(command("crat"), "erro"), "refused 1869771365");
    EXPECT_EQ(read(command("crat"), "serv"), "refused 1987208563");
    EXPECT_EQ(read(command("crat"), "a\nb\n"), "refused 174197345");
}

TEST(Answer, goodWordIsTheRows)
{
    EXPECT_EQ(read(command("grst"), le32(0xD0000001)), "good 3489660929 0 ");
    EXPECT_EQ(read(command("grst"), le32(0xFF000004)), "refused 4278190084");
    EXPECT_EQ(read(command("grst"), le32(0)), "refused 0");
}

TEST(Answer, headerHasItsTagItsCountAndItsBody)
{
    EXPECT_EQ(read(command("lstu"), "lsut " + le32(2) + "\nanna\nbob\n"), "good 0 2 anna\nbob\n");
    EXPECT_EQ(read(command("lstu"), "lsut " + le32(0) + "\n"), "good 0 0 ");
    // A count may hold a newline.
    EXPECT_EQ(read(command("lstu"), "lsut " + le32(10) + "\nanna\n"), "good 0 10 anna\n");
    for (const std::string& bytes :
         {"lsst " + le32(0) + "\n", "lstu " + le32(0) + "\n", "lsut_" + le32(0) + "\n",
          "lsut " + le32(0) + kZero, "lsut " + le32(0), std::string("lsut"),
          std::string("lsut ")}) {
        EXPECT_EQ(read(command("lstu"), bytes), "unreadable") << bytes;
    }
}

TEST(Answer, bytesFollowTheirTagWhateverTheyAre)
{
    EXPECT_EQ(read(command("gpsn"), "gpsn "), "good 0 0 ");
    EXPECT_EQ(read(command("wags"), "wags user\n\1\n"), "good 0 0 user\n\1\n");
    EXPECT_EQ(read(command("gub1"), "gubr " + le32(1) + "\nrecord\n"),
              "good 0 0 " + le32(1) + "\nrecord\n");
    EXPECT_EQ(read(command("getv"), "getv " + le32(1) + "\nhttps://up\n"),
              "good 0 0 " + le32(1) + "\nhttps://up\n");
    // This is no status: only commands that refuse with one have any.
    EXPECT_EQ(read(command("wall"), status("wall", 1)), "good 0 0 " + le32(1) + kZero);
    for (const char* bytes : {"gpsn", "gpsr ", "GPSN ", "x"}) {
        EXPECT_EQ(read(command("gpsn"), bytes), "unreadable") << bytes;
    }
}

TEST(Answer, headersBodyMayBeAnyBytes)
{
    const std::string file = le32(14) + "\nline\n" + error(0xFF000006);
    EXPECT_EQ(read(command("gpvt"), "gprt " + le32(2) + "\n" + file), "good 0 2 " + file);
}

TEST(Answer, statusIsGoodOrARefusal)
{
    EXPECT_EQ(read(command("subs"), status("subs", 0)), "good 0 0 ");
    EXPECT_EQ(read(command("subs"), status("subs", 0xC2000003)), "refused 3254779907");
    EXPECT_EQ(read(command("subs"), status("sub1", 0)), "unreadable");
    EXPECT_EQ(read(command("subs"), "subs " + le32(0) + "\n"), "unreadable");
    EXPECT_EQ(read(command("subs"), "subs " + le32(0)), "unreadable");
    EXPECT_EQ(read(command("subs"), le32(0)), "unreadable");
}

TEST(Answer, firstOfTwoStatusesCounts)
{
    const std::string good = status("subs", 0);
    EXPECT_EQ(read(command("subs"), status("subs", 0xC2000002) + good), "refused 3254779906");
    EXPECT_EQ(read(command("subs"), good + good), "good 0 0 ");
    EXPECT_EQ(read(command("subs"), good + good + good), "unreadable");
    EXPECT_EQ(read(command("subs"), good + status("sub1", 0)), "unreadable");
    EXPECT_EQ(read(command("subs"), good + "subs " + le32(0) + "\n"), "unreadable");
}

TEST(Answer, nothingIsGoodFromACommandThatAnswersNothing)
{
    for (const Command* row :
         {&command("dscr"), &command("gubs"), &command("ipcf"), &command("rtov")}) {
        EXPECT_EQ(read(*row, ""), "good 0 0 ");
        EXPECT_EQ(read(*row, "x"), "unreadable");
    }
    EXPECT_EQ(read(command("rtov"), le32(0xFF000003)), "refused 4278190083");
    EXPECT_EQ(read(command("gubs"), le32(0xFF000003)), "unreadable");
    for (const Command* row :
         {&command("crat"), &command("lstu"), &command("gpsn"), &command("subs")}) {
        EXPECT_EQ(read(*row, ""), "empty");
    }
}

// ---- Refusals ---------------------------------------------------------------------------------

TEST(Answer, refusalHasTheRowsShape)
{
    EXPECT_EQ(read(command("lsts"), error(0xFF000004)), "refused 4278190084");
    EXPECT_EQ(read(command("wall"), error(1)), "refused 1");
    EXPECT_EQ(read(command("gspc"), status("gspc", 0xF0000001)), "refused 4026531841");
    EXPECT_EQ(read(command("crat"), error(0x10000001)), "unreadable");
    EXPECT_EQ(read(command("crat"), status("crat", 0x10000001)), "unreadable");
    EXPECT_EQ(read(command("lsts"), le32(0xFF000004)), "unreadable");
    EXPECT_EQ(read(command("lsts"), status("lsts", 0xFF000004)), "unreadable");
    EXPECT_EQ(read(command("gpsn"), error(1)), "unreadable");
    EXPECT_EQ(read(command("lsts"), error(0xFF000004) + "x"), "unreadable");
    EXPECT_EQ(read(command("lsts"), "erro "), "unreadable");
}

TEST(Answer, wrongCountIsAWordInEveryCommandThatChecksIt)
{
    EXPECT_EQ(read(command("lsts"), le32(0xFF000003)), "refused 4278190083");
    EXPECT_EQ(read(command("wags"), le32(0xFF000003)), "refused 4278190083");
    EXPECT_EQ(read(command("gps1"), le32(0xC1000001)), "refused 3238002689");
    EXPECT_EQ(read(command("gps1"), le32(0xFF000003)), "unreadable");
    EXPECT_EQ(read(command("gpsn"), le32(0xFF000003)), "unreadable");
    EXPECT_EQ(read(command("gpsn"), le32(0)), "unreadable");
}

TEST(Answer, badShareNameIsAWordAndTheRestAreErrors)
{
    EXPECT_EQ(read(command("gsp1"), le32(0xC1000003)), "refused 3238002691");
    EXPECT_EQ(read(command("gsp1"), le32(0xC1000001)), "refused 3238002689");
    EXPECT_EQ(read(command("gsp1"), error(0xC1000001)), "refused 3238002689");
    EXPECT_EQ(read(command("gsp1"), error(0xFF000004)), "refused 4278190084");
    EXPECT_EQ(read(command("gsp1"), le32(0xFF000004)), "unreadable");
}

TEST(Answer, sharePropertyIsToldFromAStatusByItsNewline)
{
    for (const char* property : {"\1", "\2", "\3"}) {
        EXPECT_EQ(
            read(command("gspc"), std::string("gspc ") + property + "\n" + kZero + kZero + kZero),
            "good 0 0 " + std::string(property) + "\n" + kZero + kZero + kZero);
    }
    EXPECT_EQ(read(command("gspc"), status("gspc", 0xF0000001)), "refused 4026531841");
}

TEST(Answer, serviceMayAnswerInsteadOfAnyCommand)
{
    for (const Command& row : cmdsvc::kCommands) {
        EXPECT_EQ(read(row, status("serv", 0x53000002)), "not served 1392508930") << row.code;
        EXPECT_EQ(read(row, status("serv", 0x53000002) + "x"), "unreadable") << row.code;
    }
    EXPECT_EQ(client::readServiceStatus(status("serv", 0x53000005)), cmdsvc::kNotAdmitted);
    EXPECT_FALSE(client::readServiceStatus(status("subs", 0)));
    EXPECT_FALSE(client::readServiceStatus(""));
}

// ---- Lines ------------------------------------------------------------------------------------

TEST(AnswerLines, haveNoNewlines)
{
    EXPECT_EQ(readLines(command("lstu"), "").lines, Lines{});
    EXPECT_EQ(readLines(command("lstu"), "\n").lines, Lines{""});
    EXPECT_EQ(readLines(command("lstu"), "anna\n\nbob\n").lines, (Lines{"anna", "", "bob"}));
    EXPECT_EQ(readLines(command("lstu"), "anna\nbob").lines, (Lines{"anna", "bob"}));
    EXPECT_FALSE(readLines(command("lstu"), "anna\n\nbob").error);
}

TEST(AnswerLines, errorAfterTheLastNewlineIsNoLine)
{
    for (const std::uint32_t code : {0xFF000006U, 0U, 0xABCDEF01U}) {
        const client::TextLines read = readLines(command("lstu"), "anna\n" + error(code));
        EXPECT_EQ(read.lines, Lines{"anna"});
        EXPECT_EQ(read.error, Status{code});
    }
    const client::TextLines alone = readLines(command("lstu"), error(0xFF000007));
    EXPECT_EQ(alone.lines, Lines{});
    EXPECT_EQ(alone.error, cmdsvc::kCannotOpen);
}

TEST(AnswerLines, lineThatLooksLikeAnErrorIsALine)
{
    for (const char* line : {"erro abcd", "erro abc", "Cerro Sur"}) {
        const client::TextLines read =
            readLines(command("lstu"), std::string("anna\n") + line + "\n");
        EXPECT_EQ(read.lines, (Lines{"anna", line}));
        EXPECT_FALSE(read.error);
    }
    EXPECT_EQ(readLines(command("lstu"), "erro abcd\n" + error(0xFF000006)).error,
              cmdsvc::kCannotRemove);
    // Nothing follows the lines of a command that never refuses.
    EXPECT_EQ(readLines(command("gps1"), error(0xFF000006)).lines, Lines{error(0xFF000006)});
    EXPECT_FALSE(readLines(command("gps1"), error(0xFF000006)).error);
}

// ---- Words ------------------------------------------------------------------------------------

std::string describe(const Command& row, const std::string& bytes)
{
    return describeAnswer(row, readAnswer(row, bytes));
}

TEST(Answer, isDescribedInWords)
{
    EXPECT_EQ(describe(command("lstu"), ""),
              "empty: the command was ignored, is not known, or failed before it answered");
    EXPECT_EQ(describe(command("gubs"), ""), "empty, as always for this command");
    EXPECT_EQ(describe(command("crat"), le32(0)), "status 0x00000000: Good.");
    EXPECT_EQ(describe(command("grst"), le32(0xD0000001)),
              "status 0xD0000001: Good: the number of drives can be read.");
    EXPECT_EQ(describe(command("subs"), status("subs", 0)), "status 0x00000000: Good.");
    EXPECT_EQ(describe(command("lstu"), le32(0xFF000003)),
              "a refusal, 0xFF000003: The command takes another number of parameters.");
    EXPECT_EQ(
        describe(command("crat"), le32(0xFF000003)),
        "a refusal, 0xFF000003: The name or the password has a character that cannot be used, such "
        "as a quote. A name cannot have : , = %, a blank at an end, or - @ + . at its start.");
    EXPECT_EQ(describe(command("lstu"), error(0xABCDEF01)),
              "a refusal, 0xABCDEF01: This client does not know the answer's meaning.");
    EXPECT_EQ(describe(command("lstu"), status("serv", 0x53000005)),
              "a status of the service, 0x53000005: This account may not ask for that. Members of "
              "the group vokcontrol may ask for everything, members of vokcontrol-view only for "
              "what changes nothing; ask root to add you.");
    EXPECT_EQ(describe(command("lstu"), "abc"), "of a shape that this client does not know");
    EXPECT_EQ(client::describeServiceStatus(cmdsvc::kRequestFailed),
              "a status of the service, 0x53000002: The request's process failed before it "
              "answered; see the service's log.");
}

TEST(Answer, bodyIsDescribedByItsLines)
{
    EXPECT_EQ(
        describe(command("lstu"), "lsut " + le32(2) + "\na\x1Bz\n\n" + error(0xFF000006)),
        "\"lsut\" with count 2\n  a\\u{1b}z\n  \nfollowed by an error, 0xFF000006: The appliance's "
        "work file cannot be removed; see whether the disk for its work files is full.");
    EXPECT_EQ(describe(command("wags"), "wags user\n\1\n"), "\"wags\" and\n  user\n  \\u{1}");
    EXPECT_EQ(describe(command("wags"), "wags \n" + error(1)), "\"wags\" and\n  \n  erro \\u{1}"
                                                               "\\u{0}\\u{0}\\u{0}");
    EXPECT_EQ(describe(command("gpsn"), "gpsn "), "\"gpsn\" and nothing more");
}

TEST(Answer, hexdumpShowsNumbersAndCharacters)
{
    EXPECT_EQ(client::hexdump(""), "");
    EXPECT_EQ(client::hexdump("lsut " + le32(1) + "\nan\xFF~\x7F z"),
              "00000000  6c 73 75 74 20 01 00 00 00 0a 61 6e ff 7e 7f 20  |lsut .....an.~. |\n"
              "00000010  7a                                               |z|\n");
}

// ---- Hostile answers --------------------------------------------------------------------------

/// The bytes of a good answer.
std::string encodeGood(const Command& row, const Answer& answer)
{
    const std::string word = le32(cmdsvc::wordOf(answer.status));
    const std::string tag(row.answer.tag);
    switch (row.answer.shape) {
    case cmdsvc::AnswerShape::kNone:
        return "";
    case cmdsvc::AnswerShape::kWord:
        return word;
    case cmdsvc::AnswerShape::kStatus:
        return std::string(row.code) + " " + word + kZero;
    case cmdsvc::AnswerShape::kHeader:
        return tag + " " + le32(answer.count) + "\n" + answer.body;
    case cmdsvc::AnswerShape::kBytes:
        break;
    }
    return tag + answer.body;
}

/// All bytes that can be read as this answer.
Lines encodings(const Command& row, const Answer& answer)
{
    const std::string word = le32(cmdsvc::wordOf(answer.status));
    switch (answer.verdict) {
    case Verdict::kGood:
        return {encodeGood(row, answer)};
    case Verdict::kRefused:
        return {word, "erro " + word, std::string(row.code) + " " + word + kZero};
    case Verdict::kNotServed:
        return {"serv " + word + kZero};
    case Verdict::kEmpty:
        return {""};
    case Verdict::kUnreadable:
        break;
    }
    return {};
}

/// Bytes that are often nearly an answer to the command.
class Hostile {
  public:
    explicit Hostile(const Command& row)
        : pieces_{"erro ",
                  "serv ",
                  std::string(row.code),
                  std::string(row.answer.tag),
                  " ",
                  "\n",
                  kZero,
                  le32(0),
                  le32(cmdsvc::wordOf(row.wrongCountCode)),
                  le32(0xFF000004),
                  le32(2) + "\n",
                  "anna\n"}
    {}

    std::string next()
    {
        std::string bytes;
        for (std::size_t left = random_() % 6; left > 0; --left) {
            const std::size_t piece = random_() % (pieces_.size() + 2);
            bytes += (piece < pieces_.size()) ? pieces_[piece] : noise();
        }
        return bytes;
    }

  private:
    std::string noise()
    {
        std::string bytes(random_() % 12, '\0');
        std::ranges::generate(bytes, [this] { return static_cast<char>(random_()); });
        return bytes;
    }

    std::mt19937 random_{20261122};
    Lines pieces_;
};

TEST(HostileAnswer, isReadAsWhatItIsOrNotAtAll)
{
    for (const Command& row : cmdsvc::kCommands) {
        Hostile hostile(row);
        std::size_t readable = 0;
        for (int i = 0; i < 20000; ++i) {
            const std::string bytes = hostile.next();
            const Answer answer = readAnswer(row, bytes);
            EXPECT_NE(describeAnswer(row, answer), "");
            if (answer.verdict == Verdict::kUnreadable) {
                continue;
            }
            ++readable;
            std::string first = bytes;
            // Of two statuses the first one was read.
            if (row.answer.shape == cmdsvc::AnswerShape::kStatus && bytes.size() == 20) {
                first.resize(10);
            }
            EXPECT_NE(std::ranges::count(encodings(row, answer), first), 0)
                << row.code << "\n"
                << client::hexdump(bytes);
        }
        EXPECT_GT(readable, 2000U) << row.code;
        EXPECT_LT(readable, 18000U) << row.code;
    }
}

} // namespace
