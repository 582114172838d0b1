// The rules on arguments that the operations share.

#include "arkeon/text.h"
#include "hostmgmt/AkHostMgmtBaseOption.h"

namespace {

CUsagecmd failureWithText(usageExceptions code, const std::string& text) {
    CUsagecmd failure(code);
    failure.SetUsagemessage(text.c_str());
    return failure;
}

}  // namespace

bool AkHostMgmtBaseOption::isGiven(OptionName option) const {
    return isOn(args, option);
}

std::string AkHostMgmtBaseOption::valueOf(OptionName option) const {
    return args.argValue(nameOrAlias(args, option));
}

unsigned int AkHostMgmtBaseOption::numberOf(OptionName option) const {
    return args.numericValue(nameOrAlias(args, option));
}

void AkHostMgmtBaseOption::refuse(usageExceptions code, const std::string& text) const {
    operationLog.logit(text, logLevel::ordinary);
    throw failureWithText(code, text);
}

// The long name is the framework's business.
void AkHostMgmtBaseOption::rejectHelpAlias() const {
    if (args.exists(option::help.alias)) {
        throw CUsagecmd(helpRequested);
    }
}

void AkHostMgmtBaseOption::requireOption(OptionName option) const {
    if (!isGiven(option)) {
        throw CUsagecmd(requiredOptionMissing, option.name);
    }
}

// JSON texts are UTF-8 (RFC 8259, section 8.1).
void AkHostMgmtBaseOption::rejectInvalidUtf8(OptionName option) const {
    if (!arkeon::isUtf8(valueOf(option))) {
        throw CUsagecmd(invalidValue, option.name);
    }
}

void AkHostMgmtBaseOption::rejectBoth(OptionName first, OptionName second) const {
    if (isGiven(first) && isGiven(second)) {
        // The names follow the colon without a blank on purpose.
        refuse(
            selectExactlyOne,
            messageText(messages::selectExactlyOne) + first.name + " " + second.name);
    }
}

void AkHostMgmtBaseOption::requireEither(OptionName first, OptionName second) const {
    if (!isGiven(first) && !isGiven(second)) {
        refuse(eitherIsRequired, messageText(messages::eitherIsRequired, first.name, second.name));
    }
}

void AkHostMgmtBaseOption::requireOneOf(OptionName first, OptionName second) const {
    rejectBoth(first, second);
    requireEither(first, second);
}

void AkHostMgmtBaseOption::rejectSlashes(OptionName option, const CatalogueText& text) const {
    if (valueOf(option).find_first_of("\\/") != std::string::npos) {
        refuse(holdsSlashes, messageText(text));
    }
}

void AkHostMgmtBaseOption::rejectLongerThan(std::size_t limit, OptionName option) const {
    if (valueOf(option).size() > limit) {
        refuse(valueTooLong, messageText(messages::valueIsTooLong) + "\n" + option.name);
    }
}
