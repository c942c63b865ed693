// SPDX-License-Identifier: MIT
//
// The history of 300 shares over five years: how large its file is, how long a look at one share's
// year takes, and how long it takes to remember a status. The entries are those that thinning
// leaves. BENCH_EVERY_HOUR=1 remembers each hour's status instead, which takes minutes.
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "history/reader.h"
#include "history/store.h"

namespace {

constexpr std::time_t kHour = 3600;
constexpr std::time_t kDay = 24 * kHour;
constexpr std::time_t kNow = 1800000000 / kDay * kDay;
constexpr int kShares = 300;

history::Entry entryOf(std::time_t published)
{
    history::Entry entry{.published = published,
                         .hasList = true,
                         .capacity = view::Capacity{4000000000, 2000000000, 2000000000},
                         .shares = {}};
    for (int i = 0; i < kShares; ++i) {
        entry.shares.push_back(
            {.name = "A share of the household " + std::to_string(i),
             .used = view::Space{static_cast<std::uint16_t>(published / kHour % 50000), 'G'},
             .backupState = 1,
             .backupDay = std::chrono::sys_days(std::chrono::days(published / kDay)),
             .folder = history::Folder{i, i}});
    }
    return entry;
}

/// The time between entries that stay, by their age.
std::time_t stepAt(std::time_t age)
{
    if (age < 30 * kDay || std::getenv("BENCH_EVERY_HOUR") != nullptr) {
        return kHour;
    }
    return (age < 730 * kDay) ? kDay : 7 * kDay;
}

/// The file of five years, made at the first call.
const std::string& fiveYears()
{
    static const std::string path = [] {
        std::string file =
            (std::filesystem::temp_directory_path() / "vokcontrol-bench-history" / "history.db");
        std::filesystem::remove_all(std::filesystem::path(file).parent_path());
        history::Store store(file);
        for (std::time_t age = 5 * 365 * kDay; age > 0; age -= stepAt(age)) {
            (void)store.remember(entryOf(kNow - age), kNow - age);
        }
        return file;
    }();
    return path;
}

void countBytes(benchmark::State& state)
{
    state.counters["file_MB"] = static_cast<double>(std::filesystem::file_size(fiveYears())) / 1e6;
}

void lookAtOneYear(benchmark::State& state)
{
    const std::string& file = fiveYears();
    for ([[maybe_unused]] const auto unused : state) {
        const history::Reader reader(file);
        benchmark::DoNotOptimize(reader.points("A share of the household 150", kNow - 365 * kDay));
    }
    countBytes(state);
}
BENCHMARK(lookAtOneYear)->Unit(benchmark::kMillisecond);

/// As "vokctl history --remember" does it, with the check of the whole file.
void rememberOne(benchmark::State& state)
{
    static std::time_t now = kNow;
    const std::string& file = fiveYears();
    for ([[maybe_unused]] const auto unused : state) {
        now += kHour;
        (void)history::Store(file).remember(entryOf(now), now);
    }
    countBytes(state);
}
BENCHMARK(rememberOne)->Unit(benchmark::kMillisecond)->Iterations(48);

} // namespace
