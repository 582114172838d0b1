#include "devserver/Sqlite.h"

#include <sqlite3.h>

#include <utility>

namespace devserver::sqlite {

namespace {

[[noreturn]] void fail(sqlite3* connection) {
    throw Error(connection == nullptr ? "out of memory" : sqlite3_errmsg(connection));
}

int flagsOf(Mode mode) {
    return mode == Mode::readOnly ? SQLITE_OPEN_READONLY
                                  : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
}

}  // namespace

Connection::Connection(const std::string& path, Mode mode) {
    if (sqlite3_open_v2(path.c_str(), &handle_, flagsOf(mode) | SQLITE_OPEN_NOMUTEX, nullptr) !=
        SQLITE_OK) {
        const std::string reason = handle_ == nullptr ? "out of memory" : sqlite3_errmsg(handle_);
        sqlite3_close(handle_);
        throw Error(reason);
    }
    sqlite3_extended_result_codes(handle_, 1);
    sqlite3_busy_timeout(handle_, 10'000);
}

Connection::~Connection() {
    sqlite3_close(handle_);
}

void Connection::execute(const char* sql) {
    if (sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(handle_);
    }
}

std::int64_t Connection::number(const char* sql) {
    Statement statement(*this, sql);
    return statement.step() ? statement.number(0) : 0;
}

Statement::Statement(const Connection& connection, std::string_view sql) {
    if (sqlite3_prepare_v2(
            connection.handle(), sql.data(), static_cast<int>(sql.size()), &handle_, nullptr) !=
        SQLITE_OK) {
        fail(connection.handle());
    }
}

Statement::~Statement() {
    sqlite3_finalize(handle_);
}

Statement::Statement(Statement&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

Statement& Statement::bind(int parameter, std::string_view text) {
    // An empty view may hold a null pointer, which SQLite would take for NULL.
    const char* data = text.empty() ? "" : text.data();
    if (sqlite3_bind_text(
            handle_, parameter, data, static_cast<int>(text.size()), SQLITE_TRANSIENT) !=
        SQLITE_OK) {
        fail(sqlite3_db_handle(handle_));
    }
    return *this;
}

Statement& Statement::bind(int parameter, std::int64_t number) {
    if (sqlite3_bind_int64(handle_, parameter, number) != SQLITE_OK) {
        fail(sqlite3_db_handle(handle_));
    }
    return *this;
}

Statement& Statement::bindNull(int parameter) {
    if (sqlite3_bind_null(handle_, parameter) != SQLITE_OK) {
        fail(sqlite3_db_handle(handle_));
    }
    return *this;
}

Statement& Statement::bindEmptyBlob(int parameter) {
    if (sqlite3_bind_zeroblob(handle_, parameter, 0) != SQLITE_OK) {
        fail(sqlite3_db_handle(handle_));
    }
    return *this;
}

bool Statement::step() {
    const int result = sqlite3_step(handle_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        fail(sqlite3_db_handle(handle_));
    }
    return result == SQLITE_ROW;
}

void Statement::run() {
    while (step()) {
    }
}

void Statement::reset() {
    sqlite3_reset(handle_);
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(handle_, column) == SQLITE_NULL;
}

bool Statement::isBlob(int column) const {
    return sqlite3_column_type(handle_, column) == SQLITE_BLOB;
}

std::int64_t Statement::number(int column) const {
    return sqlite3_column_int64(handle_, column);
}

std::string_view Statement::text(int column) const {
    const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(handle_, column));
    if (data == nullptr) {
        return {};
    }
    return {data, static_cast<std::size_t>(sqlite3_column_bytes(handle_, column))};
}

Transaction::Transaction(Connection& connection, Kind kind) : connection_(connection) {
    connection_.execute(kind == Kind::write ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction() {
    if (open_) {
        // After a failure that has rolled back already, this one has nothing left to do.
        sqlite3_exec(connection_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::commit() {
    connection_.execute("COMMIT");
    open_ = false;
}

}  // namespace devserver::sqlite
