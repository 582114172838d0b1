#pragma once

#include "devserver/HostRecord.h"

#include <memory>
#include <string>

namespace devserver {

namespace sqlite {
class Connection;
class Statement;
}  // namespace sqlite

/// The tables of the host database: names, order and kinds of their columns follow the keys of
/// the records. NULL is JSON's null; a blob without bytes means that the key is absent.
namespace tables {

/// The number that user_version holds in a database of this layout.
inline constexpr int version = 1;

void create(sqlite::Connection& connection);

/// The columns of a table, separated by commas, each after the prefix: "h.uuid,h.hostName,...".
std::string hostColumns(const std::string& prefix);
std::string mappingColumns(const std::string& prefix);

/// Adds records, one statement for all of them.
class Writer {
public:
    explicit Writer(const sqlite::Connection& connection);
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void add(const HostRecord& host);

private:
    struct Statements;
    std::unique_ptr<Statements> statements_;
};

/// Reads the values of a record from a row, starting at a column.
void read(const sqlite::Statement& row, int firstColumn, HostRecord& host);
void read(const sqlite::Statement& row, int firstColumn, MappingRecord& mapping);

}  // namespace tables

}  // namespace devserver
