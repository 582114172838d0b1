#include "arkeon/debug_log.h"
#include "arkeon/status.h"
#include "platform/HttpsFixture.h"

#include <cstdint>
#include <cstdlib>
#include <gmock/gmock.h>
#include <new>

using support::TlsScriptServer;
using testing::HasSubstr;
using testing::IsEmpty;

namespace status = arkeon::status;

namespace {

/// Allocations of this size and more fail, in the thread of the client only.
thread_local std::size_t smallestRefused = SIZE_MAX;

/// Makes memory short while it lives.
class ShortMemory {
public:
    explicit ShortMemory(std::size_t size) { smallestRefused = size; }
    ~ShortMemory() { smallestRefused = SIZE_MAX; }
    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;
};

}  // namespace

void* operator new(std::size_t size) {
    void* memory = size < smallestRefused ? std::malloc(size == 0 ? 1 : size) : nullptr;
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace {

constexpr std::size_t oneMegabyte = 1'000'000;

TEST_F(HttpsTest, BodyWithoutMemoryForItIsAFailureOfTheClient) {
    const TlsScriptServer server(
        goodSettings(), {{plainReply(std::string(3 * oneMegabyte, 'x'))}, {plainReply()}});
    AKClientCURL client("127.0.0.1", server.port(), 1, AKCurlSessionType::rest, nullptr);
    {
        const ShortMemory memory(oneMegabyte);
        EXPECT_EQ(client.Get("hosts"), status::clientFailure);
    }
    EXPECT_EQ(client.takeBody(), "");
    EXPECT_THAT(log_.text(), HasSubstr("; no memory for the body\n"));
    EXPECT_EQ(client.Get("hosts"), 0) << "the client works on";
}

TEST_F(HttpsTest, RequestWithoutMemoryForItIsAFailureOfTheClient) {
    const TlsScriptServer server(goodSettings(), {});
    AKClientCURL client("127.0.0.1", server.port(), 1, AKCurlSessionType::rest, nullptr);
    const std::string uri(oneMegabyte, 'a');
    const ShortMemory memory(oneMegabyte);
    EXPECT_EQ(client.Get(uri), status::clientFailure);
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(HttpsTest, EncodingWithoutMemoryFailsWithAnEmptyResult) {
    AKClientCURL client("127.0.0.1", 1, 1, AKCurlSessionType::rest, nullptr);
    const std::string text(oneMegabyte, ' ');
    std::string encoded = "before";
    const ShortMemory memory(oneMegabyte);
    EXPECT_EQ(client.encodeUriString(text, encoded), status::clientFailure);
    EXPECT_THAT(encoded, IsEmpty());
}

TEST(DebugLog, LineWithoutMemoryForItIsDropped) {
    const support::LogReader log;
    const std::string text(50'000, 'x');
    {
        const ShortMemory memory(20'000);
        logmsg(2, {text}, "name");
    }
    EXPECT_THAT(log.text(), IsEmpty());
}

}  // namespace
