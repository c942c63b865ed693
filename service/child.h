// SPDX-License-Identifier: MIT
//
// child.h: a request runs in a process of its own, so that whatever its handler does, the service
// goes on.
#pragma once

#include <asio/awaitable.hpp>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "config/configuration.h"

namespace service {

/// How a child came to its end.
enum class Ending {
    kFinished,   ///< it has answered whatever it had to answer
    kFailed,     ///< a signal, an exit code other than 0, or no answer that can be read
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

/// What a child does.
using Task = std::function<void()>;

/// Has the module process a request of at most 4096 bytes under a number. For a child: the module
/// has one buffer for requests, and traces.
void dispatch(std::string_view request, int number);

/// A child that runs one request.
class Child {
  public:
    /// The descriptor that a child keeps, as the child and all that it starts have it. It takes the
    /// place of standard input, which nothing reads: shells get no descriptors but the three.
    static constexpr int kKept = 0;

    /// Starts a child that does its task for the request of a number. It is a process group of its
    /// own, its three streams lead nowhere, it works in /tmp, its environment is PATH, HOME and the
    /// C locale, and it inherits nothing else but one descriptor where it is to keep one. It is
    /// killed when the service ends before it. Check hasStarted() afterwards.
    ///
    /// @param kept  what it keeps, or -1
    Child(const Task& task, int number, const std::string& path = config::kDefaultPath,
          int kept = -1);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    [[nodiscard]] bool hasStarted() const { return pid_ > 0; }

    /// Waits for the child's end, kills it where that takes too long, and collects the answer; the
    /// answer file is gone afterwards. A child without an answer file that can be read has failed.
    [[nodiscard]] asio::awaitable<Outcome> finish(std::chrono::seconds timeout);

  private:
    void kill() const;
    [[nodiscard]] bool reap();

    std::string answerPath_;
    int pid_ = -1;
    int lifeline_ = -1; ///< reads as ended once the child has
};

} // namespace service
