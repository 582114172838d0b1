#pragma once

#include <span>

/// All that is known of the status codes, as a table. What is made from it, documentation and data
/// for scripts, reads it here; a run of the tool takes its texts from `getECmsgl`.
namespace arkeon {

/// Whether it is of use to run the same command again after a status.
enum class Retry {
    no,    ///< it ends the same way until something is changed
    yes,   ///< nothing was done; the command may succeed later
    check  ///< a change may have been made or not, which is to be looked up first
};

/// One status code, its context in the catalogue, its English text, and the advice on a retry.
struct StatusText {
    int code;
    const char* context;
    const char* sentence;
    Retry retry;
};

/// A row for each constant of status.h, by ascending code.
std::span<const StatusText> statusTable();

}  // namespace arkeon
