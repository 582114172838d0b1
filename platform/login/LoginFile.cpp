#include "login/LoginFile.h"

#include "config/ReadFile.h"
#include "log/Report.h"
#include "text/ServerNames.h"

#include <algorithm>
#include <jansson.h>
#include <memory>
#include <unistd.h>

namespace arkeon {
namespace {

/// Releases a reference to a JSON value.
struct JsonRelease {
    void operator()(json_t* value) const { json_decref(value); }
};
using Json = std::unique_ptr<json_t, JsonRelease>;

/// A token goes into a header line as it is: visible ASCII only.
bool isToken(std::string_view token) {
    return !token.empty() && std::all_of(token.begin(), token.end(), [](char byte) {
        return byte > ' ' && byte <= '~';
    });
}

bool readExpires(const json_t* entry, Login& login) {
    const json_t* expires = json_object_get(entry, "expires");
    if (expires == nullptr) {
        return true;
    }
    login.expires = json_integer_value(expires);
    return json_is_integer(expires);
}

std::string textOf(const json_t* text) {
    return {json_string_value(text), json_string_length(text)};
}

bool readLogin(const json_t* entry, Login& login) {
    const json_t* server = json_object_get(entry, "server");
    const json_t* port = json_object_get(entry, "port");
    const json_t* token = json_object_get(entry, "token");
    if (!json_is_string(server) || !json_is_integer(port) || !json_is_string(token)) {
        return false;
    }
    login.server = textOf(server);
    login.port = json_integer_value(port);
    login.token = textOf(token);
    return readExpires(entry, login);
}

/// Any other key, here and in the entries, is left to the login tool.
bool readLogins(const json_t* root, std::vector<Login>& logins) {
    const json_t* entries = json_object_get(root, "logins");
    if (!json_is_array(entries)) {
        return false;
    }
    logins.resize(json_array_size(entries));
    for (std::size_t index = 0; index < logins.size(); ++index) {
        if (!readLogin(json_array_get(entries, index), logins[index])) {
            return false;
        }
    }
    return true;
}

/// Why the file's state forbids trusting it; empty when it does not.
std::string_view rejectionReason(const FileContent& file) {
    constexpr mode_t groupAndOthers = 077;
    if (file.error != 0) {
        return file.reason;
    }
    if (file.owner != geteuid()) {
        return "not owned by the user of this process";
    }
    return (file.mode & groupAndOthers) != 0 ? "open to group or others" : "";
}

Status rejected(std::string_view path, std::string_view reason) {
    report({path, ": ", reason});
    return status::unusableLogin;
}

/// jansson's own error text quotes the file and with it, maybe, a token: only the place is logged.
Status notJson(std::string_view path, const json_error_t& error) {
    return rejected(
        path, "not JSON, line " + std::to_string(error.line) + ", column " +
                  std::to_string(error.column));
}

}  // namespace

Status LoginFile::read(const std::string& path) {
    path_ = path;
    const FileContent file = readFile(path);
    if (isMissingFile(file.error)) {
        report({"no login file: \"", path, "\""});
        return status::notLoggedIn;
    }
    if (const std::string_view reason = rejectionReason(file); !reason.empty()) {
        return rejected(path, reason);
    }
    json_error_t error{};
    const Json root(json_loadb(file.text.data(), file.text.size(), 0, &error));
    if (root == nullptr) {
        return notJson(path, error);
    }
    return readLogins(root.get(), logins_) ? status::success
                                           : rejected(path, "not of the form of a login file");
}

Status LoginFile::findToken(
    std::string_view server, std::int64_t port, std::time_t now, std::string& token) const {
    const auto login = std::find_if(logins_.begin(), logins_.end(), [&](const Login& entry) {
        return entry.port == port && sameServer(entry.server, server);
    });
    if (login == logins_.end()) {
        report({path_, ": no login for ", server, ", port ", std::to_string(port)});
        return status::notLoggedIn;
    }
    if (!isToken(login->token)) {
        return rejected(path_, "the token is empty or holds a byte that is no visible ASCII");
    }
    if (login->expires && *login->expires <= now) {
        report({path_, ": the login for ", server, " has expired"});
        return status::loginExpired;
    }
    token = login->token;
    return status::success;
}

}  // namespace arkeon
