#include "devserver/CertificateAuthority.h"
#include "devserver/Failure.h"
#include "devserver/OpenSsl.h"

#include <gtest/gtest.h>

#include <openssl/pem.h>
#include <openssl/x509_vfy.h>

#include <array>
#include <memory>

namespace {

using devserver::CertificateAuthority;
using devserver::certificateFrom;
using devserver::Failure;
using devserver::Identity;
using devserver::keyFrom;
using devserver::Owned;
using devserver::validForDays;

/// OpenSSL's verdict on a certificate, with the authority as the only trusted one.
int verify(const std::string& certificatePem, const std::string& authorityPem, int purpose) {
    const Owned<X509> leaf = certificateFrom(certificatePem);
    const Owned<X509> root = certificateFrom(authorityPem);
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
    const Owned<X509> leaf = certificateFrom(server.certificatePem);
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
    EXPECT_EQ(commonNameOf(certificateFrom(host.certificatePem).get()), hostId);
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
    const Owned<X509> certificate = certificateFrom(host.certificatePem);
    const Owned<EVP_PKEY> key = keyFrom(host.privateKeyPem);
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
    EXPECT_THROW(CertificateAuthority::load("nothing", one.privateKeyPem()), Failure);
    EXPECT_THROW(CertificateAuthority::load(one.certificatePem(), "nothing"), Failure);
    EXPECT_THROW(CertificateAuthority::load(one.certificatePem(), other.privateKeyPem()), Failure);
    EXPECT_THROW(one.issueServer({}, validForDays(1)), Failure);
}

/// The key as PEM text that only a pass phrase opens.
std::string encrypted(const std::string& keyPem) {
    const Owned<EVP_PKEY> key = keyFrom(keyPem);
    const Owned<BIO> memory(BIO_new(BIO_s_mem()));
    const std::string phrase = "secret";
    PEM_write_bio_PrivateKey(
        memory.get(), key.get(), EVP_aes_128_cbc(),
        reinterpret_cast<const unsigned char*>(phrase.data()), static_cast<int>(phrase.size()),
        nullptr, nullptr);
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &data);
    return {data, static_cast<std::size_t>(size)};
}

TEST(CertificateAuthority, RefusesAnEncryptedKeyWithoutAskingForItsPassPhrase) {
    const auto authority = CertificateAuthority::create("Test authority");
    const std::string key = encrypted(authority.privateKeyPem());
    ASSERT_NE(key.find("ENCRYPTED"), std::string::npos);
    EXPECT_THROW(CertificateAuthority::load(authority.certificatePem(), key), Failure);
}

TEST(CertificateAuthority, LongServerNameStaysAnAlternativeName) {
    const auto authority = CertificateAuthority::create("Test authority");
    const std::string name = std::string(60, 'a') + ".example.com";
    const Identity server = authority.issueServer({name}, validForDays(1));
    EXPECT_EQ(
        X509_check_host(
            certificateFrom(server.certificatePem).get(), name.c_str(), name.size(), 0, nullptr),
        1);
}

}  // namespace
