#include "hostmgmt/listing/ListText.h"

#include "arkeon/console.h"
#include "arkeon/text.h"
#include "hostmgmt/Json.h"
#include "hostmgmt/listing/ListLabels.h"
#include "hostmgmt/listing/LocalDate.h"

#include <algorithm>
#include <cstring>
#include <string_view>

using arkeon::Console;

namespace {

constexpr std::size_t labelWidth = 40;
constexpr std::string_view spaces = "                                        ";
constexpr std::size_t maxColumnText = 15;

}  // namespace

const char* getTrimmedString(const char* key, json_t* object) {
    const char* text = stringMember(object, key);
    if (text == nullptr || std::strlen(text) <= maxColumnText) {
        return text;
    }
    const std::string cut = std::string(arkeon::cutText(text, maxColumnText)) + "~";
    checkJson(json_string_set(json_object_get(object, key), cut.c_str()) == 0);
    return stringMember(object, key);
}

void printAllowAutoReissueDetails(std::int64_t milliseconds) {
    printReissueValidity(labelText(HeaderType::autoReissueValidity), milliseconds);
}

void printReissueValidity(const std::string& label, std::int64_t milliseconds) {
    printLongLine(label, milliseconds == 0 ? "" : localDateText(milliseconds).data());
}

void printPadded(const char* text, std::size_t width) {
    const std::string_view field = text == nullptr ? "(null)" : text;
    Console& console = Console::standard();
    console.write(field);
    console.write(spaces.substr(0, width - std::min(width, field.size())));
}

void printLongLine(const std::string& label, const char* value) {
    Console& console = Console::standard();
    console.write("\n");
    printPadded(label.c_str(), labelWidth);
    console.write(" : ");
    printPadded(value, 0);
}
