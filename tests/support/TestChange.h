#pragma once

#include "support/CommandLine.h"
#include "support/FakeClient.h"
#include "support/LogLines.h"
#include "support/Streams.h"
#include "support/Throws.h"

#include <deque>
#include <string>
#include <vector>

/// What one run of an operation did.
struct Change {
    int result = -1;
    std::string out;
    std::string err;
    std::vector<support::FakeRequest> requests;
    std::vector<std::string> log;
};

/// Checks and performs the operation `Class` with these options against scripted replies.
template <typename Class>
Change change(std::vector<std::string> options, const std::deque<support::FakeReply>& replies) {
    options.insert(options.end(), {"-server", "p"});
    support::FakeClient client(replies);
    LogLines lines;
    Class operation(parsed(options), lines.log);
    Change change;
    const Printed printed = printedBy([&] {
        operation.checkArguments();
        change.result = operation.execute();
    });
    change.out = printed.out;
    change.err = printed.err;
    change.requests = client.requests;
    change.log = LogLines::lines();
    return change;
}

/// The text that the check of the arguments refuses these options with; empty when it passes.
template <typename Class>
std::string refusalOf(const std::vector<std::string>& options) {
    LogLines lines;
    Class operation(parsed(options), lines.log);
    try {
        operation.checkArguments();
    } catch (const CUsagecmd& failure) {
        return failure.what();
    }
    return {};
}

/// The same, with "(logged) " before it if the check logged the text.
template <typename Class>
std::string loggedRefusalOf(const std::vector<std::string>& options) {
    const std::string text = refusalOf<Class>(options);
    const bool logged =
        !text.empty() && !LogLines::lines().empty() && LogLines::lines().back() == "2 " + text;
    return logged ? "(logged) " + text : text;
}

/// What the usage of an operation with these options looks like.
template <typename Class>
std::string usageOf(const std::vector<std::string>& options) {
    LogLines lines;
    Class operation(parsed(options), lines.log);
    return printedBy([&] { operation.printUsage(); }).out;
}

/// Holds the frame of a usage: heading, synopsis, description, and the end of the examples.
template <typename Class>
void expectUsage(const std::string& option, void (*printSynopsis)(), const std::string& end) {
    const std::string usage = usageOf<Class>({option});
    const std::string synopsis = printedBy(printSynopsis).out;
    EXPECT_TRUE(usage.starts_with("\nUSAGE:\n\n" + synopsis + "\nDescription:\n")) << usage;
    EXPECT_TRUE(usage.ends_with(end)) << usage;
}

/// A reply to the look-up of a host by name.
inline support::FakeReply foundHost(const std::string& hostId) {
    return {0, 200, R"({"hosts":[{"uuid":")" + hostId + "\"}]}"};
}
