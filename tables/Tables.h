#pragma once

#include <jansson.h>

/// The operations in the order in which the command line is looked through for them, each with its
/// options: `{"operations": [...], "help": ...}`. The caller owns the value.
json_t* operationTables();

/// The statuses by ascending number, each with what a shell sees of it, its English meaning and the
/// advice on a retry; `"unknown"` has the meaning (with `%d` for the number) and the advice of
/// every other number. The caller owns the value.
json_t* statusTables();
