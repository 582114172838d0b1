#include "hostmgmt/listing/ListLabels.h"

#include "cmdframework/Messages.h"

#include <cstring>
#include <iterator>

namespace {

constexpr int labelSize = 40;
constexpr int trustVersionLabelSize = 64;

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

HeaderType booleanLabel(const char* text) {
    return std::strcmp(text, yesText) == 0 ? HeaderType::yes : HeaderType::no;
}

}  // namespace

void GetLocalizedString(HeaderType type, char* buffer, int size) {
    const auto index = static_cast<std::size_t>(type);
    if (index >= std::size(labels)) {
        return;
    }
    getMessage(buffer, static_cast<unsigned long>(size), labels[index].id, labels[index].text);
}

void GetLocalizedBoolString(const char* text, char* buffer, int size) {
    GetLocalizedString(booleanLabel(text), buffer, size);
}

std::string labelText(HeaderType type) {
    std::array<char, trustVersionLabelSize> buffer{};
    GetLocalizedString(
        type, buffer.data(), type == HeaderType::trustVersion ? trustVersionLabelSize : labelSize);
    return buffer.data();
}

ListLabels::ListLabels() {
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        labels_[i] = labelText(static_cast<HeaderType>(i));
    }
}

const char* ListLabels::boolean(const char* text) const {
    return (*this)[booleanLabel(text)].c_str();
}
