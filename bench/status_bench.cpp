// SPDX-License-Identifier: MIT
//
// What the module itself costs without the shell lines: all that it computes for one collection and
// for reading the status once.
#include <array>
#include <benchmark/benchmark.h>
#include <string>

#include "core/core.h"
#include "sharestatus/fragment_walk.h"
#include "sharestatus/status_file.h"
#include "sharestatus/status_format.h"

namespace {

using namespace sharestatus;

/// A list of shares whose records fill the status buffer.
std::string fullFragment()
{
    std::string fragment = "return [";
    for (int i = 100; fragment.size() < 3500; ++i) {
        fragment += "\"share-" + std::to_string(i) + "\"";
    }
    return fragment + "];";
}

std::size_t collect(const std::string& fragment, std::array<char, kMaxPayloadSize>& buffer)
{
    std::array<char, core::kLineSize> line{};
    fragment.copy(line.data(), line.size() - 1);
    FragmentWalk walk(line.data());
    TableWriter table(buffer);
    while (table.hasRoom()) {
        const char* name = walk.next();
        if (name == nullptr) {
            break;
        }
        table.append(WorkRecord{}, name);
    }
    table.finish();
    return table.size();
}

std::string fullPayload()
{
    std::array<char, kMaxPayloadSize> buffer;
    const std::size_t size = collect(fullFragment(), buffer);
    return {buffer.data(), size};
}

void walkAndPackAFullList(benchmark::State& state)
{
    const std::string fragment = fullFragment();
    std::array<char, kMaxPayloadSize> buffer;
    for (auto _ : state) {
        benchmark::DoNotOptimize(collect(fragment, buffer));
    }
}
BENCHMARK(walkAndPackAFullList);

void walkAFullStatusBuffer(benchmark::State& state)
{
    const std::string payload = fullPayload();
    for (auto _ : state) {
        TableReader table(payload);
        while (const auto entry = table.next()) {
            benchmark::DoNotOptimize(entry->name.size());
        }
    }
}
BENCHMARK(walkAFullStatusBuffer);

void checksumOfAFullStatusBuffer(benchmark::State& state)
{
    const std::string payload(kMaxPayloadSize, 'x');
    for (auto _ : state) {
        benchmark::DoNotOptimize(checksum(payload));
    }
}
BENCHMARK(checksumOfAFullStatusBuffer);

void readOfThePublishedStatusWithoutItsTraces(benchmark::State& state)
{
    publishStatus(fullPayload());
    for (auto _ : state) {
        StatusImage image;
        benchmark::DoNotOptimize(loadStatus(image));
        benchmark::DoNotOptimize(decodeStatus(image.text()).isGood());
    }
}
BENCHMARK(readOfThePublishedStatusWithoutItsTraces);

} // namespace
