#include "cmdframework/Messages.h"

#include "arkeon/catalogue.h"

#include <array>

namespace {

zvlocale localeOfEnvironment() {
    static int status = 0;
    zvlocale locale{};
    zvgetlocaleEx(&locale, &status);
    return locale;
}

}  // namespace

const CatalogueText&
messageOf(const MessageRow* table, std::uint32_t code, std::uint32_t fallback) {
    const MessageRow* row = table;
    while (row->code != code && row->code != fallback) {
        ++row;
    }
    return row->message;
}

void getMessage(
    char* buf, unsigned long size, const char* id, const char* defaultText, const char* a1,
    const char* a2, const char* a3) {
    zvgetmsg(id, localeOfEnvironment(), buf, size, defaultText, a1, a2, a3);
}

void getMessage(char* buf, unsigned long size, const char* id, const char* defaultText, int n) {
    zvgetmsg(id, localeOfEnvironment(), buf, size, defaultText, n);
}

const char* getECMessage(int status) {
    return getECmsgl(status, localeOfEnvironment());
}

std::string statusLine(int status, const std::string& text) {
    return "Exit Status " + std::to_string(status) + ": " + text + "\n";
}

std::string messageText(const CatalogueText& message, const char* a1, const char* a2) {
    std::array<char, operationTextSize> buffer{};
    getMessage(buffer.data(), buffer.size(), message.id, message.text, a1, a2);
    return buffer.data();
}
