#include "hostmgmt/OperationOutput.h"

#include "arkeon/console.h"
#include "cmdframework/Logcmd.h"
#include "hostmgmt/OptionNames.h"

using arkeon::Console;

void reportSuccess(const std::string& message, const CLogcmd& log) {
    log.logit(message, logLevel::ordinary);
    Console::standard().write(message + "\n");
}

void printSynopsis(const CatalogueText& synopsis) {
    Console::standard().write(messageText(synopsis, commandName) + "\n");
}

void printUsageText(
    const CatalogueText& synopsis, const CatalogueText& description, const char* examples) {
    Console::standard().write(messageText(messages::usageHeading) + "\n");
    printSynopsis(synopsis);
    Console::standard().write("\n" + messageText(description) + examples);
}
