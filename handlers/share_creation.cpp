// SPDX-License-Identifier: MIT
#include "handlers/share_creation.h"

#include <cerrno>
#include <cstring>
#include <string_view>

#include "handlers/handler.h"
#include "handlers/reserved_names.h"
#include "handlers/shares.h"
#include "handlers/users.h"

namespace handlers {
namespace {

// ---- pshr -------------------------------------------------------------------------------------

constexpr Parameter kGuest = cmdsvc::parameter("pshr", "guest");
constexpr Parameter kPublicShare = cmdsvc::parameter("pshr", "share");

void dropLastCharacter(ParameterLine& line)
{
    const std::size_t size = std::strlen(line.text());
    if (size > 0) {
        line.bytes[size - 1] = '\0';
    }
}

bool endsWithNewline(const ParameterLine& line)
{
    return std::string_view(line.text()).ends_with('\n');
}

/// Takes the line with the public share's name: the second line if the first is "guest", else the
/// first.
Status takePublicShare(Channel& channel, ParameterLine& share)
{
    share = channel.takeLine(kGuest);
    if (!share.cutNewline()) {
        return kMalformed;
    }
    if (std::string_view(share.text()) == "guest") {
        share = channel.takeLine(kPublicShare);
        if (!endsWithNewline(share)) {
            return kMalformed;
        }
    }
    // After "guest" this drops the line's newline. A name without "guest" before it loses its last
    // character; clients may rely on that.
    dropLastCharacter(share);
    dbg_trace("cmd_pshr() sharename=%s", share.text());
    return kPublicShare.isTooLong(std::strlen(share.text())) ? kPublicShare.limit.code : kGood;
}

Status checkPublicShare(const char* share)
{
    switch (isShareNameExisted(share)) {
    case -1:
        return kCommandFailed;
    case 1:
        return kShareNameTaken;
    default:
        return (isNameAllowed(share) == 0) ? kShareNameTaken : kGood;
    }
}

Status createPublicShare(Channel& channel)
{
    ParameterLine line;
    Status status = takePublicShare(channel, line);
    if (status != kGood) {
        return status;
    }
    core::Text share;
    status = line.copyTo(share);
    if (status != kGood) {
        dbg_trace("cmd_pshr() allmem error=%s", std::strerror(errno));
        return status;
    }
    status = checkPublicShare(share.get());
    if (status != kGood) {
        return status;
    }
    return (create_shar(share.get(), "public") == 0) ? kGood : kCommandFailed;
}

// ---- shar -------------------------------------------------------------------------------------

constexpr Parameter kUser = cmdsvc::parameter("shar", "user");
constexpr Parameter kPrivateShare = cmdsvc::parameter("shar", "share");

Status takeUser(Channel& channel, core::Text& user)
{
    ParameterLine line = channel.takeLine(kUser);
    if (!line.cutNewline()) {
        dbg_trace("cmd_shar=%s", line.text());
        return kMalformed;
    }
    dbg_trace("cmd_shar() username=%s", line.text());
    return line.copyTo(user);
}

Status checkUser(const char* user)
{
    if (isUserExisted(user) == 0) {
        return kNoSuchUser;
    }
    if (isNameAllowed(user) == 0) {
        dbg_trace("cmd_shar() failed for user:'%s' reserved name for system", user);
        return kNoSuchUser;
    }
    return kGood;
}

Status takePrivateShare(Channel& channel, core::Text& share)
{
    ParameterLine line = channel.takeLine(kPrivateShare);
    dbg_trace("cmd_shar() sharename: %s", line.text());
    if (!line.cutNewline()) {
        return kMalformed;
    }
    dbg_trace("cmd_shar() sharename=%s", line.text());
    if (kPrivateShare.isTooLong(std::strlen(line.text()))) {
        return kPrivateShare.limit.code;
    }
    return line.copyTo(share);
}

Status checkPrivateShare(const char* share)
{
    switch (isShareNameExisted(share)) {
    case 1:
        dbg_trace("cmd_shar()share name existed: %s", share);
        return kShareNameTaken;
    case -1:
        return kCommandFailed;
    default:
        break;
    }
    if (isNameAllowed(share) == 0) {
        dbg_trace("cmd_shar() failed for share:'%s' reserved name for system", share);
        return kShareNameTaken;
    }
    return kGood;
}

Status giveShare(const char* user, const char* share)
{
    if (create_shar(share, "private") != 0) {
        return kCommandFailed;
    }
    if (setUserPrivilege(user, share) != 0) {
        dbg_trace("cmd_shar() failed setUserPrivilege for share: %s, user:%s ", share, user);
        return kCommandFailed;
    }
    return kGood;
}

Status createPrivateShare(Channel& channel)
{
    core::Text user;
    core::Text share;
    Status status = takeUser(channel, user);
    if (status == kGood) {
        status = checkUser(user.get());
    }
    if (status == kGood) {
        status = takePrivateShare(channel, share);
    }
    if (status == kGood) {
        status = checkPrivateShare(share.get());
    }
    return (status == kGood) ? giveShare(user.get(), share.get()) : status;
}

} // namespace
} // namespace handlers

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
    cmdsvc::serve(cmdsvc::command("pshr"), handlers::createPublicShare);
}

void cmd_shar(void)
{
    cmdsvc::serve(cmdsvc::command("shar"), handlers::createPrivateShare);
}
