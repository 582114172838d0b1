#pragma once

#include "cmdframework/Messages.h"

/// The catalogued texts that several operations show.
namespace messages {

inline constexpr CatalogueText hostNameHoldsSlashes =
    catalogued("SmeHmm0018N", "Host name must not contain slashes ('/' or '\\')");
inline constexpr CatalogueText hostIdHoldsSlashes =
    catalogued("SmeHmm0019N", "Host ID must not contain slashes ('/' or '\\')");
inline constexpr CatalogueText webLoginRequired = catalogued(
    "SmeNsc0136N", "Authorization failed. A web login is required. Run the %s command to login.");

}  // namespace messages

/// The tool's name in its own texts.
inline constexpr const char* commandName = "akhostmgmt";
