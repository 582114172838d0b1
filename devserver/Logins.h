#pragma once

#include "devserver/HostDatabase.h"

#include <filesystem>
#include <string>
#include <vector>

namespace devserver {

/// A server under which a login is filed.
struct LoginPlace {
    std::string server;
    int port;
};

/// Sees to it that the login file has an entry for each place, all with the token of the file's
/// first entry or a new one, and that the database knows that token. Entries that are there stay
/// as they are. A file that is not of the form is a Failure.
void completeLogins(
    const std::filesystem::path& file, const std::vector<LoginPlace>& places,
    HostDatabase& database);

}  // namespace devserver
