// SPDX-License-Identifier: MIT
#include "bench/appliance.h"

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

void bench::stubScripts(std::string_view output)
{
    std::ofstream("/stubs/output") << output;
    std::ofstream("/usr/bin/php") << "#!/usr/bin/sh\nexec cp /stubs/output \"$3\"\n";
    std::filesystem::permissions("/usr/bin/php", std::filesystem::perms(0755));
}

void bench::makeUsers()
{
    std::string listing = "<userlist>\n";
    for (int i = 0; i < kUsers; ++i) {
        listing += "  <username>user-" + std::to_string(i) + "</username>\n";
    }
    stubScripts(listing + "</userlist>\n");
}

bench::Silence::Silence()
{
    std::fflush(stdout);
    output_ = ::dup(STDOUT_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::close(nowhere);
}

bench::Silence::~Silence()
{
    std::fflush(stdout);
    ::dup2(output_, STDOUT_FILENO);
    ::close(output_);
}
