// SPDX-License-Identifier: MIT
//
// Stands before the C library and answers what the kernel would tell of a peer, as the file
// /stubs/peer has it, so that tests can meet peers that are not themselves:
//
//   credentials PROCESS USER GROUP
//   groups GROUP...
//
// Without the file the kernel is asked; what the file leaves out the kernel does not know.
#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* kPeer = "/stubs/peer";

/// The numbers behind a word in the file.
std::vector<unsigned> numbersOf(const std::string& word)
{
    std::ifstream file(kPeer);
    for (std::string line; std::getline(file, line);) {
        std::istringstream stream(line);
        std::string first;
        if (stream >> first && first == word) {
            std::vector<unsigned> numbers;
            for (unsigned number = 0; stream >> number;) {
                numbers.push_back(number);
            }
            return numbers;
        }
    }
    return {};
}

int fail(int error)
{
    errno = error;
    return -1;
}

int tellCredentials(void* value, socklen_t* size)
{
    const std::vector<unsigned> numbers = numbersOf("credentials");
    if (numbers.size() != 3 || *size < sizeof(ucred)) {
        return fail(ENOPROTOOPT);
    }
    const ucred credentials = {static_cast<pid_t>(numbers[0]), numbers[1], numbers[2]};
    std::memcpy(value, &credentials, sizeof credentials);
    *size = sizeof credentials;
    return 0;
}

/// As the kernel does: where there is too little room, it says how much it takes.
int tellGroups(void* value, socklen_t* size)
{
    const std::vector<unsigned> numbers = numbersOf("groups");
    if (numbers.empty()) {
        return fail(ENOPROTOOPT);
    }
    const auto needed = static_cast<socklen_t>(numbers.size() * sizeof(gid_t));
    const bool isRoomy = *size >= needed;
    *size = needed;
    if (!isRoomy) {
        return fail(ERANGE);
    }
    std::memcpy(value, numbers.data(), needed);
    return 0;
}

} // namespace

extern "C" int getsockopt(int socket, int level, int option, void* value, socklen_t* size) noexcept
{
    const bool isAsked = level == SOL_SOCKET && ::access(kPeer, F_OK) == 0;
    if (isAsked && option == SO_PEERCRED) {
        return tellCredentials(value, size);
    }
    if (isAsked && option == SO_PEERGROUPS) {
        return tellGroups(value, size);
    }
    using Function = int(int, int, int, void*, socklen_t*);
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, "getsockopt"))(socket, level, option,
                                                                         value, size);
}
