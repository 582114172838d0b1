#pragma once

#include "devserver/CertificateAuthority.h"
#include "devserver/Faults.h"

#include <memory>
#include <string>
#include <vector>

using SSL_CTX = struct ssl_ctx_st;
using SSL = struct ssl_st;

namespace devserver {

/// The server's certificates and who is let in.
class TlsSetup {
public:
    /// `identity` is the server's own; the certificates that faults present are issued by the
    /// authority for `names`. The authority and the faults must outlive the setup.
    TlsSetup(
        const CertificateAuthority& authority, const Identity& identity,
        std::vector<std::string> names, Faults& faults);
    ~TlsSetup();
    TlsSetup(const TlsSetup&) = delete;
    TlsSetup& operator=(const TlsSetup&) = delete;

    /// Sets a context up; false when OpenSSL refuses. The setup must outlive the context.
    bool apply(SSL_CTX& context);

    /// Chooses the certificate of a new connection: the server's own unless a fault says else.
    /// False when there is none to be had.
    bool present(SSL* connection);

private:
    struct Credentials;
    Identity issue(CertificateFault fault) const;

    const CertificateAuthority& authority_;
    std::vector<std::string> names_;
    Faults& faults_;
    std::unique_ptr<Credentials> usual_;
};

/// The common name of the certificate that the client has proved to own.
std::string peerCommonName(const SSL* connection);

}  // namespace devserver
