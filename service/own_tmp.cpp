// SPDX-License-Identifier: MIT
#include "service/own_tmp.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "service/log.h"

namespace service {
namespace {

constexpr const char* kTmp = "/tmp";
constexpr mode_t kFolderMode = 0700;
constexpr mode_t kWritableToOthers = S_IWGRP | S_IWOTH;

[[noreturn]] void fail(const std::string& reason)
{
    throw NoOwnTmp("cannot have a /tmp of its own: " + reason +
                   ". Other accounts can forge the work files in a shared /tmp; to use it anyway: "
                   "--shared-tmp");
}

[[noreturn]] void failAt(const std::string& what)
{
    fail(what + ": " + std::strerror(errno));
}

/// A folder, open; closed with this object.
class Folder {
  public:
    /// Makes the folder if it is not there.
    explicit Folder(const std::string& path)
    {
        ::mkdir(path.c_str(), kFolderMode);
        descriptor_ = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (descriptor_ < 0 || ::fstat(descriptor_, &status_) != 0) {
            failAt(path);
        }
        if (status_.st_uid != ::geteuid() || (status_.st_mode & kWritableToOthers) != 0) {
            ::close(descriptor_);
            fail(path + " belongs to another account, or others may write to it; remove it");
        }
    }

    ~Folder() { ::close(descriptor_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    /// Closes it to all other accounts.
    void close() const { ::fchmod(descriptor_, kFolderMode); }

    [[nodiscard]] bool isAt(const char* path) const
    {
        struct stat other = {};
        return ::stat(path, &other) == 0 && other.st_dev == status_.st_dev &&
               other.st_ino == status_.st_ino;
    }

  private:
    int descriptor_ = -1;
    struct stat status_ = {};
};

/// Whether only root can put files into /tmp.
bool isTmpClosed()
{
    struct stat status = {};
    return ::lstat(kTmp, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == 0 &&
           (status.st_mode & kWritableToOthers) == 0;
}

/// Later mounts of others still arrive here (a disk that is plugged in), because there may be
/// shares on them; mounts made here reach no other process.
bool unshareMounts()
{
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) == 0;
}

} // namespace

void useOwnTmp(const std::string& folder)
{
    if (::geteuid() != 0) {
        log("does not run as root, so it uses the shared /tmp, where other accounts can forge its "
            "work files");
        return;
    }
    const std::string path = folder + kTmp;
    const Folder parent(folder);
    const Folder own(path);
    own.close();
    if (own.isAt(kTmp)) {
        return;
    }
    if (!unshareMounts()) {
        if (errno == EPERM && isTmpClosed()) {
            return;
        }
        failAt("unsharing mounts");
    }
    if (::mount(path.c_str(), kTmp, nullptr, MS_BIND, nullptr) != 0) {
        failAt(path);
    }
}

} // namespace service
