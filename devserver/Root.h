#pragma once

#include "devserver/CertificateAuthority.h"
#include "devserver/Files.h"
#include "devserver/HostDatabase.h"
#include "devserver/Options.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace devserver {

/// What the filling of a host database tells and asks, as it may take minutes.
struct Filling {
    /// Called before the first of so many generated hosts.
    std::function<void(const std::filesystem::path& root, std::size_t hosts)> begins;
    /// Asked before every host; once it is true, the filling is undone and ends in a Failure.
    std::function<bool()> isStopped;
};

/// The folder that a server keeps everything in: its authority and certificates, the host
/// database, and the configuration and login that the tool reads. Filled when it is new; what is
/// there already stays, and names and addresses that are new are added.
class Root {
public:
    /// Takes the folder for this process. What keeps it from being used is a Failure.
    explicit Root(const Options& options, Filling filling = {});

    /// Absolute.
    const std::filesystem::path& path() const { return path_; }
    const CertificateAuthority& authority() const { return *authority_; }
    /// The certificate in `server/server.pem` and its key: what the server presents.
    const Identity& serverIdentity() const { return serverIdentity_; }
    HostDatabase& database() { return *database_; }
    /// Every name and address that the server has ever been started under.
    std::vector<std::string> names() const { return database_->serverNames(); }
    /// The server name of this start: what the tool can be given as -server.
    const std::string& primaryName() const { return primaryName_; }
    /// Whether the tool finds the server without being told, by the master configuration.
    bool isConfigured() const { return names().front() == primaryName_; }

    /// Where the audit trail of a root is.
    static std::filesystem::path databasePath(const std::filesystem::path& root);

private:
    void claim();
    void openDatabase(const Options& options);
    HostSource firstHosts(const Options& options) const;
    void findNewNames(const Options& options);
    void openAuthority();
    std::vector<std::string> allNames() const;
    void writeCertificates();
    void writeConfiguration();
    void writeCertificateRows();
    void writeLogins(const Options& options);

    std::filesystem::path path_;
    std::string primaryName_;
    Filling filling_;
    std::vector<std::string> newNames_;
    std::unique_ptr<files::Lock> lock_;
    std::unique_ptr<CertificateAuthority> authority_;
    Identity serverIdentity_;
    std::unique_ptr<HostDatabase> database_;
};

}  // namespace devserver
