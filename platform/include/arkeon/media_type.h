#pragma once

#include <string>

/// The media type of requests and replies, and the version of the server's interface that they use.

inline const std::string MAX_VERSION = "6.0";
inline const std::string AK_MEDIA_TYPE_JSON = "application/vnd.arkeon+json";
inline const std::string AK_MEDIA_TYPE_VERSION = AK_MEDIA_TYPE_JSON + ";version=" + MAX_VERSION;
