// SPDX-License-Identifier: MIT
#include "history/schema.h"
#include "text/translation.h"

namespace history {
namespace {

constexpr std::int64_t kVersion = 1;

constexpr const char* kTables =
    "CREATE TABLE publication (published INTEGER PRIMARY KEY, kept INTEGER NOT NULL,"
    " listed INTEGER NOT NULL, total INTEGER, used INTEGER, free INTEGER);"
    "CREATE TABLE share (id INTEGER PRIMARY KEY, name BLOB NOT NULL UNIQUE, number INTEGER,"
    " made INTEGER, first INTEGER NOT NULL);"
    "CREATE TABLE former (share INTEGER NOT NULL, renamed INTEGER NOT NULL, name BLOB NOT NULL);"
    "CREATE TABLE size (share INTEGER, published INTEGER, used INTEGER, unit INTEGER,"
    " state INTEGER, day INTEGER, PRIMARY KEY (share, published)) WITHOUT ROWID;"
    "CREATE TABLE event (happened INTEGER NOT NULL, kind TEXT NOT NULL);"
    "PRAGMA user_version = 1;";

} // namespace

bool hasSchema(const Database& database)
{
    const std::int64_t version = database.number("PRAGMA user_version");
    if (version > kVersion) {
        throw DatabaseError(DatabaseError::Kind::kOther,
                            text::tr("a later version of this program has written the history"));
    }
    if (version == 0 && database.number("SELECT count(*) FROM sqlite_schema") > 0) {
        throw DatabaseError(DatabaseError::Kind::kDamaged,
                            text::tr("the file holds something else"));
    }
    return version == kVersion;
}

void makeSchema(const Database& database)
{
    if (hasSchema(database)) {
        return;
    }
    Transaction transaction(database);
    database.run(kTables);
    transaction.commit();
}

} // namespace history
