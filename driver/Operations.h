#pragma once

#include "cmdframework/Basecmd.h"

#include <memory>

/// The operation that the command line asks for: that of the first row of the table of operations
/// whose option or alias is present, wherever that stands on the line.
/// @throws CUsagecmd code 0 when there is none
std::unique_ptr<CBasecmd> chooseOperation(const CArgscmd& args, CLogcmd& log);

/// Prints the synopsis of every operation.
void printSynopses();
