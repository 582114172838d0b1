#include "devserver/Logins.h"

#include "devserver/Failure.h"
#include "devserver/Files.h"
#include "devserver/JsonPtr.h"
#include "devserver/Random.h"
#include "devserver/Text.h"

#include <jansson.h>

#include <cstdlib>

namespace devserver {

namespace {

JsonPtr load(const std::filesystem::path& file) {
    if (!std::filesystem::exists(file)) {
        return JsonPtr(json_pack("{s:[]}", "logins"));
    }
    const std::string content = files::read(file);
    JsonPtr root(json_loadb(content.data(), content.size(), 0, nullptr));
    if (!root || !json_is_array(json_object_get(root.get(), "logins"))) {
        throw Failure("the login file " + file.string() + " is malformed");
    }
    return root;
}

bool isFor(const json_t* entry, const LoginPlace& place) {
    const char* server = json_string_value(json_object_get(entry, "server"));
    return server != nullptr && text::equalIgnoringCase(server, place.server) &&
           json_integer_value(json_object_get(entry, "port")) == place.port;
}

bool contains(const json_t* logins, const LoginPlace& place) {
    for (std::size_t i = 0; i < json_array_size(logins); ++i) {
        if (isFor(json_array_get(logins, i), place)) {
            return true;
        }
    }
    return false;
}

/// The token of the first entry, empty when there is none.
std::string firstToken(const json_t* logins) {
    const char* token = json_string_value(json_object_get(json_array_get(logins, 0), "token"));
    return token == nullptr ? "" : token;
}

bool addMissing(json_t* logins, const std::vector<LoginPlace>& places, const std::string& token) {
    bool added = false;
    for (const LoginPlace& place : places) {
        if (!contains(logins, place)) {
            json_array_append_new(
                logins, json_pack(
                            "{s:s, s:i, s:s}", "server", place.server.c_str(), "port", place.port,
                            "token", token.c_str()));
            added = true;
        }
    }
    return added;
}

void save(const std::filesystem::path& file, const json_t* root) {
    char* text = json_dumps(root, JSON_INDENT(2));
    if (text == nullptr) {
        throw Failure("the login file " + file.string() + " cannot be made");
    }
    const std::string content = std::string(text) + '\n';
    std::free(text);
    files::replace(file, content);
}

}  // namespace

void completeLogins(
    const std::filesystem::path& file, const std::vector<LoginPlace>& places,
    HostDatabase& database) {
    const JsonPtr root = load(file);
    json_t* logins = json_object_get(root.get(), "logins");
    std::string token = firstToken(logins);
    if (token.empty()) {
        token = randomHex(32);
    }
    if (!database.ownerOf(token)) {
        database.addToken(token, "admin", std::nullopt);
    }
    if (addMissing(logins, places, token)) {
        save(file, root.get());
    }
}

}  // namespace devserver
