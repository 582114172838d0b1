#include "https/ClientLibraries.h"

#include "https/SharedLibrary.h"
#include "log/Report.h"

#include <cstdlib>
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
    AKHOSTMGMT_FIND(curl, curl_global_init);
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
    AKHOSTMGMT_FIND(crypto, OPENSSL_init_crypto);
    AKHOSTMGMT_FIND(crypto, CRYPTO_get_ex_new_index);

    SharedLibrary ssl("libssl.so.3");
    AKHOSTMGMT_FIND(ssl, SSL_get_SSL_CTX);
    AKHOSTMGMT_FIND(ssl, SSL_CTX_set_info_callback);
    AKHOSTMGMT_FIND(ssl, SSL_CTX_set_ex_data);
    AKHOSTMGMT_FIND(ssl, SSL_CTX_get_ex_data);
    return curl.complete() && crypto.complete() && ssl.complete();
}

/// The environment decides nothing about TLS: libcurl would write the session keys to the file that
/// SSLKEYLOGFILE names, and OpenSSL would read the configuration that OPENSSL_CONF names. OpenSSL
/// need not clear its tables when the process ends, which takes the memory anyway.
bool makeReady() {
    unsetenv("SSLKEYLOGFILE");
    constexpr auto settings = OPENSSL_INIT_NO_LOAD_CONFIG | OPENSSL_INIT_NO_ATEXIT;
    const bool ready = functions.OPENSSL_init_crypto(settings, nullptr) == 1 &&
                       functions.curl_global_init(CURL_GLOBAL_ALL) == CURLE_OK;
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
