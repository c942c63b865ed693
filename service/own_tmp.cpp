// SPDX-License-Identifier: MIT
#include "service/own_tmp.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
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
                   ". Work files in everybody's /tmp can be forged; --shared-tmp uses it all the "
                   "same");
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
            fail(path + " belongs to somebody else, or others may write to it; remove it");
        }
    }

    ~Folder() { ::close(descriptor_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    /// Keeps everybody else out of it.
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

void refuseSocketInTmp(const std::string& socket)
{
    std::error_code ignored;
    const std::string path = std::filesystem::weakly_canonical(socket, ignored).string();
    if (path.starts_with("/tmp/")) {
        fail("nobody would find the socket " + socket + " there");
    }
}

/// Mounts of others go on arriving (a disk that is plugged in), so that shares on them are seen;
/// ours reach nobody.
bool unshareMounts()
{
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) == 0;
}

} // namespace

void useOwnTmp(const std::string& socket, const std::string& folder)
{
    if (::geteuid() != 0) {
        log("runs without root's rights, and so with everybody's /tmp, where work files can be "
            "forged");
        return;
    }
    refuseSocketInTmp(socket);
    const std::string path = folder + kTmp;
    const Folder parent(folder);
    const Folder own(path);
    own.close();
    if (own.isAt(kTmp)) {
        return;
    }
    if (!unshareMounts()) {
        failAt("mounts");
    }
    if (::mount(path.c_str(), kTmp, nullptr, MS_BIND, nullptr) != 0) {
        failAt(path);
    }
}

} // namespace service
