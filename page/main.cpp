// SPDX-License-Identifier: MIT
//
// vokpage: the appliance's web pages, as a CGI program.
#include <csignal>
#include <cstdio>
#include <string>
#include <unistd.h>

#include "page/routes.h"

int main()
{
    // A server that ignores the end of its children hands that down, and the module's shell lines
    // would lose their results.
    std::signal(SIGCHLD, SIG_DFL);
    const std::string out = page::answer(page::Variables::ofEnvironment(), STDIN_FILENO);
    const bool isWritten = std::fwrite(out.data(), 1, out.size(), stdout) == out.size();
    return (isWritten && std::fflush(stdout) == 0) ? 0 : 1;
}
