#include "platform/HttpsFixture.h"

#include "client/HttpsModule.h"

namespace {

std::unique_ptr<arkeon::HttpsTransport> transport;

}  // namespace

/// Takes the place of the function that loads the module.
arkeon::HttpsTransport* arkeon::httpsTransport() {
    return transport.get();
}

std::string plainReply(const std::string& body, const std::string& status) {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + body;
}

HttpsTest::HttpsTest()
    : authority_(devserver::CertificateAuthority::create("Test authority")),
      rootVariable_("ARKEON_ROOT", root_.path()), configVariable_("XDG_CONFIG_HOME", home_.path()) {
    const devserver::Identity host = authority_.issueHost(testHostId, devserver::validForDays(365));
    root_.write("certs/host.pem", host.certificatePem);
    root_.write("certs/host.key", host.privateKeyPem);
    root_.write("certs/ca.pem", authority_.certificatePem());
    writeCertificateInfo({"127.0.0.1"});
    useLimits({});
}

HttpsTest::~HttpsTest() {
    transport = nullptr;
}

void HttpsTest::useLimits(const arkeon::TransferLimits& limits) {
    transport = arkeon::newCurlTransport(limits);
}

devserver::Identity
HttpsTest::identityFor(const std::vector<std::string>& names, devserver::Validity validity) const {
    return authority_.issueServer(names, validity);
}

support::TlsServerSettings HttpsTest::goodSettings() const {
    support::TlsServerSettings settings;
    settings.identity = identityFor({"127.0.0.1"});
    settings.clientAuthority = authority_.certificatePem();
    return settings;
}

void HttpsTest::writeCertificateInfo(const std::vector<std::string>& servers) const {
    std::string text;
    for (const std::string& server : servers) {
        text += "[[certificate]]\ntype = \"host\"\nserver = \"" + server + "\"\nhost_id = \"" +
                testHostId +
                "\"\ncertificate = \"../certs/host.pem\"\nprivate_key = \"../certs/host.key\"\n"
                "ca = \"../certs/ca.pem\"\n";
    }
    root_.write("etc/certificates.toml", text);
}

void HttpsTest::writeLogin(const std::string& server, int port) const {
    home_.write(
        "arkeon/logins.json", R"({"logins": [{"server": ")" + server + R"(", "port": )" +
                                  std::to_string(port) + R"(, "token": ")" + testToken + "\"}]}");
}

int HttpsTest::get(int port, const std::string& uri) const {
    AKClientCURL client("127.0.0.1", port, 1, AKCurlSessionType::rest, nullptr);
    return client.Get(uri);
}
