// SPDX-License-Identifier: MIT
#include "service/child.h"

#include <algorithm>
#include <array>
#include <asio/experimental/as_tuple.hpp>
#include <asio/experimental/awaitable_operators.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <asio/this_coro.hpp>
#include <asio/use_awaitable.hpp>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cmdsvc/protocol.h"
#include "guard/guard.h"
#include "service/whole_file.h"
#include "vokcontrol.h"

namespace service {
namespace {

constexpr int kLifeline = 3;
constexpr int kLog = 4;
constexpr int kFirstFree = kLog + 1;
constexpr int kCannotStart = 127;
constexpr int kNone = -1;

/// Closes this descriptor and all with higher numbers.
void closeFrom(int first)
{
    if (::close_range(static_cast<unsigned>(first), ~0U, 0) == 0) {
        return;
    }
    // Kernels before 5.9 have no such call.
    const long most = ::sysconf(_SC_OPEN_MAX);
    for (int descriptor = first; descriptor < most; ++descriptor) {
        ::close(descriptor);
    }
}

/// Replaces the environment that the service was started with; a shell must not read that one.
bool cleanEnvironment(const std::string& path)
{
    return ::clearenv() == 0 && ::setenv("PATH", path.c_str(), 1) == 0 &&
           ::setenv("HOME", "/", 1) == 0 && ::setenv("LC_ALL", "C", 1) == 0;
}

/// Ends this child with the service. Otherwise it could run while a child of the next service does.
bool dieWithService(pid_t service)
{
    return ::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && ::getppid() == service;
}

/// The process that starts a child, and the descriptors that the child gets.
struct Start {
    pid_t service;
    int lifeline;
    int kept;
    int errors; ///< for standard error, if there is one
};

/// Gives the lifeline, the log (if there is one) and the kept descriptor their numbers, and closes
/// all others. What the child starts does not get the lifeline, because it may outlive the request.
bool placeDescriptors(const Start& start, int log)
{
    const int line = ::fcntl(start.lifeline, F_DUPFD, kFirstFree);
    const int kept = (start.kept == kNone) ? kNone : ::fcntl(start.kept, F_DUPFD, kFirstFree);
    const bool isLineSet =
        ::dup2(line, kLifeline) == kLifeline && ::fcntl(kLifeline, F_SETFD, FD_CLOEXEC) == 0;
    if (::dup3(log, kLog, O_CLOEXEC) != kLog) {
        ::close(kLog); // there is no log; this number may have been another descriptor's
    }
    const bool isKeptSet = start.kept == kNone || ::dup2(kept, Child::kKept) == Child::kKept;
    closeFrom(kFirstFree);
    // The guard logs the lines that it refuses.
    guard::logTo(kLog);
    return isLineSet && isKeptSet;
}

/// Gives the child the state in which every request runs, whatever files the service has open and
/// whatever signals it handles.
bool prepare(const Start& start, const std::string& path)
{
    ::setpgid(0, 0);
    if (!dieWithService(start.service)) {
        return false;
    }
    for (const int number : {SIGTERM, SIGINT, SIGPIPE, SIGCHLD, SIGHUP}) {
        std::signal(number, SIG_DFL);
    }
    const int log = ::fcntl(STDERR_FILENO, F_DUPFD, kFirstFree);
    const int nowhere = ::open("/dev/null", O_RDWR);
    const int errors = (start.errors == kNone) ? nowhere : start.errors;
    const bool areStreamsSet = nowhere >= 0 && ::dup2(nowhere, STDIN_FILENO) >= 0 &&
                               ::dup2(nowhere, STDOUT_FILENO) >= 0 &&
                               ::dup2(errors, STDERR_FILENO) >= 0;
    return areStreamsSet && placeDescriptors(start, log) && cleanEnvironment(path) &&
           ::chdir("/tmp") == 0;
}

/// Runs the child from its start to its end. It ends with exit(), which flushes an answer file that
/// is still open.
[[noreturn]] void runChild(const Task& task, const Start& start, const std::string& path)
{
    if (!prepare(start, path)) {
        ::_exit(kCannotStart);
    }
    task();
    std::exit(0);
}

} // namespace

Outcome makeOutcome(Ending ending)
{
    const auto answer = [ending](cmdsvc::Status code) {
        const cmdsvc::StatusBytes status = cmdsvc::statusBytes(cmdsvc::kServiceCode, code);
        return Outcome{ending, {status.begin(), status.end()}, {}};
    };
    switch (ending) {
    case Ending::kTimedOut:
        return answer(cmdsvc::kRequestTimedOut);
    case Ending::kNotStarted:
        return answer(cmdsvc::kRequestNotStarted);
    case Ending::kFailed:
        return answer(cmdsvc::kRequestFailed);
    case Ending::kFinished:
    case Ending::kRefused:
        break;
    }
    return {ending, "", {}};
}

void dispatch(std::string_view request, int number)
{
    std::ranges::fill(fin_buf, '\0');
    request.copy(std::data(fin_buf), std::size(fin_buf));
    process_command(number);
}

Child::Child(const Task& task, int number, const std::string& path, int kept)
    : answerPath_(VOK_ANSWER_FILE + std::to_string(number))
{
    // An earlier service may have left an answer under the same number.
    ::unlink(answerPath_.c_str());
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return;
    }
    const Start start = {::getpid(), ends[1], kept, reasons_.descriptor()};
    pid_ = ::fork();
    if (pid_ == 0) {
        runChild(task, start, path);
    }
    ::close(ends[1]);
    lifeline_ = ends[0];
}

Child::~Child()
{
    if (lifeline_ >= 0) {
        ::close(lifeline_);
    }
    if (pid_ > 0) {
        kill();
        static_cast<void>(reap());
    }
}

void Child::kill() const
{
    // The group may not exist yet, so the child itself gets the signal, too.
    ::kill(-pid_, SIGKILL);
    ::kill(pid_, SIGKILL);
}

bool Child::reap()
{
    int status = 0;
    const bool isReaped = ::waitpid(pid_, &status, 0) == pid_;
    pid_ = -1;
    return isReaped && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

asio::awaitable<Outcome> Child::finish(std::chrono::seconds timeout)
{
    using namespace asio::experimental::awaitable_operators;
    constexpr auto kQuietly = asio::experimental::as_tuple(asio::use_awaitable);

    if (!hasStarted()) {
        co_return makeOutcome(Ending::kNotStarted);
    }
    const auto executor = co_await asio::this_coro::executor;
    asio::posix::stream_descriptor lifeline(executor, std::exchange(lifeline_, -1));
    asio::steady_timer timer(executor, timeout);
    const auto first =
        co_await (lifeline.async_wait(asio::posix::stream_descriptor::wait_read, kQuietly) ||
                  timer.async_wait(kQuietly));

    const bool isTimedOut = first.index() == 1;
    if (isTimedOut) {
        kill();
    }
    const bool isGood = reap();
    Outcome outcome = makeOutcome(isTimedOut ? Ending::kTimedOut : Ending::kFailed);
    std::optional<std::string> bytes = readWholeFile(answerPath_);
    if (!isTimedOut && isGood && bytes) {
        outcome = {Ending::kFinished, std::move(*bytes), {}};
    }
    ::unlink(answerPath_.c_str());
    reasons_.seal();
    outcome.reasons = std::move(reasons_);
    co_return outcome;
}

} // namespace service
