#pragma once

#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace devserver {

/// A certificate and the private key that belongs to it, both as PEM text.
struct Identity {
    std::string certificatePem;
    std::string privateKeyPem;
};

/// The time span a certificate is valid for, in seconds since the epoch.
struct Validity {
    std::time_t notBefore;
    std::time_t notAfter;
};

/// From five minutes ago (clocks differ) until `days` days from now; a negative number of days
/// gives a span that ended that many days ago and started a day before it ended.
Validity validForDays(int days);

/// A small certificate authority of EC P-256 keys, for trying out and testing only: it keeps its
/// key in memory, publishes no revocation lists and issues whatever it is asked for. A Failure
/// says which step failed.
class CertificateAuthority {
public:
    /// A new self-signed authority, valid for ten years.
    static CertificateAuthority create(const std::string& commonName);

    /// The authority of these PEM texts; the key must be the certificate's.
    static CertificateAuthority
    load(const std::string& certificatePem, const std::string& privateKeyPem);

    CertificateAuthority(CertificateAuthority&&) noexcept;
    CertificateAuthority& operator=(CertificateAuthority&&) noexcept;
    ~CertificateAuthority();

    std::string certificatePem() const;
    std::string privateKeyPem() const;

    /// A TLS server's certificate. Names become DNS, addresses become IP alternative names (an
    /// IPv6 address may stand in brackets); the first one is the common name as well when it
    /// fits. At least one is needed.
    Identity issueServer(const std::vector<std::string>& namesAndAddresses, Validity) const;

    /// A TLS client's certificate whose common name is the host ID.
    Identity issueHost(const std::string& hostId, Validity) const;

private:
    struct Parts;
    explicit CertificateAuthority(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> parts_;
};

}  // namespace devserver
