#include "devserver/Random.h"

#include "devserver/Failure.h"

#include <openssl/rand.h>

#include <string_view>
#include <vector>

namespace devserver {

std::string randomHex(std::size_t bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::vector<unsigned char> random(bytes);
    if (RAND_bytes(random.data(), static_cast<int>(bytes)) != 1) {
        throw Failure("no random numbers are to be had");
    }
    std::string text;
    for (const unsigned char byte : random) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

std::string randomUuid() {
    std::string digits = randomHex(16);
    digits[12] = '4';
    digits[16] = 'a';
    for (const std::size_t dash : {20U, 16U, 12U, 8U}) {
        digits.insert(dash, 1, '-');
    }
    return digits;
}

}  // namespace devserver
