#include "devserver/SampleHosts.h"

#include <jansson.h>

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace devserver {

namespace {

/// The sample hosts as the replies show them; a key left out here is left out there. A text
/// "@primary" stands for the primary server's name.
constexpr const char* samples = R"json([
{"uuid": "0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0", "hostName": "@primary",
 "masterServer": "@primary", "osType": "Linux", "osVersion": "Debian GNU/Linux 12 (bookworm)",
 "installedEEBs": "", "installedPackages": "server client", "qxUpdatePlatform": "linux-x86_64",
 "hwDescription": "Virtual machine, 8 CPUs, 32 GiB", "cpuArchitecture": "x86_64",
 "akuVersion": "10.4", "isSecureEnabled": true, "comment": "The primary server itself",
 "autoReissue": false, "trustVersion": "3", "autoReissueDuration": 0,
 "externalCertificateSubject": null, "hasArkeonCaHostCertificate": true,
 "hostMappings": [
  {"mappedHostName": "@primary", "isApproved": true, "isConflicting": false,
   "isAddedManually": false, "isShared": false, "createdOn": 1767225600000,
   "updatedOn": 1767225600000},
  {"mappedHostName": "primary-backup-lan", "isApproved": true, "isConflicting": false,
   "isAddedManually": true, "isShared": false, "createdOn": 1768435200123,
   "updatedOn": 1771113600999},
  {"mappedHostName": "192.0.2.1", "isApproved": false, "isConflicting": false,
   "isAddedManually": false, "isShared": false, "createdOn": 1773532800000,
   "updatedOn": 1773532800000}]},
{"uuid": "1b1bb1b1-1111-4bb1-bb11-111b1b11b1b1", "hostName": "testhost1",
 "masterServer": "@primary", "osType": "Linux", "osVersion": "Red Hat Enterprise Linux 9.4",
 "installedEEBs": "EEB4711 EEB4712", "installedPackages": "client",
 "qxUpdatePlatform": "linux-x86_64", "hwDescription": "Rack server, 64 CPUs, 512 GiB",
 "cpuArchitecture": "x86_64", "akuVersion": "10.4", "isSecureEnabled": true,
 "comment": "This host placed in rack1", "autoReissue": false, "trustVersion": "3",
 "autoReissueDuration": 0, "externalCertificateSubject": "CN=testhost1,O=Example",
 "hasArkeonCaHostCertificate": true,
 "hostMappings": [
  {"mappedHostName": "testhost1-alias", "isApproved": true, "isConflicting": false,
   "isAddedManually": true, "isShared": false, "createdOn": 1767312000000,
   "updatedOn": 1767398400000},
  {"mappedHostName": "testhost1", "isApproved": true, "isConflicting": false,
   "isAddedManually": false, "isShared": false, "createdOn": 1767312000000,
   "updatedOn": 1767312000000},
  {"mappedHostName": "testhost1.storage.example.com", "isApproved": false,
   "isConflicting": false, "isAddedManually": false, "isShared": false,
   "createdOn": 1770000000000, "updatedOn": 1770000000000}]},
{"uuid": "2c2cc2c2-2222-4cc2-8c22-222c2c22c2c2", "hostName": "testhost2",
 "masterServer": "@primary", "osType": "Windows", "osVersion": "Windows Server 2022",
 "installedEEBs": null, "installedPackages": "client", "qxUpdatePlatform": "windows-x64",
 "hwDescription": null, "cpuArchitecture": "x64", "akuVersion": "10.3.0.1",
 "isSecureEnabled": true, "comment": null, "autoReissue": true, "trustVersion": "2",
 "autoReissueDuration": 4102444800000, "externalCertificateSubject": null,
 "hasArkeonCaHostCertificate": true,
 "hostMappings": [
  {"mappedHostName": "testhost2", "isApproved": true, "isConflicting": false,
   "isAddedManually": false, "isShared": false, "createdOn": 1767484800000,
   "updatedOn": 1767484800000}]},
{"uuid": "3d3dd3d3-3333-4dd3-9d33-333d3d33d3d3", "hostName": "cluster-node1",
 "masterServer": "@primary", "osType": "Linux", "osVersion": "SUSE Linux Enterprise 15",
 "installedEEBs": "", "installedPackages": "client media", "qxUpdatePlatform": "linux-x86_64",
 "hwDescription": "Cluster node", "cpuArchitecture": "x86_64", "akuVersion": "10.4",
 "isSecureEnabled": true, "comment": "Shares cluster-vip with cluster-node2",
 "autoReissue": true, "trustVersion": "3", "autoReissueDuration": 0,
 "externalCertificateSubject": "", "hasArkeonCaHostCertificate": true,
 "hostMappings": [
  {"mappedHostName": "cluster-node1", "isApproved": true, "isConflicting": false,
   "isAddedManually": false, "isShared": false, "createdOn": 1767571200000,
   "updatedOn": 1767571200000},
  {"mappedHostName": "cluster-vip", "isApproved": true, "isConflicting": false,
   "isAddedManually": true, "isShared": true, "createdOn": 1767657600000,
   "updatedOn": 1767657600000}]},
{"uuid": "4e4ee4e4-4444-4ee4-ae44-444e4e44e4e4", "hostName": "cluster-node2",
 "masterServer": "@primary", "osType": "Linux", "osVersion": "SUSE Linux Enterprise 15",
 "installedEEBs": "", "installedPackages": "client media", "qxUpdatePlatform": "linux-x86_64",
 "hwDescription": "Cluster node", "cpuArchitecture": "x86_64", "akuVersion": "10.4",
 "isSecureEnabled": true, "comment": "Shares cluster-vip with cluster-node1",
 "autoReissue": false, "trustVersion": "3", "autoReissueDuration": 0,
 "externalCertificateSubject": null, "hasArkeonCaHostCertificate": true,
 "hostMappings": [
  {"mappedHostName": "cluster-node2", "isApproved": true, "isConflicting": false,
   "isAddedManually": false, "isShared": false, "createdOn": 1767571200000,
   "updatedOn": 1767571200000},
  {"mappedHostName": "cluster-vip", "isApproved": true, "isConflicting": false,
   "isAddedManually": true, "isShared": true, "createdOn": 1767657600000,
   "updatedOn": 1767744000000}]},
{"uuid": "5f5ff5f5-5555-4ff5-bf55-555f5f55f5f5", "hostName": "impostor.example.com",
 "masterServer": "@primary", "osType": "Linux", "osVersion": "Ubuntu 24.04",
 "installedEEBs": "", "installedPackages": "client", "qxUpdatePlatform": "linux-x86_64",
 "hwDescription": "Claims a name that testhost1 has", "cpuArchitecture": "aarch64",
 "akuVersion": "10.4", "isSecureEnabled": true, "comment": "Look at its conflict",
 "autoReissue": false, "trustVersion": "3", "autoReissueDuration": 0,
 "externalCertificateSubject": null, "hasArkeonCaHostCertificate": true,
 "hostMappings": [
  {"mappedHostName": "impostor.example.com", "isApproved": true, "isConflicting": false,
   "isAddedManually": false, "isShared": false, "createdOn": 1768003200000,
   "updatedOn": 1768003200000},
  {"mappedHostName": "testhost1", "isApproved": false, "isConflicting": true,
   "isAddedManually": false, "isShared": false, "createdOn": 1768089600000,
   "updatedOn": 1768089600000}]},
{"uuid": "60606060-6666-4660-8666-606060606060", "hostName": "pendingonly",
 "masterServer": "@primary", "osType": "AIX", "osVersion": "7.3", "installedEEBs": "",
 "installedPackages": "client", "qxUpdatePlatform": "aix-ppc64", "hwDescription": "LPAR",
 "cpuArchitecture": "ppc64", "akuVersion": "9.1", "isSecureEnabled": false, "comment": "",
 "autoReissue": false, "trustVersion": "1", "autoReissueDuration": 0,
 "externalCertificateSubject": null, "hasArkeonCaHostCertificate": false,
 "hostMappings": [
  {"mappedHostName": "pendingonly", "isApproved": false, "isConflicting": false,
   "isAddedManually": false, "isShared": false, "createdOn": 0, "updatedOn": 0}]},
{"uuid": "71717171-7777-4771-9777-717171717171", "hostName": "namelengths",
 "masterServer": "@primary", "osType": "Linux", "osVersion": "Debian GNU/Linux 12 (bookworm)",
 "installedEEBs": "", "installedPackages": "client", "qxUpdatePlatform": "linux-x86_64",
 "hwDescription": "Names of 15, 16 and many bytes", "cpuArchitecture": "x86_64",
 "akuVersion": "10.4", "isSecureEnabled": true, "comment": null, "autoReissue": false,
 "trustVersion": "3", "autoReissueDuration": 0, "externalCertificateSubject": null,
 "hasArkeonCaHostCertificate": true,
 "hostMappings": [
  {"mappedHostName": "fifteen-bytes-x", "isApproved": true, "isConflicting": false,
   "isAddedManually": false, "isShared": false, "createdOn": 1768176000000,
   "updatedOn": 1768176000000},
  {"mappedHostName": "sixteen-bytes-xx", "isApproved": true, "isConflicting": false,
   "isAddedManually": false, "isShared": false, "createdOn": 1768176000000,
   "updatedOn": 1768176000000},
  {"mappedHostName": "a-rather-long-name.with.many.labels.site-7.department.example.com",
   "isApproved": true, "isConflicting": false, "isAddedManually": false, "isShared": false,
   "createdOn": 1768176000000, "updatedOn": 1768176000000}]},
{"uuid": "82828282-8888-4882-a888-828282828282", "hostName": "büro-rechner-ä",
 "masterServer": "@primary", "osType": "Linux", "osVersion": "Fedora 41", "installedEEBs": "",
 "installedPackages": "client", "qxUpdatePlatform": "linux-x86_64", "hwDescription": "Büro-PC",
 "cpuArchitecture": "x86_64", "akuVersion": "10.4", "isSecureEnabled": true,
 "comment": "Steht im Büro neben der Küche – nicht umräumen! 日本", "autoReissue": false,
 "trustVersion": "3", "autoReissueDuration": 0, "externalCertificateSubject": "CN=büro,O=Prüfung",
 "hasArkeonCaHostCertificate": true,
 "hostMappings": [
  {"mappedHostName": "büro-rechner-ä", "isApproved": true, "isConflicting": false,
   "isAddedManually": true, "isShared": false, "createdOn": 1768262400000,
   "updatedOn": 1768262400000},
  {"mappedHostName": "サーバー.example.com", "isApproved": true, "isConflicting": false,
   "isAddedManually": true, "isShared": false, "createdOn": 1768262400000,
   "updatedOn": 1768262400000}]},
{"uuid": "93939393-9999-4993-b999-939393939393", "hostName": "nomappings",
 "masterServer": "@primary", "osType": "Linux", "osVersion": "Debian GNU/Linux 12 (bookworm)",
 "installedEEBs": "", "installedPackages": "client", "qxUpdatePlatform": "linux-x86_64",
 "hwDescription": "A host without mappings", "cpuArchitecture": "x86_64", "akuVersion": "10.4",
 "isSecureEnabled": true, "comment": null, "autoReissue": false, "trustVersion": "3",
 "autoReissueDuration": 0, "externalCertificateSubject": null,
 "hasArkeonCaHostCertificate": true, "hostMappings": []},
{"uuid": "a4a4a4a4-aaaa-4aa4-8aaa-a4a4a4a4a4a4", "hostName": null, "masterServer": null,
 "osType": null, "osVersion": null, "installedEEBs": null, "installedPackages": null,
 "qxUpdatePlatform": null, "hwDescription": null, "cpuArchitecture": null, "akuVersion": null,
 "isSecureEnabled": null, "comment": null, "autoReissue": null, "trustVersion": null,
 "autoReissueDuration": null, "externalCertificateSubject": null,
 "hasArkeonCaHostCertificate": null,
 "hostMappings": [
  {"mappedHostName": "nullhost", "isApproved": true, "isConflicting": null,
   "isAddedManually": null, "isShared": null, "createdOn": null, "updatedOn": null},
  {"mappedHostName": null, "isApproved": null, "isConflicting": null, "isAddedManually": null,
   "isShared": null, "createdOn": null, "updatedOn": null}]},
{"uuid": "b5b5b5b5-bbbb-4bb5-9bbb-b5b5b5b5b5b5", "hostName": "barehost",
 "hostMappings": [
  {"mappedHostName": "barehost", "isApproved": true},
  {"mappedHostName": "barehost-discovered"}]}
])json";

Value valueOf(const json_t* json, const std::string& primaryServer) {
    if (json == nullptr) {
        return Absent{};
    }
    if (json_is_string(json)) {
        const std::string text = json_string_value(json);
        return text == "@primary" ? primaryServer : text;
    }
    if (json_is_boolean(json)) {
        return json_is_true(json);
    }
    if (json_is_integer(json)) {
        return std::int64_t{json_integer_value(json)};
    }
    return nullptr;
}

template <std::size_t count>
void readValues(
    const json_t* json, const std::array<Key, count>& keys, std::array<Value, count>& values,
    const std::string& primaryServer) {
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = valueOf(json_object_get(json, keys[i].name), primaryServer);
    }
}

void readHost(const json_t* json, HostRecord& host, const std::string& primaryServer) {
    readValues(json, hostKeys, host.values, primaryServer);
    const json_t* mappings = json_object_get(json, "hostMappings");
    host.mappings.resize(json_array_size(mappings));
    for (std::size_t i = 0; i < host.mappings.size(); ++i) {
        readValues(json_array_get(mappings, i), mappingKeys, host.mappings[i], primaryServer);
    }
}

std::string uuidOf(std::size_t number) {
    if (number == 1) {
        return localHostId;
    }
    std::array<char, 37> text{};
    static_cast<void>(
        std::snprintf(text.data(), text.size(), "%08zx-0000-4000-8000-%012zx", number, number));
    return text.data();
}

std::string nameOf(std::size_t number) {
    std::array<char, 32> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "host%06zu", number));
    return text.data();
}

MappingRecord approvedMapping(const std::string& name, std::int64_t time) {
    return {name, true, false, false, false, time, time};
}

void generateHost(std::size_t number, HostRecord& host, const std::string& primaryServer) {
    const std::string name = nameOf(number);
    const std::int64_t time = 1'767'225'600'000 + static_cast<std::int64_t>(number) * 1000;
    host.values = {uuidOf(number),  name,           primaryServer,
                   "Linux",         "Debian 12",    "",
                   "client",        "linux-x86_64", "",
                   "x86_64",        "10.4",         true,
                   nullptr,         false,          "3",
                   std::int64_t{0}, nullptr,        true};
    host.mappings = {
        approvedMapping(name, time), approvedMapping(name + ".example.com", time),
        approvedMapping(name + "-backup", time)};
}

}  // namespace

HostSource sampleHosts(const std::string& primaryServer) {
    json_error_t error{};
    std::shared_ptr<json_t> all(json_loads(samples, 0, &error), json_decref);
    if (!all) {
        throw std::logic_error(std::string("the sample hosts are malformed: ") + error.text);
    }
    return [all, primaryServer, next = std::size_t{0}](HostRecord& host) mutable {
        const json_t* json = json_array_get(all.get(), next++);
        if (json != nullptr) {
            readHost(json, host, primaryServer);
        }
        return json != nullptr;
    };
}

HostSource generatedHosts(const std::string& primaryServer, std::size_t count) {
    return [primaryServer, count, next = std::size_t{0}](HostRecord& host) mutable {
        if (next == count) {
            return false;
        }
        generateHost(++next, host, primaryServer);
        return true;
    };
}

}  // namespace devserver
