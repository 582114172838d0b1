#pragma once

#include "devserver/Faults.h"
#include "devserver/Resources.h"
#include "devserver/Root.h"
#include "devserver/Server.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// What the tests of the development server share: folders and addresses of their own, a server
/// inside the test, the server as a program, and a client that sends exactly what it is told to.
namespace devserver::testing {

/// A folder that is gone with the object.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// A loopback address that no other test is likely to use.
std::string ownAddress();

/// The token in a root's login file.
std::string tokenOf(const std::filesystem::path& root);

/// A host ID of the sample hosts.
inline const std::string testhost1 = "1b1bb1b1-1111-4bb1-bb11-111b1b11b1b1";
inline const std::string testhost2 = "2c2cc2c2-2222-4cc2-8c22-222c2c22c2c2";
inline const std::string clusterNode1 = "3d3dd3d3-3333-4dd3-9d33-333d3d33d3d3";
inline const std::string impostor = "5f5ff5f5-5555-4ff5-bf55-555f5f55f5f5";

inline const std::string hosts = "/arkeon/config/hosts";
inline const std::string fullType = "application/vnd.arkeon+json;version=6.0";

/// A reply as it came, or why there is none.
struct Received {
    int curl = 0;  ///< libcurl's code, 0 for a complete reply
    long status = 0;
    std::string body;
    std::map<std::string, std::string> headers;  ///< names in small letters
    std::string certificate;  ///< PEM, of the server; empty on a connection that was kept
    double seconds = 0;

    long long errorCode() const;
};

using Headers = std::map<std::string, std::string>;

/// A client of one connection that it keeps, with a host certificate and a token.
class Client {
public:
    Client(const std::filesystem::path& root, const std::string& address, int port = 1556);
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// Sends the target byte for byte. A header given here replaces the usual one of that name;
    /// one with an empty value is left out. A body that is a null pointer is none at all.
    Received send(
        const std::string& method, const std::string& target, const char* body = nullptr,
        const Headers& headers = {});
    Received get(const std::string& target) { return send("GET", target); }
    Received put(const std::string& target, const std::string& body) {
        return send("PUT", target, body.c_str());
    }

    /// Presents another certificate, none when the names are empty.
    void present(const std::string& certificateFile, const std::string& keyFile);
    void use(const std::string& token) { token_ = token; }
    void askForCompression() { compressed_ = true; }
    void limitTime(long milliseconds) { timeLimit_ = milliseconds; }
    void limitSize(std::size_t bytes) { sizeLimit_ = bytes; }

private:
    void* handle_;
    std::string base_;
    std::string authority_;
    std::string token_;
    std::string certificate_;
    std::string key_;
    bool compressed_ = false;
    long timeLimit_ = 20'000;
    std::size_t sizeLimit_ = ~std::size_t{0};
};

/// A server in this process on an address and in a root of its own.
class LocalServer {
public:
    /// With the sample hosts unless a number of generated ones is given.
    explicit LocalServer(
        const std::vector<std::string>& faultRules = {}, std::optional<std::size_t> count = {});

    const std::filesystem::path& root() const { return root_->path(); }
    const std::string& address() const { return options_.listen; }
    HostDatabase& database() { return root_->database(); }
    const CertificateAuthority& authority() const { return root_->authority(); }
    void stop() { server_->stop(); }
    std::vector<AuditEntry> audit() const;

private:
    TemporaryFolder folder_;
    Options options_;
    std::unique_ptr<Root> root_;
    std::unique_ptr<Resources> resources_;
    std::unique_ptr<Faults> faults_;
    std::unique_ptr<Server> server_;
};

/// The server as a program of its own; killed with the object if it still runs.
class Program {
public:
    /// Output goes to files in `folder`.
    Program(const std::filesystem::path& folder, const std::vector<std::string>& arguments);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits until the file is there; false when the program ended before or time ran out.
    bool waitFor(const std::filesystem::path& file);
    void signal(int number) const;
    /// The exit status, or 1000 and more for a signal; -1 when it still runs after the time.
    int wait(int milliseconds = 20'000);
    std::string output() const;
    std::string errors() const;

private:
    bool hasEnded();

    std::filesystem::path folder_;
    int process_ = -1;
    int status_ = -1;
};

/// Runs the program to its end.
struct Outcome {
    int status;
    std::string output;
    std::string errors;
};
Outcome runProgram(const std::vector<std::string>& arguments);

/// Whole files and texts.
std::string contentOf(const std::filesystem::path& file);
std::size_t occurrences(const std::string& text, const std::string& part);

}  // namespace devserver::testing
