// Standard input of -addhost: the answer, and what is left for whoever reads next.

#include "arkeon/console.h"
#include "fuzz/Input.h"
#include "fuzz/Output.h"
#include "fuzz/Property.h"
#include "hostmgmt/operations/AkHostMgmtAddHost.h"
#include "support/CommandLine.h"
#include "support/FakeClient.h"
#include "support/StandardInput.h"

#include <algorithm>

using fuzz::expect;

namespace {

/// What becomes of an input.
struct Decision {
    bool adds = true;
    std::size_t refused = 0;  ///< lines that were no answer
    std::string rest;
};

std::string lowerAscii(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return text;
}

Decision decide(std::string_view input) {
    Decision decision;
    for (;;) {
        const std::size_t end = input.find('\n');
        const std::string line = lowerAscii(std::string(input.substr(0, end)));
        const bool last = end == std::string_view::npos;
        const bool no = line == "n" || line == "no";
        if (last || no || line == "y" || line == "yes") {
            decision.adds = !no;
            decision.rest = last ? "" : input.substr(end + 1);
            return decision;
        }
        ++decision.refused;
        input.remove_prefix(end + 1);
    }
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input = fuzz::Input(data, size).rest();
    const Decision decision = decide(input);
    std::deque<support::FakeReply> replies;
    if (decision.adds) {
        replies.push_back({0, 201, "{}"});
    }
    int result = -1;
    std::size_t requests = 0;
    std::string rest;
    const fuzz::Output output = fuzz::outputOf([&] {
        const support::StandardInput answers(input);
        support::FakeClient client(replies);
        CLogcmd log;
        AkHostMgmtAddHost operation(parsed({"-addhost", "-host", "h", "-server", "p"}), log);
        operation.checkArguments();
        result = operation.execute();
        requests = client.requests.size();
        rest = support::StandardInput::rest();
    });
    expect(result == 0, "both answers are no failure");
    expect(requests == (decision.adds ? 1 : 0), "the host is added if and only if that is wanted");
    expect(rest == decision.rest, "no byte after the answer's line is taken");
    expect(
        countOf(output.out, "Please type 'y' for yes or 'n' for no: ") == decision.refused,
        "every line that is no answer is asked again");
    return 0;
}
