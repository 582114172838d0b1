#include "devserver/TlsSetup.h"

#include "devserver/OpenSsl.h"

#include <array>

namespace devserver {

/// What the server presents.
struct TlsSetup::Credentials {
    Owned<X509> certificate;
    Owned<EVP_PKEY> key;
};

TlsSetup::TlsSetup(
    const CertificateAuthority& authority, const std::vector<std::string>& names, Faults& faults)
    : authority_(authority), names_(names), faults_(faults), usual_(make(CertificateFault::none)) {}

TlsSetup::~TlsSetup() = default;

std::unique_ptr<TlsSetup::Credentials> TlsSetup::make(CertificateFault fault) const {
    Identity identity;
    switch (fault) {
    case CertificateFault::expired:
        identity = authority_.issueServer(names_, validForDays(-1));
        break;
    case CertificateFault::wrongName:
        identity = authority_.issueServer({"another-server.invalid"}, validForDays(1));
        break;
    case CertificateFault::untrusted:
        identity =
            CertificateAuthority::create("Somebody else").issueServer(names_, validForDays(1));
        break;
    case CertificateFault::none:
        identity = authority_.issueServer(names_, validForDays(825));
        break;
    }
    auto credentials = std::make_unique<Credentials>();
    credentials->certificate = certificateFrom(identity.certificatePem);
    credentials->key = keyFrom(identity.privateKeyPem);
    return credentials;
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
    const CertificateFault fault = faults_.forConnection();
    const std::unique_ptr<Credentials> other =
        fault == CertificateFault::none ? nullptr : make(fault);
    const Credentials& shown = other ? *other : *usual_;
    return SSL_use_certificate(connection, shown.certificate.get()) == 1 &&
           SSL_use_PrivateKey(connection, shown.key.get()) == 1;
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
