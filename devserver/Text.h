#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Small functions of texts that more than one part of the server needs.
namespace devserver::text {

std::vector<std::string_view> split(std::string_view text, char separator);
std::string_view trimmed(std::string_view text);
bool equalIgnoringCase(std::string_view one, std::string_view other);

/// Undoes percent-encoding (RFC 3986); nothing when a "%" is not followed by two digits. A "+"
/// stays a "+".
std::optional<std::string> percentDecoded(std::string_view text);

/// Valid UTF-8 without control characters (C0, DEL, C1).
bool isPlain(std::string_view text);

/// The bytes as twice as many hexadecimal digits, letters small.
std::string hex(std::span<const unsigned char> bytes);

/// The text with everything that isPlain() forbids in the form \xHH.
std::string visible(std::string_view text);

/// A whole number without sign; nothing when it is none or above the limit.
std::optional<unsigned long long> number(std::string_view text, unsigned long long limit);

}  // namespace devserver::text
