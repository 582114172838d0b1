#include "cmdframework/Usagecmd.h"

#include "arkeon/text.h"
#include "cmdframework/Messages.h"

#include <string>

namespace {

// The fallback row is last, although its code is not the highest: a lookup stops at it.
constexpr MessageRow messageTable[] = {
    {invalidOption, catalogued("SmeEmm0000N", "An invalid option was used.")},
    {commandOptionMissing,
     catalogued("SmeEmm0001N", "Missing the command option from the arguments list.")},
    {optionCharacterMissing, catalogued("SmeEmm0002N", "Missing option character on parameter.")},
    {requiredOptionMissing,
     catalogued("SmeEmm0005N", "The following option is required and was not specified:")},
    {commandOptionHasValue,
     catalogued("SmeEmm0004N", "There is no value associated with the command option")},
    // Translators: leave this text as it is. In any other words a request for help is shown as a
    // failure and ends with status 144.
    {helpRequested, catalogued("SmeEmm0018N", "Help requested.")},
    {optionRepeated, catalogued("SmeEmm0029N", "The following option was entered more than once:")},
    {notAnUnsignedInteger,
     catalogued(
         "SmeEmm0025N", "The following option requires an unsigned integer value or the number "
                        "entered was too large:")},
    {valueMissing, catalogued("SmeEmm0007N", "The value for this option was missing:")},
    {valueNotUsed,
     catalogued("SmeEmm0027N", "This option was given a value but does not use one.")},
    {invalidValue, catalogued("SmeHst0012N", "Invalid value supplied for option")},
    {nameAndAliasGiven,
     catalogued("SmeHst0011N", "Either parameter name or alias of the following option required:")},
    {selectExactlyOne, messages::selectExactlyOne},
    {eitherIsRequired, messages::eitherIsRequired},
    {hasSlashes, messages::mappingNameHasSlashes},
    {valueTooLong, messages::valueIsTooLong},
    {unknownUsageError, catalogued("SmeEmm0009N", "Unknown usage error.")},
};

constexpr CatalogueText largestValue = catalogued("SmeEmm0156N", "The maximum value is ");

const CatalogueText& textOf(usageExceptions code) {
    return messageOf(messageTable, code, unknownUsageError);
}

std::string joined(const char** list) {
    std::string text;
    for (const char** item = list; *item != nullptr; ++item) {
        text += (item == list ? "" : ", ");
        text += *item;
    }
    return text;
}

}  // namespace

CUsagecmd::CUsagecmd(usageExceptions code) {
    message(text_.data(), text_.size(), code);
}

CUsagecmd::CUsagecmd(usageExceptions code, const char* detail) {
    message(text_.data(), text_.size(), code, detail);
}

CUsagecmd::CUsagecmd(usageExceptions code, const char** list)
    : CUsagecmd(code, joined(list).c_str()) {}

CUsagecmd::CUsagecmd(usageExceptions code, const char* detail, unsigned long limit)
    : CUsagecmd(code, detail) {
    const std::string line = "\n" + messageText(largestValue) + std::to_string(limit - 1) + "\n";
    arkeon::boundedAppend(text_.data(), text_.size(), line);
}

void CUsagecmd::SetUsagemessage(const char* text) {
    arkeon::boundedCopy(text_.data(), text_.size(), text);
}

void CUsagecmd::message(char* buf, unsigned long size, usageExceptions code) const {
    const CatalogueText& text = textOf(code);
    getMessage(buf, size, text.id, text.text);
}

void CUsagecmd::message(
    char* buf, unsigned long size, usageExceptions code, const char* detail) const {
    message(buf, size, code);
    arkeon::boundedAppend(buf, size, "\n");
    arkeon::boundedAppend(buf, size, detail);
}
