#pragma once

#include "devserver/HostRecord.h"

#include <cstdint>
#include <optional>
#include <string>

namespace devserver {

namespace sqlite {
class Connection;
}

/// What a mapping is to a host and to the others, as a change needs to know it.
struct NameUse {
    bool mapped = false;             ///< the host has this name among its mappings
    bool approvedElsewhere = false;  ///< another host has it approved
    bool sharedElsewhere = true;     ///< every other host that has it approved shares it
};

/// The changes to hosts and mappings, within the transaction that the host database has open.
/// Names are compared without regard to the case of ASCII letters.
class HostChanges {
public:
    explicit HostChanges(sqlite::Connection& connection) : connection_(connection) {}

    /// The row of a host ID.
    std::optional<std::int64_t> host(const std::string& hostId);
    /// Whether another row than `except` has this host name.
    bool hostNameExists(const std::string& hostName, std::int64_t except = 0);
    NameUse useOf(const std::string& mappedName, std::int64_t host);

    /// Adds a host with a random ID and nothing but its name; returns its row.
    std::int64_t addHost(const std::string& hostName, const std::string& masterServer);
    /// Adds or changes a mapping: it is approved and added by hand from now on.
    void putMapping(std::int64_t host, const std::string& mappedName, bool shared);
    /// False when the host has no such mapping.
    bool removeMapping(std::int64_t host, const std::string& mappedName);
    /// An empty comment is stored as null.
    void setComment(std::int64_t host, const std::string& comment);
    void setHostName(std::int64_t host, const std::string& hostName);
    /// `until` is in milliseconds since the epoch, 0 when there is no permission.
    void setAutoReissue(std::int64_t host, bool allowed, std::int64_t until);

    /// The records as they are after the changes so far.
    HostRecord hostRecord(std::int64_t host);
    MappingRecord mappingRecord(std::int64_t host, const std::string& mappedName);

private:
    /// A pending mapping conflicts while another host has its name approved and not shared.
    void settleConflicts(const std::string& mappedName);

    sqlite::Connection& connection_;
};

}  // namespace devserver
