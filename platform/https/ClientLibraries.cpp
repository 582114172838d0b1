#include "https/ClientLibraries.h"

#include "arkeon/memory_shortage.h"
#include "https/SharedLibrary.h"
#include "log/Report.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

// What the names of the libraries stand for.
static_assert(LIBCURL_VERSION_MAJOR == 7 || LIBCURL_VERSION_MAJOR == 8);
static_assert(OPENSSL_VERSION_MAJOR == 3);

#define AKHOSTMGMT_FIND(library, name) library.find(#name, functions.name)

namespace arkeon {
namespace {

ClientLibraries functions;

/// Where the tool's own build of libcurl is: beside the program's folder. Empty when that cannot be
/// told.
std::string ownLibcurl() {
    std::error_code failure;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
    return failure ? "" : program.parent_path() / "../lib/akhostmgmt/libarkeon-curl.so";
}

bool findFunctions() {
    SharedLibrary curl(ownLibcurl(), "libcurl.so.4");
    AKHOSTMGMT_FIND(curl, curl_global_init_mem);
    AKHOSTMGMT_FIND(curl, curl_easy_init);
    AKHOSTMGMT_FIND(curl, curl_easy_reset);
    AKHOSTMGMT_FIND(curl, curl_easy_cleanup);
    AKHOSTMGMT_FIND(curl, curl_easy_setopt);
    AKHOSTMGMT_FIND(curl, curl_easy_perform);
    AKHOSTMGMT_FIND(curl, curl_easy_getinfo);
    AKHOSTMGMT_FIND(curl, curl_easy_header);
    AKHOSTMGMT_FIND(curl, curl_easy_strerror);
    AKHOSTMGMT_FIND(curl, curl_url);
    AKHOSTMGMT_FIND(curl, curl_url_set);
    AKHOSTMGMT_FIND(curl, curl_url_cleanup);
    AKHOSTMGMT_FIND(curl, curl_slist_append);
    AKHOSTMGMT_FIND(curl, curl_slist_free_all);

    SharedLibrary crypto("libcrypto.so.3");
    AKHOSTMGMT_FIND(crypto, CRYPTO_set_mem_functions);
    AKHOSTMGMT_FIND(crypto, OPENSSL_init_crypto);
    AKHOSTMGMT_FIND(crypto, CRYPTO_get_ex_new_index);

    SharedLibrary ssl("libssl.so.3");
    AKHOSTMGMT_FIND(ssl, SSL_get_SSL_CTX);
    AKHOSTMGMT_FIND(ssl, SSL_CTX_set_info_callback);
    AKHOSTMGMT_FIND(ssl, SSL_CTX_set_ex_data);
    AKHOSTMGMT_FIND(ssl, SSL_CTX_get_ex_data);
    return curl.complete() && crypto.complete() && ssl.complete();
}

/// What an allocation gave for a size; ends the process when that is nothing.
void* checked(void* memory, std::size_t size) {
    if (memory == nullptr && size != 0) {
        endWithoutMemory();
    }
    return memory;
}

// The functions that libcurl takes its memory with.

void* allocate(std::size_t size) {
    return checked(std::malloc(size), size);
}

void* allocateZeroed(std::size_t count, std::size_t size) {
    return checked(std::calloc(count, size), size);
}

void* reallocate(void* memory, std::size_t size) {
    return checked(std::realloc(memory, size), size);
}

char* duplicate(const char* text) {
    return static_cast<char*>(checked(strdup(text), 1));
}

// Those of OpenSSL, to which it tells who asks.

void* allocateFor(std::size_t size, const char* /*file*/, int /*line*/) {
    return allocate(size);
}

void* reallocateFor(void* memory, std::size_t size, const char* /*file*/, int /*line*/) {
    return reallocate(memory, size);
}

void releaseFor(void* memory, const char* /*file*/, int /*line*/) {
    std::free(memory);
}

/// OpenSSL refuses in a process that has used it before; it keeps its own functions then.
void takeMemoryFunctions() {
    functions.CRYPTO_set_mem_functions(allocateFor, reallocateFor, releaseFor);
}

/// The environment decides nothing about TLS: libcurl would write the session keys to the file that
/// SSLKEYLOGFILE names, and OpenSSL would read the configuration that OPENSSL_CONF names. Nor does
/// it decide what a server's name means: HOSTALIASES and LOCALDOMAIN are the resolver's. OpenSSL
/// need not clear its tables when the process ends, which takes the memory anyway.
bool makeReady() {
    for (const char* variable : {"SSLKEYLOGFILE", "HOSTALIASES", "LOCALDOMAIN"}) {
        unsetenv(variable);
    }
    constexpr auto settings = OPENSSL_INIT_NO_LOAD_CONFIG | OPENSSL_INIT_NO_ATEXIT;
    takeMemoryFunctions();
    const bool ready = functions.OPENSSL_init_crypto(settings, nullptr) == 1 &&
                       functions.curl_global_init_mem(
                           CURL_GLOBAL_ALL, allocate, std::free, reallocate, duplicate,
                           allocateZeroed) == CURLE_OK;
    if (!ready) {
        report({"libcurl and OpenSSL cannot be made ready"});
    }
    return ready;
}

}  // namespace

bool loadClientLibraries() {
    static const bool ready = findFunctions() && makeReady();
    return ready;
}

const ClientLibraries& client() {
    return functions;
}

}  // namespace arkeon
