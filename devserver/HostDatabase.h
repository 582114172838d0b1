#pragma once

#include "devserver/HostRecord.h"
#include "devserver/SampleHosts.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace devserver {

namespace sqlite {
class Connection;
}
class HostChanges;
class HostListing;
struct HostFilter;

/// One line of the audit trail: a request that is not a GET, carried out or refused.
struct AuditEntry {
    std::int64_t time = 0;  ///< milliseconds since the epoch
    std::string who;        ///< the token's owner, else the common name of the host certificate
    std::string method;
    std::string resource;  ///< the request target as it was sent
    std::string reason;
    int status = 0;
    std::int64_t errorCode = 0;
};

/// Who a token belongs to, and whether it is of any use.
struct TokenOwner {
    std::string name;
    bool expired = false;
};

/// The host database in one SQLite file, with the tokens the server knows and the audit trail.
/// Many threads may read while one changes; a change that was reported as done is on disk.
/// Failures of SQLite are sqlite::Error.
class HostDatabase {
public:
    /// Opens the file; an absent one is made and filled from `source`, in one transaction. A file
    /// that is no database of this server, or a damaged one, is a Failure.
    HostDatabase(std::string path, const std::function<HostSource()>& source);
    ~HostDatabase();
    HostDatabase(const HostDatabase&) = delete;
    HostDatabase& operator=(const HostDatabase&) = delete;

    /// The hosts that pass the filter, as they are now: later changes do not show in it.
    std::unique_ptr<HostListing> list(const HostFilter& filter) const;

    /// Runs `work` in a transaction and records the audit entry that it returns in the same one.
    /// When `work` throws, nothing is changed and nothing recorded.
    void change(const std::function<AuditEntry(HostChanges&)>& work);

    /// The owner of a token. The token is kept as a digest and compared in constant time.
    std::optional<TokenOwner> ownerOf(std::string_view token) const;
    /// Makes a token known; `expires` is in seconds since the epoch, nothing means no end.
    void
    addToken(std::string_view token, const std::string& owner, std::optional<std::int64_t> expires);

    /// The names and addresses the server has been started under, oldest first.
    std::vector<std::string> serverNames() const;
    void addServerName(const std::string& name);

    /// The audit trail of a database file, oldest first; works while a server uses the file.
    static std::vector<AuditEntry> auditTrail(const std::string& path);

private:
    using ConnectionPtr = std::shared_ptr<sqlite::Connection>;
    ConnectionPtr takeReader() const;
    void giveBack(std::unique_ptr<sqlite::Connection> reader) const;

    std::string path_;
    std::mutex writing_;
    std::unique_ptr<sqlite::Connection> writer_;
    mutable std::mutex pool_;
    mutable std::vector<std::unique_ptr<sqlite::Connection>> idleReaders_;
};

}  // namespace devserver
