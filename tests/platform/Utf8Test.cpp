#include "text/Utf8.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

namespace {

using arkeon::startsWithUtf8C1;
using arkeon::utf8CharacterLength;

/// The letter's bytes as RFC 3629 writes them (section 3).
std::string encoded(unsigned letter) {
    const auto rest = [letter](unsigned shift) {
        return static_cast<char>(0x80U | ((letter >> shift) & 0x3FU));
    };
    if (letter < 0x80U) {
        return {static_cast<char>(letter)};
    }
    if (letter < 0x800U) {
        return {static_cast<char>(0xC0U | letter >> 6U), rest(0)};
    }
    if (letter < 0x10000U) {
        return {static_cast<char>(0xE0U | letter >> 12U), rest(6), rest(0)};
    }
    return {static_cast<char>(0xF0U | letter >> 18U), rest(12), rest(6), rest(0)};
}

/// What the bytes of a form of `length` bytes stand for, whether they may or not.
unsigned decoded(const std::string& bytes, std::size_t length) {
    unsigned letter =
        static_cast<unsigned char>(bytes[0]) & (length == 1 ? 0x7FU : 0x3FU >> (length - 1));
    for (std::size_t i = 1; i < length; ++i) {
        letter = letter << 6U | (static_cast<unsigned char>(bytes[i]) & 0x3FU);
    }
    return letter;
}

/// The length of the letter at the start: that of the form which encodes to the same bytes.
std::size_t lengthByEncoding(const std::string& bytes) {
    for (std::size_t length = 1; length <= bytes.size(); ++length) {
        const unsigned letter = decoded(bytes, length);
        const bool allowed = letter <= 0x10FFFFU && (letter < 0xD800U || letter > 0xDFFFU);
        if (allowed && encoded(letter) == bytes.substr(0, length)) {
            return length;
        }
    }
    return 0;
}

/// The bytes at which a range of RFC 3629 (section 4) begins or ends, and their neighbours.
constexpr std::array<unsigned char, 14> limits = {0x00, 0x41, 0x7F, 0x80, 0x81, 0x8F, 0x90,
                                                  0x9F, 0xA0, 0xBE, 0xBF, 0xC0, 0xC1, 0xFF};

TEST(Utf8CharacterLength, IsThatOfTheShortestFormOfALetter) {
    for (unsigned lead = 0; lead <= 0xFFU; ++lead) {
        for (const unsigned char second : limits) {
            for (const unsigned char third : limits) {
                for (const unsigned char fourth : limits) {
                    const std::string bytes = {
                        static_cast<char>(lead), static_cast<char>(second),
                        static_cast<char>(third), static_cast<char>(fourth)};
                    ASSERT_EQ(utf8CharacterLength(bytes), lengthByEncoding(bytes))
                        << lead << ' ' << int{second} << ' ' << int{third} << ' ' << int{fourth};
                }
            }
        }
    }
}

TEST(Utf8CharacterLength, IsZeroForATextThatEndsWithinTheLetter) {
    EXPECT_EQ(utf8CharacterLength(""), 0U);
    for (const std::string_view letter : {"\xc3\xa4", "\xe2\x82\xac", "\xf0\x9f\x98\x80"}) {
        EXPECT_EQ(utf8CharacterLength(letter), letter.size());
        for (std::size_t length = 0; length < letter.size(); ++length) {
            EXPECT_EQ(utf8CharacterLength(letter.substr(0, length)), 0U) << letter;
        }
    }
}

TEST(StartsWithUtf8C1, OnlyForTheTwoBytesOfAControlCharacter) {
    for (unsigned letter = 0x7E; letter <= 0xA1U; ++letter) {
        const bool isC1 = letter >= 0x80U && letter <= 0x9FU;
        EXPECT_EQ(startsWithUtf8C1(encoded(letter) + "x"), isC1) << letter;
    }
    EXPECT_FALSE(startsWithUtf8C1("\xc2\x7f"));
    EXPECT_FALSE(startsWithUtf8C1("\xc2x"));
    EXPECT_FALSE(startsWithUtf8C1("\xc3\x80"));
    EXPECT_FALSE(startsWithUtf8C1(std::string_view("\xc2\x80", 1)));
    EXPECT_FALSE(startsWithUtf8C1(""));
}

}  // namespace
