/* Which call fails, and the walk of which copies fail. See plan.h. */

#define _GNU_SOURCE
#include "plan.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

static int ready;
static struct call* counted;
static const char* chosen;
static unsigned long chosen_count;
static int for_good;
static int marked;

static void mark(void) {
    const char* path = getenv("AK_FAULT_MARK");
    if (!marked && path != NULL) {
        marked = 1;
        syscall(
            SYS_close,
            (int)syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    }
}

enum { UNDECIDED = 99, LONGEST_COPY = 2 };

/* The walk: its file, what its copies write to, and the calls so far. */
static int walk = -1;
static int copy_output;
static int copy_error;
static int walks_memory;
static unsigned long share = 1;
static unsigned long share_begin;
static unsigned long walked;
static int is_copy;

/* Out of the way of the numbers that the program's own files get. */
static int high(int file) {
    enum { HIGH = 200 };
    const int moved = (int)syscall(SYS_fcntl, file, F_DUPFD_CLOEXEC, HIGH);
    syscall(SYS_close, file);
    return moved;
}

static void begin_walk(const char* path) {
    const char* part = getenv("AK_FAULT_SHARE");
    if (part != NULL) {
        char* rest = NULL;
        share = strtoul(part, &rest, 10);
        share_begin = strtoul(rest, NULL, 10) % share;
    }
    walks_memory = strcmp(getenv("AK_FAULT_KIND"), "allocation") == 0;
    walk = high((int)syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND, 0600));
    copy_output = high((int)syscall(SYS_memfd_create, "output", 0));
    copy_error = high((int)syscall(SYS_memfd_create, "error", 0));
}

static void begin_copy(const struct call* call, int for_good_too) {
    is_copy = 1;
    chosen = call->name;
    chosen_count = call->count;
    for_good = for_good_too;
    syscall(SYS_dup2, copy_output, STDOUT_FILENO);
    syscall(SYS_dup2, copy_error, STDERR_FILENO);
    alarm(LONGEST_COPY);
}

static off_t length_of(int file) {
    return syscall(SYS_lseek, file, 0, SEEK_END);
}

static void record_stream(int file) {
    char piece[4096];
    long count = 0;
    syscall(SYS_lseek, file, 0, SEEK_SET);
    while ((count = syscall(SYS_read, file, piece, sizeof piece)) > 0) {
        syscall(SYS_write, walk, piece, count);
    }
    syscall(SYS_lseek, file, 0, SEEK_SET);
    syscall(SYS_ftruncate, file, 0);
}

static void record_copy(const struct call* call, int for_good_too, int result) {
    const int status = WIFSIGNALED(result) ? -WTERMSIG(result) : WEXITSTATUS(result);
    char line[256];
    const int ready_before = ready;
    ready = 0;
    const int length = snprintf(
        line, sizeof line, "%s %lu %d %d %ld %ld\n", call->name, call->count, for_good_too, status,
        (long)length_of(copy_output), (long)length_of(copy_error));
    ready = ready_before;
    syscall(SYS_write, walk, line, length);
    record_stream(copy_output);
    record_stream(copy_error);
}

/* Lets copies go on in which the call fails; whether this is one. */
static int is_failing_copy(const struct call* call) {
    const int is_memory = strstr(call->name, "allocation") != NULL;
    if (is_memory != walks_memory || walked++ % share != share_begin) {
        return 0;
    }
    const int error = errno;
    for (int good = 0; good <= 1; ++good) {
        /* Not fork, after which the locks that are held would count as somebody else's. */
        const pid_t copy = (pid_t)syscall(SYS_clone, SIGCHLD, NULL, NULL, NULL, 0);
        if (copy == 0) {
            begin_copy(call, good);
            errno = error;
            return 1;
        }
        int result = 0;
        while (syscall(SYS_wait4, copy, &result, 0, NULL) < 0) {
        }
        record_copy(call, good, result);
    }
    errno = error;
    return 0;
}

int fails_for_good(void) {
    return for_good;
}

void leave_copy(void) {
    if (is_copy) {
        _exit(UNDECIDED);
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
    if (walk >= 0 && !is_copy) {
        return is_failing_copy(call);
    }
    if (chosen == NULL || strcmp(call->name, chosen) != 0) {
        return 0;
    }
    if (for_good ? call->count < chosen_count : call->count != chosen_count) {
        return 0;
    }
    const int error = errno;
    mark();
    errno = error;
    return 1;
}

__attribute__((constructor)) static void begin(void) {
    const char* at = getenv("AK_FAULT_AT");
    chosen = getenv("AK_FAULT_CALL");
    chosen_count = at == NULL ? 0 : strtoul(at, NULL, 10);
    for_good = getenv("AK_FAULT_FOR_GOOD") != NULL;
    if (getenv("AK_FAULT_WALK") != NULL) {
        begin_walk(getenv("AK_FAULT_WALK"));
    }
    ready = 1;
}

__attribute__((destructor)) static void end(void) {
    const char* path = getenv("AK_FAULT_COUNTS");
    ready = 0;
    if (path == NULL) {
        return;
    }
    const int file =
        (int)syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    for (const struct call* call = counted; call != NULL; call = call->next) {
        dprintf(file, "%s %lu\n", call->name, call->count);
    }
    syscall(SYS_close, file);
}

void* real_dlsym(void* handle, const char* name) {
    static void* (*function)(void*, const char*);
    if (function == NULL) {
        *(void**)&function = dlvsym(RTLD_NEXT, "dlsym", "GLIBC_2.2.5");
    }
    return function(handle, name);
}

void* real(void** function, const char* name) {
    if (*function == NULL) {
        const int before = ready;
        ready = 0;
        *function = real_dlsym(RTLD_NEXT, name);
        ready = before;
    }
    return *function;
}
