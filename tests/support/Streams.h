#pragma once

#include "arkeon/console.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

/// What a piece of code wrote to the standard streams.
struct Printed {
    std::string out;
    std::string err;
};

inline Printed printedBy(const std::function<void()>& code) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    code();
    arkeon::Console::standard().flush();
    Printed printed;
    printed.out = testing::internal::GetCapturedStdout();
    printed.err = testing::internal::GetCapturedStderr();
    return printed;
}
