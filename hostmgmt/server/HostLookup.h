#pragma once

#include "arkeon/status.h"

#include <string>

class CArgscmd;
class CLogcmd;
class PrimaryServer;

/// The outcome of looking for a host ID.
struct [[nodiscard]] HostIdResult {
    arkeon::Status status = arkeon::status::success;
    std::string hostId;  ///< not empty if the status is `success`
};

/// Finds the host ID of the host that the command line names: by its ID, or by a name that the
/// server looks up. The reason of a failure is shown on standard error.
/// @throws std::logic_error from `PrimaryServer::name`
HostIdResult findHostId(const CArgscmd& args, const PrimaryServer& server, const CLogcmd& log);

/// Finds the local host's own ID. A failure is only logged.
/// @throws std::logic_error from `PrimaryServer::name`, which shows its reason
HostIdResult findOwnHostId(const PrimaryServer& server, const CLogcmd& log);
