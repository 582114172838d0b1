#include "cmdframework/CaseInsensitive.h"

#include <clocale>
#include <strings.h>

int compareIgnoringCase(const char* a, const char* b) {
    static const locale_t posix = newlocale(LC_ALL_MASK, "C", nullptr);
    return strcasecmp_l(a, b, posix);
}
