#include "config/CertificateInfo.h"

#include "arkeon/host_identity.h"
#include "arkeon/status.h"
#include "arkeon/text.h"
#include "config/Paths.h"
#include "config/TomlFile.h"
#include "log/Report.h"
#include "text/ServerNames.h"

namespace arkeon {
namespace {

/// What a row of this type says; no row says the empty text.
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

/// Walks the rows of one file in order; stops at the first that matches or cannot be understood.
class RowFinder {
public:
    RowFinder(int certType, std::string_view server)
        : path_(certificateInfoFile()), type_(nameOf(certType)), server_(server) {}

    int find(CertificateRow& row) const;

private:
    int searchFile(const toml::table& root, CertificateRow& row) const;
    int searchRows(const toml::array& rows, CertificateRow& row) const;
    int examine(const toml::node& node, bool& matches, CertificateRow& row) const;
    int fill(const toml::table& table, CertificateRow& row) const;
    bool take(const toml::table& table, const char* key, std::string& value) const;
    std::string resolved(const std::string& path) const;
    int malformed(const toml::node& node, std::string_view problem) const;
    int noRow() const;

    std::string path_;
    std::string_view type_;
    std::string_view server_;
};

int RowFinder::find(CertificateRow& row) const {
    toml::table root;
    switch (readToml(path_, root)) {
    case TomlResult::read:
        return searchFile(root, row);
    case TomlResult::missing:
        return status::noCertificateRow;
    case TomlResult::unreadable:
        break;
    }
    return status::malformedCertificateInfo;
}

int RowFinder::searchFile(const toml::table& root, CertificateRow& row) const {
    const toml::node* rows = root.get("certificate");
    if (rows == nullptr) {
        return noRow();
    }
    if (!rows->is_array()) {
        return malformed(*rows, "certificate must be an array of tables");
    }
    return searchRows(*rows->as_array(), row);
}

int RowFinder::searchRows(const toml::array& rows, CertificateRow& row) const {
    for (const toml::node& node : rows) {
        bool matches = false;
        const int result = examine(node, matches, row);
        if (matches || result != status::success) {
            return result;
        }
    }
    return noRow();
}

int RowFinder::examine(const toml::node& node, bool& matches, CertificateRow& row) const {
    const toml::table* table = node.as_table();
    if (table == nullptr) {
        return malformed(node, "certificate must be an array of tables");
    }
    std::string type;
    std::string server;
    if (!take(*table, "type", type) || !take(*table, "server", server)) {
        return status::malformedCertificateInfo;
    }
    matches = type == type_ && sameServer(server, server_);
    return matches ? fill(*table, row) : status::success;
}

int RowFinder::fill(const toml::table& table, CertificateRow& row) const {
    if (!take(table, "host_id", row.hostId) || !take(table, "certificate", row.certificate) ||
        !take(table, "private_key", row.privateKey) || !take(table, "ca", row.authorities)) {
        return status::malformedCertificateInfo;
    }
    row.certificate = resolved(row.certificate);
    row.privateKey = resolved(row.privateKey);
    row.authorities = resolved(row.authorities);
    return status::success;
}

bool RowFinder::take(const toml::table& table, const char* key, std::string& value) const {
    const toml::node* node = table.get(key);
    const std::optional<std::string> text = plainText(node);
    if (!text || text->empty()) {
        const std::string problem = std::string(key) + " is missing, empty or no text";
        malformed(node == nullptr ? static_cast<const toml::node&>(table) : *node, problem);
        return false;
    }
    value = *text;
    return true;
}

std::string RowFinder::resolved(const std::string& path) const {
    return path.starts_with('/') ? path : path_.substr(0, path_.rfind('/') + 1) + path;
}

int RowFinder::malformed(const toml::node& node, std::string_view problem) const {
    report({place(path_, node.source()), ": ", problem});
    return status::malformedCertificateInfo;
}

int RowFinder::noRow() const {
    report({path_, ": no row of type \"", type_, "\" for server \"", server_, "\""});
    return status::noCertificateRow;
}

}  // namespace

int findCertificateRow(int certType, std::string_view server, CertificateRow& row) {
    return RowFinder(certType, server).find(row);
}

}  // namespace arkeon

int getHostID(int cert_type, const char* server, char* buffer, unsigned long size) {
    arkeon::boundedCopy(buffer, size, "");
    arkeon::CertificateRow row;
    const int result = arkeon::findCertificateRow(cert_type, server == nullptr ? "" : server, row);
    if (result != arkeon::status::success) {
        return result;
    }
    if (row.hostId.size() >= size) {
        return arkeon::status::hostIdBufferTooSmall;
    }
    arkeon::boundedCopy(buffer, size, row.hostId);
    return arkeon::status::success;
}
