// SPDX-License-Identifier: MIT
//
// alternation.h: compares two ways of doing the same work. They take turns in one run, so that
// other load on the machine affects both.
#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace bench {

inline constexpr int kWarmUps = 2;
inline constexpr int kRounds = 25;

template <class Work> double milliseconds(Work&& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    return taken.count();
}

inline double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

/// Medians over all rounds: the time of one turn of each, in milliseconds, and the first's time
/// divided by the second's in the same round.
struct Comparison {
    double first;
    double second;
    double ratio;
};

template <class First, class Second> Comparison alternate(First&& first, Second&& second)
{
    std::vector<double> firsts;
    std::vector<double> seconds;
    std::vector<double> ratios;
    for (int round = -kWarmUps; round < kRounds; ++round) {
        const double one = milliseconds(first);
        const double other = milliseconds(second);
        if (round >= 0) {
            firsts.push_back(one);
            seconds.push_back(other);
            ratios.push_back(one / other);
        }
    }
    return {median(firsts), median(seconds), median(ratios)};
}

} // namespace bench
