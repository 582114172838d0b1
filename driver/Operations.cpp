#include "driver/Operations.h"

#include "cmdframework/Usagecmd.h"
#include "hostmgmt/operations/AkHostMgmtAdd.h"
#include "hostmgmt/operations/AkHostMgmtAddHost.h"
#include "hostmgmt/operations/AkHostMgmtComment.h"
#include "hostmgmt/operations/AkHostMgmtDelete.h"
#include "hostmgmt/operations/AkHostMgmtList.h"
#include "hostmgmt/operations/AkHostMgmtReissueCert.h"
#include "hostmgmt/operations/AkHostMgmtUpdateHost.h"

namespace {

template <typename Class>
std::unique_ptr<CBasecmd> make(const CArgscmd& args, CLogcmd& log) {
    return std::make_unique<Class>(args, log);
}

// Tested from the top; the top-level help has the same order.
constexpr Operation operations[] = {
    {operation::add, make<AkHostMgmtAdd>, AkHostMgmtAdd::printHelp},
    {operation::delete_cmd, make<AkHostMgmtDelete>, AkHostMgmtDelete::printHelp},
    {operation::lst, make<AkHostMgmtList>, AkHostMgmtList::printHelp},
    {operation::addcomment, make<AkHostMgmtComment>, AkHostMgmtComment::printAddCommentHelp},
    {operation::deletecomment, make<AkHostMgmtComment>, AkHostMgmtComment::printDeleteCommentHelp},
    {operation::setautoreissuecert, make<AkHostMgmtReissueCert>, AkHostMgmtReissueCert::printHelp},
    {operation::addhost, make<AkHostMgmtAddHost>, AkHostMgmtAddHost::printHelp},
    {operation::updatehost, make<AkHostMgmtUpdateHost>, AkHostMgmtUpdateHost::printHelp},
};

}  // namespace

std::span<const Operation> allOperations() {
    return operations;
}

std::unique_ptr<CBasecmd> chooseOperation(const CArgscmd& args, CLogcmd& log) {
    for (const Operation& row : allOperations()) {
        if (isGiven(args, row.option)) {
            return row.make(args, log);
        }
    }
    throw CUsagecmd(invalidOption);
}

void printSynopses() {
    for (const Operation& row : allOperations()) {
        row.printSynopsis();
    }
}
