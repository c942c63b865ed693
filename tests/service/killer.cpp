// SPDX-License-Identifier: MIT
//
// Stands before the C library in a service, and kills the service or a process that it has forked
// behind one of the calls by which an upload changes anything. The file /stubs/kill says which:
//
//   child N             the forked process, behind its call number N
//   service N           the service, behind its own call number N
//   service-of-child N  the service, behind the forked process's call number N
//
// Without the file nobody is killed, and calls are not counted.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* kOrder = "/stubs/kill";

pid_t service = 0;
int calls = 0;

/// What the program starts is not watched.
[[gnu::constructor]] void keepToOneProgram()
{
    ::unsetenv("LD_PRELOAD");
    service = ::getpid();
}

/// The order, read without any of the calls below.
std::string readOrder()
{
    char bytes[64] = {};
    const int callersError = errno;
    const int file = ::open(kOrder, O_RDONLY | O_CLOEXEC);
    if (file >= 0) {
        [[maybe_unused]] const ssize_t size = ::read(file, bytes, sizeof bytes - 1);
        ::close(file);
    }
    errno = callersError;
    return bytes;
}

/// A child of the service's goes on as soon as that is gone, unless it is bound to die with it.
void killService()
{
    constexpr useconds_t kMoment = 1000;
    ::kill(service, SIGKILL);
    while (::getppid() == service) {
        ::usleep(kMoment);
    }
}

void passCall()
{
    const std::string order = readOrder();
    if (order.empty()) {
        calls = 0;
        return;
    }
    const std::size_t blank = order.find(' ');
    const std::string_view who = std::string_view(order).substr(0, blank);
    const bool isService = ::getpid() == service;
    if (isService != (who == "service") || calls++ != std::stoi(order.substr(blank))) {
        return;
    }
    if (isService || who == "child") {
        ::kill(::getpid(), SIGKILL);
    }
    killService();
}

template <class Function> Function* next(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

/// A trace.
ssize_t writev(int file, const iovec* pieces, int count)
{
    const ssize_t written = next<ssize_t(int, const iovec*, int)>("writev")(file, pieces, count);
    passCall();
    return written;
}

/// A line of the shell's is over.
pid_t waitpid(pid_t child, int* status, int options)
{
    const pid_t ended = next<pid_t(pid_t, int*, int)>("waitpid")(child, status, options);
    passCall();
    return ended;
}

FILE* fopen(const char* path, const char* mode)
{
    FILE* file = next<FILE*(const char*, const char*)>("fopen")(path, mode);
    passCall();
    return file;
}

std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, FILE* file)
{
    const std::size_t written = next<std::size_t(const void*, std::size_t, std::size_t, FILE*)>(
        "fwrite")(bytes, size, count, file);
    passCall();
    return written;
}

int fclose(FILE* file)
{
    const int result = next<int(FILE*)>("fclose")(file);
    passCall();
    return result;
}

int rename(const char* from, const char* to) noexcept
{
    const int result = next<int(const char*, const char*)>("rename")(from, to);
    passCall();
    return result;
}

int remove(const char* path) noexcept
{
    const int result = next<int(const char*)>("remove")(path);
    passCall();
    return result;
}

int unlink(const char* path) noexcept
{
    const int result = next<int(const char*)>("unlink")(path);
    passCall();
    return result;
}

int fsync(int file)
{
    const int result = next<int(int)>("fsync")(file);
    passCall();
    return result;
}

int mkdir(const char* path, mode_t mode) noexcept
{
    const int result = next<int(const char*, mode_t)>("mkdir")(path, mode);
    passCall();
    return result;
}

pid_t fork()
{
    const pid_t child = next<pid_t()>("fork")();
    passCall();
    return child;
}

} // extern "C"
