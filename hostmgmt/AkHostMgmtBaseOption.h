#pragma once

#include "cmdframework/Basecmd.h"
#include "cmdframework/Usagecmd.h"
#include "hostmgmt/Json.h"
#include "hostmgmt/Messages.h"
#include "hostmgmt/OptionNames.h"
#include "hostmgmt/RestResources.h"

#include <cstddef>
#include <string>
#include <string_view>

class AKClientCURL;

/// The base of every operation: the rules that operations share, the JSON object that is first the
/// request's body and then the server's reply, and the requests to the primary server.
///
/// Operations return 0 or a status code: the server's error code, or one of arkeon/status.h.
///
/// Its parts stand in files of their own: the JSON object in AkHostMgmtBaseOption.cpp, the rules in
/// ArgumentRules.cpp, whom to ask about which host in HostIdentity.cpp, the requests in
/// ServerRequests.cpp, a failure's words in ServerErrors.cpp, and those of a success and of the
/// help in OperationOutput.cpp.
class AkHostMgmtBaseOption : public CBasecmd {
public:
    /// `newName` is the operation's option as given, `table` its options. The operation logs with
    /// the settings of `commandLog`.
    AkHostMgmtBaseOption(
        const char* newName, CArgscmd newArgs, const PARAMETERS* table, unsigned long count,
        CLogcmd& commandLog);
    ~AkHostMgmtBaseOption() override;

    /// Sets a member of the JSON object, replacing an earlier one. The value has to be UTF-8
    /// (`rejectInvalidUtf8`), and the object there: it is null after a failed `loadJSON`.
    /// @return 0
    /// @throws std::bad_alloc
    int setJSONObject(const char* key, const char* value);

    /// The same for any value; takes over the caller's reference.
    int setJSONObject(const char* key, json_t* value);

    /// The JSON object in compact form.
    std::string getJSONpayload() const;

    /// Replaces the JSON object by the parsed text.
    /// @return 0; 7610 when the text is not JSON: the object is then null, and the text is logged
    int loadJSON(const char* text);

    /// The same for a whole reply: a NUL does not end it but makes it something else than JSON.
    int loadReply(std::string_view text);

    /// Reads a member of the JSON object.
    /// @return 0; 7610 when it is absent or not of that type: `value` is then untouched
    int getIntValue(const char* key, long& value) const;
    int getStringValue(const char* key, std::string& value) const;

    /// The relative URI of a resource, logged.
    std::string getURI(
        OperationType operation, const std::string& hostId, const std::string& encodedName) const;

    /// Makes one request and decides whether it succeeded: the HTTP status is 200 or 201, or 204
    /// for a DELETE or PATCH. A failure is shown on standard error.
    /// @param targetName a host or mapping name, not encoded
    /// @param response receives the reply's body, `httpCode` its status; untouched when there was
    ///        no reply
    /// @return 0, the client's status, or the code of the server's error reply (7610 when that has
    ///         none); 8901 for a DELETE of a name that the server does not know
    int sendRequest(
        OperationType operation, CurlRequestType method, const std::string& body,
        const char* targetName, const char* hostId, std::string& response, int& httpCode,
        LoginType login);

    /// Makes one request. Mind the order: here the host ID stands before the name.
    /// @return 0 when a reply arrived, whatever its HTTP status, else a status code
    int curlSendRequest(
        OperationType operation, const char* hostId, const char* targetName, CurlRequestType method,
        const std::string& body, std::string& response, int& httpCode, LoginType login);

    /// Reads and logs the code and the message of a server's error reply.
    /// @return 0; 7610, also in `errorCode`, when one of them is missing or of another type, or the
    ///         code does not fit in 32 bits
    int logErrorMessage(const std::string& reply, long& errorCode);

    /// Shows the status line "Exit Status N: text" on standard error and logs the text; for 117 and
    /// 118 the request to log in first. Nothing happens for 0.
    void submitErrorStringForWebApi(int code) const;

    /// The primary server: the option "server", else the master configuration's. When neither names
    /// one, the reason is shown and logged.
    /// @throws std::logic_error when the configuration names none; nothing catches it
    std::string getMasterServer() const;

    /// Finds the local host's own ID.
    /// @return 0 or a status code; nothing is shown
    int getHostIDfromCertmapinfo(std::string& hostId) const;

    /// Finds the host ID of the host that the command line names: by its ID, or by a name that the
    /// server is asked for.
    /// @return 0, with a host ID that is not empty, or a status code, whose reason was shown
    int getUuid(std::string& hostId);

protected:
    /// @name The rules that operations share
    /// Each throws CUsagecmd when it is broken. The first three raise a message of the framework;
    /// the others make up a text of their own and log it before.
    /// @{
    void rejectHelpAlias() const;
    void requireOption(OptionName option) const;
    void rejectInvalidUtf8(OptionName option) const;
    void rejectBoth(OptionName first, OptionName second) const;
    void requireEither(OptionName first, OptionName second) const;
    void requireOneOf(OptionName first, OptionName second) const;
    void rejectSlashes(OptionName option, const CatalogueText& text) const;
    void rejectLongerThan(std::size_t limit, OptionName option) const;
    [[noreturn]] void refuse(usageExceptions code, const std::string& text) const;
    /// @}

    /// The limits of the rules, in bytes.
    static constexpr std::size_t longestHostName = 1024;
    static constexpr std::size_t longestMappingName = 1024;
    static constexpr std::size_t longestReason = 512;

    bool isGiven(OptionName option) const;

    /// The value under the option's name when that is present, else under its alias.
    std::string valueOf(OptionName option) const;

    /// The same as an unsigned 32-bit integer.
    /// @throws CUsagecmd code 8 (no value) or 7 (no such number)
    unsigned int numberOf(OptionName option) const;

    /// `sendRequest` with the user's login, for a request whose reply has nothing to read but its
    /// status.
    /// @param httpCode receives the reply's status; untouched when there was no reply
    int sendChange(
        OperationType operation, CurlRequestType method, const std::string& body,
        const std::string& mappingName, const std::string& hostId, int& httpCode);

    /// Logs the text of a success and prints it as a line; an empty text is an empty line.
    void announce(const std::string& text) const;

    /// Prints a synopsis as a line.
    static void showSynopsis(const CatalogueText& synopsis);

    /// Prints a usage: heading, synopsis, description, and the examples, which are the same in
    /// every language.
    static void showUsage(
        const CatalogueText& synopsis, const CatalogueText& description, const char* examples);

    CLogcmd operationLog;
    JsonRef payload;

private:
    JsonRef parseJSON(std::string_view text) const;
    int encodeName(AKClientCURL& client, const std::string& plain, std::string& encoded) const;
    int auditHeaderLine(AKClientCURL& client, std::string& line) const;
    int perform(
        AKClientCURL& client, CurlRequestType method, const std::string& uri,
        const std::string& body, const std::string& auditHeader) const;
    int reportServerError(long errorCode, int httpCode) const;
    int reportUnknownMapping() const;
    int failLookup(int status) const;
    int hostIdFromLookup(const std::string& reply, std::string& hostId) const;
    std::string showWebLoginRequired() const;
    void showStatus(int code, const std::string& text) const;
};

/// Whether a status says that the user has to log in first.
bool isLoginFailure(int status);

/// The type of the certificate that stands for the local host: 2, the cluster's, on the active node
/// of a cluster, else 1, the host's.
int localCertificateType();
