// SPDX-License-Identifier: MIT
#include "tests/support/system_watch.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <optional>
#include <unistd.h>

#include "guard/shapes.h"
#include "guard/trace.h"

namespace {

constexpr const char* kRecord = "/watch/calls";
constexpr const char* kStrange = "/watch/strange";

struct Intervention {
    std::string lineStart;
    bool isAnswered;
    int result;
    int error;
    std::function<void()> action;
};

std::vector<Intervention>& interventions()
{
    static std::vector<Intervention> pending;
    return pending;
}

std::vector<std::string>& strangeStarts()
{
    static std::vector<std::string> starts;
    return starts;
}

std::optional<Intervention> takeIntervention(const char* line)
{
    auto& pending = interventions();
    for (auto it = pending.begin(); it != pending.end(); ++it) {
        if (std::strncmp(line, it->lineStart.c_str(), it->lineStart.size()) == 0) {
            Intervention found = *it;
            pending.erase(it);
            return found;
        }
    }
    return std::nullopt;
}

/// Each entry ends in a zero byte, because lines may hold all other bytes.
void append(const char* path, const std::string& entry)
{
    const int callersError = errno;
    const int file = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (file >= 0) {
        [[maybe_unused]] const ssize_t written = ::write(file, entry.c_str(), entry.size() + 1);
        ::close(file);
    }
    errno = callersError;
}

void record(const std::string& entry)
{
    append(kRecord, entry);
}

/// Whether the guard refuses a line; shell lines of the tests themselves do not count.
bool isStrange(const char* line)
{
    return !guard::readTrace(line) && !guard::judge(line).isKnown;
}

std::vector<std::string> entriesOf(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    std::vector<std::string> entries;
    for (std::string entry; std::getline(file, entry, '\0');) {
        entries.push_back(entry);
    }
    return entries;
}

template <class Function> Function* next(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// Programs that the watched program starts are not watched.
[[gnu::constructor]] void keepToOneProgram()
{
    ::unsetenv("LD_PRELOAD");
}

} // namespace

namespace watch {

std::vector<std::string> calls()
{
    return entriesOf(kRecord);
}

void mayBeStrange(const std::string& lineStart)
{
    strangeStarts().push_back(lineStart);
}

std::vector<std::string> takeStrange()
{
    std::vector<std::string> lines = entriesOf(kStrange);
    std::erase_if(lines, [](const std::string& line) {
        return std::ranges::any_of(
            strangeStarts(), [&line](const std::string& start) { return line.starts_with(start); });
    });
    strangeStarts().clear();
    ::unlink(kStrange);
    return lines;
}

void restart()
{
    interventions().clear();
    ::unlink(kRecord);
}

void answer(const std::string& lineStart, int result, int error)
{
    interventions().push_back({lineStart, true, result, error, {}});
}

void after(const std::string& lineStart, std::function<void()> action)
{
    interventions().push_back({lineStart, false, 0, 0, std::move(action)});
}

} // namespace watch

extern "C" {

int system(const char* line)
{
    record(line);
    if (isStrange(line)) {
        append(kStrange, line);
    }
    const std::optional<Intervention> intervention = takeIntervention(line);
    if (intervention && intervention->isAnswered) {
        errno = intervention->error;
        return intervention->result;
    }
    const int result = next<int(const char*)>("system")(line);
    if (intervention) {
        const int callersError = errno;
        intervention->action();
        errno = callersError;
    }
    return result;
}

int nice(int increment) noexcept
{
    record("nice(" + std::to_string(increment) + ")");
    return next<int(int)>("nice")(increment);
}

unsigned sleep(unsigned seconds)
{
    record("sleep(" + std::to_string(seconds) + ")");
    return next<unsigned(unsigned)>("sleep")(seconds);
}

int daemon(int keepFolder, int keepStreams) noexcept
{
    record("daemon(" + std::to_string(keepFolder) + ", " + std::to_string(keepStreams) + ")");
    return next<int(int, int)>("daemon")(keepFolder, keepStreams);
}

} // extern "C"
