#include "driver/Operations.h"

#include "cmdframework/Usagecmd.h"
#include "hostmgmt/AkHostMgmtAdd.h"
#include "hostmgmt/AkHostMgmtAddHost.h"
#include "hostmgmt/AkHostMgmtComment.h"
#include "hostmgmt/AkHostMgmtDelete.h"
#include "hostmgmt/AkHostMgmtList.h"
#include "hostmgmt/AkHostMgmtReissueCert.h"
#include "hostmgmt/AkHostMgmtUpdateHost.h"

namespace {

template <typename Class>
std::unique_ptr<CBasecmd> make(const CArgscmd& args, CLogcmd& log) {
    return std::make_unique<Class>(args, log);
}

// Tested from the top.
constexpr Operation operations[] = {
    {operation::add, make<AkHostMgmtAdd>},
    {operation::delete_cmd, make<AkHostMgmtDelete>},
    {operation::lst, make<AkHostMgmtList>},
    {operation::addcomment, make<AkHostMgmtComment>},
    {operation::deletecomment, make<AkHostMgmtComment>},
    {operation::setautoreissuecert, make<AkHostMgmtReissueCert>},
    {operation::addhost, make<AkHostMgmtAddHost>},
    {operation::updatehost, make<AkHostMgmtUpdateHost>},
};

// In the order of the top-level help.
constexpr void (*synopses[])() = {
    AkHostMgmtAdd::printHelp,        AkHostMgmtDelete::printHelp,      AkHostMgmtList::printHelp,
    AkHostMgmtComment::printHelp,    AkHostMgmtReissueCert::printHelp, AkHostMgmtAddHost::printHelp,
    AkHostMgmtUpdateHost::printHelp,
};

}  // namespace

std::span<const Operation> allOperations() {
    return operations;
}

std::unique_ptr<CBasecmd> chooseOperation(const CArgscmd& args, CLogcmd& log) {
    for (const Operation& row : allOperations()) {
        if (isOn(args, row.option)) {
            return row.make(args, log);
        }
    }
    throw CUsagecmd(invalidOption);
}

void printSynopses() {
    for (const auto printHelp : synopses) {
        printHelp();
    }
}
