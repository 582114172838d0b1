#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"
#include "hostmgmt/listing/ListPrinter.h"

#include <cstdint>
#include <string>

class ArgumentRules;

/// `-list`: reads host records from the primary server and prints them in the long, the short, the
/// JSON or the compact JSON format.
class AkHostMgmtList : public AkHostMgmtBaseOption {
public:
    static const PARAMETERS paramList[11];

    AkHostMgmtList(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first rule that is broken
    void checkArguments() override;

    /// @return 0, a status of the request, or 8902 if no host has the name given with `-host`
    int execute() override;

    void printUsage() override;

    /// Prints the synopsis.
    static void printHelp();

    /// Prints a successful reply in the format that was asked for. A reply that is not JSON is
    /// reported on standard error only; the run's status stays 0, on purpose.
    void printOutput(std::string response);

    /// `ListPrinter::printMappings`, `printSortedRows` and `printRows`.
    void printMappedHostNames(json_t* host, const char* primaryName);
    void printSortedHostNames(json_t* host, const char* primaryName);
    void printFilteredHostName(json_t* mappings, unsigned long count, const std::string& filter);

    /// @return 1 if a mapping of the host has the primary name, else 0
    int primaryHostExist(const json_t* host, const char* primaryName) const;

private:
    void countFilters(const ArgumentRules& rules);
    int chooseQuery(ServerRequest& query);
    int readOwnHostId(std::string& hostId);
    int printHosts(std::string response);
    int reportNothingFound();
    ListPrinter printer() const;

    std::int32_t optionCount = 0;    ///< the number of filters given
    bool hostList = true;            ///< false: the reply is one host record
    bool ownMappings = false;        ///< the reply is the local host's own record
    std::int32_t listOperation = 0;  ///< OP_ALL_MAPPINGS in the unfiltered listing
    bool replyParsed = false;        ///< the JSON object holds the reply already
};
