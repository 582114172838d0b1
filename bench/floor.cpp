// The least that a listing can cost with these libraries: one request, one buffer, one json_loads.
//
//   akbench_floor CA CERTIFICATE KEY HEADERFILE URL
//
// Prints nothing and frees nothing. Exits with 0 if the reply has HTTP status 200 and is JSON.

#include <cstdio>
#include <cstdlib>
#include <curl/curl.h>
#include <fstream>
#include <jansson.h>
#include <string>

namespace {

/// The reply's body. The capacity doubles; memory that is not written to costs nothing.
struct Body {
    char* data = nullptr;
    std::size_t size = 0;
    std::size_t capacity = 0;
};

bool reserve(Body& body, std::size_t size) {
    constexpr std::size_t first = std::size_t{64} * 1024;
    std::size_t capacity = body.capacity == 0 ? first : body.capacity;
    while (capacity < size) {
        capacity *= 2;
    }
    if (capacity == body.capacity) {
        return true;
    }
    char* data = static_cast<char*>(std::realloc(body.data, capacity));
    if (data == nullptr) {
        return false;
    }
    body.data = data;
    body.capacity = capacity;
    return true;
}

std::size_t append(char* data, std::size_t one, std::size_t size, void* context) {
    Body& body = *static_cast<Body*>(context);
    if (!reserve(body, body.size + size + 1)) {
        return 0;
    }
    std::char_traits<char>::copy(body.data + body.size, data, size);
    body.size += size;
    body.data[body.size] = '\0';
    return one * size;
}

curl_slist* readHeaders(const char* path) {
    std::ifstream file(path);
    curl_slist* headers = nullptr;
    for (std::string line; std::getline(file, line);) {
        headers = curl_slist_append(headers, line.c_str());
    }
    return headers;
}

void setRequest(CURL* curl, char** argument) {
    curl_easy_setopt(curl, CURLOPT_CAINFO, argument[1]);
    curl_easy_setopt(curl, CURLOPT_SSLCERT, argument[2]);
    curl_easy_setopt(curl, CURLOPT_SSLKEY, argument[3]);
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, readHeaders(argument[4]));
    curl_easy_setopt(curl, CURLOPT_URL, argument[5]);
    curl_easy_setopt(curl, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    curl_easy_setopt(curl, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(curl, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(curl, CURLOPT_PROXY, "");
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, append);
}

int failed(const char* reason) {
    std::fprintf(stderr, "akbench_floor: %s\n", reason);
    return 1;
}

int request(CURL* curl, Body& body) {
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
    const CURLcode result = curl_easy_perform(curl);
    if (result != CURLE_OK) {
        return failed(curl_easy_strerror(result));
    }
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    constexpr long ok = 200;
    return status == ok ? 0 : failed("the HTTP status is not 200");
}

}  // namespace

int main(int argc, char** argv) {
    constexpr int wordCount = 6;
    CURL* curl = argc == wordCount ? curl_easy_init() : nullptr;
    if (curl == nullptr) {
        return failed("usage: akbench_floor CA CERTIFICATE KEY HEADERFILE URL");
    }
    setRequest(curl, argv);
    Body body;
    if (const int failure = request(curl, body); failure != 0) {
        std::_Exit(failure);
    }
    json_error_t error{};
    const json_t* tree = body.data == nullptr ? nullptr : json_loads(body.data, 0, &error);
    std::_Exit(tree == nullptr ? failed("the reply is not JSON") : 0);
}
