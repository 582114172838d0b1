// The tool with a debug log of the test's choice; nothing else differs from driver/main.cpp.

#include "driver/ExecuteAkHostMgmt.h"

#include <cstdlib>

/// AK_TEST_LOG_DIRECTORY: the directory that stands for /usr/zelvik/arkeon/logs.
int main(int argc, char** argv) {
    return runProcess(std::getenv("AK_TEST_LOG_DIRECTORY"), argc, argv);
}
