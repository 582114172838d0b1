#include "driver/Operations.h"

#include "hostmgmt/operations/AkHostMgmtAdd.h"
#include "hostmgmt/operations/AkHostMgmtAddHost.h"
#include "hostmgmt/operations/AkHostMgmtComment.h"
#include "hostmgmt/operations/AkHostMgmtDelete.h"
#include "hostmgmt/operations/AkHostMgmtList.h"
#include "hostmgmt/operations/AkHostMgmtReissueCert.h"
#include "hostmgmt/operations/AkHostMgmtUpdateHost.h"
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
    EXPECT_TRUE(chooses<AkHostMgmtAdd>({"-add"}));
    EXPECT_TRUE(chooses<AkHostMgmtAdd>({"-A"}));
    EXPECT_TRUE(chooses<AkHostMgmtDelete>({"-Delete"}));
    EXPECT_TRUE(chooses<AkHostMgmtDelete>({"-d"}));
    EXPECT_TRUE(chooses<AkHostMgmtComment>({"-AddComment"}));
    EXPECT_TRUE(chooses<AkHostMgmtComment>({"-ac"}));
    EXPECT_TRUE(chooses<AkHostMgmtComment>({"-deletecomment"}));
    EXPECT_TRUE(chooses<AkHostMgmtComment>({"-DC"}));
    EXPECT_TRUE(chooses<AkHostMgmtReissueCert>({"-allowautoreissuecert"}));
    EXPECT_TRUE(chooses<AkHostMgmtReissueCert>({"-aa"}));
    EXPECT_TRUE(chooses<AkHostMgmtAddHost>({"-addhost"}));
    EXPECT_TRUE(chooses<AkHostMgmtAddHost>({"-Ah"}));
    EXPECT_TRUE(chooses<AkHostMgmtUpdateHost>({"-updatehost"}));
    EXPECT_TRUE(chooses<AkHostMgmtUpdateHost>({"-uh"}));
}

TEST(Operations, OfSeveralTheFirstOfAFixedOrderIsChosen) {
    EXPECT_TRUE(chooses<AkHostMgmtAdd>({"-delete", "-a"}));
    EXPECT_TRUE(chooses<AkHostMgmtDelete>({"-list", "-d"}));
    EXPECT_TRUE(chooses<AkHostMgmtList>({"-ac", "-li"}));
    EXPECT_TRUE(chooses<AkHostMgmtComment>({"-aa", "-dc"}));
    EXPECT_TRUE(chooses<AkHostMgmtReissueCert>({"-ah", "-aa"}));
    EXPECT_TRUE(chooses<AkHostMgmtAddHost>({"-uh", "-ah"}));
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
    std::string synopses;
    for (const auto printHelp :
         {AkHostMgmtAdd::printHelp, AkHostMgmtDelete::printHelp, AkHostMgmtList::printHelp,
          AkHostMgmtComment::printAddCommentHelp, AkHostMgmtComment::printDeleteCommentHelp,
          AkHostMgmtReissueCert::printHelp, AkHostMgmtAddHost::printHelp,
          AkHostMgmtUpdateHost::printHelp}) {
        synopses += printedBy(printHelp).out;
    }
    EXPECT_EQ(printed, synopses);
}

}  // namespace
