// SPDX-License-Identifier: MIT
#include "view/sentences.h"

#include <array>
#include <gtest/gtest.h>

namespace {

using view::explainStatus;
using view::refusalSentence;

struct Refusal {
    const char* command;
    cmdsvc::Status code;
    const char* sentence;
};

// clang-format off
/// A row without a command is tried with one that has no words of its own for that code.
constexpr auto kRefusals = std::to_array<Refusal>({
    {"", cmdsvc::kGood, "good (0x00000000)"},

    {"crat", cmdsvc::kMalformed,       "the name or the password holds a character that the appliance does not take, such as a quote; or the name holds one of : , = %, begins with @ + or ., or has a blank at an end (0xFF000003)"},
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
    {"serv", cmdsvc::kNotAdmitted,       "this account may not ask for that; ask root to add you to the group vokcontrol, or to vokcontrol-view if you only want to look (0x53000005)"},
    {"serv", cmdsvc::kServiceStopping,   "the service is stopping; try again (0x53000006)"},

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

    {"pshr", cmdsvc::kMalformed,        "the share's name holds a character that the appliance does not take, such as a quote or a slash; or it holds one of : , = %, begins with @ + or ., or has a blank at an end (0xFF000003)"},
    {"pshr", cmdsvc::kCommandFailed,    "the appliance's share script would not create this share (0xFF000004)"},
    {"pshr", cmdsvc::kShareNameTaken,   "a share of this name exists already, or the name is reserved (0x20000001)"},
    {"pshr", cmdsvc::kShareNameTooLong, "the share's name is longer than 64 bytes (0x20000003)"},
    {"shar", cmdsvc::kMalformed,        "the user's or the share's name holds a character that the appliance does not take, such as a quote or a slash; or the share's holds one of : , = %, begins with @ + or ., or has a blank at an end (0xFF000003)"},
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
});
// clang-format on

TEST(Sentences, everyRefusalHasItsSentence)
{
    for (const Refusal& row : kRefusals) {
        const std::string command = (*row.command == '\0') ? "lsts" : row.command;
        EXPECT_EQ(refusalSentence(command, row.code), row.sentence) << command;
    }
}

TEST(Sentences, codeThatTheCommandHasNoWordsForMeansWhatItMeansElsewhere)
{
    EXPECT_EQ(refusalSentence("crat", cmdsvc::kNoMemory),
              "the appliance has run out of memory (0xFF000001)");
    EXPECT_EQ(refusalSentence("xxxx", cmdsvc::kShareNameTooLong),
              "the share's name is longer than 64 bytes (0x20000003)");
}

TEST(Sentences, unknownCodeIsSaidToBeUnknown)
{
    const std::string words = "this client does not know the answer's meaning ";
    EXPECT_EQ(refusalSentence("crat", cmdsvc::Status{0xABCDEF01}), words + "(0xABCDEF01)");
    EXPECT_EQ(refusalSentence("crat", cmdsvc::Status{5}), words + "(0x00000005)");
    // Another command's code is as unknown as any.
    EXPECT_EQ(refusalSentence("pshr", cmdsvc::kUserNameTaken), words + "(0x10000001)");
}

TEST(Sentences, peopleAreNotShownTheCode)
{
    EXPECT_EQ(view::refusalForPeople("shar", cmdsvc::kNoSuchUser),
              "There is no user of this name, or it is reserved.");
    EXPECT_EQ(view::refusalForPeople("crat", cmdsvc::Status{5}),
              "This client does not know the answer's meaning.");
}

TEST(Sentences, explanationBeginsWithTheCode)
{
    EXPECT_EQ(explainStatus("crat", cmdsvc::kGood), "0x00000000: good");
    EXPECT_EQ(explainStatus("lstu", cmdsvc::kMalformed),
              "0xFF000003: the command takes another number of parameters");
    EXPECT_EQ(explainStatus("lstu", cmdsvc::Status{0xABCDEF01}),
              "0xABCDEF01: this client does not know the answer's meaning");
}

} // namespace
