// SPDX-License-Identifier: MIT
#include "handlers/users.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "handlers/handler.h"
#include "handlers/name_list.h"

namespace handlers {
namespace {

constexpr std::string_view kGuest = "guest";

using Path = std::array<char, 512>;
using Line = std::array<char, 512>;

// ---- The list ---------------------------------------------------------------------------------

/// Runs a shell line; only a failure to start it counts.
bool runForOutput(const char* command)
{
    const core::ShellRun run = core::runShellLine(command);
    if (run.result < 0) {
        dbg_trace("system(%s) --  error: %d(%s) -- ", command, run.error, std::strerror(run.error));
        return false;
    }
    return true;
}

/// Has the user script write to one file, and copies its lines with user names to another.
bool fetchUsers(const char* answer, const char* names)
{
    core::CommandLine command;
    core::formatBounded(command, "%s tovGetUsers %s", core::kUserScript, answer);
    if (!runForOutput(command.data())) {
        return false;
    }
    core::formatBounded(command, "cat %s | grep username >  %s", answer, names);
    return runForOutput(command.data());
}

/// The name in a line: after the first "name>", up to the next "</".
std::optional<std::string_view> nameIn(std::string_view line)
{
    constexpr std::string_view kOpen = "name>";
    const std::size_t open = line.find(kOpen);
    if (open == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view text = line.substr(open + kOpen.size());
    const std::size_t close = text.find("</");
    if (close == std::string_view::npos) {
        return std::nullopt;
    }
    return text.substr(0, close);
}

void writeFragment(FILE* names, FILE* fragment)
{
    std::fputs("return [\"guest\"", fragment);
    Line line;
    while (core::readLine(names, line)) {
        const std::optional<std::string_view> name = nameIn(line.data());
        if (name) {
            std::fprintf(fragment, ", \"%.*s\"", static_cast<int>(name->size()), name->data());
        }
    }
    std::fputs("];", fragment);
}

// ---- Existence --------------------------------------------------------------------------------

constexpr NameSearch kUserSearch = {
    .operation = "isUserExisted",
    .ignoresCase = false,
    .traceList =
        [](const char* list, const char* needle) {
            dbg_trace("isUserExisted() user return:%s -- userName: %s", list, needle);
        },
    .traceResult = [](int found) { dbg_trace("isUserExisted() iRet:%d", found); },
};

// ---- lstu -------------------------------------------------------------------------------------

/// A quoted text of the list: the opening quote, the name, and a zero byte in place of the closing
/// quote.
struct Token {
    std::array<char, core::kLineSize> text = {};
    std::size_t closing = 0; ///< where the closing quote would be

    [[nodiscard]] const char* name() const { return text.data() + 1; }
    [[nodiscard]] bool isGuest() const { return name() == kGuest; }
};

/// Reads the list character by character up to the end of the next quoted text. Text outside quotes
/// is skipped, and so is the end of a quoted text that is too long for the token.
/// @return false at the end of the list; a byte 0xFF counts as its end, too
bool nextToken(FILE* list, Token& token)
{
    std::size_t index = 0;
    while (true) {
        const int character = std::fgetc(list);
        if (character == EOF || character == 0xFF) {
            return false;
        }
        const bool isQuote = character == '"';
        if (isQuote && index > 0) {
            token.text[index] = '\0';
            token.closing = index;
            return true;
        }
        if ((isQuote || index > 0) && index < token.text.size() - 1) {
            token.text[index] = static_cast<char>(character);
            ++index;
        }
    }
}

std::uint32_t countUsers(FILE* list)
{
    std::uint32_t count = 0;
    Token token;
    while (nextToken(list, token)) {
        dbg_trace("comparing user: %s", token.name());
        if (!token.isGuest()) {
            dbg_trace("found user %s", token.name());
            ++count;
        }
    }
    dbg_trace("found %d user(s)", static_cast<int>(count));
    return count;
}

void reportUsers(Channel& channel, FILE* list)
{
    Token token;
    while (nextToken(list, token)) {
        if (token.isGuest()) {
            continue;
        }
        dbg_trace("reporting user %s -- %d", token.name(), static_cast<int>(token.closing));
        std::puts(token.name());
        token.text[token.closing] = '\n';
        channel.write({token.name(), token.closing});
    }
}

FILE* openList(Channel& channel)
{
    FILE* list = channel.openFile(kWorkFile);
    if (list == nullptr) {
        dbg_trace("cannot open file %s: %s", kWorkFile, std::strerror(errno));
    }
    return list;
}

Status closeList(Channel& channel)
{
    if (channel.closeFile()) {
        return kGood;
    }
    dbg_trace("cannot close file %s: %s", kWorkFile, std::strerror(errno));
    return kCannotClose;
}

/// Checks that there is a list, and that it is not empty.
Status checkList()
{
    struct stat status = {};
    if (::stat(kWorkFile, &status) != 0) {
        dbg_trace("cannot stat file %s", kWorkFile);
        return kCannotStat;
    }
    dbg_trace("file %s size = %d bytes", kWorkFile, static_cast<int>(status.st_size));
    return (status.st_size == 0) ? kUserListEmpty : kGood;
}

/// First pass: the number of users is answered before their names.
Status answerCount(Channel& channel)
{
    FILE* list = openList(channel);
    if (list == nullptr) {
        return kCannotOpen;
    }
    const std::uint32_t count = countUsers(list);
    const Status status = closeList(channel);
    if (status == kGood) {
        channel.writeHeader(count);
    }
    return status;
}

/// Second pass. An error is written after the names that are answered already.
Status answerNames(Channel& channel)
{
    FILE* list = openList(channel);
    if (list == nullptr) {
        return kCannotOpen;
    }
    reportUsers(channel, list);
    return closeList(channel);
}

Status removeList()
{
    if (std::remove(kWorkFile) != 0) {
        dbg_trace("cannot remove file %s: %s", kWorkFile, std::strerror(errno));
        return kCannotRemove;
    }
    return kGood;
}

Status listUsers(Channel& channel)
{
    getUsersList(kWorkFile);
    Status status = checkList();
    if (status == kGood) {
        status = answerCount(channel);
    }
    if (status == kGood) {
        status = answerNames(channel);
    }
    return (status == kGood) ? removeList() : status;
}

} // namespace
} // namespace handlers

int getUsersList(const char* path)
{
    using namespace handlers;

    Path answer;
    Path names;
    core::formatBounded(answer, "%s%d", path, ::getpid());
    core::formatBounded(names, "%s2", answer.data());
    if (!fetchUsers(answer.data(), names.data())) {
        return -1;
    }
    core::File fragment = core::openFile(path, "w");
    core::File lines = fragment ? core::openFile(names.data(), "r") : nullptr;
    if (!lines) {
        return -1;
    }
    writeFragment(lines.get(), fragment.get());
    // A list that is cut short would lack existing users.
    const bool isWritten = std::ferror(fragment.get()) == 0;
    if (std::fclose(fragment.release()) != 0 || !isWritten) {
        return -1;
    }
    lines.reset();
    std::remove(answer.data());
    std::remove(names.data());
    return 0;
}

int isUserExisted(const char* name)
{
    std::array<char, 64> path;
    core::formatBounded(path, "isUserExisted%d", ::getpid());
    if (getUsersList(path.data()) != 0) {
        return -1;
    }
    return handlers::searchNameList(path.data(), name, handlers::kUserSearch);
}

void cmd_lstu(void)
{
    cmdsvc::serve(cmdsvc::command("lstu"), handlers::listUsers);
}
