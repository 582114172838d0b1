#pragma once

#include "cmdframework/Basecmd.h"
#include "cmdframework/Usagecmd.h"
#include "hostmgmt/Json.h"
#include "hostmgmt/OptionNames.h"
#include "hostmgmt/server/PrimaryServer.h"
#include "hostmgmt/server/RestResources.h"

#include <functional>
#include <string>

/// The base of every operation. Holds the JSON object that is first the request's body and then the
/// server's reply, and forwards to the parts that do the work: the primary server, the host lookup
/// and the error reports in server/.
///
/// Operations return 0 or a status: the server's error code, or one of arkeon/status.h.
class AkHostMgmtBaseOption : public CBasecmd {
public:
    using OperationType = ::OperationType;
    using CurlRequestType = ::CurlRequestType;
    using LoginType = ::LoginType;
    using enum ::OperationType;
    using enum ::CurlRequestType;
    using enum ::LoginType;

    /// `newName` is the operation's option as typed, `table` its options. The operation logs with
    /// the settings of `commandLog`.
    AkHostMgmtBaseOption(
        const char* newName, CArgscmd newArgs, const PARAMETERS* table, unsigned long count,
        CLogcmd& commandLog);
    ~AkHostMgmtBaseOption() override;

    /// Sets a member of the JSON object; replaces an earlier one.
    /// @return 0
    /// @throws CUsagecmd code 10 with the key if the value is not UTF-8
    int setJSONObject(const char* key, const char* value);

    /// The same for any value; takes over the caller's reference.
    int setJSONObject(const char* key, json_t* value);

    /// The JSON object in compact form.
    std::string getJSONpayload() const;

    /// Replaces the JSON object by the parsed text.
    /// @return 0; 7610 if the text is not JSON: the object is then null, and the text is logged
    [[nodiscard]] int loadJSON(const char* text);

    /// Reads a member of the JSON object.
    /// @return 0; 7610 if it is absent or of another type: `value` is then unchanged
    [[nodiscard]] int getIntValue(const char* key, long& value) const;
    [[nodiscard]] int getStringValue(const char* key, std::string& value) const;

    /// `PrimaryServer::uri`.
    std::string getURI(
        OperationType operation, const std::string& hostId, const std::string& encodedName) const;

    /// `PrimaryServer::request`. Without a reply `response` and `httpCode` are unchanged; an
    /// earlier `httpCode` does not affect the result.
    /// @param targetName a host or mapping name, not encoded
    [[nodiscard]] int sendRequest(
        OperationType operation, CurlRequestType method, const std::string& body,
        const char* targetName, const char* hostId, std::string& response, int& httpCode,
        LoginType login);

    /// `PrimaryServer::exchange`. Note the order: the host ID comes before the name.
    [[nodiscard]] int curlSendRequest(
        OperationType operation, const char* hostId, const char* targetName, CurlRequestType method,
        const std::string& body, std::string& response, int& httpCode, LoginType login);

    /// `readErrorReply`, into the JSON object.
    /// @return 0; 7610, also in `errorCode`, if the reply has no code and message
    int logErrorMessage(const std::string& reply, long& errorCode);

    /// `reportStatus`.
    void submitErrorStringForWebApi(int code) const;

    /// `PrimaryServer::name`.
    std::string getMasterServer() const;

    /// `findOwnHostId`. `hostId` is unchanged on failure.
    [[nodiscard]] int getHostIDfromCertmapinfo(std::string& hostId) const;

    /// `findHostId`. `hostId` is unchanged on failure.
    [[nodiscard]] int getUuid(std::string& hostId);

protected:
    /// A request that changes something; its body is the JSON object.
    struct Change {
        OperationType operation;
        CurlRequestType method;
        std::string mappingName = {};
    };

    /// Looks up the host that the command line names, calls `fill` to set the JSON object, and
    /// sends the change for that host.
    /// @param report called with the reply's HTTP status after a success
    [[nodiscard]] int changeHost(
        const Change& change, const std::function<void()>& fill,
        const std::function<void(int)>& report);

    /// Sends the change for the host `resolvedHostId`.
    /// @return 0, or the status of the request, whose reason was shown
    [[nodiscard]] int sendChange(const Change& change, const std::function<void(int)>& report);

    PrimaryServer server() const { return {args, operationLog}; }

    CLogcmd operationLog;
    JsonPayload payload;
    std::string resolvedHostId;  ///< the host to change; empty for `-addhost`
};
