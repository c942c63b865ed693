// SPDX-License-Identifier: MIT
//
// usage: TARGET FILE...
//
// Runs a fuzz target once with each file's content, for compilers without a fuzzer.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <span>
#include <vector>

#include "fuzz/fuzz.h"

namespace {

bool replay(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> read{std::istreambuf_iterator<char>(file), {}};
    if (!file) {
        std::fprintf(stderr, "cannot read %s\n", path);
        return false;
    }
    std::fprintf(stderr, "Running: %s\n", path);
    // A copy of the exact size, so that a sanitizer detects a read after its end.
    const std::vector<std::uint8_t> input(read.begin(), read.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    const auto paths = std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
    bool isGood = !paths.empty();
    for (const char* path : paths) {
        isGood = replay(path) && isGood;
    }
    return isGood ? 0 : 1;
}
