#pragma once

#include "hostmgmt/operations/AkHostMgmtList.h"
#include "support/FakeClient.h"
#include "support/TestChange.h"

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
    options.insert(options.begin(), "-list");
    const Change run = change<AkHostMgmtList>(options, {reply});
    return {run.result, run.out, run.err, run.requests.at(0), run.log};
}
