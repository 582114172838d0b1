#include "driver/ExecuteAkHostMgmt.h"

#include "arkeon/catalogue.h"
#include "arkeon/console.h"
#include "arkeon/status.h"
#include "cmdframework/Messages.h"
#include "cmdframework/Runtimecmd.h"
#include "cmdframework/Usagecmd.h"
#include "driver/Operations.h"
#include "hostmgmt/OptionNames.h"

#include <ace/OS_NS_stdlib.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

using arkeon::Console;
using arkeon::Status;

namespace {

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

// Not translated: translating allocates memory.
constexpr const char* outOfMemoryLine =
    "Exit Status 20: There is not enough memory; check whether the change was made before trying "
    "again.\n";

// The locale of the run and the log of the process: both live until it ends.
zvlocale locale;
CLogcmd commandLog;

// The arguments of the run, which parsing changes; the caller's stay as they are. They live until
// the process ends.
char** argumentCopy = nullptr;

// @return null if memory ran out; nothing is then left allocated
char** copyArguments(int argc, char** argv) {
    const auto count = static_cast<std::size_t>(argc);
    auto** copy = static_cast<char**>(ACE_OS::malloc((count + 1) * sizeof(char*)));
    if (copy == nullptr) {
        return nullptr;
    }
    for (std::size_t i = 0; i < count; ++i) {
        copy[i] = strdup(argv[i]);
        if (copy[i] == nullptr) {
            std::for_each(copy, copy + i, std::free);
            ACE_OS::free(copy);
            return nullptr;
        }
    }
    copy[count] = nullptr;
    return copy;
}

// A message in the language that the run began with.
std::string text(const CatalogueText& message, const char* argument = nullptr) {
    std::array<char, operationTextSize> buffer{};
    zvgetmsg(message.id, locale, buffer.data(), buffer.size(), message.text, argument);
    return buffer.data();
}

bool isTopLevelHelp(int argc, const CArgscmd& args) {
    return argc == 2 && isGiven(args, operation::help);
}

// Recognizes a help request by the English text, on purpose: with a translated catalogue, a help
// request is shown and counted like any other usage failure.
// @return 0 if help was requested, else 144
Status reportUsageFailure(const CUsagecmd& failure, CBasecmd* operation) {
    const bool helpRequested = std::strcmp(failure.what(), "Help requested.") == 0;
    commandLog.logit(failure.what(), logLevel::ordinary);
    if (!helpRequested) {
        Console::standard().writeError(std::string(failure.what()) + "\n");
    }
    if (operation != nullptr) {
        operation->printUsage();
    } else {
        printHelp();
    }
    return helpRequested ? arkeon::status::success : arkeon::status::wrongCommandLine;
}

int reportRunTimeFailure(const CRuntimecmd& failure) {
    Console::standard().writeError(std::string(failure.what()) + "\n");
    commandLog.logit(failure);
    return failure.errcode();
}

// Lost output is a failure of a run that had none. A reader that closed the pipe on purpose gets no
// message.
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

void logResult(int status) {
    if (status != arkeon::status::success) {
        commandLog.logit(text(notSuccessful), logLevel::ordinary);
    }
    commandLog.logit("Return value is: " + std::to_string(status) + "\n", logLevel::ordinary);
}

}  // namespace

void printHelp() {
    Console& console = Console::standard();
    console.write(text(messages::usageHeading) + "\n");
    printSynopses();
    console.write(text(helpSynopsis, commandName) + "\n\n");
    console.write(text(description) + "\n");
    console.write(text(operationHelpHint) + "\n");
}

int execute_akhostmgmt(int argc, char** argv) {
    return execute_akhostmgmt_in(defaultLogDirectory, argc, argv);
}

int execute_akhostmgmt_in(const char* logDirectory, int argc, char** argv) {
    // Before anything is opened, so that no file gets a standard stream's descriptor.
    Console::standard();
    // A write beyond the file size limit (ulimit -f) is to fail like any other, not end the
    // process.
    std::signal(SIGXFSZ, SIG_IGN);
    int localeStatus = 0;
    zvgetlocaleEx(&locale, &localeStatus);

    int status = arkeon::status::success;
    std::unique_ptr<CBasecmd> operation;
    try {
        // Without memory for the copy the run continues as if no option had been typed.
        argumentCopy = copyArguments(argc, argv);
        commandLog.init(logDirectory, commandName, loggingSubDirectory, nullptr);
        const CArgscmd args(argc, argumentCopy);
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
    operation.reset();  // wraps the log's use count (see CLogcmd); lines are still written
    logResult(status);
    return status;
}

int shellStatus(int status) {
    const bool looksLikeSuccess = status != arkeon::status::success && (status & 0xff) == 0;
    return looksLikeSuccess ? 255 : status;
}

int runProcess(const char* logDirectory, int argc, char** argv) {
    try {
        return shellStatus(execute_akhostmgmt_in(logDirectory, argc, argv));
    } catch (const std::bad_alloc&) {
        Console::standard().writeError(outOfMemoryLine);
        return arkeon::status::generalFailure;
    }
}
