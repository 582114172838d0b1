#pragma once

#include "arkeon/status.h"

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace arkeon {

/// One entry of the login file.
struct Login {
    std::string server;
    std::int64_t port = 0;
    std::string token;
    std::optional<std::int64_t> expires;  ///< seconds since the epoch, UTC; empty: does not expire
};

/// The user's logins. No token and no part of the file's text is ever logged.
class LoginFile {
public:
    /// Reads the complete file and checks its form; an empty `path` counts as a missing file.
    /// @return 0, 5930 (missing) or 117 (not to be trusted, not of this form)
    Status read(const std::string& path);

    /// The token of the first login for this server and port.
    /// @return 0, 5930 (no such login), 117 (the token is not valid) or 118 (expired)
    Status findToken(
        std::string_view server, std::int64_t port, std::time_t now, std::string& token) const;

private:
    std::string path_;
    std::vector<Login> logins_;
};

}  // namespace arkeon
