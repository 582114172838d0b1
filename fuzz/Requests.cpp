// Host ID, name, reason, server and a header line, each up to a NUL, and a text: what of them
// reaches the wire as request target, header, address and JSON.

#include "arkeon/AKClientCURL.h"
#include "arkeon/status.h"
#include "arkeon/text.h"
#include "client/RequestText.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"
#include "support/TestOperation.h"
#include "text/ServerNames.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <curl/curl.h>
#include <memory>
#include <regex>

using fuzz::expect;

namespace {

constexpr std::size_t any = std::string_view::npos;

constexpr const char* unreserved =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

bool hasByteBelow(std::string_view text, unsigned limit) {
    return std::any_of(text.begin(), text.end(), [limit](char letter) {
        return static_cast<unsigned char>(letter) < limit;
    });
}

unsigned char byteOf(std::string_view digits) {
    return static_cast<unsigned char>(std::stoul(std::string(digits), nullptr, 16));
}

void expectEncoded(const std::string& text) {
    const std::string encoded = arkeon::percentEncoded(text);
    std::string decoded;
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        if (encoded[i] == '%') {
            decoded += static_cast<char>(byteOf(encoded.substr(i + 1, 2)));
            i += 2;
        } else {
            expect(std::string_view(unreserved).find(encoded[i]) != any, "the rest is unreserved");
            decoded += encoded[i];
        }
    }
    expect(decoded == text, "a name that is encoded is the name when it is decoded");
}

/// Whether a server that normalizes paths would resolve `uri` to another resource.
bool hasDotSegment(const std::string& uri) {
    static const std::regex dot("%2e", std::regex::icase);
    std::string path = "/" + std::regex_replace(uri.substr(0, uri.find('?')), dot, ".") + "/";
    std::replace(path.begin(), path.end(), '#', '/');
    return path.find("/./") != any || path.find("/../") != any;
}

/// No text but the host ID, which is used as it is, can become another part of the target.
void expectTarget(const std::string& hostId, const std::string& name) {
    const std::string encoded = arkeon::percentEncoded(name);
    const std::string uri = resourceUri(OP_ADD_MAPPING, hostId, encoded);
    expect(uri == "arkeon/config/hosts/" + hostId + "/hostmappings/" + encoded, "a mapping's URI");
    const bool sent = arkeon::isRequestTarget(uri);
    const bool clean = !hasByteBelow(hostId, '!') && hostId.find('\x7f') == std::string::npos;
    expect(
        sent == (clean && !hasDotSegment(uri)),
        "a target has no space, no control character and no dot segment");
}

void expectHeader(const std::string& line) {
    const auto header = arkeon::curlHeader(line);
    if (header) {
        const std::size_t colon = line.find(':');
        const std::string name = line.substr(0, colon);
        expect(
            !name.empty() && name.find_first_of(" \t;,\"()<>@[]{}\\/=?") == std::string::npos,
            "a header line has a name");
        expect(
            !hasByteBelow(line, ' ') && line.find('\x7f') == std::string::npos,
            "a header line has no control character");
        expect(*header == line || *header == name + ";", "it is sent as it is, or without a value");
    }
}

struct UrlRelease {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

std::string partOf(CURLU* url, CURLUPart part) {
    char* text = nullptr;
    curl_url_get(url, part, &text, 0);
    const std::string copy = text == nullptr ? "" : text;
    curl_free(text);
    return copy;
}

/// Two ways to write an IPv6 address are one host.
bool isSameHost(const std::string& one, const std::string& other) {
    std::array<in6_addr, 2> binary{};
    const auto read = [](const std::string& host, in6_addr& address) {
        return host.starts_with('[') &&
               inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(), &address) == 1;
    };
    return read(one, binary[0]) && read(other, binary[1])
               ? std::memcmp(&binary[0], &binary[1], sizeof binary[0]) == 0
               : equalIgnoringCase(one, other);
}

/// Even put together as text, the address has the server's name and nothing else of it.
void expectAddress(const std::string& server) {
    if (!arkeon::isServerName(server)) {
        return;
    }
    const std::string host = arkeon::urlHost(server);
    const std::unique_ptr<CURLU, UrlRelease> url(curl_url());
    const std::string text = "https://" + host + ":1556/";
    expect(
        curl_url_set(url.get(), CURLUPART_URL, text.c_str(), 0) == CURLUE_OK,
        "libcurl takes a server's name");
    expect(isSameHost(partOf(url.get(), CURLUPART_HOST), host), "it is the host");
    expect(partOf(url.get(), CURLUPART_PORT) == "1556", "the port is the tool's");
    expect(partOf(url.get(), CURLUPART_PATH) == "/", "there is no path in it");
    for (const CURLUPart part :
         {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_QUERY, CURLUPART_FRAGMENT, CURLUPART_ZONEID,
          CURLUPART_OPTIONS}) {
        expect(partOf(url.get(), part).empty(), "nor anything else");
    }
}

/// Without certificate information nothing can be sent: the client refuses what it may not send
/// first.
void expectRefusal(
    const std::string& server, const std::string& uri, const std::string& reason,
    const std::string& line) {
    AKClientCURL client(server, 1556, 1, AKCurlSessionType::rest, nullptr);
    client.setupAcceptCurlOption("X-Arkeon-Audit-Reason: " + arkeon::percentEncoded(reason));
    client.setupAcceptCurlOption(line);
    const bool mayGo = arkeon::isRequestTarget(uri) && arkeon::curlHeader(line);
    const int wanted = !arkeon::isServerName(server) ? arkeon::status::invalidServerName
                       : !mayGo                      ? arkeon::status::invalidRequestTarget
                                                     : arkeon::status::noCertificateEntry;
    expect(client.Get(uri) == wanted, "the client refuses what it must not send");
}

void expectBody(const std::string& text) {
    if (!arkeon::isUtf8(text)) {
        return;  // refused with the arguments
    }
    TestOperation test;
    test.operation.setJSONObject("comment", text.c_str());
    const std::string body = test.operation.getJSONpayload();
    expect(arkeon::isUtf8(body) && !hasByteBelow(body, ' '), "a body is UTF-8 in one line");
    const JsonRef parsedBody(json_loadb(body.data(), body.size(), JSON_REJECT_DUPLICATES, nullptr));
    const char* comment = stringMember(parsedBody.get(), "comment");
    expect(json_object_size(parsedBody.get()) == 1, "a body has one member");
    expect(comment != nullptr && comment == text, "it is the text again when it is read");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::string hostId = input.text();
    const std::string name = input.text();
    const std::string reason = input.text();
    const std::string server = input.text();
    const std::string line = input.text();
    expectEncoded(name);
    expectEncoded(reason);
    expectTarget(hostId, name);
    expectHeader(line);
    expectAddress(server);
    expectRefusal(server, hostId, reason, line);
    expectBody(input.text());
    return 0;
}
