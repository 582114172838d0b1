#include "devserver/Reply.h"

namespace devserver {

Reply errorReply(int status, std::int64_t code, const std::string& message) {
    Reply reply;
    reply.status = status;
    reply.errorCode = code;
    reply.body = "{\"errorCode\":" + std::to_string(code) + ",\"errorMessage\":";
    appendJsonText(reply.body, message);
    reply.body += '}';
    if (status == 401) {
        reply.headers.emplace_back("WWW-Authenticate", "Bearer");
    }
    return reply;
}

Reply errorReply(const ErrorKind& kind) {
    return errorReply(kind.status, kind.code, kind.message);
}

}  // namespace devserver
