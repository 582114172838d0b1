#pragma once

#include "devserver/HostRecord.h"

#include <cstddef>
#include <functional>
#include <string>

namespace devserver {

/// The host ID of the local host: the common name of the host certificate, in every root.
inline constexpr const char* localHostId = "0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0";

/// Gives one host after the other; false when there are no more.
using HostSource = std::function<bool(HostRecord&)>;

/// A dozen hosts that show everything a listing can show. The first is the local host, which is
/// the primary server.
HostSource sampleHosts(const std::string& primaryServer);

/// `count` hosts of three approved mappings each, always the same ones; the first has the local
/// host's ID.
HostSource generatedHosts(const std::string& primaryServer, std::size_t count);

}  // namespace devserver
