// SPDX-License-Identifier: MIT
#include "service/kept_files.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cmdsvc/request_reader.h"
#include "service/log.h"
#include "service/private_file.h"

namespace service {
namespace {

constexpr mode_t kMode = 0600;
constexpr mode_t kModeBits = 07777;

/// An open file and its properties. Opening does not wait, even at a FIFO.
class OpenFile {
  public:
    OpenFile(const std::string& path, int flags)
        : descriptor_(::open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, kMode))
    {
        isRegular_ =
            descriptor_ >= 0 && ::fstat(descriptor_, &status_) == 0 && S_ISREG(status_.st_mode);
    }

    ~OpenFile()
    {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    [[nodiscard]] bool isRegular() const { return isRegular_; }
    [[nodiscard]] int descriptor() const { return descriptor_; }
    [[nodiscard]] bool isOurs() const { return status_.st_uid == ::geteuid(); }
    [[nodiscard]] bool isAlone() const { return status_.st_nlink == 1; }
    [[nodiscard]] bool isClosed() const { return (status_.st_mode & kModeBits) == kMode; }

  private:
    int descriptor_;
    bool isRegular_;
    struct stat status_ = {};
};

/// Waits until a file's lock is free, but at most a second: its holder may mean to keep it.
void awaitHolder(int file)
{
    constexpr int kTries = 100;
    constexpr useconds_t kPause = 10'000;
    for (int tries = 0; tries < kTries && ::flock(file, LOCK_EX | LOCK_NB) != 0; ++tries) {
        ::usleep(kPause);
    }
}

bool replace(const std::string& path)
{
    const std::string made = path + ".new";
    ::unlink(made.c_str());
    const OpenFile file(made, O_RDWR | O_CREAT | O_EXCL);
    return file.isRegular() && ::fchmod(file.descriptor(), kMode) == 0 &&
           ::rename(made.c_str(), path.c_str()) == 0;
}

void complain(const std::string& path, const char* reason)
{
    log("cannot keep other accounts from locking " + path + " (" + reason +
        "); while it is locked, no program can read or write variables");
}

} // namespace

void protectVariableLock(const std::string& path)
{
    const OpenFile file(path, O_RDONLY | O_CREAT);
    if (file.descriptor() < 0) {
        complain(path, std::strerror(errno));
    } else if (!file.isRegular()) {
        complain(path, "it is not a regular file");
    } else if (!file.isOurs() || !file.isClosed()) {
        awaitHolder(file.descriptor());
        if (!replace(path)) {
            complain(path, std::strerror(errno));
        }
    }
}

void closePrivateFile()
{
    const OpenFile file(kPrivateFile, O_RDONLY);
    if (file.isRegular()) {
        ::fchmod(file.descriptor(), kMode);
    }
}

void emptyTraces()
{
    const OpenFile file(kTraceFile, O_WRONLY);
    if (file.isRegular() && file.isOurs() && file.isAlone()) {
        [[maybe_unused]] const int emptied = ::ftruncate(file.descriptor(), 0);
    }
}

void emptyTracesAfter(std::string_view request)
{
    if (cmdsvc::codeOf(request) == cmdsvc::codeWord("crat")) {
        emptyTraces();
    }
}

} // namespace service
