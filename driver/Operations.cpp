#include "driver/Operations.h"

#include "cmdframework/Usagecmd.h"
#include "hostmgmt/AkHostMgmtList.h"

namespace {

/// One operation: the options that choose it and the class that performs it.
struct Operation {
    const char* name;
    const char* alias;
    std::unique_ptr<CBasecmd> (*make)(const CArgscmd& args, CLogcmd& log);
};

template <typename Class>
std::unique_ptr<CBasecmd> make(const CArgscmd& args, CLogcmd& log) {
    return std::make_unique<Class>(args, log);
}

using namespace topLevelAkHostMgmtOptions;

// Tested from the top.
constexpr Operation operations[] = {
    {lst, list_alias, make<AkHostMgmtList>},
};

// In the order of the top-level help.
constexpr void (*synopses[])() = {
    AkHostMgmtList::printHelp,
};

}  // namespace

std::unique_ptr<CBasecmd> chooseOperation(const CArgscmd& args, CLogcmd& log) {
    for (const Operation& operation : operations) {
        if (args.exists(operation.name) || args.exists(operation.alias)) {
            return operation.make(args, log);
        }
    }
    throw CUsagecmd(invalidOption);
}

void printSynopses() {
    for (const auto printHelp : synopses) {
        printHelp();
    }
}
