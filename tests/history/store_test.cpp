// SPDX-License-Identifier: MIT
#include "history/store.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "tests/history/entries.h"

namespace {

namespace fs = std::filesystem;

using entries::entry;
using entries::failureOf;
using entries::kDay;
using entries::kFile;
using entries::kHour;
using entries::kMonday;
using entries::Lines;
using entries::share;
using history::Remembered;
using history::Store;
using Kind = history::DatabaseError::Kind;

const std::string kAside = kFile + history::kAside;

class HistoryStore : public root::UntracedTest {};

/// An hourly status of two shares.
history::Entry hourly(std::time_t number)
{
    return entry(kMonday + number * kHour,
                 {share("Media", static_cast<std::uint16_t>(number)), share("Music", 7)});
}

Remembered remember(const history::Entry& what)
{
    return Store(kFile).remember(what, what.published);
}

/// The names of the history's files.
Lines files()
{
    return root::list(fs::path(kFile).parent_path());
}

TEST_F(HistoryStore, remembersEachStatusOnce)
{
    EXPECT_EQ(remember(hourly(0)), Remembered::kNew);
    EXPECT_EQ(remember(hourly(0)), Remembered::kKnown);
    EXPECT_EQ(remember(hourly(2)), Remembered::kNew);
    EXPECT_EQ(remember(hourly(1)), Remembered::kNew) << "a clock may be set back";
    EXPECT_EQ(entries::points("Media"), (Lines{"0 0 M - -", "3600 1 M - -", "7200 2 M - -"}));
    EXPECT_EQ(files(), (Lines{"history.db", "history.db-lock"}));
}

TEST_F(HistoryStore, isForItsOwnerAlone)
{
    EXPECT_EQ(remember(hourly(0)), Remembered::kNew);
    const fs::path folder = fs::path(kFile).parent_path();
    EXPECT_EQ(fs::status(folder).permissions() & fs::perms::mask, fs::perms(0700));
}

// ---- Many, and others ---------------------------------------------------------------------------

TEST_F(HistoryStore, keepsAllIfTheClockIsYearsAheadForAWhile)
{
    for (std::time_t hour = 0; hour < 50; ++hour) {
        EXPECT_EQ(remember(hourly(hour)), Remembered::kNew);
    }
    EXPECT_EQ(remember(hourly(10 * 365 * 24)), Remembered::kNew);
    EXPECT_EQ(remember(hourly(10 * 365 * 24 + 1)), Remembered::kNew);
    EXPECT_EQ(remember(hourly(50)), Remembered::kNew);
    EXPECT_EQ(entries::times().size(), 53U);
}

TEST_F(HistoryStore, thinsTenThousandEntries)
{
    constexpr std::time_t kCount = 10000;
    {
        Store store(kFile);
        for (std::time_t i = 0; i < kCount; ++i) {
            ASSERT_EQ(store.remember(hourly(i), hourly(i).published), Remembered::kNew);
        }
    }
    // It was thinned last at the first hour of the last day.
    const std::time_t recent = (kCount - 1) / 24 * 24 - 30 * 24;
    std::vector<std::time_t> expected;
    for (std::time_t i = 0; i < kCount; ++i) {
        if (i >= recent || i % 24 == 0) {
            expected.push_back(i * kHour);
        }
    }
    EXPECT_EQ(entries::times(), expected);
    EXPECT_EQ(entries::points("Music").size(), expected.size());
    EXPECT_EQ(entries::shares(), (Lines{"Media 0 35996400", "Music 0 35996400"}));
}

TEST_F(HistoryStore, isWrittenByTwoAtOnce)
{
    constexpr std::time_t kCount = 60;
    const pid_t other = ::fork();
    for (std::time_t i = 0; i < kCount; ++i) {
        remember(hourly(i));
    }
    if (other == 0) {
        ::_exit(0);
    }
    int status = 1;
    ::waitpid(other, &status, 0);
    EXPECT_EQ(status, 0);
    ASSERT_EQ(entries::times().size(), std::size_t{kCount});
    EXPECT_EQ(entries::points("Media").size(), std::size_t{kCount});
}

TEST_F(HistoryStore, waitsForAnotherWriter)
{
    EXPECT_EQ(remember(hourly(0)), Remembered::kNew);
    const int lock = ::open((kFile + "-lock").c_str(), O_RDWR);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    std::thread other([&] {
        ::usleep(200000);
        ::close(lock);
    });
    EXPECT_EQ(remember(hourly(1)), Remembered::kNew);
    other.join();
    EXPECT_EQ(entries::times(), (std::vector<std::time_t>{0, kHour}));
}

// ---- Damage -------------------------------------------------------------------------------------

/// Something that happens to the file of a history with one entry.
struct Damage {
    const char* name;
    std::function<void()> happen;
};

void overwrite(std::size_t start, std::size_t size)
{
    std::string bytes = root::readFile(kFile);
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(start), size, '\xA5');
    root::writeFile(kFile, bytes);
}

const std::vector<Damage> kDamages = {
    {"no database", [] { root::writeFile(kFile, "a text\n"); }},
    {"another database",
     [] {
         fs::remove(kFile);
         history::Database(kFile, history::Database::Access::kWrite).run("CREATE TABLE t (a)");
     }},
    {"cut to half", [] { fs::resize_file(kFile, fs::file_size(kFile) / 2); }},
    {"first page overwritten", [] { overwrite(0, 4096); }},
    {"second page overwritten", [] { overwrite(4096, 4096); }},
    {"all pages but the first overwritten",
     [] { overwrite(4096, root::readFile(kFile).size() - 4096); }},
};

TEST_F(HistoryStore, putsADamagedFileAsideAndBeginsAnew)
{
    for (const Damage& damage : kDamages) {
        SCOPED_TRACE(damage.name);
        fs::remove_all(fs::path(kFile).parent_path());
        EXPECT_EQ(remember(hourly(0)), Remembered::kNew);
        damage.happen();
        const std::string damaged = root::readFile(kFile);
        EXPECT_EQ(remember(hourly(1)), Remembered::kBegunAnew);
        EXPECT_EQ(root::readFile(kAside), damaged);
        EXPECT_EQ(files(), (Lines{"history.db", "history.db-lock", "history.db.damaged"}));
        EXPECT_EQ(entries::points("Media"), Lines{"3600 1 M - -"});
        EXPECT_EQ(history::Reader(kFile).extent().begunAnew, kMonday + kHour);
        EXPECT_EQ(remember(hourly(2)), Remembered::kNew);
        EXPECT_EQ(entries::points("Media"), (Lines{"3600 1 M - -", "7200 2 M - -"}));
    }
}

TEST_F(HistoryStore, keepsOnlyTheLastDamagedFile)
{
    EXPECT_EQ(remember(hourly(0)), Remembered::kNew);
    root::writeFile(kFile, "a text\n");
    root::writeFile(kAside, "an earlier file");
    EXPECT_EQ(remember(hourly(1)), Remembered::kBegunAnew);
    EXPECT_EQ(root::readFile(kAside), "a text\n");
}

TEST_F(HistoryStore, refusesTheFileOfALaterVersionAndLeavesIt)
{
    EXPECT_EQ(remember(hourly(0)), Remembered::kNew);
    history::Database(kFile, history::Database::Access::kWrite).run("PRAGMA user_version = 2");
    const std::string later = root::readFile(kFile);
    EXPECT_EQ(failureOf([] { remember(hourly(1)); })->kind(), Kind::kOther);
    EXPECT_EQ(root::readFile(kFile), later);
}

// ---- What the disk refuses ----------------------------------------------------------------------

TEST_F(HistoryStore, stopsOnAFullDiskAndGoesOnAfterwards)
{
    for (std::time_t i = 0; i < 3; ++i) {
        EXPECT_EQ(remember(hourly(i)), Remembered::kNew);
    }
    const std::string before = root::readFile(kFile);
    root::fillDisk();
    const auto failure = failureOf([] { remember(hourly(3)); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->kind(), Kind::kNoSpace);
    EXPECT_EQ(root::readFile(kFile), before);
    EXPECT_EQ(entries::times().size(), 3U) << "it can be read";
    root::freeDisk();
    EXPECT_EQ(remember(hourly(4)), Remembered::kNew);
    EXPECT_EQ(entries::points("Media"),
              (Lines{"0 0 M - -", "3600 1 M - -", "7200 2 M - -", "14400 4 M - -"}));
}

TEST_F(HistoryStore, saysWhyItCannotBeginAtAll)
{
    root::fillDisk();
    EXPECT_EQ(failureOf([] { remember(hourly(0)); })->kind(), Kind::kNoSpace);
    root::freeDisk();
    root::writeFile("/tmp/file", "");
    const auto failure = failureOf([] { Store("/tmp/file/history.db").remember(hourly(0), 0); });
    EXPECT_EQ(failure->kind(), Kind::kNoDatabase);
    EXPECT_STREQ(failure->what(), "/tmp/file/history.db-lock: Not a directory");
}

// ---- The end of the power -----------------------------------------------------------------------

/// How many changes of files this process may still make before it is killed.
int changesLeft = 0;

/// The process ends, and what is to be written is written only half.
ssize_t writeOrDie(int file, const void* bytes, size_t size, off_t offset)
{
    if (changesLeft-- == 0) {
        [[maybe_unused]] const ssize_t half = ::pwrite(file, bytes, size / 2, offset);
        ::raise(SIGKILL);
    }
    return ::pwrite(file, bytes, size, offset);
}

int removeOrDie(const char* path)
{
    if (changesLeft-- == 0) {
        ::raise(SIGKILL);
    }
    return ::unlink(path);
}

int cutOrDie(int file, off_t size)
{
    if (changesLeft-- == 0) {
        ::raise(SIGKILL);
    }
    return ::ftruncate(file, size);
}

void replaceCall(const char* name, void (*replacement)())
{
    sqlite3_vfs* files = ::sqlite3_vfs_find(nullptr);
    files->xSetSystemCall(files, name, replacement);
}

/// Remembers an entry in a child that is killed at one of its changes of files.
/// @return whether it came to its end before
bool rememberUntil(int change, const history::Entry& what)
{
    const pid_t child = ::fork();
    if (child == 0) {
        changesLeft = change;
        for (const char* name : {"pwrite", "pwrite64"}) {
            replaceCall(name, reinterpret_cast<void (*)()>(&writeOrDie));
        }
        replaceCall("unlink", reinterpret_cast<void (*)()>(&removeOrDie));
        replaceCall("ftruncate", reinterpret_cast<void (*)()>(&cutOrDie));
        remember(what);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status);
}

/// A history that the next entry thins, or none at all.
void prepare(bool isOld)
{
    fs::remove_all(fs::path(kFile).parent_path());
    if (isOld) {
        Store store(kFile);
        for (std::time_t day = -45; day < 0; ++day) {
            store.remember(hourly(day * 24), kMonday - 45 * kDay);
            store.remember(hourly(day * 24 + 1), kMonday - 45 * kDay);
        }
    }
}

TEST_F(HistoryStore, losesAtMostTheLastEntryWhereverItIsKilled)
{
    for (const bool isOld : {false, true}) {
        prepare(isOld);
        const std::vector<std::time_t> before =
            isOld ? entries::times() : std::vector<std::time_t>();
        int change = 0;
        while (!rememberUntil(change, hourly(0))) {
            SCOPED_TRACE(change);
            EXPECT_EQ(remember(hourly(1)), Remembered::kNew) << "nothing was damaged";
            const std::vector<std::time_t> after = entries::times();
            EXPECT_EQ(after.back(), kHour);
            const bool isKept = std::ranges::find(after, 0) != after.end();
            // The entry before is whole or not there, and so is the thinning that came with it.
            EXPECT_EQ(entries::points("Media").size(), after.size());
            EXPECT_EQ(entries::points("Music").size(), after.size());
            const std::size_t thinned = isOld ? 15 : 0;
            EXPECT_EQ(after.size(), before.size() + 1 + (isKept ? 1 : 0) - thinned);
            prepare(isOld);
            ++change;
        }
        EXPECT_GE(change, 10) << "it was killed";
    }
}

} // namespace
