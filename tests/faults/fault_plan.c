#define _GNU_SOURCE
#include "fault_plan.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <link.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static int ready; /* whether calls count; not those of this library itself */
static struct call* counted;
static const char* chosen;
static unsigned long chosen_count;
static int for_good;

static void mark(void) {
    static int marked;
    const char* path = getenv("AK_FAULT_MARK");
    if (!marked && path != NULL) {
        const int error = errno;
        marked = 1;
        ready = 0;
        close(open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        ready = 1;
        errno = error;
    }
}

int fails(struct call* call) {
    if (!ready) {
        return 0;
    }
    if (call->count++ == 0) {
        call->next = counted;
        counted = call;
    }
    if (chosen == NULL || strcmp(call->name, chosen) != 0 || call->count < chosen_count ||
        (call->count > chosen_count && !for_good)) {
        return 0;
    }
    mark();
    return 1;
}

int fails_for_good(void) {
    return for_good;
}

const char* object_of(const void* address) {
    struct dl_find_object object;
    if (_dl_find_object((void*)address, &object) != 0) {
        return "unknown";
    }
    return object.dlfo_link_map->l_name;
}

void* real(void** function, const char* name) {
    if (*function == NULL) {
        const int before = ready;
        ready = 0;
        *function = dlsym(RTLD_NEXT, name);
        if (*function == NULL) { /* in a library that only the module is linked with */
            *function = dlsym(dlopen("libarkeon-https.so", RTLD_LAZY | RTLD_NOLOAD), name);
        }
        ready = before;
    }
    return *function;
}

__attribute__((constructor)) static void begin(void) {
    const char* at = getenv("AK_FAULT_AT");
    chosen = getenv("AK_FAULT_CALL");
    chosen_count = at == NULL ? 0 : strtoul(at, NULL, 10);
    for_good = getenv("AK_FAULT_FOR_GOOD") != NULL;
    ready = 1;
}

__attribute__((destructor)) static void end(void) {
    const char* path = getenv("AK_FAULT_COUNTS");
    ready = 0;
    for_good = 0;
    FILE* file = path == NULL ? NULL : fopen(path, "we");
    if (file == NULL) {
        return;
    }
    for (const struct call* call = counted; call != NULL; call = call->next) {
        fprintf(file, "%s %lu\n", call->name, call->count);
    }
    fclose(file);
}
