// SPDX-License-Identifier: MIT
//
// Requests per second through the service, compared with the least that they cost: a loop of forked
// children, each of which counts one request and calls the dispatcher, with the same shell lines.
// One client sends one request after the other.
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/alternation.h"
#include "bench/appliance.h"
#include "bench/request.h"
#include "vokcontrol.h"

namespace {

constexpr const char* kSocket = "/tmp/socket";

/// The children's answer files: not the numbers that the service uses.
constexpr int kFirstNumber = 1'000'000;

// ---- The service ------------------------------------------------------------------------------

/// @return the connection, or a negative number
int connectToService()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::string_view(kSocket).copy(address.sun_path, sizeof address.sun_path - 1);
    const int connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(connection);
        return -1;
    }
    return connection;
}

bool isServing()
{
    const int connection = connectToService();
    if (connection >= 0) {
        ::close(connection);
    }
    return connection >= 0;
}

/// A running vokserve; its log is discarded.
class Service {
  public:
    Service() : pid_(::fork())
    {
        if (pid_ == 0) {
            [[maybe_unused]] const FILE* log = std::freopen("/dev/null", "w", stderr);
            ::execlp("vokserve", "vokserve", "--shared-tmp", "--socket", kSocket, "--path",
                     std::getenv("PATH"), nullptr);
            ::_exit(127);
        }
        constexpr int kTries = 500;
        constexpr useconds_t kPause = 10'000;
        for (int tries = 0; tries < kTries && !isServing(); ++tries) {
            ::usleep(kPause);
        }
    }

    ~Service()
    {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }

    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

  private:
    pid_t pid_;
};

std::string readToEnd(int connection)
{
    std::string answer;
    std::array<char, VOK_REQUEST_SIZE> piece;
    ssize_t size = 0;
    while ((size = ::read(connection, piece.data(), piece.size())) > 0) {
        answer.append(piece.data(), static_cast<std::size_t>(size));
    }
    return answer;
}

std::string askService(std::string_view frame)
{
    const int connection = connectToService();
    if (connection < 0) {
        std::perror("cannot reach the service");
        std::exit(1);
    }
    ::send(connection, frame.data(), frame.size(), MSG_NOSIGNAL);
    ::shutdown(connection, SHUT_WR);
    std::string answer = readToEnd(connection);
    ::close(connection);
    return answer;
}

// ---- Forked children --------------------------------------------------------------------------

std::string takeAnswer(int number)
{
    const std::string path = VOK_ANSWER_FILE + std::to_string(number);
    std::ifstream file(path, std::ios::binary);
    std::string answer{std::istreambuf_iterator<char>(file), {}};
    ::unlink(path.c_str());
    return answer;
}

/// The usage table that the children share.
struct Counts {
    CommandUsage table;
    std::int32_t lastSave;
};

Counts& counts()
{
    static void* const memory =
        ::mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *static_cast<Counts*>(memory);
}

void count(std::string_view frame)
{
    std::uint32_t code = 0;
    frame.copy(reinterpret_cast<char*>(&code), sizeof code);
    init_cmd_buffer(&counts().table);
    save_cmd_cnt(&counts().table, &counts().lastSave, code);
}

std::string askChild(std::string_view frame)
{
    counts(); // made before the first child, so that all share it
    static int lastNumber = kFirstNumber;
    const int number = ++lastNumber;
    const pid_t child = ::fork();
    if (child == 0) {
        count(frame);
        bench::load(frame);
        process_command(number);
        std::exit(0);
    }
    ::waitpid(child, nullptr, 0);
    return takeAnswer(number);
}

// ---- The comparison ---------------------------------------------------------------------------

/// A command, and enough requests per turn for a turn that can be measured.
struct Subject {
    const char* code;
    int requests;
};

constexpr std::array<Subject, 2> kSubjects = {{{"lstu", 5}, {"gubs", 50}}};

struct Outcome {
    bench::Comparison medians; ///< children first
    bool isGood;               ///< every answer was the same
};

/// The command also prints names, which are discarded.
Outcome compareQuietly(const Subject& subject)
{
    const bench::Silence silence;
    const std::string frame = bench::frame(subject.code);
    const std::string answer = askChild(frame);
    bool isGood = answer.empty() == (std::string_view(subject.code) == "gubs");
    const auto turn = [&](auto ask) {
        for (int i = 0; i < subject.requests; ++i) {
            isGood = ask(frame) == answer && isGood;
        }
    };
    const bench::Comparison medians =
        bench::alternate([&] { turn(askChild); }, [&] { turn(askService); });
    return {medians, isGood};
}

/// @return whether the figures are valid
bool report(const Subject& subject)
{
    const auto [medians, isGood] = compareQuietly(subject);
    if (!isGood) {
        std::printf("%s: not every answer is the one that is expected\n", subject.code);
        return false;
    }
    const double perSecond = 1000.0 * subject.requests;
    std::printf("%s, one request after the other, median of %d rounds of %d\n", subject.code,
                bench::kRounds, subject.requests);
    std::printf("  through service    %8.1f requests/s\n", perSecond / medians.second);
    std::printf("  forked children    %8.1f requests/s\n", perSecond / medians.first);
    std::printf("  ratio              %8.3f    (aim: at least 0.9)\n", medians.ratio);
    return true;
}

} // namespace

int main()
{
    bench::makeUsers();
    std::filesystem::create_directories("/etc/pelconfig/vokcontrol");
    const Service service;
    bool isGood = true;
    for (const Subject& subject : kSubjects) {
        isGood = report(subject) && isGood;
    }
    return isGood ? 0 : 1;
}
