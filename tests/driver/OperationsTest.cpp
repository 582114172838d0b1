#include "driver/Operations.h"

#include "hostmgmt/AkHostMgmtList.h"
#include "support/CommandLine.h"
#include "support/LogLines.h"
#include "support/Streams.h"
#include "support/Throws.h"

#include <gtest/gtest.h>

namespace {

template <typename Class>
bool chooses(const std::vector<std::string>& options) {
    LogLines lines;
    return dynamic_cast<Class*>(chooseOperation(parsed(options), lines.log).get()) != nullptr;
}

TEST(Operations, AreChosenByNameOrAliasInAnyLetterCaseAndPlace) {
    EXPECT_TRUE(chooses<AkHostMgmtList>({"-list"}));
    EXPECT_TRUE(chooses<AkHostMgmtList>({"-LI"}));
    EXPECT_TRUE(chooses<AkHostMgmtList>({"-help", "-server", "x", "-List"}));
}

TEST(Operations, ACommandLineWithoutOneIsRefused) {
    LogLines lines;
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{}, {"-help"}, {"-lis"}, {"-listing"}, {"--list"}}) {
        EXPECT_EQ(
            usageFailureOf([&] { chooseOperation(parsed(options), lines.log); }),
            "An invalid option was used.");
    }
}

TEST(Operations, EverySynopsisIsPrinted) {
    const std::string printed = printedBy(printSynopses).out;
    EXPECT_EQ(printed, printedBy(AkHostMgmtList::printHelp).out);
}

}  // namespace
