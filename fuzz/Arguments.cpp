// Any command line: the argument vector, the option table and the rules of the listing. The words
// are the input's lines.

#include "cmdframework/Runtimecmd.h"
#include "cmdframework/Usagecmd.h"
#include "hostmgmt/AkHostMgmtList.h"
#include "support/CommandLine.h"

#include <cstdint>
#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
    std::vector<std::string> words;
    for (std::string word; std::getline(lines, word);) {
        words.push_back(word.c_str());  // a word ends at a NUL, as on a real command line
    }
    CLogcmd log;
    try {
        AkHostMgmtList(parsed(words), log).checkArguments();
    } catch (const CUsagecmd&) {
    } catch (const CRuntimecmd&) {
    }
    return 0;
}
