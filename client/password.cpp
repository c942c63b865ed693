// SPDX-License-Identifier: MIT
#include "client/password.h"

#include <csignal>
#include <iostream>
#include <termios.h>
#include <unistd.h>

#include "client/failure.h"
#include "text/translation.h"

namespace client {
namespace {

using text::tr;

/// The terminal's settings, to restore them after the prompt.
termios before = {};

void restoreTerminal()
{
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
}

/// Restores the terminal's echo before the signal ends the program.
extern "C" void restoreAndEnd(int number)
{
    restoreTerminal();
    std::signal(number, SIG_DFL);
    std::raise(number);
}

/// Switches the terminal's echo off for as long as it lives.
class SilentTerminal {
  public:
    SilentTerminal()
    {
        ::tcgetattr(STDIN_FILENO, &before);
        handleSignals(restoreAndEnd);
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~SilentTerminal()
    {
        restoreTerminal();
        handleSignals(SIG_DFL);
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

  private:
    static void handleSignals(void (*handler)(int))
    {
        for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP}) {
            if (std::signal(number, handler) == SIG_IGN) {
                std::signal(number, SIG_IGN);
            }
        }
    }
};

bool isAtTerminal()
{
    return ::isatty(STDIN_FILENO) != 0;
}

std::string readInput()
{
    std::string line;
    if (!std::getline(std::cin, line)) {
        throw Failure(kWrongUsage, tr("there is no password on standard input"));
    }
    return line;
}

std::string askFor(const char* prompt)
{
    const SilentTerminal silence;
    std::cerr << prompt << std::flush;
    std::string password = readInput();
    std::cerr << "\n";
    return password;
}

} // namespace

std::string readPassword()
{
    return isAtTerminal() ? askFor(tr("Password: ")) : readInput();
}

std::string readNewPassword()
{
    if (!isAtTerminal()) {
        return readInput();
    }
    std::string password = askFor(tr("Password: "));
    if (askFor(tr("Once more: ")) != password) {
        throw Failure(kWrongUsage, tr("the two passwords differ"));
    }
    return password;
}

} // namespace client
