#include "arkeon/catalogue.h"
#include "arkeon/status_table.h"
#include "driver/ExecuteAkHostMgmt.h"
#include "tables/Tables.h"

#include <limits>
#include <string>

namespace {

using arkeon::Retry;
using arkeon::StatusText;

constexpr int shellBits = 0xff;

const char* nameOf(Retry retry) {
    switch (retry) {
    case Retry::no:
        return "no";
    case Retry::yes:
        return "yes";
    case Retry::check:
        return "check";
    }
    return "";
}

json_t* describe(const StatusText& row) {
    return json_pack(
        "{s:i, s:i, s:s, s:s}", "status", row.code, "shell", shellStatus(row.code) & shellBits,
        "meaning", row.message, "retry", nameOf(row.retry));
}

// The text for a number without a row, with %d in the number's place.
std::string unknownMeaning() {
    constexpr int withoutRow = std::numeric_limits<int>::max();
    const std::string number = std::to_string(withoutRow);
    std::string text = getECmsgl(withoutRow, zvlocale{"C", "C"});
    return text.replace(text.find(number), number.size(), "%d");
}

}  // namespace

json_t* statusTables() {
    json_t* rows = json_array();
    for (const StatusText& row : arkeon::statusTable()) {
        json_array_append_new(rows, describe(row));
    }
    // A code without a row is the server's own: only its documentation tells whether the change was
    // made.
    return json_pack(
        "{s:o, s:{s:s, s:s}}", "statuses", rows, "unknown", "meaning", unknownMeaning().c_str(),
        "retry", nameOf(Retry::check));
}
