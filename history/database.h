// SPDX-License-Identifier: MIT
//
// database.h: the file of the history as the database library sees it. Only this folder uses it.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace history {

/// A call of the database library that failed.
class DatabaseError : public std::runtime_error {
  public:
    enum class Kind {
        kDamaged,    ///< the file is no database, or its parts contradict each other
        kNoSpace,    ///< the disk is full
        kNoDatabase, ///< there is no file, or it cannot be opened
        kNotAllowed, ///< the file or its folder may not be read
        kOther,
    };

    DatabaseError(Kind kind, const std::string& sentence)
        : std::runtime_error(sentence), kind_(kind)
    {}

    [[nodiscard]] Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// How long a statement waits if another process has locked the file.
inline constexpr std::chrono::milliseconds kPatience{15000};

/// An open database.
class Database {
  public:
    enum class Access { kRead, kWrite };

    /// Opens the file; for kWrite it is made if there is none. Throws DatabaseError.
    Database(const std::string& path, Access access,
             std::chrono::milliseconds patience = kPatience);

    /// Runs statements without values. Throws DatabaseError.
    void run(const char* statements) const;

    /// The first number that a statement without values finds; 0 if it finds none.
    [[nodiscard]] std::int64_t number(const char* statement) const;

    /// The number that the last inserted row got.
    [[nodiscard]] std::int64_t lastRow() const;

    [[nodiscard]] sqlite3* handle() const { return handle_.get(); }

  private:
    struct Close {
        void operator()(sqlite3* handle) const;
    };
    std::unique_ptr<sqlite3, Close> handle_;
};

/// All or nothing: what is not committed is undone at the end.
class Transaction {
  public:
    explicit Transaction(const Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

  private:
    const Database& database_;
    bool isCommitted_ = false;
};

/// A statement and its values, which are bound in the order of its question marks.
class Statement {
  public:
    Statement(const Database& database, const char* statement);

    Statement& bind(std::int64_t number);
    Statement& bind(std::optional<std::int64_t> number);
    Statement& bind(std::string_view bytes);

    /// Goes to the next row. @return false after the last one
    [[nodiscard]] bool next();

    /// Runs a statement that has no rows, and makes it ready for other values.
    void run();

    [[nodiscard]] std::optional<std::int64_t> number(int column) const;
    [[nodiscard]] std::string bytes(int column) const;

  private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    const Database* database_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
    int bound_ = 0;
};

} // namespace history
