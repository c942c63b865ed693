// SPDX-License-Identifier: MIT
#include <cstring>

#include "core/core.h"

const char* getBuildInfo(void)
{
    static std::array<char, core::kValueSize> line;
    line[0] = '\0';
    const core::File file = core::openFile("/etc/buildinfo.txt", "r");
    if (file) {
        core::readLine(file.get(), line);
        line[std::strcspn(line.data(), "\n")] = '\0';
    }
    return line.data();
}
