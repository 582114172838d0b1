#pragma once

// What the mutated sources call: which of their mutants is in force is chosen for each run. The
// header is put in front of every mutated source by the compiler's command line.

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

namespace mutation {

/// The choice of a run, from the environment: AK_MUTANT is the number of the mutant in force,
/// AK_MUTANTS_REACHED a file with one byte for each number, where those that the run came by are
/// noted; both may be absent.
struct Choice {
    long inForce = 0;
    unsigned char* reached = nullptr;
    long size = 0;

    Choice() noexcept {
        if (const char* number = std::getenv("AK_MUTANT"); number != nullptr) {
            inForce = std::atol(number);
        }
        const char* path = std::getenv("AK_MUTANTS_REACHED");
        const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
        struct stat about {};
        if (file >= 0 && fstat(file, &about) == 0) {
            void* memory = mmap(
                nullptr, static_cast<std::size_t>(about.st_size), PROT_READ | PROT_WRITE,
                MAP_SHARED, file, 0);
            if (memory != MAP_FAILED) {
                reached = static_cast<unsigned char*>(memory);
                size = about.st_size;
            }
        }
        if (file >= 0) {
            close(file);
        }
    }
};

/// Whether a mutant is in force.
inline bool on(long number) noexcept {
    static const Choice choice;
    if (number < choice.size) {
        choice.reached[number] = 1;
    }
    return number == choice.inForce;
}

/// A value that differs from another one.
template <typename Type>
std::decay_t<Type> other(const Type& value) {
    using Plain = std::decay_t<Type>;
    if constexpr (std::is_same_v<Plain, bool>) {
        return !value;
    } else if constexpr (std::is_integral_v<Plain>) {
        return value == 0 ? 1 : 0;
    } else if constexpr (std::is_enum_v<Plain>) {
        return static_cast<Plain>(static_cast<int>(value) + 1);
    } else if constexpr (std::is_same_v<Plain, const char*>) {
        const char* text = value;
        return text != nullptr && *text != '\0' ? "" : "mutant";
    } else if constexpr (std::is_pointer_v<Plain>) {
        return nullptr;
    } else {
        return value.empty() ? "mutant" : "";
    }
}

/// The same for a text of the catalogue.
template <typename Type>
requires requires(Type value) {
    value.id, value.text;
}
const Type& other(const Type& /*value*/) {
    static const Type changed{"Mutant", ""};
    return changed;
}

/// The same for an option's names.
template <typename Type>
requires requires(Type value) {
    value.name, value.alias;
}
const Type& other(const Type& /*value*/) {
    static const Type changed{"mutant", "mutant"};
    return changed;
}

/// A number or an enumerator moved by `step`.
template <typename Type>
std::decay_t<Type> moved(const Type& value, int step) {
    using Plain = std::decay_t<Type>;
    if constexpr (std::is_enum_v<Plain>) {
        return static_cast<Plain>(static_cast<int>(value) + step);
    } else {
        return static_cast<Plain>(value + static_cast<Plain>(step));
    }
}

}  // namespace mutation
