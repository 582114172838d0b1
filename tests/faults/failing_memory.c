/* Memory that cannot be had. */

#define _GNU_SOURCE
#include "plan.h"

#include <errno.h>
#include <stdlib.h>

/* The C library's own functions under their second names: dlsym takes memory itself. */

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

int inside;

static int no_memory(void) {
    static struct call of_program = {"allocation", 0, NULL};
    static struct call of_library = {"library_allocation", 0, NULL};
    static int none_left;
    if (!fails(inside > 0 ? &of_library : &of_program) && !none_left) {
        return 0;
    }
    none_left = fails_for_good();
    errno = ENOMEM;
    return 1;
}

void* malloc(size_t size) {
    return no_memory() ? NULL : __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
    return no_memory() ? NULL : __libc_calloc(count, size);
}

void* realloc(void* memory, size_t size) {
    return no_memory() ? NULL : __libc_realloc(memory, size);
}

void* memalign(size_t alignment, size_t size) {
    return no_memory() ? NULL : __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    return no_memory() ? NULL : __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, size_t alignment, size_t size) {
    *memory = no_memory() ? NULL : __libc_memalign(alignment, size);
    return *memory == NULL ? ENOMEM : 0;
}
