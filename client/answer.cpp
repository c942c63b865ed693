// SPDX-License-Identifier: MIT
#include "client/answer.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "view/terminal_text.h"

namespace client {
namespace {

using cmdsvc::kCodeSize;
using cmdsvc::kCountOffset;
using cmdsvc::kErrorTag;
using cmdsvc::kHeaderSize;
using cmdsvc::kWordSize;

std::uint32_t wordAt(std::string_view bytes, std::size_t offset)
{
    return core::getU32(std::span(bytes).subspan(offset).first<kWordSize>());
}

// ---- Words ------------------------------------------------------------------------------------

/// A code that means the same in every command has no command beside it.
struct StatusWords {
    std::string_view command;
    std::uint32_t code;
    const char* words;
};

// clang-format off
/// The first row that fits counts.
constexpr std::array kStatusWords = std::to_array<StatusWords>({
    {"", cmdsvc::kGood, "good"},

    {"crat", cmdsvc::kMalformed,        "the name or the password holds a character that the appliance does not take, such as a quote"},
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
    {"", cmdsvc::kNotAdmitted, "only root and the members of the service's group may ask"},

    {"sub1", cmdsvc::kMalformed,        "the user's name is longer than 60 bytes, or holds a character that the appliance does not take"},
    {"subs", cmdsvc::kMalformed,        "the user's name does not have 1 to 64 bytes, or holds a character that the appliance does not take"},
    {"", cmdsvc::kReportNotSaved,       "the appliance cannot keep the report"},
    {"", cmdsvc::kNoDate,               "the appliance cannot tell the date"},

    {"wall", cmdsvc::kMalformed,        "the name or the password is missing"},
    {"wall", cmdsvc::kNotVerified,      "the password is not this user's, or there is no such user, or no password file"},

    {"gsp1", cmdsvc::kBadShareName,     "the share's name does not have 1 to 64 bytes, or holds a character that the appliance does not take"},
    {"gspc", cmdsvc::kSharePropertyUnknown, "the share's property cannot be found out"},

    {"pshr", cmdsvc::kMalformed,        "the share's name holds a character that the appliance does not take, such as a quote or a slash"},
    {"pshr", cmdsvc::kCommandFailed,    "the appliance's share script would not create this share"},
    {"shar", cmdsvc::kMalformed,        "the user's or the share's name holds a character that the appliance does not take, such as a quote or a slash"},
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

/// Whether any command answers this code. A name that happens to begin like an error is none.
bool isKnown(std::uint32_t code)
{
    return std::ranges::find(kStatusWords, code, &StatusWords::code) != kStatusWords.end();
}

// ---- Shapes -----------------------------------------------------------------------------------

bool isEmpty(std::string_view bytes)
{
    return bytes.empty();
}

bool isWord(std::string_view bytes)
{
    return bytes.size() == kWordSize;
}

bool isError(std::string_view bytes)
{
    return bytes.size() == kErrorTag.size() + kWordSize && bytes.starts_with(kErrorTag);
}

bool isTagged(std::string_view bytes, char last)
{
    return bytes.size() >= kHeaderSize && bytes[kCodeSize] == ' ' && bytes[kHeaderSize - 1] == last;
}

/// A report that could not be kept is answered twice; the first code says so.
bool isStatus(std::string_view bytes)
{
    if (bytes.size() == 2 * kHeaderSize) {
        return isStatus(bytes.substr(0, kHeaderSize)) && isStatus(bytes.substr(kHeaderSize));
    }
    return bytes.size() == kHeaderSize && isTagged(bytes, '\0');
}

/// Commands that answer with their tag and no count behind it.
constexpr auto kCountless =
    std::to_array<std::string_view>({"gpsn", "gubr", "wags", "wall", "warp", "wasu"});

/// gspc's good answer: the property where a status has its code, then a newline.
bool isShareProperty(std::string_view bytes)
{
    return bytes.size() == kHeaderSize && bytes.starts_with("gspc ") &&
           bytes[kCountOffset + 1] == '\n';
}

bool isCountless(std::string_view bytes)
{
    if (isShareProperty(bytes)) {
        return true;
    }
    constexpr std::size_t kStart = kCodeSize + 1;
    return bytes.size() >= kStart && bytes[kCodeSize] == ' ' &&
           std::ranges::find(kCountless, bytes.substr(0, kCodeSize)) != kCountless.end();
}

bool isHeader(std::string_view bytes)
{
    return isTagged(bytes, '\n');
}

Answer readNothing(std::string_view /*bytes*/)
{
    return {};
}

Answer readWord(std::string_view bytes)
{
    Answer answer;
    answer.value = wordAt(bytes, 0);
    return answer;
}

/// An error's or a status's code, and the tag before it.
Answer readTagged(std::string_view bytes)
{
    Answer answer;
    answer.tag = bytes.substr(0, kCodeSize);
    answer.value = wordAt(bytes, kCountOffset);
    return answer;
}

std::vector<std::string> splitLines(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, size));
        text.remove_prefix(std::min(size + 1, text.size()));
    }
    return lines;
}

Answer readCountless(std::string_view bytes)
{
    Answer answer;
    answer.tag = bytes.substr(0, kCodeSize);
    answer.lines = splitLines(bytes.substr(kCodeSize + 1));
    return answer;
}

Answer readHeader(std::string_view bytes)
{
    Answer answer = readTagged(bytes);
    std::string_view rest = bytes.substr(kHeaderSize);
    const std::size_t errorSize = kErrorTag.size() + kWordSize;
    if (rest.size() >= errorSize && isError(rest.substr(rest.size() - errorSize)) &&
        isKnown(wordAt(rest, rest.size() - kWordSize))) {
        answer.trailingError = wordAt(rest, rest.size() - kWordSize);
        rest.remove_suffix(errorSize);
    }
    answer.lines = splitLines(rest);
    return answer;
}

struct ShapeRow {
    Shape shape;
    bool (*matches)(std::string_view bytes);
    Answer (*read)(std::string_view bytes);
};

/// The first shape that matches is the answer's.
constexpr auto kShapes = std::to_array<ShapeRow>({
    {Shape::kEmpty, isEmpty, readNothing},
    {Shape::kWord, isWord, readWord},
    {Shape::kError, isError, readTagged},
    {Shape::kTagged, isCountless, readCountless},
    {Shape::kStatus, isStatus, readTagged},
    {Shape::kHeader, isHeader, readHeader},
});

// ---- Saying it --------------------------------------------------------------------------------

std::string_view wordsFor(std::string_view command, std::uint32_t code)
{
    const auto* row = std::ranges::find_if(kStatusWords, [=](const StatusWords& each) {
        return each.code == code && (each.command.empty() || each.command == command);
    });
    return (row != kStatusWords.end()) ? row->words
                                       : "this client does not know the answer's meaning";
}

std::string hexOf(std::uint32_t code)
{
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), "0x%08X", code);
    return number.data();
}

/// A status code and its meaning.
std::string explainStatus(std::string_view command, std::uint32_t code)
{
    return hexOf(code) + ": " + std::string(wordsFor(command, code));
}

std::string quote(std::string_view text)
{
    std::string quoted = "\"";
    quoted += view::makePrintable(text).text;
    quoted += '"';
    return quoted;
}

std::string describeLines(const Answer& answer, std::string_view command)
{
    std::string text;
    for (const std::string& line : answer.lines) {
        text += "\n  " + view::makePrintable(line).text;
    }
    if (answer.trailingError) {
        text += "\nfollowed by an error, " + explainStatus(command, *answer.trailingError);
    }
    return text;
}

} // namespace

Answer readAnswer(std::string_view bytes)
{
    for (const ShapeRow& row : kShapes) {
        if (row.matches(bytes)) {
            Answer answer = row.read(bytes);
            answer.shape = row.shape;
            return answer;
        }
    }
    return {};
}

std::string refusalSentence(std::string_view command, std::uint32_t code)
{
    return std::string(wordsFor(command, code)) + " (" + hexOf(code) + ")";
}

std::string describeAnswer(const Answer& answer, std::string_view command)
{
    switch (answer.shape) {
    case Shape::kEmpty:
        return "empty: the command was ignored, is not known, or failed before it answered";
    case Shape::kWord:
        return "status " + explainStatus(command, answer.value);
    case Shape::kError:
        return "error " + explainStatus(command, answer.value);
    case Shape::kStatus:
        return quote(answer.tag) + " with status " + explainStatus(command, answer.value);
    case Shape::kHeader:
        return quote(answer.tag) + " with count " + std::to_string(answer.value) +
               describeLines(answer, command);
    case Shape::kTagged:
        return quote(answer.tag) + " and" +
               (answer.lines.empty() ? " nothing more" : describeLines(answer, command));
    case Shape::kUnreadable:
        break;
    }
    return "of no shape that this client knows";
}

std::string hexdump(std::string_view bytes)
{
    constexpr std::size_t kPerLine = 16;
    std::string out;
    for (std::size_t offset = 0; offset < bytes.size(); offset += kPerLine) {
        std::array<char, 24> text{};
        std::snprintf(text.data(), text.size(), "%08zx ", offset);
        std::string numbers = text.data();
        std::string characters;
        for (const char c : bytes.substr(offset, kPerLine)) {
            std::snprintf(text.data(), text.size(), " %02x", core::byteOf(c));
            numbers += text.data();
            characters += (c >= ' ' && c <= '~') ? c : '.';
        }
        numbers.resize(9 + 3 * kPerLine, ' ');
        out.append(numbers).append("  |").append(characters).append("|\n");
    }
    return out;
}

} // namespace client
