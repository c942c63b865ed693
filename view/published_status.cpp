// SPDX-License-Identifier: MIT
#include "view/published_status.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <thread>
#include <utility>

#include "sharestatus/semaphore_format.h"
#include "sharestatus/status_format.h"
#include "view/file_start.h"

namespace view {
namespace {

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

bool isCollecting(const FileStart& semaphore)
{
    const auto now = static_cast<std::uint32_t>(std::time(nullptr));
    return sharestatus::decodeSemaphore(semaphore.bytes).isBusyAt(now);
}

PublishedStatus readOnce()
{
    // A collection publishes before it ends. In this order, one that has ended has its status read.
    const FileStart semaphore =
        readFileStart(sharestatus::kSemaphoreFile, sharestatus::kSemaphoreSize);
    PublishedStatus status = readTwice();
    status.isCollecting = isCollecting(semaphore);
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
    return status;
}

} // namespace view
