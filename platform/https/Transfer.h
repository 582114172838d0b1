#pragma once

#include "https/Credentials.h"

#include <string>
#include <vector>

namespace arkeon {

/// One request, checked and complete.
struct Request {
    std::string method;
    std::string server;
    int port = 0;
    std::string target;                 ///< goes out byte for byte
    std::vector<std::string> headers;   ///< in libcurl's form
    const std::string* body = nullptr;  ///< not owned; null: none
};

/// What the server answered.
struct Reply {
    int httpStatus = 0;  ///< 0: no whole reply arrived
    std::string body;    ///< decoded
};

/// Sends `request` once and waits for the whole reply. Transfers to the same server and port share
/// one connection.
/// @return 0 or a status code of the client; the reason is in the debug log
int transfer(const Request& request, Credentials& credentials, Reply& reply);

}  // namespace arkeon
