// SPDX-License-Identifier: MIT
//
// child.h: a request runs in a process of its own. Whatever its handler does, the service goes on.
#pragma once

#include <asio/awaitable.hpp>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "config/configuration.h"
#include "service/reasons.h"

namespace service {

/// How a child ended.
enum class Ending {
    kFinished,   ///< its answer is complete
    kFailed,     ///< a signal, an exit code other than 0, or no answer that can be read
    kTimedOut,   ///< it took too long, and was killed with all that it had started
    kNotStarted, ///< there was no process or no descriptor left for it
    kRefused     ///< the gate refused its request, so it was not started
};

struct Outcome {
    Ending ending;
    std::string answer;   ///< from the command, or a status from the service
    Reasons reasons = {}; ///< what the request's programs have written to standard error
};

/// The outcome of a request that its command has not answered: the service's status for this
/// ending.
[[nodiscard]] Outcome makeOutcome(Ending ending);

/// What a child does.
using Task = std::function<void()>;

/// Has the module process a request of at most 4096 bytes under a number. Only for a child, because
/// the module has one buffer for requests, and traces.
void dispatch(std::string_view request, int number);

/// A child that runs one request.
class Child {
  public:
    /// The number that the kept descriptor has in the child and in all that it starts. It replaces
    /// standard input, which nothing reads, because shells get only the three standard descriptors.
    static constexpr int kKept = 0;

    /// Starts a child that does a task for the request with this number. It has a process group of
    /// its own, /dev/null as its input and output, a file in memory as its standard error, /tmp as
    /// its folder, and PATH, HOME and the C locale as its environment. It inherits at most one
    /// descriptor. It is killed if the service ends before it. Check hasStarted() afterwards.
    ///
    /// @param path  its PATH
    /// @param kept  the descriptor that it inherits, or -1
    Child(const Task& task, int number, const std::string& path = config::kDefaultPath,
          int kept = -1);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    [[nodiscard]] bool hasStarted() const { return pid_ > 0; }

    /// Waits for the child's end, kills it if that takes too long, reads the answer, and removes
    /// the answer file. A child whose answer file cannot be read has failed.
    [[nodiscard]] asio::awaitable<Outcome> finish(std::chrono::seconds timeout);

  private:
    void kill() const;
    [[nodiscard]] bool reap();

    std::string answerPath_;
    Reasons reasons_ = Reasons::make();
    int pid_ = -1;
    int lifeline_ = -1; ///< a pipe from the child; it is at its end when the child has ended
};

} // namespace service
