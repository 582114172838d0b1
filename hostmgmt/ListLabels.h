#pragma once

#include "hostmgmt/ListText.h"

#include <array>
#include <string>

/// The labels of a listing in the catalogue's language, fetched once for all its rows.
class ListLabels {
public:
    ListLabels();

    const std::string& operator[](HeaderType type) const {
        return labels_[static_cast<std::size_t>(type)];
    }

    /// The catalogue's word for "Yes", and its "No" for every other text.
    const char* boolean(const char* text) const;

private:
    std::array<std::string, static_cast<std::size_t>(HeaderType::trustVersion) + 1> labels_;
    std::array<char, 40> yes_{};
    std::array<char, 40> no_{};
};
