#pragma once

#include <string>

/// The REST resources of the host database; the number chooses the URI.
enum OperationType : int {
    OP_MAPPED_HOST_NAME = 0,
    OP_HOST_ID = 1,
    OP_APPROVED = 2,
    OP_PENDING = 3,
    OP_CONFLICT = 4,
    OP_ALL_MAPPINGS = 5,
    OP_ADD_MAPPING = 6,
    OP_DELETE_MAPPING = 7,
    OP_HOST_APPROVED = 8,
    OP_MAPPED_APPROVED = 9,
    OP_COMMENT = 10,
    OP_HOST = 11,
    OP_ADD_HOST = 12,
    OP_ALL_HOSTS = 13,
};

/// The HTTP method of a request.
enum CurlRequestType : int {
    CURL_GET = 0,
    CURL_PUT = 1,
    CURL_DELETE = 2,
    CURL_PATCH = 3,
    CURL_POST = 4,
};

/// How a request is authenticated.
enum LoginType : int {
    USER_LOGIN = 0,        ///< with the token of the user's login
    HOST_CERTIFICATE = 1,  ///< with the local host's certificate only
};

/// The HTTP statuses of a successful change or query (RFC 9110, section 15.3).
namespace httpStatus {

inline constexpr int ok = 200;
inline constexpr int created = 201;
inline constexpr int noContent = 204;

}  // namespace httpStatus

/// The relative URI of a resource. `name` must be percent-encoded; the host ID is used as it is.
std::string
resourceUri(OperationType operation, const std::string& hostId, const std::string& name);
