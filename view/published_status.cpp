// SPDX-License-Identifier: MIT
#include "view/published_status.h"

#include <cerrno>
#include <chrono>
#include <sys/stat.h>
#include <thread>
#include <utility>

#include "sharestatus/semaphore_format.h"
#include "sharestatus/status_format.h"
#include "view/backup_report.h"
#include "view/collector.h"
#include "view/file_start.h"

namespace view {
namespace {

using sharestatus::Semaphore;
using Result = PublishedStatus::Result;

PublishedStatus decode(const FileStart& file)
{
    PublishedStatus status;
    status.error = file.error;
    if (!file.isOpen) {
        return status;
    }
    const sharestatus::StatusReading reading = sharestatus::decodeStatus(file.bytes);
    auto shares = reading.isGood() ? readTable(reading.payload) : std::nullopt;
    if (!shares) {
        status.result = Result::kDamaged;
        return status;
    }
    status.result = reading.payload.empty() ? Result::kNoList : Result::kComplete;
    status.shares = std::move(*shares);
    status.published = file.modified;
    return status;
}

/// A collection leaves out a report that it cannot read, or that came later.
void lookForReports(std::vector<ShareRow>& shares)
{
    for (ShareRow& share : shares) {
        if (share.report == BackupReport::kNone) {
            share.report = findReport(share.name);
        }
    }
}

PublishedStatus readTwice()
{
    const FileStart earlier = readFileStart(sharestatus::kStatusFile, sharestatus::kMaxImageSize);
    const FileStart file = readFileStart(sharestatus::kStatusFile, sharestatus::kMaxImageSize);
    if (file.bytes == earlier.bytes) {
        return decode(file);
    }
    PublishedStatus status;
    status.result = Result::kDamaged;
    return status;
}

FileStart readSemaphore()
{
    return readFileStart(sharestatus::kSemaphoreFile, sharestatus::kSemaphoreSize);
}

/// The mark has 32 bits of the time, which run over in 2106.
std::time_t timeOf(const Semaphore& mark, std::time_t now)
{
    return now + static_cast<std::int32_t>(mark.time - static_cast<std::uint32_t>(now));
}

/// A collector takes its mark away before it ends: if it is gone while the mark stays, it was
/// ended. The mark of another one that began in the same second looks alike, so it is looked for
/// once more.
Collector::State findMarker(const FileStart& semaphore)
{
    constexpr std::chrono::milliseconds kPause{10};
    const Collector::State first = findCollector(listProcesses()).state;
    if (first != Collector::State::kGone) {
        return first;
    }
    std::this_thread::sleep_for(kPause);
    const Collector::State second = findCollector(listProcesses()).state;
    const bool isSame = readSemaphore().bytes == semaphore.bytes;
    return (second == Collector::State::kGone && !isSame) ? Collector::State::kUnknown : second;
}

void judgeMark(const FileStart& semaphore, PublishedStatus& status)
{
    const Semaphore mark = sharestatus::decodeSemaphore(semaphore.bytes);
    if (mark.busy == 0) {
        return;
    }
    const std::time_t now = std::time(nullptr);
    const Collector::State collector = findMarker(semaphore);
    status.collectingSince = timeOf(mark, now);
    status.isInterrupted = collector == Collector::State::kGone;
    status.isCollecting = collector == Collector::State::kRuns ||
                          (!status.isInterrupted && mark.isBusyAt(static_cast<std::uint32_t>(now)));
}

PublishedStatus readOnce()
{
    // A collection publishes before it ends. In this order, one that has ended has its status read.
    const FileStart semaphore = readSemaphore();
    PublishedStatus status = readTwice();
    judgeMark(semaphore, status);
    status.semaphoreError = (semaphore.error == ENOENT) ? 0 : semaphore.error;
    return status;
}

bool mayBeRewritten(const PublishedStatus& status)
{
    return status.result == Result::kDamaged && status.error == 0;
}

} // namespace

PublishedStatus readPublishedStatus()
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kPause{20};
    constexpr std::chrono::milliseconds kRewriteTime{200};
    const auto end = Clock::now() + kRewriteTime;
    PublishedStatus status = readOnce();
    while (mayBeRewritten(status) && Clock::now() < end) {
        std::this_thread::sleep_for(kPause);
        status = readOnce();
    }
    lookForReports(status.shares);
    return status;
}

std::optional<std::time_t> blockedUntil(const PublishedStatus& status)
{
    if (!status.isInterrupted || !status.collectingSince) {
        return std::nullopt;
    }
    return *status.collectingSince + sharestatus::kBusySeconds;
}

std::int64_t lastWritten()
{
    constexpr std::int64_t kNanoseconds = 1000000000;
    struct stat status = {};
    if (::stat(sharestatus::kStatusFile, &status) != 0) {
        return 0;
    }
    return status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec;
}

} // namespace view
