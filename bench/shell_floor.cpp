// SPDX-License-Identifier: MIT
#include "bench/shell_floor.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <vector>

namespace {

std::vector<std::string> lines;
bool isRecording = false;

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

} // namespace

extern "C" int system(const char* line)
{
    if (isRecording) {
        lines.emplace_back(line);
    }
    return realSystem()(line);
}

bench::FloorComparison bench::compareWithFloor(const std::function<void()>& work)
{
    work();
    lines.clear();
    isRecording = true;
    work();
    isRecording = false;
    return {alternate(work, runBare), lines.size()};
}

void bench::print(const char* name, const Comparison& medians)
{
    std::printf("  %-18s %8.2f ms\n", name, medians.first);
    std::printf("  its lines, bare    %8.2f ms\n", medians.second);
    std::printf("  ratio              %8.3f    (aim: at most 1.05)\n", medians.ratio);
}
