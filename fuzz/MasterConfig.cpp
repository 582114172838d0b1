// The bytes of the master configuration.

#include "arkeon/master_config.h"
#include "arkeon/status.h"
#include "arkeon/text.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"
#include "fuzz/Root.h"

using fuzz::expect;

namespace {

void expectRead(const MasterConfig& config) {
    const PrimaryServerRecord* record = config.primary_server;
    if (record != nullptr && record->name != nullptr) {
        expect(arkeon::isUtf8(record->name), "a name is UTF-8, as TOML is");
    }
    expect(IsActiveClusterNode() == config.active_node, "the node is what the file says");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::root().write("etc/master.toml", fuzz::Input(data, size).rest());
    const MasterConfig* before = get_master_config_ptr();
    if (AK_read_master_config() == arkeon::status::success) {
        expectRead(*get_master_config_ptr());
    } else {
        expect(
            AK_read_master_config() == arkeon::status::unreadableMasterConfig,
            "what cannot be read is 7650");
        expect(get_master_config_ptr() == before, "the configuration before stays in place");
    }
    return 0;
}
