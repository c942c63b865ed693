// SPDX-License-Identifier: MIT
#include "page/own_tmp.h"

#include <cerrno>
#include <cstring>
#include <sched.h>
#include <stdexcept>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "page/private_files.h"

namespace page {
namespace {

constexpr const char* kTmp = "/tmp";
constexpr const char* kServiceFolder = "/run/vokcontrol";
constexpr const char* kServiceTmp = "/run/vokcontrol/tmp";

/// Others' mounts go on arriving here; this one reaches nobody else.
bool bindServiceTmp()
{
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) == 0 &&
           ::mount(kServiceTmp, kTmp, nullptr, MS_BIND, nullptr) == 0;
}

} // namespace

bool isClosedToOthers(const char* folder)
{
    struct stat found = {};
    return ::lstat(folder, &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == 0 &&
           (found.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

void requireOwnTmp()
{
    if (::geteuid() != 0 || isClosedToOthers(kTmp)) {
        return;
    }
    requirePrivateFolder(kServiceFolder);
    requirePrivateFolder(kServiceTmp);
    if (!bindServiceTmp() || !isClosedToOthers(kTmp)) {
        throw std::runtime_error(
            std::string("others can write to /tmp, and a /tmp of the pages' own "
                        "cannot be had: ") +
            std::strerror(errno));
    }
}

} // namespace page
