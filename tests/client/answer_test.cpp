// SPDX-License-Identifier: MIT
#include "client/answer.h"

#include <gtest/gtest.h>

#include "cmdsvc/protocol.h"
#include "tests/support/root.h"

namespace {

using client::Answer;
using client::describeAnswer;
using client::readAnswer;
using client::refusalSentence;
using client::Shape;
using root::le32;
using Lines = std::vector<std::string>;

const std::string kZero(1, '\0');

// ---- Shapes -----------------------------------------------------------------------------------

TEST(Answer, everyShapeIsKnownByItsBytes)
{
    EXPECT_EQ(readAnswer("").shape, Shape::kEmpty);
    EXPECT_EQ(readAnswer(le32(0)).shape, Shape::kWord);
    EXPECT_EQ(readAnswer("erro " + le32(2)).shape, Shape::kError);
    EXPECT_EQ(readAnswer("sub1 " + le32(2) + kZero).shape, Shape::kStatus);
    EXPECT_EQ(readAnswer("lsut " + le32(0) + "\n").shape, Shape::kHeader);
    for (const std::string& bytes :
         {std::string("abc"), std::string("erro1"), "erro " + le32(2) + "x",
          "sub1 " + le32(2) + kZero + "x", "lsut_" + le32(0) + "\n", std::string(100, 'x')}) {
        EXPECT_EQ(readAnswer(bytes).shape, Shape::kUnreadable) << bytes;
    }
}

TEST(Answer, tagsWithoutACountAreToldApartFromHeaders)
{
    const Answer access = readAnswer("wags user\n\1\n");
    EXPECT_EQ(access.shape, Shape::kTagged);
    EXPECT_EQ(access.tag, "wags");
    EXPECT_EQ(access.lines, (Lines{"user", "\1"}));
    EXPECT_EQ(describeAnswer(access, "wags"), "\"wags\" and\n  user\n  \\u{1}");
    EXPECT_EQ(describeAnswer(readAnswer("gpsn "), "gpsn"), "\"gpsn\" and nothing more");
    EXPECT_EQ(readAnswer("gspc \2\n" + std::string(3, '\0')).shape, Shape::kTagged);
    EXPECT_EQ(readAnswer("gspc " + le32(0xF0000001) + std::string(1, '\0')).shape, Shape::kStatus);
    EXPECT_EQ(readAnswer("gubr " + le32(1) + "\nrecord\n").shape, Shape::kTagged);
    EXPECT_EQ(readAnswer("wall").shape, Shape::kWord);
    EXPECT_EQ(readAnswer("wallx").shape, Shape::kUnreadable);
}

TEST(Answer, valuesAreLittleEndian)
{
    EXPECT_EQ(readAnswer(le32(0xFF000003)).value, 0xFF000003U);
    EXPECT_EQ(readAnswer("erro " + le32(0x20000006)).value, 0x20000006U);
    const Answer status = readAnswer("sub1 " + le32(0xC2000002) + kZero);
    EXPECT_EQ(status.value, 0xC2000002U);
    EXPECT_EQ(status.tag, "sub1");
}

TEST(Answer, firstOfTwoStatusesCounts)
{
    const std::string saved = "subs " + le32(0) + kZero;
    const Answer answer = readAnswer("subs " + le32(0xC2000002) + kZero + saved);
    EXPECT_EQ(answer.shape, Shape::kStatus);
    EXPECT_EQ(answer.value, 0xC2000002U);
    EXPECT_EQ(readAnswer(saved + saved + saved).shape, Shape::kUnreadable);
    EXPECT_EQ(readAnswer(saved + "subs " + le32(0) + "\n").shape, Shape::kUnreadable);
}

TEST(Answer, linesStandBehindAHeader)
{
    const Answer answer = readAnswer("lsut " + le32(2) + "\nanna\n\nbob");
    EXPECT_EQ(answer.tag, "lsut");
    EXPECT_EQ(answer.value, 2U);
    EXPECT_EQ(answer.lines, (Lines{"anna", "", "bob"}));
    EXPECT_FALSE(answer.trailingError);
}

TEST(Answer, errorBehindAHeadersLinesIsToldApart)
{
    const Answer answer = readAnswer("lsut " + le32(1) + "\nanna\nerro " + le32(0xFF000006));
    EXPECT_EQ(answer.lines, Lines{"anna"});
    EXPECT_EQ(answer.trailingError, 0xFF000006U);
    const Answer noLines = readAnswer("lsut " + le32(1) + "\nerro " + le32(0xFF000007));
    EXPECT_EQ(noLines.lines, Lines{});
    EXPECT_EQ(noLines.trailingError, 0xFF000007U);
}

TEST(Answer, lineThatLooksLikeAnErrorIsALine)
{
    for (const char* line : {"erro abc", "Cerro Sur"}) {
        const Answer answer = readAnswer("lsut " + le32(2) + "\nanna\n" + line + "\n");
        EXPECT_EQ(answer.lines, (Lines{"anna", line}));
        EXPECT_FALSE(answer.trailingError);
    }
    EXPECT_EQ(readAnswer("lsut " + le32(1) + "\nerro abc\nerro " + le32(0xFF000006)).trailingError,
              0xFF000006U);
}

TEST(Answer, countOfTenDoesNotEndTheHeader)
{
    const Answer answer = readAnswer("lsut " + le32(10) + "\nanna\n");
    EXPECT_EQ(answer.value, 10U);
    EXPECT_EQ(answer.lines, Lines{"anna"});
}

// ---- Words ------------------------------------------------------------------------------------

struct Refusal {
    const char* command;
    std::uint32_t code;
    const char* sentence;
};

// clang-format off
/// A row without a command is tried with one that has no words of its own for that code.
constexpr Refusal kRefusals[] = {
    {"", cmdsvc::kGood, "good (0x00000000)"},

    {"crat", cmdsvc::kMalformed,       "the name or the password holds a character that the appliance does not take, such as a quote (0xFF000003)"},
    {"crat", cmdsvc::kUserNameTaken,   "a user of this name exists already, or the name is reserved (0x10000001)"},
    {"crat", cmdsvc::kUserNameTooLong, "the user's name is longer than 32 bytes (0x10000002)"},
    {"crat", cmdsvc::kPasswordTooLong, "the password is longer than 32 bytes (0x10000003)"},
    {"crat", cmdsvc::kCommandFailed,   "the appliance cannot tell which users it has (0xFF000004)"},
    {"crat", cmdsvc::kUserNotCreated,  "the appliance's user script would not create this user (0x10000005)"},

    {"grst", cmdsvc::kDriveCountReadable, "good: the number of drives can be read (0xD0000001)"},
    {"grst", cmdsvc::kCommandFailed,      "the appliance cannot tell the number of its drives (0xFF000004)"},

    {"host", cmdsvc::kMalformed,      "a setting holds a character that the appliance does not take (0xFF000003)"},
    {"host", cmdsvc::kCommandFailed,  "the appliance would not set the date or the language (0xFF000004)"},
    {"host", cmdsvc::kStartPageNotSet, "everything was set, but not the start page (0x50000001)"},
    {"host", cmdsvc::kHostNameTooLong, "the host name is longer than 32 bytes (0x50000003)"},
    {"host", cmdsvc::kWorkGroupTooLong, "the work group's name is longer than 32 bytes (0x50000004)"},
    {"host", cmdsvc::kNameNotSet,     "the appliance would not take the host name or the work group; date and language were set (0x50000005)"},
    {"host", cmdsvc::kUnknownLanguage, "the appliance knows no such language (0x50000006)"},

    {"vers", cmdsvc::kCannotOpenBuild,  "the appliance cannot read what build it runs (0x40000001)"},
    {"vers", cmdsvc::kCannotCloseBuild, "the appliance cannot read what build it runs (0x40000002)"},
    {"vers", cmdsvc::kCannotStatBuild,  "the appliance does not know what build it runs (0x40000003)"},
    {"vers", cmdsvc::kBadBuildSize,     "what the appliance knows of its build is empty or too long (0x40000004)"},

    {"spvt", cmdsvc::kMalformed,     "the appliance does not take a file of this size, or with this content (0xFF000003)"},
    {"spvt", cmdsvc::kNothingSent,   "an empty file cannot be kept (0x60000002)"},
    {"spvt", cmdsvc::kTooLittleSent, "the file did not come whole; a former one stays as it was (0x60000004)"},
    {"spvt", cmdsvc::kNoEndMark,     "the file did not end where its size says; a former one stays as it was (0x60000005)"},
    {"spvt", cmdsvc::kCannotCreatePrivate, "the appliance cannot make the private file; a former one stays as it was (0x60000001)"},
    {"spvt", cmdsvc::kCannotWritePrivate,  "the appliance cannot write the private file; a former one stays as it was (0x60000003)"},
    {"spvt", cmdsvc::kCannotClosePrivate,  "the appliance cannot write the private file; a former one stays as it was (0x60000006)"},
    {"spvt", cmdsvc::kCannotRemove,  "the appliance keeps the new file, but cannot remove the former one (0xFF000006)"},
    {"gpvt", cmdsvc::kNoPrivate,     "the appliance has no private file (0x70000001)"},
    {"gpvt", cmdsvc::kPrivateEmpty,  "the appliance's private file is empty (0x70000002)"},
    {"gpvt", cmdsvc::kCannotOpenPrivate, "the appliance cannot read its private file (0x70000003)"},

    {"frst", cmdsvc::kSetupDone,           "the first setup has been done already (0x80000001)"},
    {"qlps", cmdsvc::kNoLanguage,          "the appliance cannot tell its language (0xB0000001)"},
    {"qlps", cmdsvc::kLanguageWithoutCode, "there is no quick setup in the appliance's language (0xB0000002)"},
    {"qlps", cmdsvc::kNoPublicShareName,   "the appliance has no name for a public share in its language (0xB0000003)"},

    {"getv", cmdsvc::kRemoteRefused,    "the appliance has no such address (0x00000001)"},
    {"getv", cmdsvc::kRemoteBadRequest, "the appliance knows no such value (0x00000002)"},
    {"getv", cmdsvc::kRemoteFailed,     "the key is malformed (0x00000003)"},
    {"wags", cmdsvc::kRemoteRefused,    "the appliance cannot tell whether this user's remote access is on (0x00000001)"},
    {"wags", cmdsvc::kRemoteBadRequest, "the appliance's remote-access program has failed, or the question is malformed (0x00000002)"},
    {"warp", cmdsvc::kRemoteRefused,    "the remote-access service would not register this user (0x00000001)"},
    {"warp", cmdsvc::kRemoteFailed,     "the appliance's remote-access program could not be run, or a value is missing (0x00000003)"},
    {"wasu", cmdsvc::kRemoteRefused,    "the remote-access service would not do this for this user (0x00000001)"},
    {"wasu", cmdsvc::kRemoteFailed,     "the appliance's remote-access program has failed, or a value is missing (0x00000003)"},

    {"serv", cmdsvc::kRequestTimedOut,   "the request took too long and was ended; what it had done by then stays (0x53000001)"},
    {"serv", cmdsvc::kRequestFailed,     "the request's process failed before it answered (0x53000002)"},
    {"serv", cmdsvc::kRequestNotStarted, "the appliance has no room for another process; try again (0x53000003)"},
    {"serv", cmdsvc::kRequestTooLong,    "the request is longer than 4096 bytes (0x53000004)"},
    {"serv", cmdsvc::kNotAdmitted,       "only root and the members of the service's group may ask (0x53000005)"},

    {"sub1", cmdsvc::kMalformed,      "the user's name is longer than 60 bytes, or holds a character that the appliance does not take (0xFF000003)"},
    {"sub1", cmdsvc::kReportNotSaved, "the appliance cannot keep the report (0xC2000002)"},
    {"sub1", cmdsvc::kNoDate,         "the appliance cannot tell the date (0xC2000003)"},
    {"subs", cmdsvc::kMalformed,      "the user's name does not have 1 to 64 bytes, or holds a character that the appliance does not take (0xFF000003)"},
    {"subs", cmdsvc::kReportNotSaved, "the appliance cannot keep the report (0xC2000002)"},
    {"subs", cmdsvc::kNoDate,         "the appliance cannot tell the date (0xC2000003)"},

    {"wall", cmdsvc::kMalformed,   "the name or the password is missing (0xFF000003)"},
    {"wall", cmdsvc::kNotVerified, "the password is not this user's, or there is no such user, or no password file (0x00000001)"},

    {"gsp1", cmdsvc::kBadShareName,         "the share's name does not have 1 to 64 bytes, or holds a character that the appliance does not take (0xC1000003)"},
    {"gsp1", cmdsvc::kCannotRemoveListing,  "the command takes one parameter, or the appliance cannot remove its work file (0xC1000001)"},
    {"gspc", cmdsvc::kSharePropertyUnknown, "the share's property cannot be found out (0xF0000001)"},

    {"pshr", cmdsvc::kMalformed,        "the share's name holds a character that the appliance does not take, such as a quote or a slash (0xFF000003)"},
    {"pshr", cmdsvc::kCommandFailed,    "the appliance's share script would not create this share (0xFF000004)"},
    {"pshr", cmdsvc::kShareNameTaken,   "a share of this name exists already, or the name is reserved (0x20000001)"},
    {"pshr", cmdsvc::kShareNameTooLong, "the share's name is longer than 64 bytes (0x20000003)"},
    {"shar", cmdsvc::kMalformed,        "the user's or the share's name holds a character that the appliance does not take, such as a quote or a slash (0xFF000003)"},
    {"shar", cmdsvc::kCommandFailed,    "the appliance's share script would not create this share, or not give it to this user (0xFF000004)"},
    {"shar", cmdsvc::kNoSuchUser,       "there is no user of this name, or it is reserved (0x20000006)"},
    {"shar", cmdsvc::kShareNameTaken,   "a share of this name exists already, or the name is reserved (0x20000001)"},
    {"shar", cmdsvc::kShareNameTooLong, "the share's name is longer than 64 bytes (0x20000003)"},

    {"lstu", cmdsvc::kUserListEmpty, "the appliance's list of users is empty (0x20000006)"},
    {"gps1", cmdsvc::kWrongCountOfShareCommand, "the command takes another number of parameters (0xC1000001)"},
    {"", cmdsvc::kNoMemory,      "the appliance has run out of memory (0xFF000001)"},
    {"", cmdsvc::kMalformed,     "the command takes another number of parameters (0xFF000003)"},
    {"", cmdsvc::kCommandFailed, "a script or a tool of the appliance has failed (0xFF000004)"},
    {"", cmdsvc::kCannotStat,    "the appliance has no list of users (0xFF000005)"},
    {"", cmdsvc::kCannotRemove,  "the appliance cannot remove its work file (0xFF000006)"},
    {"", cmdsvc::kCannotOpen,    "the appliance cannot open its work file (0xFF000007)"},
    {"", cmdsvc::kCannotClose,   "the appliance cannot close its work file (0xFF000008)"},
};
// clang-format on

TEST(Answer, everyRefusalHasItsSentence)
{
    for (const Refusal& row : kRefusals) {
        const std::string command = (*row.command == '\0') ? "lsts" : row.command;
        EXPECT_EQ(refusalSentence(command, row.code), row.sentence) << command;
    }
}

TEST(Answer, codeThatTheCommandHasNoWordsForMeansWhatItMeansElsewhere)
{
    EXPECT_EQ(refusalSentence("crat", cmdsvc::kNoMemory),
              "the appliance has run out of memory (0xFF000001)");
    EXPECT_EQ(refusalSentence("xxxx", cmdsvc::kShareNameTooLong),
              "the share's name is longer than 64 bytes (0x20000003)");
}

TEST(Answer, unknownCodeIsSaidToBeUnknown)
{
    const std::string words = "this client does not know the answer's meaning ";
    EXPECT_EQ(refusalSentence("crat", 0xABCDEF01), words + "(0xABCDEF01)");
    EXPECT_EQ(refusalSentence("crat", 5), words + "(0x00000005)");
    // Another command's code is as unknown as any.
    EXPECT_EQ(refusalSentence("pshr", cmdsvc::kUserNameTaken), words + "(0x10000001)");
}

TEST(Answer, isDescribedInWords)
{
    EXPECT_EQ(describeAnswer(readAnswer(""), "lstu"),
              "empty: the command was ignored, is not known, or failed before it answered");
    EXPECT_EQ(describeAnswer(readAnswer(le32(0)), "crat"), "status 0x00000000: good");
    EXPECT_EQ(describeAnswer(readAnswer(le32(0xFF000003)), "lstu"),
              "status 0xFF000003: the command takes another number of parameters");
    EXPECT_EQ(describeAnswer(readAnswer(le32(0xFF000003)), "crat"),
              "status 0xFF000003: the name or the password holds a character that the appliance "
              "does not take, such as a quote");
    EXPECT_EQ(describeAnswer(readAnswer("erro " + le32(0xABCDEF01)), "lstu"),
              "error 0xABCDEF01: this client does not know the answer's meaning");
    EXPECT_EQ(describeAnswer(readAnswer("sub1 " + le32(0) + kZero), "sub1"),
              "\"sub1\" with status 0x00000000: good");
    EXPECT_EQ(describeAnswer(readAnswer("lsut " + le32(2) + "\na\x1Bz\n\nerro " + le32(0xFF000006)),
                             "lstu"),
              "\"lsut\" with count 2\n  a\\u{1b}z\n  \nfollowed by an error, 0xFF000006: the "
              "appliance cannot remove its work file");
    EXPECT_EQ(describeAnswer(readAnswer("abc"), "lstu"), "of no shape that this client knows");
}

TEST(Answer, tagThatIsNoTextIsDescribedSafely)
{
    EXPECT_EQ(describeAnswer(readAnswer("\x1B[2J " + le32(1) + "\n"), "lstu"),
              "\"\\u{1b}[2J\" with count 1");
    EXPECT_EQ(describeAnswer(readAnswer("\xFFsub " + le32(0) + kZero), "lstu"),
              "\"\\xffsub\" with status 0x00000000: good");
}

TEST(Answer, hexdumpShowsNumbersAndCharacters)
{
    EXPECT_EQ(client::hexdump(""), "");
    EXPECT_EQ(client::hexdump("lsut " + le32(1) + "\nan\xFF~\x7F z"),
              "00000000  6c 73 75 74 20 01 00 00 00 0a 61 6e ff 7e 7f 20  |lsut .....an.~. |\n"
              "00000010  7a                                               |z|\n");
}

} // namespace
