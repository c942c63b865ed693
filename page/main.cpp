// SPDX-License-Identifier: MIT
//
// vokpage: the appliance's web pages, as a CGI program.
#include <csignal>
#include <cstdio>
#include <string>
#include <unistd.h>

#include "page/deadline.h"
#include "page/language.h"
#include "page/log.h"
#include "page/own_tmp.h"
#include "page/routes.h"
#include "text/translation.h"

namespace {

std::string makeAnswer(const page::Variables& variables)
{
    text::speak(page::languageOfBrowser(variables));
    page::endAfter(
        page::kDeadline,
        page::refuse(variables, page::kTookTooLong,
                     text::tr("The appliance did not get ready in time. What you asked for may be "
                              "done in part.")));
    try {
        page::requireOwnTmp();
    } catch (const std::exception& failure) {
        page::log(failure.what());
        return page::refuse(
            variables, page::kFailure,
            text::tr("Others on this appliance can write to its /tmp, and so could forge what the "
                     "pages show and do. Nothing was done. The web server's log tells more."));
    }
    return page::answer(variables, STDIN_FILENO);
}

} // namespace

int main()
{
    // A server that ignores the end of its children hands that down, and the module's shell lines
    // would lose their results.
    std::signal(SIGCHLD, SIG_DFL);
    const page::Variables variables = page::Variables::ofEnvironment();
    page::cleanEnvironment();
    const std::string out = makeAnswer(variables);
    const bool isWritten = std::fwrite(out.data(), 1, out.size(), stdout) == out.size();
    return (isWritten && std::fflush(stdout) == 0) ? 0 : 1;
}
