#pragma once

#include <memory>
#include <string>

class LoginWithUserTokenManager;

/// The kind of session; every request of the tool uses REST.
enum class AKCurlSessionType { rest = 1 };

/// An HTTPS client bound to one server and port.
///
/// Speaks HTTP/1.1 over TLS 1.2 or newer and nothing else. The server's certificate and name are
/// verified against the CA certificates of its entry in the certificate information only, and the
/// entry's certificate is presented to it. No proxy, no redirect, no retry, no cookies, no .netrc,
/// whatever the environment says. Clients of one process share connections, so that requests to the
/// same server and port need one TLS handshake. A request fails with 7622 if connecting takes 30 s
/// or the transfer moves less than a byte a second for 120 s, with 7628 if the decoded body exceeds
/// 2 GiB or the header section 256 KiB, and with 7629 if the reply's Content-Length is ambiguous.
/// The first request removes SSLKEYLOGFILE, HOSTALIASES and LOCALDOMAIN from the environment.
///
/// Every method that sends returns 0 if a complete reply arrived, whatever its HTTP status, and
/// logs the reply's method, request target, HTTP status, size and duration. Otherwise it returns a
/// status of arkeon/status.h, and the reason is in the debug log.
///
/// @throws std::bad_alloc
class AKClientCURL {
public:
    /// @param certType the type of certificate entry to use: 1 the host's, 2 the cluster's
    /// @param tokens supplies the user's token for each request; null sends none. Not owned; must
    ///        outlive the client.
    ///
    /// The remaining arguments belong to ways of connecting that this client does not have. They
    /// are accepted and not used.
    AKClientCURL(
        const std::string& server, int port, int certType, AKCurlSessionType sessionType,
        const LoginWithUserTokenManager* tokens, const std::string& = {}, bool = false,
        bool = false, bool = false, const std::string& = {}, const std::string& = {},
        const std::string& = {}, bool = false, bool = false);
    ~AKClientCURL();
    AKClientCURL(const AKClientCURL&) = delete;
    AKClientCURL& operator=(const AKClientCURL&) = delete;

    /// Percent-encodes every byte of `in` that is not unreserved (RFC 3986, 2.3).
    /// @return 0
    [[nodiscard]] int encodeUriString(const std::string& in, std::string& out);

    /// Adds a header line, `name` followed by `value`, to every following request.
    /// `name` must end with ": ".
    void addHeaderField(const std::string& name, const std::string& value);

    /// Adds one complete header line; it is sent even if its value is empty.
    void setupAcceptCurlOption(std::string header);

    /// The following five: the request target is "/" and `uri`, byte for byte. Rejected before
    /// anything is sent: with 7627 a URI with a space, a control character, DEL or a dot segment
    /// (RFC 3986, 3.3), and a header line with a control character; with 7626 an invalid server
    /// name or port. The order of the checks: server name, URI, header lines, certificate
    /// information and its files, login.
    [[nodiscard]] int Get(const std::string& uri);
    [[nodiscard]] int Delete(const std::string& uri);
    [[nodiscard]] int Put(const std::string& uri, const std::string& body);
    [[nodiscard]] int Patch(const std::string& uri, const std::string& body);
    [[nodiscard]] int Post(const std::string& uri, const std::string& body);

    /// The HTTP status of the last reply, 0 if there was none.
    int httpStatus() const;

    /// Moves out the decoded body of the last reply; a second call returns an empty string.
    std::string takeBody();

private:
    struct Session;
    std::unique_ptr<Session> session_;
};
