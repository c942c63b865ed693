// SPDX-License-Identifier: MIT
#include "handlers/user_creation.h"

#include <string_view>

#include "core/bytes.h"
#include "handlers/handler.h"
#include "handlers/reserved_names.h"
#include "handlers/users.h"

namespace handlers {
namespace {

constexpr Parameter kUser = cmdsvc::parameter("crat", "user");
constexpr Parameter kPassword = cmdsvc::parameter("crat", "password");

Status checkNameLine(ParameterLine& line)
{
    if (!line.cutNewline()) {
        return kMalformed;
    }
    const std::string_view name(line.text());
    dbg_trace("cmd_crat() username=%s", name.data());
    for (const char c : name) {
        dbg_trace("0x%02X %c", static_cast<unsigned>(core::byteOf(c)), c);
    }
    return kUser.isTooLong(name.size()) ? kUser.limit.code : kGood;
}

Status checkName(const char* name)
{
    switch (isUserExisted(name)) {
    case 0:
        return (isNameAllowed(name) == 0) ? kUserNameTaken : kGood;
    case 1:
        return kUserNameTaken;
    default:
        return kCommandFailed;
    }
}

Status checkPasswordLine(ParameterLine& line)
{
    if (!line.cutNewline()) {
        dbg_trace("Missing password: %s", line.text());
        return kMalformed;
    }
    const std::string_view password(line.text());
    dbg_trace("password=%s", password.data());
    return kPassword.isTooLong(password.size()) ? kPassword.limit.code : kGood;
}

Status takeName(Channel& channel, core::Text& name)
{
    ParameterLine line = channel.takeLine(kUser);
    const Status status = checkNameLine(line);
    return (status == kGood) ? line.copyTo(name) : status;
}

Status takePassword(Channel& channel, core::Text& password)
{
    ParameterLine line = channel.takeLine(kPassword);
    const Status status = checkPasswordLine(line);
    return (status == kGood) ? line.copyTo(password) : status;
}

Status addUser(const char* name, const char* password)
{
    core::CommandLine line;
    core::formatBounded(line, "%s tovAddUser '%s' '%s'", core::kUserScript, name, password);
    const core::ShellRun run = core::runShellLine(line.data());
    dbg_trace("create_user: %s -- iRet:%d", line.data(), run.result);
    if (!core::succeeded(run)) {
        dbg_trace("cannot create user %s", name);
        return kUserNotCreated;
    }
    return kGood;
}

Status createUser(Channel& channel)
{
    core::Text name;
    core::Text password;
    Status status = takeName(channel, name);
    if (status == kGood) {
        status = checkName(name.get());
    }
    if (status == kGood) {
        status = takePassword(channel, password);
    }
    return (status == kGood) ? addUser(name.get(), password.get()) : status;
}

} // namespace
} // namespace handlers

void cmd_crat(void)
{
    cmdsvc::serve(cmdsvc::command("crat"), handlers::createUser);
}
