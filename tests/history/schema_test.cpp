// SPDX-License-Identifier: MIT
#include "history/schema.h"

#include "tests/history/entries.h"

namespace {

using entries::failureOf;
using history::Database;
using history::hasSchema;
using history::makeSchema;
using Kind = history::DatabaseError::Kind;

class HistorySchema : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        database_.emplace("/tmp/file.db", Database::Access::kWrite);
    }

    std::optional<Database> database_;
};

TEST_F(HistorySchema, isMadeOnce)
{
    EXPECT_FALSE(hasSchema(*database_));
    makeSchema(*database_);
    EXPECT_TRUE(hasSchema(*database_));
    database_->run("INSERT INTO event VALUES (1, 'x')");
    makeSchema(*database_);
    EXPECT_EQ(database_->number("SELECT count(*) FROM event"), 1);
}

TEST_F(HistorySchema, ofALaterVersionIsRefused)
{
    makeSchema(*database_);
    database_->run("PRAGMA user_version = 2");
    const auto failure = failureOf([&] { makeSchema(*database_); });
    EXPECT_EQ(failure->kind(), Kind::kOther);
    EXPECT_STREQ(failure->what(), "a later version of this program has written the history");
}

TEST_F(HistorySchema, isNotThatOfAnyOtherDatabase)
{
    database_->run("CREATE TABLE t (a INTEGER)");
    const auto failure = failureOf([&] { makeSchema(*database_); });
    EXPECT_EQ(failure->kind(), Kind::kDamaged);
    EXPECT_STREQ(failure->what(), "the file holds something else");
}

} // namespace
