// SPDX-License-Identifier: MIT
//
// Compares a password check that finds its account at the end of a file of 10,000 with its floor: a
// bare loop that reads the same file line by line. Both take turns in one run, so that other load
// on the machine affects both. Measures processor time, because the file is in memory.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <vector>

#include "core/bytes.h"
#include "core/core.h"
#include "handlers/nt_password.h"
#include "handlers/smb_passwd.h"

namespace {

constexpr int kAccounts = 10000;
constexpr int kWarmUps = 10;
constexpr int kRounds = 201;

constexpr const char* kFile = "/tmp/smbpasswd";
constexpr const char* kLastUser = "user10000";
constexpr double kLimit = 3.0;

void writeAccounts()
{
    const core::File file = core::openFile(kFile, "w");
    for (int i = 1; i <= kAccounts; ++i) {
        std::fprintf(file.get(),
                     "user%d:%d:XXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXX:"
                     "8846F7EAEE8FB117AD06BDD830B7586C:[U          ]:LCT-5F3A2B1C:\n",
                     i, 1000 + i);
    }
}

/// What a password check does: finds the user's account, then compares the password.
bool verify()
{
    SmbPasswdHandle* handle = nullptr;
    if (openSmbPasswd(&handle, kFile) != 0) {
        return false;
    }
    constexpr std::string_view user = kLastUser;
    SmbPasswdEntry entry = {};
    bool isFound = false;
    while (!isFound && readSmbPasswdEntry(handle, &entry) == 0) {
        isFound = core::equalIgnoringCase(entry.name, user);
    }
    closeSmbPasswd(handle);
    return isFound && checkNtPassword(&entry, kLastUser, "password") == 0;
}

bool readBare()
{
    const core::File file = core::openFile(kFile, "r");
    std::array<char, 1024> line;
    int lines = 0;
    while (std::fgets(line.data(), static_cast<int>(line.size()), file.get()) != nullptr) {
        ++lines;
    }
    return lines == kAccounts;
}

double processorMilliseconds()
{
    timespec time = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// The time that work takes; the work must succeed.
double milliseconds(bool (*work)())
{
    const double start = processorMilliseconds();
    const bool isGood = work();
    const double taken = processorMilliseconds() - start;
    if (!isGood) {
        std::fprintf(stderr, "bench_verify: the check or the bare read went wrong\n");
        std::exit(1);
    }
    return taken;
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

} // namespace

int main()
{
    writeAccounts();
    std::vector<double> checks;
    std::vector<double> floors;
    std::vector<double> ratios;
    for (int round = -kWarmUps; round < kRounds; ++round) {
        const double check = milliseconds(verify);
        const double floor = milliseconds(readBare);
        if (round >= 0) {
            checks.push_back(check);
            floors.push_back(floor);
            ratios.push_back(check / floor);
        }
    }
    std::printf("a check of the last of %d accounts, median of %d rounds\n", kAccounts, kRounds);
    std::printf("  check              %8.3f ms    %10.0f accounts a second\n", median(checks),
                kAccounts * 1000 / median(checks));
    std::printf("  its file, bare     %8.3f ms    %10.0f lines a second\n", median(floors),
                kAccounts * 1000 / median(floors));
    std::printf("  ratio              %8.3f    (aim: at most %.0f)\n", median(ratios), kLimit);
    return 0;
}
