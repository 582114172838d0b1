#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"
#include "hostmgmt/ListLabels.h"

#include <cstdint>
#include <optional>
#include <string>

/// `-list`: reads host records from the primary server and prints them in the long, the short, the
/// JSON or the compact JSON format.
class AkHostMgmtList : public AkHostMgmtBaseOption {
public:
    AkHostMgmtList(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first broken rule
    void checkArguments() override;

    /// @return 0, a status of the request, or 8902 when a host named by `-host` has no mappings
    int execute() override;

    void printUsage() override;

    /// Prints the synopsis.
    static void printHelp();

    /// Prints a successful reply in the format that was asked for. A reply that is not JSON is
    /// reported on standard error, and that is all.
    void printOutput(std::string response);

    /// Prints the mappings of one host: a table, or in the short format its names. A mapping
    /// without a name is "(null)" in the table and has the empty name in the short format.
    void printMappedHostNames(json_t* host, const char* primaryName);

    /// Prints the rows of the mapping table; in the unfiltered listing the approved mappings first.
    void printSortedHostNames(json_t* host, const char* primaryName);

    /// Prints one row for each mapping; in the unfiltered listing only for those whose approval is
    /// `filter`.
    void printFilteredHostName(json_t* mappings, unsigned long count, const std::string& filter);

    /// @return 1 if some mapping of the host has the primary name, else 0
    int primaryHostExist(const json_t* host, const char* primaryName) const;

private:
    struct Query;

    void countFilters();
    int chooseQuery(Query& query);
    int findOwnHostId(std::string& hostId);
    int printHosts(std::string response);
    int reportNothingFound();
    const ListLabels& labels();
    void printHostList();
    void printSingleHost(json_t* host);
    void printHost(json_t* host);
    void printShortHeader();
    void printLongBlock(const json_t* host);
    void printShortNames(const json_t* host, const char* primaryName);
    void printMappingRow(json_t* mapping, const char* approval);

    std::int32_t optionCount = 0;    ///< the number of filters given
    bool hostList = true;            ///< false: the reply is one host record
    bool ownMappings = false;        ///< the reply is the local host's own record
    std::int32_t listOperation = 0;  ///< OP_ALL_MAPPINGS in the unfiltered listing
    bool replyParsed = false;        ///< the JSON object holds the reply already
    std::optional<ListLabels> fetchedLabels;
};
