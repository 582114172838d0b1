#pragma once

#include <string_view>

namespace fuzz {

/// Ends the process, which the fuzzer and the replay take for a finding, when a property does not
/// hold. It is worded as what should be.
void expect(bool holds, const char* property);

/// No control character, neither a byte nor a letter of UTF-8, but those in `allowed`.
bool isFreeOfControls(std::string_view text, std::string_view allowed = {});

}  // namespace fuzz
