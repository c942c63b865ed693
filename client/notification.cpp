// SPDX-License-Identifier: MIT
#include "client/notification.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace client {

bool isDue(const Told& last, view::Level level, std::time_t now)
{
    constexpr std::time_t kDay = 86400;
    if (level != last.level) {
        return true;
    }
    const bool isLongAgo = now < last.time || now - last.time >= kDay;
    return level != view::Level::kFine && isLongAgo;
}

std::optional<view::Level> levelOf(const std::string& word)
{
    using enum view::Level;
    for (const view::Level level : {kFine, kWarning, kCritical}) {
        if (word == view::wordOf(level)) {
            return level;
        }
    }
    return std::nullopt;
}

Told readTold(const std::string& path)
{
    std::ifstream file(path);
    std::string word;
    std::int64_t time = 0;
    file >> word >> time;
    const std::optional<view::Level> level = levelOf(word);
    return (file && level) ? Told{*level, static_cast<std::time_t>(time)} : Told{};
}

TellingLock::TellingLock(const std::string& path)
    : file_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600))
{
    while (file_ >= 0 && ::flock(file_, LOCK_EX) != 0 && errno == EINTR) {
    }
}

TellingLock::~TellingLock()
{
    if (file_ >= 0) {
        ::close(file_);
    }
}

int writeTold(const Told& told, const std::string& path)
{
    const std::string fresh = path + ".new";
    ::mkdir(std::filesystem::path(path).parent_path().c_str(), 0700);
    errno = 0;
    std::ofstream file(fresh, std::ios::trunc);
    file << view::wordOf(told.level) << " " << std::int64_t{told.time} << "\n";
    file.close();
    if (!file || ::rename(fresh.c_str(), path.c_str()) != 0) {
        return (errno != 0) ? errno : EIO;
    }
    return 0;
}

} // namespace client
