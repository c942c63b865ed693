// SPDX-License-Identifier: MIT
#include "config/configuration.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "config/lines.h"

namespace config {
namespace {

constexpr std::size_t kMostBytes = 65536;

[[noreturn]] void failUnread(const std::string& path)
{
    throw BadConfiguration(path + ": cannot be read: " + std::generic_category().message(errno));
}

class Descriptor {
  public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor()
    {
        if (isOpen()) {
            ::close(descriptor_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
    [[nodiscard]] int number() const { return descriptor_; }

  private:
    int descriptor_;
};

/// Refuses a file that other accounts can write: the service does what it says as root.
void checkFile(int file, const std::string& path)
{
    struct stat status = {};
    if (::fstat(file, &status) != 0) {
        failUnread(path);
    }
    if (!S_ISREG(status.st_mode)) {
        throw BadConfiguration(path + ": this is not a plain file");
    }
    const bool isTrusted = status.st_uid == 0 || status.st_uid == ::geteuid();
    if (!isTrusted || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw UntrustedConfiguration(
            path + ": others can change this file; it must belong to root, and only "
                   "its owner may write it (chown root, chmod go-w)");
    }
}

std::string readAll(int file, const std::string& path)
{
    std::string content(kMostBytes + 1, '\0');
    std::size_t size = 0;
    ssize_t got = 1;
    while (got > 0 && size < content.size()) {
        got = ::read(file, content.data() + size, content.size() - size);
        size += (got > 0) ? static_cast<std::size_t>(got) : 0;
    }
    if (got < 0) {
        failUnread(path);
    }
    if (size > kMostBytes) {
        throw BadConfiguration(path + ": the file is larger than 65536 bytes");
    }
    content.resize(size);
    return content;
}

} // namespace

Configuration read(const std::string& path)
{
    // O_NONBLOCK: opening a FIFO would wait for a writer.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen() && errno == ENOENT && path == kDefaultFile) {
        return {};
    }
    if (!file.isOpen()) {
        failUnread(path);
    }
    checkFile(file.number(), path);
    return readLines(path, readAll(file.number(), path));
}

} // namespace config
