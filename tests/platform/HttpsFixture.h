#pragma once

#include "arkeon/AKClientCURL.h"
#include "arkeon/LoginWithUserTokenManager.h"
#include "devserver/CertificateAuthority.h"
#include "https/CurlTransport.h"
#include "support/Environment.h"
#include "support/LogReader.h"
#include "support/TempDir.h"
#include "support/TlsScriptServer.h"

#include <gtest/gtest.h>

inline constexpr const char* testHostId = "0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0";
inline constexpr const char* testToken = "token-that-must-stay-secret";

/// A whole reply with a length.
std::string plainReply(const std::string& body = "{}", const std::string& status = "200 OK");

/// A root folder with certificates of an authority of its own for 127.0.0.1, a user's folder and a
/// debug log.
class HttpsTest : public testing::Test {
public:
    ~HttpsTest() override;

protected:
    HttpsTest();

    /// Replaces the client's connection and its limits.
    static void useLimits(const arkeon::TransferLimits& limits);

    /// A server's identity for these names and, unless given, the coming year.
    devserver::Identity identityFor(
        const std::vector<std::string>& names,
        devserver::Validity validity = devserver::validForDays(365)) const;

    /// Settings of a server for 127.0.0.1 that asks for a certificate of our authority.
    support::TlsServerSettings goodSettings() const;

    /// Writes the certificate information with rows for these servers.
    void writeCertificateInfo(const std::vector<std::string>& servers) const;

    /// Writes a login for this server and port.
    void writeLogin(const std::string& server, int port) const;

    /// A GET to 127.0.0.1 with the host's certificate alone.
    int get(int port, const std::string& uri = "hosts") const;

    devserver::CertificateAuthority authority_;
    support::TempDir root_;
    support::TempDir home_;
    support::LogReader log_;

private:
    support::ScopedVariable rootVariable_;
    support::ScopedVariable configVariable_;
};
