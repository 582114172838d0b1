#pragma once

#include "devserver/HostRecord.h"
#include "devserver/Reply.h"

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace devserver {

/// What a fault puts into the names and comments of the records of a reply.
enum class Hostile { none, escapes, controls, utf8, format };

/// What a fault presents instead of the server's certificate.
enum class CertificateFault { none, expired, wrongName, untrusted };

/// What happens to one request. The first group answers in place of the resource, which then
/// changes nothing; the second acts upon whatever reply there is.
struct Fault {
    std::optional<int> status;
    std::optional<std::int64_t> errorCode;  ///< with `status`; without it the body is empty
    bool html = false;
    std::string redirect;
    bool endless = false;
    bool drop = false;

    std::chrono::milliseconds delay{0};
    std::size_t dripBytes = 0;
    std::chrono::milliseconds dripInterval{0};
    std::optional<std::size_t> cut;
    long lengthChange = 0;
    Hostile hostile = Hostile::none;

    /// Whether the resource is not asked.
    bool replacesReply() const;
    /// The reply in the resource's place.
    Reply replacement() const;
    /// Whether the bytes of the body are sent in another way than usual.
    bool changesTransmission() const;
};

/// A rule as the command line gives it, and how many times it still applies.
struct FaultRule {
    static constexpr unsigned long long always = ~0ULL;

    std::string method;   ///< "*" is any, "CONNECT" a TLS connection
    std::string pattern;  ///< of the request target; a "*" at its end stands for anything
    unsigned long long remaining = 1;
    Fault fault;
    CertificateFault certificate = CertificateFault::none;
};

/// Reads `METHOD TARGET[*] [xN] ACTION[=ARG][,ACTION...]` or `CONNECT [xN] ACTION`; a Failure
/// names what is wrong with a rule.
FaultRule parseFaultRule(const std::string& text);

/// The rules in force. Each request uses up the first rule that fits; may be asked by many
/// threads at once.
class Faults {
public:
    explicit Faults(std::vector<FaultRule> rules);

    std::optional<Fault> forRequest(std::string_view method, std::string_view target);
    CertificateFault forConnection();

private:
    std::mutex mutex_;
    std::vector<FaultRule> rules_;
};

/// Puts hostile texts into the comment and the names of a record; `none` leaves it as it is.
void makeHostile(HostRecord& host, Hostile kind);

}  // namespace devserver
