#pragma once

#include "arkeon/status.h"
#include "https/HttpsTransport.h"

#include <string>

namespace arkeon {

/// Reads the files that the certificate information names for this server. From then on the process
/// leaves no core file, and no other process of its user may read its memory (PR_SET_DUMPABLE of
/// prctl(2)), since it holds a private key.
/// @return 0, 7640 or 7641 (the certificate information), 7642 (a file that cannot be read or is
///         empty) or 7643 (a private key that is open to others); the reason is in the debug log
Status readCredentials(int certType, const std::string& server, Credentials& credentials);

}  // namespace arkeon
