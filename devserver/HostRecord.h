#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace devserver {

/// What a key of a record holds when it is neither absent nor null.
enum class Kind { text, flag, number };

/// A key of a record; the database's columns bear the same names.
struct Key {
    const char* name;
    Kind kind;
};

/// The keys of a host record in the order of the replies, "hostMappings" after them.
inline constexpr std::array<Key, 18> hostKeys{{
    {"uuid", Kind::text},
    {"hostName", Kind::text},
    {"masterServer", Kind::text},
    {"osType", Kind::text},
    {"osVersion", Kind::text},
    {"installedEEBs", Kind::text},
    {"installedPackages", Kind::text},
    {"qxUpdatePlatform", Kind::text},
    {"hwDescription", Kind::text},
    {"cpuArchitecture", Kind::text},
    {"akuVersion", Kind::text},
    {"isSecureEnabled", Kind::flag},
    {"comment", Kind::text},
    {"autoReissue", Kind::flag},
    {"trustVersion", Kind::text},
    {"autoReissueDuration", Kind::number},
    {"externalCertificateSubject", Kind::text},
    {"hasArkeonCaHostCertificate", Kind::flag},
}};

/// The keys of a mapping record in the order of the replies; times are in milliseconds.
inline constexpr std::array<Key, 7> mappingKeys{{
    {"mappedHostName", Kind::text},
    {"isApproved", Kind::flag},
    {"isConflicting", Kind::flag},
    {"isAddedManually", Kind::flag},
    {"isShared", Kind::flag},
    {"createdOn", Kind::number},
    {"updatedOn", Kind::number},
}};

/// Where a key stands in one of the tables above; a name that is not there does not compile.
template <std::size_t count>
consteval std::size_t placeOf(const std::array<Key, count>& keys, std::string_view name) {
    std::size_t place = 0;
    while (keys.at(place).name != name) {
        ++place;
    }
    return place;
}

/// The places of the keys that the server gives a meaning.
namespace hostKey {
inline constexpr std::size_t uuid = placeOf(hostKeys, "uuid");
inline constexpr std::size_t hostName = placeOf(hostKeys, "hostName");
inline constexpr std::size_t masterServer = placeOf(hostKeys, "masterServer");
inline constexpr std::size_t isSecureEnabled = placeOf(hostKeys, "isSecureEnabled");
inline constexpr std::size_t comment = placeOf(hostKeys, "comment");
inline constexpr std::size_t autoReissue = placeOf(hostKeys, "autoReissue");
inline constexpr std::size_t autoReissueDuration = placeOf(hostKeys, "autoReissueDuration");
inline constexpr std::size_t hasArkeonCaHostCertificate =
    placeOf(hostKeys, "hasArkeonCaHostCertificate");
}  // namespace hostKey
namespace mappingKey {
inline constexpr std::size_t name = placeOf(mappingKeys, "mappedHostName");
}  // namespace mappingKey

/// A key that the record does not have at all, as opposed to one that is null.
struct Absent {};

using Value = std::variant<Absent, std::nullptr_t, bool, std::int64_t, std::string>;
using MappingRecord = std::array<Value, mappingKeys.size()>;

/// A host as the replies show it.
struct HostRecord {
    std::array<Value, hostKeys.size()> values;
    std::vector<MappingRecord> mappings;
};

/// Appends a JSON string. Bytes above 127 pass as they are, valid UTF-8 or not.
void appendJsonText(std::string& json, std::string_view text);

/// Appends a record as a JSON object. Written by hand and not with jansson, because a listing
/// may hold a hundred thousand of them.
void appendJson(std::string& json, const HostRecord& host);
void appendJson(std::string& json, const MappingRecord& mapping);

/// The time now in milliseconds since the epoch.
std::int64_t nowInMilliseconds();

}  // namespace devserver
