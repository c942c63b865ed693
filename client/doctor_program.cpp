// SPDX-License-Identifier: MIT
#include "client/doctor_program.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "text/translation.h"
#include "view/file_start.h"

namespace client {
namespace {

using text::fill;
using text::tr;

using Words = std::vector<std::string>;

constexpr std::size_t kMostOutput = std::size_t{256} << 10;
constexpr int kCannotStart = 127;

// ---- Running a program ------------------------------------------------------------------------

/// A pipe that a program writes into.
class Output {
  public:
    Output() : isMade_(::pipe2(ends_.data(), O_CLOEXEC) == 0)
    {
        if (!isMade_) {
            ends_.fill(-1);
        }
    }
    ~Output()
    {
        ::close(ends_[0]);
        closeWriter();
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    [[nodiscard]] bool isMade() const { return isMade_; }
    [[nodiscard]] int reader() const { return ends_[0]; }
    [[nodiscard]] int writer() const { return ends_[1]; }

    /// So that the pipe ends when the program does.
    void closeWriter() { ::close(std::exchange(ends_[1], -1)); }

    /// Reads a piece. Of an output that is too long the rest is read, but not kept.
    /// @return false at the end
    [[nodiscard]] bool read()
    {
        std::array<char, 4096> piece;
        const ssize_t got = ::read(ends_[0], piece.data(), piece.size());
        if (got > 0) {
            text.append(piece.data(),
                        std::min(static_cast<std::size_t>(got), kMostOutput - text.size()));
        }
        return got > 0;
    }

    std::string text = {};

  private:
    std::array<int, 2> ends_{};
    bool isMade_;
};

/// Reads both to their ends, in whatever order they come.
void readBoth(Output& output, Output& errors)
{
    auto wanted = std::to_array<pollfd>({{.fd = output.reader(), .events = POLLIN, .revents = 0},
                                         {.fd = errors.reader(), .events = POLLIN, .revents = 0}});
    const auto outputs = std::to_array<Output*>({&output, &errors});
    while (wanted[0].fd >= 0 || wanted[1].fd >= 0) {
        ::poll(wanted.data(), wanted.size(), -1);
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            if (wanted[i].revents != 0 && !outputs[i]->read()) {
                wanted[i].fd = -1;
            }
        }
    }
}

std::vector<char*> pointersTo(Words& words)
{
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

[[noreturn]] void become(const std::string& path, std::vector<std::string> words,
                         std::vector<std::string> environment, const Output& output,
                         const Output& errors)
{
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(output.writer(), STDOUT_FILENO);
    ::dup2(errors.writer(), STDERR_FILENO);
    ::execve(path.c_str(), pointersTo(words).data(), pointersTo(environment).data());
    ::_exit(kCannotStart);
}

int codeOf(int status)
{
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// ---- Words ------------------------------------------------------------------------------------

std::string join(const Words& words)
{
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

std::string firstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

Diagnosis complainOfEnd(const std::string& what, const Ended& ended)
{
    const std::string said = firstLine(ended.errors);
    const std::string code = std::to_string(ended.code);
    return wrong(said.empty() ? fill(tr("{1} ended with {2}."), {what, code})
                              : fill(tr("{1} ended with {2} and said: {3}."), {what, code, said}),
                 tr("run it by hand and correct it; porting.md says what it has to answer"));
}

Diagnosis complainOfAbsence(const Surroundings& surroundings, const std::string& name)
{
    return wrong(fill(tr("There is no program {1} in {2}."), {name, surroundings.settings.path}),
                 fill(tr("install it, or set path in {}"), {surroundings.settingsFile}));
}

/// @param command  the command line, as a complaint shows it
ProgramAnswer ask(const Surroundings& surroundings, const Words& words, const std::string& command)
{
    if (!findProgram(surroundings, words.front())) {
        return {.complaint = complainOfAbsence(surroundings, words.front())};
    }
    Ended ended = runProgram(surroundings, words);
    if (ended.code != 0) {
        return {.complaint = complainOfEnd(command, ended)};
    }
    return {.complaint = std::nullopt, .text = std::move(ended.output)};
}

} // namespace

std::optional<std::string> findProgram(const Surroundings& surroundings, const std::string& name)
{
    std::string folders = surroundings.settings.path + ":";
    if (name.find('/') != std::string::npos) {
        return (::access(name.c_str(), X_OK) == 0) ? std::optional(name) : std::nullopt;
    }
    for (std::size_t end = 0; (end = folders.find(':')) != std::string::npos;
         folders.erase(0, end + 1)) {
        const std::string path = folders.substr(0, end) + "/" + name;
        if (::access(path.c_str(), X_OK) == 0 && std::filesystem::is_regular_file(path)) {
            return path;
        }
    }
    return std::nullopt;
}

Ended runProgram(const Surroundings& surroundings, const Words& words)
{
    Output output;
    Output errors;
    const std::optional<std::string> path = findProgram(surroundings, words.front());
    const bool canStart = path && output.isMade() && errors.isMade();
    const pid_t process = canStart ? ::fork() : -1;
    if (process == 0) {
        become(*path, words, {"PATH=" + surroundings.settings.path, "HOME=/", "LC_ALL=C"}, output,
               errors);
    }
    if (process < 0) {
        return {.code = kCannotStart, .output = {}, .errors = tr("it could not be started")};
    }
    output.closeWriter();
    errors.closeWriter();
    readBoth(output, errors);
    int status = 0;
    ::waitpid(process, &status, 0);
    return {.code = codeOf(status), .output = output.text, .errors = errors.text};
}

ProgramAnswer askProgram(const Surroundings& surroundings, const Words& words)
{
    return ask(surroundings, words, join(words));
}

ProgramAnswer askScript(const Surroundings& surroundings, const std::string& script,
                        const std::string& function)
{
    if (surroundings.folder.empty()) {
        return {.complaint = unchecked(tr("Not checked: no file can be made in /tmp."))};
    }
    const std::string file = surroundings.folder + "/answer";
    std::filesystem::remove(file);
    Words words = {"sudo", "/usr/bin/php", "/etc/inc/" + script, function};
    const std::string command = join(words) + " FILE";
    words.push_back(file);
    ProgramAnswer answer = ask(surroundings, words, command);
    if (answer.complaint) {
        return answer;
    }
    const view::FileStart written = view::readFileStart(file.c_str(), kMostOutput);
    if (!written.isOpen) {
        return {.complaint = wrong(fill(tr("{} ended with 0, but wrote no file."), {function}),
                                   tr("have it write its answer into the file that is its "
                                      "argument"))};
    }
    return {.complaint = std::nullopt, .text = written.bytes};
}

} // namespace client
