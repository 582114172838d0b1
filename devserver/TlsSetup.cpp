#include "devserver/TlsSetup.h"

#include "devserver/OpenSsl.h"

#include <array>
#include <exception>
#include <utility>

namespace devserver {

/// What the server presents.
struct TlsSetup::Credentials {
    Owned<X509> certificate;
    Owned<EVP_PKEY> key;

    explicit Credentials(const Identity& identity)
        : certificate(certificateFrom(identity.certificatePem)),
          key(keyFrom(identity.privateKeyPem)) {}

    bool use(SSL* connection) const {
        return SSL_use_certificate(connection, certificate.get()) == 1 &&
               SSL_use_PrivateKey(connection, key.get()) == 1;
    }
};

TlsSetup::TlsSetup(
    const CertificateAuthority& authority, const Identity& identity, std::vector<std::string> names,
    Faults& faults)
    : authority_(authority), names_(std::move(names)), faults_(faults),
      usual_(std::make_unique<Credentials>(identity)) {}

TlsSetup::~TlsSetup() = default;

/// What is presented for a fault; for `none` there is the server's own.
Identity TlsSetup::issue(CertificateFault fault) const {
    if (fault == CertificateFault::expired) {
        return authority_.issueServer(names_, validForDays(-1));
    }
    if (fault == CertificateFault::wrongName) {
        return authority_.issueServer({"another-server.invalid"}, validForDays(1));
    }
    return CertificateAuthority::create("Somebody else").issueServer(names_, validForDays(1));
}

bool TlsSetup::apply(SSL_CTX& context) {
    const Owned<X509> root = certificateFrom(authority_.certificatePem());
    SSL_CTX_set_verify(&context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
    SSL_CTX_set_cert_cb(
        &context,
        [](SSL* connection, void* setup) {
            return static_cast<TlsSetup*>(setup)->present(connection) ? 1 : 0;
        },
        this);
    // Every connection has to prove its certificate anew: nothing is resumed.
    SSL_CTX_set_session_cache_mode(&context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(&context, SSL_OP_NO_TICKET);
    return SSL_CTX_set_min_proto_version(&context, TLS1_2_VERSION) == 1 &&
           X509_STORE_add_cert(SSL_CTX_get_cert_store(&context), root.get()) == 1 &&
           SSL_CTX_add_client_CA(&context, root.get()) == 1;
}

bool TlsSetup::present(SSL* connection) {
    // OpenSSL calls this; nothing may be thrown through it.
    try {
        const CertificateFault fault = faults_.forConnection();
        return fault == CertificateFault::none ? usual_->use(connection)
                                               : Credentials(issue(fault)).use(connection);
    } catch (const std::exception&) {
        return false;
    }
}

std::string peerCommonName(const SSL* connection) {
    const X509* certificate = SSL_get0_peer_certificate(connection);
    if (certificate == nullptr) {
        return {};
    }
    std::array<char, 256> name{};
    X509_NAME_get_text_by_NID(
        X509_get_subject_name(certificate), NID_commonName, name.data(),
        static_cast<int>(name.size()));
    return name.data();
}

}  // namespace devserver
