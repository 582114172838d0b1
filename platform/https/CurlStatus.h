#pragma once

#include "arkeon/status.h"
#include "https/TransferNotes.h"

#include <curl/curl.h>
#include <string>
#include <string_view>

namespace arkeon {

/// The status of the transfer of `handle` that ended with `result`: `success` if a complete reply
/// arrived.
Status transferStatus(CURL* handle, CURLcode result, const TransferNotes& notes);

/// Why a transfer failed: libcurl's own text, if it has one, and what the notes add to it.
std::string
failureReason(CURLcode result, std::string_view libcurlText, const TransferNotes& notes);

}  // namespace arkeon
