#pragma once

/// The master configuration, `<root>/etc/master.toml`, written by the administrator.

/// The `[primary_server]` table.
struct PrimaryServerRecord {
    const char* name;  ///< null when the key is absent; may be empty
};

/// The master configuration, as far as the tool needs it.
struct MasterConfig {
    const PrimaryServerRecord* primary_server;  ///< null when there is no such table
    bool active_node;                           ///< `[cluster]` says `active_node = true`
};

/// Reads the configuration. On failure the reason is in the debug log, with line and column where
/// there is one, and an earlier configuration stays in place.
/// @return 0, or 7650 when the file is missing, unreadable, not TOML, or a known key has the wrong
///         type
[[nodiscard]] int AK_read_master_config();

/// The configuration that was read last, owned by the platform and valid until the next successful
/// read; null if none was read.
const MasterConfig* get_master_config_ptr();

/// True if this host is the active node of a cluster. Reads the master configuration if that was
/// not done before; one that is missing or cannot be read means not clustered.
bool IsActiveClusterNode();
