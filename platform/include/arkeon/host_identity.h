#pragma once

/// The local host's identity, from `<root>/etc/certificates.toml`.

/// Copies the host ID that the certificate information gives for `server` (compared without regard
/// to case) into `buffer`, terminated. On failure the buffer holds an empty text (if `size` > 0).
/// @param cert_type 1: the host's certificate, 2: the cluster's
/// @return 0; 7640 no file or no row for this server; 7641 unreadable or malformed; 7644 the buffer
///         is too small
int getHostID(int cert_type, const char* server, char* buffer, unsigned long size);
