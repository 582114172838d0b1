#pragma once

#include <span>

/// The status codes as a table, for documentation and scripts; the tool itself uses `getECmsgl`.
namespace arkeon {

/// Is it worth retrying?
enum class Retry {
    no,    ///< it ends the same way until something is changed
    yes,   ///< nothing was done; the command may succeed later
    check  ///< the change may have been made; check before retrying
};

/// One status code, its context in the catalogue, its English text, and the advice on a retry.
struct StatusText {
    int code;
    const char* context;
    const char* message;
    Retry retry;
};

/// A row for each constant of status.h, by ascending code.
std::span<const StatusText> statusTable();

}  // namespace arkeon
