#pragma once

#include "support/CommandLine.h"
#include "support/LogLines.h"

#include "cmdframework/Parameterscmd.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// What a row of an option table has to say.
struct OptionRow {
    const char* name;
    const char* alias;
    parameterTypes type = stringValue;
};

/// Holds the option table of the operation `Class` against `rows`; ids count from 1, nothing is
/// required, and no value is restricted.
template <typename Class>
void expectTable(const std::string& operationName, const std::vector<OptionRow>& rows) {
    LogLines lines;
    const Class operation(parsed({operationName}), lines.log);
    const CParameterscmd& table = operation.parameters();
    ASSERT_EQ(table.size(), rows.size());
    for (std::uint32_t id = 1; id <= rows.size(); ++id) {
        const PARAMETERS& row = table.at(id);
        const OptionRow& expected = rows[id - 1];
        EXPECT_EQ(row.name, expected.name);
        EXPECT_EQ(row.alias, expected.alias);
        EXPECT_EQ(row.type, expected.type) << row.name;
        EXPECT_EQ(row.required, 0U) << row.name;
        EXPECT_EQ(row.allowedValues, nullptr) << row.name;
        EXPECT_EQ(table.find(row.name)->first, id) << "no other row's alias";
        EXPECT_EQ(table.find(row.alias)->first, id) << "no other row's name";
    }
}
