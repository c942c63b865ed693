// SPDX-License-Identifier: MIT
#include "view/published_status.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "sharestatus/status_format.h"
#include "tests/support/collector.h"
#include "tests/support/root.h"

namespace {

/// How often the status file was read, and what happens before a read, which gets its number.
int reads = 0;
std::function<void(int)> beforeRead = [](int) {};

} // namespace

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" ssize_t read(int file, void* buffer, std::size_t size)
{
    static auto* const real =
        reinterpret_cast<ssize_t (*)(int, void*, std::size_t)>(::dlsym(RTLD_NEXT, "read"));
    if (size == sharestatus::kMaxImageSize) {
        ++reads;
        beforeRead(reads);
    }
    return real(file, buffer, size);
}

namespace {

using root::le16;
using root::le32;
using view::PublishedStatus;
using view::readPublishedStatus;
using Clock = std::chrono::steady_clock;
using Result = PublishedStatus::Result;

constexpr std::time_t kPublished = 1795253583;

std::string zeros(std::size_t count)
{
    return std::string(count, '\0');
}

std::string table(unsigned count, const std::string& records)
{
    return zeros(5) + le16(count) + zeros(3) + records;
}

const std::string kRecord = le16(604) + "K111820261Documents\n";

std::string fileOf(const std::string& payload)
{
    return std::string(sharestatus::encodeStatus(payload).text()) + zeros(100);
}

void publish(const std::string& content, std::time_t time = kPublished)
{
    root::writeFile(root::kStatusFile, content);
    const timespec when[2] = {{time, 0}, {time, 0}};
    ::utimensat(AT_FDCWD, root::kStatusFile, when, 0);
}

void mark(char busy, long age)
{
    const auto stamp = static_cast<std::uint32_t>(std::time(nullptr) - age);
    root::writeFile(root::kSemaphoreFile, std::string(1, busy) + zeros(1) + le32(stamp));
}

/// The names of the shares; the result alone if it is not complete.
std::string describe(const PublishedStatus& status)
{
    constexpr std::array kResults = {"none", "damaged", "no list"};
    if (status.result != Result::kComplete) {
        return kResults.at(static_cast<std::size_t>(status.result));
    }
    std::string names;
    for (const view::ShareRow& share : status.shares) {
        names += share.name;
    }
    return names;
}

class ThePublishedStatus : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        reads = 0;
        beforeRead = [](int) {};
    }
};

TEST_F(ThePublishedStatus, isCompleteWithItsSharesAndItsTime)
{
    publish(fileOf(table(1, kRecord)));
    const PublishedStatus status = readPublishedStatus();
    EXPECT_EQ(describe(status), "Documents");
    EXPECT_EQ(status.published, kPublished);
    EXPECT_EQ(status.error, 0);
    EXPECT_FALSE(status.isCollecting);
    EXPECT_EQ(status.semaphoreError, 0);
    EXPECT_EQ(reads, 2);
}

TEST_F(ThePublishedStatus, timesRunOnAfter2038)
{
    constexpr std::time_t kYear2040 = 2208988800;
    publish(fileOf(table(1, kRecord)), kYear2040);
    EXPECT_EQ(readPublishedStatus().published, kYear2040);
}

TEST_F(ThePublishedStatus, statusFileOfThreeGibibytesIsReadAsFarAsItCounts)
{
    publish(fileOf(table(1, kRecord)));
    std::filesystem::resize_file(root::kStatusFile, 3221225472U);
    EXPECT_EQ(describe(readPublishedStatus()), "Documents");
}

TEST_F(ThePublishedStatus, missingStatusIsNone)
{
    const PublishedStatus status = readPublishedStatus();
    EXPECT_EQ(describe(status), "none");
    EXPECT_EQ(status.error, ENOENT);
    EXPECT_EQ(status.published, 0);
    EXPECT_EQ(reads, 0);
}

TEST_F(ThePublishedStatus, emptyPayloadIsACollectionWithoutAList)
{
    publish(fileOf(""));
    const PublishedStatus status = readPublishedStatus();
    EXPECT_EQ(describe(status), "no list");
    EXPECT_EQ(status.published, kPublished);
}

TEST_F(ThePublishedStatus, damagedStatusIsSaidToBeAfterTheTimeOfARewrite)
{
    std::string wrongCheck = fileOf(table(1, kRecord));
    wrongCheck[20] = static_cast<char>(wrongCheck[20] + 1);
    for (const std::string& content : {wrongCheck, std::string(), zeros(100), fileOf("no table")}) {
        publish(content);
        const auto start = Clock::now();
        const PublishedStatus status = readPublishedStatus();
        EXPECT_EQ(describe(status), "damaged");
        EXPECT_EQ(status.error, 0);
        EXPECT_EQ(status.published, 0);
        EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(200));
    }
}

TEST_F(ThePublishedStatus, fileThatCannotBeReadIsNotWaitedFor)
{
    publish(fileOf(table(1, kRecord)));
    std::filesystem::permissions(root::kStatusFile, std::filesystem::perms(0));
    const PublishedStatus closed = readPublishedStatus();
    EXPECT_EQ(describe(closed), "none");
    EXPECT_EQ(closed.error, EACCES);
    std::filesystem::remove(root::kStatusFile);
    std::filesystem::create_directory(root::kStatusFile);
    const PublishedStatus folder = readPublishedStatus();
    EXPECT_EQ(describe(folder), "damaged");
    EXPECT_EQ(folder.error, EISDIR);
    EXPECT_EQ(reads, 2) << "both of the folder";
}

TEST_F(ThePublishedStatus, momentOfARewriteIsWaitedFor)
{
    publish(zeros(100));
    beforeRead = [](int number) {
        if (number == 5) {
            publish(fileOf(table(1, kRecord)));
        }
    };
    EXPECT_EQ(describe(readPublishedStatus()), "Documents");
    EXPECT_EQ(reads, 6);
}

TEST_F(ThePublishedStatus, twoReadsMustAgree)
{
    // A read in the middle of a rewrite may well pass the check.
    publish(fileOf(table(1, le16(604) + "K111820261Mixture\n")));
    beforeRead = [](int number) {
        if (number == 2) {
            publish(fileOf(table(1, kRecord)));
        }
    };
    EXPECT_EQ(describe(readPublishedStatus()), "Documents");
    EXPECT_EQ(reads, 4);
}

TEST_F(ThePublishedStatus, readsThatNeverAgreeAreDamage)
{
    beforeRead = [](int number) {
        publish(fileOf(table(1, le16(static_cast<unsigned>(number)) + "K111820261Mixture\n")));
    };
    publish("");
    const PublishedStatus status = readPublishedStatus();
    EXPECT_EQ(describe(status), "damaged");
    EXPECT_EQ(status.published, 0);
    EXPECT_GE(reads, 4);
}

// ---- The mark of a collection -----------------------------------------------------------------

/// What is said of a collection: whether one runs, whether one was interrupted, and when it began.
struct Marked {
    bool isCollecting;
    bool isInterrupted;
    std::optional<long> age; ///< in seconds

    bool operator==(const Marked&) const = default;
};

void PrintTo(const Marked& marked, std::ostream* out)
{
    *out << marked.isCollecting << marked.isInterrupted << " " << marked.age.value_or(-1);
}

Marked readMark()
{
    const PublishedStatus status = readPublishedStatus();
    std::optional<long> age;
    if (status.collectingSince) {
        // The clock may have gone on by a second since the mark was set.
        age = (std::time(nullptr) - *status.collectingSince) / 5 * 5;
    }
    return {status.isCollecting, status.isInterrupted, age};
}

TEST_F(ThePublishedStatus, markWithItsCollectorIsARunningCollection)
{
    const root::IdleCollector collector;
    mark('\1', 5);
    EXPECT_EQ(readMark(), (Marked{true, false, 5}));
    mark('\1', 7300);
    EXPECT_EQ(readMark(), (Marked{true, false, 7300})) << "one that takes more than two hours";
    mark('\0', 5);
    EXPECT_EQ(readMark(), (Marked{false, false, {}})) << "one that has ended";
    root::writeFile(root::kSemaphoreFile, "");
    EXPECT_EQ(readMark(), (Marked{false, false, {}}));
    EXPECT_EQ(readPublishedStatus().semaphoreError, 0);
}

TEST_F(ThePublishedStatus, markWithoutItsCollectorIsAnInterruptedCollection)
{
    mark('\1', 5);
    EXPECT_EQ(readMark(), (Marked{false, true, 5}));
    mark('\1', 7300);
    EXPECT_EQ(readMark(), (Marked{false, true, 7300}));
    mark('\0', 5);
    EXPECT_EQ(readMark(), (Marked{false, false, {}}));
}

TEST_F(ThePublishedStatus, collectorThatIsEndedIsInterrupted)
{
    root::IdleCollector collector;
    mark('\1', 0);
    EXPECT_EQ(readMark(), (Marked{true, false, 0}));
    collector.end();
    EXPECT_EQ(readMark(), (Marked{false, true, 0}));
}

TEST_F(ThePublishedStatus, collectionThatBeganAfter2038HasItsTime)
{
    root::writeFile(root::kSemaphoreFile, "\1" + zeros(1) + le32(0x80000010U));
    EXPECT_EQ(readPublishedStatus().collectingSince, std::time_t{0x80000010});
}

TEST_F(ThePublishedStatus, interruptedCollectionBlocksOthersForTwoHours)
{
    PublishedStatus status;
    EXPECT_EQ(view::blockedUntil(status), std::nullopt);
    status.collectingSince = kPublished;
    status.isCollecting = true;
    EXPECT_EQ(view::blockedUntil(status), std::nullopt);
    status.isCollecting = false;
    status.isInterrupted = true;
    EXPECT_EQ(view::blockedUntil(status), kPublished + 7200);
}

TEST_F(ThePublishedStatus, lastWritingIsKnownToTheNanosecond)
{
    EXPECT_EQ(view::lastWritten(), 0);
    publish("", kPublished);
    EXPECT_EQ(view::lastWritten(), std::int64_t{kPublished} * 1000000000);
    const timespec when[2] = {{kPublished, 7}, {kPublished, 7}};
    ::utimensat(AT_FDCWD, root::kStatusFile, when, 0);
    EXPECT_EQ(view::lastWritten(), std::int64_t{kPublished} * 1000000000 + 7);
}

// ---- Reports that the collection has not read -------------------------------------------------

TEST_F(ThePublishedStatus, sharesWithoutAReportAreLookedFor)
{
    const std::string record = le16(1) + "K" + zeros(9);
    publish(fileOf(table(4, kRecord + record + "Newer\n" + record + "Odd\n" + record + "None\n")));
    for (const char* name : {"Newer", "Documents"}) {
        root::writeFile("/etc/pelconfig/vokcontrol/__bksts/__bk" + std::string(name), "111192026");
    }
    root::writeFile("/etc/pelconfig/vokcontrol/__bksts/__bkOdd", "1");
    std::vector<view::BackupReport> reports;
    for (const view::ShareRow& share : readPublishedStatus().shares) {
        reports.push_back(share.report);
    }
    using enum view::BackupReport;
    EXPECT_EQ(reports, (std::vector<view::BackupReport>{kRead, kNewer, kUnreadable, kNone}));
}

TEST_F(ThePublishedStatus, semaphoreThatCannotBeReadTellsOfNoCollection)
{
    publish(fileOf(table(1, kRecord)));
    mark('\1', 5);
    std::filesystem::permissions(root::kSemaphoreFile, std::filesystem::perms(0));
    const PublishedStatus status = readPublishedStatus();
    EXPECT_EQ(describe(status), "Documents");
    EXPECT_EQ(status.semaphoreError, EACCES);
    EXPECT_FALSE(status.isCollecting);
}

TEST_F(ThePublishedStatus, semaphoreIsReadAgainWithTheFile)
{
    publish(zeros(100));
    mark('\1', 5);
    beforeRead = [](int number) {
        if (number == 2) {
            publish(fileOf(table(1, kRecord)));
            mark('\0', 0);
        }
    };
    const PublishedStatus status = readPublishedStatus();
    EXPECT_EQ(describe(status), "Documents");
    EXPECT_FALSE(status.isCollecting);
}

TEST_F(ThePublishedStatus, nothingIsTracedOrRun)
{
    publish(fileOf(table(1, kRecord)));
    (void)readPublishedStatus();
    EXPECT_EQ(watch::calls(), std::vector<std::string>{});
}

} // namespace
