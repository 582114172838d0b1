#include "devserver/RequestBody.h"

#include "devserver/JsonPtr.h"
#include "devserver/Reply.h"
#include "devserver/Text.h"

#include <jansson.h>

namespace devserver {

namespace {

constexpr std::size_t longestName = 1024;
constexpr std::size_t longestComment = 2048;

[[noreturn]] void refuse() {
    throw Refusal{errors::malformedBody};
}

JsonPtr parse(const std::string& body) {
    JsonPtr json(json_loadb(body.data(), body.size(), JSON_REJECT_DUPLICATES, nullptr));
    if (!json || !json_is_object(json.get())) {
        refuse();
    }
    return json;
}

/// The only member of the object, which must bear this name.
JsonPtr onlyMember(const std::string& body, const char* name) {
    const JsonPtr object = parse(body);
    json_t* member = json_object_get(object.get(), name);
    if (member == nullptr || json_object_size(object.get()) != 1) {
        refuse();
    }
    return JsonPtr(json_incref(member));
}

bool flagOf(const json_t* json) {
    if (!json_is_boolean(json)) {
        refuse();
    }
    return json_is_true(json);
}

std::string textOf(const json_t* json) {
    if (!json_is_string(json)) {
        refuse();
    }
    return {json_string_value(json), json_string_length(json)};
}

std::string nameOf(const json_t* json) {
    std::string name = textOf(json);
    checkName(name);
    return name;
}

}  // namespace

void checkName(const std::string& name) {
    if (name.empty() || name.size() > longestName || !text::isPlain(name)) {
        throw Refusal{errors::badValue};
    }
}

namespace requestBody {

bool isShared(const std::string& body) {
    return flagOf(onlyMember(body, "isShared").get());
}

std::string comment(const std::string& body) {
    std::string comment = textOf(onlyMember(body, "comment").get());
    if (comment.size() > longestComment) {
        throw Refusal{errors::badValue};
    }
    return comment;
}

std::string hostName(const std::string& body) {
    return nameOf(onlyMember(body, "hostName").get());
}

HostPatch hostPatch(const std::string& body) {
    const JsonPtr object = parse(body);
    HostPatch patch;
    std::size_t known = 0;
    if (const json_t* flag = json_object_get(object.get(), "autoReissue"); flag != nullptr) {
        patch.autoReissue = flagOf(flag);
        ++known;
    }
    if (const json_t* name = json_object_get(object.get(), "hostName"); name != nullptr) {
        patch.hostName = nameOf(name);
        ++known;
    }
    if (known == 0 || known != json_object_size(object.get())) {
        refuse();
    }
    return patch;
}

}  // namespace requestBody

}  // namespace devserver
