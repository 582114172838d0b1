#pragma once

#include "arkeon/status.h"

#include <string>
#include <string_view>

namespace arkeon {

/// An entry of the certificate information: what it states about one server. The paths are
/// absolute, or relative to the working directory when `<root>` is.
struct CertificateEntry {
    std::string hostId;
    std::string certificate;  ///< PEM chain
    std::string privateKey;   ///< PEM
    std::string caBundle;     ///< PEM
};

/// Finds the first entry of `<root>/etc/certificates.toml` for this type (1: "host", 2: "cluster")
/// and server.
/// @return 0, 7640 (no file, no entry) or 7641 (unreadable, malformed); the reason is in the debug
///         log
Status findCertificateEntry(int certType, std::string_view server, CertificateEntry& entry);

}  // namespace arkeon
