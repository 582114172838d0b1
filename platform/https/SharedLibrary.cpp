#include "https/SharedLibrary.h"

#include "log/Report.h"

#include <dlfcn.h>

namespace arkeon {

SharedLibrary::SharedLibrary(std::initializer_list<const char*> names) {
    for (const char* name : names) {
        handle_ = handle_ == nullptr ? dlopen(name, RTLD_LAZY | RTLD_LOCAL) : handle_;
    }
    if (handle_ == nullptr) {
        note(dlerror());
    }
}

void* SharedLibrary::find(const char* name) {
    void* address = handle_ == nullptr ? nullptr : dlsym(handle_, name);
    if (handle_ != nullptr && address == nullptr) {
        note(dlerror());
    }
    return address;
}

void SharedLibrary::note(const char* failure) {
    report({failure == nullptr ? "a library cannot be used" : failure});
    complete_ = false;
}

}  // namespace arkeon
