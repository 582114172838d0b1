#include "https/ReplyFraming.h"

#include "https/ClientLibraries.h"

#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>

namespace arkeon {
namespace {

/// Calls `visit` with the value of each line of the final reply's head that has this name, until it
/// returns false.
template <typename Visit>
void visitLines(CURL* handle, const char* name, Visit visit) {
    curl_header* line = nullptr;
    std::size_t index = 0;
    while (client().curl_easy_header(handle, name, index, CURLH_HEADER, -1, &line) == CURLHE_OK &&
           visit(line->value)) {
        ++index;
    }
}

bool isChunked(CURL* handle) {
    bool found = false;
    visitLines(handle, "Transfer-Encoding", [&found](const char* value) {
        found = strcasestr(value, "chunked") != nullptr;
        return !found;
    });
    return found;
}

/// The number that `text` is; nothing for a sign, anything else than digits, or a number beyond 63
/// bits.
std::optional<curl_off_t> lengthOf(std::string_view text) {
    curl_off_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    const bool number = error == std::errc() && end == text.data() + text.size() && text[0] != '-';
    return number ? std::optional(length) : std::nullopt;
}

}  // namespace

bool hasClearLength(CURL* handle) {
    bool clear = true;
    std::optional<curl_off_t> first;
    visitLines(handle, "Content-Length", [&clear, &first](const char* value) {
        const auto length = lengthOf(value);
        clear = length && (!first || *first == *length);
        first = length;
        return clear;
    });
    return clear;
}

bool endsWithConnection(CURL* handle) {
    curl_off_t length = 0;
    client().curl_easy_getinfo(handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    return length < 0 && !isChunked(handle);
}

}  // namespace arkeon
