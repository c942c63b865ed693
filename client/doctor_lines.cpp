// SPDX-License-Identifier: MIT
#include "client/doctor_lines.h"

#include <algorithm>

namespace client {

Lines linesOf(std::string_view text)
{
    Lines lines;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        lines.push_back(line);
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return lines;
}

std::optional<std::string_view> between(std::string_view line, std::string_view open,
                                        std::string_view close)
{
    const std::size_t start = line.find(open);
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view rest = line.substr(start + open.size());
    const std::size_t end = rest.find(close);
    return (end == std::string_view::npos) ? std::nullopt : std::optional(rest.substr(0, end));
}

std::optional<std::string_view> after(std::string_view text, std::string_view mark)
{
    for (const std::string_view line : linesOf(text)) {
        const std::size_t at = line.find(mark);
        if (at != std::string_view::npos) {
            return line.substr(at + mark.size());
        }
    }
    return std::nullopt;
}

std::string quoteStart(std::string_view text)
{
    constexpr std::size_t kMost = 60;
    return "\"" + std::string(text.substr(0, kMost)) + "\"";
}

} // namespace client
