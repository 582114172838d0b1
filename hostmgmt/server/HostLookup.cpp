#include "hostmgmt/server/HostLookup.h"

#include "arkeon/host_identity.h"
#include "cmdframework/Logcmd.h"
#include "cmdframework/Messages.h"
#include "hostmgmt/Json.h"
#include "hostmgmt/OptionNames.h"
#include "hostmgmt/server/PrimaryServer.h"
#include "hostmgmt/server/ServerErrors.h"

#include <array>

using arkeon::Status;
namespace status = arkeon::status;

namespace {

constexpr CatalogueText moreThanOneHost = catalogued(
    "NecErr8900N", "The host name that was provided must be associated with a single host ID.");

HostIdResult failed(int code, const CLogcmd& log) {
    reportStatus(code, log);
    return {Status{code}, {}};
}

// The host ID of the only host in a reply.
HostIdResult readHostId(const std::string& reply, const CLogcmd& log) {
    JsonPayload payload(log);
    static_cast<void>(payload.load(reply));  // logged there; then there are no hosts either
    const json_t* hosts = json_object_get(payload, "hosts");
    if (!json_is_array(hosts)) {
        log.logit("Hosts value is NULL", logLevel::failure);
        return failed(status::unreadableReply, log);
    }
    if (json_array_size(hosts) == 0) {
        return failed(status::unknownName, log);
    }
    if (json_array_size(hosts) > 1) {
        reportStatus(status::ambiguousHost, messageText(moreThanOneHost), log);
        return {status::ambiguousHost, {}};
    }
    const char* uuid = stringMember(json_array_get(hosts, 0), "uuid");
    if (uuid == nullptr || *uuid == '\0') {
        log.logit("UUID is NULL", logLevel::failure);
        return failed(status::unreadableReply, log);
    }
    log.logit(
        {"HostID corresponding to mappedhostname: ", std::string_view(uuid)}, logLevel::ordinary);
    return {status::success, uuid};
}

HostIdResult readReply(const ServerReply& reply, const CLogcmd& log) {
    if (reply.httpStatus == httpStatus::ok) {
        return readHostId(reply.body, log);
    }
    JsonPayload payload(log);
    const int code = readErrorReply(reply.body, payload, log).value_or(status::unreadableReply);
    // A change needs a host ID, so error code 0 counts as an unreadable reply.
    return failed(code == status::success ? status::unreadableReply : code, log);
}

HostIdResult lookUp(const std::string& name, const PrimaryServer& server, const CLogcmd& log) {
    ServerRequest request;
    request.operation = OP_MAPPED_HOST_NAME;
    request.name = name;
    const ServerReply reply = server.exchange(request);
    if (isLoginFailure(reply.status)) {
        printLoginRequired();
        return {reply.status, {}};
    }
    if (reply.status != status::success) {
        return failed(reply.status, log);
    }
    HostIdResult result = readReply(reply, log);
    if (result.status != status::success) {
        logReply(reply, log);
    }
    return result;
}

}  // namespace

HostIdResult findHostId(const CArgscmd& args, const PrimaryServer& server, const CLogcmd& log) {
    if (isGiven(args, option::hostid)) {
        return {status::success, valueOf(args, option::hostid)};
    }
    return lookUp(valueOf(args, option::host), server, log);
}

HostIdResult findOwnHostId(const PrimaryServer& server, const CLogcmd& log) {
    const std::string where = "AkHostMgmtBaseOption::getHostIDfromCertmapinfo";
    const std::string name = server.name();
    if (name.empty()) {
        log.logit(where + ", failed to get master server name", logLevel::failure);
        return {status::noPrimaryServer, {}};
    }
    std::array<char, 64> buffer{};
    const Status result{
        getHostID(localCertificateType(), name.c_str(), buffer.data(), buffer.size())};
    if (result != status::success) {
        log.logit(
            where + ", getHostID() failed, retval = " + std::to_string(result), logLevel::failure);
        return {result, {}};
    }
    log.logit(where + ", UUID = " + buffer.data(), logLevel::ordinary);
    return {status::success, buffer.data()};
}
