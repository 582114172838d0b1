// The text of a fault rule of the development server.

#include "devserver/Failure.h"
#include "devserver/Faults.h"
#include "devserver/Text.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"

using namespace devserver;
using fuzz::expect;

namespace {

void expectReply(const Fault& fault) {
    const Reply reply = fault.replacement();
    expect(reply.status >= 200 && reply.status <= 599, "a reply has a status");
    for (const auto& [name, value] : reply.headers) {
        expect(text::isPlain(value), "a header line is one line");
    }
}

void expectRule(FaultRule rule) {
    const std::string method = rule.method == "*" ? "GET" : rule.method;
    std::string target = rule.pattern;
    if (target.ends_with('*')) {
        target.back() = 'x';
    }
    const bool ofConnection = rule.certificate != CertificateFault::none;
    rule.remaining = 1;
    Faults faults({rule});
    const auto fault = faults.forRequest(method, target);
    expect(fault.has_value() != ofConnection, "a rule applies to what it names");
    expect(!faults.forRequest(method, target), "and once");
    expect(
        (faults.forConnection() != CertificateFault::none) == ofConnection,
        "a rule of connections applies to a connection");
    if (fault && fault->replacesReply()) {
        expectReply(*fault);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const FaultRule rule = parseFaultRule(fuzz::Input(data, size).rest());
        expect(rule.remaining > 0, "a rule applies at least once");
        expectRule(rule);
    } catch (const Failure& failure) {
        expect(text::isPlain(failure.what()), "a refusal is shown as one plain line");
    }
    return 0;
}
