#pragma once

#include "https/TransferNotes.h"

#include <curl/curl.h>

namespace arkeon {

/// The status code of the transfer of `handle` that ended with `result`: 0 when a whole reply
/// arrived.
int transferStatus(CURL* handle, CURLcode result, const TransferNotes& notes);

}  // namespace arkeon
