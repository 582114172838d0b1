#include "arkeon/master_config.h"

#include "arkeon/status.h"
#include "config/Paths.h"
#include "config/TomlFile.h"
#include "log/Report.h"

#include <memory>

namespace arkeon {
namespace {

/// A configuration together with the text and the record that it points to.
struct OwnedConfig {
    std::optional<std::string> name;
    PrimaryServerRecord primaryServer{};
    MasterConfig config{};
};

std::unique_ptr<const OwnedConfig>& currentConfig() {
    static std::unique_ptr<const OwnedConfig> current;
    return current;
}

bool wrongType(
    const std::string& path, const toml::node& node, const char* key, const char* wanted) {
    report({place(path, node.source()), ": ", key, " must be ", wanted});
    return false;
}

bool readPrimaryServer(const std::string& path, const toml::table& root, OwnedConfig& owned) {
    const toml::node* node = root.get("primary_server");
    if (node == nullptr) {
        return true;
    }
    const toml::table* table = node->as_table();
    if (table == nullptr) {
        return wrongType(path, *node, "primary_server", "a table");
    }
    const toml::node* name = table->get("name");
    owned.name = plainText(name);
    if (name != nullptr && !owned.name) {
        return wrongType(path, *name, "primary_server.name", "a text without a NUL character");
    }
    owned.primaryServer.name = owned.name ? owned.name->c_str() : nullptr;
    owned.config.primary_server = &owned.primaryServer;
    return true;
}

bool readCluster(const std::string& path, const toml::table& root, OwnedConfig& owned) {
    const toml::node* node = root.get("cluster");
    if (node == nullptr) {
        return true;
    }
    const toml::table* table = node->as_table();
    if (table == nullptr) {
        return wrongType(path, *node, "cluster", "a table");
    }
    const toml::node* active = table->get("active_node");
    if (active != nullptr && !active->is_boolean()) {
        return wrongType(path, *active, "cluster.active_node", "true or false");
    }
    owned.config.active_node = active != nullptr && active->as_boolean()->get();
    return true;
}

/// Makes the file's configuration the current one, if its known keys have the right types.
TomlResult readMasterConfig() {
    const std::string path = masterConfigFile();
    auto owned = std::make_unique<OwnedConfig>();
    toml::table root;
    const TomlResult result = readToml(path, root);
    if (result != TomlResult::read) {
        return result;
    }
    if (!readPrimaryServer(path, root, *owned) || !readCluster(path, root, *owned)) {
        return TomlResult::unreadable;
    }
    currentConfig() = std::move(owned);
    return TomlResult::read;
}

}  // namespace
}  // namespace arkeon

int AK_read_master_config() {
    const arkeon::TomlResult result = arkeon::readMasterConfig();
    if (result == arkeon::TomlResult::missing) {
        arkeon::report({arkeon::masterConfigFile(), ": no such file"});
    }
    return result == arkeon::TomlResult::read ? arkeon::status::success
                                              : arkeon::status::unreadableMasterConfig;
}

const MasterConfig* get_master_config_ptr() {
    const auto& current = arkeon::currentConfig();
    return current == nullptr ? nullptr : &current->config;
}

bool IsActiveClusterNode() {
    // Without a file the host is not clustered; a run with -server needs none.
    if (get_master_config_ptr() == nullptr) {
        static_cast<void>(arkeon::readMasterConfig());
    }
    const MasterConfig* config = get_master_config_ptr();
    return config != nullptr && config->active_node;
}
