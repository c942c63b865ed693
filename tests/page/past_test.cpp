// SPDX-License-Identifier: MIT
#include "page/past.h"

#include "tests/page/pasts.h"

namespace {

using pasts::kDay;
using pasts::kNow;
using pasts::remember;
using pasts::share;

/// What a call writes to the log.
template <class Call> std::string logOf(const Call& call)
{
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

/// "Media: 30 0", days before now
std::string agesOf(const history::Courses& courses)
{
    std::string text;
    for (const auto& [name, points] : courses) {
        text += name + ":";
        for (const history::Point& point : points) {
            text += " " + std::to_string((kNow - point.published) / kDay);
        }
        text += "\n";
    }
    return text;
}

/// The disk as it is now.
const view::Capacity kDisk = pasts::diskWith(300'000);

class Past : public pasts::Test {};

TEST_F(Past, hasThirtyDaysOfEachShareAndSomeMoreToCompareWith)
{
    remember(40, {share("Media", 1)});
    remember(34, {share("Media", 2), share("Old", 2)});
    remember(15, {share("Media", 3)});
    remember(0, {share("Media", 4), share("New", 4)});
    remember(-1, {share("Media", 5)});
    EXPECT_EQ(agesOf(page::readPast(kNow, kDisk).courses), "Media: 34 15 0\nNew: 0\nOld: 34\n");
}

/// A disk that fills by 10 MB a day, until some days ago.
void fillUntil(int age)
{
    for (int day = 20; day >= age; --day) {
        remember(day, {}, pasts::diskWith(static_cast<std::uint64_t>(10'000 * (30 + day))));
    }
}

TEST_F(Past, saysWhenTheDiskWillBeFull)
{
    fillUntil(0);
    EXPECT_NEAR(page::readPast(kNow, kDisk).daysUntilFull.value_or(0), 30, 0.001);
}

TEST_F(Past, doesNotSayItOfADiskThatIsNoLongerAsTheHistoryHasIt)
{
    fillUntil(0);
    const auto isSaid = [](const std::optional<view::Capacity>& disk) {
        return page::readPast(kNow, disk).daysUntilFull.has_value();
    };
    EXPECT_TRUE(isSaid(pasts::diskWith(250'000)));
    EXPECT_FALSE(isSaid(pasts::diskWith(249'999))) << "much has been written";
    EXPECT_TRUE(isSaid(pasts::diskWith(350'000)));
    EXPECT_FALSE(isSaid(pasts::diskWith(350'001))) << "much has been deleted";
    EXPECT_FALSE(isSaid(view::Capacity{2'000'000, 1'700'000, 300'000})) << "another disk";
    EXPECT_FALSE(isSaid(std::nullopt));
}

TEST_F(Past, doesNotSayItFromAnOldHistory)
{
    fillUntil(2);
    EXPECT_TRUE(page::readPast(kNow, kDisk).daysUntilFull);
    EXPECT_FALSE(page::readPast(kNow + 1, kDisk).daysUntilFull);
}

TEST_F(Past, doesNotSayItFromEntriesOfTheFuture)
{
    fillUntil(-1);
    EXPECT_FALSE(page::readPast(kNow, kDisk).daysUntilFull);
}

TEST_F(Past, shareHasNotVanishedBeforeAnEntryOfTheFuture)
{
    remember(0, {share("Media", 4), share("New", 4)});
    remember(-1, {share("Media", 5)});
    const auto past = page::readSharePast("New", 0, kNow);
    EXPECT_EQ(history::fateOf(past->share, past->extent, 0), history::Fate::kKept);
}

TEST_F(Past, isEmptyAndQuietBeforeThereIsAHistory)
{
    page::Past past;
    EXPECT_EQ(logOf([&] { past = page::readPast(kNow, kDisk); }), "");
    EXPECT_TRUE(past.courses.empty());
    EXPECT_FALSE(past.daysUntilFull);
    EXPECT_FALSE(page::readSharePast("Media", 0, kNow));
    EXPECT_FALSE(page::findNewName("Media"));
    EXPECT_FALSE(std::filesystem::exists("/var/lib/vokcontrol")) << "nothing is made";
}

TEST_F(Past, isEmptyIfTheFileIsDamagedAndTheLogSaysWhy)
{
    remember(0, {share("Media", 4)});
    root::writeFile(history::kFile,
                    "This is not a database, and is long enough to be seen as one.");
    page::Past past;
    EXPECT_EQ(logOf([&] { past = page::readPast(kNow, kDisk); }),
              "vokpage: the history cannot be read: file is not a database\n");
    EXPECT_TRUE(past.courses.empty());
    EXPECT_EQ(logOf([] { EXPECT_FALSE(page::readSharePast("Media", 0, kNow)); }),
              "vokpage: the history cannot be read: file is not a database\n");
}

TEST_F(Past, isEmptyIfAnotherProgramHasLockedTheFile)
{
    remember(0, {share("Media", 4)});
    const history::Database writer(history::kFile, history::Database::Access::kWrite);
    writer.run("BEGIN EXCLUSIVE");
    page::Past past;
    EXPECT_EQ(logOf([&] { past = page::readPast(kNow, kDisk); }),
              "vokpage: the history cannot be read: database is locked\n");
    EXPECT_TRUE(past.courses.empty());
}

/// Pages of the file that hold only what is read last.
TEST_F(Past, isEmptyIfOnlyAPartCannotBeRead)
{
    remember(0, {share("Media", 4)});
    const history::Database writer(history::kFile, history::Database::Access::kWrite);
    writer.run("DROP TABLE size");
    page::Past past;
    EXPECT_EQ(logOf([&] { past = page::readPast(kNow, kDisk); }),
              "vokpage: the history cannot be read: no such table: size\n");
    EXPECT_TRUE(past.courses.empty());
    EXPECT_FALSE(past.daysUntilFull);
}

TEST_F(Past, ofOneShareIsAllThatIsKnownOfIt)
{
    remember(40, {share("Media", 1)});
    remember(2, {share("Media", 2)});
    remember(1, {share("Other", 2)});
    remember(-1, {share("Media", 3)});
    const auto past = page::readSharePast("Media", kNow - 10 * kDay, kNow);
    ASSERT_TRUE(past);
    EXPECT_EQ(past->share.name, "Media");
    EXPECT_EQ(past->share.first, kNow - 40 * kDay);
    EXPECT_EQ(past->extent.first, kNow - 40 * kDay);
    ASSERT_EQ(past->points.size(), 1U);
    EXPECT_EQ(past->points[0].published, kNow - 2 * kDay);
    EXPECT_FALSE(page::readSharePast("media", 0, kNow));
}

TEST_F(Past, knowsWhichShareHadAnotherName)
{
    history::ShareEntry folder = share("Pictures", 1);
    folder.folder = history::Folder{7, 7};
    remember(2, {folder});
    folder.name = "Photos";
    remember(1, {folder});
    EXPECT_EQ(page::findNewName("Pictures"), "Photos");
    EXPECT_FALSE(page::findNewName("Photos"));
}

} // namespace
