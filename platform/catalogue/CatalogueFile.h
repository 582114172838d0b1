#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace arkeon {

/// No catalogue that is used is larger.
inline constexpr std::size_t largestCatalogue = std::size_t{1024} * 1024;

/// Whether gettext can be given these bytes of a catalogue. The C library believes what a catalogue
/// says about itself: one that was cut short while it was installed ends the process.
///
/// The form is that of the gettext manual ("The Format of GNU MO Files"), revisions 0 and 1, in
/// either byte order, without the strings that depend on the system (`<PRId64>`).
bool isSoundCatalogue(std::string_view bytes);

/// Whether every catalogue of `domain` below `directory` (LANG/LC_MESSAGES/DOMAIN.mo) is sound. One
/// that is not is named in the debug log. Each folder is looked through once in a process.
bool cataloguesAreSound(const std::string& directory, const std::string& domain);

}  // namespace arkeon
