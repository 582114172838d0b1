#pragma once

#include "devserver/HostRecord.h"

#include <memory>
#include <optional>
#include <string>

namespace devserver {

namespace sqlite {
class Connection;
}

/// Which hosts a listing holds, and which of their mappings. Flags and the mapped name choose
/// hosts by their mappings; without any of them every host passes, also one without mappings.
struct HostFilter {
    std::optional<bool> approved;
    std::optional<bool> conflicting;
    /// The hosts that have this name among the mappings that pass the flags, in any letter case;
    /// they come with all their mappings that pass the flags.
    std::optional<std::string> mappedName;
    /// Exactly this host, also when none of its mappings passes the flags.
    std::optional<std::string> hostId;
};

/// The hosts that pass a filter, one after the other in the order they were added. Holds a read
/// transaction of its own connection, so that what it gives is of one moment.
class HostListing {
public:
    HostListing(std::shared_ptr<sqlite::Connection> connection, const HostFilter& filter);
    ~HostListing();
    HostListing(const HostListing&) = delete;
    HostListing& operator=(const HostListing&) = delete;

    /// False when there are no more.
    bool next(HostRecord& host);

private:
    struct Cursors;
    std::unique_ptr<Cursors> cursors_;
};

}  // namespace devserver
