// SPDX-License-Identifier: MIT
#include "page/collection.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <numeric>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "sharestatus/semaphore_format.h"
#include "sharestatus/status_format.h"

namespace page {
namespace {

using sharestatus::ShareEntry;

// ---- Records ----------------------------------------------------------------------------------

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::optional<Space> readUsed(const ShareEntry& entry)
{
    const bool isMeasured = entry.unit == 'K' || entry.unit == 'M' || entry.unit == 'G';
    return isMeasured ? std::optional(Space{entry.used, entry.unit}) : std::nullopt;
}

unsigned readNumber(std::string_view digits)
{
    return std::accumulate(digits.begin(), digits.end(), 0U, [](unsigned number, char digit) {
        return number * 10 + static_cast<unsigned>(digit - '0');
    });
}

/// MMDDYYYY, where it is a day of the calendar.
std::optional<std::chrono::sys_days> readDay(std::string_view date)
{
    if (!std::ranges::all_of(date, isDigit)) {
        return std::nullopt;
    }
    const std::chrono::year_month_day day{
        std::chrono::year(static_cast<int>(readNumber(date.substr(4, 4)))),
        std::chrono::month(readNumber(date.substr(0, 2))),
        std::chrono::day(readNumber(date.substr(2, 2)))};
    return day.ok() ? std::optional(std::chrono::sys_days(day)) : std::nullopt;
}

Share readShare(const ShareEntry& entry)
{
    return {
        .name = std::string(entry.name),
        .used = readUsed(entry),
        .backupState = isDigit(entry.state) ? std::optional(entry.state - '0') : std::nullopt,
        .backupDay = readDay(entry.date),
    };
}

// ---- Files ------------------------------------------------------------------------------------

struct FileStart {
    bool isThere = false;
    std::string bytes;
    std::time_t modified = 0;
};

FileStart readFileStart(const char* path, std::size_t size)
{
    FileStart start;
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return start;
    }
    struct stat about = {};
    start.isThere = ::fstat(file, &about) == 0;
    start.modified = about.st_mtime;
    start.bytes.resize(size);
    const ssize_t got = ::read(file, start.bytes.data(), size);
    start.bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    ::close(file);
    return start;
}

Collection decode(const FileStart& file)
{
    using enum Collection::Result;
    Collection collection;
    if (!file.isThere) {
        return collection;
    }
    collection.result = kDamaged;
    const sharestatus::StatusReading reading = sharestatus::decodeStatus(file.bytes);
    if (!reading.isGood()) {
        return collection;
    }
    if (auto shares = readShares(reading.payload)) {
        collection.result = reading.payload.empty() ? kNoList : kComplete;
        collection.shares = std::move(*shares);
        collection.published = file.modified;
    }
    return collection;
}

bool isRunning()
{
    const FileStart mark = readFileStart(sharestatus::kSemaphoreFile, sharestatus::kSemaphoreSize);
    const auto now = static_cast<std::uint32_t>(std::time(nullptr));
    return sharestatus::decodeSemaphore(mark.bytes).isBusyAt(now);
}

} // namespace

std::optional<std::vector<Share>> readShares(std::string_view payload)
{
    std::vector<Share> shares;
    sharestatus::TableReader table(payload);
    while (const std::optional<ShareEntry> entry = table.next()) {
        shares.push_back(readShare(*entry));
    }
    return table.isWhole() ? std::optional(std::move(shares)) : std::nullopt;
}

Collection readCollection()
{
    constexpr std::chrono::milliseconds kPause{20};
    constexpr int kTries = 10;
    const bool running = isRunning();
    Collection collection;
    for (int tries = 0; tries < kTries; ++tries) {
        collection = decode(readFileStart(sharestatus::kStatusFile, sharestatus::kMaxImageSize));
        if (collection.result != Collection::Result::kDamaged) {
            break;
        }
        std::this_thread::sleep_for(kPause);
    }
    collection.isRunning = running;
    return collection;
}

BackupLevel judgeBackup(const Share& share, std::chrono::sys_days today)
{
    using enum BackupLevel;
    constexpr std::chrono::days kRecentDays{7};
    constexpr std::chrono::days kAgeingDays{30};
    if (!share.backupDay) {
        return kNone;
    }
    const auto age = today - *share.backupDay;
    if (age <= kRecentDays) {
        return kRecent;
    }
    return (age <= kAgeingDays) ? kAgeing : kOld;
}

std::uint64_t totalUsed(const std::vector<Share>& shares)
{
    return std::accumulate(shares.begin(), shares.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const Share& share) {
                               return sum + (share.used ? share.used->kibibytes() : 0);
                           });
}

} // namespace page
