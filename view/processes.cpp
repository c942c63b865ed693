// SPDX-License-Identifier: MIT
#include "view/processes.h"

#include <charconv>
#include <dirent.h>
#include <memory>
#include <optional>
#include <string_view>

#include "view/file_start.h"

namespace view {
namespace {

/// The start of a process's file, long enough for the values that are needed; empty if the process
/// has ended, even during the read.
std::string readFile(const std::string& folder, const char* name)
{
    constexpr std::size_t kMost = 4096;
    return readFileStart(("/proc/" + folder + name).c_str(), kMost).bytes;
}

/// Splits words that each end with a zero byte.
std::vector<std::string> splitWords(std::string_view text)
{
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find('\0'));
        words.emplace_back(word);
        text.remove_prefix((word.size() < text.size()) ? word.size() + 1 : text.size());
    }
    return words;
}

/// The parent is two words after the program's name, which is in parentheses and may contain any
/// characters.
int parentIn(std::string_view status)
{
    const std::size_t nameEnd = status.rfind(") ");
    int parent = 0;
    if (nameEnd != std::string_view::npos && nameEnd + 4 < status.size()) {
        std::from_chars(status.data() + nameEnd + 4, status.data() + status.size(), parent);
    }
    return parent;
}

std::optional<Process> readProcess(const std::string& folder)
{
    const std::string command = readFile(folder, "/cmdline");
    if (command.empty()) {
        return std::nullopt;
    }
    return Process{.id = std::stoi(folder),
                   .parent = parentIn(readFile(folder, "/stat")),
                   .command = splitWords(command)};
}

/// A word without its folders.
std::string_view nameOf(const Process& process, std::size_t word)
{
    const std::string_view path =
        (word < process.command.size()) ? std::string_view(process.command[word]) : "";
    return path.substr(path.rfind('/') + 1);
}

bool isNumber(std::string_view name)
{
    return name.find_first_not_of("0123456789") == std::string_view::npos;
}

} // namespace

Processes listProcesses()
{
    Processes processes;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc"), ::closedir);
    while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
        std::optional<Process> process =
            isNumber(entry->d_name) ? readProcess(entry->d_name) : std::nullopt;
        if (process) {
            // If users see only their own processes, process 1 is hidden.
            processes.areVisible = processes.areVisible || process->id == 1;
            processes.all.push_back(*std::move(process));
        }
    }
    return processes;
}

bool isProgram(const Process& process, std::string_view name)
{
    const bool isEmulated = nameOf(process, 0).starts_with("qemu-");
    return nameOf(process, isEmulated ? 1 : 0) == name;
}

} // namespace view
