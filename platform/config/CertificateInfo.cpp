#include "config/CertificateInfo.h"

#include "arkeon/host_identity.h"
#include "arkeon/text.h"
#include "config/Paths.h"
#include "config/TomlFile.h"
#include "log/Report.h"
#include "text/ServerNames.h"

namespace arkeon {
namespace {

/// The value of "type" in entries of this type; no entry has the empty one.
std::string_view nameOf(int certType) {
    switch (certType) {
    case hostCertificateType:
        return "host";
    case clusterCertificateType:
        return "cluster";
    default:
        return {};
    }
}

Status malformed(const std::string& path, const toml::node& node, std::string_view problem) {
    report({place(path, node.source()), ": ", problem});
    return status::malformedCertificateInfo;
}

/// Reads a key that every entry must have.
Status
readKey(const std::string& path, const toml::table& table, const char* key, std::string& value) {
    const toml::node* node = table.get(key);
    const std::optional<std::string> text = plainText(node);
    if (!text || text->empty()) {
        const toml::node& location =
            node == nullptr ? static_cast<const toml::node&>(table) : *node;
        return malformed(path, location, std::string(key) + " is missing, empty or no text");
    }
    value = *text;
    return status::success;
}

/// The same for a path, which may be relative to the directory of the file.
Status
readPath(const std::string& path, const toml::table& table, const char* key, std::string& value) {
    const Status result = readKey(path, table, key, value);
    if (!value.starts_with('/')) {
        value.insert(0, path, 0, path.rfind('/') + 1);
    }
    return result;
}

/// Reads an entry; stops at the first key that is malformed.
Status readEntry(const std::string& path, const toml::table& table, CertificateEntry& entry) {
    Status result = readKey(path, table, "host_id", entry.hostId);
    if (result == status::success) {
        result = readPath(path, table, "certificate", entry.certificate);
    }
    if (result == status::success) {
        result = readPath(path, table, "private_key", entry.privateKey);
    }
    return result == status::success ? readPath(path, table, "ca", entry.caBundle) : result;
}

/// Searches the entries in order; stops at the first that matches or is malformed.
Status searchEntries(
    const std::string& path, const toml::node& entries, std::string_view wanted,
    std::string_view server, CertificateEntry& entry) {
    constexpr std::string_view notTables = "certificate must be an array of tables";
    if (!entries.is_array()) {
        return malformed(path, entries, notTables);
    }
    for (const toml::node& node : *entries.as_array()) {
        const toml::table* table = node.as_table();
        if (table == nullptr) {
            return malformed(path, node, notTables);
        }
        std::string type;
        std::string name;
        if (readKey(path, *table, "type", type) != status::success ||
            readKey(path, *table, "server", name) != status::success) {
            return status::malformedCertificateInfo;
        }
        if (type == wanted && sameServer(name, server)) {
            return readEntry(path, *table, entry);
        }
    }
    return status::noCertificateEntry;
}

}  // namespace

Status findCertificateEntry(int certType, std::string_view server, CertificateEntry& entry) {
    const std::string path = certificateInfoFile();
    toml::table root;
    const TomlResult read = readToml(path, root);
    if (read == TomlResult::missing) {
        report({path, ": no such file"});
        return status::noCertificateEntry;
    }
    if (read == TomlResult::unreadable) {
        return status::malformedCertificateInfo;
    }
    const std::string_view wanted = nameOf(certType);
    const toml::node* entries = root.get("certificate");
    const Status result = entries == nullptr ? status::noCertificateEntry
                                             : searchEntries(path, *entries, wanted, server, entry);
    if (result == status::noCertificateEntry) {
        report({path, ": no row of type \"", wanted, "\" for server \"", server, "\""});
    }
    return result;
}

}  // namespace arkeon

int getHostID(int cert_type, const char* server, char* buffer, unsigned long size) {
    arkeon::boundedCopy(buffer, size, "");
    arkeon::CertificateEntry entry;
    const arkeon::Status result =
        arkeon::findCertificateEntry(cert_type, server == nullptr ? "" : server, entry);
    if (result != arkeon::status::success) {
        return result;
    }
    if (entry.hostId.size() >= size) {
        return arkeon::status::hostIdBufferTooSmall;
    }
    arkeon::boundedCopy(buffer, size, entry.hostId);
    return arkeon::status::success;
}
