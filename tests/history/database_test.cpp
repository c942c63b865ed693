// SPDX-License-Identifier: MIT
#include "history/database.h"

#include "tests/history/entries.h"

namespace {

using entries::failureOf;
using history::Database;
using history::DatabaseError;
using history::Statement;
using history::Transaction;
using Kind = DatabaseError::Kind;

const std::string kFile = "/tmp/file.db";

class HistoryDatabase : public root::UntracedTest {};

TEST_F(HistoryDatabase, keepsNumbersBytesAndNothing)
{
    const Database database(kFile, Database::Access::kWrite);
    database.run("CREATE TABLE t (a INTEGER, b BLOB, c INTEGER)");
    const std::string name("a\0'\xFF\n", 5);
    Statement(database, "INSERT INTO t VALUES (?, ?, ?)")
        .bind(std::int64_t{-9000000000})
        .bind(name)
        .bind(std::optional<std::int64_t>())
        .run();
    EXPECT_EQ(database.lastRow(), 1);
    Statement query(database, "SELECT a, b, c FROM t");
    ASSERT_TRUE(query.next());
    EXPECT_EQ(query.number(0), -9000000000);
    EXPECT_EQ(query.bytes(1), name);
    EXPECT_EQ(query.number(2), std::nullopt);
    EXPECT_EQ(query.bytes(2), "");
    EXPECT_FALSE(query.next());
    EXPECT_EQ(database.number("SELECT a FROM t"), -9000000000);
    EXPECT_EQ(database.number("SELECT a FROM t WHERE a = 1"), 0);
}

TEST_F(HistoryDatabase, runsAStatementAgainWithOtherValues)
{
    const Database database(kFile, Database::Access::kWrite);
    database.run("CREATE TABLE t (a INTEGER)");
    Statement insertion(database, "INSERT INTO t VALUES (?)");
    insertion.bind(std::int64_t{3}).run();
    insertion.bind(std::int64_t{4}).run();
    EXPECT_EQ(database.number("SELECT sum(a) * 10 + count(*) FROM t"), 72);
}

TEST_F(HistoryDatabase, undoesWhatIsNotCommitted)
{
    const Database database(kFile, Database::Access::kWrite);
    database.run("CREATE TABLE t (a INTEGER)");
    {
        Transaction transaction(database);
        database.run("INSERT INTO t VALUES (1)");
        transaction.commit();
    }
    {
        const Transaction transaction(database);
        database.run("INSERT INTO t VALUES (2)");
    }
    EXPECT_EQ(database.number("SELECT sum(a) FROM t"), 1);
}

TEST_F(HistoryDatabase, failsWithTheKindAndTheReason)
{
    const auto open = [](const std::string& path) {
        return failureOf([&] { Database(path, Database::Access::kRead).run("SELECT 1 FROM t"); });
    };
    EXPECT_EQ(open("/tmp/none")->kind(), Kind::kNoDatabase);
    EXPECT_STREQ(open("/tmp/none")->what(),
                 "unable to open database file (No such file or directory)");
    root::writeFile("/tmp/text", std::string(5000, 'x'));
    EXPECT_EQ(open("/tmp/text")->kind(), Kind::kDamaged);
    EXPECT_STREQ(open("/tmp/text")->what(), "file is not a database");
    root::writeFile("/tmp/empty", "");
    EXPECT_EQ(open("/tmp/empty")->kind(), Kind::kOther);
    EXPECT_STREQ(open("/tmp/empty")->what(), "no such table: t");
}

TEST_F(HistoryDatabase, waitsForALockAsLongAsItIsTold)
{
    constexpr const char* kWait = "PRAGMA busy_timeout";
    EXPECT_EQ(Database(kFile, Database::Access::kWrite).number(kWait), 15000);
    EXPECT_EQ(Database(kFile, Database::Access::kRead, std::chrono::milliseconds(70)).number(kWait),
              70);
}

TEST_F(HistoryDatabase, readsWithoutWriting)
{
    Database(kFile, Database::Access::kWrite).run("CREATE TABLE t (a INTEGER)");
    const Database database(kFile, Database::Access::kRead);
    const auto failure = failureOf([&] { database.run("INSERT INTO t VALUES (1)"); });
    EXPECT_EQ(failure->kind(), Kind::kNotAllowed);
    EXPECT_STREQ(failure->what(), "attempt to write a readonly database");
}

TEST_F(HistoryDatabase, saysThatTheDiskIsFull)
{
    const Database database(kFile, Database::Access::kWrite);
    database.run("CREATE TABLE t (a BLOB)");
    root::fillDisk();
    const auto failure =
        failureOf([&] { database.run("INSERT INTO t VALUES (zeroblob(100000))"); });
    root::freeDisk();
    EXPECT_EQ(failure->kind(), Kind::kNoSpace);
    EXPECT_STREQ(failure->what(), "database or disk is full");
    database.run("INSERT INTO t VALUES (zeroblob(100000))");
    EXPECT_EQ(database.number("SELECT count(*) FROM t"), 1);
}

} // namespace
