#pragma once

#include <clocale>
#include <string>
#include <strings.h>

/// strcasecmp in the POSIX locale, whatever the terminal's language: in a Turkish locale "LIST" and
/// "list" would otherwise be different options.
/// @return below, equal to or above 0 as `a` sorts before, with or after `b`
inline int compareIgnoringCase(const char* a, const char* b) {
    static const locale_t posix = newlocale(LC_ALL_MASK, "C", nullptr);
    return strcasecmp_l(a, b, posix);
}

inline bool equalIgnoringCase(const std::string& a, const std::string& b) {
    return compareIgnoringCase(a.c_str(), b.c_str()) == 0;
}

/// The order of option names: byte strings that differ only in letter case are the same name.
struct ciCompare {
    bool operator()(const std::string& a, const std::string& b) const {
        return compareIgnoringCase(a.c_str(), b.c_str()) < 0;
    }
};
