// A command line, its words ended by NUL: the argument vector, the choice of the operation, and the
// operation's rules.

#include "arkeon/text.h"
#include "cmdframework/Usagecmd.h"
#include "driver/Operations.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"
#include "hostmgmt/ArgumentRules.h"
#include "hostmgmt/operations/AkHostMgmtAdd.h"
#include "hostmgmt/operations/AkHostMgmtAddHost.h"
#include "hostmgmt/operations/AkHostMgmtComment.h"
#include "hostmgmt/operations/AkHostMgmtDelete.h"
#include "hostmgmt/operations/AkHostMgmtList.h"
#include "hostmgmt/operations/AkHostMgmtReissueCert.h"
#include "hostmgmt/operations/AkHostMgmtUpdateHost.h"
#include "support/CommandLine.h"

#include <algorithm>
#include <cstdlib>
#include <typeinfo>

using fuzz::expect;

namespace {

/// What an operation is told by, and what it cannot do without.
struct Row {
    OptionName option;
    const std::type_info& type;
    OptionName needed;
    std::size_t reasonLimit;
};

constexpr std::size_t any = std::string::npos;

const Row rows[] = {
    {operation::add, typeid(AkHostMgmtAdd), option::mappingname, maxReason},
    {operation::delete_cmd, typeid(AkHostMgmtDelete), option::mappingname, maxReason},
    {operation::lst, typeid(AkHostMgmtList), operation::lst, any},
    {operation::addcomment, typeid(AkHostMgmtComment), option::comment, any},
    {operation::deletecomment, typeid(AkHostMgmtComment), operation::deletecomment, any},
    {operation::setautoreissuecert, typeid(AkHostMgmtReissueCert), option::autoreissue, any},
    {operation::addhost, typeid(AkHostMgmtAddHost), option::host, any},
    {operation::updatehost, typeid(AkHostMgmtUpdateHost), option::newhostname, any},
};

void expectTheSameAgain(const CArgscmd& args) {
    std::vector<std::string> words;
    for (const auto& [name, value] : args.options()) {
        expect(!value.starts_with('-'), "a value does not begin with a dash");
        words.push_back("-" + name);
        if (!value.empty()) {
            words.push_back(value);
        }
    }
    expect(
        std::ranges::equal(parsed(words).options(), args.options()),
        "options and values are what they would be on a command line of their own");
}

void expectRightOperation(const CArgscmd& args, const CBasecmd* chosen) {
    const Row* row = std::find_if(std::begin(rows), std::end(rows), [&](const Row& each) {
        return isGiven(args, each.option);
    });
    if (chosen == nullptr) {
        expect(row == std::end(rows), "an operation that is on the line is found");
    } else {
        expect(row != std::end(rows) && typeid(*chosen) == row->type, "the first one wins");
    }
}

void expectTexts(const CArgscmd& args, std::size_t reasonLimit) {
    for (const OptionName name :
         {option::host, option::hostid, option::mappingname, option::newhostname}) {
        expect(
            valueOf(args, name).find_first_of("/\\") == std::string::npos, "names have no slashes");
    }
    for (const OptionName name : {option::host, option::mappingname, option::newhostname}) {
        expect(valueOf(args, name).size() <= maxHostName, "names keep their limit");
    }
    expect(valueOf(args, option::comment).size() <= maxComment, "a comment keeps its limit");
    expect(valueOf(args, option::reason).size() <= reasonLimit, "a reason keeps its limit");
    expect(
        arkeon::isUtf8(valueOf(args, option::comment)) &&
            arkeon::isUtf8(valueOf(args, option::newhostname)),
        "what goes into a body is UTF-8");
}

/// 0 or 1, as strtoull reads it, without a minus sign.
void expectSwitch(const std::string& value) {
    char* end = nullptr;
    const unsigned long long number = std::strtoull(value.c_str(), &end, 10);
    const bool ends = std::string_view(end).find_first_not_of(" \t\n\v\f\r") == any;
    const bool negative = value.find('-') != std::string::npos;
    expect(ends && !negative && number <= 1, "autoreissue is 0 or 1");
}

/// What an operation may count on after the check.
void expectAccepted(const CArgscmd& args) {
    const Row& row = *std::find_if(std::begin(rows), std::end(rows), [&](const Row& each) {
        return isGiven(args, each.option);
    });
    const bool byId = isGiven(args, option::hostid);
    const bool byName = isGiven(args, option::host);
    expect(!isGiven(args, option::help), "a request for help is not an operation");
    expect(isGiven(args, row.needed), "what the operation needs is there");
    expect(!(byId && byName), "a host is named once");
    expect(byId || byName || row.type == typeid(AkHostMgmtList), "a host is named");
    expectTexts(args, row.reasonLimit);
    if (row.type == typeid(AkHostMgmtAddHost)) {
        expect(arkeon::isUtf8(valueOf(args, option::host)), "a new host's name is UTF-8");
    }
    if (isGiven(args, option::autoreissue)) {
        expectSwitch(valueOf(args, option::autoreissue));
    }
}

void expectWords(const CUsagecmd& failure, const std::vector<std::string>& words) {
    const std::string text = failure.what();
    expect(!text.empty() && text.size() < 1024, "a refusal has words");
    if (std::all_of(words.begin(), words.end(), arkeon::isUtf8)) {
        expect(arkeon::isUtf8(text), "no letter of a refusal is split");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> words = fuzz::Input(data, size).texts();
    CLogcmd log;
    std::unique_ptr<CBasecmd> operation;
    try {
        const CArgscmd args = parsed(words);
        expectTheSameAgain(args);
        try {
            operation = chooseOperation(args, log);
        } catch (const CUsagecmd&) {
            expectRightOperation(args, nullptr);
            throw;
        }
        expectRightOperation(args, operation.get());
        operation->checkArguments();
        expectAccepted(args);
    } catch (const CUsagecmd& failure) {
        expectWords(failure, words);
    }
    return 0;
}
