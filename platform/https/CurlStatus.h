#pragma once

#include "https/TransferNotes.h"

#include <curl/curl.h>
#include <string_view>

namespace arkeon {

/// The status code of the transfer of `handle` that ended with `result`: 0 when a whole reply
/// arrived.
int transferStatus(CURL* handle, CURLcode result, const TransferNotes& notes);

/// What the notes add to libcurl's own text about a transfer that failed; empty for nothing.
std::string_view observed(CURLcode result, const TransferNotes& notes);

}  // namespace arkeon
