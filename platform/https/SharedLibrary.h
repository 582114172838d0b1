#pragma once

#include <initializer_list>

namespace arkeon {

/// A shared library that is loaded while the program runs, and never unloaded.
class SharedLibrary {
public:
    /// The first of `names` that can be loaded. A name is what a program linked with the library
    /// asks the loader for ("libcurl.so.4"), or a path that may begin with "$ORIGIN", the program's
    /// folder. Why none can be loaded is in the debug log.
    SharedLibrary(std::initializer_list<const char*> names);

    /// Sets `function` to the library's function of that name. Why that cannot be had is in the
    /// debug log; `function` then stays as it is.
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
    void note(const char* failure);

    void* handle_ = nullptr;
    bool complete_ = true;
};

}  // namespace arkeon
