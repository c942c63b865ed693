// SPDX-License-Identifier: MIT
#include "history/store.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "history/schema.h"
#include "history/thinning.h"
#include "history/writing.h"
#include "text/translation.h"

namespace history {
namespace {

using Kind = DatabaseError::Kind;

[[noreturn]] void failWith(int error, const std::string& path)
{
    const bool isFull = error == ENOSPC || error == EDQUOT;
    const bool isDenied = error == EACCES || error == EPERM || error == EROFS;
    const Kind kind = isFull ? Kind::kNoSpace : (isDenied ? Kind::kNotAllowed : Kind::kNoDatabase);
    throw DatabaseError(kind, path + ": " + std::strerror(error));
}

/// The folder is for its owner alone: the pages keep who is administrator there.
void makeFolderOf(const std::string& path)
{
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code error;
    std::filesystem::create_directories(folder.parent_path(), error);
    if (error) {
        failWith(error.value(), folder);
    }
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        failWith(errno, folder);
    }
}

/// Takes the lock of a file that is there for nothing else, so that it stays when the other files
/// are renamed. The kernel releases it if its holder is killed.
int takeLock(const std::string& path)
{
    constexpr int kTries = 300;
    constexpr std::chrono::milliseconds kPause{50};
    const int lock = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (lock < 0) {
        failWith(errno, path);
    }
    for (int tries = 0; ::flock(lock, LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (tries == kTries) {
            ::close(lock);
            throw DatabaseError(
                Kind::kOther,
                text::fill(text::tr("{}: another program has been writing for long"), {path}));
        }
        std::this_thread::sleep_for(kPause);
    }
    return lock;
}

} // namespace

Store::Store(std::string path) : path_(std::move(path)), lock_(-1)
{
    makeFolderOf(path_);
    lock_ = takeLock(path_ + "-lock");
}

Store::~Store()
{
    database_.reset();
    ::close(lock_);
}

Remembered Store::remember(const Entry& entry, std::time_t now)
{
    try {
        open();
        if (knows(entry.published)) {
            return Remembered::kKnown;
        }
        checkOnce();
        write(entry, now);
        return Remembered::kNew;
    } catch (const DatabaseError& error) {
        if (error.kind() != Kind::kDamaged) {
            throw;
        }
    }
    beginAnew(now);
    write(entry, now);
    return Remembered::kBegunAnew;
}

void Store::open()
{
    if (!database_) {
        database_.emplace(path_, Database::Access::kWrite);
        makeSchema(*database_);
    }
}

void Store::beginAnew(std::time_t now)
{
    database_.reset();
    if (std::rename(path_.c_str(), (path_ + kAside).c_str()) != 0) {
        failWith(errno, path_);
    }
    open();
    isChecked_ = true;
    Statement(*database_, "INSERT INTO event (happened, kind) VALUES (?, 'begun anew')")
        .bind(std::int64_t{now})
        .run();
}

bool Store::knows(std::time_t published) const
{
    return Statement(*database_, "SELECT 1 FROM publication WHERE published = ?")
        .bind(std::int64_t{published})
        .next();
}

/// Reads the whole file, so only before something is written.
void Store::checkOnce()
{
    if (isChecked_) {
        return;
    }
    Statement check(*database_, "PRAGMA quick_check(1)");
    if (!check.next() || check.bytes(0) != "ok") {
        throw DatabaseError(Kind::kDamaged, text::fill(text::tr("{} is damaged"), {path_}));
    }
    isChecked_ = true;
}

/// The time up to which the history has gone on. A clock that is years ahead for a while, as one
/// without a battery may be, must not make all entries old.
std::time_t Store::timeOfThinning(const Entry& entry, std::time_t now) const
{
    constexpr std::int64_t kDay = 86400;
    Statement query(*database_, "SELECT max(published) FROM publication WHERE published < ?");
    const bool isFound = query.bind(std::int64_t{entry.published}).next();
    const std::int64_t former = isFound ? query.number(0).value_or(0) : 0;
    return static_cast<std::time_t>(std::min(std::int64_t{now}, former + kDay));
}

void Store::write(const Entry& entry, std::time_t now) const
{
    Transaction transaction(*database_);
    const std::time_t thinnedAt = timeOfThinning(entry, now);
    const Kept kept = keptAs(*database_, entry);
    insertEntry(*database_, entry, kept);
    if (kept != Kept::kThirtyDays) {
        thin(*database_, thinnedAt);
    }
    transaction.commit();
}

} // namespace history
