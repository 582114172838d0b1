#pragma once

#include "devserver/Address.h"
#include "devserver/HostDatabase.h"
#include "devserver/Reply.h"

#include <string>

namespace devserver {

/// A request as the resources see it: what came over the wire, nothing decoded yet but the audit
/// reason. A header that was not sent is empty.
struct Call {
    std::string method;
    std::string target;
    std::string peer;  ///< the common name of the client's certificate
    std::string accept;
    std::string contentType;
    std::string authorization;
    std::string auditReason;  ///< percent-decoded
    std::string body;
    bool bodyTooLarge = false;  ///< `body` is not the whole of it
    bool incomplete = false;    ///< a body that broke off, or one that nobody reads
};

/// The host database as REST resources: who may do what, and the rules of every change. Every
/// request but a GET leaves a row in the audit trail, a refused one too.
class Resources {
public:
    /// `masterServer` is the primary server that new hosts get.
    Resources(HostDatabase& database, std::string masterServer);

    Reply handle(const Call& call);

    /// Records a request that is answered without being looked at.
    void recordOnly(const Call& call, const Reply& reply);

private:
    std::string authorize(const Call& call, const Address& address) const;
    Reply read(const Call& call, const Address& address) const;
    Reply change(const Call& call, const Address& address);
    Reply write(const Call& call, const Address& address, HostChanges& changes) const;

    HostDatabase& database_;
    std::string masterServer_;
};

}  // namespace devserver
