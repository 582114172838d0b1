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

/// Reads the known keys of one file; the first of the wrong type is reported and ends it.
class Reader {
public:
    explicit Reader(std::string path) : path_(std::move(path)) {}

    bool read(OwnedConfig& owned) const;

private:
    bool wrongType(const toml::node& node, const char* key, const char* wanted) const;
    bool readPrimaryServer(const toml::table& root, OwnedConfig& owned) const;
    bool readCluster(const toml::table& root, OwnedConfig& owned) const;

    std::string path_;
};

bool Reader::wrongType(const toml::node& node, const char* key, const char* wanted) const {
    report({place(path_, node.source()), ": ", key, " must be ", wanted});
    return false;
}

bool Reader::readPrimaryServer(const toml::table& root, OwnedConfig& owned) const {
    const toml::node* node = root.get("primary_server");
    if (node == nullptr) {
        return true;
    }
    const toml::table* table = node->as_table();
    if (table == nullptr) {
        return wrongType(*node, "primary_server", "a table");
    }
    const toml::node* name = table->get("name");
    owned.name = plainText(name);
    if (name != nullptr && !owned.name) {
        return wrongType(*name, "primary_server.name", "a text without a NUL character");
    }
    owned.primaryServer.name = owned.name ? owned.name->c_str() : nullptr;
    owned.config.primary_server = &owned.primaryServer;
    return true;
}

bool Reader::readCluster(const toml::table& root, OwnedConfig& owned) const {
    const toml::node* node = root.get("cluster");
    if (node == nullptr) {
        return true;
    }
    const toml::table* table = node->as_table();
    if (table == nullptr) {
        return wrongType(*node, "cluster", "a table");
    }
    const toml::node* active = table->get("active_node");
    if (active != nullptr && !active->is_boolean()) {
        return wrongType(*active, "cluster.active_node", "true or false");
    }
    owned.config.active_node = active != nullptr && active->as_boolean()->get();
    return true;
}

bool Reader::read(OwnedConfig& owned) const {
    toml::table root;
    return readToml(path_, root) == TomlResult::read && readPrimaryServer(root, owned) &&
           readCluster(root, owned);
}

}  // namespace
}  // namespace arkeon

int AK_read_master_config() {
    auto owned = std::make_unique<arkeon::OwnedConfig>();
    if (!arkeon::Reader(arkeon::masterConfigFile()).read(*owned)) {
        return arkeon::status::unreadableMasterConfig;
    }
    arkeon::currentConfig() = std::move(owned);
    return arkeon::status::success;
}

const MasterConfig* get_master_config_ptr() {
    const auto& current = arkeon::currentConfig();
    return current == nullptr ? nullptr : &current->config;
}

bool IsActiveClusterNode() {
    if (get_master_config_ptr() == nullptr && AK_read_master_config() != arkeon::status::success) {
        return false;
    }
    return get_master_config_ptr()->active_node;
}
