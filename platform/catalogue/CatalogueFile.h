#pragma once

#include <string>
#include <string_view>

namespace arkeon {

/// Whether `content` is a message catalogue that gettext can read without leaving it: a GNU MO file
/// (GNU gettext manual, "The Format of GNU MO Files") of either byte order, without
/// system-dependent strings, whose tables and texts lie inside and whose hash table, if there is
/// one, ends every search.
bool isCatalogue(std::string_view content);

/// Whether every catalogue of the domain `akhostmgmt` below `localeFolder` can be left to gettext,
/// which opens whatever is in a catalogue's place and believes what it reads: a FIFO would hold the
/// run up, a damaged file crash it. What is wrong goes to the debug log. No catalogue is fine.
bool cataloguesAreSound(const std::string& localeFolder);

}  // namespace arkeon
