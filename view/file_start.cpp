// SPDX-License-Identifier: MIT
#include "view/file_start.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace view {
namespace {

FileStart readOpenFile(int descriptor, std::size_t size)
{
    FileStart start;
    start.isOpen = true;
    start.bytes.resize(size);
    struct stat status = {};
    const ssize_t got = ::read(descriptor, start.bytes.data(), size);
    if (got < 0 || ::fstat(descriptor, &status) != 0) {
        return {.bytes = {}, .modified = 0, .error = errno, .isOpen = true};
    }
    start.bytes.resize(static_cast<std::size_t>(got));
    start.modified = status.st_mtime;
    return start;
}

} // namespace

FileStart readFileStart(const char* path, std::size_t size)
{
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return {.bytes = {}, .modified = 0, .error = errno, .isOpen = false};
    }
    FileStart start = readOpenFile(descriptor, size);
    ::close(descriptor);
    return start;
}

} // namespace view
