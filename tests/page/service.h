// SPDX-License-Identifier: MIT
//
// service.h: a service that gives the pages answers made up by a test.
#pragma once

#include <csignal>
#include <functional>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tests/support/root.h"
#include "tests/support/scripted_service.h"

namespace answers {

inline const std::string kPasswordRight = "wall \n";
inline const std::string kPasswordWrong = "erro " + root::le32(1);
inline const std::string kUsers = "lsut " + root::le32(3) + "\nanna\nbob\nBob\n";
inline const std::string kCreated = root::le32(0);
inline const std::string kNameTaken = root::le32(0x10000001);

} // namespace answers

/// Gives its answers one a connection, in a process of its own, and keeps what it was sent.
class FakeService {
  public:
    /// @param act  what it does before each answer, which gets the number of the request, from 1
    explicit FakeService(
        const std::vector<std::string>& answers, const std::function<void(int)>& act = [](int) {})
    {
        const int listener = root::listenAt(kSocket);
        process_ = ::fork();
        if (process_ == 0) {
            serve(listener, answers, act);
            ::_exit(0);
        }
        ::close(listener);
    }
    ~FakeService()
    {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        ::unlink(kSocket);
        ::unlink(kFrames);
    }
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;

    static constexpr const char* kSocket = "/tmp/service";

    /// What it was sent, one frame after the other.
    static std::string frames() { return root::exists(kFrames) ? root::readFile(kFrames) : ""; }

  private:
    static constexpr const char* kFrames = "/tmp/frames";

    static void serve(int listener, const std::vector<std::string>& answers,
                      const std::function<void(int)>& act)
    {
        int number = 0;
        std::string frames;
        for (const std::string& answer : answers) {
            const int socket = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            frames += root::receiveAll(socket);
            root::writeFile(kFrames, frames);
            act(++number);
            [[maybe_unused]] const ssize_t sent = ::write(socket, answer.data(), answer.size());
            ::close(socket);
        }
    }

    pid_t process_;
};
