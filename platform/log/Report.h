#pragma once

#include <initializer_list>
#include <string_view>

namespace arkeon {

/// Writes why a platform service fails to the debug log, as the failure of "arkeon".
void report(std::initializer_list<std::string_view> pieces);

}  // namespace arkeon
