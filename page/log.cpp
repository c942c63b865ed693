// SPDX-License-Identifier: MIT
#include "page/log.h"

#include <unistd.h>

#include "view/terminal_text.h"

namespace page {

void log(const std::string& text)
{
    const std::string line = "vokpage: " + text + "\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

std::string quoted(std::string_view text)
{
    constexpr std::size_t kMost = 64;
    return "\"" + view::makePrintable(text.substr(0, kMost)).text + "\"";
}

} // namespace page
