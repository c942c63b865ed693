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

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"
#include "core/core.h"
#include "handlers/name_list.h"

namespace handlers {
namespace {

constexpr std::string_view kGuest = "guest";

using Path = std::array<char, 512>;
using Line = std::array<char, 512>;

// ---- The list ---------------------------------------------------------------------------------

/// Runs a shell line of which only the output matters.
bool runForOutput(const char* command)
{
    const core::ShellRun run = core::runShellLine(command);
    if (run.result < 0) {
        dbg_trace("system(%s) --  error: %d(%s) -- ", command, run.error, std::strerror(run.error));
        return false;
    }
    return true;
}

/// Has the user script write into one file, and its lines with user names into another.
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

/// The name in a line: behind the first "name>", up to the next "</".
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

/// A quoted text of the list, in the request line: the opening quote, the name, and then a zero
/// byte in place of the closing quote, at this index.
struct Token {
    std::size_t closing;

    [[nodiscard]] const char* name() const { return cmdsvc::requestLine.data() + 1; }
    [[nodiscard]] bool isGuest() const { return name() == kGuest; }
};

/// Reads the list character by character up to the end of the next quoted text. Text outside quotes
/// is passed over; of one that is too long for the line, the rest is.
/// @return false at the end of the list, for which a byte 0xFF counts, too
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
            cmdsvc::requestLine[index] = '\0';
            token.closing = index;
            return true;
        }
        if ((isQuote || index > 0) && index < cmdsvc::requestLine.size() - 1) {
            cmdsvc::requestLine[index] = static_cast<char>(character);
            ++index;
        }
    }
}

std::uint32_t countUsers(FILE* list)
{
    std::uint32_t count = 0;
    Token token{};
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

void reportUsers(FILE* list)
{
    Token token{};
    while (nextToken(list, token)) {
        if (token.isGuest()) {
            continue;
        }
        dbg_trace("reporting user %s -- %d", token.name(), static_cast<int>(token.closing));
        std::puts(token.name());
        cmdsvc::requestLine[token.closing] = '\n';
        cmdsvc::writeAnswer({token.name(), token.closing});
    }
}

/// Opens the list in the current-file slot, or ends with an error.
FILE* openList()
{
    FILE* list = cmdsvc::openCurrentFile(cmdsvc::kWorkFile);
    if (list == nullptr) {
        dbg_trace("cannot open file %s: %s", cmdsvc::kWorkFile, std::strerror(errno));
        cmdsvc::endWithError(cmdsvc::kCannotOpen);
    }
    return list;
}

/// Closes the list, or ends with an error.
bool closeList()
{
    if (cmdsvc::closeCurrentFile()) {
        return true;
    }
    dbg_trace("cannot close file %s: %s", cmdsvc::kWorkFile, std::strerror(errno));
    cmdsvc::endWithError(cmdsvc::kCannotClose);
    return false;
}

/// Whether there is a list to read; ends with an error where there is none.
bool checkList()
{
    struct stat status = {};
    if (::stat(cmdsvc::kWorkFile, &status) != 0) {
        dbg_trace("cannot stat file %s", cmdsvc::kWorkFile);
        cmdsvc::endWithError(cmdsvc::kCannotStat);
        return false;
    }
    dbg_trace("file %s size = %d bytes", cmdsvc::kWorkFile, static_cast<int>(status.st_size));
    if (status.st_size == 0) {
        cmdsvc::endWithError(cmdsvc::kUserListEmpty);
        return false;
    }
    return true;
}

/// First pass: the number of users goes ahead of their names.
bool answerCount()
{
    FILE* list = openList();
    if (list == nullptr) {
        return false;
    }
    const std::uint32_t count = countUsers(list);
    if (!closeList()) {
        return false;
    }
    cmdsvc::writeHeader("lsut", count);
    return true;
}

/// Second pass. An error is answered behind what has been written by then.
void answerNames()
{
    FILE* list = openList();
    if (list == nullptr) {
        return;
    }
    reportUsers(list);
    if (!closeList()) {
        return;
    }
    if (std::remove(cmdsvc::kWorkFile) != 0) {
        dbg_trace("cannot remove file %s: %s", cmdsvc::kWorkFile, std::strerror(errno));
        cmdsvc::endWithError(cmdsvc::kCannotRemove);
    }
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
    // A list that is cut short would deny people who have an account.
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
    using namespace handlers;

    getUsersList(cmdsvc::kWorkFile);
    if (checkList() && answerCount()) {
        answerNames();
    }
}
