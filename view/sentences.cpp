// SPDX-License-Identifier: MIT
#include "view/sentences.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "text/translation.h"

namespace view {
namespace {

using cmdsvc::Status;

/// A code that means the same in every command has no command beside it.
struct StatusWords {
    std::string_view command;
    Status code;
    const char* sentence;
};

// clang-format off
/// The first row that fits counts.
constexpr std::array kStatusWords = std::to_array<StatusWords>({
    {"", cmdsvc::kGood, text::mark("Good.")},

    {"crat", cmdsvc::kMalformed,        text::mark("The name or the password has a character that cannot be used, such as a quote. A name cannot have : , = %, a blank at an end, or - @ + . at its start.")},
    {"crat", cmdsvc::kUserNameTaken,    text::mark("A user of this name exists already, or the name is reserved.")},
    {"crat", cmdsvc::kUserNameTooLong,  text::mark("The user's name is longer than 32 bytes.")},
    {"crat", cmdsvc::kPasswordTooLong,  text::mark("The password is longer than 32 bytes.")},
    {"crat", cmdsvc::kCommandFailed,    text::mark("The appliance's user script did not list the users, so none was created; vokctl doctor may say why.")},
    {"crat", cmdsvc::kUserNotCreated,   text::mark("The appliance's user script did not create this user; vokctl doctor may say why.")},

    {"grst", cmdsvc::kDriveCountReadable, text::mark("Good: the number of drives can be read.")},
    {"grst", cmdsvc::kCommandFailed,    text::mark("The number of drives cannot be read; vokctl doctor may say why.")},

    {"host", cmdsvc::kMalformed, text::mark("A setting has a character that cannot be used, such as a quote.")},
    {"host", cmdsvc::kCommandFailed, text::mark("The appliance did not set the date or the language; vokctl doctor may say why.")},
    {"", cmdsvc::kStartPageNotSet, text::mark("Everything was set, except the start page.")},
    {"", cmdsvc::kHostNameTooLong, text::mark("The host name is longer than 32 bytes.")},
    {"", cmdsvc::kWorkGroupTooLong, text::mark("The work group's name is longer than 32 bytes.")},
    {"", cmdsvc::kNameNotSet, text::mark("The date and the language were set, but the appliance did not take the host name or the work group; vokctl doctor may say why.")},
    {"", cmdsvc::kUnknownLanguage, text::mark("The appliance does not know this language; vokctl host set --help lists the codes.")},

    {"", cmdsvc::kCannotOpenBuild, text::mark("The appliance's build cannot be read; see whether /etc/buildinfo.txt is there.")},
    {"", cmdsvc::kCannotCloseBuild, text::mark("The appliance's build cannot be read; see whether /etc/buildinfo.txt is there.")},
    {"", cmdsvc::kCannotStatBuild, text::mark("The appliance's build is not known, because /etc/buildinfo.txt cannot be read.")},
    {"", cmdsvc::kBadBuildSize, text::mark("The appliance's build cannot be shown, because /etc/buildinfo.txt is empty or too long.")},

    {"spvt", cmdsvc::kMalformed, text::mark("A private file of this size or with this content cannot be kept.")},
    {"", cmdsvc::kNothingSent, text::mark("An empty file cannot be kept.")},
    {"", cmdsvc::kTooLittleSent, text::mark("The file did not arrive whole; a file from before is unchanged. Send it again.")},
    {"", cmdsvc::kNoEndMark, text::mark("The file did not end where its size says; a file from before is unchanged. Send it again.")},
    {"", cmdsvc::kCannotCreatePrivate, text::mark("The private file cannot be made; a file from before is unchanged. See whether the appliance's disk is full.")},
    {"", cmdsvc::kCannotWritePrivate, text::mark("The private file cannot be written; a file from before is unchanged. See whether the appliance's disk is full.")},
    {"", cmdsvc::kCannotClosePrivate, text::mark("The private file cannot be written; a file from before is unchanged. See whether the appliance's disk is full.")},
    {"spvt", cmdsvc::kCannotRemove, text::mark("The new private file was kept, but the former one could not be removed.")},
    {"", cmdsvc::kNoPrivate, text::mark("There is no private file on the appliance.")},
    {"", cmdsvc::kPrivateEmpty, text::mark("The private file on the appliance is empty.")},
    {"", cmdsvc::kCannotOpenPrivate, text::mark("The private file on the appliance cannot be read.")},

    {"", cmdsvc::kSetupDone, text::mark("The first setup has been done already.")},
    {"", cmdsvc::kNoLanguage, text::mark("The appliance's language cannot be read; vokctl doctor may say why.")},
    {"", cmdsvc::kLanguageWithoutCode, text::mark("There is no quick setup in the appliance's language.")},
    {"", cmdsvc::kNoPublicShareName, text::mark("The appliance has no name for a public share in its language.")},

    {"getv", cmdsvc::kRemoteRefused, text::mark("The appliance does not have this address.")},
    {"getv", cmdsvc::kRemoteBadRequest, text::mark("The appliance does not have a value with this key.")},
    {"wags", cmdsvc::kRemoteRefused, text::mark("The appliance cannot tell whether this user's remote access is on; see whether there is such a user.")},
    {"wags", cmdsvc::kRemoteBadRequest, text::mark("The appliance's remote-access program has failed, or the request is malformed.")},
    {"warp", cmdsvc::kRemoteRefused, text::mark("The remote-access service did not register this user.")},
    {"warp", cmdsvc::kRemoteFailed, text::mark("The appliance's remote-access program could not be run, or a value is missing.")},
    {"wasu", cmdsvc::kRemoteRefused, text::mark("The remote-access service did not do this for this user.")},
    {"wasu", cmdsvc::kRemoteFailed, text::mark("The appliance's remote-access program has failed, or a value is missing.")},
    {"getv", cmdsvc::kRemoteFailed, text::mark("The key is malformed.")},

    {"", cmdsvc::kRequestTimedOut, text::mark("The request took too long and was ended. What was done before that was not undone.")},
    {"", cmdsvc::kRequestFailed, text::mark("The request's process failed before it answered; see the service's log.")},
    {"", cmdsvc::kRequestNotStarted, text::mark("The appliance could not start another process; try again.")},
    {"", cmdsvc::kRequestTooLong, text::mark("The request is longer than 4096 bytes.")},
    {"", cmdsvc::kNotAdmitted, text::mark("This account may not ask for that. Members of the group vokcontrol may ask for everything, members of vokcontrol-view only for what changes nothing; ask root to add you.")},
    {"", cmdsvc::kServiceStopping, text::mark("The service is stopping; try again.")},

    {"sub1", cmdsvc::kMalformed,        text::mark("The user's name is longer than 60 bytes, or has a character that cannot be used.")},
    {"subs", cmdsvc::kMalformed,        text::mark("The user's name does not have 1 to 64 bytes, or has a character that cannot be used.")},
    {"", cmdsvc::kReportNotSaved,       text::mark("The report could not be stored; see whether the appliance's disk is full.")},
    {"", cmdsvc::kNoDate,               text::mark("The report could not be stored, because the appliance's date cannot be read.")},

    {"wall", cmdsvc::kMalformed,        text::mark("The name or the password is missing.")},
    {"wall", cmdsvc::kNotVerified,      text::mark("The password is not this user's, or there is no such user, or no password file.")},

    {"gsp1", cmdsvc::kBadShareName,     text::mark("The share's name does not have 1 to 64 bytes, or has a character that cannot be used.")},
    {"gspc", cmdsvc::kSharePropertyUnknown, text::mark("The appliance cannot tell whether the share is public or private.")},

    {"pshr", cmdsvc::kMalformed,        text::mark("The share's name has a character that cannot be used, such as a quote or a slash, one of : , = %, a blank at an end, or - @ + . at its start.")},
    {"pshr", cmdsvc::kCommandFailed,    text::mark("The appliance's share script did not create this share; vokctl doctor may say why.")},
    {"shar", cmdsvc::kMalformed,        text::mark("A name has a character that cannot be used, such as a quote or a slash. A share's cannot have : , = %, a blank at an end, or - @ + . at its start.")},
    {"shar", cmdsvc::kCommandFailed,    text::mark("The appliance's share script did not create this share, or did not give it to this user; vokctl doctor may say why.")},
    {"shar", cmdsvc::kNoSuchUser,       text::mark("There is no user of this name, or it is reserved.")},
    {"", cmdsvc::kShareNameTaken,       text::mark("A share of this name exists already, or the name is reserved.")},
    {"", cmdsvc::kShareNameTooLong,     text::mark("The share's name is longer than 64 bytes.")},
    {"", cmdsvc::kUserListEmpty,        text::mark("The appliance's list of users is empty.")},

    {"", cmdsvc::kNoMemory,             text::mark("The appliance has run out of memory; try again later.")},
    {"", cmdsvc::kMalformed,            text::mark("The command takes another number of parameters.")},
    {"gsp1", cmdsvc::kCannotRemoveListing, text::mark("The command takes one parameter, or the appliance's work file cannot be removed.")},
    {"", cmdsvc::kWrongCountOfShareCommand, text::mark("The command takes another number of parameters.")},
    {"", cmdsvc::kCommandFailed,        text::mark("A script or a tool of the appliance has failed; vokctl doctor may say why.")},
    {"", cmdsvc::kCannotStat,           text::mark("The appliance's list of users cannot be found.")},
    {"", cmdsvc::kCannotRemove,         text::mark("The appliance's work file cannot be removed; see whether the disk for its work files is full.")},
    {"", cmdsvc::kCannotOpen,           text::mark("The appliance's work file cannot be opened; see whether the disk for its work files is full.")},
    {"", cmdsvc::kCannotClose,          text::mark("The appliance's work file cannot be written; see whether the disk for its work files is full.")},
});
// clang-format on

const char* sentenceFor(std::string_view command, Status status)
{
    const auto* row = std::ranges::find_if(kStatusWords, [=](const StatusWords& each) {
        return each.code == status && (each.command.empty() || each.command == command);
    });
    return text::tr((row != kStatusWords.end())
                        ? row->sentence
                        : text::mark("This client does not know the answer's meaning."));
}

std::string hexOf(Status status)
{
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), "0x%08X", cmdsvc::wordOf(status));
    return number.data();
}

} // namespace

std::string refusalSentence(std::string_view command, Status status)
{
    return refusalForPeople(command, status) + " (" + hexOf(status) + ")";
}

std::string refusalForPeople(std::string_view command, Status status)
{
    return sentenceFor(command, status);
}

std::string explainStatus(std::string_view command, Status status)
{
    return hexOf(status) + ": " + refusalForPeople(command, status);
}

} // namespace view
