// An HTTP status and a reply's body, after a byte that chooses the method, or the look-up of a
// name: the run's status and what is shown of it.

#include "fuzz/Input.h"
#include "fuzz/Output.h"
#include "fuzz/Property.h"
#include "hostmgmt/AkHostMgmtBaseOption.h"
#include "support/FakeClient.h"
#include "support/StatusLines.h"
#include "support/TestOperation.h"

#include <utility>

using fuzz::expect;

namespace {

constexpr unsigned lookUp = 5;

/// The code that a server's error reply gives, 7610 when that cannot be told.
int codeOf(const std::string& reply) {
    const JsonRef root(json_loadb(reply.data(), reply.size(), 0, nullptr));
    const json_t* code = json_object_get(root.get(), "errorCode");
    const json_t* message = json_object_get(root.get(), "errorMessage");
    const bool whole = json_is_integer(code) && json_is_string(message) &&
                       std::in_range<int>(json_integer_value(code));
    return whole ? static_cast<int>(json_integer_value(code)) : 7610;
}

std::string shownOf(int code) {
    if (code == 0) {
        return "";
    }
    return (code == 117 || code == 118 ? webLogin + "\n" : "") + lineOf(code);
}

void expectChange(unsigned method, int httpStatus, const std::string& reply) {
    const bool success = httpStatus == 200 || httpStatus == 201 ||
                         (httpStatus == 204 && (method == CURL_DELETE || method == CURL_PATCH));
    const int code = success ? 0 : codeOf(reply);
    const bool unknownMapping = method == CURL_DELETE && code == 8701;
    int result = -1;
    std::string response;
    int seenStatus = 0;
    const fuzz::Output output = fuzz::outputOf([&] {
        support::FakeClient client({{0, httpStatus, reply}});
        TestOperation test;
        result = test.operation.sendRequest(
            OP_DELETE_MAPPING, static_cast<CurlRequestType>(method), "", "n", "i", response,
            seenStatus, USER_LOGIN);
    });
    expect(output.out.empty(), "a request prints nothing itself");
    expect(response == reply && seenStatus == httpStatus, "the reply is handed over");
    expect(result == (unknownMapping ? 8901 : code), "the server's code is the run's status");
    expect(
        output.err == (unknownMapping ? "Exit Status 8901: The mapping name that was provided does "
                                        "not exist.\n"
                                      : shownOf(code)),
        "the status is shown with its text and no other");
}

/// The status of a look-up; 0 with the host ID.
int lookUpIn(const std::string& reply, std::string& hostId) {
    const JsonRef root(json_loadb(reply.data(), reply.size(), 0, nullptr));
    const json_t* hosts = json_object_get(root.get(), "hosts");
    if (!json_is_array(hosts) || json_array_size(hosts) != 1) {
        return !json_is_array(hosts) ? 7610 : (json_array_size(hosts) == 0 ? 8701 : 8900);
    }
    const json_t* uuid = json_object_get(json_array_get(hosts, 0), "uuid");
    hostId = json_is_string(uuid) ? json_string_value(uuid) : "";
    return hostId.empty() ? 7610 : 0;
}

std::string shownOfLookUp(int code) {
    return code == 8900 ? "Exit Status 8900: The host name that was provided must be associated "
                          "with a single host ID.\n"
                        : shownOf(code);
}

void expectLookUp(int httpStatus, const std::string& reply) {
    std::string wanted;
    int code = httpStatus == 200 ? lookUpIn(reply, wanted) : codeOf(reply);
    if (httpStatus != 200 && code == 0) {
        code = 7610;
    }
    int result = -1;
    std::string hostId;
    const fuzz::Output output = fuzz::outputOf([&] {
        support::FakeClient client({{0, httpStatus, reply}});
        TestOperation test({"-host", "n", "-server", "p"});
        result = test.operation.getUuid(hostId);
    });
    expect(output.out.empty(), "a look-up prints nothing itself");
    expect(result == code && hostId == wanted, "a look-up gives the one host's ID or a status");
    // A code of the server's own is shown with the catalogue's text, 8900 too.
    const std::string shown = httpStatus == 200 ? shownOfLookUp(code) : shownOf(code);
    expect(output.err == shown, "the status is shown with its text and no other");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const unsigned choice = input.byte() % (lookUp + 1);
    const unsigned high = input.byte();
    const auto httpStatus = static_cast<int>(100 + (high * 256 + input.byte()) % 900);
    if (choice == lookUp) {
        expectLookUp(httpStatus, input.rest());
    } else {
        expectChange(choice, httpStatus, input.rest());
    }
    return 0;
}
