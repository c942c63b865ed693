// SPDX-License-Identifier: MIT
//
// Compares one collection of 50 shares with its floor.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench/appliance.h"
#include "bench/shell_floor.h"
#include "sharestatus/daemon.h"

namespace {

constexpr int kShares = 50;

/// Shares with a file each, and a share script that lists them.
void makeShares()
{
    std::string listing;
    for (int i = 0; i < kShares; ++i) {
        const std::string name = "share-" + std::to_string(i);
        std::filesystem::create_directories("/share/" + name);
        std::ofstream("/share/" + name + "/file") << std::string(5000, 'x');
        listing += "  <sharename>" + name + "</sharename>\n";
        listing += "  <sharelocation>internal</sharelocation>\n";
    }
    bench::stubScripts(listing);
    std::filesystem::create_directories("/etc/pelconfig/vokcontrol/__bksts");
}

} // namespace

int main()
{
    makeShares();
    const bench::FloorComparison outcome =
        bench::compareWithFloor([] { sharestatus::collectAndPublish(); });
    std::printf(
        "one collection of %d shares (%zu shell lines, %zu of them traces), median of %d rounds\n",
        kShares, outcome.lines, outcome.traces, bench::kRounds);
    bench::print("collection", outcome);
    return 0;
}
