// SPDX-License-Identifier: MIT
#include "sharestatus/status_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>
#include <utility>

#include "core/core.h"

namespace sharestatus {
namespace {

core::File openForPublishing()
{
    core::File file = core::openFile(kStatusFile, "r+");
    return file ? std::move(file) : core::openFile(kStatusFile, "w");
}

/// Reads the start of the file in one read.
void readStart(FILE* file, StatusImage& image)
{
    const ssize_t got = ::pread(::fileno(file), image.bytes.data(), image.bytes.size(), 0);
    image.size = (got > 0) ? static_cast<std::size_t>(got) : 0;
}

} // namespace

bool hasStatusFile()
{
    return core::openFile(kStatusFile, "r") != nullptr;
}

void publishStatus(std::string_view payload)
{
    // Memory can be missing, so take it before the old status is changed.
    const std::unique_ptr<void, core::MemoryReleaser> zeros(std::calloc(1, kStatusFileSize));
    const core::File file = zeros ? openForPublishing() : nullptr;
    if (!file) {
        return;
    }
    const StatusImage image = encodeStatus(payload);

    // Without a buffer, each fwrite is one write, so that a reader sees as few half-written states
    // as possible.
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    std::fwrite(zeros.get(), 1, kStatusFileSize, file.get());
    std::fseek(file.get(), 0, SEEK_SET);
    std::fwrite(image.bytes.data(), 1, image.size, file.get());

    // Cuts a longer file, and gives the file its length even on a full disk, since that takes no
    // space.
    [[maybe_unused]] const int cut = ::ftruncate(::fileno(file.get()), kStatusFileSize);
}

bool loadStatus(StatusImage& image)
{
    constexpr int kMostLooks = 8;
    const core::File file = core::openFile(kStatusFile, "r");
    if (!file) {
        return false;
    }
    StatusImage earlier;
    readStart(file.get(), image);
    for (int looks = 1; looks < kMostLooks; ++looks) {
        earlier = image;
        readStart(file.get(), image);
        if (image.text() == earlier.text()) {
            return true;
        }
    }
    image.size = 0;
    return true;
}

} // namespace sharestatus

int Read_Status_file(char* buffer)
{
    using namespace sharestatus;

    StatusImage image;
    if (!loadStatus(image)) {
        const int error = errno;
        dbg_trace("Read_Status_file - failed open file: %s -- %d(%s)", kStatusFile, error,
                  std::strerror(error));
        return 0;
    }

    const std::string_view content = image.text();
    const StatusReading reading = decodeStatus(content);
    std::ranges::copy(content.substr(std::min(content.size(), kLengthSize), kMaxPayloadSize),
                      buffer);
    dbg_trace("Read_Status_file %s - len1 = %x ", kStatusFile, reading.length);
    dbg_trace("Read_Status_file - len = %x ", reading.length);
    if (!reading.isInBounds) {
        return 0;
    }
    dbg_trace("Read_Status_file - chksum  = %x %x", reading.sum, reading.check);
    return reading.isGood() ? static_cast<int>(reading.payload.size()) : 0;
}
