#include "client/HttpsModule.h"

#include "log/Report.h"

#include <dlfcn.h>
#include <memory>

namespace arkeon {
namespace {

std::unique_ptr<HttpsTransport> reportLoaderError() {
    const char* reason = dlerror();
    report({reason == nullptr ? "the dynamic loader gives no reason" : reason});
    return nullptr;
}

/// The module is never unloaded.
std::unique_ptr<HttpsTransport> loadTransport() {
    void* module = dlopen("libarkeon-https.so", RTLD_LAZY | RTLD_LOCAL);
    if (module == nullptr) {
        return reportLoaderError();
    }
    void* factory = dlsym(module, "arkeon_new_https_transport");
    if (factory == nullptr) {
        return reportLoaderError();
    }
    std::unique_ptr<HttpsTransport> transport(
        reinterpret_cast<decltype(&arkeon_new_https_transport)>(factory)());
    if (transport == nullptr) {
        report({"libcurl and OpenSSL cannot be initialized"});
    }
    return transport;
}

}  // namespace

HttpsTransport* httpsTransport() {
    static const std::unique_ptr<HttpsTransport> transport = loadTransport();
    return transport.get();
}

}  // namespace arkeon
