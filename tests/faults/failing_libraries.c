/* Functions of libcurl and OpenSSL that fail; the program finds them with dlsym. */

#define _GNU_SOURCE
#include "plan.h"

#include <curl/curl.h>
#include <dlfcn.h>
#include <openssl/ssl.h>
#include <string.h>

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
