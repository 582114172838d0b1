#include "driver/Operations.h"
#include "tables/Tables.h"

#include <cstdint>
#include <memory>

namespace {

const char* nameOf(parameterTypes type) {
    switch (type) {
    case noValue:
        return "none";
    case stringValue:
        return "string";
    case pathValue:
        return "path";
    case unsignedValue:
        return "unsigned";
    }
    return "";
}

json_t* valuesOf(const PARAMETERS& row) {
    json_t* values = json_array();
    for (std::uint32_t i = 0; i < row.allowedCount; ++i) {
        json_array_append_new(values, json_string(row.allowedValues[i].text));
    }
    return values;
}

json_t* describe(const PARAMETERS& row) {
    return json_pack(
        "{s:s, s:s, s:s, s:o}", "name", row.name.c_str(), "alias", row.alias.c_str(), "type",
        nameOf(row.type), "values", valuesOf(row));
}

json_t* describe(const Operation& operation) {
    CLogcmd log;
    const std::unique_ptr<CBasecmd> command = operation.make(CArgscmd(), log);
    json_t* options = json_array();
    for (const auto& [id, row] : command->parameters()) {
        json_array_append_new(options, describe(row));
    }
    return json_pack(
        "{s:s, s:s, s:o}", "name", operation.option.name, "alias", operation.option.alias,
        "options", options);
}

json_t* describeOperations() {
    json_t* list = json_array();
    for (const Operation& row : allOperations()) {
        json_array_append_new(list, describe(row));
    }
    return list;
}

}  // namespace

json_t* operationTables() {
    return json_pack(
        "{s:o, s:{s:s, s:s}}", "operations", describeOperations(), "help", "name",
        operation::help.name, "alias", operation::help.alias);
}
