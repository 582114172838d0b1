#pragma once

#include "devserver/JsonPtr.h"

#include <jansson.h>

#include <string>
#include <vector>

namespace devserver::testing {

/// Null when the text is no JSON.
inline JsonPtr parse(const std::string& text) {
    return JsonPtr(json_loadb(text.data(), text.size(), 0, nullptr));
}

/// The text under a key; "(none)" when there is none.
inline std::string textAt(const json_t* object, const char* key) {
    const char* text = json_string_value(json_object_get(object, key));
    return text == nullptr ? "(none)" : text;
}

/// A listing in short: "hostName: name, name; hostName: ...".
inline std::string inShort(const std::string& listing) {
    const JsonPtr root = parse(listing);
    const json_t* all = json_object_get(root.get(), "hosts");
    if (!json_is_array(all)) {
        return "no listing";
    }
    std::string text;
    for (std::size_t i = 0; i < json_array_size(all); ++i) {
        const json_t* host = json_array_get(all, i);
        text += (i == 0 ? "" : "; ") + textAt(host, "hostName") + ':';
        const json_t* mappings = json_object_get(host, "hostMappings");
        for (std::size_t j = 0; j < json_array_size(mappings); ++j) {
            text += (j == 0 ? " " : ", ") + textAt(json_array_get(mappings, j), "mappedHostName");
        }
    }
    return text;
}

inline std::vector<std::string> keysOf(const json_t* object) {
    std::vector<std::string> keys;
    const char* key = nullptr;
    json_t* value = nullptr;
    // The macro only reads, but jansson's iterators want an object they might change.
    json_object_foreach(const_cast<json_t*>(object), key, value) {
        keys.emplace_back(key);
    }
    return keys;
}

}  // namespace devserver::testing
