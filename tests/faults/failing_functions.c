/* Functions of the C library and of jansson that fail. */

#define _GNU_SOURCE
#include "plan.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <jansson.h>
#include <locale.h>
#include <poll.h>
#include <pwd.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

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
