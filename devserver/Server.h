#pragma once

#include "devserver/CertificateAuthority.h"
#include "devserver/Faults.h"
#include "devserver/Resources.h"

#include <memory>
#include <string>
#include <vector>

namespace devserver {

/// What a server shows on the wire and where.
struct Endpoint {
    std::string address;  ///< numeric
    int port = 0;
    Identity identity;               ///< the certificate it presents, and its key
    std::vector<std::string> names;  ///< of the certificates that faults present
};

/// The HTTPS server: TLS 1.2 or newer, a client certificate of the authority required, many
/// clients at once. Runs in threads of its own between start() and stop().
class Server {
public:
    /// What is referred to must outlive the server.
    Server(
        const CertificateAuthority& authority, Endpoint endpoint, Resources& resources,
        Faults& faults);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Whether start() would get the address and port now; a Failure when not.
    static void checkPlace(const std::string& address, int port);

    /// Binds and starts to answer; an address or port that cannot be had is a Failure.
    void start();

    /// Answers what has been asked, waits for that no longer than two seconds, and ends every
    /// connection. Idle connections do not hold it up.
    void stop();

private:
    struct Machinery;
    std::unique_ptr<Machinery> machinery_;
};

}  // namespace devserver
