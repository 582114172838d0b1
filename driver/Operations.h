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

/// All operations, in order of precedence.
std::span<const Operation> allOperations();

/// Creates the operation of the first row whose option or alias is on the command line, at
/// any position.
/// @throws CUsagecmd code 0 if no row matches
std::unique_ptr<CBasecmd> chooseOperation(const CArgscmd& args, CLogcmd& log);

/// Prints the synopsis of every operation.
void printSynopses();
