// Prints a table of the tool as one JSON object.

#include "tables/Tables.h"

#include <cstdio>
#include <jansson.h>
#include <string_view>

namespace {

bool print(json_t* table) {
    const bool written = json_dumpf(table, stdout, JSON_INDENT(2)) == 0 && std::puts("") >= 0 &&
                         std::fflush(stdout) == 0;
    json_decref(table);
    return written;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view wanted = argc == 2 ? argv[1] : "";
    if (wanted == "operations") {
        return print(operationTables()) ? 0 : 1;
    }
    if (wanted == "statuses") {
        return print(statusTables()) ? 0 : 1;
    }
    std::fputs("usage: akhostmgmt_tables operations | statuses\n", stderr);
    return 2;
}
