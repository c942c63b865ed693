// SPDX-License-Identifier: MIT
#include "service/service_lock.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "service/log.h"

namespace service {
namespace {

constexpr mode_t kFolderMode = 0700;
constexpr mode_t kFileMode = 0600;

/// A lock on the whole file. A forked process does not have it, so a child that outlives a killed
/// service for a moment does not keep the next service from starting.
struct flock wholeFile()
{
    struct flock range = {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    return range;
}

/// Throws AnotherService with the number of the process that holds the lock; closes the file.
[[noreturn]] void failLocked(int file)
{
    struct flock holder = wholeFile();
    const bool isTold = ::fcntl(file, F_GETLK, &holder) == 0 && holder.l_type != F_UNLCK;
    ::close(file);
    throw AnotherService("another service runs already" +
                         (isTold ? " (process " + std::to_string(holder.l_pid) + ")" : "") +
                         "; stop it first");
}

} // namespace

ServiceLock::ServiceLock(const std::string& folder)
{
    const std::string path = folder + "/lock";
    ::mkdir(folder.c_str(), kFolderMode);
    file_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kFileMode);
    struct flock range = wholeFile();
    if (file_ >= 0 && ::fcntl(file_, F_SETLK, &range) == 0) {
        return;
    }
    const int error = errno;
    if (file_ >= 0 && (error == EACCES || error == EAGAIN)) {
        failLocked(file_);
    }
    log("cannot lock " + path + " (" + std::strerror(error) +
        "); make sure that no second service runs");
}

ServiceLock::~ServiceLock()
{
    if (file_ >= 0) {
        ::close(file_);
    }
}

} // namespace service
