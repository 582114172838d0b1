#pragma once

#include "cmdframework/Messages.h"

#include <string>

class CLogcmd;

/// Logs the message of a success and prints it as a line; an empty message is an empty line.
void reportSuccess(const std::string& message, const CLogcmd& log);

/// Prints a synopsis as a line.
void printSynopsis(const CatalogueText& synopsis);

/// Prints a usage: heading, synopsis, description, and the examples, which are not translated.
void printUsageText(
    const CatalogueText& synopsis, const CatalogueText& description, const char* examples);
