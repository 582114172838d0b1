#pragma once

#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <memory>
#include <string>

namespace devserver {

/// Gives an object of OpenSSL back by its own function.
struct OpenSslRelease {
    void operator()(BIGNUM* number) const { BN_free(number); }
    void operator()(BIO* stream) const { BIO_free(stream); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(GENERAL_NAME* name) const { GENERAL_NAME_free(name); }
    void operator()(GENERAL_NAMES* names) const { GENERAL_NAMES_free(names); }
    void operator()(SSL* connection) const { SSL_free(connection); }
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
};

/// An object of OpenSSL with its owner.
template <typename T>
using Owned = std::unique_ptr<T, OpenSslRelease>;

/// A Failure that tells the step, which reads after "cannot", and OpenSSL's reason, unless it
/// was done.
void requireDone(bool done, const char* step);

/// The first certificate of a PEM text; a Failure when there is none.
Owned<X509> certificateFrom(const std::string& pem);

/// The first private key of a PEM text; a Failure when there is none or it is encrypted.
Owned<EVP_PKEY> keyFrom(const std::string& pem);

}  // namespace devserver
