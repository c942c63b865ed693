// SPDX-License-Identifier: MIT
#include "view/sentences.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "core/bytes.h"

namespace view {
namespace {

using cmdsvc::Status;

/// A code that means the same in every command has no command beside it.
struct StatusWords {
    std::string_view command;
    Status code;
    const char* words;
};

// clang-format off
/// The first row that fits counts.
constexpr std::array kStatusWords = std::to_array<StatusWords>({
    {"", cmdsvc::kGood, "good"},

    {"crat", cmdsvc::kMalformed,        "the name or the password holds a character that the appliance does not take, such as a quote; or the name holds one of : , = %, begins with @ + or ., or has a blank at an end"},
    {"crat", cmdsvc::kUserNameTaken,    "a user of this name exists already, or the name is reserved"},
    {"crat", cmdsvc::kUserNameTooLong,  "the user's name is longer than 32 bytes"},
    {"crat", cmdsvc::kPasswordTooLong,  "the password is longer than 32 bytes"},
    {"crat", cmdsvc::kCommandFailed,    "the appliance cannot tell which users it has"},
    {"crat", cmdsvc::kUserNotCreated,   "the appliance's user script would not create this user"},

    {"grst", cmdsvc::kDriveCountReadable, "good: the number of drives can be read"},
    {"grst", cmdsvc::kCommandFailed,    "the appliance cannot tell the number of its drives"},

    {"host", cmdsvc::kMalformed, "a setting holds a character that the appliance does not take"},
    {"host", cmdsvc::kCommandFailed, "the appliance would not set the date or the language"},
    {"", cmdsvc::kStartPageNotSet, "everything was set, but not the start page"},
    {"", cmdsvc::kHostNameTooLong, "the host name is longer than 32 bytes"},
    {"", cmdsvc::kWorkGroupTooLong, "the work group's name is longer than 32 bytes"},
    {"", cmdsvc::kNameNotSet, "the appliance would not take the host name or the work group; date and language were set"},
    {"", cmdsvc::kUnknownLanguage, "the appliance knows no such language"},

    {"", cmdsvc::kCannotOpenBuild, "the appliance cannot read what build it runs"},
    {"", cmdsvc::kCannotCloseBuild, "the appliance cannot read what build it runs"},
    {"", cmdsvc::kCannotStatBuild, "the appliance does not know what build it runs"},
    {"", cmdsvc::kBadBuildSize, "what the appliance knows of its build is empty or too long"},

    {"spvt", cmdsvc::kMalformed, "the appliance does not take a file of this size, or with this content"},
    {"", cmdsvc::kNothingSent, "an empty file cannot be kept"},
    {"", cmdsvc::kTooLittleSent, "the file did not come whole; a former one stays as it was"},
    {"", cmdsvc::kNoEndMark, "the file did not end where its size says; a former one stays as it was"},
    {"", cmdsvc::kCannotCreatePrivate, "the appliance cannot make the private file; a former one stays as it was"},
    {"", cmdsvc::kCannotWritePrivate, "the appliance cannot write the private file; a former one stays as it was"},
    {"", cmdsvc::kCannotClosePrivate, "the appliance cannot write the private file; a former one stays as it was"},
    {"spvt", cmdsvc::kCannotRemove, "the appliance keeps the new file, but cannot remove the former one"},
    {"", cmdsvc::kNoPrivate, "the appliance has no private file"},
    {"", cmdsvc::kPrivateEmpty, "the appliance's private file is empty"},
    {"", cmdsvc::kCannotOpenPrivate, "the appliance cannot read its private file"},

    {"", cmdsvc::kSetupDone, "the first setup has been done already"},
    {"", cmdsvc::kNoLanguage, "the appliance cannot tell its language"},
    {"", cmdsvc::kLanguageWithoutCode, "there is no quick setup in the appliance's language"},
    {"", cmdsvc::kNoPublicShareName, "the appliance has no name for a public share in its language"},

    {"getv", cmdsvc::kRemoteRefused, "the appliance has no such address"},
    {"getv", cmdsvc::kRemoteBadRequest, "the appliance knows no such value"},
    {"wags", cmdsvc::kRemoteRefused, "the appliance cannot tell whether this user's remote access is on"},
    {"wags", cmdsvc::kRemoteBadRequest, "the appliance's remote-access program has failed, or the question is malformed"},
    {"warp", cmdsvc::kRemoteRefused, "the remote-access service would not register this user"},
    {"warp", cmdsvc::kRemoteFailed, "the appliance's remote-access program could not be run, or a value is missing"},
    {"wasu", cmdsvc::kRemoteRefused, "the remote-access service would not do this for this user"},
    {"wasu", cmdsvc::kRemoteFailed, "the appliance's remote-access program has failed, or a value is missing"},
    {"getv", cmdsvc::kRemoteFailed, "the key is malformed"},

    {"", cmdsvc::kRequestTimedOut, "the request took too long and was ended; what it had done by then stays"},
    {"", cmdsvc::kRequestFailed, "the request's process failed before it answered"},
    {"", cmdsvc::kRequestNotStarted, "the appliance has no room for another process; try again"},
    {"", cmdsvc::kRequestTooLong, "the request is longer than 4096 bytes"},
    {"", cmdsvc::kNotAdmitted, "this account may not ask for that; ask root to add you to the group vokcontrol, or to vokcontrol-view if you only want to look"},
    {"", cmdsvc::kServiceStopping, "the service is stopping; try again"},

    {"sub1", cmdsvc::kMalformed,        "the user's name is longer than 60 bytes, or holds a character that the appliance does not take"},
    {"subs", cmdsvc::kMalformed,        "the user's name does not have 1 to 64 bytes, or holds a character that the appliance does not take"},
    {"", cmdsvc::kReportNotSaved,       "the appliance cannot keep the report"},
    {"", cmdsvc::kNoDate,               "the appliance cannot tell the date"},

    {"wall", cmdsvc::kMalformed,        "the name or the password is missing"},
    {"wall", cmdsvc::kNotVerified,      "the password is not this user's, or there is no such user, or no password file"},

    {"gsp1", cmdsvc::kBadShareName,     "the share's name does not have 1 to 64 bytes, or holds a character that the appliance does not take"},
    {"gspc", cmdsvc::kSharePropertyUnknown, "the share's property cannot be found out"},

    {"pshr", cmdsvc::kMalformed,        "the share's name holds a character that the appliance does not take, such as a quote or a slash; or it holds one of : , = %, begins with @ + or ., or has a blank at an end"},
    {"pshr", cmdsvc::kCommandFailed,    "the appliance's share script would not create this share"},
    {"shar", cmdsvc::kMalformed,        "the user's or the share's name holds a character that the appliance does not take, such as a quote or a slash; or the share's holds one of : , = %, begins with @ + or ., or has a blank at an end"},
    {"shar", cmdsvc::kCommandFailed,    "the appliance's share script would not create this share, or not give it to this user"},
    {"shar", cmdsvc::kNoSuchUser,       "there is no user of this name, or it is reserved"},
    {"", cmdsvc::kShareNameTaken,       "a share of this name exists already, or the name is reserved"},
    {"", cmdsvc::kShareNameTooLong,     "the share's name is longer than 64 bytes"},
    {"", cmdsvc::kUserListEmpty,        "the appliance's list of users is empty"},

    {"", cmdsvc::kNoMemory,             "the appliance has run out of memory"},
    {"", cmdsvc::kMalformed,            "the command takes another number of parameters"},
    {"gsp1", cmdsvc::kCannotRemoveListing, "the command takes one parameter, or the appliance cannot remove its work file"},
    {"", cmdsvc::kWrongCountOfShareCommand, "the command takes another number of parameters"},
    {"", cmdsvc::kCommandFailed,        "a script or a tool of the appliance has failed"},
    {"", cmdsvc::kCannotStat,           "the appliance has no list of users"},
    {"", cmdsvc::kCannotRemove,         "the appliance cannot remove its work file"},
    {"", cmdsvc::kCannotOpen,           "the appliance cannot open its work file"},
    {"", cmdsvc::kCannotClose,          "the appliance cannot close its work file"},
});
// clang-format on

std::string_view wordsFor(std::string_view command, Status status)
{
    const auto* row = std::ranges::find_if(kStatusWords, [=](const StatusWords& each) {
        return each.code == status && (each.command.empty() || each.command == command);
    });
    return (row != kStatusWords.end()) ? row->words
                                       : "this client does not know the answer's meaning";
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
    return std::string(wordsFor(command, status)) + " (" + hexOf(status) + ")";
}

std::string refusalForPeople(std::string_view command, Status status)
{
    std::string sentence(wordsFor(command, status));
    sentence.front() = core::toAsciiUpper(sentence.front());
    return sentence + ".";
}

std::string explainStatus(std::string_view command, Status status)
{
    return hexOf(status) + ": " + std::string(wordsFor(command, status));
}

} // namespace view
