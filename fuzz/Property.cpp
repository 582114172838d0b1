#include "fuzz/Property.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz {

void expect(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "\nDoes not hold: %s\n", property);
        std::abort();
    }
}

bool isFreeOfControls(std::string_view text, std::string_view allowed) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        const bool c1 = byte == 0xC2 && next >= 0x80 && next <= 0x9F;
        const bool control = byte < 0x20 || byte == 0x7F;
        if (c1 || (control && allowed.find(text[i]) == std::string_view::npos)) {
            return false;
        }
    }
    return true;
}

}  // namespace fuzz
