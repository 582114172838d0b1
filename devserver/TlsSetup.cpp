#include "devserver/TlsSetup.h"

#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <array>
#include <stdexcept>

namespace devserver {

namespace {

/// Gives an object of OpenSSL back.
struct Release {
    void operator()(BIO* bio) const { BIO_free(bio); }
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
template <typename T>
using Owned = std::unique_ptr<T, Release>;

Owned<BIO> reader(const std::string& pem) {
    return Owned<BIO>(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
}

Owned<X509> certificateOf(const std::string& pem) {
    return Owned<X509>(PEM_read_bio_X509(reader(pem).get(), nullptr, nullptr, nullptr));
}

Owned<EVP_PKEY> keyOf(const std::string& pem) {
    return Owned<EVP_PKEY>(PEM_read_bio_PrivateKey(reader(pem).get(), nullptr, nullptr, nullptr));
}

}  // namespace

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
    credentials->certificate = certificateOf(identity.certificatePem);
    credentials->key = keyOf(identity.privateKeyPem);
    return credentials;
}

bool TlsSetup::apply(SSL_CTX& context) {
    const Owned<X509> root = certificateOf(authority_.certificatePem());
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
