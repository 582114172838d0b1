#pragma once

#include "devserver/HostListing.h"

#include <string>
#include <string_view>

namespace devserver {

/// The path of the hosts, which all resources are below.
inline constexpr std::string_view hostCollection = "/arkeon/config/hosts";

/// What a request target names. Path segments are taken as they were sent and decoded one by
/// one: a dot segment or an encoded slash is part of a name like any other byte.
struct Address {
    /// The kinds of resources; `listing` is `hostmappings`, `ownMappings` a host's approved ones.
    enum class Resource { unknown, hosts, listing, host, comment, mapping, ownMappings };

    Resource resource = Resource::unknown;
    std::string hostId;
    std::string mappedName;
    HostFilter filter;  ///< of `hosts` and `listing`
    /// The path or the query cannot be decoded, or the query says something unknown.
    bool malformed = false;
};

Address parseAddress(std::string_view target);

}  // namespace devserver
