#include "driver/ArgumentCopy.h"

#include <ace/OS_NS_stdlib.h>
#include <cstdlib>
#include <vector>

namespace {

// Keeps copies reachable until the process ends.
void keep(char** copy) {
    static auto& copies = *new std::vector<char**>;
    copies.push_back(copy);
}

}  // namespace

char** copyArguments(int argc, char** argv, DuplicateString duplicate) {
    const auto count = static_cast<std::size_t>(argc);
    auto** copy = static_cast<char**>(ACE_OS::malloc((count + 1) * sizeof(char*)));
    if (copy == nullptr) {
        return nullptr;
    }
    for (std::size_t i = 0; i < count; ++i) {
        copy[i] = duplicate(argv[i]);
        if (copy[i] == nullptr) {
            while (i > 0) {
                std::free(copy[--i]);
            }
            ACE_OS::free(copy);
            return nullptr;
        }
    }
    copy[count] = nullptr;
    keep(copy);
    return copy;
}
