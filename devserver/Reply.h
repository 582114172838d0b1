#pragma once

#include "devserver/HostListing.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace devserver {

/// The media type of every body, in both directions.
inline constexpr const char* mediaType = "application/vnd.arkeon+json";
inline constexpr const char* mediaTypeVersion = "6.0";
inline constexpr const char* fullMediaType = "application/vnd.arkeon+json;version=6.0";
static_assert(std::string_view(fullMediaType).starts_with(mediaType));
static_assert(std::string_view(fullMediaType).ends_with(mediaTypeVersion));

/// An answer before it becomes bytes. A host or a listing stands in for the body; the records of
/// a listing, which may be many, are rendered while they are sent.
struct Reply {
    int status = 200;
    std::int64_t errorCode = 0;  ///< what the body says, for the audit trail
    std::string contentType = fullMediaType;
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;
    std::optional<HostRecord> host;
    std::shared_ptr<HostListing> listing;
};

/// A kind of refusal: the HTTP status and the two members of the body.
struct ErrorKind {
    int status;
    std::int64_t code;
    const char* message;
};

/// Every refusal of the server; docs/devserver.md has the same table, which a test checks.
namespace errors {
inline constexpr ErrorKind noToken{401, 117, "The request carries no token that the server knows."};
inline constexpr ErrorKind tokenExpired{401, 118, "The token has expired."};
inline constexpr ErrorKind otherHost{403, 8712, "The host certificate is that of another host."};
inline constexpr ErrorKind unknownHost{404, 8701, "There is no such host."};
inline constexpr ErrorKind unknownMapping{404, 8701, "The host has no such mapping."};
inline constexpr ErrorKind unknownResource{404, 8710, "There is no such resource."};
inline constexpr ErrorKind nameTaken{
    409, 8702, "The name is approved for another host and not shared by both."};
inline constexpr ErrorKind hostExists{409, 8703, "There is a host of this name already."};
inline constexpr ErrorKind malformedBody{
    400, 8705, "The body is not a JSON object of the form this request needs."};
inline constexpr ErrorKind badValue{
    400, 8706, "A name, comment or reason is empty, too long or not plain UTF-8."};
inline constexpr ErrorKind bodyTooLarge{413, 8707, "The body is larger than 64 KiB."};
inline constexpr ErrorKind wrongMethod{405, 8708, "The resource does not know this method."};
inline constexpr ErrorKind wrongMediaType{
    406, 8709, "Only application/vnd.arkeon+json, version 6.0, is understood and sent."};
inline constexpr ErrorKind malformedRequest{
    400, 8711, "The address or the query of the request is malformed."};
inline constexpr ErrorKind serverFailure{500, 8713, "The host database could not be used."};

inline constexpr std::array all{noToken,        tokenExpired,     otherHost,    unknownHost,
                                unknownMapping, unknownResource,  nameTaken,    hostExists,
                                malformedBody,  badValue,         bodyTooLarge, wrongMethod,
                                wrongMediaType, malformedRequest, serverFailure};
}  // namespace errors

/// Thrown where a rule is broken; whoever handles the request turns it into the reply.
struct Refusal {
    ErrorKind kind;
};

Reply errorReply(const ErrorKind& kind);
Reply errorReply(int status, std::int64_t code, const std::string& message);

}  // namespace devserver
