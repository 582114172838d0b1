#include "devserver/MediaType.h"

#include "devserver/Reply.h"
#include "devserver/Text.h"

namespace devserver::mediaTypes {

namespace {

/// A quality of zero means "not this one" (RFC 9110, 12.4.2).
bool isZeroQuality(std::string_view value) {
    return value.starts_with('0') && value.find_first_not_of("0.") == std::string_view::npos;
}

std::string_view unquoted(std::string_view value) {
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        return value.substr(1, value.size() - 2);
    }
    return value;
}

/// An element of such a header: the value and two of its parameters, empty when not there.
struct Element {
    std::string_view value;
    std::string_view version;
    bool excluded = false;
};

Element elementOf(std::string_view text) {
    Element element;
    for (const std::string_view part : text::split(text, ';')) {
        const std::size_t equals = part.find('=');
        if (equals == std::string_view::npos) {
            element.value = element.value.empty() ? text::trimmed(part) : element.value;
            continue;
        }
        const std::string_view name = text::trimmed(part.substr(0, equals));
        const std::string_view value = unquoted(text::trimmed(part.substr(equals + 1)));
        if (text::equalIgnoringCase(name, "version")) {
            element.version = value;
        } else if (text::equalIgnoringCase(name, "q")) {
            element.excluded = isZeroQuality(value);
        }
    }
    return element;
}

bool namesOurs(const Element& element) {
    return text::equalIgnoringCase(element.value, mediaType) &&
           (element.version.empty() || element.version == mediaTypeVersion);
}

bool isWildcard(std::string_view value) {
    return value == "*/*" || text::equalIgnoringCase(value, "application/*");
}

}  // namespace

bool accepts(std::string_view acceptHeader) {
    if (text::trimmed(acceptHeader).empty()) {
        return true;
    }
    for (const std::string_view part : text::split(acceptHeader, ',')) {
        const Element element = elementOf(part);
        if (!element.excluded && (namesOurs(element) || isWildcard(element.value))) {
            return true;
        }
    }
    return false;
}

bool isOurs(std::string_view contentTypeHeader) {
    return namesOurs(elementOf(contentTypeHeader));
}

bool acceptsGzip(std::string_view acceptEncodingHeader) {
    for (const std::string_view part : text::split(acceptEncodingHeader, ',')) {
        const Element element = elementOf(part);
        if (!element.excluded && text::equalIgnoringCase(element.value, "gzip")) {
            return true;
        }
    }
    return false;
}

}  // namespace devserver::mediaTypes
