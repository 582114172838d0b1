#include "text/Utf8.h"

#include "arkeon/text.h"

namespace arkeon {
namespace {

unsigned byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

/// What may follow a lead byte: the number of bytes and the range of the second one, which keeps
/// out overlong forms, surrogates and everything above U+10FFFF (RFC 3629, section 4).
struct LeadByte {
    std::size_t length;
    unsigned secondLow;
    unsigned secondHigh;
};

LeadByte threeByteLead(unsigned lead) {
    return {3, lead == 0xE0U ? 0xA0U : 0x80U, lead == 0xEDU ? 0x9FU : 0xBFU};
}

LeadByte fourByteLead(unsigned lead) {
    return {4, lead == 0xF0U ? 0x90U : 0x80U, lead == 0xF4U ? 0x8FU : 0xBFU};
}

/// An invalid lead byte gets an impossible length, so that the size check fails.
LeadByte describeLead(unsigned lead) {
    if (lead < 0xC2U || lead > 0xF4U) {
        return {std::string_view::npos, 0, 0};
    }
    if (lead <= 0xDFU) {
        return {2, 0x80U, 0xBFU};
    }
    return lead <= 0xEFU ? threeByteLead(lead) : fourByteLead(lead);
}

}  // namespace

std::size_t utf8CharacterLength(std::string_view text) {
    if (text.empty()) {
        return 0;
    }
    if (byteAt(text, 0) < 0x80U) {
        return 1;
    }
    const LeadByte lead = describeLead(byteAt(text, 0));
    if (text.size() < lead.length) {
        return 0;
    }
    if (byteAt(text, 1) < lead.secondLow || byteAt(text, 1) > lead.secondHigh) {
        return 0;
    }
    for (std::size_t index = 2; index < lead.length; ++index) {
        if (!isUtf8Continuation(text[index])) {
            return 0;
        }
    }
    return lead.length;
}

bool startsWithUtf8C1(std::string_view text) {
    return text.size() >= 2 && byteAt(text, 0) == 0xC2U && byteAt(text, 1) >= 0x80U &&
           byteAt(text, 1) <= 0x9FU;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = utf8CharacterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string_view cutText(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) {
        return text;
    }
    for (std::size_t back = 1; back <= limit; ++back) {
        const std::size_t start = limit - back;
        if (!isUtf8Continuation(text[start])) {
            const bool split = utf8CharacterLength(text.substr(start)) > back;
            return text.substr(0, split ? start : limit);
        }
    }
    return text.substr(0, limit);
}

}  // namespace arkeon
