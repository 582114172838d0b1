#pragma once

#include <string_view>

namespace arkeon {

/// Whether two server names mean the same: ASCII letters without regard to case, an IPv6 address
/// with or without its brackets.
bool sameServer(std::string_view one, std::string_view other);

/// `name` without the brackets around it, if it has both.
std::string_view withoutBrackets(std::string_view name);

}  // namespace arkeon
