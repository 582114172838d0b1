#pragma once

#include <deque>
#include <string>
#include <vector>

/// Takes the place of the platform's HTTPS client and token manager at link time: requests are
/// recorded and answered from a script. For what a wire cannot produce, such as an encoder that
/// fails; everything else is tested over real HTTPS.
namespace support {

struct FakeReply {
    int result = 0;  ///< what the client returns; if not 0, there is no reply
    int httpStatus = 200;
    std::string body;
};

struct FakeRequest {
    std::string method;
    std::string uri;
    std::string body;
    std::vector<std::string> headers;
    std::string server;
    int port = 0;
    int certType = 0;
    bool withToken = false;
};

/// The script of one test. A request beyond the last reply fails the test, and so does a reply that
/// is left over.
class FakeClient {
public:
    explicit FakeClient(std::deque<FakeReply> replies = {});
    ~FakeClient();
    FakeClient(const FakeClient&) = delete;
    FakeClient& operator=(const FakeClient&) = delete;

    FakeReply answer(const FakeRequest& request);

    std::vector<FakeRequest> requests;
    std::string unencodable;  ///< the text that the encoder fails for
    int encoderStatus = 0;    ///< the status it then returns

    static FakeClient& current();

private:
    std::deque<FakeReply> replies_;
};

}  // namespace support
