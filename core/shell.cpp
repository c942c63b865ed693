// SPDX-License-Identifier: MIT
#include "core/core.h"

#include <cerrno>
#include <cstdlib>

core::ShellRun core::runShellLine(const char* line)
{
    errno = 0;
    const int result = std::system(line);
    return {result, errno};
}

bool core::reapedElsewhere(ShellRun run)
{
    return run.error == ECHILD;
}

bool core::hasRun(ShellRun run)
{
    return run.result != -1 || reapedElsewhere(run);
}

int removeFile(const char* path)
{
    std::array<char, 512> line;
    core::formatBounded(line, "sudo rm -f %s", path);
    return core::runShellLine(line.data()).result;
}
