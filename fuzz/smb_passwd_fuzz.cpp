// SPDX-License-Identifier: MIT
//
// Reads each account of a password file, and checks a password against it.
#include <algorithm>
#include <cerrno>
#include <span>

#include "fuzz/fuzz.h"
#include "handlers/nt_password.h"
#include "handlers/smb_passwd.h"

namespace {

constexpr const char* kFile = "/tmp/smbpasswd";

bool isTerminated(std::span<const char> text)
{
    return std::ranges::find(text, '\0') != text.end();
}

void checkAccount(const SmbPasswdEntry& account)
{
    fuzz::require(isTerminated(account.name));
    constexpr int kFlags =
        kSmbUser | kSmbNoPassword | kSmbDisabled | kSmbNeverExpires | kSmbWorkstation;
    fuzz::require((account.flags & ~kFlags) == 0);
    const int verdict = checkNtPassword(&account, account.name, "password");
    fuzz::require(verdict == 0 || verdict == -1);
    fuzz::require(verdict == -1 || isTerminated(account.ntHash));
}

/// @return the number of accounts, without the lines that are no account
int readAccounts(SmbPasswdHandle* file)
{
    int accounts = 0;
    for (;;) {
        SmbPasswdEntry account;
        errno = 0;
        if (readSmbPasswdEntry(file, &account) == 0) {
            checkAccount(account);
            ++accounts;
        } else if (errno != EINVAL) {
            return accounts;
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::writeFile(kFile, fuzz::textOf(data, size));
    SmbPasswdHandle* file = nullptr;
    fuzz::require(openSmbPasswd(&file, kFile) == 0);
    const int accounts = readAccounts(file);
    fuzz::require(rewindSmbPasswd(file) == 0 && readAccounts(file) == accounts);
    fuzz::require(closeSmbPasswd(file) == 0);
    return 0;
}
