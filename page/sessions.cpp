// SPDX-License-Identifier: MIT
#include "page/sessions.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "page/digest.h"
#include "page/private_files.h"
#include "page/token.h"

namespace page {
namespace {

namespace fs = std::filesystem;

// A file has four lines: when the session began and when it was used last, each of the same width
// so that the second can be written over in place; its form token; its account.
constexpr std::size_t kTimeWidth = 12;
constexpr std::size_t kUsedOffset = kTimeWidth + 1;
constexpr std::size_t kTokenOffset = 2 * (kTimeWidth + 1);
constexpr std::size_t kTokenWidth = 32;
constexpr std::size_t kAccountOffset = kTokenOffset + kTokenWidth + 1;

struct Record {
    Time began;
    Time used;
    Session session;

    /// A time to come is none that was ever noted here.
    [[nodiscard]] bool isAlive(Time now) const
    {
        return began <= now && used <= now && now - used < Sessions::kIdle &&
               now - began < Sessions::kLongest;
    }
};

std::string timeLine(Time time)
{
    std::string digits = std::to_string(time.count());
    return std::string(kTimeWidth - std::min(digits.size(), kTimeWidth), '0') + digits + "\n";
}

std::optional<Time> readTime(std::string_view line)
{
    Time::rep seconds = 0;
    const char* end = line.data() + kTimeWidth;
    const auto read = std::from_chars(line.data(), end, seconds);
    const bool isWhole = read.ec == std::errc() && read.ptr == end && *end == '\n';
    return isWhole ? std::optional(Time(seconds)) : std::nullopt;
}

std::optional<Record> readRecord(std::string_view text)
{
    if (text.size() <= kAccountOffset || text.back() != '\n') {
        return std::nullopt;
    }
    const std::optional<Time> began = readTime(text);
    const std::optional<Time> used = readTime(text.substr(kUsedOffset));
    if (!began || !used) {
        return std::nullopt;
    }
    text.remove_suffix(1);
    return Record{*began,
                  *used,
                  {std::string(text.substr(kAccountOffset)),
                   std::string(text.substr(kTokenOffset, kTokenWidth))}};
}

/// Notes that a session was used. One that has just been ended is not there again after this.
void noteUse(const std::string& path, Time now)
{
    const Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW));
    const std::string line = timeLine(now);
    if (file.number() >= 0 && ::pwrite(file.number(), line.data(), line.size(), kUsedOffset) < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot write " + path);
    }
}

struct Entry {
    std::string path;
    Time used;
};

/// The sessions that go on; the others are removed.
std::vector<Entry> sweep(const std::string& folder, Time now)
{
    std::vector<Entry> alive;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const std::string path = entry.path();
        const std::optional<std::string> text = readPrivateFile(path);
        const std::optional<Record> record = text ? readRecord(*text) : std::nullopt;
        if (record && record->isAlive(now)) {
            alive.push_back({path, record->used});
        } else {
            ::unlink(path.c_str());
        }
    }
    return alive;
}

} // namespace

Sessions::Sessions(std::string folder) : folder_(std::move(folder))
{
    requirePrivateFolder(folder_);
    folder_ += "/sessions";
    requirePrivateFolder(folder_);
}

std::string Sessions::pathOf(std::string_view token) const
{
    return folder_ + "/" + digestOf(token);
}

void Sessions::makeRoom(Time now) const
{
    std::vector<Entry> alive = sweep(folder_, now);
    if (alive.size() >= kMost) {
        ::unlink(std::ranges::min_element(alive, {}, &Entry::used)->path.c_str());
    }
}

std::string Sessions::begin(std::string_view account, Time now)
{
    const Descriptor lock = lockPrivateFile(folder_ + ".lock");
    makeRoom(now);
    std::string token = makeToken();
    replacePrivateFile(pathOf(token), timeLine(now) + timeLine(now) + makeToken() + "\n" +
                                          std::string(account) + "\n");
    return token;
}

std::optional<Session> Sessions::find(std::string_view token, Time now)
{
    if (!isToken(token)) {
        return std::nullopt;
    }
    const std::string path = pathOf(token);
    const std::optional<std::string> text = readPrivateFile(path);
    std::optional<Record> record = text ? readRecord(*text) : std::nullopt;
    if (!record || !record->isAlive(now)) {
        ::unlink(path.c_str());
        return std::nullopt;
    }
    noteUse(path, now);
    return std::move(record->session);
}

void Sessions::end(std::string_view token)
{
    ::unlink(pathOf(token).c_str());
}

} // namespace page
