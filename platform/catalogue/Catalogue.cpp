#include "arkeon/catalogue.h"

#include "arkeon/text.h"
#include "catalogue/Placeholders.h"
#include "catalogue/Translate.h"
#include "config/Paths.h"

#include <clocale>
#include <cstring>
#include <libintl.h>
#include <string>

namespace arkeon {
namespace {

constexpr const char* domain = "akhostmgmt";

void setCategory(int category, char* name, std::size_t size) {
    const char* chosen = std::setlocale(category, "");
    if (chosen == nullptr) {
        chosen = std::setlocale(category, "C");
    }
    boundedCopy(name, size, chosen == nullptr ? "C" : chosen);
}

void bindCatalogue() {
    bindtextdomain(domain, localeDirectory().c_str());
    bind_textdomain_codeset(domain, "UTF-8");
}

/// gettext uses the process's locale: makes that one the caller's.
void useLanguage(const zvlocale& locale) {
    const char* current = std::setlocale(LC_MESSAGES, nullptr);
    if (current == nullptr || std::strcmp(current, locale.messages) != 0) {
        std::setlocale(LC_MESSAGES, locale.messages);
    }
}

}  // namespace

const char* translate(const zvlocale& locale, const char* context, const char* key) {
    // The form in which msgfmt stores a text that has a context.
    constexpr char contextEnd = '\004';
    useLanguage(locale);
    const std::string contextAndKey = std::string(context) + contextEnd + key;
    const char* text = dgettext(domain, contextAndKey.c_str());
    return text == contextAndKey.c_str() ? nullptr : text;
}

}  // namespace arkeon

int zvgetlocaleEx(zvlocale* locale, int* status) {
    arkeon::setCategory(LC_MESSAGES, locale->messages, sizeof locale->messages);
    arkeon::setCategory(LC_CTYPE, locale->characters, sizeof locale->characters);
    arkeon::bindCatalogue();
    *status = 0;
    return *status;
}

int zvgetmsg(
    const char* id, const zvlocale& locale, char* buffer, unsigned long size,
    const char* defaultText, ...) {
    const char* text = arkeon::translate(locale, id, defaultText);
    if (text == nullptr || !arkeon::placeholdersFit(defaultText, text)) {
        text = defaultText;
    }
    std::va_list arguments;
    va_start(arguments, defaultText);
    arkeon::boundedFormatV(buffer, size, text, arguments);
    va_end(arguments);
    return 0;
}
