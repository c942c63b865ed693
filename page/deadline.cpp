// SPDX-License-Identifier: MIT
#include "page/deadline.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace page {
namespace {

/// Where the answer goes, whatever stands in for standard output meanwhile.
int output = -1;

/// The answer that is given then. It is made beforehand, as a signal's handler cannot make it.
std::string lateAnswer; // NOLINT(cert-err58-cpp): an empty text

extern "C" void endAll(int /*signal*/)
{
    [[maybe_unused]] const ssize_t written = ::write(output, lateAnswer.data(), lateAnswer.size());
    ::kill(0, SIGKILL);
}

[[noreturn]] void fail()
{
    throw std::system_error(errno, std::generic_category(), "cannot watch the time");
}

/// The server's other processes are not to be ended.
void leaveGroup()
{
    if (::getpgrp() != ::getpid() && ::setpgid(0, 0) != 0) {
        fail();
    }
}

void takeAlarms()
{
    struct sigaction action = {};
    action.sa_handler = endAll;
    sigset_t alarms;
    ::sigemptyset(&alarms);
    ::sigaddset(&alarms, SIGALRM);
    if (::sigaction(SIGALRM, &action, nullptr) != 0 ||
        ::sigprocmask(SIG_UNBLOCK, &alarms, nullptr) != 0) {
        fail();
    }
}

} // namespace

void endAfter(std::chrono::seconds patience, std::string answer)
{
    lateAnswer = std::move(answer);
    output = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    leaveGroup();
    takeAlarms();
    ::alarm(static_cast<unsigned>(patience.count()));
}

} // namespace page
