#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

/// SQLite with owners: connections, statements and transactions that end with their scope.
namespace devserver::sqlite {

/// Any failure of SQLite, with its own text.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// How a database is opened: for reading, or for writing too and made where there is none.
enum class Mode { readOnly, create };

/// One connection; for one thread at a time. Waits up to ten seconds for another one's lock.
class Connection {
public:
    Connection(const std::string& path, Mode mode);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Runs statements that give no rows anyone reads.
    void execute(const char* sql);
    /// The first column of the only row of a query.
    std::int64_t number(const char* sql);
    sqlite3* handle() const { return handle_; }

private:
    sqlite3* handle_ = nullptr;
};

/// A prepared statement. Parameters count from 1, columns from 0, as in SQLite itself.
class Statement {
public:
    Statement(const Connection& connection, std::string_view sql);
    ~Statement();
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&&) = delete;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& bind(int parameter, std::string_view text);
    Statement& bind(int parameter, std::int64_t number);
    Statement& bindNull(int parameter);
    /// A blob without bytes, which the tables use for "the key is not there".
    Statement& bindEmptyBlob(int parameter);

    /// True when a row is there to be read, false at the end.
    bool step();
    /// Steps to the end.
    void run();
    /// Makes the statement ready to be bound and run again.
    void reset();

    bool isNull(int column) const;
    bool isBlob(int column) const;
    std::int64_t number(int column) const;
    /// Valid until the next step.
    std::string_view text(int column) const;

private:
    sqlite3_stmt* handle_ = nullptr;
};

/// A transaction that is rolled back unless it was committed.
class Transaction {
public:
    /// What is going to be done; a write takes the lock at once.
    enum class Kind { read, write };
    Transaction(Connection& connection, Kind kind);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

private:
    Connection& connection_;
    bool open_ = true;
};

}  // namespace devserver::sqlite
