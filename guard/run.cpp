// SPDX-License-Identifier: MIT
#include "guard/run.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include "guard/guard.h"

namespace guard {
namespace {

constexpr const char* kShell = "/bin/sh";
constexpr int kNoShell = 127;

const char* path = kDefaultPath;

/// Ignores SIGINT and SIGQUIT in this process while the shell runs, as system() does. Blocks every
/// signal until the shell has been started, because its process shares this one's memory until
/// then.
class SignalPause {
  public:
    SignalPause()
    {
        struct sigaction ignoring = {};
        ignoring.sa_handler = SIG_IGN;
        ::sigaction(SIGINT, &ignoring, &interrupt_);
        ::sigaction(SIGQUIT, &ignoring, &quit_);
        sigset_t all;
        ::sigfillset(&all);
        ::sigprocmask(SIG_SETMASK, &all, &mask_);
    }
    ~SignalPause()
    {
        ::sigaction(SIGINT, &interrupt_, nullptr);
        ::sigaction(SIGQUIT, &quit_, nullptr);
        ::sigprocmask(SIG_SETMASK, &mask_, nullptr);
    }
    SignalPause(const SignalPause&) = delete;
    SignalPause& operator=(const SignalPause&) = delete;

    /// Unblocks the signals that may arrive while the shell runs: all except SIGCHLD.
    void whileRunning() const
    {
        sigset_t mask = mask_;
        ::sigaddset(&mask, SIGCHLD);
        ::sigprocmask(SIG_SETMASK, &mask, nullptr);
    }

  private:
    struct sigaction interrupt_ = {};
    struct sigaction quit_ = {};
    sigset_t mask_ = {};
};

/// No signal ignored, none blocked. Errors do not matter: some numbers cannot be set.
void resetSignals()
{
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    for (int number = 1; number < NSIG; ++number) {
        ::sigaction(number, &byDefault, nullptr);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

void closeAllButStreams()
{
    constexpr int kFirst = STDERR_FILENO + 1;
    if (::close_range(kFirst, ~0U, 0) == 0) {
        return;
    }
    // Kernels before 5.9 have no close_range.
    const long most = ::sysconf(_SC_OPEN_MAX);
    for (int descriptor = kFirst; descriptor < most; ++descriptor) {
        ::close(descriptor);
    }
}

/// Becomes the shell. Until then memory and errno are the waiting parent's, so this changes only
/// errno, and only if there is no shell.
[[noreturn]] void becomeShell(const char* line, int callersError)
{
    closeAllButStreams();
    resetSignals();
    const auto arguments = std::to_array<const char*>({"sh", "-c", line, nullptr});
    const auto environment = std::to_array<const char*>({path, "HOME=/", "LC_ALL=C", nullptr});
    errno = callersError;
    ::execve(kShell, const_cast<char**>(arguments.data()), const_cast<char**>(environment.data()));
    ::_exit(kNoShell);
}

int waitFor(pid_t shell)
{
    int status = 0;
    pid_t ended = 0;
    do {
        ended = ::waitpid(shell, &status, 0);
    } while (ended < 0 && errno == EINTR);
    return (ended == shell) ? status : -1;
}

} // namespace

void usePath(const char* entry)
{
    path = entry;
}

int runShell(const char* line)
{
    const int callersError = errno;
    const SignalPause pause;
    // vfork is as cheap as posix_spawn, and the code above shows how the shell is started. Every
    // signal is blocked, and becomeShell makes only system calls.
    const pid_t shell = ::vfork(); // NOLINT(clang-analyzer-security.insecureAPI.vfork)
    if (shell == 0) {
        becomeShell(line, callersError); // NOLINT(clang-analyzer-unix.Vfork)
    }
    if (shell < 0) {
        return -1;
    }
    pause.whileRunning();
    return waitFor(shell);
}

} // namespace guard
