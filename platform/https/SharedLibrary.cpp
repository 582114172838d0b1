#include "https/SharedLibrary.h"

#include "log/Report.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace arkeon {
namespace {

void reportLoaderError() {
    const char* reason = dlerror();
    report({reason == nullptr ? "the loader gives no reason" : reason});
}

void* load(const char* name) {
    void* handle = dlopen(name, RTLD_LAZY | RTLD_LOCAL);
    if (handle == nullptr) {
        reportLoaderError();
    }
    return handle;
}

bool othersCanChange(int file) {
    struct stat facts {};
    const bool known = fstat(file, &facts) == 0 && S_ISREG(facts.st_mode);
    const bool owned = facts.st_uid == 0 || facts.st_uid == geteuid();
    return !known || !owned || (facts.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

/// What is loaded is the very file that was looked at: its folder may belong to somebody else.
void* loadTrusted(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0) {
        return nullptr;
    }
    void* handle = nullptr;
    if (othersCanChange(file)) {
        report({path, ": not loaded, since others could have changed it"});
    } else {
        handle = load(("/proc/self/fd/" + std::to_string(file)).c_str());
    }
    close(file);
    return handle;
}

}  // namespace

SharedLibrary::SharedLibrary(const char* name) : handle_(load(name)) {
    complete_ = handle_ != nullptr;
}

SharedLibrary::SharedLibrary(const std::string& path, const char* name)
    : handle_(loadTrusted(path)) {
    handle_ = handle_ == nullptr ? load(name) : handle_;
    complete_ = handle_ != nullptr;
}

void* SharedLibrary::find(const char* name) {
    void* address = handle_ == nullptr ? nullptr : dlsym(handle_, name);
    if (handle_ != nullptr && address == nullptr) {
        reportLoaderError();
        complete_ = false;
    }
    return address;
}

}  // namespace arkeon
