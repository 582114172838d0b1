#pragma once

#include <string>

namespace arkeon {

/// A shared library that is loaded while the program runs, and never unloaded. Why one cannot be
/// used is in the debug log.
class SharedLibrary {
public:
    /// `name` is what a program linked with the library asks the loader for, "libssl.so.3".
    explicit SharedLibrary(const char* name);

    /// The file at `path` if it is there and nobody but the superuser and the process's own user
    /// can change it; else the library of that name.
    SharedLibrary(const std::string& path, const char* name);

    /// Sets `function` to the library's function of that name; where there is none, `function`
    /// stays as it is.
    template <typename Function>
    void find(const char* name, Function& function) {
        if (void* address = find(name); address != nullptr) {
            function = reinterpret_cast<Function>(address);
        }
    }

    /// Whether the library was loaded and everything asked for was found.
    bool complete() const { return complete_; }

private:
    void* find(const char* name);

    void* handle_;
    bool complete_ = true;
};

}  // namespace arkeon
