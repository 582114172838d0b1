#include "arkeon/status.h"
#include "platform/HttpsFixture.h"

#include <gmock/gmock.h>
#include <memory>
#include <openssl/pem.h>
#include <sys/stat.h>

using devserver::CertificateAuthority;
using devserver::validForDays;
using support::ScriptedReply;
using support::TlsScriptServer;
using support::TlsServerSettings;
using testing::HasSubstr;
using testing::IsEmpty;

namespace status = arkeon::status;

namespace {

/// Servers that must get no request, or that refuse us.
class HttpsTrustTest : public HttpsTest {
protected:
    HttpsTrustTest() : settings_(goodSettings()) {}

    void expectRefusal(int expected) {
        writeLogin("127.0.0.1", 1);
        TlsScriptServer server(settings_, {{plainReply()}});
        EXPECT_EQ(get(server.port()), expected) << log_.text();
        EXPECT_THAT(server.requests(), IsEmpty());
        EXPECT_THAT(log_.text(), HasSubstr(" 16 arkeon: HTTPS request to 127.0.0.1, port "));
    }

    TlsServerSettings settings_;
};

TEST_F(HttpsTrustTest, CertificateOfAnotherAuthority) {
    const auto other = CertificateAuthority::create("Other authority");
    settings_.identity = other.issueServer({"127.0.0.1"}, validForDays(365));
    expectRefusal(status::untrustedServer);
}

TEST_F(HttpsTrustTest, CertificateOfAnotherAuthorityOfTheSameName) {
    const auto other = CertificateAuthority::create("Test authority");
    settings_.identity = other.issueServer({"127.0.0.1"}, validForDays(365));
    expectRefusal(status::untrustedServer);
}

TEST_F(HttpsTrustTest, SelfSignedCertificate) {
    const auto self = CertificateAuthority::create("127.0.0.1");
    settings_.identity = {self.certificatePem(), self.privateKeyPem()};
    expectRefusal(status::untrustedServer);
}

TEST_F(HttpsTrustTest, ExpiredCertificate) {
    settings_.identity = identityFor({"127.0.0.1"}, validForDays(-1));
    expectRefusal(status::untrustedServer);
}

TEST_F(HttpsTrustTest, CertificateOfTomorrow) {
    const std::time_t tomorrow = std::time(nullptr) + 86400;
    settings_.identity = identityFor({"127.0.0.1"}, {tomorrow, tomorrow + 86400});
    expectRefusal(status::untrustedServer);
}

TEST_F(HttpsTrustTest, CertificateForAnotherAddress) {
    settings_.identity = identityFor({"127.0.0.2"});
    expectRefusal(status::untrustedServer);
}

TEST_F(HttpsTrustTest, CertificateForAnotherName) {
    settings_.identity = identityFor({"other.example"});
    expectRefusal(status::untrustedServer);
}

TEST_F(HttpsTrustTest, EnvironmentAddsNoAuthorities) {
    const auto other = CertificateAuthority::create("Other authority");
    const std::string bundle = root_.write("other.pem", other.certificatePem());
    const support::ScopedVariable file("SSL_CERT_FILE", bundle);
    const support::ScopedVariable folder("SSL_CERT_DIR", root_.path());
    const support::ScopedVariable curlBundle("CURL_CA_BUNDLE", bundle);
    settings_.identity = other.issueServer({"127.0.0.1"}, validForDays(365));
    expectRefusal(status::untrustedServer);
}

TEST_F(HttpsTrustTest, ServerWithoutTls12) {
    settings_.lowestVersion = TLS1_VERSION;
    settings_.highestVersion = TLS1_1_VERSION;
    expectRefusal(status::handshakeFailed);
}

TEST_F(HttpsTrustTest, HostCertificateRefusedInTheTls12Handshake) {
    const auto other = CertificateAuthority::create("Clients' authority");
    settings_.clientAuthority = other.certificatePem();
    settings_.highestVersion = TLS1_2_VERSION;
    expectRefusal(status::handshakeFailed);
}

TEST_F(HttpsTrustTest, HostCertificateRefusedAfterTheTls13Handshake) {
    const auto other = CertificateAuthority::create("Clients' authority");
    settings_.clientAuthority = other.certificatePem();
    settings_.lowestVersion = TLS1_3_VERSION;
    expectRefusal(status::handshakeFailed);
}

TEST_F(HttpsTrustTest, ServersOfTls12AndTls13AreTaken) {
    for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
        settings_.lowestVersion = version;
        settings_.highestVersion = version;
        TlsScriptServer server(settings_, {{plainReply()}});
        EXPECT_EQ(get(server.port()), 0) << log_.text();
    }
}

TEST_F(HttpsTrustTest, AuthorityIsThatOfTheServersOwnRow) {
    const auto other = CertificateAuthority::create("Other authority");
    root_.write("certs/other.pem", other.certificatePem());
    root_.write(
        "etc/certificates.toml",
        support::contentOf(root_.file("etc/certificates.toml")) +
            "[[certificate]]\ntype = \"cluster\"\nserver = \"127.0.0.1\"\nhost_id = \"x\"\n"
            "certificate = \"../certs/host.pem\"\nprivate_key = \"../certs/host.key\"\n"
            "ca = \"../certs/other.pem\"\n");
    settings_.identity = other.issueServer({"127.0.0.1"}, validForDays(365));
    TlsScriptServer server(settings_, {{plainReply()}});
    EXPECT_EQ(get(server.port()), status::untrustedServer);
    AKClientCURL cluster("127.0.0.1", server.port(), 2, AKCurlSessionType::rest, nullptr);
    EXPECT_EQ(cluster.Get("hosts"), 0) << log_.text();
}

TEST_F(HttpsTrustTest, BundleOfSeveralAuthorities) {
    const auto other = CertificateAuthority::create("Other authority");
    root_.write("certs/ca.pem", other.certificatePem() + authority_.certificatePem());
    TlsScriptServer server(settings_, {{plainReply()}});
    EXPECT_EQ(get(server.port()), 0) << log_.text();
}

/// Certificate files that are there but cannot be used.
class HttpsCertificateFilesTest : public HttpsTest {
protected:
    HttpsCertificateFilesTest() : server_(goodSettings(), {{plainReply()}}) {}

    void expectUnusable(std::string_view reason, int expected = status::unusableCertificate) {
        EXPECT_EQ(get(server_.port()), expected) << log_.text();
        EXPECT_THAT(server_.requests(), IsEmpty());
        EXPECT_THAT(log_.text(), HasSubstr(std::string(reason)));
    }

    TlsScriptServer server_;
};

TEST_F(HttpsCertificateFilesTest, MissingFiles) {
    for (const char* name : {"host.pem", "host.key", "ca.pem"}) {
        const std::string path = root_.file(std::string("certs/") + name);
        std::filesystem::rename(path, path + ".away");
        expectUnusable(std::string(name) + ": No such file or directory");
        std::filesystem::rename(path + ".away", path);
    }
}

TEST_F(HttpsCertificateFilesTest, EmptyFiles) {
    for (const char* name : {"host.pem", "host.key", "ca.pem"}) {
        const std::string path = root_.file(std::string("certs/") + name);
        std::filesystem::rename(path, path + ".away");
        root_.write(std::string("certs/") + name, "");
        expectUnusable(std::string(name) + ": the file is empty");
        std::filesystem::rename(path + ".away", path);
    }
}

TEST_F(HttpsCertificateFilesTest, FilesThatAreNotPem) {
    for (const char* name : {"host.pem", "host.key", "ca.pem"}) {
        const std::string path = root_.file(std::string("certs/") + name);
        std::filesystem::rename(path, path + ".away");
        root_.write(std::string("certs/") + name, "not PEM\n");
        expectUnusable("HTTPS request to 127.0.0.1");
        std::filesystem::rename(path + ".away", path);
    }
}

TEST_F(HttpsCertificateFilesTest, KeyOfAnotherCertificate) {
    root_.write("certs/host.key", identityFor({"x.example"}).privateKeyPem);
    expectUnusable("HTTPS request to 127.0.0.1");
}

/// Encrypts a PEM private key in place.
void encryptKey(const std::string& path) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> in(BIO_new_file(path.c_str(), "r"), BIO_free);
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        PEM_read_bio_PrivateKey(in.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
    const std::unique_ptr<BIO, decltype(&BIO_free)> out(BIO_new_file(path.c_str(), "w"), BIO_free);
    unsigned char password[] = "secret";
    ASSERT_EQ(
        PEM_write_bio_PrivateKey(
            out.get(), key.get(), EVP_aes_256_cbc(), password, sizeof password - 1, nullptr,
            nullptr),
        1);
}

TEST_F(HttpsCertificateFilesTest, EncryptedKeyFailsWithoutAsking) {
    encryptKey(root_.file("certs/host.key"));
    expectUnusable("HTTPS request to 127.0.0.1");
}

TEST_F(HttpsCertificateFilesTest, TooLargeFile) {
    root_.write("certs/ca.pem", std::string(8'000'001, ' '));
    expectUnusable("ca.pem: larger than 8000000 bytes");
}

TEST_F(HttpsCertificateFilesTest, FolderInPlaceOfAFile) {
    std::filesystem::remove(root_.file("certs/ca.pem"));
    std::filesystem::create_directory(root_.file("certs/ca.pem"));
    expectUnusable("ca.pem: not a regular file");
}

TEST_F(HttpsCertificateFilesTest, FifoInPlaceOfAFileDoesNotHang) {
    std::filesystem::remove(root_.file("certs/host.pem"));
    ASSERT_EQ(mkfifo(root_.file("certs/host.pem").c_str(), 0600), 0);
    expectUnusable("host.pem: not a regular file");
}

TEST_F(HttpsCertificateFilesTest, SymbolicLinkToAKeyIsFollowed) {
    std::filesystem::rename(root_.file("certs/host.key"), root_.file("certs/real.key"));
    std::filesystem::create_symlink("real.key", root_.file("certs/host.key"));
    EXPECT_EQ(get(server_.port()), 0) << log_.text();
}

/// Permissions of the private key.
class HttpsKeyModeTest : public HttpsTest {};

TEST_F(HttpsKeyModeTest, KeyThatOthersCanAccessOrTheGroupCanWriteIsRefused) {
    constexpr int takenModes = 32;  // all for the owner, all but writing for the group
    TlsScriptServer server(goodSettings(), std::vector(takenModes, ScriptedReply{plainReply()}));
    const std::string key = root_.file("certs/host.key");
    for (mode_t mode = 0; mode <= 0777; ++mode) {
        ASSERT_EQ(chmod(key.c_str(), mode), 0);
        int expected = (mode & 027U) != 0 ? status::openPrivateKey : 0;
        if (access(key.c_str(), R_OK) != 0) {
            expected = status::unusableCertificate;
        }
        EXPECT_EQ(get(server.port()), expected) << std::oct << mode;
    }
    EXPECT_THAT(log_.text(), HasSubstr("host.key: the private key is open to others"));
}

}  // namespace
