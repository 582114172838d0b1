/* Functions of the C library, jansson, libcurl and OpenSSL that fail. */

#define _GNU_SOURCE
#include "fault_plan.h"

#include <curl/curl.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <jansson.h>
#include <locale.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <pwd.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#undef curl_easy_getinfo
#undef curl_easy_setopt

/* FAILING(TYPE, NAME, (PARAMETERS), (ARGUMENTS), FAILURE): NAME fails with the value FAILURE, an
   expression that may set errno. */
#define FAILING(type, name, parameters, arguments, failure)                                        \
    FAILING_AS(name, 1, type, name, parameters, arguments, failure)

/* The same, but calls from inside other libraries do not count. */
#define FAILING_OURS(type, name, parameters, arguments, failure)                                   \
    FAILING_AS(name, IS_OURS, type, name, parameters, arguments, failure)

#define IS_OURS is_ours(__builtin_return_address(0))
static int is_ours(const void* caller) {
    const char* path = object_of(caller);
    return *path == '\0' || strstr(path, "libarkeon-https.so") != NULL;
}

/* FAILING_AS(FUNCTION, CONDITION, ...): if CONDITION is true, counted as a call of FUNCTION. */
#define FAILING_AS(function_name, condition, type, name, parameters, arguments, failure)           \
    type name parameters;                                                                          \
    type name parameters {                                                                         \
        static struct call call = {#function_name, 0, NULL};                                       \
        static void* function;                                                                     \
        if ((condition) && fails(&call)) {                                                         \
            return failure;                                                                        \
        }                                                                                          \
        return ((type(*) parameters)real(&function, #name))arguments;                              \
    }

/* FAILING_VARIADIC(CONDITION, TYPE, NAME, (PARAMETERS, ...), LAST, EXTRA, (ARGUMENTS, extra),
   FAILURE): a function with at most one argument more, of the type EXTRA. An argument that is
   missing is read and passed on all the same; the function ignores it. */
#define FAILING_VARIADIC(condition, type, name, parameters, last, extra_type, arguments, failure)  \
    type name parameters {                                                                         \
        static struct call call = {#name, 0, NULL};                                                \
        static void* function;                                                                     \
        va_list list;                                                                              \
        va_start(list, last);                                                                      \
        const extra_type extra = va_arg(list, extra_type);                                         \
        va_end(list);                                                                              \
        if ((condition) && fails(&call)) {                                                         \
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
FAILING(int, close, (int file), (file), (errno = EIO, -1))
FAILING(char*, dgettext, (const char* domain, const char* text), (domain, text), (char*)text)
FAILING_VARIADIC(
    1, int, fcntl, (int file, int command, ...), command, unsigned long, (file, command, extra),
    (errno = EINVAL, -1))
FAILING(int, fstat, (int file, struct stat* facts), (file, facts), (errno = EIO, -1))
FAILING(int, ftruncate, (int file, off_t size), (file, size), (errno = EIO, -1))
FAILING(struct passwd*, getpwuid, (uid_t user), (user), (errno = EIO, NULL))
FAILING(int, isatty, (int file), (file), (errno = EIO, 0))
FAILING(off_t, lseek, (int file, off_t place, int from), (file, place, from), (errno = ESPIPE, -1))
FAILING_VARIADIC(
    1, int, open, (const char* path, int flags, ...), flags, mode_t, (path, flags, extra),
    (errno = EMFILE, -1))
FAILING_AS(
    open, 1, int, __open_2, (const char* path, int flags), (path, flags), (errno = EMFILE, -1))
FAILING(
    int, poll, (struct pollfd * files, nfds_t count, int wait), (files, count, wait),
    (errno = ENOMEM, -1))
FAILING_VARIADIC(
    1, int, prctl, (int option, ...), option, unsigned long, (option, extra, 0UL, 0UL, 0UL),
    (errno = EINVAL, -1))
FAILING(ssize_t, read, (int file, void* to, size_t size), (file, to, size), (errno = EIO, -1))
FAILING(char*, setlocale, (int category, const char* name), (category, name), NULL)
FAILING(
    int, socket, (int domain, int type, int protocol), (domain, type, protocol),
    (errno = EMFILE, -1))
FAILING(
    int, vsnprintf, (char* to, size_t size, const char* format, va_list arguments),
    (to, size, format, arguments), (errno = ENOMEM, -1))
FAILING_AS(
    vsnprintf, 1, int, __vsnprintf_chk,
    (char* to, size_t size, int flag, size_t room, const char* format, va_list arguments),
    (to, size, flag, room, format, arguments), (errno = ENOMEM, -1))
FAILING(
    ssize_t, write, (int file, const void* from, size_t size), (file, from, size),
    (errno = ENOSPC, -1))

/* dlerror() gives the reason of the real function's failure. The module is found in this library's
   directory, which is the tool's. */
void* dlopen(const char* name, int mode) {
    static struct call call = {"dlopen", 0, NULL};
    static void* function;
    const char* path = fails(&call) ? "/dev/null/library" : name;
    return ((void* (*)(const char*, int))real(&function, "dlopen"))(path, mode);
}

FAILING(
    int, json_dump_callback,
    (const json_t* value, json_dump_callback_t take, void* data, size_t flags),
    (value, take, data, flags), -1)
FAILING(char*, json_dumps, (const json_t* value, size_t flags), (value, flags), NULL)
FAILING(json_t*, json_object, (void), (), NULL)
FAILING(
    int, json_object_set_new, (json_t * object, const char* key, json_t* value),
    (object, key, value), -1)
FAILING(json_t*, json_string, (const char* text), (text), NULL)
FAILING(int, json_string_set, (json_t * string, const char* text), (string, text), -1)

/* The extra argument is a long, an off_t or a pointer, all of one size. */
FAILING_VARIADIC(
    IS_OURS, CURLcode, curl_easy_getinfo, (CURL * handle, CURLINFO info, ...), info, uintptr_t,
    (handle, info, extra), CURLE_UNKNOWN_OPTION)
FAILING_OURS(
    CURLHcode, curl_easy_header,
    (CURL * handle, const char* name, size_t index, unsigned origin, int request,
     struct curl_header** header),
    (handle, name, index, origin, request, header), CURLHE_OUT_OF_MEMORY)
FAILING_OURS(CURL*, curl_easy_init, (void), (), NULL)
FAILING_OURS(CURLcode, curl_easy_perform, (CURL * handle), (handle), CURLE_OUT_OF_MEMORY)
FAILING_VARIADIC(
    IS_OURS, CURLcode, curl_easy_setopt, (CURL * handle, CURLoption option, ...), option, uintptr_t,
    (handle, option, extra), CURLE_OUT_OF_MEMORY)
FAILING_OURS(CURLcode, curl_global_init, (long flags), (flags), CURLE_FAILED_INIT)
FAILING_OURS(
    struct curl_slist*, curl_slist_append, (struct curl_slist * list, const char* text),
    (list, text), NULL)
FAILING_OURS(CURLU*, curl_url, (void), (), NULL)
FAILING_OURS(
    CURLUcode, curl_url_set, (CURLU * url, CURLUPart part, const char* text, unsigned flags),
    (url, part, text, flags), CURLUE_OUT_OF_MEMORY)

FAILING_OURS(
    int, CRYPTO_get_ex_new_index,
    (int class, long number, void* pointer, CRYPTO_EX_new* make, CRYPTO_EX_dup* copy,
     CRYPTO_EX_free* release),
    (class, number, pointer, make, copy, release), -1)
FAILING_OURS(
    int, OPENSSL_init_crypto, (uint64_t options, const OPENSSL_INIT_SETTINGS* settings),
    (options, settings), 0)
FAILING_OURS(
    int, SSL_CTX_set_ex_data, (SSL_CTX * context, int index, void* data), (context, index, data), 0)
