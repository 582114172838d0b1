#include "cmdframework/Basecmd.h"

#include "arkeon/text.h"
#include "cmdframework/Runtimecmd.h"
#include "cmdframework/Usagecmd.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

// The framework's own help option; its alias is a rule of each operation.
constexpr const char* helpOption = "help";

// A command without options has a table with no rows.
const PARAMETERS noOptions{};

// The detail of a failure never takes more than 255 bytes.
[[noreturn]] void reject(usageExceptions code, const std::string& detail) {
    std::array<char, 256> buffer{};
    arkeon::boundedCopy(buffer.data(), buffer.size(), detail);
    throw CUsagecmd(code, buffer.data());
}

}  // namespace

CBasecmd::CBasecmd(
    const char* newName, CArgscmd newArgs, const PARAMETERS* table, unsigned long count)
    : args(std::move(newArgs)), params(table, count) {
    if (newName == nullptr) {
        throw CRuntimecmd(commandNameIsNull);
    }
    name = newName;
}

CBasecmd::CBasecmd(const char* newName, CArgscmd newArgs)
    : CBasecmd(newName, std::move(newArgs), &noOptions, 0) {}

void CBasecmd::checkArguments() {
    if (args.exists(helpOption)) {
        throw CUsagecmd(helpRequested);
    }
    if (!name.empty()) {
        removeCmdNameFromArgs();
    }
    for (const auto& [id, row] : params) {
        checkRow(row);
    }
    for (const auto& [option, value] : args.options()) {
        const auto row = params.find(option);
        if (row == params.end()) {
            throw CUsagecmd(invalidOption, option.c_str());
        }
        args.validate(row->second.type, option);
        validateExpectedParamValue(row->second, option);
    }
    logParameters();
}

void CBasecmd::checkRow(const PARAMETERS& row) const {
    const bool byName = args.exists(row.name.c_str());
    const bool byAlias = args.exists(row.alias.c_str());
    if (!byName && !byAlias) {
        if (row.required == 1) {
            reject(
                requiredOptionMissing, row.alias.empty() ? row.name : row.name + "|" + row.alias);
        }
        return;
    }
    const std::string& given = byName ? row.name : row.alias;
    const bool takesValue = row.type != noValue;
    const bool hasValue = args.hasAValue(given.c_str());
    if (takesValue && !hasValue) {
        reject(valueMissing, given);
    }
    if (!takesValue && hasValue) {
        reject(valueNotUsed, given);
    }
    if (byName && byAlias) {
        reject(nameAndAliasGiven, row.name + "\n" + row.alias);
    }
}

void CBasecmd::removeCmdNameFromArgs() {
    if (!args.exists(name.c_str())) {
        throw CUsagecmd(commandOptionMissing);
    }
    if (args.hasAValue(name.c_str())) {
        throw CUsagecmd(commandOptionHasValue);
    }
    args.remove(name);
}

void CBasecmd::checkReturnStatus() const {
    if (returnStatus != 0) {
        throw CRuntimecmd(returnStatusNotZero, returnStatus, true);
    }
}

void CBasecmd::valueInSet(const PARAMETERS& row, const std::string& option) const {
    if (row.allowedValues == nullptr || row.allowedCount == 0) {
        return;
    }
    const std::string value = args.argValue(option.c_str());
    const bool allowed = std::any_of(
        row.allowedValues, row.allowedValues + row.allowedCount,
        [&value](const AllowedValue& entry) { return equalIgnoringCase(entry.text, value); });
    if (!allowed) {
        throw CUsagecmd(invalidValue, option.c_str());
    }
}

void CBasecmd::validateExpectedParamValue(const PARAMETERS& row, const std::string& option) const {
    if (row.type == stringValue) {
        valueInSet(row, option);
    }
}

void CBasecmd::logParameters() const {
    const std::string line = args.getProgramName() + " -" + name + " " + args.commandLine();
    log.logit(line.c_str(), logLevel::ordinary);  // up to the terminator inside the text
}
