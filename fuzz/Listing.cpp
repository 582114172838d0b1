// Any reply of the server in every format of the listing. The first byte chooses the format.

#include "arkeon/console.h"
#include "hostmgmt/AkHostMgmtList.h"
#include "support/CommandLine.h"

#include <cstdint>
#include <fcntl.h>
#include <iterator>
#include <unistd.h>

namespace {

// The listing goes to standard output; the fuzzer's own reports to standard error.
void discardOutput() {
    static const bool discarded = [] {
        const int nowhere = open("/dev/null", O_WRONLY);
        return nowhere >= 0 && dup2(nowhere, STDOUT_FILENO) >= 0;
    }();
    static_cast<void>(discarded);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<std::string> formats[] = {
        {"-list"},
        {"-list", "-short"},
        {"-list", "-json"},
        {"-list", "-json_compact"},
    };
    if (size == 0) {
        return 0;
    }
    discardOutput();
    CLogcmd log;
    AkHostMgmtList operation(parsed(formats[data[0] % std::size(formats)]), log);
    operation.printOutput(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
    arkeon::Console::standard().flush();
    return 0;
}
