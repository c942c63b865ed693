// SPDX-License-Identifier: MIT
#include "handlers/share_creation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "core/core.h"
#include "handlers/shares.h"
#include "handlers/users.h"

namespace handlers {
namespace {

using cmdsvc::requestLine;

constexpr auto kReservedNames =
    std::to_array<const char*>({".", "..", "config", "lost+found", "__mediabolic", "__mt-daapd",
                                "__raclient", "__autoupdate"});

// ---- What both commands refuse ----------------------------------------------------------------
//
// Each check gives back the code that the command ends with, or kGood.

std::uint32_t checkShareSize()
{
    return (std::strlen(requestLine.data()) > cmdsvc::kLongestShareName) ? cmdsvc::kShareNameTooLong
                                                                         : cmdsvc::kGood;
}

/// A check's code ends the command; nothing else is answered.
bool passes(std::uint32_t code)
{
    if (code != cmdsvc::kGood) {
        cmdsvc::endWithWord(code);
    }
    return code == cmdsvc::kGood;
}

// ---- pshr -------------------------------------------------------------------------------------

void dropLastCharacter()
{
    const std::size_t size = std::strlen(requestLine.data());
    if (size > 0) {
        requestLine[size - 1] = '\0';
    }
}

bool endsWithNewline()
{
    return std::string_view(requestLine.data()).ends_with('\n');
}

/// Leaves the public share's name in the request line.
std::uint32_t readPublicShare()
{
    cmdsvc::readParameterLine();
    if (!cmdsvc::cutNewline()) {
        return cmdsvc::kMalformed;
    }
    if (std::string_view(requestLine.data()) == "guest") {
        cmdsvc::readParameterLine();
        if (!endsWithNewline()) {
            return cmdsvc::kMalformed;
        }
    }
    // The newline of a name behind "guest". A name that stands alone loses a character of its own,
    // as it always has.
    dropLastCharacter();
    dbg_trace("cmd_pshr() sharename=%s", requestLine.data());
    return checkShareSize();
}

std::uint32_t createPublicShare()
{
    const core::Text share = core::copyText(requestLine.data());
    if (!share) {
        dbg_trace("cmd_pshr() allmem error=%s", std::strerror(errno));
        return cmdsvc::kNoMemory;
    }
    switch (isShareNameExisted(share.get())) {
    case -1:
        return cmdsvc::kCommandFailed;
    case 1:
        return cmdsvc::kShareNameTaken;
    default:
        break;
    }
    if (isNameAllowed(share.get()) == 0) {
        return cmdsvc::kShareNameTaken;
    }
    return (create_shar(share.get(), "public") == 0) ? cmdsvc::kGood : cmdsvc::kCommandFailed;
}

// ---- shar -------------------------------------------------------------------------------------

/// Leaves the user's name in the request line.
std::uint32_t readUser()
{
    cmdsvc::readParameterLine();
    if (!cmdsvc::cutNewline()) {
        dbg_trace("cmd_shar=%s", requestLine.data());
        return cmdsvc::kMalformed;
    }
    dbg_trace("cmd_shar() username=%s", requestLine.data());
    return cmdsvc::kGood;
}

std::uint32_t checkUser(const char* user)
{
    if (isUserExisted(user) == 0) {
        return cmdsvc::kNoSuchUser;
    }
    if (isNameAllowed(user) == 0) {
        dbg_trace("cmd_shar() failed for user:'%s' reserved name for system", user);
        return cmdsvc::kNoSuchUser;
    }
    return cmdsvc::kGood;
}

/// Leaves the private share's name in the request line.
std::uint32_t readPrivateShare()
{
    cmdsvc::readParameterLine();
    dbg_trace("cmd_shar() sharename: %s", requestLine.data());
    if (!cmdsvc::cutNewline()) {
        return cmdsvc::kMalformed;
    }
    dbg_trace("cmd_shar() sharename=%s", requestLine.data());
    return checkShareSize();
}

std::uint32_t checkPrivateShare(const char* share)
{
    switch (isShareNameExisted(share)) {
    case 1:
        dbg_trace("cmd_shar()share name existed: %s", share);
        return cmdsvc::kShareNameTaken;
    case -1:
        return cmdsvc::kCommandFailed;
    default:
        break;
    }
    if (isNameAllowed(share) == 0) {
        dbg_trace("cmd_shar() failed for share:'%s' reserved name for system", share);
        return cmdsvc::kShareNameTaken;
    }
    return cmdsvc::kGood;
}

/// Creates the share that the request line names, for a user.
std::uint32_t createPrivateShare(const char* user)
{
    const core::Text share = core::copyText(requestLine.data());
    if (!share) {
        return cmdsvc::kNoMemory;
    }
    const std::uint32_t code = checkPrivateShare(share.get());
    if (code != cmdsvc::kGood) {
        return code;
    }
    if (create_shar(share.get(), "private") != 0) {
        return cmdsvc::kCommandFailed;
    }
    if (setUserPrivilege(user, share.get()) != 0) {
        dbg_trace("cmd_shar() failed setUserPrivilege for share: %s, user:%s ", share.get(), user);
        return cmdsvc::kCommandFailed;
    }
    return cmdsvc::kGood;
}

} // namespace
} // namespace handlers

int isNameAllowed(const char* name)
{
    const bool isReserved = std::ranges::any_of(handlers::kReservedNames, [name](const char* each) {
        return core::equalIgnoringCase(name, each);
    });
    return isReserved ? 0 : 1;
}

int create_shar(const char* share, const char* property)
{
    dbg_trace("create_shar() %s - %s", share, property);
    core::CommandLine line;
    core::formatBounded(line, "%s tovAddShare '%s' '%s'", core::kShareScript, share, property);
    dbg_trace("create_shar() cmd: %s ", line.data());
    const core::ShellRun run = core::runShellLine(line.data());
    if (!core::succeeded(run)) {
        dbg_trace("create_shar() system(%s), iRet:%d", line.data(), run.result);
        return -1;
    }
    return 0;
}

int setUserPrivilege(const char* user, const char* share)
{
    core::CommandLine line;
    core::formatBounded(line, "%s tovSetUserSharePrivileges '%s' '%s' %s", core::kShareScript, user,
                        share, "full");
    dbg_trace("setUserPrivilege() cmd:%s", line.data());
    const core::ShellRun run = core::runShellLine(line.data());
    if (!core::succeeded(run)) {
        dbg_trace("setUserPrivilege() failed system(%s), iRet: %d, err: %s", line.data(),
                  run.result, std::strerror(run.error));
        return -1;
    }
    dbg_trace("setUserPrivilege() cmd:%s iRet:%d", line.data(), run.result);
    return 0;
}

void cmd_pshr(void)
{
    using namespace handlers;

    if (passes(readPublicShare()) && passes(createPublicShare())) {
        cmdsvc::writeWord(cmdsvc::kGood);
    }
}

void cmd_shar(void)
{
    using namespace handlers;

    if (!passes(readUser())) {
        return;
    }
    const core::Text user = core::copyText(requestLine.data());
    if (!passes(user ? cmdsvc::kGood : cmdsvc::kNoMemory)) {
        return;
    }
    if (passes(checkUser(user.get())) && passes(readPrivateShare()) &&
        passes(createPrivateShare(user.get()))) {
        cmdsvc::writeWord(cmdsvc::kGood);
    }
}
