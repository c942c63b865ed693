// SPDX-License-Identifier: MIT
//
// One collection of 50 shares against its floor: a bare loop that runs the very same shell lines and
// does nothing else. Both take turns in one run, so that whatever else the machine does meets both.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "sharestatus/daemon.h"

namespace {

constexpr int kShares = 50;
constexpr int kWarmUps = 2;
constexpr int kRounds = 25;

std::vector<std::string> lines;
bool isRecording = false;

using SystemFunction = int(const char*);

SystemFunction* realSystem()
{
    static auto* const found =
        reinterpret_cast<SystemFunction*>(::dlsym(RTLD_NEXT, "system"));
    return found;
}

/// Shares with a file each, and a share script that lists them.
void makeShares()
{
    std::ofstream listing("/stubs/listing");
    for (int i = 0; i < kShares; ++i) {
        const std::string name = "share-" + std::to_string(i);
        std::filesystem::create_directories("/share/" + name);
        std::ofstream("/share/" + name + "/file") << std::string(5000, 'x');
        listing << "  <sharename>" << name << "</sharename>\n"
                << "  <sharelocation>internal</sharelocation>\n";
    }
    std::ofstream("/usr/bin/php") << "#!/usr/bin/sh\nexec cp /stubs/listing \"$3\"\n";
    std::filesystem::permissions("/usr/bin/php", std::filesystem::perms(0755));
    std::filesystem::create_directories("/etc/pelconfig/vokcontrol/__bksts");
}

void runBare()
{
    for (const std::string& line : lines) {
        [[maybe_unused]] const int result = realSystem()(line.c_str());
    }
}

template <class Work> double milliseconds(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    return taken.count();
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

} // namespace

extern "C" int system(const char* line)
{
    if (isRecording) {
        lines.emplace_back(line);
    }
    return realSystem()(line);
}

int main()
{
    makeShares();
    isRecording = true;
    sharestatus::collectAndPublish();
    isRecording = false;

    std::vector<double> collections;
    std::vector<double> floors;
    std::vector<double> ratios;
    for (int round = -kWarmUps; round < kRounds; ++round) {
        const double collection = milliseconds(sharestatus::collectAndPublish);
        const double floor = milliseconds(runBare);
        if (round >= 0) {
            collections.push_back(collection);
            floors.push_back(floor);
            ratios.push_back(collection / floor);
        }
    }
    std::printf("one collection of %d shares (%zu shell lines), median of %d rounds\n", kShares,
                lines.size(), kRounds);
    std::printf("  collection         %8.2f ms\n", median(collections));
    std::printf("  its lines, bare    %8.2f ms\n", median(floors));
    std::printf("  ratio              %8.3f    (aim: at most 1.05)\n", median(ratios));
    return 0;
}
