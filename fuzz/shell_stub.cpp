// SPDX-License-Identifier: MIT
#include "fuzz/shell_stub.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "fuzz/fuzz.h"

namespace {

constexpr int kCannotStart = 255;

int shellStatus = 0;
std::string_view shellOutput;

constexpr std::string_view kFolder = "/tmp/";
constexpr std::size_t kLongestName = 64;

bool isPlain(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '.';
}

/// The work file that a line names last, as the target of its output or as an argument; empty if it
/// names none. A request can contain a name that no file can have; that does not count.
std::string workFileOf(std::string_view line)
{
    const std::string_view path = line.substr(line.find_last_of(' ') + 1);
    if (!path.starts_with(kFolder)) {
        return "";
    }
    const std::string_view name = path.substr(kFolder.size());
    const bool isName = !name.empty() && name[0] != '.' && name.size() <= kLongestName &&
                        std::ranges::all_of(name, isPlain);
    return isName ? std::string(path) : "";
}

} // namespace

void fuzz::setShell(int exitStatus, std::string_view output)
{
    shellStatus = exitStatus;
    shellOutput = output;
}

extern "C" int system(const char* line)
{
    if (shellStatus == kCannotStart) {
        errno = EAGAIN;
        return -1;
    }
    const std::string_view text = line;
    const std::string path = workFileOf(text);
    if (!path.empty() && text.starts_with("sudo rm ")) {
        std::remove(path.c_str());
    } else if (!path.empty() && !text.starts_with("echo \"")) {
        fuzz::writeFile(path.c_str(), shellOutput);
    }
    errno = 0;
    return shellStatus << 8;
}

extern "C" pid_t fork() noexcept
{
    constexpr pid_t kNobody = 1000;
    errno = EAGAIN;
    return (shellStatus == kCannotStart) ? -1 : kNobody;
}

extern "C" pid_t waitpid(pid_t child, int* status, int /*options*/)
{
    *status = shellStatus << 8;
    return child;
}
