#include "https/ReplyFraming.h"

#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>

namespace arkeon {
namespace {

/// Calls `visit` with the value of each header line of this name in the final reply, until it
/// returns false.
template <typename Visit>
void visitLines(CURL* handle, const char* name, Visit visit) {
    curl_header* line = nullptr;
    std::size_t index = 0;
    while (curl_easy_header(handle, name, index, CURLH_HEADER, -1, &line) == CURLHE_OK &&
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

/// `text` as a number; nothing if it holds anything but digits or is beyond 63 bits.
std::optional<curl_off_t> lengthOf(std::string_view text) {
    curl_off_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    const bool number = error == std::errc() && end == text.data() + text.size() && text[0] != '-';
    return number ? std::optional(length) : std::nullopt;
}

}  // namespace

bool hasUnambiguousLength(CURL* handle) {
    bool unambiguous = true;
    std::optional<curl_off_t> first;
    visitLines(handle, "Content-Length", [&unambiguous, &first](const char* value) {
        const auto length = lengthOf(value);
        unambiguous = length && (!first || *first == *length);
        first = length;
        return unambiguous;
    });
    return unambiguous;
}

bool endsWithConnection(CURL* handle) {
    curl_off_t length = 0;
    curl_easy_getinfo(handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    return length < 0 && !isChunked(handle);
}

}  // namespace arkeon
