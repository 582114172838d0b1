#pragma once

#include <curl/curl.h>
#include <openssl/ssl.h>

namespace arkeon {

/// The functions of libcurl and OpenSSL that a request takes, each under its own name.
///
/// The libraries are loaded when the first request is made: with those that they bring along they
/// take longer to load than all else that a run without a request does. Where the tool's own build
/// of libcurl is beside the program (../lib/akhostmgmt) and nobody but the superuser and the
/// process's own user can change it, it is taken in place of the system's, which brings along some
/// thirty libraries that no request of the tool uses.
///
/// Neither library can be trusted to stand a lack of memory: where there is none for them, the
/// process ends with the status line of that, before they see it.
struct ClientLibraries {
    decltype(&::curl_global_init_mem) curl_global_init_mem = nullptr;
    decltype(&::curl_easy_init) curl_easy_init = nullptr;
    decltype(&::curl_easy_reset) curl_easy_reset = nullptr;
    decltype(&::curl_easy_cleanup) curl_easy_cleanup = nullptr;
    decltype(&::curl_easy_setopt) curl_easy_setopt = nullptr;
    decltype(&::curl_easy_perform) curl_easy_perform = nullptr;
    decltype(&::curl_easy_getinfo) curl_easy_getinfo = nullptr;
    decltype(&::curl_easy_header) curl_easy_header = nullptr;
    decltype(&::curl_easy_strerror) curl_easy_strerror = nullptr;
    decltype(&::curl_url) curl_url = nullptr;
    decltype(&::curl_url_set) curl_url_set = nullptr;
    decltype(&::curl_url_cleanup) curl_url_cleanup = nullptr;
    decltype(&::curl_slist_append) curl_slist_append = nullptr;
    decltype(&::curl_slist_free_all) curl_slist_free_all = nullptr;

    decltype(&::CRYPTO_set_mem_functions) CRYPTO_set_mem_functions = nullptr;
    decltype(&::OPENSSL_init_crypto) OPENSSL_init_crypto = nullptr;
    decltype(&::CRYPTO_get_ex_new_index) CRYPTO_get_ex_new_index = nullptr;
    decltype(&::SSL_get_SSL_CTX) SSL_get_SSL_CTX = nullptr;
    decltype(&::SSL_CTX_set_info_callback) SSL_CTX_set_info_callback = nullptr;
    decltype(&::SSL_CTX_set_ex_data) SSL_CTX_set_ex_data = nullptr;
    decltype(&::SSL_CTX_get_ex_data) SSL_CTX_get_ex_data = nullptr;
};

/// Loads the libraries and makes them ready, once; they stay until the process ends.
/// @return whether they can be used; if not, the reason is in the debug log
bool loadClientLibraries();

/// The functions; `loadClientLibraries()` has to have succeeded.
const ClientLibraries& client();

}  // namespace arkeon
