// SPDX-License-Identifier: MIT
#include "core/core.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

void core::FileCloser::operator()(FILE* file) const noexcept
{
    std::fclose(file);
}

core::File core::openFile(const char* path, const char* mode)
{
    // A program that a shell line starts may outlive the request; it must not hold these files
    // open.
    std::array<char, 8> closedOnExec;
    formatBounded(closedOnExec, "%se", mode);
    return File(std::fopen(path, closedOnExec.data()));
}

bool core::readLine(FILE* file, std::span<char> line)
{
    const bool isRead = std::fgets(line.data(), static_cast<int>(line.size()), file) != nullptr;
    if (!isRead) {
        line[0] = '\0';
    }
    return isRead;
}

std::int32_t core::readNumber(FILE* file, std::int32_t otherwise)
{
    std::array<char, kValueSize> line;
    return readLine(file, line) ? decimalInt(line.data()) : otherwise;
}

core::WorkFileName core::workFileName(const char* name)
{
    WorkFileName path;
    formatBounded(path, "/tmp/%s%d", name, ::getpid());
    return path;
}

void core::removeWorkFile(const char* path)
{
    if (std::remove(path) == -1) {
        dbg_trace("cannot remove file %s: %s", path, std::strerror(errno));
    }
}
