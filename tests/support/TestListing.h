#pragma once

#include "hostmgmt/AkHostMgmtList.h"
#include "support/CommandLine.h"
#include "support/FakeClient.h"
#include "support/LogLines.h"
#include "support/Streams.h"

#include <string>
#include <vector>

/// What one run of `-list` did.
struct Listing {
    int result = -1;
    std::string out;
    std::string err;
    support::FakeRequest request;
    std::vector<std::string> log;
};

/// Runs `-list` with further options against one scripted reply.
inline Listing listWith(std::vector<std::string> options, const support::FakeReply& reply) {
    options.insert(options.begin(), {"-list", "-server", "p"});
    support::FakeClient client({reply});
    LogLines lines;
    AkHostMgmtList operation(parsed(options), lines.log);
    Listing listing;
    const Printed printed = printedBy([&] {
        operation.checkArguments();
        listing.result = operation.execute();
    });
    listing.out = printed.out;
    listing.err = printed.err;
    listing.request = client.requests.at(0);
    listing.log = LogLines::lines();
    return listing;
}
