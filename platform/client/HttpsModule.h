#pragma once

#include "https/HttpsTransport.h"

namespace arkeon {

/// The transport of this process. The module libarkeon-https.so is loaded at the first call, so
/// that a run without a request does not load libcurl, OpenSSL and the libraries behind them. The
/// dynamic loader finds it by the program's RUNPATH.
/// @return null if the module cannot be loaded; the reason is in the debug log
HttpsTransport* httpsTransport();

}  // namespace arkeon
