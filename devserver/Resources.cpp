#include "devserver/Resources.h"

#include "devserver/HostChanges.h"
#include "devserver/MediaType.h"
#include "devserver/RequestBody.h"
#include "devserver/Sqlite.h"
#include "devserver/Text.h"

namespace devserver {

namespace {

using Resource = Address::Resource;

constexpr std::size_t longestReason = 512;
constexpr std::int64_t reissuePermission = std::int64_t{48} * 60 * 60 * 1000;

/// The methods a resource knows, as the Allow header lists them.
std::string_view methodsOf(Resource resource) {
    switch (resource) {
    case Resource::hosts:
        return "GET, POST";
    case Resource::host:
        return "GET, PATCH";
    case Resource::comment:
        return "PUT";
    case Resource::mapping:
        return "PUT, DELETE";
    case Resource::listing:
    case Resource::ownMappings:
    case Resource::unknown:
        break;
    }
    return "GET";
}

bool knowsMethod(Resource resource, std::string_view method) {
    for (const std::string_view known : text::split(methodsOf(resource), ',')) {
        if (text::trimmed(known) == method) {
            return true;
        }
    }
    return false;
}

bool hasBody(std::string_view method) {
    return method == "PUT" || method == "POST" || method == "PATCH";
}

/// The token of "Bearer TOKEN"; empty when the header is of another form.
std::string_view tokenOf(std::string_view authorization) {
    constexpr std::string_view scheme = "Bearer ";
    if (!text::equalIgnoringCase(authorization.substr(0, scheme.size()), scheme)) {
        return {};
    }
    return text::trimmed(authorization.substr(scheme.size()));
}

void checkReason(const Call& call) {
    if (call.auditReason.size() > longestReason) {
        throw Refusal{errors::badValue};
    }
}

/// The rules that hold for every resource, once the caller is known.
void checkForm(const Call& call, const Address& address) {
    if (address.malformed) {
        throw Refusal{errors::malformedRequest};
    }
    if (address.resource == Resource::unknown) {
        throw Refusal{errors::unknownResource};
    }
    if (!knowsMethod(address.resource, call.method)) {
        throw Refusal{errors::wrongMethod};
    }
    if (!mediaTypes::accepts(call.accept) ||
        (hasBody(call.method) && !mediaTypes::isOurs(call.contentType))) {
        throw Refusal{errors::wrongMediaType};
    }
    if (call.bodyTooLarge) {
        throw Refusal{errors::bodyTooLarge};
    }
    if (call.incomplete || (!hasBody(call.method) && !call.body.empty())) {
        throw Refusal{errors::malformedRequest};
    }
    if (call.method != "GET") {
        checkReason(call);
    }
}

Reply refusalReply(const Refusal& refusal, const Address& address) {
    Reply reply = errorReply(refusal.kind);
    if (refusal.kind.status == errors::wrongMethod.status) {
        reply.headers.emplace_back("Allow", methodsOf(address.resource));
    }
    return reply;
}

Reply emptyReply(int status) {
    Reply reply;
    reply.status = status;
    reply.contentType.clear();
    return reply;
}

template <typename Record>
Reply recordReply(int status, const Record& record) {
    Reply reply;
    reply.status = status;
    appendJson(reply.body, record);
    return reply;
}

std::int64_t existingHost(HostChanges& changes, const std::string& hostId) {
    const std::optional<std::int64_t> host = changes.host(hostId);
    if (!host) {
        throw Refusal{errors::unknownHost};
    }
    return *host;
}

/// A name may be approved for several hosts only when all of them share it.
void checkNameIsFree(const NameUse& use, bool shared) {
    if (use.approvedElsewhere && !(shared && use.sharedElsewhere)) {
        throw Refusal{errors::nameTaken};
    }
}

Reply putMapping(const Call& call, const Address& address, HostChanges& changes) {
    const bool shared = requestBody::isShared(call.body);
    checkName(address.mappedName);
    const std::int64_t host = existingHost(changes, address.hostId);
    const NameUse use = changes.useOf(address.mappedName, host);
    checkNameIsFree(use, shared);
    changes.putMapping(host, address.mappedName, shared);
    return recordReply(use.mapped ? 200 : 201, changes.mappingRecord(host, address.mappedName));
}

Reply deleteMapping(const Address& address, HostChanges& changes) {
    const std::int64_t host = existingHost(changes, address.hostId);
    if (!changes.removeMapping(host, address.mappedName)) {
        throw Refusal{errors::unknownMapping};
    }
    return emptyReply(204);
}

Reply putComment(const Call& call, const Address& address, HostChanges& changes) {
    const std::string comment = requestBody::comment(call.body);
    const std::int64_t host = existingHost(changes, address.hostId);
    changes.setComment(host, comment);
    return recordReply(200, changes.hostRecord(host));
}

Reply patchHost(const Call& call, const Address& address, HostChanges& changes) {
    const requestBody::HostPatch patch = requestBody::hostPatch(call.body);
    const std::int64_t host = existingHost(changes, address.hostId);
    if (patch.hostName && changes.hostNameExists(*patch.hostName, host)) {
        throw Refusal{errors::hostExists};
    }
    if (patch.hostName) {
        changes.setHostName(host, *patch.hostName);
    }
    if (patch.autoReissue) {
        changes.setAutoReissue(
            host, *patch.autoReissue,
            *patch.autoReissue ? nowInMilliseconds() + reissuePermission : 0);
    }
    return emptyReply(204);
}

/// A new host has its own name as its first mapping, so that it can be looked up by it.
Reply postHost(const Call& call, const std::string& masterServer, HostChanges& changes) {
    const std::string name = requestBody::hostName(call.body);
    if (changes.hostNameExists(name)) {
        throw Refusal{errors::hostExists};
    }
    checkNameIsFree(changes.useOf(name, 0), false);
    const std::int64_t host = changes.addHost(name, masterServer);
    changes.putMapping(host, name, false);
    const HostRecord record = changes.hostRecord(host);
    Reply reply = recordReply(201, record);
    reply.headers.emplace_back(
        "Location",
        std::string(hostCollection) + '/' + std::get<std::string>(record.values[hostKey::uuid]));
    return reply;
}

AuditEntry auditEntry(const Call& call, const Reply& reply, std::string who) {
    AuditEntry entry;
    entry.time = nowInMilliseconds();
    entry.who = std::move(who);
    entry.method = call.method;
    entry.resource = call.target;
    entry.reason = call.auditReason;
    entry.status = reply.status;
    entry.errorCode = reply.errorCode;
    return entry;
}

}  // namespace

Resources::Resources(HostDatabase& database, std::string masterServer)
    : database_(database), masterServer_(std::move(masterServer)) {}

Reply Resources::handle(const Call& call) {
    const Address address = parseAddress(call.target);
    try {
        return call.method == "GET" ? read(call, address) : change(call, address);
    } catch (const Refusal& refusal) {
        return refusalReply(refusal, address);
    } catch (const sqlite::Error&) {
        return errorReply(errors::serverFailure);
    }
}

void Resources::recordOnly(const Call& call, const Reply& reply) {
    if (call.method != "GET") {
        const std::optional<TokenOwner> owner = database_.ownerOf(tokenOf(call.authorization));
        database_.change(
            [&](HostChanges&) { return auditEntry(call, reply, owner ? owner->name : call.peer); });
    }
}

/// Who the caller is; refuses one who may not use the resource. A host reads its own approved
/// mappings with its certificate alone, and a token is no replacement for that.
std::string Resources::authorize(const Call& call, const Address& address) const {
    if (address.resource == Resource::ownMappings) {
        if (call.peer != address.hostId) {
            throw Refusal{errors::otherHost};
        }
        return call.peer;
    }
    const std::optional<TokenOwner> owner = database_.ownerOf(tokenOf(call.authorization));
    if (!owner) {
        throw Refusal{errors::noToken};
    }
    if (owner->expired) {
        throw Refusal{errors::tokenExpired};
    }
    return owner->name;
}

Reply Resources::read(const Call& call, const Address& address) const {
    authorize(call, address);
    checkForm(call, address);
    Reply reply;
    if (address.resource == Resource::hosts || address.resource == Resource::listing) {
        reply.listing = database_.list(address.filter);
        return reply;
    }
    HostFilter filter = address.filter;
    filter.hostId = address.hostId;
    if (!database_.list(filter)->next(reply.host.emplace())) {
        throw Refusal{errors::unknownHost};
    }
    return reply;
}

Reply Resources::change(const Call& call, const Address& address) {
    Reply reply;
    database_.change([&](HostChanges& changes) {
        std::string who = call.peer;
        try {
            who = authorize(call, address);
            checkForm(call, address);
            reply = write(call, address, changes);
        } catch (const Refusal& refusal) {
            reply = refusalReply(refusal, address);
        }
        return auditEntry(call, reply, std::move(who));
    });
    return reply;
}

/// Checks first, changes afterwards: what throws a Refusal has changed nothing.
Reply Resources::write(const Call& call, const Address& address, HostChanges& changes) const {
    switch (address.resource) {
    case Resource::hosts:
        return postHost(call, masterServer_, changes);
    case Resource::host:
        return patchHost(call, address, changes);
    case Resource::comment:
        return putComment(call, address, changes);
    case Resource::mapping:
        return call.method == "PUT" ? putMapping(call, address, changes)
                                    : deleteMapping(address, changes);
    case Resource::listing:
    case Resource::ownMappings:
    case Resource::unknown:
        break;
    }
    throw Refusal{errors::wrongMethod};
}

}  // namespace devserver
