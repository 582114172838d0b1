#include "driver/ExecuteAkHostMgmt.h"

#include "arkeon/catalogue.h"
#include "arkeon/console.h"
#include "arkeon/status.h"
#include "cmdframework/Messages.h"
#include "cmdframework/Runtimecmd.h"
#include "cmdframework/Usagecmd.h"
#include "driver/ArgumentCopy.h"
#include "driver/Operations.h"
#include "driver/Termination.h"
#include "hostmgmt/JsonMemory.h"
#include "hostmgmt/Messages.h"
#include "hostmgmt/OptionNames.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <string>

using arkeon::Console;

namespace {

constexpr const char* logDirectory = "/usr/zelvik/arkeon/logs";
constexpr const char* loggingSubDirectory = "admin";

constexpr CatalogueText helpSynopsis = catalogued("SmeHmm0011N", "%s {-h | -help}");
constexpr CatalogueText description = catalogued(
    "SmeHmm0012N", "Description:\n"
                   "akhostmgmt command is used to manage host ID-to-host name (or IP address)\n"
                   "mappings. A host can be identified with alternate names. This command is\n"
                   "used to map these alternate names to the respective host ID. You can add,\n"
                   "delete, list the mappings using the command.");
constexpr CatalogueText operationHelpHint =
    catalogued("SmeHmm0014N", "\nUse akhostmgmt [operation] -help\n");
constexpr CatalogueText notSuccessful =
    catalogued("SmeEmm0023N", "Command did not complete successfully.");

// The locale of the run and the log of the process: both live until it ends.
zvlocale locale;
CLogcmd commandLog;

// A text in the language that the run began with.
std::string text(const CatalogueText& message, const char* argument = nullptr) {
    std::array<char, operationTextSize> buffer{};
    zvgetmsg(message.id, locale, buffer.data(), buffer.size(), message.text, argument);
    return buffer.data();
}

void printHelp() {
    Console& console = Console::standard();
    console.write(text(messages::usageHeading) + "\n");
    printSynopses();
    console.write(text(helpSynopsis, commandName) + "\n\n");
    console.write(text(description) + "\n");
    console.write(text(operationHelpHint) + "\n");
}

bool isTopLevelHelp(int argc, const CArgscmd& args) {
    return argc == 2 && isOn(args, operation::help);
}

// The exit status of a usage failure, 0 where help was asked for. Whether it was is told from the
// English text, on purpose: in a translated catalogue a help request is shown and counted like any
// other usage failure.
int reportUsageFailure(const CUsagecmd& failure, CBasecmd* operation) {
    const bool helpWanted = std::strcmp(failure.what(), "Help requested.") == 0;
    commandLog.logit(failure.what(), logLevel::ordinary);
    if (!helpWanted) {
        Console::standard().writeError(std::string(failure.what()) + "\n");
    }
    if (operation != nullptr) {
        operation->printUsage();
    } else {
        printHelp();
    }
    return helpWanted ? arkeon::status::success : arkeon::status::wrongCommandLine;
}

int reportRunTimeFailure(const CRuntimecmd& failure) {
    Console::standard().writeError(std::string(failure.what()) + "\n");
    commandLog.logit(failure);
    return failure.errcode();
}

// The status when everything has been printed: lost output is a failure of a run that had none.
// Nothing is said where the reader went away on purpose.
int statusAfterOutput(int status) {
    Console& console = Console::standard();
    if (console.flush()) {
        return status;
    }
    if (console.outputError() != EPIPE) {
        console.writeError(
            statusLine(arkeon::status::outputFailed, getECMessage(arkeon::status::outputFailed)));
    }
    return status == arkeon::status::success ? arkeon::status::outputFailed : status;
}

// What cannot be logged for want of memory does not change the result.
void logResult(int status) {
    try {
        if (status != 0) {
            commandLog.logit(text(notSuccessful), logLevel::ordinary);
        }
        commandLog.logit("Return value is: " + std::to_string(status) + "\n", logLevel::ordinary);
    } catch (const std::bad_alloc&) {
        return;
    }
}

// The run, once the process is ready for it.
int run(const char* directory, int argc, char** argv) {
    int localeStatus = 0;
    zvgetlocaleEx(&locale, &localeStatus);

    int status = arkeon::status::success;
    std::unique_ptr<CBasecmd> operation;
    try {
        // Null without memory: the run then goes on as if nothing had been typed, and says so.
        char** copy = copyArguments(argc, argv, strdup);
        commandLog.init(directory, commandName, loggingSubDirectory, nullptr);
        openCatalogue(locale);
        const CArgscmd args(argc, copy);
        if (isTopLevelHelp(argc, args)) {
            printHelp();
            return statusAfterOutput(status);
        }
        operation = chooseOperation(args, commandLog);
        operation->checkArguments();
        status = operation->execute();
    } catch (const CUsagecmd& failure) {
        status = reportUsageFailure(failure, operation.get());
    } catch (const CRuntimecmd& failure) {
        status = reportRunTimeFailure(failure);
    }
    status = statusAfterOutput(status);
    operation.reset();  // takes the use count of the log to 0 and below; lines are still written
    logResult(status);
    return status;
}

}  // namespace

int execute_akhostmgmt(int argc, char** argv) {
    return execute_akhostmgmt_in(logDirectory, argc, argv);
}

int execute_akhostmgmt_in(const char* directory, int argc, char** argv) {
    Console::standard();  // takes the standard streams before anything else is opened
    endCleanlyWithoutMemory();
    // The sanitizers are to see each value's end.
#ifndef __SANITIZE_ADDRESS__
    keepJsonUntilExit();
#endif
    return run(directory, argc, argv);
}

int shellStatus(int status) {
    const bool looksLikeSuccess = status != 0 && (status & 0xff) == 0;
    return looksLikeSuccess ? 255 : status;
}
