#include "hostmgmt/Json.h"

#include "arkeon/text.h"
#include "cmdframework/Logcmd.h"
#include "cmdframework/Usagecmd.h"

#include <cstdlib>
#include <new>

namespace status = arkeon::status;
using arkeon::Status;

namespace {

struct Free {
    void operator()(char* text) const { std::free(text); }
};

}  // namespace

void checkJson(bool succeeded) {
    if (!succeeded) {
        throw std::bad_alloc();
    }
}

const char* stringMember(const json_t* object, const char* key) {
    const json_t* value = json_object_get(object, key);
    return json_is_null(value) ? "" : json_string_value(value);
}

bool isTrue(const json_t* object, const char* key) {
    return json_is_true(json_object_get(object, key));
}

json_int_t integerMember(const json_t* object, const char* key) {
    return json_integer_value(json_object_get(object, key));
}

JsonPayload::JsonPayload(const CLogcmd& log) : log_(log), root_(json_object()) {
    checkJson(root_ != nullptr);
}

void JsonPayload::set(const char* key, const char* value) {
    if (!arkeon::isUtf8(value)) {
        throw CUsagecmd(invalidValue, key);
    }
    set(key, json_string(value));
}

void JsonPayload::set(const char* key, json_t* value) {
    checkJson(json_object_set_new(root_.get(), key, value) == 0);
}

std::string JsonPayload::compactText() const {
    const std::unique_ptr<char, Free> text(json_dumps(root_.get(), JSON_COMPACT));
    checkJson(text != nullptr || root_ == nullptr);
    return text ? text.get() : "";
}

Status JsonPayload::load(std::string_view text) {
    root_.reset();  // first, so that two large replies are never in memory together
    root_.reset(json_loadb(text.data(), text.size(), 0, nullptr));
    if (root_ == nullptr) {
        log_.logit({"load_json() failed:", text, "\n"}, logLevel::failure);
        return status::unreadableReply;
    }
    return status::success;
}

Status JsonPayload::readInteger(const char* key, long& value) const {
    const json_t* member = json_object_get(root_.get(), key);
    if (!json_is_integer(member)) {
        log_.logit("No error code in response.", logLevel::failure);
        return status::unreadableReply;
    }
    value = static_cast<long>(json_integer_value(member));
    return status::success;
}

Status JsonPayload::readString(const char* key, std::string& value) const {
    const char* text = json_string_value(json_object_get(root_.get(), key));
    if (text == nullptr) {
        // The same message as for an integer, whatever the key is.
        log_.logit("No error code in response.", logLevel::failure);
        return status::unreadableReply;
    }
    value = text;
    return status::success;
}
