// SPDX-License-Identifier: MIT
#include "sharestatus/daemon.h"

#include <array>
#include <unistd.h>

#include "core/core.h"
#include "sharestatus/semaphore.h"
#include "sharestatus/sharestatus.h"
#include "sharestatus/status_file.h"

namespace sharestatus {
namespace {

constexpr int kPriorityRaise = -16;
constexpr int kBootArgumentCount = 2;
constexpr unsigned kBootDelaySeconds = 10;

} // namespace

void collectAndPublish()
{
    if (!claimSemaphore()) {
        return;
    }
    std::array<char, kMaxPayloadSize> payload;
    const int length = ParseShareInfo(payload.data(), payload.size());
    publishStatus({payload.data(), static_cast<std::size_t>(length)});
    releaseSemaphore();
}

int runStatusDaemon(int argumentCount)
{
    // The collection runs even if the priority cannot be changed or the process cannot detach.
    [[maybe_unused]] const int priority = ::nice(kPriorityRaise);
    if (argumentCount == kBootArgumentCount) {
        if (hasStatusFile()) {
            return 0;
        }
        ::sleep(kBootDelaySeconds);
    }
    [[maybe_unused]] const int detached = ::daemon(0, 1);
    collectAndPublish();
    return 0;
}

} // namespace sharestatus
