// How a failed request is put into words.

#include "arkeon/console.h"
#include "arkeon/status.h"
#include "arkeon/text.h"
#include "hostmgmt/AkHostMgmtBaseOption.h"

#include <cstdint>
#include <utility>

using arkeon::Console;

int AkHostMgmtBaseOption::logErrorMessage(const std::string& reply, long& errorCode) {
    std::string text;
    long code = 0;
    errorCode = arkeon::status::unreadableReply;
    if (loadReply(reply) != 0 || getIntValue("errorCode", code) != 0) {
        return arkeon::status::unreadableReply;
    }
    operationLog.logit(
        "Error code returned by server is :" + std::to_string(code) + "\n", logLevel::failure);
    if (getStringValue("errorMessage", text) != 0) {
        return arkeon::status::unreadableReply;  // a code without a message counts as no code
    }
    operationLog.logit({"Error message returned by server is :", text, "\n"}, logLevel::failure);
    if (!std::in_range<std::int32_t>(code)) {
        return arkeon::status::unreadableReply;
    }
    errorCode = code;
    return arkeon::status::success;
}

void AkHostMgmtBaseOption::submitErrorStringForWebApi(int code) const {
    if (code == arkeon::status::success) {
        return;
    }
    if (code == arkeon::status::loginRefused || code == arkeon::status::loginExpired) {
        operationLog.logit(showWebLoginRequired(), logLevel::failure);
    }
    showStatus(code, std::string(arkeon::cutText(getECMessage(code), operationTextSize - 1)));
}

std::string AkHostMgmtBaseOption::showWebLoginRequired() const {
    std::string text =
        messageText(messages::webLoginRequired, "'akauth -login -loginType WEB|APIKEY'");
    Console::standard().writeError(text + "\n");
    return text;
}

void AkHostMgmtBaseOption::showStatus(int code, const std::string& text) const {
    operationLog.logit(text, logLevel::failure);
    Console::standard().writeError(statusLine(code, text));
}
