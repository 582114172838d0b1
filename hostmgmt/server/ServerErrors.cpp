#include "hostmgmt/server/ServerErrors.h"

#include "arkeon/console.h"
#include "arkeon/text.h"
#include "cmdframework/Logcmd.h"
#include "cmdframework/Messages.h"
#include "hostmgmt/Json.h"

#include <cstdint>
#include <utility>

using arkeon::Console;
namespace status = arkeon::status;

namespace {

constexpr CatalogueText webLoginRequired = catalogued(
    "SmeNsc0136N", "Authorization failed. A web login is required. Run the %s command to login.");

std::string loginRequiredMessage() {
    return messageText(webLoginRequired, "'akauth -login -loginType WEB|APIKEY'");
}

}  // namespace

std::optional<int>
readErrorReply(const std::string& reply, JsonPayload& payload, const CLogcmd& log) {
    long code = 0;
    if (payload.load(reply) != status::success ||
        payload.readInteger("errorCode", code) != status::success) {
        return std::nullopt;
    }
    log.logit(
        "Error code returned by server is :" + std::to_string(code) + "\n", logLevel::failure);
    std::string message;
    if (payload.readString("errorMessage", message) != status::success) {
        return std::nullopt;  // a code without a message counts as no code
    }
    log.logit({"Error message returned by server is :", message, "\n"}, logLevel::failure);
    if (!std::in_range<std::int32_t>(code)) {
        return std::nullopt;
    }
    return static_cast<int>(code);
}

bool isLoginFailure(int code) {
    return code == status::notLoggedIn || code == status::unusableLogin ||
           code == status::loginExpired;
}

void printLoginRequired() {
    Console::standard().writeError(loginRequiredMessage() + "\n");
}

void reportStatus(int code, const CLogcmd& log) {
    if (code == status::success) {
        return;
    }
    if (code == status::unusableLogin || code == status::loginExpired) {
        log.logit(loginRequiredMessage(), logLevel::failure);
        printLoginRequired();
    }
    reportStatus(
        code, std::string(arkeon::cutText(getECMessage(code), operationTextSize - 1)), log);
}

void reportStatus(int code, const std::string& message, const CLogcmd& log) {
    log.logit(message, logLevel::failure);
    Console::standard().writeError(statusLine(code, message));
}
