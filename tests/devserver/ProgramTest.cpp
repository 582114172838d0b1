#include "devserver/Support.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

namespace {

using namespace devserver;
using namespace devserver::testing;
namespace fs = std::filesystem;

/// The program serving in a root of its own.
class ServingProgram : public ::testing::Test {
protected:
    TemporaryFolder folder;
    std::string address = ownAddress();
    fs::path root = folder.path() / "root";
    fs::path ready = folder.path() / "ready";

    std::vector<std::string> arguments(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> all{"--root", root.string(),  "--listen",
                                     address,  "--ready-file", ready.string()};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }

    std::unique_ptr<Program> start(const std::vector<std::string>& more = {}) {
        auto program = std::make_unique<Program>(folder.path(), arguments(more));
        EXPECT_TRUE(program->waitFor(ready)) << program->errors();
        return program;
    }
};

/// A TCP connection that says nothing.
class SilentConnection {
public:
    explicit SilentConnection(const std::string& address)
        : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_port = htons(1556);
        ::inet_pton(AF_INET, address.c_str(), &place.sin_addr);
        EXPECT_EQ(::connect(socket_, reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
    }
    ~SilentConnection() { ::close(socket_); }
    SilentConnection(const SilentConnection&) = delete;
    SilentConnection& operator=(const SilentConnection&) = delete;

private:
    int socket_;
};

bool isOneLine(const std::string& text) {
    return !text.empty() && text.find('\n') == text.size() - 1;
}

TEST_F(ServingProgram, SaysHowToUseItAndWhenItIsReady) {
    const auto program = start({"--name", "primary.example.com"});
    const std::string output = program->output();
    for (const std::string& line :
         {"export ARKEON_ROOT=" + root.string() + '\n',
          "export XDG_CONFIG_HOME=" + (root / "config").string() + '\n',
          std::string("akhostmgmt -list\n"), std::string("for trying out and testing only"),
          "Ready: listening on " + address + " port 1556."}) {
        EXPECT_NE(output.find(line), std::string::npos) << line << output;
    }
    EXPECT_EQ(program->errors(), "");
    EXPECT_EQ(contentOf(ready), address + " 1556\n");
    EXPECT_EQ(Client(root, address).get(hosts).status, 200);
}

TEST_F(ServingProgram, PresentsTheCertificateInItsFileAtEveryStart) {
    std::string before;
    for (int count = 0; count < 2; ++count) {
        const auto program = start();
        const std::string presented = Client(root, address).get(hosts).certificate;
        EXPECT_NE(presented, before);
        EXPECT_EQ(presented, contentOf(root / "server" / "server.pem"));
        before = presented;
        program->signal(SIGTERM);
        EXPECT_EQ(program->wait(), 0);
    }
}

TEST_F(ServingProgram, PrintsNoSecret) {
    const auto program = start();
    Client(root, address).get(hosts);
    program->signal(SIGTERM);
    program->wait();
    const std::string said = program->output() + program->errors();
    EXPECT_EQ(said.find(tokenOf(root)), std::string::npos);
    EXPECT_EQ(said.find("PRIVATE KEY"), std::string::npos);
}

TEST_F(ServingProgram, StopsCleanlyOnEitherSignal) {
    for (const int signal : {SIGTERM, SIGINT}) {
        const auto program = start();
        program->signal(signal);
        EXPECT_EQ(program->wait(), 0);
        EXPECT_FALSE(fs::exists(ready));
        EXPECT_NE(program->output().find("Stopped."), std::string::npos);
        EXPECT_FALSE(fs::exists(root / "hosts.db-wal"));
    }
}

TEST_F(ServingProgram, IdleConnectionsDoNotHoldUpTheStop) {
    const auto program = start();
    Client idle(root, address);
    idle.get(hosts);
    const SilentConnection silent(address);
    const auto begin = std::chrono::steady_clock::now();
    program->signal(SIGTERM);
    EXPECT_EQ(program->wait(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
}

TEST_F(ServingProgram, ASecondStartServesTheSameData) {
    {
        const auto program = start();
        Client client(root, address);
        EXPECT_EQ(
            client.put(hosts + '/' + testhost1 + "/comment", R"({"comment":"kept"})").status, 200);
        program->signal(SIGTERM);
        EXPECT_EQ(program->wait(), 0);
    }
    const auto program = start();
    Client client(root, address);
    EXPECT_NE(client.get(hosts + '/' + testhost1).body.find("\"kept\""), std::string::npos);
}

TEST_F(ServingProgram, NewNamesGetIntoTheServerCertificate) {
    {
        const auto program = start();
        program->signal(SIGTERM);
        EXPECT_EQ(program->wait(), 0);
    }
    const std::string first = address;
    address = ownAddress();
    const auto program = start();
    EXPECT_EQ(Client(root, address).get(hosts).status, 200);
    EXPECT_NE(
        program->output().find("akhostmgmt -list -server " + address + '\n'), std::string::npos);
    const std::string rows = contentOf(root / "etc" / "certificates.toml");
    EXPECT_NE(rows.find(first), std::string::npos);
    EXPECT_NE(rows.find(address), std::string::npos);
}

TEST_F(ServingProgram, APortInUseIsAnError) {
    const auto program = start();
    const Outcome other =
        runProgram({"--root", (folder.path() / "other").string(), "--listen", address});
    EXPECT_EQ(other.status, 1);
    EXPECT_TRUE(isOneLine(other.errors)) << other.errors;
    EXPECT_NE(
        other.errors.find("cannot listen on " + address + " port 1556: Address already in use"),
        std::string::npos)
        << other.errors;
    EXPECT_FALSE(fs::exists(folder.path() / "other"));
    EXPECT_EQ(Client(root, address).get(hosts).status, 200);
}

TEST_F(ServingProgram, AnotherPortIsServedAndExplained) {
    const auto program = start({"--port", "21556"});
    EXPECT_EQ(Client(root, address, 21556).get(hosts).status, 200);
    EXPECT_NE(program->output().find("always uses port 1556"), std::string::npos);
}

TEST_F(ServingProgram, FaultsComeFromTheCommandLine) {
    const auto program = start({"--fault", "GET * x2 status=500/8888", "--fault", "GET * html"});
    Client client(root, address);
    EXPECT_EQ(client.get(hosts).errorCode(), 8888);
    EXPECT_EQ(client.get(hosts).errorCode(), 8888);
    EXPECT_EQ(client.get(hosts).headers.at("content-type").substr(0, 9), "text/html");
    EXPECT_EQ(client.get(hosts).status, 200);
}

TEST_F(ServingProgram, TheAuditTrailIsPrintedWhileItServes) {
    const auto program = start();
    Client client(root, address);
    client.send(
        "DELETE", hosts + "/x/hostmappings/y", nullptr, {{"X-Arkeon-Audit-Reason", "tidy%20up"}});
    const Outcome audit = runProgram({"--root", root.string(), "--audit"});
    EXPECT_EQ(audit.status, 0);
    EXPECT_NE(
        audit.output.find("admin  DELETE  404     8701  /arkeon/config/hosts/x/hostmappings/y  "
                          "tidy up\n"),
        std::string::npos)
        << audit.output;
}

TEST_F(ServingProgram, ServesOverIpv6) {
    const int socket = ::socket(AF_INET6, SOCK_STREAM, 0);
    sockaddr_in6 place{};
    place.sin6_family = AF_INET6;
    place.sin6_addr = in6addr_loopback;
    socklen_t size = sizeof place;
    auto* generic = reinterpret_cast<sockaddr*>(&place);
    ASSERT_EQ(::bind(socket, generic, size), 0) << "this machine has no ::1";
    ::getsockname(socket, generic, &size);
    ::close(socket);
    const int port = ntohs(place.sin6_port);
    address = "::1";
    const auto program = start({"--port", std::to_string(port)});
    EXPECT_EQ(Client(root, "[::1]", port).get(hosts).status, 200);
}

TEST_F(ServingProgram, AReadyFileThatWasLeftBehindIsReplaced) {
    for (const std::string& left : {std::string(), std::string("::1 4433\n")}) {
        std::ofstream(ready) << left;
        Program program(folder.path(), arguments());
        for (int waited = 0; waited < 4000 && contentOf(ready) == left; ++waited) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        EXPECT_EQ(contentOf(ready), address + " 1556\n") << program.errors();
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait(), 0);
        EXPECT_FALSE(fs::exists(ready));
    }
}

TEST_F(ServingProgram, AnotherFileInTheReadyFilesPlaceStays) {
    for (const char* text : {"Dear\n", "127.0.0.1 seven\n", "host 1556\n", "127.0.0.1 1556"}) {
        std::ofstream(ready) << text;
        const Outcome outcome = runProgram(arguments());
        EXPECT_EQ(outcome.status, 1);
        EXPECT_TRUE(isOneLine(outcome.errors)) << outcome.errors;
        EXPECT_EQ(contentOf(ready), text);
    }
    EXPECT_FALSE(fs::exists(root));
}

TEST_F(ServingProgram, WhatIsNoRegularFileInTheReadyFilesPlaceStays) {
    const fs::path target = folder.path() / "target";
    std::ofstream(target).close();
    const auto isRefused = [this] {
        const Outcome outcome = runProgram(arguments());
        EXPECT_NE(outcome.errors.find("is no regular file"), std::string::npos) << outcome.errors;
        return outcome.status == 1;
    };
    ASSERT_EQ(::mkfifo(ready.c_str(), 0600), 0);
    EXPECT_TRUE(isRefused());
    EXPECT_TRUE(fs::is_fifo(ready));
    fs::remove(ready);
    fs::create_symlink(target, ready);
    EXPECT_TRUE(isRefused());
    EXPECT_TRUE(fs::is_symlink(ready));
}

TEST_F(ServingProgram, AReadyFileThatSomebodyElseHasReplacedStays) {
    const auto program = start();
    std::ofstream(ready) << "mine";
    program->signal(SIGTERM);
    EXPECT_EQ(program->wait(), 0);
    EXPECT_EQ(contentOf(ready), "mine");
}

TEST(ProgramRun, InitOnlyFillsARootAndEnds) {
    const TemporaryFolder folder;
    const fs::path root = folder.path() / "root";
    const Outcome first = runProgram({"--root", root.string(), "--init-only", "--hosts", "4"});
    EXPECT_EQ(first.status, 0) << first.errors;
    EXPECT_TRUE(fs::exists(root / "hosts.db"));
    EXPECT_NE(first.output.find("export ARKEON_ROOT="), std::string::npos);
    EXPECT_EQ(first.output.find("Ready"), std::string::npos);
    const Outcome again = runProgram({"--root", root.string(), "--init-only", "--hosts", "4"});
    EXPECT_EQ(again.status, 1);
    EXPECT_TRUE(isOneLine(again.errors));
    const Outcome audit = runProgram({"--root", root.string(), "--audit"});
    EXPECT_EQ(audit.status, 0) << audit.errors;
    EXPECT_EQ(audit.output.substr(0, 6), "WHEN  ");
}

TEST(ProgramRun, AnAddressThatOthersReachGetsAWarning) {
    const TemporaryFolder folder;
    const auto errorsFor = [&folder](const std::string& address) {
        return runProgram({"--root", (folder.path() / "root").string(), "--init-only", "--listen",
                           address})
            .errors;
    };
    for (const char* address : {"0.0.0.0", "::", "192.0.2.1"}) {
        const std::string errors = errorsFor(address);
        EXPECT_TRUE(isOneLine(errors)) << errors;
        EXPECT_NE(errors.find("is not a loopback address"), std::string::npos) << errors;
    }
    for (const char* address : {"127.9.8.7", "::1"}) {
        EXPECT_EQ(errorsFor(address), "");
    }
}

TEST(ProgramRun, PathsAreQuotedForTheShell) {
    const TemporaryFolder folder;
    const fs::path root = folder.path() / "it's here";
    const Outcome outcome = runProgram({"--root", root.string(), "--init-only"});
    EXPECT_NE(outcome.output.find("/it'\\''s here'\n"), std::string::npos) << outcome.output;
}

TEST(ProgramRun, ASignalEndsTheFillingOfARootAtOnce) {
    const TemporaryFolder folder;
    const std::string root = (folder.path() / "root").string();
    const std::vector<std::string> arguments{"--root", root, "--init-only", "--hosts", "5000000"};
    for (const int signal : {SIGINT, SIGTERM, SIGKILL}) {
        Program program(folder.path(), arguments);
        for (int waited = 0; waited < 4000 && program.output().empty(); ++waited) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        EXPECT_EQ(program.output(), "Filling " + root + " with 5000000 hosts ...\n");
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        program.signal(signal);
        EXPECT_EQ(program.wait(), signal == SIGKILL ? 1000 + SIGKILL : 1);
        EXPECT_EQ(program.errors().empty(), signal == SIGKILL) << program.errors();
    }
    const Outcome again = runProgram({"--root", root, "--init-only", "--hosts", "10"});
    EXPECT_EQ(again.status, 0) << again.errors;
    EXPECT_TRUE(fs::exists(fs::path(root) / "etc" / "master.toml"));
}

TEST(ProgramRun, AHundredThousandHostsTakeSeconds) {
    const TemporaryFolder folder;
    const auto begin = std::chrono::steady_clock::now();
    const Outcome outcome = runProgram(
        {"--root", (folder.path() / "root").string(), "--init-only", "--hosts", "100000"});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
}

TEST(ProgramRun, WrongOptionsAreOneLineAndStatusTwo) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{},
          {"--root"},
          {"--what"},
          {"--root", "/x", "--port", "no"},
          {"--root", "/x", "--fault", "GET / nonsense"}}) {
        const Outcome outcome = runProgram(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_TRUE(isOneLine(outcome.errors)) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
    }
}

TEST(ProgramRun, WhatCannotBeUsedIsOneLineAndStatusOne) {
    const TemporaryFolder folder;
    const fs::path foreign = folder.path() / "foreign";
    fs::create_directory(foreign);
    std::ofstream(foreign / "letter") << "Dear";
    const fs::path broken = folder.path() / "broken";
    EXPECT_EQ(runProgram({"--root", broken.string(), "--init-only"}).status, 0);
    std::ofstream(broken / "hosts.db") << std::string(5000, 'x');
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--root", foreign.string()},
          {"--root", broken.string()},
          {"--root", broken.string(), "--audit"},
          {"--root", foreign.string(), "--audit"},
          {"--root", "/proc/nowhere"},
          {"--root", (folder.path() / "new").string(), "--listen", "192.0.2.1"}}) {
        const Outcome outcome = runProgram(arguments);
        EXPECT_EQ(outcome.status, 1) << arguments[1];
        EXPECT_TRUE(isOneLine(outcome.errors)) << outcome.errors;
    }
}

TEST(ProgramRun, HelpAndVersion) {
    const Outcome help = runProgram({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.output.substr(0, 18), "Usage: akdevserver");
    const Outcome version = runProgram({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output.substr(0, 12), "akdevserver ");
}

}  // namespace
