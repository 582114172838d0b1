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
    {add, add_alias, make<AkHostMgmtAdd>},
    {delete_cmd, delete_alias, make<AkHostMgmtDelete>},
    {lst, list_alias, make<AkHostMgmtList>},
    {addcomment, addcomment_alias, make<AkHostMgmtComment>},
    {deletecomment, deletecomment_alias, make<AkHostMgmtComment>},
    {setautoreissuecert, setautoreissuecert_alias, make<AkHostMgmtReissueCert>},
    {addhost, addhost_alias, make<AkHostMgmtAddHost>},
    {updatehost, updatehost_alias, make<AkHostMgmtUpdateHost>},
};

// In the order of the top-level help.
constexpr void (*synopses[])() = {
    AkHostMgmtAdd::printHelp,        AkHostMgmtDelete::printHelp,      AkHostMgmtList::printHelp,
    AkHostMgmtComment::printHelp,    AkHostMgmtReissueCert::printHelp, AkHostMgmtAddHost::printHelp,
    AkHostMgmtUpdateHost::printHelp,
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
