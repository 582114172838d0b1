#pragma once

#include <string>
#include <string_view>

namespace arkeon {

/// What the certificate information says about one server. The paths are absolute, or relative to
/// the working directory when `<root>` is.
struct CertificateRow {
    std::string hostId;
    std::string certificate;  ///< PEM chain
    std::string privateKey;   ///< PEM
    std::string authorities;  ///< PEM bundle
};

/// Finds the first row of `<root>/etc/certificates.toml` for this type (1: "host", 2: "cluster")
/// and server.
/// @return 0, 7640 (no file, no row) or 7641 (unreadable, malformed); the reason is in the debug
///         log
int findCertificateRow(int certType, std::string_view server, CertificateRow& row);

}  // namespace arkeon
