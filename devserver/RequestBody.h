#pragma once

#include <optional>
#include <string>

/// The JSON bodies of the requests. What is not exactly of the form is refused with
/// errors::malformedBody, a text that breaks a limit with errors::badValue.
namespace devserver::requestBody {

/// What a PATCH of a host may change; at least one is there.
struct HostPatch {
    std::optional<bool> autoReissue;
    std::optional<std::string> hostName;
};

/// {"isShared":true|false}
bool isShared(const std::string& body);
/// {"comment":"..."}, at most 2048 bytes, possibly none
std::string comment(const std::string& body);
/// {"hostName":"..."}
std::string hostName(const std::string& body);
/// {"autoReissue":true|false} or {"hostName":"..."} or both
HostPatch hostPatch(const std::string& body);

}  // namespace devserver::requestBody

namespace devserver {

/// Names have 1 to 1024 bytes of plain UTF-8; anything else is refused with errors::badValue.
void checkName(const std::string& name);

}  // namespace devserver
