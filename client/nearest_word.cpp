// SPDX-License-Identifier: MIT
#include "client/nearest_word.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace client {
namespace {

constexpr std::size_t kMostMistakes = 2;

using Row = std::vector<std::size_t>;

/// How many letters have to be changed, added, taken out or swapped with their neighbour to make
/// one word of the other. Each row has the figures for one more letter of the first word; a swap
/// looks back to the row before the last.
std::size_t mistakesBetween(std::string_view first, std::string_view second)
{
    Row beforeLast;
    Row last(second.size() + 1);
    std::iota(last.begin(), last.end(), 0U);
    for (std::size_t i = 1; i <= first.size(); ++i) {
        Row row(second.size() + 1, i);
        for (std::size_t j = 1; j <= second.size(); ++j) {
            const std::size_t changed = last[j - 1] + (first[i - 1] == second[j - 1] ? 0 : 1);
            row[j] = std::min({changed, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && first[i - 1] == second[j - 2] && first[i - 2] == second[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
        beforeLast = std::exchange(last, row);
    }
    return last.back();
}

} // namespace

std::string nearestWord(std::string_view mistyped, std::span<const std::string> words)
{
    std::string nearest;
    std::size_t fewest = std::min(kMostMistakes, mistyped.size() / 3) + 1;
    for (const std::string& word : words) {
        const std::size_t mistakes = mistakesBetween(mistyped, word);
        if (mistakes < fewest) {
            fewest = mistakes;
            nearest = word;
        }
    }
    return nearest;
}

} // namespace client
