// SPDX-License-Identifier: MIT
#include "bench/shell_floor.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <vector>

#include "guard/guard.h"
#include "guard/trace.h"

namespace {

std::vector<std::string> lines;
bool isRecording = false;
bool isGuarded = false;

using SystemFunction = int(const char*);

SystemFunction* realSystem()
{
    static auto* const found = reinterpret_cast<SystemFunction*>(::dlsym(RTLD_NEXT, "system"));
    return found;
}

void runBare()
{
    for (const std::string& line : lines) {
        [[maybe_unused]] const int result = realSystem()(line.c_str());
    }
}

void printOne(const std::string& name, const char* floor, const bench::Comparison& medians)
{
    std::printf("  %-22s %8.2f ms\n  %-22s %8.2f ms\n", name.c_str(), medians.first, floor,
                medians.second);
    std::printf("  %-22s %8.3f    (aim: at most 1.05)\n", "ratio", medians.ratio);
}

} // namespace

extern "C" int system(const char* line)
{
    if (isRecording) {
        lines.emplace_back(line);
    }
    return isGuarded ? guard::carryOut(line) : realSystem()(line);
}

bench::FloorComparison bench::compareWithFloor(const std::function<void()>& work)
{
    work();
    lines.clear();
    isRecording = true;
    work();
    isRecording = false;
    FloorComparison outcome = {};
    outcome.lines = lines.size();
    outcome.bare = alternate(work, runBare);
    outcome.traces = std::erase_if(
        lines, [](const std::string& line) { return guard::readTrace(line).has_value(); });
    const std::string path = std::string("PATH=") + std::getenv("PATH");
    guard::usePath(path.c_str());
    isGuarded = true;
    outcome.guarded = alternate(work, runBare);
    isGuarded = false;
    guard::usePath(guard::kDefaultPath);
    return outcome;
}

void bench::print(const char* name, const FloorComparison& outcome)
{
    printOne(std::string(name) + ", bare", "its lines", outcome.bare);
    printOne(std::string(name) + ", guarded", "its lines but traces", outcome.guarded);
}
