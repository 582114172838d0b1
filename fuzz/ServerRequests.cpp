// A request to the development server: target, Accept, Content-Type and Accept-Encoding, each up to
// a NUL, and the body.

#include "client/RequestText.h"
#include "devserver/Address.h"
#include "devserver/HostRecord.h"
#include "devserver/MediaType.h"
#include "devserver/Reply.h"
#include "devserver/RequestBody.h"
#include "devserver/Text.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"
#include "hostmgmt/ArgumentRules.h"

#include <jansson.h>
#include <memory>

using devserver::Address;
using fuzz::expect;

namespace {

using Json = std::unique_ptr<json_t, decltype(&json_decref)>;

bool isName(const std::string& name) {
    return !name.empty() && name.size() <= maxHostName && devserver::text::isPlain(name);
}

/// What a body gives; nothing where it is refused.
template <typename Read>
auto read(Read reader, const std::string& body) -> std::optional<decltype(reader(body))> {
    try {
        return reader(body);
    } catch (const devserver::Refusal& refusal) {
        expect(refusal.kind.status == 400, "a body that is refused is the client's mistake");
        return std::nullopt;
    }
}

void expectBody(const std::string& body) {
    namespace bodies = devserver::requestBody;
    const auto shared = read(bodies::isShared, body);
    const auto comment = read(bodies::comment, body);
    const auto name = read(bodies::hostName, body);
    const auto patch = read(bodies::hostPatch, body);
    expect(!comment || comment->size() <= maxComment, "a comment keeps its limit");
    expect(!name || isName(*name), "a name is one");
    expect(!patch || !patch->hostName || isName(*patch->hostName), "also in a patch");
    expect(!patch || patch->hostName || patch->autoReissue, "a patch changes something");
    expect((shared ? 1 : 0) + (comment ? 1 : 0) + (patch ? 1 : 0) <= 1, "a body has one meaning");
    expect(!name || (patch && patch->hostName == name && !patch->autoReissue), "a name patches");
}

std::string targetOf(const Address& address) {
    return "/arkeon/config/hosts/" + arkeon::percentEncoded(address.hostId) + "/hostmappings/" +
           arkeon::percentEncoded(address.mappedName);
}

void expectAddress(const std::string& target) {
    const Address address = devserver::parseAddress(target);
    if (address.malformed || address.resource != Address::Resource::mapping) {
        return;
    }
    const Address again = devserver::parseAddress(targetOf(address));
    expect(
        again.resource == address.resource && again.hostId == address.hostId &&
            again.mappedName == address.mappedName,
        "an address that the tool makes of the same names is the same");
}

void expectMediaTypes(
    const std::string& accept, const std::string& contentType, const std::string& encoding) {
    using namespace devserver;
    const std::string ours = mediaType;
    expect(mediaTypes::accepts(accept + ", " + ours), "the server's type may stand last");
    expect(
        !mediaTypes::isOurs(contentType) || mediaTypes::accepts(contentType) ||
            contentType.find_first_of(",=") != std::string::npos,
        "what is sent may be asked for");
    expect(mediaTypes::acceptsGzip(encoding + ", gzip"), "gzip may stand last");
}

/// The server writes its JSON by hand.
void expectJson(const std::string& text) {
    std::string json = "[";
    devserver::appendJsonText(json, text);
    json += "]";
    const Json parsed(json_loadb(json.data(), json.size(), JSON_ALLOW_NUL, nullptr), json_decref);
    const Json wanted(json_stringn(text.data(), text.size()), json_decref);
    if (wanted != nullptr) {
        expect(
            json_equal(json_array_get(parsed.get(), 0), wanted.get()) == 1,
            "a text is read as it was written");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    expectAddress(input.text());
    const std::string accept = input.text();
    const std::string contentType = input.text();
    expectMediaTypes(accept, contentType, input.text());
    expectBody(input.rest());
    expectJson(input.rest());
    return 0;
}
