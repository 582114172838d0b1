#include "hostmgmt/AkHostMgmtBaseOption.h"

#include "arkeon/status.h"

#include <memory>
#include <utility>

AkHostMgmtBaseOption::AkHostMgmtBaseOption(
    const char* newName, CArgscmd newArgs, const PARAMETERS* table, unsigned long count,
    CLogcmd& commandLog)
    : CBasecmd(newName, std::move(newArgs), table, count), operationLog(commandLog),
      payload(json_object()) {
    checkJson(payload != nullptr);
}

AkHostMgmtBaseOption::~AkHostMgmtBaseOption() = default;

int AkHostMgmtBaseOption::setJSONObject(const char* key, const char* value) {
    return setJSONObject(key, json_string(value));
}

int AkHostMgmtBaseOption::setJSONObject(const char* key, json_t* value) {
    checkJson(json_object_set_new(payload.get(), key, value) == 0);
    return arkeon::status::success;
}

std::string AkHostMgmtBaseOption::getJSONpayload() const {
    json_free_t release = nullptr;
    json_get_alloc_funcs(nullptr, &release);
    const std::unique_ptr<char, json_free_t> text(json_dumps(payload.get(), JSON_COMPACT), release);
    checkJson(text != nullptr || payload == nullptr);
    return text ? text.get() : "";
}

JsonRef AkHostMgmtBaseOption::parseJSON(std::string_view text) const {
    JsonRef value(json_loadb(text.data(), text.size(), 0, nullptr));
    if (!value) {
        operationLog.logit({"load_json() failed:", text, "\n"}, logLevel::failure);
    }
    return value;
}

int AkHostMgmtBaseOption::loadJSON(const char* text) {
    return loadReply(text);
}

int AkHostMgmtBaseOption::loadReply(std::string_view text) {
    payload.reset();  // first, so that two large replies never stand side by side
    payload = parseJSON(text);
    return payload ? arkeon::status::success : arkeon::status::unreadableReply;
}

int AkHostMgmtBaseOption::getIntValue(const char* key, long& value) const {
    const json_t* member = json_object_get(payload.get(), key);
    if (!json_is_integer(member)) {
        operationLog.logit("No error code in response.", logLevel::failure);
        return arkeon::status::unreadableReply;
    }
    value = static_cast<long>(json_integer_value(member));
    return arkeon::status::success;
}

int AkHostMgmtBaseOption::getStringValue(const char* key, std::string& value) const {
    const char* text = json_string_value(json_object_get(payload.get(), key));
    if (text == nullptr) {
        // The same words as for a number, whatever the key.
        operationLog.logit("No error code in response.", logLevel::failure);
        return arkeon::status::unreadableReply;
    }
    value = text;
    return arkeon::status::success;
}

std::string AkHostMgmtBaseOption::getURI(
    OperationType operation, const std::string& hostId, const std::string& encodedName) const {
    std::string uri = resourceUri(operation, hostId, encodedName);
    operationLog.logit({"serverUri is: ", uri}, logLevel::ordinary);
    return uri;
}
