// SPDX-License-Identifier: MIT
//
// commands.h: every command of the protocol, one row each: what it takes, what it answers, and how
// it refuses. Dispatcher, handlers, gate and client read these rows; what they need to know of a
// command stands here and nowhere else. The functions that carry commands out stand beside the
// handlers (handlers/command_table.cpp).
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "cmdsvc/protocol.h"
#include "vokcontrol.h"

namespace cmdsvc {

// ---- What a row says --------------------------------------------------------------------------

/// Who may send a command. The service asks for the right; the dispatcher carries out whatever it
/// gets.
enum class Right : std::uint8_t {
    kFull, ///< only who may do everything
    kView, ///< also who may only look: it changes nothing that lasts, and tells nothing that is
           ///< secret
};

/// The parameter counts that a command takes.
struct CountRule {
    bool isChecked;
    std::uint8_t least;
    std::uint8_t most;

    [[nodiscard]] constexpr bool accepts(std::uint8_t count) const
    {
        return !isChecked || (count >= least && count <= most);
    }
};

inline constexpr CountRule kAnyCount = {false, 0, 0};

[[nodiscard]] constexpr CountRule exactly(std::uint8_t count)
{
    return {true, count, count};
}

[[nodiscard]] constexpr CountRule between(std::uint8_t least, std::uint8_t most)
{
    return {true, least, most};
}

/// How a request with a wrong count ends. Its answer is the row's code as a bare word; the answer
/// stream stays open, and the process's end or the next request completes it.
enum class WrongCountExit {
    kNoWrongCount,
    kPlain,       ///< closes the slot, removes the work file; returns the trace's result
    kCountTraced, ///< the same, and first traces the count
    kLineTraced,  ///< the same as kPlain; the request line is traced before the count is checked
    kKeepsFile,   ///< leaves the slot's file open; returns -1
};

/// The shape of an answer that refuses.
enum class RefusalShape {
    kNeverRefuses,
    kAsWord,   ///< the code as a bare word
    kAsError,  ///< "erro " and the code
    kAsStatus, ///< the command's name and the code
};

/// How a command refuses: as a rule, and a malformed parameter.
struct Refusals {
    RefusalShape shape = RefusalShape::kNeverRefuses;
    Status malformed = kGood; ///< the code for a malformed parameter
    RefusalShape malformedShape = shape;
};

/// The shape of a good answer.
enum class AnswerShape {
    kNone,   ///< nothing at all
    kWord,   ///< a bare word
    kStatus, ///< the command's name and a code
    kHeader, ///< a tag and a count; lines follow it
    kBytes,  ///< a tag; what follows it is the command's own
};

/// A good answer.
struct Answer {
    AnswerShape shape = AnswerShape::kNone;
    std::string_view tag = {}; ///< of a header or of bytes
    Status code = kGood;       ///< of a word or a status
};

/// Where a parameter's text meets a shell. In every context but kNowhere it may be traced, too,
/// which puts it between double quotes.
enum class ShellContext {
    kNowhere,      ///< no shell ever sees it
    kDoubleQuotes, ///< between double quotes
    kSingleQuotes, ///< between single quotes
    kName,         ///< in both of them, and where it is traced, outside of them; and in a file name
    kNameLine,     ///< the same; a newline at its end is only traced
    kNewUser,      ///< as kName, and in the appliance's lists of users, which a byte 0xFF ends
    kWord,         ///< an argument without quotes
    kClock,        ///< the same, a time
    kEscaped,      ///< as kName, once its backslashes are dropped
    kSize,         ///< a size; it is traced as if it were text
};

/// How a parameter stands in the request.
enum class Layout {
    kLine,        ///< a line of text
    kNumber,      ///< 32 bits and a newline
    kNumberLine,  ///< the same, taken as a line: a byte 0x0A among the 32 bits ends it early
    kByte,        ///< one byte
    kText,        ///< bytes up to a newline or a zero byte
    kRest,        ///< all that is left
    kInFirstLine, ///< text in the request's first line
};

/// What a line is taken into unless its row says otherwise, in bytes, its terminator counted.
inline constexpr std::size_t kLineRoom = VOK_REQUEST_SIZE - 1;

/// The longest value that a handler takes, in bytes, and the code with which it refuses a longer
/// one; 0 if it takes any.
struct Limit {
    std::size_t longest = 0;
    Status code = kGood;
};

struct Parameter {
    std::string_view name;
    Layout layout = Layout::kLine;
    ShellContext context = ShellContext::kNowhere;
    std::size_t room = kLineRoom; ///< of a line
    Limit limit = {};
    std::size_t offset = 0;     ///< in the first line
    std::size_t restOffset = 0; ///< where the next line goes if a length of 10 has ended the first

    /// Whether a value of this size is more than the handler takes.
    [[nodiscard]] constexpr bool isTooLong(std::size_t size) const
    {
        return limit.longest != 0 && size > limit.longest;
    }
};

inline constexpr std::size_t kMostParameters = 4;

/// A command's parameters, in the order in which its handler takes them.
struct ParameterList {
    std::array<Parameter, kMostParameters> slots = {};

    [[nodiscard]] constexpr auto begin() const { return slots.begin(); }
    [[nodiscard]] constexpr auto end() const
    {
        return std::ranges::find(slots, std::string_view(), &Parameter::name);
    }
};

struct Command {
    std::string_view code;
    Right right;
    CountRule count;
    Status wrongCountCode;
    WrongCountExit wrongCountExit;
    Refusals refusals;
    Answer answer;
    ParameterList parameters = {};
};

// ---- The words that rows are written in -------------------------------------------------------

namespace rows {

using enum Right;
using enum WrongCountExit;
using enum RefusalShape;
using enum Layout;
using enum ShellContext;

inline constexpr Refusals kNeverRefused = {};

inline constexpr Answer kNothing = {};
inline constexpr Answer kCode = {AnswerShape::kWord};
inline constexpr Answer kStatus = {AnswerShape::kStatus};

constexpr Answer word(Status code)
{
    return {AnswerShape::kWord, {}, code};
}

constexpr Answer header(std::string_view tag)
{
    return {AnswerShape::kHeader, tag};
}

constexpr Answer bytes(std::string_view tag)
{
    return {AnswerShape::kBytes, tag};
}

/// The room of a line. Those of remote access and passwords are shorter; those of signing up by one
/// byte more.
inline constexpr std::size_t kLongRoom = kLineRoom;
inline constexpr std::size_t kShortRoom = 256;
inline constexpr std::size_t kSignUpRoom = kShortRoom - 1;

constexpr ParameterList takes(Parameter first, Parameter second = {}, Parameter third = {},
                              Parameter fourth = {})
{
    return {{first, second, third, fourth}};
}

inline constexpr Limit kNewUserName = {kLongestUserName, kUserNameTooLong};
inline constexpr Limit kNewPassword = {32, kPasswordTooLong};
inline constexpr Limit kNewShareName = {kLongestShareName, kShareNameTooLong};
inline constexpr Limit kShareName = {kLongestShareName, kBadShareName};
inline constexpr Limit kHostName = {32, kHostNameTooLong};
inline constexpr Limit kWorkGroup = {32, kWorkGroupTooLong};

// clang-format off
/// In alphabetical order.
inline constexpr auto kTable = std::to_array<Command>({
    // code  right  count          wrong count                exit           refusals                             good answer
    {"crat", kFull, exactly(2),    kMalformed,                kPlain,        {kAsWord, kMalformed},               kCode,
        takes({"user", kLine, kNewUser, kLongRoom, kNewUserName}, {"password", kLine, kSingleQuotes, kLongRoom, kNewPassword})},
    {"dscr", kView, kAnyCount,     kGood,                     kNoWrongCount, kNeverRefused,                       kNothing},
    {"frst", kView, exactly(0),    kMalformed,                kPlain,        {kAsWord},                           kCode},
    {"getv", kView, exactly(1),    kMalformed,                kKeepsFile,    {kAsError, kRemoteFailed},           bytes("getv "),
        takes({"key", kNumber})},
    {"gps1", kView, exactly(0),    kWrongCountOfShareCommand, kPlain,        kNeverRefused,                       header("gpsr")},
    {"gpsn", kView, kAnyCount,     kGood,                     kNoWrongCount, kNeverRefused,                       bytes("gpsn ")},
    // What people keep in the private file is theirs to tell.
    {"gpvt", kFull, exactly(0),    kMalformed,                kPlain,        {kAsError},                          header("gprt")},
    // Its one answer ends it like a refusal.
    {"grst", kView, kAnyCount,     kGood,                     kNoWrongCount, {kAsWord},                           word(kDriveCountReadable)},
    // It answers a bad name as a word, and everything else as an error.
    {"gsp1", kView, exactly(1),    kWrongCountOfShareCommand, kPlain,        {kAsError, kBadShareName, kAsWord},  header("gspr"),
        takes({"share", kLine, kDoubleQuotes, kLongRoom, kShareName})},
    {"gspc", kView, kAnyCount,     kGood,                     kNoWrongCount, {kAsStatus, kSharePropertyUnknown},  bytes("gspc "),
        takes({"share", kInFirstLine, kDoubleQuotes, kLongRoom, {}, 6, 5})},
    // It leaves the mark that clients look for and, if nothing was published, starts a collection, as it
    // does for everybody: neither takes anything from anybody.
    {"gub1", kView, exactly(0),    kMalformed,                kPlain,        kNeverRefused,                       bytes("gubr ")},
    {"gubs", kView, kAnyCount,     kGood,                     kNoWrongCount, kNeverRefused,                       kNothing},
    {"host", kFull, exactly(4),    kMalformed,                kPlain,        {kAsWord, kMalformed},               kCode,
        takes({"time", kLine, kClock}, {"host name", kLine, kWord, kLongRoom, kHostName},
              {"work group", kLine, kWord, kLongRoom, kWorkGroup}, {"language", kLine, kWord})},
    {"ipcf", kView, kAnyCount,     kGood,                     kNoWrongCount, kNeverRefused,                       kNothing},
    {"lsts", kView, exactly(0),    kMalformed,                kPlain,        {kAsError},                          header("lsst")},
    {"lstu", kView, exactly(0),    kMalformed,                kPlain,        {kAsError},                          header("lsut")},
    {"pshr", kFull, exactly(3),    kMalformed,                kPlain,        {kAsWord, kMalformed},               kCode,
        takes({"guest", kLine, kName}, {"share", kLine, kName, kLongRoom, kNewShareName})},
    {"qlps", kView, exactly(0),    kMalformed,                kPlain,        {kAsError},                          header("qlrt")},
    {"rtov", kView, exactly(2),    kMalformed,                kPlain,        kNeverRefused,                       kNothing},
    {"sgss", kFull, exactly(0),    kWrongCountOfShareCommand, kPlain,        kNeverRefused,                       kCode},
    {"shar", kFull, exactly(3),    kMalformed,                kLineTraced,   {kAsWord, kMalformed},               kCode,
        takes({"user", kLine, kName}, {"share", kLine, kName, kLongRoom, kNewShareName})},
    {"spvt", kFull, exactly(2),    kMalformed,                kCountTraced,  {kAsWord, kMalformed},               kCode,
        takes({"size", kNumberLine, kSize}, {"content", kRest, kDoubleQuotes})},
    {"sub1", kFull, exactly(2),    kMalformed,                kPlain,        {kAsWord, kMalformed},               kCode,
        takes({"state", kByte}, {"byte after it", kByte}, {"user", kText, kEscaped})},
    {"subs", kFull, kAnyCount,     kGood,                     kNoWrongCount, {kAsStatus, kMalformed},             kStatus,
        takes({"user", kInFirstLine, kNameLine, kLongRoom, {}, 8, 6})},
    {"vers", kView, exactly(0),    kMalformed,                kPlain,        {kAsError},                          header("vert")},
    {"wags", kView, between(1, 2), kMalformed,                kKeepsFile,    {kAsError, kRemoteBadRequest},       bytes("wags "),
        takes({"entity", kLine, kDoubleQuotes, kShortRoom}, {"user", kLine, kName, kShortRoom})},
    {"wall", kFull, exactly(2),    kMalformed,                kKeepsFile,    {kAsError, kMalformed},              bytes("wall "),
        takes({"user", kLine, kNowhere, kShortRoom}, {"password", kLine, kNowhere, kShortRoom})},
    {"warp", kFull, exactly(3),    kMalformed,                kKeepsFile,    {kAsError, kRemoteFailed},           bytes("warp "),
        takes({"user", kLine, kNowhere, kSignUpRoom}, {"first value", kLine, kNowhere, kSignUpRoom},
              {"second value", kLine, kNowhere, kSignUpRoom})},
    {"wasu", kFull, exactly(4),    kMalformed,                kKeepsFile,    {kAsError, kRemoteFailed},           bytes("wasu "),
        takes({"user", kLine, kName, kShortRoom}, {"first value", kLine, kDoubleQuotes, kShortRoom},
              {"second value", kLine, kNowhere, kShortRoom}, {"switch", kByte})},
});
// clang-format on

} // namespace rows

inline constexpr const auto& kCommands = rows::kTable;

constexpr bool isWellFormed(const Command& command)
{
    const bool isCountChecked = command.wrongCountExit != WrongCountExit::kNoWrongCount;
    return command.code.size() == kCodeSize && command.count.isChecked == isCountChecked;
}

static_assert(std::ranges::all_of(kCommands, isWellFormed));
static_assert(std::ranges::adjacent_find(kCommands, std::ranges::greater_equal(), &Command::code) ==
                  kCommands.end(),
              "the codes are in order, and each stands there once");

// ---- Finding a row ----------------------------------------------------------------------------

/// @return the command's row, or null if there is no such command
[[nodiscard]] constexpr const Command* findCommand(std::uint32_t code)
{
    const auto* row =
        std::ranges::find(kCommands, code, [](const Command& each) { return codeWord(each.code); });
    return (row != kCommands.end()) ? row : nullptr;
}

/// The row of a command that is known when this is compiled; for another code it does not compile.
[[nodiscard]] consteval const Command& command(std::string_view code)
{
    return *findCommand(codeWord(code));
}

/// Where no parameter has the wanted name; what calls it does not compile.
void noSuchParameter();

/// A parameter of such a command, by its name.
[[nodiscard]] consteval const Parameter& parameter(std::string_view code, std::string_view name)
{
    const ParameterList& parameters = command(code).parameters;
    const auto* found = std::ranges::find(parameters, name, &Parameter::name);
    if (found == parameters.end()) {
        noSuchParameter();
    }
    return *found;
}

} // namespace cmdsvc
