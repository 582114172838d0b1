/* Preloaded: strdup of the text in AK_TEST_FAILING_STRDUP fails for want of memory. */

#include <errno.h>
#include <stdlib.h>
#include <string.h>

char* strdup(const char* text) {
    const char* failing = getenv("AK_TEST_FAILING_STRDUP");
    if (failing != NULL && strcmp(text, failing) == 0) {
        errno = ENOMEM;
        return NULL;
    }
    const size_t size = strlen(text) + 1;
    char* copy = malloc(size);
    return copy == NULL ? NULL : memcpy(copy, text, size);
}
