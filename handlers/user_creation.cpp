// SPDX-License-Identifier: MIT
#include "handlers/user_creation.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "core/core.h"
#include "handlers/share_creation.h"
#include "handlers/users.h"

namespace handlers {
namespace {

using cmdsvc::requestLine;

constexpr std::size_t kLongestPassword = 32;

// Each step gives back the code that the command ends with, or kGood.

/// Leaves the name in the request line.
std::uint32_t readName()
{
    cmdsvc::readParameterLine();
    if (!cmdsvc::cutNewline()) {
        return cmdsvc::kMalformed;
    }
    const std::string_view name(requestLine.data());
    dbg_trace("cmd_crat() username=%s", name.data());
    for (const char c : name) {
        dbg_trace("0x%02X %c", static_cast<unsigned>(core::byteOf(c)), c);
    }
    return (name.size() > cmdsvc::kLongestUserName) ? cmdsvc::kUserNameTooLong : cmdsvc::kGood;
}

std::uint32_t checkName(const char* name)
{
    switch (isUserExisted(name)) {
    case 0:
        return (isNameAllowed(name) == 0) ? cmdsvc::kUserNameTaken : cmdsvc::kGood;
    case 1:
        return cmdsvc::kUserNameTaken;
    default:
        return cmdsvc::kCommandFailed;
    }
}

/// Leaves the password in the request line.
std::uint32_t readPassword()
{
    cmdsvc::readParameterLine();
    if (!cmdsvc::cutNewline()) {
        dbg_trace("Missing password: %s", requestLine.data());
        return cmdsvc::kMalformed;
    }
    const std::string_view password(requestLine.data());
    dbg_trace("password=%s", password.data());
    return (password.size() > kLongestPassword) ? cmdsvc::kPasswordTooLong : cmdsvc::kGood;
}

std::uint32_t addUser(const char* name, const char* password)
{
    core::CommandLine line;
    core::formatBounded(line, "%s tovAddUser '%s' '%s'", core::kUserScript, name, password);
    const core::ShellRun run = core::runShellLine(line.data());
    dbg_trace("create_user: %s -- iRet:%d", line.data(), run.result);
    if (!core::succeeded(run)) {
        dbg_trace("cannot create user %s", name);
        return cmdsvc::kUserNotCreated;
    }
    return cmdsvc::kGood;
}

std::uint32_t createUser(const char* name)
{
    std::uint32_t code = checkName(name);
    if (code == cmdsvc::kGood) {
        code = readPassword();
    }
    if (code != cmdsvc::kGood) {
        return code;
    }
    const core::Text password = core::copyText(requestLine.data());
    return password ? addUser(name, password.get()) : cmdsvc::kNoMemory;
}

std::uint32_t readAndCreateUser()
{
    const std::uint32_t code = readName();
    if (code != cmdsvc::kGood) {
        return code;
    }
    const core::Text name = core::copyText(requestLine.data());
    return name ? createUser(name.get()) : cmdsvc::kNoMemory;
}

} // namespace
} // namespace handlers

void cmd_crat(void)
{
    const std::uint32_t code = handlers::readAndCreateUser();
    if (code != cmdsvc::kGood) {
        cmdsvc::endWithWord(code);
        return;
    }
    cmdsvc::writeWord(cmdsvc::kGood);
}
