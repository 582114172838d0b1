#include "hostmgmt/ListText.h"

#include "arkeon/console.h"
#include "arkeon/text.h"
#include "cmdframework/Messages.h"
#include "hostmgmt/LocalDate.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

using arkeon::Console;

namespace {

constexpr int labelSize = 40;
constexpr int trustVersionLabelSize = 64;
constexpr std::size_t labelWidth = 40;
constexpr std::size_t longestColumnText = 15;

// By the number of the HeaderType.
constexpr CatalogueText labels[] = {
    catalogued("SmeHmm0039N", "Host ID"),
    catalogued("SmeHmm0029N", "Mapped Names"),
    catalogued("SmeHmm0020N", "Host"),
    catalogued("SmeHmm0021N", "Master Server"),
    catalogued("SmeHmm0022N", "OS Type"),
    catalogued("SmeHmm0023N", "Operating System"),
    catalogued("SmeHmm0024N", "Arkeon EEBs"),
    catalogued("SmeHmm0071N", "Arkeon Packages"),
    catalogued("SmeHmm0072N", "QxUpdate Platform"),
    catalogued("SmeHmm0025N", "Hardware Description"),
    catalogued("SmeHmm0026N", "CPU Architecture"),
    catalogued("SmeHmm0027N", "Version"),
    catalogued("SmeHmm0028N", "Secure"),
    catalogued("SmeHmm0030N", "Mapped Host Name"),
    catalogued("SmeHmm0031N", "Approved"),
    catalogued("SmeHmm0032N", "Conflict"),
    catalogued("SmeHmm0033N", "Auto-discovered"),
    catalogued("SmeHmm0034N", "Shared"),
    catalogued("SmeHmm0035N", "Created On"),
    catalogued("SmeHmm0036N", "Last Updated On"),
    catalogued("SmeHmm0037N", "Yes"),
    catalogued("SmeHmm0038N", "No"),
    catalogued("SmeHmm0041N", "Comment"),
    catalogued("SmeHmm0055N", "Allow Auto Reissue Certificate"),
    catalogued("SmeHmm0056N", "Allow Auto Reissue Certificate Validity"),
    catalogued("SmeHmm0066N", "Subject Name of External Certificate"),
    catalogued("SmeHmm0067N", "Arkeon CA Issued Certificate"),
    catalogued("SmeHmm0168N", "Trust Version"),
};
static_assert(std::size(labels) == static_cast<std::size_t>(HeaderType::trustVersion) + 1);

}  // namespace

void GetLocalizedString(HeaderType type, char* buffer, int size) {
    const auto index = static_cast<std::size_t>(type);
    if (index >= std::size(labels)) {
        return;
    }
    getMessage(
        buffer, static_cast<unsigned long>(size), labels[index].id, labels[index].text, nullptr,
        nullptr, nullptr);
}

std::string labelText(HeaderType type) {
    std::array<char, trustVersionLabelSize> buffer{};
    GetLocalizedString(
        type, buffer.data(), type == HeaderType::trustVersion ? trustVersionLabelSize : labelSize);
    return buffer.data();
}

void GetLocalizedBoolString(const char* text, char* buffer, int size) {
    const bool yes = std::strcmp(text, yesText) == 0;
    GetLocalizedString(yes ? HeaderType::yes : HeaderType::no, buffer, size);
}

const char* getTrimmedString(const char* key, json_t* object) {
    const char* text = stringMember(object, key);
    if (text == nullptr || std::strlen(text) <= longestColumnText) {
        return text;
    }
    const std::string cut = std::string(arkeon::cutText(text, longestColumnText)) + "~";
    checkJson(json_string_set(json_object_get(object, key), cut.c_str()) == 0);
    return stringMember(object, key);
}

void printAllowAutoReissueDetails(std::int64_t milliseconds) {
    static const std::string label = labelText(HeaderType::autoReissueValidity);
    printLongLine(label, milliseconds == 0 ? "" : localDateText(milliseconds).data());
}

void printPadded(const char* text, std::size_t width) {
    constexpr std::string_view blanks = "                                        ";
    const std::string_view field = text == nullptr ? "(null)" : text;
    Console& console = Console::standard();
    console.write(field);
    for (std::size_t missing = width - std::min(width, field.size()); missing > 0;) {
        const std::string_view some = blanks.substr(0, missing);
        console.write(some);
        missing -= some.size();
    }
}

void printLongLine(const std::string& label, const char* value) {
    Console& console = Console::standard();
    console.write("\n");
    printPadded(label.c_str(), labelWidth);
    console.write(" : ");
    printPadded(value, 0);
}
