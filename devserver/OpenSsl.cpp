#include "devserver/OpenSsl.h"

#include "devserver/Failure.h"

#include <openssl/err.h>
#include <openssl/pem.h>

#include <array>

namespace devserver {

namespace {

/// The oldest reason that OpenSSL keeps, with a colon before it; empty when there is none.
std::string takeReason() {
    const unsigned long code = ERR_get_error();
    ERR_clear_error();
    if (code == 0) {
        return {};
    }
    std::array<char, 256> reason{};
    ERR_error_string_n(code, reason.data(), reason.size());
    return std::string(": ") + reason.data();
}

Owned<BIO> reader(const std::string& text) {
    Owned<BIO> memory(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    requireDone(memory != nullptr, "read a PEM text");
    return memory;
}

/// Refuses what is encrypted instead of asking for its pass phrase on the terminal.
int noPassPhrase(char*, int, int, void*) {
    return -1;
}

}  // namespace

void requireDone(bool done, const char* step) {
    if (!done) {
        throw Failure(std::string("cannot ") + step + takeReason());
    }
}

Owned<X509> certificateFrom(const std::string& pem) {
    Owned<X509> certificate(PEM_read_bio_X509(reader(pem).get(), nullptr, noPassPhrase, nullptr));
    requireDone(certificate != nullptr, "read a certificate");
    return certificate;
}

Owned<EVP_PKEY> keyFrom(const std::string& pem) {
    Owned<EVP_PKEY> key(PEM_read_bio_PrivateKey(reader(pem).get(), nullptr, noPassPhrase, nullptr));
    requireDone(key != nullptr, "read a private key");
    return key;
}

}  // namespace devserver
