// SPDX-License-Identifier: MIT
#include "client/output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "client/failure.h"
#include "text/translation.h"

namespace client {
namespace {

using text::fill;
using text::tr;

/// An open file, and whether it has had no error.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] bool isOpen() const { return number_ >= 0; }

    /// Closing may be the first call that fails on a full disk.
    [[nodiscard]] bool close() { return ::close(std::exchange(number_, -1)) == 0; }

  private:
    int number_;
};

[[noreturn]] void failToWrite(const std::string& path)
{
    throw Failure(kFailed, fill(tr("cannot write {1}: {2}"), {path, std::strerror(errno)}));
}

[[noreturn]] void refuseTerminal()
{
    throw Failure(kWrongUsage,
                  tr("the private file may not be text, so it is not written to a terminal; name a "
                     "file, or redirect the output"));
}

/// The status of what is at a path (of a link itself); nothing if there is nothing.
std::optional<struct stat> lookAt(const std::string& path)
{
    struct stat status = {};
    return (::lstat(path.c_str(), &status) == 0) ? std::optional(status) : std::nullopt;
}

bool takesBytesDirectly(const struct stat& status)
{
    return S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode);
}

bool writeAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
    return true;
}

/// Writes to a device or a FIFO. Checks again what it is, because it may have been replaced.
void writeInto(const std::string& path, std::string_view bytes)
{
    Descriptor file(::open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
    struct stat status = {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0) {
        failToWrite(path);
    }
    if (!takesBytesDirectly(status)) {
        throw Failure(kFailed, fill(tr("cannot write {}: it has changed meanwhile"), {path}));
    }
    if (::isatty(file.number()) != 0) {
        refuseTerminal();
    }
    if (!writeAll(file.number(), bytes) || !file.close()) {
        failToWrite(path);
    }
}

/// The name of a new file in a target's folder, for mkostemp().
std::string patternBeside(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1) + ".vokctl.XXXXXX";
}

bool fillFile(Descriptor& file, std::string_view bytes, mode_t mode)
{
    return writeAll(file.number(), bytes) && ::fchmod(file.number(), mode) == 0 &&
           ::fsync(file.number()) == 0 && file.close();
}

void replace(const std::string& path, std::string_view bytes, mode_t mode)
{
    std::string part = patternBeside(path);
    Descriptor file(::mkostemp(part.data(), O_CLOEXEC));
    if (!file.isOpen()) {
        failToWrite(path);
    }
    if (!fillFile(file, bytes, mode) || std::rename(part.c_str(), path.c_str()) != 0) {
        const int reason = errno;
        ::unlink(part.c_str());
        errno = reason;
        failToWrite(path);
    }
}

} // namespace

void checkTarget(const std::string& path)
{
    if (path == kStandardStream) {
        if (::isatty(STDOUT_FILENO) != 0) {
            refuseTerminal();
        }
        return;
    }
    const auto status = lookAt(path);
    if (status && S_ISLNK(status->st_mode)) {
        throw Failure(kWrongUsage,
                      fill(tr("{} is a symbolic link; name the file that it leads to, or \"-\" for "
                              "standard output"),
                           {path}));
    }
}

void writeTarget(const std::string& path, std::string_view bytes)
{
    constexpr mode_t kPermissions = 0777;
    constexpr mode_t kOwnerAlone = 0600;
    checkTarget(path);
    const auto status = lookAt(path);
    if (path == kStandardStream) {
        std::cout << bytes;
    } else if (status && takesBytesDirectly(*status)) {
        writeInto(path, bytes);
    } else {
        replace(path, bytes, status ? status->st_mode & kPermissions : kOwnerAlone);
    }
}

} // namespace client
