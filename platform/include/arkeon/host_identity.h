#pragma once

/// The local host's identity, from `<root>/etc/certificates.toml`.

/// The types of certificates.
inline constexpr int hostCertificateType = 1;
inline constexpr int clusterCertificateType = 2;  ///< counts on the active node of a cluster

/// Copies the host ID that the certificate information gives for `server` (compared without regard
/// to case) into `buffer`, terminated. On failure the buffer holds an empty text (if `size` > 0).
/// @param cert_type one of the types above
/// @return 0; 7640 no file or no entry for this server; 7641 unreadable or malformed; 7644 the
///         buffer is too small
[[nodiscard]] int getHostID(int cert_type, const char* server, char* buffer, unsigned long size);
