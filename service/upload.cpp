// SPDX-License-Identifier: MIT
#include "service/upload.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <span>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cmdsvc/protocol.h"
#include "cmdsvc/request_reader.h"
#include "core/bytes.h"
#include "service/log.h"
#include "service/private_file.h"
#include "service/whole_file.h"

namespace service {
namespace {

// ---- The note's bytes -------------------------------------------------------------------------
//
// The group of the upload's process in ten digits, two lines that describe the former file, and the
// bytes of the new file.

constexpr std::size_t kGroupSize = 10;

std::string encode(const Plan& plan)
{
    return std::string(kGroupSize, '0') + "\n" + plan.former.itself + "\n" + plan.former.content +
           "\n" + plan.fresh;
}

std::optional<Plan> decode(std::string_view note)
{
    const auto takeLine = [&note]() -> std::optional<std::string> {
        const std::size_t end = note.find('\n');
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        std::string line(note.substr(0, end));
        note.remove_prefix(end + 1);
        return line;
    };
    const auto group = takeLine();
    const auto itself = takeLine();
    const auto content = takeLine();
    if (!group || !itself || !content) {
        return std::nullopt;
    }
    return Plan{{*itself, *content}, std::string(note)};
}

/// The group in a note, or 0 if its process has not claimed it yet.
pid_t groupOf(int note)
{
    std::array<char, kGroupSize> digits{};
    const ssize_t size = ::pread(note, digits.data(), digits.size(), 0);
    pid_t group = 0;
    std::from_chars(digits.data(), digits.data() + std::max<ssize_t>(size, 0), group);
    return group;
}

bool writeOut(int file, std::string_view bytes)
{
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written >= 0 && static_cast<std::size_t>(written) < bytes.size()) {
        errno = ENOSPC;
        return false;
    }
    return written >= 0 && ::fsync(file) == 0;
}

/// Ends the processes of a note's upload. While the lock is held, one process of the group runs, so
/// no other group can have its number.
bool endUpload(int note)
{
    constexpr int kTries = 200;
    constexpr useconds_t kPause = 10'000;
    for (int tries = 0; tries < kTries; ++tries) {
        if (::flock(note, LOCK_EX | LOCK_NB) == 0) {
            return true;
        }
        if (const pid_t group = groupOf(note); group > 1) {
            ::kill(-group, SIGKILL);
        }
        ::usleep(kPause);
    }
    return false;
}

std::string_view show(Repair repair)
{
    switch (repair) {
    case Repair::kFormerStayed:
        return "the private file is as it was";
    case Repair::kFormerBack:
        return "the former private file is back";
    case Repair::kNewWhole:
        return "the new private file is whole";
    case Repair::kLeftAlone:
        return "the private file's path has something else than a file; it was not changed";
    case Repair::kFailed:
        break;
    }
    return "the private file cannot be repaired; make room on its disk";
}

} // namespace

std::optional<std::string> uploadedFile(std::string_view request)
{
    constexpr char kCount = 2;
    const cmdsvc::RequestBuffer buffer = cmdsvc::bufferOf(request);
    cmdsvc::RequestReader reader(buffer);
    const std::string_view line = reader.firstLine();
    if (!line.starts_with("spvt") || line[cmdsvc::kCountOffset] != kCount) {
        return std::nullopt;
    }
    const std::string_view sizeLine = reader.takeLine(cmdsvc::kLineRoom);
    if (sizeLine.size() != cmdsvc::kWordSize + 1 || !sizeLine.ends_with('\n')) {
        return std::nullopt;
    }
    const std::uint32_t size = core::getU32(std::span(sizeLine).first<cmdsvc::kWordSize>());
    return (size == 0) ? std::nullopt : std::optional(std::string(reader.rest().substr(0, size)));
}

Upload::Upload(std::string folder) : folder_(std::move(folder)), path_(folder_ + "/upload") {}

std::string Upload::madePath() const
{
    return path_ + ".new";
}

Upload::~Upload()
{
    handOver();
}

bool Upload::begin(const std::string& fresh)
{
    constexpr mode_t kFolderMode = 0700;
    constexpr mode_t kNoteMode = 0600;
    ::mkdir(folder_.c_str(), kFolderMode);
    const std::string made = madePath();
    descriptor_ = ::open(made.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, kNoteMode);
    const bool isNoted = descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0 &&
                         writeOut(descriptor_, encode({inspect(kPrivateFile), fresh})) &&
                         ::rename(made.c_str(), path_.c_str()) == 0;
    if (!isNoted) {
        log("cannot note an upload in " + path_ + ": " + std::strerror(errno) +
            "; the upload was refused. Make room there, or check the permissions");
        ::unlink(made.c_str());
        handOver();
    }
    return isNoted;
}

void Upload::claim(int descriptor)
{
    std::array<char, kGroupSize + 1> digits{};
    std::snprintf(digits.data(), digits.size(), "%010d", ::getpgrp());
    [[maybe_unused]] const ssize_t written = ::pwrite(descriptor, digits.data(), kGroupSize, 0);
}

void Upload::handOver()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

void Upload::end() const
{
    ::unlink(path_.c_str());
}

bool Upload::repair() const
{
    ::unlink(madePath().c_str()); // left by a service that was killed while it wrote a note
    const int note = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    if (note < 0) {
        return true;
    }
    const bool isEnded = endUpload(note);
    ::close(note);
    if (!isEnded) {
        log("an upload that was cut off still runs; its private file cannot be repaired yet");
        return false;
    }
    const std::optional<Plan> plan = decode(readWholeFile(path_).value_or(""));
    const Repair repair = plan ? repairPrivateFile(*plan) : Repair::kFormerStayed;
    log("an upload was cut off: " + std::string(show(repair)));
    if (repair == Repair::kFailed) {
        return false;
    }
    end();
    return true;
}

} // namespace service
