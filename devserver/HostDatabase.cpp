#include "devserver/HostDatabase.h"

#include "devserver/Failure.h"
#include "devserver/HostChanges.h"
#include "devserver/HostListing.h"
#include "devserver/HostTables.h"
#include "devserver/Sqlite.h"
#include "devserver/Text.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <array>
#include <ctime>
#include <span>

namespace devserver {

namespace {

/// Readers that are kept for the next request; more are opened when more are needed.
constexpr std::size_t mostIdleReaders = 16;

/// The columns of the audit trail in the order in which entries are written and read.
constexpr const char* auditColumns = "time, who, method, resource, reason, status, errorCode";

std::string digestOf(std::string_view token) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    if (EVP_Digest(token.data(), token.size(), digest.data(), &size, EVP_sha256(), nullptr) != 1) {
        throw Failure("the digest of a token cannot be made");
    }
    return text::hex(std::span(digest).first(size));
}

bool equalInConstantTime(std::string_view one, std::string_view other) {
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

void fill(sqlite::Connection& connection, const std::function<HostSource()>& source) {
    sqlite::Transaction transaction(connection, sqlite::Transaction::Kind::write);
    tables::create(connection);
    tables::Writer writer(connection);
    const HostSource next = source();
    for (HostRecord host; next(host);) {
        writer.add(host);
    }
    transaction.commit();
}

void check(sqlite::Connection& connection) {
    if (connection.number("PRAGMA user_version") != tables::version) {
        throw sqlite::Error("it is not a database of this server");
    }
    sqlite::Statement check(connection, "PRAGMA quick_check(1)");
    const std::string result(check.step() ? check.text(0) : "");
    if (result != "ok") {
        // A heading line with the name of the database may come before the line that counts.
        throw sqlite::Error("it is damaged: " + result.substr(result.rfind('\n') + 1));
    }
}

bool isEmpty(sqlite::Connection& connection) {
    return connection.number("SELECT count(*) FROM sqlite_schema") == 0 &&
           connection.number("PRAGMA user_version") == 0;
}

std::unique_ptr<sqlite::Connection>
openForWriting(const std::string& path, const std::function<HostSource()>& source) {
    auto connection = std::make_unique<sqlite::Connection>(path, sqlite::Mode::create);
    connection->execute("PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; "
                        "PRAGMA foreign_keys=ON");
    if (isEmpty(*connection)) {
        fill(*connection, source);
    } else {
        check(*connection);
    }
    return connection;
}

void record(sqlite::Connection& connection, const AuditEntry& entry) {
    sqlite::Statement insert(
        connection, std::string("INSERT INTO audit (") + auditColumns + ") VALUES (?,?,?,?,?,?,?)");
    insert.bind(1, entry.time).bind(2, entry.who).bind(3, entry.method).bind(4, entry.resource);
    insert.bind(5, entry.reason).bind(6, std::int64_t{entry.status}).bind(7, entry.errorCode);
    insert.run();
}

AuditEntry entryOf(const sqlite::Statement& row) {
    AuditEntry entry;
    entry.time = row.number(0);
    entry.who = row.text(1);
    entry.method = row.text(2);
    entry.resource = row.text(3);
    entry.reason = row.text(4);
    entry.status = static_cast<int>(row.number(5));
    entry.errorCode = row.number(6);
    return entry;
}

}  // namespace

HostDatabase::HostDatabase(std::string path, const std::function<HostSource()>& source)
    : path_(std::move(path)) {
    try {
        writer_ = openForWriting(path_, source);
    } catch (const sqlite::Error& error) {
        throw Failure("cannot use the database " + path_ + ": " + error.what());
    }
}

HostDatabase::~HostDatabase() = default;

std::unique_ptr<HostListing> HostDatabase::list(const HostFilter& filter) const {
    return std::make_unique<HostListing>(takeReader(), filter);
}

void HostDatabase::change(const std::function<AuditEntry(HostChanges&)>& work) {
    const std::lock_guard lock(writing_);
    sqlite::Transaction transaction(*writer_, sqlite::Transaction::Kind::write);
    HostChanges changes(*writer_);
    record(*writer_, work(changes));
    transaction.commit();
}

std::optional<TokenOwner> HostDatabase::ownerOf(std::string_view token) const {
    const std::string digest = digestOf(token);
    const ConnectionPtr reader = takeReader();
    sqlite::Statement query(*reader, "SELECT digest, owner, expires FROM tokens");
    std::optional<TokenOwner> owner;
    while (query.step()) {
        if (equalInConstantTime(digest, query.text(0))) {
            const bool expired = !query.isNull(2) && query.number(2) <= std::time(nullptr);
            owner = TokenOwner{std::string(query.text(1)), expired};
        }
    }
    return owner;
}

void HostDatabase::addToken(
    std::string_view token, const std::string& owner, std::optional<std::int64_t> expires) {
    const std::lock_guard lock(writing_);
    sqlite::Statement insert(
        *writer_, "INSERT OR REPLACE INTO tokens (digest, owner, expires) VALUES (?,?,?)");
    insert.bind(1, digestOf(token)).bind(2, owner);
    if (expires) {
        insert.bind(3, *expires);
    }
    insert.run();
}

std::vector<std::string> HostDatabase::serverNames() const {
    const ConnectionPtr reader = takeReader();
    sqlite::Statement query(*reader, "SELECT name FROM server_names ORDER BY rowid");
    std::vector<std::string> names;
    while (query.step()) {
        names.emplace_back(query.text(0));
    }
    return names;
}

void HostDatabase::addServerName(const std::string& name) {
    const std::lock_guard lock(writing_);
    sqlite::Statement insert(*writer_, "INSERT OR IGNORE INTO server_names (name) VALUES (?)");
    insert.bind(1, name).run();
}

std::vector<AuditEntry> HostDatabase::auditTrail(const std::string& path) {
    try {
        const sqlite::Connection connection(path, sqlite::Mode::readOnly);
        sqlite::Statement query(
            connection, std::string("SELECT ") + auditColumns + " FROM audit ORDER BY id");
        std::vector<AuditEntry> entries;
        while (query.step()) {
            entries.push_back(entryOf(query));
        }
        return entries;
    } catch (const sqlite::Error& error) {
        throw Failure("cannot read the audit trail in " + path + ": " + error.what());
    }
}

HostDatabase::ConnectionPtr HostDatabase::takeReader() const {
    std::unique_ptr<sqlite::Connection> reader;
    {
        const std::lock_guard lock(pool_);
        if (!idleReaders_.empty()) {
            reader = std::move(idleReaders_.back());
            idleReaders_.pop_back();
        }
    }
    if (!reader) {
        reader = std::make_unique<sqlite::Connection>(path_, sqlite::Mode::readOnly);
    }
    return {reader.release(), [this](sqlite::Connection* used) {
                giveBack(std::unique_ptr<sqlite::Connection>(used));
            }};
}

void HostDatabase::giveBack(std::unique_ptr<sqlite::Connection> reader) const {
    const std::lock_guard lock(pool_);
    if (idleReaders_.size() < mostIdleReaders) {
        idleReaders_.push_back(std::move(reader));
    }
}

}  // namespace devserver
