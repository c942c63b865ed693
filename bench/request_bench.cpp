// SPDX-License-Identifier: MIT
//
// Compares one request, the list of users, with its floor.
#include <cstdio>
#include <filesystem>
#include <string>

#include "bench/appliance.h"
#include "bench/request.h"
#include "bench/shell_floor.h"
#include "vokcontrol.h"

namespace {

constexpr int kNumber = 1;
constexpr std::size_t kHeaderSize = 10;

void listUsers()
{
    bench::load(bench::frame("lstu"));
    process_command(kNumber);
}

/// The command also prints the names, which are discarded.
bench::FloorComparison compareQuietly()
{
    const bench::Silence silence;
    return bench::compareWithFloor(listUsers);
}

} // namespace

int main()
{
    bench::makeUsers();
    const bench::FloorComparison outcome = compareQuietly();
    if (std::filesystem::file_size(VOK_ANSWER_FILE + std::to_string(kNumber)) <= kHeaderSize) {
        std::puts("the users were not listed");
        return 1;
    }
    std::printf("one lstu of %d users (%zu shell lines, %zu of them traces), median of %d rounds\n",
                bench::kUsers, outcome.lines, outcome.traces, bench::kRounds);
    bench::print("request", outcome);
    return 0;
}
