// The entry point of libarkeon-https.so.

#include "https/CurlTransport.h"

extern "C" __attribute__((visibility("default"))) arkeon::HttpsTransport*
arkeon_new_https_transport() {
    return arkeon::newCurlTransport({}).release();
}
