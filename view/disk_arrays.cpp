// SPDX-License-Identifier: MIT
#include "view/disk_arrays.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "view/file_start.h"

namespace view {
namespace {

using Words = std::vector<std::string_view>;

constexpr std::string_view kBlanks = " \t\r";

Words splitWords(std::string_view line)
{
    Words words;
    while (true) {
        line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
        if (line.empty()) {
            return words;
        }
        const std::size_t end = std::min(line.find_first_of(kBlanks), line.size());
        words.push_back(line.substr(0, end));
        line.remove_prefix(end);
    }
}

/// Takes a number from the start of a text.
std::optional<unsigned> takeNumber(std::string_view& text)
{
    unsigned number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
    return number;
}

// ---- The first line of an array ---------------------------------------------------------------

/// "md0 : active raid1 sdb1[1] sda1[0]"
bool beginsArray(const Words& words)
{
    return words.size() >= 3 && words[1] == ":" && words[0] != "Personalities";
}

/// "sdb1[1](F)": the disk has failed.
void takeMember(std::string_view word, DiskArray& array)
{
    const std::size_t bracket = word.find('[');
    if (word.find("(F)", bracket) != std::string_view::npos) {
        array.failed.emplace_back(word.substr(0, bracket));
    }
}

DiskArray startArray(const Words& words)
{
    DiskArray array;
    array.name = words[0];
    array.isRunning = words[2] == "active";
    for (std::size_t i = 3; i < words.size(); ++i) {
        if (words[i].find('[') != std::string_view::npos) {
            takeMember(words[i], array);
        } else if (array.level.empty() && !words[i].starts_with('(')) {
            array.level = words[i];
        }
    }
    return array;
}

// ---- The lines after it -----------------------------------------------------------------------

/// "[2/1]": two disks are wanted, and one works.
void takeCounts(std::string_view word, DiskArray& array)
{
    if (!word.starts_with('[')) {
        return;
    }
    word.remove_prefix(1);
    const std::optional<unsigned> wanted = takeNumber(word);
    if (!wanted || !word.starts_with('/')) {
        return;
    }
    word.remove_prefix(1);
    const std::optional<unsigned> working = takeNumber(word);
    if (working && word == "]") {
        array.wanted = *wanted;
        array.working = *working;
    }
}

struct TaskName {
    std::string_view name;
    ArrayTask::Kind kind;
};

constexpr auto kTasks = std::to_array<TaskName>({
    {"recovery", ArrayTask::Kind::kRebuild},
    {"resync", ArrayTask::Kind::kCheck},
    {"check", ArrayTask::Kind::kCheck},
    {"reshape", ArrayTask::Kind::kReshape},
});

/// What follows a name and its "="; nothing if the line has no such value.
std::optional<std::string_view> valueIn(std::string_view line, std::string_view name)
{
    const std::size_t start = line.find(name);
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    line.remove_prefix(start + name.size());
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    if (!line.starts_with('=')) {
        return std::nullopt;
    }
    line.remove_prefix(1);
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    return line;
}

/// "finish=127.5min"
std::optional<unsigned> minutesIn(std::string_view line)
{
    std::optional<std::string_view> value = valueIn(line, "finish");
    if (!value) {
        return std::nullopt;
    }
    const std::optional<unsigned> minutes = takeNumber(*value);
    const bool isMore = value->starts_with('.') && !value->starts_with(".0");
    return minutes ? std::optional(*minutes + (isMore ? 1 : 0)) : std::nullopt;
}

/// "recovery = 12.6% (37043392/292945152) finish=127.5min speed=33440K/sec", "resync=DELAYED"
void takeTask(std::string_view line, DiskArray& array)
{
    for (const TaskName& task : kTasks) {
        std::optional<std::string_view> value = valueIn(line, task.name);
        if (value) {
            const std::optional<unsigned> percent = takeNumber(*value);
            array.task = {.kind = task.kind,
                          .isWaiting = !percent.has_value(),
                          .percent = percent.value_or(0),
                          .minutes = minutesIn(line)};
        }
    }
}

void takeLine(std::string_view line, std::vector<DiskArray>& arrays)
{
    const Words words = splitWords(line);
    if (beginsArray(words)) {
        arrays.push_back(startArray(words));
    } else if (!arrays.empty() && line.find_first_of(kBlanks) == 0) {
        for (const std::string_view word : words) {
            takeCounts(word, arrays.back());
        }
        takeTask(line, arrays.back());
    }
}

} // namespace

std::vector<DiskArray> parseDiskArrays(std::string_view text)
{
    std::vector<DiskArray> arrays;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        takeLine(text.substr(0, end), arrays);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return arrays;
}

std::vector<DiskArray> readDiskArrays(const char* file)
{
    // The kernel hands out a page at a time, which a dozen arrays do not fill.
    constexpr std::size_t kMost = 4096;
    return parseDiskArrays(readFileStart(file, kMost).bytes);
}

} // namespace view
