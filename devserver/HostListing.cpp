#include "devserver/HostListing.h"

#include "devserver/HostTables.h"
#include "devserver/Sqlite.h"

namespace devserver {

namespace {

/// The condition that the flags put on a mapping; empty when there are none.
std::string flagCondition(const HostFilter& filter) {
    std::string condition;
    const auto add = [&condition](const char* column, bool value) {
        condition +=
            std::string(condition.empty() ? "" : " AND ") + "m." + column + (value ? "=1" : "=0");
    };
    if (filter.approved) {
        add("isApproved", *filter.approved);
    }
    if (filter.conflicting) {
        add("isConflicting", *filter.conflicting);
    }
    return condition;
}

std::string existsCondition(const std::string& condition) {
    return "EXISTS (SELECT 1 FROM mappings m WHERE m.host=h.id AND " + condition + ")";
}

std::string hostCondition(const HostFilter& filter) {
    const std::string flags = flagCondition(filter);
    if (filter.hostId) {
        return " WHERE h.uuid=?1";
    }
    if (filter.mappedName) {
        return " WHERE h.id IN (SELECT m.host FROM mappings m WHERE m.mappedHostName=?1 "
               "COLLATE NOCASE" +
               (flags.empty() ? "" : " AND " + flags) + ")";
    }
    return flags.empty() ? "" : " WHERE " + existsCondition(flags);
}

std::string hostQuery(const HostFilter& filter) {
    return "SELECT h.id," + tables::hostColumns("h.") + " FROM hosts h" + hostCondition(filter) +
           " ORDER BY h.id";
}

/// The mappings of the chosen hosts in the hosts' order, so that both cursors move together.
std::string mappingQuery(const HostFilter& filter) {
    const std::string flags = flagCondition(filter);
    std::string condition = flags.empty() ? "" : " WHERE " + flags;
    if (filter.hostId || filter.mappedName) {
        condition += std::string(flags.empty() ? " WHERE " : " AND ") +
                     "m.host IN (SELECT h.id FROM hosts h" + hostCondition(filter) + ")";
    }
    return "SELECT m.host," + tables::mappingColumns("m.") + " FROM mappings m" + condition +
           " ORDER BY m.host,m.position";
}

void bindName(sqlite::Statement& statement, const HostFilter& filter) {
    if (filter.hostId) {
        statement.bind(1, *filter.hostId);
    } else if (filter.mappedName) {
        statement.bind(1, *filter.mappedName);
    }
}

}  // namespace

/// The two queries that run side by side, in one transaction, ordered alike.
struct HostListing::Cursors {
    std::shared_ptr<sqlite::Connection> connection;
    sqlite::Transaction transaction;
    sqlite::Statement hosts;
    sqlite::Statement mappings;
    bool atMapping = false;

    Cursors(std::shared_ptr<sqlite::Connection> reader, const HostFilter& filter)
        : connection(std::move(reader)), transaction(*connection, sqlite::Transaction::Kind::read),
          hosts(*connection, hostQuery(filter)), mappings(*connection, mappingQuery(filter)) {
        bindName(hosts, filter);
        bindName(mappings, filter);
        atMapping = mappings.step();
    }

    void readMappings(std::int64_t host, std::vector<MappingRecord>& records) {
        records.clear();
        while (atMapping && mappings.number(0) <= host) {
            if (mappings.number(0) == host) {
                tables::read(mappings, 1, records.emplace_back());
            }
            atMapping = mappings.step();
        }
    }
};

HostListing::HostListing(std::shared_ptr<sqlite::Connection> connection, const HostFilter& filter)
    : cursors_(std::make_unique<Cursors>(std::move(connection), filter)) {}

HostListing::~HostListing() = default;

bool HostListing::next(HostRecord& host) {
    if (!cursors_->hosts.step()) {
        return false;
    }
    tables::read(cursors_->hosts, 1, host);
    cursors_->readMappings(cursors_->hosts.number(0), host.mappings);
    return true;
}

}  // namespace devserver
