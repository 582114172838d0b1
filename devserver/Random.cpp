#include "devserver/Random.h"

#include "devserver/Failure.h"
#include "devserver/Text.h"

#include <openssl/rand.h>

#include <vector>

namespace devserver {

std::string randomHex(std::size_t bytes) {
    std::vector<unsigned char> random(bytes);
    if (RAND_bytes(random.data(), static_cast<int>(bytes)) != 1) {
        throw Failure("no random numbers are to be had");
    }
    return text::hex(random);
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
