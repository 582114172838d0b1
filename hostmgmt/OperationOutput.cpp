// What the operations print of themselves.

#include "arkeon/console.h"
#include "hostmgmt/AkHostMgmtBaseOption.h"

using arkeon::Console;

void AkHostMgmtBaseOption::announce(const std::string& text) const {
    operationLog.logit(text, logLevel::ordinary);
    Console::standard().write(text + "\n");
}

void AkHostMgmtBaseOption::showSynopsis(const CatalogueText& synopsis) {
    Console::standard().write(messageText(synopsis, commandName) + "\n");
}

void AkHostMgmtBaseOption::showUsage(
    const CatalogueText& synopsis, const CatalogueText& description, const char* examples) {
    Console::standard().write(messageText(messages::usageHeading) + "\n");
    showSynopsis(synopsis);
    Console::standard().write("\n" + messageText(description) + examples);
}
