// SPDX-License-Identifier: MIT
#include "handlers/password.h"

#include <memory>
#include <string_view>

#include "core/bytes.h"
#include "handlers/handler.h"
#include "handlers/nt_password.h"
#include "handlers/smb_passwd.h"

namespace handlers {
namespace {

constexpr const char* kPasswordFile = "/usr/private/smbpasswd";

struct PasswdCloser {
    void operator()(SmbPasswdHandle* handle) const noexcept { closeSmbPasswd(handle); }
};

/// Finds a user's account. The search ends at a line that is no account.
bool findAccount(std::string_view user, SmbPasswdEntry& entry)
{
    SmbPasswdHandle* opened = nullptr;
    if (openSmbPasswd(&opened, kPasswordFile) != 0) {
        return false;
    }
    const std::unique_ptr<SmbPasswdHandle, PasswdCloser> handle(opened);
    while (readSmbPasswdEntry(handle.get(), &entry) == 0) {
        if (core::equalIgnoringCase(entry.name, user)) {
            return true;
        }
    }
    return false;
}

Status checkPassword(Channel& channel)
{
    ParameterLine user = channel.takeLine(cmdsvc::parameter("wall", "user"));
    ParameterLine password = channel.takeLine(cmdsvc::parameter("wall", "password"));
    if (user.isMissing || password.isMissing) {
        return kMalformed;
    }
    user.cutNewline();
    password.cutNewline();
    SmbPasswdEntry entry = {};
    if (!findAccount(user.text(), entry) ||
        checkNtPassword(&entry, user.text(), password.text()) != 0) {
        return kNotVerified;
    }
    channel.write(channel.tag());
    channel.write("\n");
    return kGood;
}

} // namespace
} // namespace handlers

void cmd_wall(void)
{
    cmdsvc::serve(cmdsvc::command("wall"), handlers::checkPassword);
}
