// SPDX-License-Identifier: MIT
#include "handlers/name_list.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <span>
#include <sys/stat.h>

#include "core/bytes.h"
#include "core/core.h"

namespace handlers {
namespace {

using Needle = std::array<char, 512>;

Needle makeNeedle(const char* name, bool ignoresCase)
{
    Needle needle = {};
    core::formatBounded(needle, "\"%s\"", name);
    if (ignoresCase) {
        std::ranges::transform(needle, needle.begin(), core::toAsciiUpper);
    }
    return needle;
}

/// @param size  the list's size before it is read; bytes added since then keep their case
/// @return 1 or 0, or -1 if there is nothing to search
int searchLine(FILE* list, std::span<char> line, std::size_t size, const char* needle,
               const NameSearch& search)
{
    if (!core::readLine(list, line)) {
        return -1;
    }
    if (search.ignoresCase) {
        std::ranges::transform(line.first(size), line.begin(), core::toAsciiUpper);
    }
    search.traceList(line.data(), needle);
    return (std::strstr(line.data(), needle) != nullptr) ? 1 : 0;
}

int finishSearch(const char* path, int found, const NameSearch& search)
{
    std::remove(path);
    search.traceResult(found);
    return found;
}

/// How much memory a list needs: its size and some more. If that is beyond a size_t, the largest
/// size_t, which cannot be allocated.
std::size_t roomFor(std::uint64_t size)
{
    constexpr std::uint64_t kSpare = 50;
    constexpr std::uint64_t kMost = std::numeric_limits<std::size_t>::max();
    return static_cast<std::size_t>(std::min(size + kSpare, kMost));
}

int searchFile(const char* path, std::uint64_t size, const char* needle, const NameSearch& search)
{
    dbg_trace("file %s size = %d bytes", path, static_cast<int>(size));
    core::File list = core::openFile(path, "r");
    if (!list) {
        dbg_trace("%s() cannot open file %s: %s", search.operation, path, std::strerror(errno));
        return -1;
    }
    const std::size_t room = roomFor(size);
    const core::Text line(static_cast<char*>(std::calloc(1, room)));
    if (!line) {
        dbg_trace("%s() () failed  memory allocation %s", search.operation, std::strerror(errno));
        std::remove(path);
        return -1;
    }
    const int found =
        searchLine(list.get(), {line.get(), room}, static_cast<std::size_t>(size), needle, search);
    list.reset();
    return finishSearch(path, found, search);
}

} // namespace

int searchNameList(const char* path, const char* name, const NameSearch& search)
{
    const Needle needle = makeNeedle(name, search.ignoresCase);
    struct stat status = {};
    if (::stat(path, &status) != 0) {
        dbg_trace("%s() cannot stat file %s: %s", search.operation, path, std::strerror(errno));
        return -1;
    }
    // A list always holds something; an empty file is no list.
    if (status.st_size == 0) {
        return finishSearch(path, -1, search);
    }
    return searchFile(path, static_cast<std::uint64_t>(status.st_size), needle.data(), search);
}

} // namespace handlers
