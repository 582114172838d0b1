#pragma once

#include <memory>
#include <string>

class LoginWithUserTokenManager;

/// The kind of session; every request of the tool uses REST.
enum class AKCurlSessionType { rest = 1 };

/// An HTTPS client bound to one server and port.
///
/// Speaks HTTP/1.1 over TLS 1.2 or newer and nothing else. The server and its name are verified
/// against the authorities of its row in the certificate information alone; the row's certificate
/// is presented to it. No proxy, no redirect, no retry, no cookies, no .netrc, whatever the
/// environment says. Clients of one process share connections, so that requests to the same server
/// and port need one TLS handshake. A request is given up with 7622 when connecting takes 30 s or
/// the transfer moves less than a byte a second for 120 s, and with 7628 when the decoded body
/// passes 2 GiB or the head 256 KiB. The first request takes SSLKEYLOGFILE, HOSTALIASES and
/// LOCALDOMAIN out of the environment.
///
/// Every method that sends returns 0 when a whole reply arrived, whatever its HTTP status, or a
/// status code of arkeon/status.h; the reason is in the debug log. Nothing throws.
class AKClientCURL {
public:
    /// @param certType the type of certificate row to use: 1 the host's, 2 the cluster's
    /// @param tokens gives the user's token for each request; null sends none. Not owned; must
    ///        outlive the client.
    AKClientCURL(
        const std::string& server, int port, int certType, AKCurlSessionType sessionType,
        const LoginWithUserTokenManager* tokens);
    ~AKClientCURL();
    AKClientCURL(const AKClientCURL&) = delete;
    AKClientCURL& operator=(const AKClientCURL&) = delete;

    /// Percent-encodes every byte of `in` that is not unreserved (RFC 3986, 2.3).
    /// @return 0 or an error code, with `out` empty
    int encodeUriString(const std::string& in, std::string& out);

    /// Adds a header line, `name` followed by `value`, to every following request.
    void addHeaderField(const std::string& name, const std::string& value);

    /// Adds one complete header line; it is sent even when its value is empty.
    void setupAcceptCurlOption(std::string header);

    /// The request target is "/" and `uri`, byte for byte. A URI with a blank, a control character
    /// or DEL, or a header line with a control character, is refused with 7627 before anything is
    /// sent; a server name or a port that is none with 7626. Checked in this order: server name,
    /// URI, header lines, certificate information and its files, login.
    int Get(const std::string& uri);
    int Delete(const std::string& uri);
    int Put(const std::string& uri, const std::string& body);
    int Patch(const std::string& uri, const std::string& body);
    int Post(const std::string& uri, const std::string& body);

    /// The HTTP status of the last reply, 0 when there was none.
    int httpStatus() const;

    /// Hands over the decoded body of the last reply.
    std::string takeBody();

private:
    struct Session;
    std::unique_ptr<Session> session_;
};
