// SPDX-License-Identifier: MIT
#include "history/database.h"

#include <cerrno>
#include <cstring>
#include <sqlite3.h>

namespace history {
namespace {

DatabaseError::Kind kindOf(int code, int error)
{
    using enum DatabaseError::Kind;
    if (error == ENOSPC || error == EDQUOT) {
        return kNoSpace;
    }
    switch (code & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return kDamaged;
    case SQLITE_FULL:
        return kNoSpace;
    case SQLITE_CANTOPEN:
        return (error == EACCES || error == EPERM) ? kNotAllowed : kNoDatabase;
    case SQLITE_PERM:
    case SQLITE_READONLY:
        return kNotAllowed;
    default:
        return kOther;
    }
}

[[noreturn]] void fail(sqlite3* handle, int code)
{
    const int error = (handle != nullptr) ? ::sqlite3_system_errno(handle) : 0;
    std::string sentence = ::sqlite3_errstr(code);
    if (handle != nullptr && ::sqlite3_errcode(handle) == (code & 0xFF)) {
        sentence = ::sqlite3_errmsg(handle);
    }
    if (error != 0) {
        sentence += std::string(" (") + std::strerror(error) + ")";
    }
    throw DatabaseError(kindOf(code, error), sentence);
}

void check(const Database& database, int code)
{
    if (code != SQLITE_OK) {
        fail(database.handle(), code);
    }
}

/// The file may have been prepared by somebody: nothing in it can change how it is read.
void distrust(sqlite3* handle)
{
    ::sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    ::sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    ::sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    ::sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
}

} // namespace

void Database::Close::operator()(sqlite3* handle) const
{
    ::sqlite3_close(handle);
}

Database::Database(const std::string& path, Access access, std::chrono::milliseconds patience)
{
    const int flags = (access == Access::kRead) ? SQLITE_OPEN_READONLY
                                                : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    sqlite3* handle = nullptr;
    const int code = ::sqlite3_open_v2(path.c_str(), &handle, flags, nullptr);
    handle_.reset(handle);
    check(*this, code);
    distrust(handle);
    ::sqlite3_busy_timeout(handle, static_cast<int>(patience.count()));
}

void Database::run(const char* statements) const
{
    check(*this, ::sqlite3_exec(handle(), statements, nullptr, nullptr, nullptr));
}

std::int64_t Database::number(const char* statement) const
{
    Statement query(*this, statement);
    return query.next() ? query.number(0).value_or(0) : 0;
}

std::int64_t Database::lastRow() const
{
    return ::sqlite3_last_insert_rowid(handle());
}

Transaction::Transaction(const Database& database) : database_(database)
{
    database_.run("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    // Some failures have ended it already, and then there is nothing to undo.
    if (!isCommitted_ && ::sqlite3_get_autocommit(database_.handle()) == 0) {
        ::sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::commit()
{
    database_.run("COMMIT");
    isCommitted_ = true;
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const
{
    ::sqlite3_finalize(statement);
}

Statement::Statement(const Database& database, const char* statement) : database_(&database)
{
    sqlite3_stmt* prepared = nullptr;
    check(database, ::sqlite3_prepare_v2(database.handle(), statement, -1, &prepared, nullptr));
    statement_.reset(prepared);
}

Statement& Statement::bind(std::int64_t number)
{
    check(*database_, ::sqlite3_bind_int64(statement_.get(), ++bound_, number));
    return *this;
}

Statement& Statement::bind(std::optional<std::int64_t> number)
{
    if (number) {
        return bind(*number);
    }
    check(*database_, ::sqlite3_bind_null(statement_.get(), ++bound_));
    return *this;
}

Statement& Statement::bind(std::string_view bytes)
{
    check(*database_, ::sqlite3_bind_blob(statement_.get(), ++bound_, bytes.data(),
                                          static_cast<int>(bytes.size()), SQLITE_TRANSIENT));
    return *this;
}

bool Statement::next()
{
    const int code = ::sqlite3_step(statement_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        fail(database_->handle(), code);
    }
    return code == SQLITE_ROW;
}

void Statement::run()
{
    while (next()) {
    }
    ::sqlite3_reset(statement_.get());
    bound_ = 0;
}

std::optional<std::int64_t> Statement::number(int column) const
{
    if (::sqlite3_column_type(statement_.get(), column) == SQLITE_NULL) {
        return std::nullopt;
    }
    return ::sqlite3_column_int64(statement_.get(), column);
}

std::string Statement::bytes(int column) const
{
    const void* start = ::sqlite3_column_blob(statement_.get(), column);
    const auto size = static_cast<std::size_t>(::sqlite3_column_bytes(statement_.get(), column));
    return (start != nullptr) ? std::string(static_cast<const char*>(start), size) : std::string();
}

} // namespace history
