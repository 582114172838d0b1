#pragma once

#include "cmdframework/Messages.h"

#include <string>

/// The line in which a status is shown on standard error.
inline std::string lineOf(int status) {
    return "Exit Status " + std::to_string(status) + ": " + getECMessage(status) + "\n";
}

/// The request to log in.
inline const std::string webLogin =
    "Authorization failed. A web login is required. Run the 'akauth -login -loginType WEB|APIKEY' "
    "command to login.";
