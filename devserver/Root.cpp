#include "devserver/Root.h"

#include "devserver/Failure.h"
#include "devserver/Logins.h"
#include "devserver/Sqlite.h"
#include "devserver/Text.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace devserver {

namespace {

namespace fs = std::filesystem;

/// Marks a folder as one of this server's, and is locked while one uses it.
constexpr const char* marker = ".akdevserver";

fs::path absolute(const std::string& root) {
    fs::path path = fs::absolute(root).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

/// A server listening on every address is reached by the loopback one.
std::string reachable(const std::string& listen) {
    if (listen == "0.0.0.0") {
        return "127.0.0.1";
    }
    return listen == "::" ? "::1" : listen;
}

std::string tomlText(const std::string& text) {
    return '"' + text + '"';
}

std::string certificateRow(const std::string& server) {
    return "[[certificate]]\n"
           "type        = \"host\"\n"
           "server      = " +
           tomlText(server) +
           "\n"
           "host_id     = " +
           tomlText(localHostId) +
           "\n"
           "certificate = \"../certs/host.pem\"\n"
           "private_key = \"../certs/host.key\"\n"
           "ca          = \"../certs/ca.pem\"\n\n";
}

void writeOnce(const fs::path& path, const std::string& content) {
    if (!fs::exists(path)) {
        files::replace(path, content);
    }
}

void checkOwner(const fs::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0 && status.st_uid != ::geteuid()) {
        throw Failure(path.string() + " belongs to somebody else");
    }
}

}  // namespace

Root::Root(const Options& options, Filling filling)
    : path_(absolute(options.root)),
      primaryName_(options.names.empty() ? reachable(options.listen) : options.names.front()),
      filling_(std::move(filling)) {
    claim();
    try {
        openDatabase(options);
        findNewNames(options);
        openAuthority();
        writeCertificates();
        writeConfiguration();
        writeLogins(options);
    } catch (const sqlite::Error& error) {
        throw Failure("cannot use the database in " + path_.string() + ": " + error.what());
    } catch (const fs::filesystem_error& error) {
        throw Failure("cannot use " + path_.string() + ": " + error.code().message());
    }
}

fs::path Root::databasePath(const fs::path& root) {
    return root / "hosts.db";
}

/// Only an empty folder or one that was filled here is used: nobody's files get mixed up.
void Root::claim() {
    files::makeFolder(path_);
    checkOwner(path_);
    std::error_code error;
    const bool empty = fs::is_empty(path_, error);
    if (error) {
        throw Failure("cannot read the folder " + path_.string() + ": " + error.message());
    }
    if (!fs::exists(path_ / marker) && !empty) {
        throw Failure(path_.string() + " is not empty and was not made by akdevserver");
    }
    ::chmod(path_.c_str(), 0700);
    lock_ = std::make_unique<files::Lock>(path_ / marker);
    for (const char* folder : {"ca", "certs", "server", "etc", "config", "config/arkeon"}) {
        files::makeFolder(path_ / folder);
    }
}

/// A new authority makes what an older one has issued useless; that is removed first, so that an
/// interrupted start leaves nothing that does not fit together.
void Root::openAuthority() {
    const fs::path certificate = path_ / "ca" / "ca.pem";
    const fs::path key = path_ / "ca" / "ca.key";
    if (!fs::exists(certificate)) {
        fs::remove(path_ / "certs" / "host.pem");
        fs::remove(path_ / "certs" / "ca.pem");
        const auto fresh = CertificateAuthority::create("Arkeon development authority");
        files::replace(key, fresh.privateKeyPem());
        files::replace(certificate, fresh.certificatePem());
    }
    const std::string certificatePem = files::read(certificate);
    const std::string keyPem = files::read(key);
    try {
        authority_ = std::make_unique<CertificateAuthority>(
            CertificateAuthority::load(certificatePem, keyPem));
    } catch (const Failure& failure) {
        throw Failure("cannot use " + certificate.string() + ": " + failure.what());
    }
}

/// What the database holds decides whether it is filled, not whether the file is there: an
/// interrupted filling leaves a file without tables. A file without a byte is none of these.
void Root::openDatabase(const Options& options) {
    const fs::path path = databasePath(path_);
    if (fs::exists(path) && fs::file_size(path) == 0 && fs::exists(path_ / "etc" / "master.toml")) {
        throw Failure(
            "the database " + path.string() +
            " has lost its content; remove it to have it made "
            "anew");
    }
    bool filled = false;
    database_ = std::make_unique<HostDatabase>(path, [&] {
        filled = true;
        return firstHosts(options);
    });
    if (options.hosts && !filled) {
        throw Failure(
            "--hosts is for a new root; " + path_.string() + " has its host database already");
    }
    ::chmod(path.c_str(), 0600);
}

HostSource Root::firstHosts(const Options& options) const {
    if (options.hosts && filling_.begins) {
        filling_.begins(path_, *options.hosts);
    }
    const HostSource source =
        options.hosts ? generatedHosts(primaryName_, *options.hosts) : sampleHosts(primaryName_);
    return [this, source](HostRecord& host) {
        if (filling_.isStopped && filling_.isStopped()) {
            throw Failure("stopped before " + path_.string() + " was filled");
        }
        return source(host);
    };
}

void Root::findNewNames(const Options& options) {
    std::vector<std::string> names = options.names;
    for (const std::string& name :
         {reachable(options.listen), std::string("localhost"), std::string("127.0.0.1"),
          std::string("::1")}) {
        names.push_back(name);
    }
    const std::vector<std::string> known = database_->serverNames();
    for (const std::string& name : names) {
        const auto same = [&name](const std::string& other) {
            return text::equalIgnoringCase(name, other);
        };
        if (std::none_of(known.begin(), known.end(), same) &&
            std::none_of(newNames_.begin(), newNames_.end(), same)) {
            newNames_.push_back(name);
        }
    }
}

std::vector<std::string> Root::allNames() const {
    std::vector<std::string> names = database_->serverNames();
    names.insert(names.end(), newNames_.begin(), newNames_.end());
    return names;
}

/// The server's certificate is made anew at every start, for all names there are by now; the
/// authority and the host's certificate stay.
void Root::writeCertificates() {
    serverIdentity_ = authority_->issueServer(allNames(), validForDays(825));
    files::replace(path_ / "server" / "server.key", serverIdentity_.privateKeyPem);
    files::replace(path_ / "server" / "server.pem", serverIdentity_.certificatePem);
    writeOnce(path_ / "certs" / "ca.pem", authority_->certificatePem());
    const fs::path certificate = path_ / "certs" / "host.pem";
    const fs::path key = path_ / "certs" / "host.key";
    if (!fs::exists(certificate) || !fs::exists(key)) {
        const Identity host = authority_->issueHost(localHostId, validForDays(3650));
        fs::remove(certificate);
        files::replace(key, host.privateKeyPem);
        files::replace(certificate, host.certificatePem);
    }
}

/// The names become known last, when everything that lists them has been written.
void Root::writeConfiguration() {
    writeOnce(
        path_ / "etc" / "master.toml", "[primary_server]\nname = " + tomlText(primaryName_) + "\n");
    writeCertificateRows();
    for (const std::string& name : newNames_) {
        database_->addServerName(name);
    }
}

/// A file that is there keeps its rows and gets those of the new names.
void Root::writeCertificateRows() {
    const fs::path rows = path_ / "etc" / "certificates.toml";
    const bool isThere = fs::exists(rows);
    std::string content = isThere ? files::read(rows) : "";
    for (const std::string& name : isThere ? newNames_ : allNames()) {
        content += certificateRow(name);
    }
    if (!isThere || !newNames_.empty()) {
        files::replace(rows, content);
    }
}

void Root::writeLogins(const Options& options) {
    std::vector<LoginPlace> places;
    for (const std::string& name : names()) {
        places.push_back({name, toolPort});
        if (options.port != toolPort) {
            places.push_back({name, options.port});
        }
    }
    completeLogins(path_ / "config" / "arkeon" / "logins.json", places, *database_);
}

}  // namespace devserver
