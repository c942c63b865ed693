// SPDX-License-Identifier: MIT
#include "page/variables.h"

#include <cstdlib>
#include <unistd.h>

namespace page {

Variables Variables::ofEnvironment()
{
    Variables variables;
    for (char** entry = ::environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::size_t equals = text.find('=');
        if (equals != text.npos) {
            variables.set(text.substr(0, equals), text.substr(equals + 1));
        }
    }
    return variables;
}

std::string_view Variables::operator[](std::string_view name) const
{
    const auto found = values_.find(name);
    return (found != values_.end()) ? std::string_view(found->second) : std::string_view();
}

void Variables::set(std::string_view name, std::string_view value)
{
    values_.insert_or_assign(std::string(name), std::string(value));
}

void cleanEnvironment()
{
    const char* zone = std::getenv("TZ");
    const std::string kept = (zone != nullptr) ? zone : "";
    ::clearenv();
    ::setenv("PATH", "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", 1);
    ::setenv("HOME", "/", 1);
    ::setenv("LC_ALL", "C", 1);
    if (zone != nullptr) {
        ::setenv("TZ", kept.c_str(), 1);
    }
}

} // namespace page
