// SPDX-License-Identifier: MIT
#include "service/request_times.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cmdsvc/commands.h"
#include "cmdsvc/request_reader.h"

namespace service {
namespace {

/// Writes a file whole; false if that fails.
bool writeFile(const std::string& path, std::string_view bytes)
{
    constexpr mode_t kMode = 0600;
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kMode);
    if (file < 0) {
        return false;
    }
    const bool isWritten =
        ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    return ::close(file) == 0 && isWritten;
}

} // namespace

RequestTimes::RequestTimes(std::string folder) : path_(std::move(folder) + "/requests") {}

void RequestTimes::add(std::string_view request, std::chrono::milliseconds taken)
{
    const cmdsvc::Command* command = cmdsvc::findCommand(cmdsvc::codeOf(request));
    Sum& sum = sums_[(command != nullptr) ? std::string(command->code) : "other"];
    ++sum.count;
    sum.milliseconds += taken.count();
    write();
}

void RequestTimes::write() const
{
    std::string lines;
    for (const auto& [code, sum] : sums_) {
        lines +=
            code + " " + std::to_string(sum.count) + " " + std::to_string(sum.milliseconds) + "\n";
    }
    const std::string fresh = path_ + ".new";
    if (!writeFile(fresh, lines) || std::rename(fresh.c_str(), path_.c_str()) != 0) {
        ::unlink(fresh.c_str());
    }
}

} // namespace service
