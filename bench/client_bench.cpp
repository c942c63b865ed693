// SPDX-License-Identifier: MIT
//
// How much longer vokctl runs than a program that does nothing. Its subcommands find their answers
// at once, or none. Both programs take turns in one run, so that other load on the machine affects
// both; it affects the shortest times least.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "bench/alternation.h"
#include "sharestatus/status_file.h"
#include "sharestatus/status_format.h"

namespace {

constexpr int kShares = 50;
constexpr int kRounds = 301;
constexpr int kWarmUps = 10;
constexpr double kLimit = 1.0;

/// A command line, and its expected exit code.
struct Subject {
    std::vector<const char*> arguments;
    int exitCode;
};

const Subject kBare = {{"bench_bare"}, 0};

const std::array<Subject, 3> kSubjects = {{
    {{"vokctl", "--version"}, 0},
    {{"vokctl", "shares", "list", "--socket", "/tmp/none"}, 3},
    {{"vokctl", "status"}, 0},
}};

void publishShares()
{
    std::filesystem::create_directories("/etc/pelconfig/vokcontrol");
    std::array<char, sharestatus::kMaxPayloadSize> buffer;
    sharestatus::TableWriter table(buffer);
    for (int i = 0; i < kShares; ++i) {
        table.append(sharestatus::WorkRecord{}, ("share-" + std::to_string(i)).c_str());
    }
    table.finish();
    sharestatus::publishStatus({buffer.data(), table.size()});
}

/// Discards a program's output and error messages.
class Nowhere {
  public:
    Nowhere()
    {
        ::posix_spawn_file_actions_init(&actions_);
        for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
            ::posix_spawn_file_actions_addopen(&actions_, descriptor, "/dev/null", O_WRONLY, 0);
        }
    }
    ~Nowhere() { ::posix_spawn_file_actions_destroy(&actions_); }
    Nowhere(const Nowhere&) = delete;
    Nowhere& operator=(const Nowhere&) = delete;

    [[nodiscard]] const posix_spawn_file_actions_t* actions() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_;
};

/// From start to end, in milliseconds.
double run(const Subject& subject, const Nowhere& nowhere)
{
    std::vector<char*> arguments;
    for (const char* argument : subject.arguments) {
        arguments.push_back(const_cast<char*>(argument)); // spawn does not write to it
    }
    arguments.push_back(nullptr);
    int status = -1;
    const double taken = bench::milliseconds([&] {
        pid_t child = -1;
        if (::posix_spawnp(&child, arguments[0], nowhere.actions(), nullptr, arguments.data(),
                           ::environ) == 0) {
            ::waitpid(child, &status, 0);
        }
    });
    if (!WIFEXITED(status) || WEXITSTATUS(status) != subject.exitCode) {
        std::fprintf(stderr, "bench_client: %s has not ended with %d\n", arguments[0],
                     subject.exitCode);
        std::exit(1);
    }
    return taken;
}

struct Times {
    std::vector<double> client;
    std::vector<double> bare;
};

Times takeTurns(const Subject& subject)
{
    const Nowhere nowhere;
    Times times;
    for (int round = -kWarmUps; round < kRounds; ++round) {
        const double client = run(subject, nowhere);
        const double bare = run(kBare, nowhere);
        if (round >= 0) {
            times.client.push_back(client);
            times.bare.push_back(bare);
        }
    }
    return times;
}

void report(const Subject& subject)
{
    const auto [client, bare] = takeTurns(subject);
    const double least = std::ranges::min(client) - std::ranges::min(bare);
    const double middle = bench::median(client) - bench::median(bare);
    std::string line;
    for (const char* argument : subject.arguments) {
        line += std::string(line.empty() ? "" : " ") + argument;
    }
    std::printf("%s, least and median of %d rounds\n", line.c_str(), kRounds);
    std::printf("  start to end       %8.3f ms    %8.3f ms\n", std::ranges::min(client),
                bench::median(client));
    std::printf("  a bare program     %8.3f ms    %8.3f ms\n", std::ranges::min(bare),
                bench::median(bare));
    std::printf("  more than that     %8.3f ms    %8.3f ms    (aim: at most %.0f ms)\n", least,
                middle, kLimit);
}

} // namespace

int main()
{
    publishShares();
    for (const Subject& subject : kSubjects) {
        report(subject);
    }
    return 0;
}
