#include "devserver/Address.h"

#include "devserver/Text.h"

#include <vector>

namespace devserver {

namespace {

/// Thrown where the address cannot be decoded or says something unknown.
struct Malformed {};

std::string decoded(std::string_view text) {
    const std::optional<std::string> result = text::percentDecoded(text);
    if (!result) {
        throw Malformed{};
    }
    return *result;
}

bool flagOf(const std::string& value) {
    if (value != "true" && value != "false") {
        throw Malformed{};
    }
    return value == "true";
}

/// A value that is given twice is malformed, like a name that is unknown.
template <typename T, typename U>
void assignOnce(std::optional<T>& member, U value) {
    if (member) {
        throw Malformed{};
    }
    member = std::move(value);
}

void addTerm(std::string_view term, HostFilter& filter) {
    const std::size_t equals = term.find('=');
    if (equals == std::string_view::npos) {
        throw Malformed{};
    }
    const std::string_view name = term.substr(0, equals);
    const std::string value = decoded(term.substr(equals + 1));
    if (name == "isapproved") {
        assignOnce(filter.approved, flagOf(value));
    } else if (name == "isconflict") {
        assignOnce(filter.conflicting, flagOf(value));
    } else if (name == "mappedhostname") {
        assignOnce(filter.mappedName, value);
    } else {
        throw Malformed{};
    }
}

HostFilter filterOf(std::string_view query) {
    HostFilter filter;
    if (!query.empty()) {
        for (const std::string_view term : text::split(query, '&')) {
            addTerm(term, filter);
        }
    }
    return filter;
}

void nameCollection(std::string_view first, Address& address) {
    if (first.empty()) {
        address.resource = Address::Resource::hosts;
    } else if (first == "hostmappings") {
        address.resource = Address::Resource::listing;
    } else {
        address.resource = Address::Resource::host;
        address.hostId = decoded(first);
    }
}

void nameMember(std::string_view hostId, std::string_view member, Address& address) {
    address.hostId = decoded(hostId);
    if (member == "comment") {
        address.resource = Address::Resource::comment;
    } else if (member == "hostmappings") {
        address.resource = Address::Resource::ownMappings;
    }
}

void nameResource(const std::vector<std::string_view>& segments, Address& address) {
    if (segments.size() == 1) {
        nameCollection(segments[0], address);
    } else if (segments.size() == 2 && !segments[0].empty()) {
        nameMember(segments[0], segments[1], address);
    } else if (
        segments.size() == 3 && !segments[0].empty() && segments[1] == "hostmappings" &&
        !segments[2].empty()) {
        address.resource = Address::Resource::mapping;
        address.hostId = decoded(segments[0]);
        address.mappedName = decoded(segments[2]);
    }
}

/// Only the collections take a query; a host's own mappings are its approved ones and no others.
void applyQuery(std::string_view query, Address& address) {
    using Resource = Address::Resource;
    if (address.resource == Resource::hosts || address.resource == Resource::listing) {
        address.filter = filterOf(query);
    } else if (address.resource == Resource::ownMappings) {
        address.filter = filterOf(query);
        if (address.filter.approved != true || address.filter.conflicting ||
            address.filter.mappedName) {
            address.resource = Resource::unknown;
        }
    } else if (!query.empty()) {
        throw Malformed{};
    }
}

}  // namespace

Address parseAddress(std::string_view target) {
    Address address;
    const std::size_t question = target.find('?');
    std::string_view path = target.substr(0, question);
    const std::string_view query =
        question == std::string_view::npos ? "" : target.substr(question + 1);
    if (!path.starts_with(hostCollection)) {
        return address;
    }
    path.remove_prefix(hostCollection.size());
    if (!path.empty() && path.front() != '/') {
        return address;
    }
    path.remove_prefix(path.empty() ? 0 : 1);
    try {
        nameResource(text::split(path, '/'), address);
        applyQuery(query, address);
    } catch (const Malformed&) {
        address.malformed = true;
    }
    return address;
}

}  // namespace devserver
