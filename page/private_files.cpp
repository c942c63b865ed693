// SPDX-License-Identifier: MIT
#include "page/private_files.h"

#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace page {
namespace {

constexpr mode_t kFolderMode = 0700;
constexpr mode_t kFileMode = 0600;
constexpr mode_t kOthers = 077;
constexpr std::size_t kLargestFile = 65536;

[[noreturn]] void fail(const std::string& what, const std::string& path)
{
    throw std::system_error(errno, std::generic_category(), what + " " + path);
}

/// Refuses what belongs to somebody else, what others may use and what is of another kind.
void require(const struct stat& found, mode_t kind, const std::string& path)
{
    if ((found.st_mode & S_IFMT) != kind || found.st_uid != ::geteuid() ||
        (found.st_mode & kOthers) != 0) {
        throw std::runtime_error(path + " is not private to the account that the pages run as");
    }
}

Descriptor openChecked(const std::string& path, int flags)
{
    Descriptor file(::open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kFileMode));
    if (file.number() < 0) {
        return file;
    }
    struct stat found = {};
    if (::fstat(file.number(), &found) != 0) {
        fail("cannot look at", path);
    }
    require(found, S_IFREG, path);
    return file;
}

std::string readAll(int file, const std::string& path)
{
    std::string content(kLargestFile, '\0');
    const ssize_t size = ::pread(file, content.data(), content.size(), 0);
    if (size < 0) {
        fail("cannot read", path);
    }
    content.resize(static_cast<std::size_t>(size));
    return content;
}

void writeAll(int file, std::string_view content, const std::string& path)
{
    if (::write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size()) ||
        ::fsync(file) != 0) {
        fail("cannot write", path);
    }
}

} // namespace

Descriptor::~Descriptor()
{
    if (number_ >= 0) {
        ::close(number_);
    }
}

Descriptor::Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

void requirePrivateFolder(const std::string& path)
{
    if (::mkdir(path.c_str(), kFolderMode) != 0 && errno != EEXIST) {
        fail("cannot make", path);
    }
    struct stat found = {};
    if (::lstat(path.c_str(), &found) != 0) {
        fail("cannot look at", path);
    }
    require(found, S_IFDIR, path);
}

Descriptor openPrivateFile(const std::string& path)
{
    Descriptor file = openChecked(path, O_RDWR | O_CREAT);
    if (file.number() < 0) {
        fail("cannot open", path);
    }
    return file;
}

Descriptor lockPrivateFile(const std::string& path)
{
    Descriptor file = openPrivateFile(path);
    while (::flock(file.number(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            fail("cannot lock", path);
        }
    }
    return file;
}

std::optional<std::string> readPrivateFile(const std::string& path)
{
    const Descriptor file = openChecked(path, O_RDONLY);
    if (file.number() < 0 && errno == ENOENT) {
        return std::nullopt;
    }
    if (file.number() < 0) {
        fail("cannot open", path);
    }
    return readAll(file.number(), path);
}

void replacePrivateFile(const std::string& path, std::string_view content)
{
    const std::string fresh = path + ".new";
    ::unlink(fresh.c_str());
    const Descriptor file = openChecked(fresh, O_WRONLY | O_CREAT | O_EXCL);
    if (file.number() < 0) {
        fail("cannot make", fresh);
    }
    writeAll(file.number(), content, fresh);
    if (::rename(fresh.c_str(), path.c_str()) != 0) {
        fail("cannot replace", path);
    }
}

} // namespace page
