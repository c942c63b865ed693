// SPDX-License-Identifier: MIT
#include "service/background.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace service {
namespace {

constexpr int kFailed = 1;
constexpr mode_t kLogMode = 0640;
constexpr mode_t kPidFileMode = 0644;

[[noreturn]] void fail(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

/// Waits for a byte from the new process, or for its end, and returns the exit code.
int awaitReady(int notice, pid_t child)
{
    char byte = 0;
    ssize_t size = 0;
    while ((size = ::read(notice, &byte, 1)) < 0 && errno == EINTR) {
    }
    ::close(notice);
    if (size == 1) {
        return 0;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : kFailed;
}

/// Opens a file as a standard stream.
void replace(int stream, const char* path, int flags, mode_t mode)
{
    const int file = ::open(path, flags | O_CLOEXEC, mode);
    if (file < 0) {
        fail(path);
    }
    ::dup2(file, stream);
    ::close(file);
}

} // namespace

Background::~Background()
{
    if (notice_ >= 0) {
        ::close(notice_);
    }
}

std::optional<int> Background::enter()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        fail("a pipe");
    }
    const pid_t child = ::fork();
    if (child < 0) {
        fail("a process of the service's own");
    }
    if (child > 0) {
        ::close(ends[1]);
        return awaitReady(ends[0], child);
    }
    ::close(ends[0]);
    notice_ = ends[1];
    ::setsid();
    return std::nullopt;
}

void Background::ready(bool isLogged)
{
    if (notice_ < 0) {
        return;
    }
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (stream != STDERR_FILENO || !isLogged) {
            replace(stream, "/dev/null", O_RDWR, 0);
        }
    }
    [[maybe_unused]] const ssize_t written = ::write(notice_, "", 1);
    ::close(notice_);
    notice_ = -1;
}

PidFile::PidFile(const std::string& path) : path_(path)
{
    if (path_.empty()) {
        return;
    }
    const int file =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kPidFileMode);
    if (file < 0) {
        fail(path);
    }
    const std::string line = std::to_string(::getpid()) + "\n";
    const ssize_t written = ::write(file, line.data(), line.size());
    const int error = errno;
    ::close(file);
    if (written != static_cast<ssize_t>(line.size())) {
        ::unlink(path.c_str());
        errno = error;
        fail(path);
    }
}

PidFile::~PidFile()
{
    if (!path_.empty()) {
        ::unlink(path_.c_str());
    }
}

void logTo(const std::string& path)
{
    replace(STDERR_FILENO, path.c_str(), O_WRONLY | O_CREAT | O_APPEND, kLogMode);
}

} // namespace service
