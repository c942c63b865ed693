// SPDX-License-Identifier: MIT
#include "view/collector.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "view/capacity.h"

namespace view {
namespace {

/// The names of the collector: without the guard, with it, and the appliance's own name.
constexpr auto kCollectors = std::to_array<const char*>({"vokcontrol", "vokcollect", "pelstatus"});

bool isCollector(const Process& process)
{
    return std::ranges::any_of(kCollectors,
                               [&](const char* name) { return isProgram(process, name); });
}

/// Whether the collector has started a process, itself or through a shell.
bool isStartedBy(const Processes& processes, int parent, int collector)
{
    constexpr int kMostShells = 3;
    for (int level = 0; level < kMostShells && parent != collector; ++level) {
        const auto found = std::ranges::find(processes.all, parent, &Process::id);
        if (found == processes.all.end()) {
            return false;
        }
        parent = found->parent;
    }
    return parent == collector;
}

/// The share of a "du -sk /share/NAME"; empty for any other process.
std::string measuredShare(const Process& process)
{
    const std::string folder = std::string(kShareFolder) + "/";
    if (!isProgram(process, "du") || !process.command.back().starts_with(folder)) {
        return "";
    }
    return process.command.back().substr(folder.size());
}

} // namespace

Collector findCollector(const Processes& processes)
{
    using enum Collector::State;
    const auto collector = std::ranges::find_if(processes.all, isCollector);
    if (collector == processes.all.end()) {
        return {.state = processes.areVisible ? kGone : kUnknown};
    }
    Collector found = {.state = kRuns};
    for (const Process& process : processes.all) {
        const std::string share = measuredShare(process);
        if (!share.empty() && isStartedBy(processes, process.parent, collector->id)) {
            found.share = share;
        }
    }
    return found;
}

} // namespace view
