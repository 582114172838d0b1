#pragma once

#include "cmdframework/Basecmd.h"
#include "hostmgmt/OptionNames.h"

#include <memory>
#include <span>

/// One operation: the option that chooses it, the class that performs it, and what prints its
/// synopsis.
struct Operation {
    OptionName option;
    std::unique_ptr<CBasecmd> (*make)(const CArgscmd& args, CLogcmd& log);
    void (*printSynopsis)();
};

/// The table of operations, in the order in which the command line is looked through for them.
std::span<const Operation> allOperations();

/// The operation that the command line asks for: that of the first row of the table of operations
/// whose option or alias is present, wherever that stands on the line.
/// @throws CUsagecmd code 0 when there is none
std::unique_ptr<CBasecmd> chooseOperation(const CArgscmd& args, CLogcmd& log);

/// Prints the synopsis of every operation.
void printSynopses();
