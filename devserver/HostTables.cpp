#include "devserver/HostTables.h"

#include "devserver/Sqlite.h"

namespace devserver::tables {

namespace {

const char* columnType(Kind kind) {
    return kind == Kind::text ? "TEXT" : "INTEGER";
}

template <std::size_t count>
std::string definitions(const std::array<Key, count>& keys) {
    std::string text;
    for (const Key& key : keys) {
        text += std::string(key.name) + ' ' + columnType(key.kind) + ", ";
    }
    return text;
}

template <std::size_t count>
std::string columns(const std::array<Key, count>& keys, const std::string& prefix) {
    std::string text;
    for (const Key& key : keys) {
        text += (text.empty() ? "" : ",") + prefix + key.name;
    }
    return text;
}

std::string placeholders(std::size_t count) {
    std::string text = "?";
    for (std::size_t i = 1; i < count; ++i) {
        text += ",?";
    }
    return text;
}

/// Binds a value to a parameter; what is absent is an empty blob, unlike null.
struct Binder {
    sqlite::Statement& statement;
    int parameter;

    void operator()(Absent) const { statement.bindEmptyBlob(parameter); }
    void operator()(std::nullptr_t) const { statement.bindNull(parameter); }
    void operator()(bool value) const { statement.bind(parameter, std::int64_t{value}); }
    void operator()(std::int64_t value) const { statement.bind(parameter, value); }
    void operator()(const std::string& value) const { statement.bind(parameter, value); }
};

template <std::size_t count>
void bindAll(sqlite::Statement& statement, int first, const std::array<Value, count>& values) {
    for (const Value& value : values) {
        std::visit(Binder{statement, first++}, value);
    }
}

Value valueAt(const sqlite::Statement& row, int column, Kind kind) {
    if (row.isNull(column)) {
        return nullptr;
    }
    if (row.isBlob(column)) {
        return Absent{};
    }
    switch (kind) {
    case Kind::flag:
        return row.number(column) != 0;
    case Kind::number:
        return row.number(column);
    case Kind::text:
        break;
    }
    return std::string(row.text(column));
}

template <std::size_t count>
void readAll(
    const sqlite::Statement& row, int column, const std::array<Key, count>& keys,
    std::array<Value, count>& values) {
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = valueAt(row, column++, keys[i].kind);
    }
}

}  // namespace

void create(sqlite::Connection& connection) {
    const std::string sql =
        "CREATE TABLE hosts (id INTEGER PRIMARY KEY, " + definitions(hostKeys) +
        "UNIQUE (uuid));"
        "CREATE INDEX hosts_by_name ON hosts (hostName COLLATE NOCASE);"
        "CREATE TABLE mappings (host INTEGER NOT NULL REFERENCES hosts (id), "
        "position INTEGER NOT NULL, " +
        definitions(mappingKeys) +
        "PRIMARY KEY (host, position)) WITHOUT ROWID;"
        "CREATE INDEX mappings_by_name ON mappings (mappedHostName COLLATE NOCASE);"
        "CREATE TABLE tokens (digest TEXT PRIMARY KEY, owner TEXT NOT NULL, expires INTEGER);"
        "CREATE TABLE server_names (name TEXT PRIMARY KEY COLLATE NOCASE);"
        "CREATE TABLE audit (id INTEGER PRIMARY KEY, time INTEGER NOT NULL, who TEXT NOT NULL, "
        "method TEXT NOT NULL, resource TEXT NOT NULL, reason TEXT NOT NULL, "
        "status INTEGER NOT NULL, errorCode INTEGER NOT NULL);"
        "PRAGMA user_version = " +
        std::to_string(version);
    connection.execute(sql.c_str());
}

std::string hostColumns(const std::string& prefix) {
    return columns(hostKeys, prefix);
}

std::string mappingColumns(const std::string& prefix) {
    return columns(mappingKeys, prefix);
}

/// The insertions, compiled once.
struct Writer::Statements {
    sqlite::Statement host;
    sqlite::Statement mapping;
    sqlite::Statement lastHost;
};

Writer::Writer(const sqlite::Connection& connection)
    : statements_(new Statements{
          {connection, "INSERT INTO hosts (" + hostColumns("") + ") VALUES (" +
                           placeholders(hostKeys.size()) + ")"},
          {connection, "INSERT INTO mappings (host,position," + mappingColumns("") +
                           ") VALUES (?,?," + placeholders(mappingKeys.size()) + ")"},
          {connection, "SELECT last_insert_rowid()"}}) {}

Writer::~Writer() = default;

void Writer::add(const HostRecord& host) {
    bindAll(statements_->host, 1, host.values);
    statements_->host.run();
    statements_->host.reset();
    statements_->lastHost.step();
    const std::int64_t id = statements_->lastHost.number(0);
    statements_->lastHost.reset();
    std::int64_t position = 0;
    for (const MappingRecord& mapping : host.mappings) {
        statements_->mapping.bind(1, id).bind(2, ++position);
        bindAll(statements_->mapping, 3, mapping);
        statements_->mapping.run();
        statements_->mapping.reset();
    }
}

void read(const sqlite::Statement& row, int firstColumn, HostRecord& host) {
    readAll(row, firstColumn, hostKeys, host.values);
}

void read(const sqlite::Statement& row, int firstColumn, MappingRecord& mapping) {
    readAll(row, firstColumn, mappingKeys, mapping);
}

}  // namespace devserver::tables
