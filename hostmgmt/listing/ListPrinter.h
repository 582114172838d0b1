#pragma once

#include "hostmgmt/listing/ListLabels.h"

#include <jansson.h>
#include <string>

/// Prints host records in the long or the short format on standard output.
class ListPrinter {
public:
    /// @param approvedFirst prints the approved mappings of a host before its pending ones, and
    ///        omits those whose approval is null
    ListPrinter(bool shortFormat, bool approvedFirst)
        : shortFormat_(shortFormat), approvedFirst_(approvedFirst) {}

    /// Prints an array of host records in the server's order; nothing if it is empty.
    void printHosts(const json_t* hosts) const;

    /// Prints one host record with its header.
    void printSingleHost(json_t* host) const;

    /// Prints the mappings of one host: a table, or in the short format its names. A mapping
    /// without a name is "(null)" in the table and has the empty name in the short format.
    void printMappings(json_t* host, const char* primaryName) const;

    /// Prints the rows of a host's mapping table.
    void printSortedRows(json_t* host) const;

    /// Prints a row for each mapping; with approved mappings first only for those whose approval is
    /// `filter` ("Yes" or "No").
    void printRows(json_t* mappings, unsigned long count, const std::string& filter) const;

private:
    void printHost(json_t* host) const;
    void printShortHeader() const;
    void printLongBlock(const json_t* host) const;
    void printShortNames(const json_t* host, const char* primaryName) const;
    void printMappingRow(json_t* mapping, const char* approval) const;

    bool shortFormat_;
    bool approvedFirst_;
    ListLabels labels_;
};

/// Whether a host has a mapping of this name; a mapping without a name has the empty one.
bool hasMapping(const json_t* host, const char* name);
