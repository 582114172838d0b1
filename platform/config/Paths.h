#pragma once

#include <string>

namespace arkeon {

/// The value of an environment variable; empty when it is not set, and in a process with more
/// rights than its user (secure_getenv(3)).
std::string environment(const char* name);

/// `<root>`: ARKEON_ROOT when set and not empty, else the place of the installed system.
std::string rootDirectory();

/// `<root>/etc/master.toml`, `<root>/etc/certificates.toml` and `<root>/locale`.
std::string masterConfigFile();
std::string certificateInfoFile();
std::string localeDirectory();

/// The user's login file; empty when the user has no home directory.
std::string loginFile();

}  // namespace arkeon
