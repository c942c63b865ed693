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
    {"", cmdsvc::kGood, "Good. (0x00000000)"},

    {"crat", cmdsvc::kMalformed,       "The name or the password has a character that cannot be used, such as a quote. A name cannot have : , = %, a blank at an end, or - @ + . at its start. (0xFF000003)"},
    {"crat", cmdsvc::kUserNameTaken,   "A user of this name exists already, or the name is reserved. (0x10000001)"},
    {"crat", cmdsvc::kUserNameTooLong, "The user's name is longer than 32 bytes. (0x10000002)"},
    {"crat", cmdsvc::kPasswordTooLong, "The password is longer than 32 bytes. (0x10000003)"},
    {"crat", cmdsvc::kCommandFailed,   "The appliance's user script did not list the users, so none was created; vokctl doctor may say why. (0xFF000004)"},
    {"crat", cmdsvc::kUserNotCreated,  "The appliance's user script did not create this user; vokctl doctor may say why. (0x10000005)"},

    {"grst", cmdsvc::kDriveCountReadable, "Good: the number of drives can be read. (0xD0000001)"},
    {"grst", cmdsvc::kCommandFailed,      "The number of drives cannot be read; vokctl doctor may say why. (0xFF000004)"},

    {"host", cmdsvc::kMalformed,      "A setting has a character that cannot be used, such as a quote. (0xFF000003)"},
    {"host", cmdsvc::kCommandFailed,  "The appliance did not set the date or the language; vokctl doctor may say why. (0xFF000004)"},
    {"host", cmdsvc::kStartPageNotSet, "Everything was set, except the start page. (0x50000001)"},
    {"host", cmdsvc::kHostNameTooLong, "The host name is longer than 32 bytes. (0x50000003)"},
    {"host", cmdsvc::kWorkGroupTooLong, "The work group's name is longer than 32 bytes. (0x50000004)"},
    {"host", cmdsvc::kNameNotSet,     "The date and the language were set, but the appliance did not take the host name or the work group; vokctl doctor may say why. (0x50000005)"},
    {"host", cmdsvc::kUnknownLanguage, "The appliance does not know this language; vokctl host set --help lists the codes. (0x50000006)"},

    {"vers", cmdsvc::kCannotOpenBuild,  "The appliance's build cannot be read; see whether /etc/buildinfo.txt is there. (0x40000001)"},
    {"vers", cmdsvc::kCannotCloseBuild, "The appliance's build cannot be read; see whether /etc/buildinfo.txt is there. (0x40000002)"},
    {"vers", cmdsvc::kCannotStatBuild,  "The appliance's build is not known, because /etc/buildinfo.txt cannot be read. (0x40000003)"},
    {"vers", cmdsvc::kBadBuildSize,     "The appliance's build cannot be shown, because /etc/buildinfo.txt is empty or too long. (0x40000004)"},

    {"spvt", cmdsvc::kMalformed,     "A private file of this size or with this content cannot be kept. (0xFF000003)"},
    {"spvt", cmdsvc::kNothingSent,   "An empty file cannot be kept. (0x60000002)"},
    {"spvt", cmdsvc::kTooLittleSent, "The file did not arrive whole; a file from before is unchanged. Send it again. (0x60000004)"},
    {"spvt", cmdsvc::kNoEndMark,     "The file did not end where its size says; a file from before is unchanged. Send it again. (0x60000005)"},
    {"spvt", cmdsvc::kCannotCreatePrivate, "The private file cannot be made; a file from before is unchanged. See whether the appliance's disk is full. (0x60000001)"},
    {"spvt", cmdsvc::kCannotWritePrivate,  "The private file cannot be written; a file from before is unchanged. See whether the appliance's disk is full. (0x60000003)"},
    {"spvt", cmdsvc::kCannotClosePrivate,  "The private file cannot be written; a file from before is unchanged. See whether the appliance's disk is full. (0x60000006)"},
    {"spvt", cmdsvc::kCannotRemove,  "The new private file was kept, but the former one could not be removed. (0xFF000006)"},
    {"gpvt", cmdsvc::kNoPrivate,     "There is no private file on the appliance. (0x70000001)"},
    {"gpvt", cmdsvc::kPrivateEmpty,  "The private file on the appliance is empty. (0x70000002)"},
    {"gpvt", cmdsvc::kCannotOpenPrivate, "The private file on the appliance cannot be read. (0x70000003)"},

    {"frst", cmdsvc::kSetupDone,           "The first setup has been done already. (0x80000001)"},
    {"qlps", cmdsvc::kNoLanguage,          "The appliance's language cannot be read; vokctl doctor may say why. (0xB0000001)"},
    {"qlps", cmdsvc::kLanguageWithoutCode, "There is no quick setup in the appliance's language. (0xB0000002)"},
    {"qlps", cmdsvc::kNoPublicShareName,   "The appliance has no name for a public share in its language. (0xB0000003)"},

    {"getv", cmdsvc::kRemoteRefused,    "The appliance does not have this address. (0x00000001)"},
    {"getv", cmdsvc::kRemoteBadRequest, "The appliance does not have a value with this key. (0x00000002)"},
    {"getv", cmdsvc::kRemoteFailed,     "The key is malformed. (0x00000003)"},
    {"wags", cmdsvc::kRemoteRefused,    "The appliance cannot tell whether this user's remote access is on; see whether there is such a user. (0x00000001)"},
    {"wags", cmdsvc::kRemoteBadRequest, "The appliance's remote-access program has failed, or the request is malformed. (0x00000002)"},
    {"warp", cmdsvc::kRemoteRefused,    "The remote-access service did not register this user. (0x00000001)"},
    {"warp", cmdsvc::kRemoteFailed,     "The appliance's remote-access program could not be run, or a value is missing. (0x00000003)"},
    {"wasu", cmdsvc::kRemoteRefused,    "The remote-access service did not do this for this user. (0x00000001)"},
    {"wasu", cmdsvc::kRemoteFailed,     "The appliance's remote-access program has failed, or a value is missing. (0x00000003)"},

    {"serv", cmdsvc::kRequestTimedOut,   "The request took too long and was ended. What was done before that was not undone. (0x53000001)"},
    {"serv", cmdsvc::kRequestFailed,     "The request's process failed before it answered; see the service's log. (0x53000002)"},
    {"serv", cmdsvc::kRequestNotStarted, "The appliance could not start another process; try again. (0x53000003)"},
    {"serv", cmdsvc::kRequestTooLong,    "The request is longer than 4096 bytes. (0x53000004)"},
    {"serv", cmdsvc::kNotAdmitted,       "This account may not ask for that. Members of the group vokcontrol may ask for everything, members of vokcontrol-view only for what changes nothing; ask root to add you. (0x53000005)"},
    {"serv", cmdsvc::kServiceStopping,   "The service is stopping; try again. (0x53000006)"},

    {"sub1", cmdsvc::kMalformed,      "The user's name is longer than 60 bytes, or has a character that cannot be used. (0xFF000003)"},
    {"sub1", cmdsvc::kReportNotSaved, "The report could not be stored; see whether the appliance's disk is full. (0xC2000002)"},
    {"sub1", cmdsvc::kNoDate,         "The report could not be stored, because the appliance's date cannot be read. (0xC2000003)"},
    {"subs", cmdsvc::kMalformed,      "The user's name does not have 1 to 64 bytes, or has a character that cannot be used. (0xFF000003)"},
    {"subs", cmdsvc::kReportNotSaved, "The report could not be stored; see whether the appliance's disk is full. (0xC2000002)"},
    {"subs", cmdsvc::kNoDate,         "The report could not be stored, because the appliance's date cannot be read. (0xC2000003)"},

    {"wall", cmdsvc::kMalformed,   "The name or the password is missing. (0xFF000003)"},
    {"wall", cmdsvc::kNotVerified, "The password is not this user's, or there is no such user, or no password file. (0x00000001)"},

    {"gsp1", cmdsvc::kBadShareName,         "The share's name does not have 1 to 64 bytes, or has a character that cannot be used. (0xC1000003)"},
    {"gsp1", cmdsvc::kCannotRemoveListing,  "The command takes one parameter, or the appliance's work file cannot be removed. (0xC1000001)"},
    {"gspc", cmdsvc::kSharePropertyUnknown, "The appliance cannot tell whether the share is public or private. (0xF0000001)"},

    {"pshr", cmdsvc::kMalformed,        "The share's name has a character that cannot be used, such as a quote or a slash, one of : , = %, a blank at an end, or - @ + . at its start. (0xFF000003)"},
    {"pshr", cmdsvc::kCommandFailed,    "The appliance's share script did not create this share; vokctl doctor may say why. (0xFF000004)"},
    {"pshr", cmdsvc::kShareNameTaken,   "A share of this name exists already, or the name is reserved. (0x20000001)"},
    {"pshr", cmdsvc::kShareNameTooLong, "The share's name is longer than 64 bytes. (0x20000003)"},
    {"shar", cmdsvc::kMalformed,        "A name has a character that cannot be used, such as a quote or a slash. A share's cannot have : , = %, a blank at an end, or - @ + . at its start. (0xFF000003)"},
    {"shar", cmdsvc::kCommandFailed,    "The appliance's share script did not create this share, or did not give it to this user; vokctl doctor may say why. (0xFF000004)"},
    {"shar", cmdsvc::kNoSuchUser,       "There is no user of this name, or it is reserved. (0x20000006)"},
    {"shar", cmdsvc::kShareNameTaken,   "A share of this name exists already, or the name is reserved. (0x20000001)"},
    {"shar", cmdsvc::kShareNameTooLong, "The share's name is longer than 64 bytes. (0x20000003)"},

    {"lstu", cmdsvc::kUserListEmpty, "The appliance's list of users is empty. (0x20000006)"},
    {"gps1", cmdsvc::kWrongCountOfShareCommand, "The command takes another number of parameters. (0xC1000001)"},
    {"", cmdsvc::kNoMemory,      "The appliance has run out of memory; try again later. (0xFF000001)"},
    {"", cmdsvc::kMalformed,     "The command takes another number of parameters. (0xFF000003)"},
    {"", cmdsvc::kCommandFailed, "A script or a tool of the appliance has failed; vokctl doctor may say why. (0xFF000004)"},
    {"", cmdsvc::kCannotStat,    "The appliance's list of users cannot be found. (0xFF000005)"},
    {"", cmdsvc::kCannotRemove,  "The appliance's work file cannot be removed; see whether the disk for its work files is full. (0xFF000006)"},
    {"", cmdsvc::kCannotOpen,    "The appliance's work file cannot be opened; see whether the disk for its work files is full. (0xFF000007)"},
    {"", cmdsvc::kCannotClose,   "The appliance's work file cannot be written; see whether the disk for its work files is full. (0xFF000008)"},
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
              "The appliance has run out of memory; try again later. (0xFF000001)");
    EXPECT_EQ(refusalSentence("xxxx", cmdsvc::kShareNameTooLong),
              "The share's name is longer than 64 bytes. (0x20000003)");
}

TEST(Sentences, unknownCodeIsSaidToBeUnknown)
{
    const std::string words = "This client does not know the answer's meaning. ";
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
    EXPECT_EQ(explainStatus("crat", cmdsvc::kGood), "0x00000000: Good.");
    EXPECT_EQ(explainStatus("lstu", cmdsvc::kMalformed),
              "0xFF000003: The command takes another number of parameters.");
    EXPECT_EQ(explainStatus("lstu", cmdsvc::Status{0xABCDEF01}),
              "0xABCDEF01: This client does not know the answer's meaning.");
}

} // namespace
