// SPDX-License-Identifier: MIT
#include "tests/support/root.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "core/core.h"

namespace fs = std::filesystem;

namespace root {
namespace {

/// Empties a folder, even one without permissions.
void emptyFolder(const fs::path& folder)
{
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add);
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.is_directory() && !entry.is_symlink()) {
            emptyFolder(entry.path());
        }
        fs::remove(entry.path());
    }
}

void clear()
{
    for (const char* folder : {"/tmp", "/etc/pelconfig", "/share", "/stubs"}) {
        emptyFolder(folder);
        fs::permissions(folder, fs::perms(0755));
    }
    fs::create_directories("/etc/pelconfig/vokcontrol/__bksts");
    std::signal(SIGCHLD, SIG_DFL);
    stub("php", "exit 1");
    watch::restart();
}

/// Expects that the guard would run every line that the module has sent to a shell.
void expectNothingStrange()
{
    for (const std::string& line : watch::takeStrange()) {
        ADD_FAILURE() << "the guard knows no such line: " << line;
    }
}

int exitCodeOf(int status)
{
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string workName(const char* kind)
{
    static int number = 0;
    return "/stubs/" + std::string(kind) + std::to_string(++number);
}

[[noreturn]] void startProgram(const std::vector<std::string>& command, bool isWatched,
                               const std::string& output, const std::string& errors)
{
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    if (isWatched) {
        ::setenv("LD_PRELOAD", built("libsystemwatch.so").c_str(), 1);
    }
    ::dup2(::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), STDOUT_FILENO);
    ::dup2(::open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), STDERR_FILENO);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
}

} // namespace

void writeFile(const std::string& path, std::string_view content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    ASSERT_TRUE(file) << "cannot write " << path;
}

std::string readFile(const std::string& path)
{
    if (fs::is_directory(path)) {
        return "";
    }
    // Reading a status file's mebibyte byte by byte would take an emulated test seconds.
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

bool exists(const std::string& path)
{
    return fs::exists(fs::symlink_status(path));
}

bool isOpen(const std::string& path)
{
    return std::ranges::any_of(fs::directory_iterator("/proc/self/fd"), [&](const auto& entry) {
        std::error_code noLongerOpen;
        const std::string target = fs::read_symlink(entry.path(), noLongerOpen);
        return target == path || target == path + " (deleted)";
    });
}

namespace {

/// The open files of this process in the folders that tests use.
std::vector<std::string> openPaths()
{
    std::vector<std::string> paths;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code noLongerOpen;
        const std::string path = fs::read_symlink(entry.path(), noLongerOpen);
        if (path.starts_with("/tmp/") || path.starts_with("/etc/")) {
            paths.push_back(path);
        }
    }
    return paths;
}

/// Files that the program that started the test left open, such as the log of ctest.
const std::vector<std::string> kInherited = openPaths();

} // namespace

std::vector<std::string> openFiles()
{
    std::vector<std::string> paths = openPaths();
    std::erase_if(paths, [](const std::string& path) {
        return std::ranges::find(kInherited, path) != kInherited.end();
    });
    return paths;
}

void closeFolder(const std::string& folder)
{
    fs::permissions(folder, fs::perms(0555));
}

void openFolder(const std::string& folder)
{
    fs::permissions(folder, fs::perms(0755));
}

void replaceByFolder(const std::string& path)
{
    fs::remove(path);
    fs::create_directories(path + "/inside");
}

void makeUnreadable(const std::string& path)
{
    fs::permissions(path, fs::perms(0));
}

std::string printed(const std::function<void()>& function)
{
    // Not a pipe, which can fill up, and not a file, which needs space on a disk that a test may
    // fill.
    const int store = ::memfd_create("printed", MFD_CLOEXEC);
    EXPECT_GE(store, 0);
    std::fflush(stdout);
    const int before = ::dup(STDOUT_FILENO);
    ::dup2(store, STDOUT_FILENO);
    function();
    std::fflush(stdout);
    ::dup2(before, STDOUT_FILENO);
    ::close(before);
    std::string text(static_cast<std::size_t>(::lseek(store, 0, SEEK_END)), '\0');
    EXPECT_EQ(::pread(store, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    ::close(store);
    return text;
}

std::vector<std::string> printedPieces(const std::function<void()>& function)
{
    // Each write to a socket of this type is a packet of its own.
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
    std::fflush(stdout);
    const int before = ::dup(STDOUT_FILENO);
    ::dup2(ends[1], STDOUT_FILENO);
    ::close(ends[1]);
    std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
    function();
    std::fflush(stdout);
    ::dup2(before, STDOUT_FILENO);
    ::close(before);

    std::vector<std::string> pieces;
    std::array<char, 1 << 16> piece;
    for (ssize_t size = 0; (size = ::read(ends[0], piece.data(), piece.size())) > 0;) {
        pieces.emplace_back(piece.data(), static_cast<std::size_t>(size));
    }
    ::close(ends[0]);
    return pieces;
}

std::vector<std::string> list(const std::string& folder)
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
}

void stub(const std::string& command, const std::string& script)
{
    const std::string path = (command == "php" ? "/usr/bin/" : "/stubs/") + command;
    writeFile(path, "#!/usr/bin/sh\n" + script + "\n");
    fs::permissions(path, fs::perms(0755));
}

void stubListing(std::string_view listing)
{
    writeFile("/stubs/listing", listing);
    stub("php", "cat /stubs/listing >\"$3\"");
}

std::string shareBlock(const std::string& name, const std::string& location)
{
    return "  <shareinfo>\n  <sharename>" + name + "</sharename>\n" +
           "  <shareproperty>public</shareproperty>\n  <sharelocation>" + location +
           "</sharelocation>\n  </shareinfo>\n";
}

void stubUsage(const std::string& share, const std::string& kibibytes)
{
    fs::create_directories("/stubs/usage");
    writeFile("/stubs/usage/" + share, kibibytes + "\t/share/" + share + "\n");
    stub("du", "cat \"/stubs/usage/${2#/share/}\" 2>/dev/null");
}

void fillDisk(const std::string& folder)
{
    const std::string path = folder + "/filler";
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    const std::vector<char> block(1 << 16);
    std::size_t size = block.size();
    while (size > 0) {
        size = (::write(file, block.data(), size) > 0) ? size : size / 2;
    }
    ::close(file);
}

void freeDisk(const std::string& folder)
{
    fs::remove(folder + "/filler");
}

std::string le16(unsigned value)
{
    return {static_cast<char>(value & 0xFFU), static_cast<char>((value >> 8U) & 0xFFU)};
}

std::string le32(std::uint32_t value)
{
    return le16(value & 0xFFFFU) + le16(value >> 16U);
}

std::string zeros(std::size_t count)
{
    return std::string(count, '\0');
}

std::string trace(const std::string& message)
{
    return "echo \"" + message + "\" >> /tmp/dbg_vokcontrol.txt";
}

std::string firstTrace(const std::string& message)
{
    return "echo \"" + message + "\" > /tmp/dbg_vokcontrol.txt";
}

std::string cutTrace(const std::string& message)
{
    constexpr std::size_t kLongestMessage = 1999;
    return trace(message.substr(0, kLongestMessage));
}

std::string unreadVariable(const std::string& reason)
{
    return "//<!-- getvar() - getsetvar failed open file: " + kVariables + ", syserr: " + reason +
           "-->\n";
}

std::string sizeTrace(const std::string& path, std::size_t size)
{
    return trace("file " + path + " size = " + std::to_string(size) + " bytes");
}

std::string pid()
{
    return std::to_string(::getpid());
}

std::string workFile(const std::string& name)
{
    return "/tmp/" + name + pid();
}

std::vector<std::string> join(const std::vector<std::vector<std::string>>& lists)
{
    std::vector<std::string> all;
    for (const std::vector<std::string>& list : lists) {
        all.insert(all.end(), list.begin(), list.end());
    }
    return all;
}

std::string upper(std::string text)
{
    std::ranges::transform(text, text.begin(), [](char c) {
        return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

Program::Program(const std::vector<std::string>& command, bool isWatched)
    : output_(workName("output")), errors_(workName("errors"))
{
    // Processes that the program leaves running hold the other end of this pipe.
    std::array<int, 2> pipe{};
    EXPECT_EQ(::pipe(pipe.data()), 0);
    ::fcntl(pipe[0], F_SETFD, FD_CLOEXEC);
    pid_ = ::fork();
    if (pid_ == 0) {
        startProgram(command, isWatched, output_, errors_);
    }
    ::close(pipe[1]);
    lifeline_ = pipe[0];
}

Ended Program::wait()
{
    int status = 0;
    ::waitpid(pid_, &status, 0);
    char byte = 0;
    while (::read(lifeline_, &byte, 1) > 0) {
    }
    ::close(lifeline_);
    return {exitCodeOf(status), readFile(output_), readFile(errors_)};
}

Ended run(const std::vector<std::string>& command, bool isWatched)
{
    return Program(command, isWatched).wait();
}

std::string built(const std::string& program)
{
    return "/build/" + program;
}

void inChild(const std::function<void()>& function)
{
    const pid_t pid = ::fork();
    if (pid == 0) {
        function();
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    EXPECT_EQ(exitCodeOf(status), 0);
}

void UntracedTest::SetUp()
{
    clear();
}

void UntracedTest::TearDown()
{
    expectNothingStrange();
    clear();
}

void Test::SetUp()
{
    clear();
    dbg_trace("the test begins");
    fs::remove(kTraceFile);
    watch::restart();
}

void Test::TearDown()
{
    expectNothingStrange();
    clear();
}

} // namespace root
