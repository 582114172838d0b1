#pragma once

#include "arkeon/debug_log.h"

namespace arkeon {

/// The name in the debug log's lines that the platform services write.
inline constexpr std::string_view platformName = "arkeon";

/// Logs why a platform service fails.
inline void report(std::initializer_list<std::string_view> parts) {
    logmsg(logLevel::failure, parts, platformName);
}

}  // namespace arkeon
