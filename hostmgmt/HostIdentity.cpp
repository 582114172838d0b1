// Whom to talk to, and about which host.

#include "arkeon/console.h"
#include "arkeon/host_identity.h"
#include "arkeon/master_config.h"
#include "arkeon/status.h"
#include "hostmgmt/AkHostMgmtBaseOption.h"

#include <array>
#include <stdexcept>

using arkeon::Console;

namespace {

constexpr CatalogueText masterConfigUnreadable = catalogued(
    "SmeDup0500N", "Error occurred during initialization, check master configuration file");
constexpr CatalogueText noMasterServerRecord =
    catalogued("SmeSlp0450N", "%s: no master server record found");
constexpr CatalogueText noMasterServerName =
    catalogued("SmeSlp0460N", "%s: no master server name found");
constexpr CatalogueText moreThanOneHost = catalogued(
    "NecErr8900N", "The host name that was provided must be associated with a single host ID.");

// What is wrong with the configuration; null when it names a primary server.
const CatalogueText* masterConfigFault() {
    if (AK_read_master_config() != 0) {
        return &masterConfigUnreadable;
    }
    const PrimaryServerRecord* record = get_master_config_ptr()->primary_server;
    if (record == nullptr) {
        return &noMasterServerRecord;
    }
    const bool named = record->name != nullptr && *record->name != '\0';
    return named ? nullptr : &noMasterServerName;
}

}  // namespace

int localCertificateType() {
    return IsActiveClusterNode() ? clusterCertificateType : hostCertificateType;
}

std::string AkHostMgmtBaseOption::getMasterServer() const {
    if (isGiven(option::server)) {
        return valueOf(option::server);
    }
    if (const CatalogueText* fault = masterConfigFault(); fault != nullptr) {
        std::array<char, failureTextSize> text{};
        getMessage(text.data(), text.size(), fault->id, fault->text, commandName, nullptr, nullptr);
        Console::standard().writeError(std::string(text.data()) + "\n");
        operationLog.logit(text.data(), logLevel::failure);
        // Ends the run: without a primary server there is nobody to talk to, and nothing catches
        // this.
        throw std::logic_error(getECMessage(arkeon::status::noPrimaryServer));
    }
    return get_master_config_ptr()->primary_server->name;
}

int AkHostMgmtBaseOption::getHostIDfromCertmapinfo(std::string& hostId) const {
    const std::string where = "AkHostMgmtBaseOption::getHostIDfromCertmapinfo";
    const std::string server = getMasterServer();
    if (server.empty()) {
        operationLog.logit(where + ", failed to get master server name", logLevel::failure);
        return arkeon::status::noPrimaryServer;
    }
    std::array<char, 64> buffer{};
    const int failure =
        getHostID(localCertificateType(), server.c_str(), buffer.data(), buffer.size());
    if (failure != arkeon::status::success) {
        operationLog.logit(
            where + ", getHostID() failed, retval = " + std::to_string(failure), logLevel::failure);
        return failure;
    }
    hostId = buffer.data();
    operationLog.logit(where + ", UUID = " + hostId, logLevel::ordinary);
    return arkeon::status::success;
}

int AkHostMgmtBaseOption::getUuid(std::string& hostId) {
    if (isGiven(option::hostid)) {
        hostId = valueOf(option::hostid);
        return arkeon::status::success;
    }
    std::string reply;
    int httpCode = 0;
    const int result = curlSendRequest(
        OP_MAPPED_HOST_NAME, "", valueOf(option::host).c_str(), CURL_GET, "", reply, httpCode,
        USER_LOGIN);
    if (isLoginFailure(result)) {
        showWebLoginRequired();
        return result;
    }
    if (result != arkeon::status::success) {
        return failLookup(result);
    }
    if (httpCode != httpStatus::ok) {
        long errorCode = 0;
        logErrorMessage(reply, errorCode);
        // Without a host ID there is nothing to go on with, whatever the server calls it.
        return failLookup(
            errorCode == 0 ? arkeon::status::unreadableReply : static_cast<int>(errorCode));
    }
    return hostIdFromLookup(reply, hostId);
}

int AkHostMgmtBaseOption::failLookup(int status) const {
    submitErrorStringForWebApi(status);
    return status;
}

int AkHostMgmtBaseOption::hostIdFromLookup(const std::string& reply, std::string& hostId) const {
    const JsonRef root = parseJSON(reply);
    const json_t* hosts = json_object_get(root.get(), "hosts");
    if (!json_is_array(hosts)) {
        operationLog.logit("Hosts value is NULL", logLevel::failure);
        return failLookup(arkeon::status::unreadableReply);
    }
    if (json_array_size(hosts) == 0) {
        return failLookup(arkeon::status::unknownName);
    }
    if (json_array_size(hosts) > 1) {
        showStatus(arkeon::status::ambiguousHost, messageText(moreThanOneHost));
        return arkeon::status::ambiguousHost;
    }
    const char* uuid = stringMember(json_array_get(hosts, 0), "uuid");
    if (uuid == nullptr || *uuid == '\0') {
        operationLog.logit("UUID is NULL", logLevel::failure);
        return failLookup(arkeon::status::unreadableReply);
    }
    hostId = uuid;
    operationLog.logit("HostID corresponding to mappedhostname: " + hostId, logLevel::ordinary);
    return arkeon::status::success;
}
