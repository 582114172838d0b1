#include "devserver/HostChanges.h"

#include "devserver/HostTables.h"
#include "devserver/Random.h"
#include "devserver/Sqlite.h"

namespace devserver {

namespace {

HostRecord newHost(const std::string& hostName, const std::string& masterServer) {
    HostRecord host;
    host.values.fill(nullptr);
    host.values[hostKey::uuid] = randomUuid();
    host.values[hostKey::hostName] = hostName;
    host.values[hostKey::masterServer] = masterServer;
    host.values[hostKey::isSecureEnabled] = false;
    host.values[hostKey::autoReissue] = false;
    host.values[hostKey::autoReissueDuration] = std::int64_t{0};
    host.values[hostKey::hasArkeonCaHostCertificate] = false;
    return host;
}

}  // namespace

std::optional<std::int64_t> HostChanges::host(const std::string& hostId) {
    sqlite::Statement query(connection_, "SELECT id FROM hosts WHERE uuid=?");
    query.bind(1, hostId);
    return query.step() ? std::optional(query.number(0)) : std::nullopt;
}

bool HostChanges::hostNameExists(const std::string& hostName, std::int64_t except) {
    sqlite::Statement query(
        connection_, "SELECT 1 FROM hosts WHERE hostName=? COLLATE NOCASE AND id<>?");
    query.bind(1, hostName).bind(2, except);
    return query.step();
}

NameUse HostChanges::useOf(const std::string& mappedName, std::int64_t host) {
    sqlite::Statement query(
        connection_, "SELECT host=?2, isApproved IS 1, isShared IS 1 FROM mappings "
                     "WHERE mappedHostName=?1 COLLATE NOCASE");
    query.bind(1, mappedName).bind(2, host);
    NameUse use;
    while (query.step()) {
        if (query.number(0) != 0) {
            use.mapped = true;
        } else if (query.number(1) != 0) {
            use.approvedElsewhere = true;
            use.sharedElsewhere = use.sharedElsewhere && query.number(2) != 0;
        }
    }
    return use;
}

std::int64_t HostChanges::addHost(const std::string& hostName, const std::string& masterServer) {
    tables::Writer(connection_).add(newHost(hostName, masterServer));
    return connection_.number("SELECT last_insert_rowid()");
}

void HostChanges::putMapping(std::int64_t host, const std::string& mappedName, bool shared) {
    const std::int64_t now = nowInMilliseconds();
    if (useOf(mappedName, host).mapped) {
        sqlite::Statement update(
            connection_, "UPDATE mappings SET isApproved=1, isConflicting=0, isAddedManually=1, "
                         "isShared=?1, updatedOn=?2 "
                         "WHERE host=?3 AND mappedHostName=?4 COLLATE NOCASE");
        update.bind(1, std::int64_t{shared}).bind(2, now).bind(3, host).bind(4, mappedName).run();
    } else {
        sqlite::Statement insert(
            connection_,
            "INSERT INTO mappings (host, position, mappedHostName, isApproved, isConflicting, "
            "isAddedManually, isShared, createdOn, updatedOn) "
            "VALUES (?3, (SELECT coalesce(max(position),0)+1 FROM mappings WHERE host=?3), "
            "?4, 1, 0, 1, ?1, ?2, ?2)");
        insert.bind(1, std::int64_t{shared}).bind(2, now).bind(3, host).bind(4, mappedName).run();
    }
    settleConflicts(mappedName);
}

bool HostChanges::removeMapping(std::int64_t host, const std::string& mappedName) {
    if (!useOf(mappedName, host).mapped) {
        return false;
    }
    sqlite::Statement remove(
        connection_, "DELETE FROM mappings WHERE host=? AND mappedHostName=? COLLATE NOCASE");
    remove.bind(1, host).bind(2, mappedName).run();
    settleConflicts(mappedName);
    return true;
}

void HostChanges::setComment(std::int64_t host, const std::string& comment) {
    sqlite::Statement update(connection_, "UPDATE hosts SET comment=nullif(?,'') WHERE id=?");
    update.bind(1, comment).bind(2, host).run();
}

void HostChanges::setHostName(std::int64_t host, const std::string& hostName) {
    sqlite::Statement update(connection_, "UPDATE hosts SET hostName=? WHERE id=?");
    update.bind(1, hostName).bind(2, host).run();
}

void HostChanges::setAutoReissue(std::int64_t host, bool allowed, std::int64_t until) {
    sqlite::Statement update(
        connection_, "UPDATE hosts SET autoReissue=?, autoReissueDuration=? WHERE id=?");
    update.bind(1, std::int64_t{allowed}).bind(2, until).bind(3, host).run();
}

HostRecord HostChanges::hostRecord(std::int64_t host) {
    HostRecord record;
    sqlite::Statement hosts(
        connection_, "SELECT " + tables::hostColumns("") + " FROM hosts WHERE id=?");
    hosts.bind(1, host);
    if (hosts.step()) {
        tables::read(hosts, 0, record);
    }
    sqlite::Statement mappings(
        connection_,
        "SELECT " + tables::mappingColumns("") + " FROM mappings WHERE host=? ORDER BY position");
    mappings.bind(1, host);
    while (mappings.step()) {
        tables::read(mappings, 0, record.mappings.emplace_back());
    }
    return record;
}

MappingRecord HostChanges::mappingRecord(std::int64_t host, const std::string& mappedName) {
    MappingRecord record;
    sqlite::Statement mappings(
        connection_, "SELECT " + tables::mappingColumns("") +
                         " FROM mappings WHERE host=? AND mappedHostName=? COLLATE NOCASE");
    mappings.bind(1, host).bind(2, mappedName);
    if (mappings.step()) {
        tables::read(mappings, 0, record);
    }
    return record;
}

void HostChanges::settleConflicts(const std::string& mappedName) {
    sqlite::Statement update(
        connection_,
        "UPDATE mappings SET isConflicting = isApproved IS NOT 1 AND EXISTS (SELECT 1 FROM "
        "mappings other WHERE other.mappedHostName=?1 COLLATE NOCASE AND "
        "other.host<>mappings.host AND other.isApproved IS 1 AND other.isShared IS NOT 1) "
        "WHERE mappedHostName=?1 COLLATE NOCASE");
    update.bind(1, mappedName).run();
}

}  // namespace devserver
