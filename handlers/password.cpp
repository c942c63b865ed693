// SPDX-License-Identifier: MIT
#include "handlers/password.h"

#include <array>
#include <memory>
#include <string_view>

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "core/core.h"
#include "handlers/nt_password.h"
#include "handlers/smb_passwd.h"

namespace handlers {
namespace {

constexpr const char* kPasswordFile = "/usr/private/smbpasswd";

using Line = std::array<char, 256>;

bool readText(Line& line)
{
    if (!core::readLine(cmdsvc::requestStream(), line)) {
        return false;
    }
    cmdsvc::cutNewline(line.data());
    return true;
}

struct PasswdCloser {
    void operator()(SmbPasswdHandle* handle) const noexcept { closeSmbPasswd(handle); }
};

/// Finds a user's account. A line that is no account ends the search like the end of the file.
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

} // namespace
} // namespace handlers

void cmd_wall(void)
{
    using namespace handlers;

    Line user;
    Line password;
    if (!readText(user) || !readText(password)) {
        cmdsvc::endWithError(cmdsvc::kMalformed);
        return;
    }
    SmbPasswdEntry entry = {};
    if (!findAccount(user.data(), entry) ||
        checkNtPassword(&entry, user.data(), password.data()) != 0) {
        cmdsvc::endWithError(cmdsvc::kNotVerified);
        return;
    }
    cmdsvc::writeAnswer("wall \n");
}
