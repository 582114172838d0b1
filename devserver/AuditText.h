#pragma once

#include "devserver/HostDatabase.h"

#include <string>
#include <vector>

namespace devserver {

/// The audit trail as aligned columns with a heading; times in UTC. Control characters and bytes
/// that are not UTF-8 are shown as \xHH.
std::string auditText(const std::vector<AuditEntry>& entries);

}  // namespace devserver
