#include "hostmgmt/ListLabels.h"

#include <cstring>

ListLabels::ListLabels() {
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        labels_[i] = labelText(static_cast<HeaderType>(i));
    }
    GetLocalizedBoolString(yesText, yes_.data(), static_cast<int>(yes_.size()));
    GetLocalizedBoolString(noText, no_.data(), static_cast<int>(no_.size()));
}

const char* ListLabels::boolean(const char* text) const {
    return std::strcmp(text, yesText) == 0 ? yes_.data() : no_.data();
}
