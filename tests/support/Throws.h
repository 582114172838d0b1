#pragma once

#include "cmdframework/Runtimecmd.h"
#include "cmdframework/Usagecmd.h"

#include <gtest/gtest.h>
#include <string>

/// The text of the usage failure that `code` throws; a test failure when it throws none.
template <typename Code>
std::string usageFailureOf(Code code) {
    try {
        code();
    } catch (const CUsagecmd& failure) {
        return failure.what();
    }
    ADD_FAILURE() << "no usage failure was thrown";
    return {};
}

/// The same for a run-time failure, with its status behind the text.
template <typename Code>
std::string runTimeFailureOf(Code code) {
    try {
        code();
    } catch (const CRuntimecmd& failure) {
        return failure.what() + std::string(" => ") + std::to_string(failure.errcode());
    }
    ADD_FAILURE() << "no run-time failure was thrown";
    return {};
}
