// Out of memory in the tool's own code: `operator new`, as "operator_new", and the allocations of
// the argument copy, as "argument_copy". Allocations inside C libraries succeed.

#include "fault_plan.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// If one allocation fails for good, so do the others.
bool outOfMemory(call& allocation) {
    static bool failed = false;
    const bool failsNow = fails(&allocation) != 0;
    failed = failed || failsNow;
    return failsNow || (failed && fails_for_good() != 0);
}

bool argumentCopyFails() {
    static call allocation = {"argument_copy", 0, nullptr};
    return outOfMemory(allocation);
}

// toml++ allocates in functions that are noexcept.
bool isToml(const void* caller) {
    return std::strstr(object_of(caller), "libtomlplusplus") != nullptr;
}

}  // namespace

// The other forms of `operator new` that the tool uses call this one.
void* operator new(std::size_t size) {
    static call allocation = {"operator_new", 0, nullptr};
    const bool failed = !isToml(__builtin_return_address(0)) && outOfMemory(allocation);
    void* memory = failed ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

namespace ACE_OS {
void* malloc(std::size_t size);
}
void* ACE_OS::malloc(std::size_t size) {
    return argumentCopyFails() ? nullptr : std::malloc(size);
}

extern "C" char* strdup(const char* text) noexcept {
    const bool isLibrary = *object_of(__builtin_return_address(0)) != '\0';
    if (!isLibrary && argumentCopyFails()) {
        return nullptr;
    }
    const std::size_t size = std::strlen(text) + 1;
    void* copy = std::malloc(size);
    return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}
