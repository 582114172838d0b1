#pragma once

#include <string>

namespace arkeon {

/// PEM texts for one server.
struct Credentials {
    std::string certificate;  ///< the host's, with its chain
    std::string privateKey;
    std::string authorities;  ///< the only ones trusted
};

/// Reads the files that the certificate information names for this server.
/// @return 0, 7640 or 7641 (the certificate information), 7642 (a file that cannot be read or is
/// empty) or 7643
///         (a private key open to others); the reason is in the debug log
int readCredentials(int certType, const std::string& server, Credentials& credentials);

}  // namespace arkeon
