// SPDX-License-Identifier: MIT
#include "client/password.h"

#include <iostream>
#include <termios.h>
#include <unistd.h>

#include "client/failure.h"

namespace client {
namespace {

/// Switches the terminal's echo off for as long as it lives.
class SilentTerminal {
  public:
    SilentTerminal()
    {
        ::tcgetattr(STDIN_FILENO, &before_);
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~SilentTerminal() { ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_); }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

  private:
    termios before_ = {};
};

bool isAtTerminal()
{
    return ::isatty(STDIN_FILENO) != 0;
}

std::string readInput()
{
    std::string line;
    if (!std::getline(std::cin, line)) {
        throw Failure(kWrongUsage, "no password came on standard input");
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
    return isAtTerminal() ? askFor("Password: ") : readInput();
}

std::string readNewPassword()
{
    if (!isAtTerminal()) {
        return readInput();
    }
    std::string password = askFor("Password: ");
    if (askFor("Once more: ") != password) {
        throw Failure(kWrongUsage, "the two passwords differ");
    }
    return password;
}

} // namespace client
