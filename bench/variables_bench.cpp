// SPDX-License-Identifier: MIT
//
// What it costs to read one variable, by the number of variables in the file.
#include <benchmark/benchmark.h>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

#include "core/core.h"

namespace {

std::string nameOf(std::int64_t variable)
{
    return "network_setting_" + std::to_string(variable);
}

/// Writes COUNT variables, and the lock file that the first write leaves.
void writeVariables(std::int64_t count)
{
    std::ofstream file("/etc/pelconfig/system_var");
    for (std::int64_t i = 1; i <= count; ++i) {
        file << nameOf(i) << "=value-" << i << '\n';
    }
    std::ofstream("/etc/pelconfig/system_var_lck");
}

void readOfTheLastVariable(benchmark::State& state)
{
    const std::int64_t count = state.range(0);
    writeVariables(count);
    const std::string name = nameOf(count);
    if (getvar(name.c_str()) != "value-" + std::to_string(count)) {
        state.SkipWithError("the variable was not found");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(getvar(name.c_str()));
    }
    state.SetComplexityN(count);
}
BENCHMARK(readOfTheLastVariable)
    ->Arg(200)
    ->Arg(2'000)
    ->Arg(20'000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);

} // namespace
