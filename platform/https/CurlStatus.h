#pragma once

#include "https/TransferNotes.h"

#include <curl/curl.h>

namespace arkeon {

/// The status code of a transfer that ended with `result`: 0 when a whole reply arrived.
int transferStatus(CURLcode result, const TransferNotes& notes);

}  // namespace arkeon
