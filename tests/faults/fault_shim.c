/* Preloaded: one call of a function fails, or every call from one on. The environment says which:

   AK_FAULT_CALL      the function's name; "allocation" and "library_allocation" stand for malloc
   and its like, called by the program or inside a library that it has loaded AK_FAULT_AT which of
   its calls, from 1 AK_FAULT_FOR_GOOD  set: every later one too; no memory at all is left then
   AK_FAULT_MARK      a file that is made when the first call fails
   AK_FAULT_COUNTS    a file that gets "NAME COUNT" of every function when the program exits

   AK_FAULT_WALK      a file: the run itself is not disturbed, but at each call a copy of the
   process goes on with a fault, and the file gets what came of it: "NAME NUMBER FOR_GOOD STATUS
   OUTPUT ERROR\n", the last two being the lengths of what follows, the bytes on standard output and
   on standard error. STATUS is the number of the signal, negated, where there was one AK_FAULT_KIND
   of a walk: "allocation", or "library" for all other functions AK_FAULT_SHARE     of a walk: "N
   M", every Nth call only, from the Mth on

   A copy shares its connection, its input and its files with the run. Before it uses one of the
   first two it ends with status 99: only a run of its own can tell what comes of this fault. So can
   it of a copy that waits for a lock of the run's, which a signal ends.

   Calls are counted once the preloaded library has been set up, just before the program's own
   start. Functions of libraries that the program loads itself are found by way of dlsym. */

#define _GNU_SOURCE
#include <curl/curl.h>
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <jansson.h>
#include <locale.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <pwd.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

struct call {
    const char* name;
    unsigned long count;
    struct call* next;
};

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

/* For what a copy must not share with the run. */
static void leave_copy(void) {
    if (is_copy) {
        _exit(UNDECIDED);
    }
}

/* Counts a call; whether it has to fail. */
static int fails(struct call* call) {
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

/* Memory. The C library's own functions under their second names: dlsym takes memory itself. */

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

/* How many calls into a loaded library are going on. */
static int inside;

static int no_memory(void) {
    static struct call of_program = {"allocation", 0, NULL};
    static struct call of_library = {"library_allocation", 0, NULL};
    static int none_left;
    if (!fails(inside > 0 ? &of_library : &of_program) && !none_left) {
        return 0;
    }
    none_left = for_good;
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

/* Everything else. */

static void* real_dlsym(void* handle, const char* name) {
    static void* (*function)(void*, const char*);
    if (function == NULL) {
        *(void**)&function = dlvsym(RTLD_NEXT, "dlsym", "GLIBC_2.2.5");
    }
    return function(handle, name);
}

/* The real function that stands behind the one of this name here, once found. */
static void* real(void** function, const char* name) {
    if (*function == NULL) {
        const int before = ready;
        ready = 0;
        *function = real_dlsym(RTLD_NEXT, name);
        ready = before;
    }
    return *function;
}

/* FAILING(TYPE, NAME, (PARAMETERS), (ARGUMENTS), FAILURE): NAME fails with the value FAILURE, an
   expression that may set errno. */
#define FAILING(type, name, parameters, arguments, failure)                                        \
    type name parameters;                                                                          \
    type name parameters {                                                                         \
        static struct call call = {#name, 0, NULL};                                                \
        static void* function;                                                                     \
        if (fails(&call)) {                                                                        \
            return failure;                                                                        \
        }                                                                                          \
        return ((type(*) parameters)real(&function, #name))arguments;                              \
    }

FAILING(int, access, (const char* path, int mode), (path, mode), (errno = EACCES, -1))
FAILING(
    char*, bind_textdomain_codeset, (const char* domain, const char* codeset), (domain, codeset),
    NULL)
FAILING(
    char*, bindtextdomain, (const char* domain, const char* directory), (domain, directory), NULL)
FAILING(char*, dgettext, (const char* domain, const char* text), (domain, text), (char*)text)
FAILING(int, close, (int file), (file), (errno = EIO, -1))
FAILING(int, fstat, (int file, struct stat* facts), (file, facts), (errno = EIO, -1))
FAILING(
    int, getpwuid_r,
    (uid_t user, struct passwd* entry, char* buffer, size_t size, struct passwd** found),
    (user, entry, buffer, size, found), (*found = NULL, EIO))
FAILING(int, closedir, (DIR * folder), (folder), (errno = EIO, -1))
FAILING(DIR*, fdopendir, (int file), (file), (errno = ENOMEM, NULL))
FAILING(int, ftruncate, (int file, off_t size), (file, size), (errno = EIO, -1))
FAILING(off_t, lseek, (int file, off_t place, int from), (file, place, from), (errno = ESPIPE, -1))
FAILING(struct dirent*, readdir, (DIR * folder), (folder), (errno = EIO, NULL))
FAILING(int, isatty, (int file), (file), (errno = EIO, 0))
FAILING(int, lstat, (const char* path, struct stat* facts), (path, facts), (errno = EACCES, -1))
FAILING(
    int, madvise, (void* memory, size_t size, int advice), (memory, size, advice),
    (errno = EINVAL, -1))
int poll(struct pollfd* files, nfds_t count, int wait) {
    static struct call call = {"poll", 0, NULL};
    static void* function;
    if (fails(&call)) {
        errno = ENOMEM;
        return -1;
    }
    leave_copy();
    return ((int (*)(struct pollfd*, nfds_t, int))real(&function, "poll"))(files, count, wait);
}

ssize_t read(int file, void* to, size_t size) {
    static struct call call = {"read", 0, NULL};
    static void* function;
    if (fails(&call)) {
        errno = EIO;
        return -1;
    }
    if (file == STDIN_FILENO) {
        leave_copy();
    }
    return ((ssize_t(*)(int, void*, size_t))real(&function, "read"))(file, to, size);
}

FAILING(
    ssize_t, readlink, (const char* path, char* to, size_t size), (path, to, size),
    (errno = EACCES, -1))
FAILING(char*, setlocale, (int category, const char* name), (category, name), NULL)
FAILING(
    int, sigtimedwait, (const sigset_t* set, siginfo_t* facts, const struct timespec* wait),
    (set, facts, wait), (errno = EINTR, -1))
FAILING(
    int, socket, (int domain, int type, int protocol), (domain, type, protocol),
    (errno = EMFILE, -1))
FAILING(char*, strdup, (const char* text), (text), (errno = ENOMEM, NULL))
FAILING(
    ssize_t, write, (int file, const void* from, size_t size), (file, from, size),
    (errno = ENOSPC, -1))

FAILING(json_t*, json_object, (void), (), NULL)
FAILING(json_t*, json_string, (const char* text), (text), NULL)
FAILING(
    int, json_object_set_new, (json_t * object, const char* key, json_t* value),
    (object, key, value), -1)
FAILING(int, json_string_set, (json_t * string, const char* text), (string, text), -1)
FAILING(char*, json_dumps, (const json_t* value, size_t flags), (value, flags), NULL)
FAILING(
    int, json_dump_callback,
    (const json_t* value, json_dump_callback_t take, void* data, size_t flags),
    (value, take, data, flags), -1)
/* What a copy of the process must not do. */
#define LEAVING(type, name, parameters, arguments)                                                 \
    type name parameters {                                                                         \
        static void* function;                                                                     \
        leave_copy();                                                                              \
        return ((type(*) parameters)real(&function, #name))arguments;                              \
    }

LEAVING(int, connect, (int file, const struct sockaddr* to, socklen_t size), (file, to, size))
LEAVING(ssize_t, recv, (int file, void* to, size_t size, int flags), (file, to, size, flags))
LEAVING(
    ssize_t, send, (int file, const void* from, size_t size, int flags), (file, from, size, flags))
LEAVING(int, shutdown, (int file, int how), (file, how))

/* Functions with a mode or an argument only sometimes. */

int open(const char* path, int flags, ...) {
    static struct call call = {"open", 0, NULL};
    static void* function;
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (fails(&call)) {
        errno = EMFILE;
        return -1;
    }
    return ((int (*)(const char*, int, ...))real(&function, "open"))(path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
    static struct call call = {"openat", 0, NULL};
    static void* function;
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (fails(&call)) {
        errno = EMFILE;
        return -1;
    }
    return ((int (*)(int, const char*, int, ...))real(&function, "openat"))(
        folder, path, flags, mode);
}

int prctl(int option, ...) {
    static struct call call = {"prctl", 0, NULL};
    static void* function;
    va_list arguments;
    va_start(arguments, option);
    const unsigned long argument = va_arg(arguments, unsigned long);
    va_end(arguments);
    if (fails(&call)) {
        errno = EINVAL;
        return -1;
    }
    return ((int (*)(int, ...))real(&function, "prctl"))(option, argument, 0UL, 0UL, 0UL);
}

int __open_2(const char* path, int flags);
int __open_2(const char* path, int flags) {
    return open(path, flags);
}

int fcntl(int file, int command, ...) {
    static struct call call = {"fcntl", 0, NULL};
    static void* function;
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (fails(&call)) {
        errno = EINVAL;
        return -1;
    }
    return ((int (*)(int, int, ...))real(&function, "fcntl"))(file, command, argument);
}

static int format_fails(void) {
    static struct call call = {"vsnprintf", 0, NULL};
    if (!fails(&call)) {
        return 0;
    }
    errno = ENOMEM;
    return 1;
}

int vsnprintf(char* to, size_t size, const char* format, va_list arguments) {
    static void* function;
    return format_fails() ? -1
                          : ((int (*)(char*, size_t, const char*, va_list))real(
                                &function, "vsnprintf"))(to, size, format, arguments);
}

int __vsnprintf_chk(
    char* to, size_t size, int flag, size_t room, const char* format, va_list arguments);
int __vsnprintf_chk(
    char* to, size_t size, int flag, size_t room, const char* format, va_list arguments) {
    static void* function;
    return format_fails()
               ? -1
               : ((int (*)(char*, size_t, int, size_t, const char*, va_list))real(
                     &function, "__vsnprintf_chk"))(to, size, flag, room, format, arguments);
}

/* Of a library that is not there the loader says why. */
void* dlopen(const char* name, int mode) {
    static struct call call = {"dlopen", 0, NULL};
    static void* function;
    const char* path = fails(&call) ? "/dev/null/library" : name;
    ++inside;
    void* library = ((void* (*)(const char*, int))real(&function, "dlopen"))(path, mode);
    --inside;
    return library;
}

/* Of the libraries that the program loads: the real function is what dlsym last found. */
#define LOADED(type, name, parameters, arguments, failure)                                         \
    static void* real_##name;                                                                      \
    static type failing_##name parameters {                                                        \
        static struct call call = {#name, 0, NULL};                                                \
        if (fails(&call)) {                                                                        \
            return failure;                                                                        \
        }                                                                                          \
        ++inside;                                                                                  \
        type result = ((type(*) parameters)real_##name)arguments;                                  \
        --inside;                                                                                  \
        return result;                                                                             \
    }

LOADED(
    int, curl_global_init_mem,
    (long flags, void* allocate, void* release, void* again, void* copy, void* zeroed),
    (flags, allocate, release, again, copy, zeroed), CURLE_FAILED_INIT)
LOADED(void*, curl_easy_init, (void), (), NULL)

/* What the program does with a reply's bytes is done by the program. */
static size_t (*on_body)(char* data, size_t one, size_t size, void* context);

static size_t take_body(char* data, size_t one, size_t size, void* context) {
    --inside;
    const size_t taken = on_body(data, one, size, context);
    ++inside;
    return taken;
}

/* The third argument is a long, an off_t or a pointer: each takes one register. */
static void* real_curl_easy_setopt;
static int failing_curl_easy_setopt(void* handle, int option, void* value) {
    static struct call call = {"curl_easy_setopt", 0, NULL};
    if (fails(&call)) {
        return CURLE_OUT_OF_MEMORY;
    }
    if (option == CURLOPT_WRITEFUNCTION) {
        *(void**)&on_body = value;
        value = (void*)take_body;
    }
    ++inside;
    const int result = ((int (*)(void*, int, ...))real_curl_easy_setopt)(handle, option, value);
    --inside;
    return result;
}

LOADED(int, curl_easy_perform, (void* handle), (handle), CURLE_OUT_OF_MEMORY)
LOADED(
    int, curl_easy_getinfo, (void* handle, int info, void* value), (handle, info, value),
    CURLE_UNKNOWN_OPTION)
LOADED(
    int, curl_easy_header,
    (void* handle, const char* name, size_t index, unsigned origin, int request, void* header),
    (handle, name, index, origin, request, header), CURLHE_OUT_OF_MEMORY)
LOADED(void*, curl_url, (void), (), NULL)
LOADED(
    int, curl_url_set, (void* url, int part, const char* text, unsigned flags),
    (url, part, text, flags), CURLUE_OUT_OF_MEMORY)
LOADED(void*, curl_slist_append, (void* list, const char* text), (list, text), NULL)
LOADED(
    int, CRYPTO_set_mem_functions, (void* allocate, void* again, void* release),
    (allocate, again, release), 0)
LOADED(int, OPENSSL_init_crypto, (uint64_t options, const void* settings), (options, settings), 0)
LOADED(
    int, CRYPTO_get_ex_new_index,
    (int class, long number, void* pointer, void* make, void* copy, void* release),
    (class, number, pointer, make, copy, release), -1)
LOADED(int, SSL_CTX_set_ex_data, (void* context, int index, void* data), (context, index, data), 0)

#define ENTRY(name)                                                                                \
    { #name, &real_##name, (void*)failing_##name }
static const struct {
    const char* name;
    void** function;
    void* failing;
} loaded[] = {
    ENTRY(curl_global_init_mem),
    ENTRY(curl_easy_init),
    ENTRY(curl_easy_setopt),
    ENTRY(curl_easy_perform),
    ENTRY(curl_easy_getinfo),
    ENTRY(curl_easy_header),
    ENTRY(curl_url),
    ENTRY(curl_url_set),
    ENTRY(curl_slist_append),
    ENTRY(CRYPTO_set_mem_functions),
    ENTRY(OPENSSL_init_crypto),
    ENTRY(CRYPTO_get_ex_new_index),
    ENTRY(SSL_CTX_set_ex_data),
};

void* dlsym(void* handle, const char* name) {
    static struct call call = {"dlsym", 0, NULL};
    if (fails(&call)) {
        return real_dlsym(handle, "no such function");
    }
    void* found = real_dlsym(handle, name);
    for (size_t i = 0; found != NULL && i < sizeof loaded / sizeof *loaded; ++i) {
        if (strcmp(loaded[i].name, name) == 0) {
            *loaded[i].function = found;
            return loaded[i].failing;
        }
    }
    return found;
}
