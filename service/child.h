// SPDX-License-Identifier: MIT
//
// child.h: a request runs in a process of its own, so that whatever its handler does, the service
// goes on.
#pragma once

#include <asio/awaitable.hpp>
#include <chrono>
#include <string>
#include <string_view>

namespace service {

/// How a child came to its end.
enum class Ending {
    kFinished,   ///< it has answered whatever it had to answer
    kFailed,     ///< a signal, or an exit code other than 0
    kTimedOut,   ///< it took too long, and was killed with all that it had started
    kNotStarted, ///< there was no process or no descriptor left for it
    kRefused     ///< it was never started, for what its request holds
};

struct Outcome {
    Ending ending;
    std::string answer; ///< the command's, or a status of the service's own
};

/// How a request ended that its command has not answered.
[[nodiscard]] Outcome makeOutcome(Ending ending);

/// Where children find programs, unless the service is told otherwise.
inline constexpr const char* kDefaultPath =
    "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

/// A child that runs one request.
class Child {
  public:
    /// Starts a child that processes a request of at most 4096 bytes under a number. It is a
    /// process group of its own, its three streams lead nowhere, it inherits nothing else, it works
    /// in /tmp, and its environment is PATH, HOME and the C locale. Check hasStarted() afterwards.
    Child(std::string_view request, int number, const std::string& path = kDefaultPath);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    [[nodiscard]] bool hasStarted() const { return pid_ > 0; }

    /// Waits for the child's end, kills it where that takes too long, and collects the answer; the
    /// answer file is gone afterwards.
    [[nodiscard]] asio::awaitable<Outcome> finish(std::chrono::seconds timeout);

  private:
    void kill() const;
    [[nodiscard]] bool reap();

    std::string answerPath_;
    int pid_ = -1;
    int lifeline_ = -1; ///< reads as ended once the child has
};

} // namespace service
