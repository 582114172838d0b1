#include "hostmgmt/ArgumentRules.h"

#include "arkeon/text.h"
#include "cmdframework/Logcmd.h"

namespace {

CUsagecmd failureWith(usageExceptions code, const std::string& message) {
    CUsagecmd failure(code);
    failure.SetUsagemessage(message.c_str());
    return failure;
}

}  // namespace

void ArgumentRules::reject(usageExceptions code, const std::string& message) const {
    log_.logit(message, logLevel::ordinary);
    throw failureWith(code, message);
}

void ArgumentRules::rejectHelpAlias() const {
    if (args_.exists(option::help.alias)) {
        throw CUsagecmd(helpRequested);
    }
}

void ArgumentRules::requireOption(OptionName option) const {
    if (!isGiven(args_, option)) {
        throw CUsagecmd(requiredOptionMissing, option.name);
    }
}

// JSON is UTF-8 (RFC 8259, section 8.1).
void ArgumentRules::rejectInvalidUtf8(OptionName option) const {
    if (!arkeon::isUtf8(valueOf(args_, option))) {
        throw CUsagecmd(invalidValue, option.name);
    }
}

void ArgumentRules::rejectBoth(OptionName first, OptionName second) const {
    if (isGiven(args_, first) && isGiven(args_, second)) {
        // There is no space between the colon and the names, on purpose.
        reject(
            selectExactlyOne,
            messageText(messages::selectExactlyOne) + first.name + " " + second.name);
    }
}

void ArgumentRules::requireOneOf(OptionName first, OptionName second) const {
    rejectBoth(first, second);
    if (!isGiven(args_, first) && !isGiven(args_, second)) {
        reject(eitherIsRequired, messageText(messages::eitherIsRequired, first.name, second.name));
    }
}

void ArgumentRules::rejectSlashes(OptionName option, const CatalogueText& message) const {
    if (valueOf(args_, option).find_first_of("\\/") != std::string::npos) {
        reject(hasSlashes, messageText(message));
    }
}

void ArgumentRules::rejectLongerThan(std::size_t limit, OptionName option) const {
    if (valueOf(args_, option).size() > limit) {
        reject(valueTooLong, messageText(messages::valueIsTooLong) + "\n" + option.name);
    }
}
