// Times in milliseconds, eight bytes each: the dates of a listing are those of localtime and
// strftime, in whatever order they are asked for.

#include "fuzz/ListingModel.h"
#include "fuzz/Property.h"
#include "hostmgmt/listing/LocalDate.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

/// A zone whose clock changes twice a year, and by no whole hour.
const bool zoneIsSet = setenv("TZ", "ONE-01:30TWO-02:15,M3.5.0,M10.5.0/3", 1) == 0;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::expect(zoneIsSet, "the zone is set");
    for (std::size_t at = 0; at + sizeof(std::int64_t) <= size; at += sizeof(std::int64_t)) {
        std::int64_t milliseconds = 0;
        std::memcpy(&milliseconds, data + at, sizeof milliseconds);
        const std::string date = localDateText(milliseconds).data();
        fuzz::expect(date == fuzz::plainDate(milliseconds), "a date is that of the C library");
    }
    return 0;
}
