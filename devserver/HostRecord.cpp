#include "devserver/HostRecord.h"

#include "devserver/Text.h"

#include <chrono>

namespace devserver {

namespace {

/// The letter of JSON's short escape of a character, 0 where it has none.
char shortEscape(char character) {
    switch (character) {
    case '"':
    case '\\':
        return character;
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return 0;
    }
}

void appendEscaped(std::string& json, char character) {
    if (const char letter = shortEscape(character); letter != 0) {
        json += '\\';
        json += letter;
        return;
    }
    const auto code = static_cast<unsigned char>(character);
    json += "\\u00" + text::hex({&code, 1});
}

/// Appends a value as JSON.
struct ValueWriter {
    std::string& json;

    void operator()(Absent) const {}
    void operator()(std::nullptr_t) const { json += "null"; }
    void operator()(bool value) const { json += value ? "true" : "false"; }
    void operator()(std::int64_t value) const { json += std::to_string(value); }
    void operator()(const std::string& value) const { appendJsonText(json, value); }
};

/// Appends the members with a comma after each.
template <std::size_t count>
void appendMembers(
    std::string& json, const std::array<Key, count>& keys, const std::array<Value, count>& values) {
    for (std::size_t i = 0; i < count; ++i) {
        if (std::holds_alternative<Absent>(values[i])) {
            continue;
        }
        json += '"';
        json += keys[i].name;
        json += "\":";
        std::visit(ValueWriter{json}, values[i]);
        json += ',';
    }
}

/// Ends an object or array whose last member or element may have left a comma.
void close(std::string& json, char bracket) {
    if (json.back() == ',') {
        json.pop_back();
    }
    json += bracket;
}

}  // namespace

void appendJsonText(std::string& json, std::string_view text) {
    json += '"';
    for (const char character : text) {
        const bool plain =
            static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\';
        if (plain) {
            json += character;
        } else {
            appendEscaped(json, character);
        }
    }
    json += '"';
}

void appendJson(std::string& json, const MappingRecord& mapping) {
    json += '{';
    appendMembers(json, mappingKeys, mapping);
    close(json, '}');
}

void appendJson(std::string& json, const HostRecord& host) {
    json += '{';
    appendMembers(json, hostKeys, host.values);
    json += "\"hostMappings\":[";
    for (const MappingRecord& mapping : host.mappings) {
        appendJson(json, mapping);
        json += ',';
    }
    close(json, ']');
    json += '}';
}

std::int64_t nowInMilliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

}  // namespace devserver
