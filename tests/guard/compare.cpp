// SPDX-License-Identifier: MIT
//
// usage: guard_compare bare|guarded COUNT SEED SHELL
//
// Sends random requests with harmless values to the module, and prints a digest for each hundred of
// them: of results, answers, the trace file's bytes, and all files that are left. "bare" hands
// every line to the shell; "guarded" has the guard check it first. Both must print the same.
//
// One shell runs all lines, with functions in place of the appliance's programs, so that a million
// requests take minutes. It gets each line by eval, and returns the exit code. If a line ends the
// shell (because it cannot parse it), that is an exit with 2, as for system(), and a new shell is
// started. Process ids and the clock do not change.
//
// It needs a root of its own (compare_test.sh).
#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "guard/guard.h"
#include "guard/run.h"
#include "vokcontrol.h"

namespace {

namespace fs = std::filesystem;

constexpr int kNumber = 1;
constexpr int kBatch = 100;
constexpr pid_t kProcess = 4711;
constexpr std::time_t kNow = 1'790'000'000;

bool isGuarded = false;

// ---- The shell --------------------------------------------------------------------------------

constexpr const char* kFunctions = R"(
cd /tmp && exec </dev/fd/0 >/dev/null 2>&1
sudo() { case $1 in
    /usr/bin/php) shift && php "$@" ;;
    rm) shift 2 && for file in "$@"; do : >"$file"; done ;;
    *) "$@" ;;
    esac; }
php() { case $2 in
    tovGetShareList) printf '%s' "$shares" >"$3" ;;
    tovGetUsers) printf '%s' "$users" >"$3" ;;
    tovGet*) printf '%s' "$values" >"$3" ;;
    *) printf '%s|' "$@" ;;
    esac; return "$code"; }
cat() { while IFS= read -r line; do printf '%s\n' "$line"; done <"$1"; }
grep() { while IFS= read -r line; do case $line in *"$1"*) printf '%s\n' "$line" ;; esac; done; }
du() { printf '%s\t%s\n' "$number" "$2"; return "$code"; }
ifconfig() { printf '  inet addr:192.168.1.%s  Mask:255.255.255.0\n  HWaddr 00:1A:4B\n' "$number"; }
route() { printf '0.0.0.0   192.168.1.1   0.0.0.0   UG\n'; }
ps() { printf ' 12 root %s\n' "$process"; }
fdisk() { printf 'Disk /dev/sda: %s GB\n' "$number"; }
mdadm() { printf '  Array Size : %s (931 GiB %s GB)\n' "$number" "$number"; }
pelparam() { printf '%s\n' "$number"; return "$code"; }
date() { printf '11212026\n'; }
runwebhooks() { printf 'return ["Documents","Music","%s"];\n' "$number"; }
startapp() { return "$code"; }
pelstatus() { return "$code"; }
killall() { return 1; }
)";

class Shell {
  public:
    explicit Shell(std::string program) : program_(std::move(program)) { start(); }

    /// @return like system()
    int run(const std::string& line)
    {
        const std::string text = "eval " + quote(line) + "\nprintf '%s\\n' \"$?\" >&9\n";
        send(text);
        std::array<char, 16> answer{};
        if (std::fgets(answer.data(), answer.size(), answers_) == nullptr) {
            end();
            start();
            return 2 << 8;
        }
        return std::atoi(answer.data()) << 8;
    }

    /// Sets the variables of the functions from now on.
    void set(const std::string& variables)
    {
        variables_ = variables;
        send(variables);
    }

    static std::string quote(const std::string& text)
    {
        std::string quoted = "'";
        for (const char c : text) {
            quoted += (c == '\'') ? "'\\''" : std::string(1, c);
        }
        return quoted + "'";
    }

  private:
    void start()
    {
        std::array<int, 2> lines{};
        std::array<int, 2> answers{};
        if (::pipe(lines.data()) != 0 || ::pipe(answers.data()) != 0) {
            std::abort();
        }
        process_ = ::fork();
        if (process_ == 0) {
            ::dup2(lines[0], STDIN_FILENO);
            ::dup2(answers[1], 9);
            for (const int descriptor : {lines[0], lines[1], answers[0], answers[1]}) {
                ::close(descriptor);
            }
            ::execl(program_.c_str(), "sh", nullptr);
            ::_exit(127);
        }
        ::close(lines[0]);
        ::close(answers[1]);
        lines_ = lines[1];
        answers_ = ::fdopen(answers[0], "r");
        send(kFunctions + variables_);
    }

    void end()
    {
        ::close(lines_);
        std::fclose(answers_);
        ::waitpid(process_, nullptr, 0);
    }

    void send(std::string_view text) const
    {
        while (!text.empty()) {
            const ssize_t sent = ::write(lines_, text.data(), text.size());
            text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
        }
    }

    std::string program_;
    std::string variables_;
    pid_t process_ = -1;
    int lines_ = -1;
    FILE* answers_ = nullptr;
};

Shell* shell = nullptr;

// ---- Random requests --------------------------------------------------------------------------

std::mt19937& dice()
{
    static std::mt19937 engine;
    return engine;
}

std::size_t roll(std::size_t sides)
{
    return dice()() % sides;
}

const std::string& pick(const std::vector<std::string>& list)
{
    return list[roll(list.size())];
}

const std::vector<std::string> kNames = {"anna",  "bob",          "guest", "Documents",
                                         "Music", "Tom & Jerry",  "a",     "nas-2",
                                         "1",     "\xC3\xA9lise", "..",    "config"};

/// Characters that mean only themselves between quotes of either kind, and to echo.
std::string randomText(std::size_t longest)
{
    std::string text;
    for (std::size_t size = roll(longest + 1); text.size() < size;) {
        const char c = static_cast<char>(roll(4) == 0 ? 1 + roll(255) : ' ' + roll(95));
        if (std::string_view("\"$`\\'\n").find(c) == std::string_view::npos) {
            text += c;
        }
    }
    return text;
}

/// Characters that a name without quotes may have.
std::string randomWord(std::size_t longest)
{
    static constexpr std::string_view kCharacters = "abcXYZ0189._-  ";
    std::string word;
    for (std::size_t size = roll(longest + 1); word.size() < size;) {
        word += kCharacters[roll(kCharacters.size())];
    }
    return word.starts_with('-') ? "a" + word : word;
}

std::string text()
{
    return (roll(2) == 0) ? pick(kNames) : randomText(roll(20) == 0 ? 3000 : 70);
}

std::string word()
{
    return (roll(2) == 0) ? "nas" : randomWord(40);
}

std::string digits(std::size_t longest)
{
    std::string number;
    for (std::size_t size = roll(longest + 1); number.size() < size;) {
        number += "0123456789."[roll(11)];
    }
    return number;
}

std::string le32(std::uint32_t value)
{
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((value >> shift) & 0xFFU);
    }
    return bytes;
}

std::string upload()
{
    const std::string content = randomText(200);
    const auto wrong = static_cast<std::uint32_t>(roll(8) == 0 ? roll(3) : 1);
    return le32(static_cast<std::uint32_t>(content.size()) + wrong - 1) + "\n" + content + "\n";
}

struct Command {
    const char* code;
    std::uint32_t count;
    std::string (*parameters)();
};

std::string none()
{
    return "";
}

const std::vector<Command> kCommands = {
    {"crat", 2, [] { return text() + "\n" + text() + "\n"; }},
    {"dscr", 0, text},
    {"frst", 0, none},
    {"getv", 1,
     [] {
         return pick({"firsttime", "machine_name", "pel_language", "lan_ipaddr", "x"}) + "\n";
     }},
    {"gps1", 0, none},
    {"gpsn", 0, none},
    {"gpvt", 0, none},
    {"grst", 0, none},
    {"gsp1", 1, [] { return text() + "\n"; }},
    {"gspc", 0, [] { return text() + "\n"; }},
    {"gub1", 0, none},
    {"gubs", 0, none},
    {"host", 4,
     [] {
         return digits(16) + "\n" + word() + "\n" + word() + "\n" + pick({"en", "ge", "xx"}) + "\n";
     }},
    {"lsts", 0, none},
    {"lstu", 0, none},
    {"pshr", 3,
     [] {
         return pick({"guest", "anna"}) + "\n" + text() + "\n";
     }},
    {"qlps", 0, none},
    {"rtov", 2, text},
    {"sgss", 0, none},
    {"shar", 3, [] { return text() + "\n" + text() + "\n"; }},
    {"spvt", 2, upload},
    {"sub1", 2, [] { return std::string("\1\n", 2) + word() + "\n"; }},
    {"subs", 0, [] { return std::string("\7") + word() + "\n"; }},
    {"vers", 0, none},
    {"wags", 2,
     [] {
         return pick({"system", "user", "x"}) + "\n" + text() + "\n";
     }},
    {"wall", 2, [] { return text() + "\n" + text() + "\n"; }},
    {"wasu", 4,
     [] { return text() + "\n" + text() + "\n" + text() + "\n" + std::string(1, '\0') + "\n"; }},
    {"nope", 1, text},
};

std::string makeRequest()
{
    const Command& command = kCommands[roll(kCommands.size())];
    const std::uint32_t count =
        (roll(20) == 0) ? static_cast<std::uint32_t>(roll(7)) : command.count;
    std::string request =
        std::string(command.code) + " " + le32(count) + "\n" + command.parameters();
    if (roll(20) == 0) {
        request.resize(std::min(request.size(), 6 + roll(request.size())));
    }
    request.resize(std::min<std::size_t>(request.size(), VOK_REQUEST_SIZE));
    return request;
}

// ---- What the appliance answers ---------------------------------------------------------------

std::string listing(const char* tag, const char* more)
{
    std::string out = "<list>\n";
    for (std::size_t size = roll(5); size > 0; --size) {
        out += "  <" + std::string(tag) + ">" + text() + "</" + tag + ">\n" + more;
    }
    return out + "</list>\n";
}

std::string variables()
{
    const std::string name = pick(kNames);
    return "shares=" +
           Shell::quote(listing("sharename", "  <shareproperty>public</shareproperty>\n"
                                             "  <sharelocation>internal</sharelocation>\n")) +
           "\nusers=" + Shell::quote(listing("username", "")) + "\nvalues=" +
           Shell::quote("<languag>" + name + "</languag>\n<language>" +
                        pick({"english", "german", name}) + "</language>\n<nmbdSysname>" + name +
                        "</nmbdSysname>\n") +
           "\nnumber=" + std::to_string(roll(3'000'000)) + "\ncode=" + pick({"0", "0", "0", "1"}) +
           "\nprocess=" + Shell::quote(pick({"pelstatus", "grep pelstatus"})) + "\n";
}

/// Every hundred requests begin with the same files with new content.
void change()
{
    shell->set(variables());
    for (const char* folder : {"/tmp", "/etc/pelconfig"}) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            fs::remove_all(entry);
        }
    }
    fs::create_directories("/etc/pelconfig/vokcontrol/__bksts");
    std::ofstream("/etc/pelconfig/system_var")
        << "firsttime=" << roll(2) << "\npel_pubshare_name=" << text()
        << "\nraclient_raenabled=" << roll(2) << "\n";
}

// ---- The result of a request ------------------------------------------------------------------

class Digest {
  public:
    void add(std::string_view bytes)
    {
        for (const char c : bytes) {
            value_ = (value_ ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
        }
        value_ = (value_ ^ bytes.size()) * 1099511628211ULL;
    }
    [[nodiscard]] std::uint64_t value() const { return value_; }

  private:
    std::uint64_t value_ = 14695981039346656037ULL;
};

std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void addFiles(Digest& digest)
{
    std::vector<fs::path> files;
    for (const char* folder : {"/tmp", "/etc/pelconfig"}) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file()) {
                files.push_back(entry.path());
            }
        }
    }
    std::ranges::sort(files);
    for (const fs::path& file : files) {
        digest.add(file.string());
        digest.add(readFile(file));
    }
}

void process(const std::string& request, Digest& digest)
{
    std::ranges::fill(fin_buf, '\0');
    request.copy(std::data(fin_buf), std::size(fin_buf));
    digest.add(std::to_string(process_command(kNumber)));
    std::fflush(nullptr);
    addFiles(digest);
    fs::resize_file("/tmp/dbg_vokcontrol.txt", 0);
}

// ---- The bare module --------------------------------------------------------------------------

constexpr std::string_view kTraceStart = "echo \"";
constexpr std::string_view kTraceEnd = "\" >> /tmp/dbg_vokcontrol.txt";

/// The text of a trace that a shell would change: the only intended difference. The bare module
/// writes it unchanged here, too.
std::string changedText(std::string_view line)
{
    if (!line.starts_with(kTraceStart) || !line.ends_with(kTraceEnd)) {
        return "";
    }
    line.remove_prefix(kTraceStart.size());
    line.remove_suffix(kTraceEnd.size());
    const bool isPlain = line.find_first_of("\"\\$`") == line.npos && !line.starts_with('-');
    return isPlain ? "" : std::string(line);
}

int runBare(const char* line)
{
    const std::string text = changedText(line);
    if (text.empty()) {
        return shell->run(line);
    }
    std::ofstream("/tmp/dbg_vokcontrol.txt", std::ios::binary | std::ios::app) << text << "\n";
    return 0;
}

} // namespace

// ---- In the C library's place -----------------------------------------------------------------

int guard::runShell(const char* line)
{
    return shell->run(line);
}

void guard::usePath(const char* /*entry*/) {}

extern "C" {

int system(const char* line)
{
    return isGuarded ? guard::carryOut(line) : runBare(line);
}

pid_t getpid() noexcept
{
    return kProcess;
}

std::time_t time(std::time_t* now) noexcept
{
    if (now != nullptr) {
        *now = kNow;
    }
    return kNow;
}

} // extern "C"

int main(int argc, char** argv)
{
    if (argc != 5) {
        std::cerr << "usage: guard_compare bare|guarded COUNT SEED SHELL\n";
        return 2;
    }
    isGuarded = std::string_view(argv[1]) == "guarded";
    const long count = std::atol(argv[2]);
    dice().seed(static_cast<unsigned>(std::atol(argv[3])));
    std::signal(SIGPIPE, SIG_IGN);
    fs::create_directories("/etc/pelconfig");
    fs::current_path("/tmp");
    Shell theShell(argv[4]);
    shell = &theShell;
    // The output of commands is not compared.
    std::FILE* out = ::fdopen(::dup(STDOUT_FILENO), "w");
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        return 1;
    }
    Digest digest;
    for (long done = 0; done < count; ++done) {
        if (done % kBatch == 0) {
            change();
        }
        process(makeRequest(), digest);
        if ((done + 1) % kBatch == 0 || done + 1 == count) {
            std::fprintf(out, "%ld %016llx\n", done + 1,
                         static_cast<unsigned long long>(digest.value()));
            std::fflush(out);
        }
    }
    return 0;
}
