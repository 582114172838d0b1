// The rules on arguments that the operations share.

#include "hostmgmt/AkHostMgmtBaseOption.h"

namespace {

CUsagecmd failureWithText(usageExceptions code, const std::string& text) {
    CUsagecmd failure(code);
    failure.SetUsagemessage(text.c_str());
    return failure;
}

}  // namespace

bool AkHostMgmtBaseOption::isGiven(OptionName option) const {
    return args.exists(option.name) || args.exists(option.alias);
}

std::string AkHostMgmtBaseOption::valueOf(OptionName option) const {
    return args.argValue(args.exists(option.name) ? option.name : option.alias);
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

void AkHostMgmtBaseOption::rejectBoth(OptionName first, OptionName second) const {
    if (isGiven(first) && isGiven(second)) {
        // The names follow the colon without a blank on purpose.
        refuse(
            selectExactlyOne,
            messageText(messages::selectExactlyOne) + first.name + " " + second.name);
    }
}

void AkHostMgmtBaseOption::rejectSlashes(OptionName option, const CatalogueText& text) const {
    if (valueOf(option).find_first_of("\\/") != std::string::npos) {
        refuse(holdsSlashes, messageText(text));
    }
}

void AkHostMgmtBaseOption::rejectLongerThan(unsigned long limit, OptionName option) const {
    if (valueOf(option).size() > limit) {
        refuse(valueTooLong, messageText(messages::valueIsTooLong) + "\n" + option.name);
    }
}
