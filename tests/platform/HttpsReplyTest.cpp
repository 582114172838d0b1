#include "arkeon/status.h"
#include "platform/HttpsFixture.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <random>
#include <zlib.h>

using support::Ending;
using support::TlsScriptServer;
using testing::HasSubstr;
using testing::SizeIs;

namespace status = arkeon::status;

namespace {

std::string gzip(const std::string& text) {
    constexpr int gzipWindow = 15 + 16;
    z_stream stream{};
    EXPECT_EQ(
        deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, gzipWindow, 9, Z_DEFAULT_STRATEGY),
        Z_OK);
    std::string compressed(deflateBound(&stream, text.size()), '\0');
    std::string input = text;
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
    stream.avail_out = static_cast<uInt>(compressed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    compressed.resize(stream.total_out);
    deflateEnd(&stream);
    return compressed;
}

std::string gzipReply(const std::string& text) {
    const std::string body = gzip(text);
    return "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// One reply and what the client makes of it.
struct ReplyCase {
    const char* name;
    std::string bytes;
    Ending ending;
    int result;
    int httpStatus;
    std::string body;
};

void PrintTo(const ReplyCase& reply, std::ostream* stream) {
    *stream << reply.name;
}

class HttpsReplyTest : public HttpsTest, public testing::WithParamInterface<ReplyCase> {};

TEST_P(HttpsReplyTest, IsTakenOrRefusedAsAWhole) {
    const ReplyCase& reply = GetParam();
    TlsScriptServer server(goodSettings(), {{reply.bytes, reply.ending}});
    AKClientCURL client("127.0.0.1", server.port(), 1, AKCurlSessionType::rest, nullptr);
    EXPECT_EQ(client.Patch("hosts/1", "{}"), reply.result) << log_.text();
    EXPECT_EQ(client.httpStatus(), reply.httpStatus);
    EXPECT_EQ(client.takeBody(), reply.body);
    EXPECT_THAT(server.requests(), SizeIs(1));
    EXPECT_EQ(server.connections(), 1);
    if (reply.result != 0) {
        EXPECT_THAT(log_.text(), HasSubstr(" 16 arkeon: HTTPS request to 127.0.0.1, port "));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Whole, HttpsReplyTest,
    testing::Values(
        ReplyCase{"Length", plainReply("{}"), Ending::keep, 0, 200, "{}"},
        ReplyCase{"NoContent", "HTTP/1.1 204 No Content\r\n\r\n", Ending::keep, 0, 204, ""},
        ReplyCase{"ErrorStatus", plainReply("e", "404 Not Found"), Ending::keep, 0, 404, "e"},
        ReplyCase{
            "ServerFailure", plainReply("e", "503 Service Unavailable"), Ending::keep, 0, 503, "e"},
        ReplyCase{
            "Chunked",
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n1\r\nc\r\n0\r\n\r\n",
            Ending::keep, 0, 200, "abc"},
        ReplyCase{
            "SeveralEncodingLines",
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: identity\r\nTransfer-Encoding: chunked\r\n\r\n"
            "3\r\nabc\r\n0\r\n\r\n",
            Ending::drop, 0, 200, "abc"},
        ReplyCase{"Gzip", gzipReply("compressed text"), Ending::keep, 0, 200, "compressed text"},
        ReplyCase{
            "InterimReplyFirst", "HTTP/1.1 100 Continue\r\n\r\n" + plainReply("{}"), Ending::keep,
            0, 200, "{}"},
        ReplyCase{
            "NoLengthButOrderlyEnd", "HTTP/1.1 200 OK\r\n\r\nabc", Ending::closeNotify, 0, 200,
            "abc"},
        ReplyCase{"NoContentAndDrop", "HTTP/1.1 204 No Content\r\n\r\n", Ending::drop, 0, 204, ""},
        ReplyCase{
            "NotModifiedAndDrop", "HTTP/1.1 304 Not Modified\r\n\r\n", Ending::drop, 0, 304, ""},
        ReplyCase{"LengthAndDrop", plainReply("{}"), Ending::drop, 0, 200, "{}"},
        ReplyCase{
            "RedirectIsNotFollowed",
            "HTTP/1.1 302 Found\r\nLocation: https://127.0.0.1/other\r\nContent-Length: 0\r\n\r\n",
            Ending::keep, 0, 302, ""},
        ReplyCase{
            "AuthenticationIsNotRetried",
            "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\n"
            "Content-Length: 0\r\n\r\n",
            Ending::keep, 0, 401, ""}),
    testing::PrintToStringParamName());

constexpr int broke = status::connectionBroke;

INSTANTIATE_TEST_SUITE_P(
    Broken, HttpsReplyTest,
    testing::Values(
        ReplyCase{"NothingDropped", "", Ending::drop, broke, 0, ""},
        ReplyCase{"NothingEnded", "", Ending::closeNotify, broke, 0, ""},
        ReplyCase{"NothingReset", "", Ending::reset, broke, 0, ""},
        ReplyCase{"InStatusLineDropped", "HTTP/1.1 2", Ending::drop, broke, 0, ""},
        ReplyCase{"InStatusLineEnded", "HTTP/1.1 2", Ending::closeNotify, broke, 0, ""},
        ReplyCase{"AfterStatusLineDropped", "HTTP/1.1 200 OK\r\n", Ending::drop, broke, 0, ""},
        ReplyCase{"AfterStatusLineEnded", "HTTP/1.1 200 OK\r\n", Ending::closeNotify, broke, 0, ""},
        ReplyCase{"InHeadDropped", "HTTP/1.1 200 OK\r\nContent-Le", Ending::drop, broke, 0, ""},
        ReplyCase{
            "InHeadEnded", "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n", Ending::closeNotify, broke,
            0, ""},
        ReplyCase{
            "AfterInterimReplyDropped", "HTTP/1.1 100 Continue\r\n\r\n", Ending::drop, broke, 0,
            ""},
        ReplyCase{
            "AfterInterimReplyEnded", "HTTP/1.1 100 Continue\r\n\r\n", Ending::closeNotify, broke,
            0, ""},
        ReplyCase{
            "InBodyDropped", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc", Ending::drop, broke,
            0, ""},
        ReplyCase{
            "InBodyEnded", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc", Ending::closeNotify,
            broke, 0, ""},
        ReplyCase{
            "InBodyReset", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc", Ending::reset, broke,
            0, ""},
        ReplyCase{
            "InChunkDropped", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\nabc",
            Ending::drop, broke, 0, ""},
        ReplyCase{
            "InChunkEnded", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\nabc",
            Ending::closeNotify, broke, 0, ""},
        ReplyCase{
            "BeforeLastChunkEnded",
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n",
            Ending::closeNotify, broke, 0, ""},
        ReplyCase{
            "EncodingWithoutChunksAndDrop",
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: identity\r\n\r\nabc", Ending::drop, broke, 0,
            ""},
        ReplyCase{"NoLengthAndDrop", "HTTP/1.1 200 OK\r\n\r\nabc", Ending::drop, broke, 0, ""}),
    testing::PrintToStringParamName());

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(
    Endless, HttpsReplyTest,
    testing::Values(
        ReplyCase{
            "HeaderLines", "HTTP/1.1 200 OK\r\n" + repeated("X-Header: value\r\n", 30'000),
            Ending::drop, status::replyTooLarge, 0, ""},
        ReplyCase{
            "HeaderLine", "HTTP/1.1 200 OK\r\nX-Header: " + std::string(200'000, 'x'), Ending::drop,
            status::replyTooLarge, 0, ""},
        ReplyCase{
            "InterimReplies", repeated("HTTP/1.1 102 Processing\r\n\r\n", 30'000), Ending::drop,
            status::replyTooLarge, 0, ""}),
    testing::PrintToStringParamName());

INSTANTIATE_TEST_SUITE_P(
    Senseless, HttpsReplyTest,
    testing::Values(
        ReplyCase{
            "NotHttp", "SSH-2.0-x\r\n\r\n", Ending::closeNotify, status::clientFailure, 0, ""},
        ReplyCase{
            "NotGzip", "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 3\r\n\r\nabc",
            Ending::keep, status::clientFailure, 0, ""}),
    testing::PrintToStringParamName());

std::string replyOfLength(const std::string& length) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + length + "\r\n\r\nabc";
}

constexpr int clientFailure = status::clientFailure;

INSTANTIATE_TEST_SUITE_P(
    Length, HttpsReplyTest,
    testing::Values(
        ReplyCase{"Zeros", replyOfLength("0003"), Ending::keep, 0, 200, "abc"},
        ReplyCase{"Twice", replyOfLength("3\r\nContent-Length: 3"), Ending::keep, 0, 200, "abc"},
        ReplyCase{
            "OfAnInterimReply",
            "HTTP/1.1 103 Early Hints\r\nContent-Length: 1\r\n\r\n" + plainReply("abc"),
            Ending::keep, 0, 200, "abc"},
        ReplyCase{
            "TwoLengths", replyOfLength("1\r\nContent-Length: 3"), Ending::drop, clientFailure, 0,
            ""},
        ReplyCase{"List", replyOfLength("3, 3"), Ending::drop, clientFailure, 0, ""},
        ReplyCase{"Sign", replyOfLength("+3"), Ending::drop, clientFailure, 0, ""},
        ReplyCase{"Negative", replyOfLength("-3"), Ending::drop, clientFailure, 0, ""},
        ReplyCase{"NegativeZero", replyOfLength("-0"), Ending::drop, clientFailure, 0, ""},
        ReplyCase{"LetterAfterIt", replyOfLength("3x"), Ending::drop, clientFailure, 0, ""},
        ReplyCase{"Nothing", replyOfLength(""), Ending::drop, clientFailure, 0, ""},
        ReplyCase{
            "Beyond63Bits", replyOfLength("9223372036854775808"), Ending::closeNotify,
            clientFailure, 0, ""}),
    testing::PrintToStringParamName());

TEST_F(HttpsTest, ALengthThatIsNotOneNumberIsNamedInTheLog) {
    TlsScriptServer server(goodSettings(), {{replyOfLength("3, 3"), Ending::drop}});
    EXPECT_EQ(get(server.port()), clientFailure);
    EXPECT_THAT(log_.text(), HasSubstr("; the reply's Content-Length is not one number\n"));
}

INSTANTIATE_TEST_SUITE_P(
    NamesLikeStatusLines, HttpsReplyTest,
    testing::Values(
        ReplyCase{
            "InTheHead", "HTTP/1.1 200 OK\r\nHTTP/X: 100\r\nContent-Length: 3\r\n\r\nabc",
            Ending::keep, 0, 200, "abc"},
        ReplyCase{
            "AfterTheBody",
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n"
            "HTTP/X: 100\r\n\r\n",
            Ending::keep, 0, 200, "abc"}),
    testing::PrintToStringParamName());

/// A limit of 1000 bytes for the decoded body.
class HttpsReplySizeTest : public HttpsTest {
protected:
    HttpsReplySizeTest() {
        arkeon::TransferLimits limits;
        limits.bodyBytes = 1000;
        useLimits(limits);
    }

    int resultOf(const std::string& reply) {
        TlsScriptServer server(goodSettings(), {{reply}});
        return get(server.port());
    }
};

TEST_F(HttpsReplySizeTest, BodyAtTheLimitIsTaken) {
    EXPECT_EQ(resultOf(plainReply(std::string(1000, 'x'))), 0);
}

TEST_F(HttpsReplySizeTest, BodyOverTheLimitIsGivenUp) {
    EXPECT_EQ(resultOf(plainReply(std::string(1001, 'x'))), status::replyTooLarge);
    EXPECT_THAT(log_.text(), HasSubstr("; the reply is over the limit\n"));
}

TEST_F(HttpsReplySizeTest, DecodedBytesCount) {
    EXPECT_EQ(resultOf(gzipReply(std::string(1000, 'x'))), 0);
    EXPECT_EQ(resultOf(gzipReply(std::string(1'000'000, 'x'))), status::replyTooLarge);
}

/// Compressed in empty blocks, which come to nothing (RFC 1951, 3.2.4).
TEST_F(HttpsReplySizeTest, EncodedBytesCount) {
    const std::string gzipHead("\x1f\x8b\x08\0\0\0\0\0\0\3", 10);
    const std::string emptyBlock("\0\0\0\xff\xff", 5);
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\n\r\n";
    EXPECT_EQ(resultOf(head + gzipHead + repeated(emptyBlock, 100'000)), status::replyTooLarge);
}

TEST_F(HttpsTest, TheLimitIsTwoGibibytes) {
    EXPECT_EQ(arkeon::TransferLimits().bodyBytes, 2147483648U);
}

}  // namespace
