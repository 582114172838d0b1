#pragma once

#include "arkeon/status.h"

#include <string>

/// Finds the user's login for a server: the token that the login tool left in
/// `$XDG_CONFIG_HOME/arkeon/logins.json` (by default `~/.config/arkeon/logins.json`).
///
/// The file must be regular, owned by the effective user and closed to everybody else. The token
/// goes into the Authorization header and nowhere else: not to a log, a message or an argument.
class LoginWithUserTokenManager {
public:
    /// Reads nothing yet. The four texts and the certificate type belong to ways of logging in that
    /// need no file; they are accepted and not used.
    LoginWithUserTokenManager(
        int port, const std::string& user, const std::string& password, const std::string& domain,
        const std::string& domainType, int certType);

    /// Reads the token for `server` (compared without regard to case) and this manager's port.
    /// @return 0; 5930 no file or no entry; 117 a file that cannot be trusted or read, or a token
    ///         that is not valid; 118 the login has expired
    arkeon::Status findToken(const std::string& server, std::string& token) const;

private:
    int port_;
};
