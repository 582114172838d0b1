#include "devserver/CertificateAuthority.h"

#include <gtest/gtest.h>

#include <openssl/pem.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

#include <array>
#include <memory>
#include <stdexcept>

namespace {

using devserver::CertificateAuthority;
using devserver::Identity;
using devserver::validForDays;

using CertificatePtr = std::unique_ptr<X509, decltype(&X509_free)>;
using KeyPtr = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

CertificatePtr certificateOf(const std::string& pem) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory(
        BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), &BIO_free);
    return {PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr), &X509_free};
}

KeyPtr keyOf(const std::string& pem) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory(
        BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), &BIO_free);
    return {PEM_read_bio_PrivateKey(memory.get(), nullptr, nullptr, nullptr), &EVP_PKEY_free};
}

/// OpenSSL's verdict on a certificate, with the authority as the only trusted one.
int verify(const std::string& certificatePem, const std::string& authorityPem, int purpose) {
    const CertificatePtr leaf = certificateOf(certificatePem);
    const CertificatePtr root = certificateOf(authorityPem);
    const std::unique_ptr<X509_STORE, decltype(&X509_STORE_free)> store(
        X509_STORE_new(), &X509_STORE_free);
    X509_STORE_add_cert(store.get(), root.get());
    const std::unique_ptr<X509_STORE_CTX, decltype(&X509_STORE_CTX_free)> context(
        X509_STORE_CTX_new(), &X509_STORE_CTX_free);
    X509_STORE_CTX_init(context.get(), store.get(), leaf.get(), nullptr);
    X509_STORE_CTX_set_purpose(context.get(), purpose);
    X509_VERIFY_PARAM_set_flags(X509_STORE_CTX_get0_param(context.get()), X509_V_FLAG_X509_STRICT);
    X509_verify_cert(context.get());
    return X509_STORE_CTX_get_error(context.get());
}

std::string commonNameOf(X509* certificate) {
    std::array<char, 128> text{};
    X509_NAME_get_text_by_NID(
        X509_get_subject_name(certificate), NID_commonName, text.data(),
        static_cast<int>(text.size()));
    return text.data();
}

TEST(CertificateAuthority, ServerCertificateHoldsItsNamesAndAddresses) {
    const auto authority = CertificateAuthority::create("Test authority");
    const Identity server = authority.issueServer(
        {"primary.example.com", "localhost", "127.0.0.1", "[::1]"}, validForDays(1));
    const CertificatePtr leaf = certificateOf(server.certificatePem);
    ASSERT_TRUE(leaf);
    for (const char* name : {"primary.example.com", "localhost"}) {
        EXPECT_EQ(X509_check_host(leaf.get(), name, 0, 0, nullptr), 1) << name;
    }
    for (const char* address : {"127.0.0.1", "::1"}) {
        EXPECT_EQ(X509_check_ip_asc(leaf.get(), address, 0), 1) << address;
    }
    EXPECT_EQ(X509_check_host(leaf.get(), "other.example.com", 0, 0, nullptr), 0);
    EXPECT_EQ(X509_check_ip_asc(leaf.get(), "127.0.0.2", 0), 0);
    EXPECT_EQ(
        verify(server.certificatePem, authority.certificatePem(), X509_PURPOSE_SSL_SERVER),
        X509_V_OK);
    EXPECT_NE(
        verify(server.certificatePem, authority.certificatePem(), X509_PURPOSE_SSL_CLIENT),
        X509_V_OK);
}

TEST(CertificateAuthority, HostCertificateNamesTheHostId) {
    const auto authority = CertificateAuthority::create("Test authority");
    const std::string hostId = "0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0";
    const Identity host = authority.issueHost(hostId, validForDays(1));
    EXPECT_EQ(commonNameOf(certificateOf(host.certificatePem).get()), hostId);
    EXPECT_EQ(
        verify(host.certificatePem, authority.certificatePem(), X509_PURPOSE_SSL_CLIENT),
        X509_V_OK);
    EXPECT_NE(
        verify(host.certificatePem, authority.certificatePem(), X509_PURPOSE_SSL_SERVER),
        X509_V_OK);
}

TEST(CertificateAuthority, KeyBelongsToItsCertificate) {
    const auto authority = CertificateAuthority::create("Test authority");
    const Identity host = authority.issueHost("host", validForDays(1));
    const CertificatePtr certificate = certificateOf(host.certificatePem);
    const KeyPtr key = keyOf(host.privateKeyPem);
    ASSERT_TRUE(certificate);
    ASSERT_TRUE(key);
    EXPECT_EQ(X509_check_private_key(certificate.get(), key.get()), 1);
}

TEST(CertificateAuthority, NegativeDaysGiveAnExpiredCertificate) {
    const auto authority = CertificateAuthority::create("Test authority");
    const Identity old = authority.issueServer({"localhost"}, validForDays(-1));
    EXPECT_EQ(
        verify(old.certificatePem, authority.certificatePem(), X509_PURPOSE_SSL_SERVER),
        X509_V_ERR_CERT_HAS_EXPIRED);
}

TEST(CertificateAuthority, AnotherAuthorityIsNotTrusted) {
    const auto one = CertificateAuthority::create("Test authority");
    const auto other = CertificateAuthority::create("Test authority");
    const Identity host = one.issueHost("host", validForDays(1));
    EXPECT_NE(
        verify(host.certificatePem, other.certificatePem(), X509_PURPOSE_SSL_CLIENT), X509_V_OK);
}

TEST(CertificateAuthority, LoadedAuthorityIssuesUnderTheSameCertificate) {
    const auto first = CertificateAuthority::create("Test authority");
    const auto again = CertificateAuthority::load(first.certificatePem(), first.privateKeyPem());
    EXPECT_EQ(again.certificatePem(), first.certificatePem());
    EXPECT_EQ(again.privateKeyPem(), first.privateKeyPem());
    const Identity host = again.issueHost("host", validForDays(1));
    EXPECT_EQ(
        verify(host.certificatePem, first.certificatePem(), X509_PURPOSE_SSL_CLIENT), X509_V_OK);
}

TEST(CertificateAuthority, RefusesWhatIsNoAuthority) {
    const auto one = CertificateAuthority::create("Test authority");
    const auto other = CertificateAuthority::create("Test authority");
    EXPECT_THROW(CertificateAuthority::load("nothing", one.privateKeyPem()), std::runtime_error);
    EXPECT_THROW(CertificateAuthority::load(one.certificatePem(), "nothing"), std::runtime_error);
    EXPECT_THROW(
        CertificateAuthority::load(one.certificatePem(), other.privateKeyPem()),
        std::runtime_error);
    EXPECT_THROW(one.issueServer({}, validForDays(1)), std::runtime_error);
}

TEST(CertificateAuthority, LongServerNameStaysAnAlternativeName) {
    const auto authority = CertificateAuthority::create("Test authority");
    const std::string name = std::string(60, 'a') + ".example.com";
    const Identity server = authority.issueServer({name}, validForDays(1));
    EXPECT_EQ(
        X509_check_host(
            certificateOf(server.certificatePem).get(), name.c_str(), name.size(), 0, nullptr),
        1);
}

}  // namespace
