#pragma once

#include "arkeon/status.h"
#include "hostmgmt/server/RestResources.h"

#include <string>

class AKClientCURL;
class CArgscmd;
class CLogcmd;

/// A request to the primary server.
struct ServerRequest {
    OperationType operation = OP_ALL_HOSTS;
    CurlRequestType method = CURL_GET;
    std::string body;
    std::string name;  ///< a host or mapping name, not encoded
    std::string hostId;
    LoginType login = USER_LOGIN;
};

/// What became of a request.
struct [[nodiscard]] ServerReply {
    arkeon::Status status = arkeon::status::success;
    int httpStatus = 0;  ///< 0: no reply arrived
    std::string body;
};

/// The primary server of one operation: the one that the option "server" names, or the one of the
/// master configuration.
class PrimaryServer {
public:
    /// Both must outlive the object.
    PrimaryServer(const CArgscmd& args, const CLogcmd& log) : args_(args), log_(log) {}

    /// The server's name. If none is configured, the reason is shown and logged.
    /// @throws std::logic_error if the configuration names none; nothing catches it
    std::string name() const;

    /// The relative URI of a resource, logged.
    std::string
    uri(OperationType operation, const std::string& hostId, const std::string& encodedName) const;

    /// Sends a request. The status is `success` if a reply arrived, whatever its HTTP status; else
    /// the client's, 37 (the server's name is empty), 8614 or 20.
    /// @throws std::logic_error from `name`
    ServerReply exchange(const ServerRequest& request) const;

    /// Sends a request and decides whether it succeeded: the HTTP status is 200 or 201, or 204 for
    /// a DELETE or PATCH. A failure is shown on standard error. Its status is the client's, or the
    /// code of the server's error reply (7610 if that has none), or 8901 for a DELETE of a name
    /// that the server does not know.
    ServerReply request(const ServerRequest& request) const;

private:
    arkeon::Status
    encodeName(AKClientCURL& client, const std::string& plain, std::string& encoded) const;
    arkeon::Status auditHeaderLine(AKClientCURL& client, std::string& line) const;
    arkeon::Status
    prepare(AKClientCURL& client, const ServerRequest& request, std::string& uri) const;
    arkeon::Status
    perform(AKClientCURL& client, const ServerRequest& request, const std::string& uri) const;
    void reportServerError(int code, int httpCode) const;

    const CArgscmd& args_;
    const CLogcmd& log_;
};

/// The type of the local host's certificate: 2, the cluster's, on the active node of a cluster,
/// else 1, the host's.
int localCertificateType();

/// Logs the HTTP status and the body of a reply.
void logReply(const ServerReply& reply, const CLogcmd& log);
