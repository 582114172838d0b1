#pragma once

#include <jansson.h>
#include <string>

namespace fuzz {

/// The query that a listing answers.
enum class Listed {
    all,       ///< every host, approved mappings before pending ones
    some,      ///< the hosts that pass a filter
    oneHost,   ///< the reply is one host record
    ownNames,  ///< the same, of which only the mappings are shown
};

/// What the long listing of a reply looks like, written down a second time with printf.
std::string longListing(const json_t* reply, Listed listed);

/// The same for the short listing.
std::string shortListing(const json_t* reply, Listed listed);

/// Milliseconds since the epoch as local date and time, by localtime and strftime alone.
std::string plainDate(json_int_t milliseconds);

}  // namespace fuzz
