#include "devserver/Program.h"

#include "devserver/AuditText.h"
#include "devserver/Failure.h"
#include "devserver/Files.h"
#include "devserver/Options.h"
#include "devserver/Root.h"
#include "devserver/Server.h"
#include "devserver/Text.h"

#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <ostream>

namespace devserver {

namespace {

/// A word that a shell reads as exactly this text.
std::string shellWord(const std::string& text) {
    constexpr const char* plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                                  "/._-+:@%,";
    if (!text.empty() && text.find_first_not_of(plain) == std::string::npos) {
        return text;
    }
    std::string word = "'";
    for (const char character : text) {
        word += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return word + "'";
}

void printHowTo(const Root& root, const Options& options, std::ostream& out) {
    out << "akdevserver: a local primary server for trying out and testing only.\n"
           "Its data are samples, its authority is nobody's, and it is no substitute for a "
           "primary server.\n\n"
           "To use it, paste into a shell:\n\n";
    out << "export ARKEON_ROOT=" << shellWord(root.path().string()) << '\n';
    out << "export XDG_CONFIG_HOME=" << shellWord((root.path() / "config").string()) << '\n';
    out << "akhostmgmt -list"
        << (root.isConfigured() ? "" : " -server " + shellWord(root.primaryName())) << "\n\n";
    if (options.port != toolPort) {
        out << "Note: akhostmgmt always uses port " << toolPort << ", not " << options.port
            << ".\n";
    }
    out.flush();
}

void warnOfOpenAddress(const Options& options, std::ostream& err) {
    if (!isLoopback(options.listen)) {
        err << "akdevserver: warning: " << options.listen
            << " is not a loopback address; other machines may reach this server\n";
    }
}

/// Whether a text is "ADDRESS PORT", a line as ready files hold it.
bool isPlace(const std::string& content) {
    const std::size_t blank = content.find(' ');
    if (blank == std::string::npos || content.back() != '\n') {
        return false;
    }
    return isNumericAddress(content.substr(0, blank)) &&
           text::number(content.substr(blank + 1, content.size() - blank - 2), largestPort);
}

/// The ready file is there exactly while the server answers.
class ReadyFile {
public:
    ReadyFile(std::string path, std::string content)
        : path_(std::move(path)), content_(std::move(content)) {
        checkPath(path_);
        if (!path_.empty()) {
            files::replace(path_, content_);
        }
    }
    /// What somebody else has put there meanwhile stays.
    ~ReadyFile() {
        std::error_code ignored;
        if (!path_.empty() && std::filesystem::is_regular_file(path_, ignored) &&
            contentOrNothing() == content_) {
            std::filesystem::remove(path_, ignored);
        }
    }
    ReadyFile(const ReadyFile&) = delete;
    ReadyFile& operator=(const ReadyFile&) = delete;

    /// Only a place that is free, an empty file, or a ready file left behind may be used: any
    /// other file there is somebody's.
    static void checkPath(const std::string& path) {
        const auto status = std::filesystem::symlink_status(path);
        if (path.empty() || !std::filesystem::exists(status)) {
            return;
        }
        if (!std::filesystem::is_regular_file(status)) {
            throw Failure("the ready file " + path + " exists and is no regular file");
        }
        const std::string content = files::read(path);
        if (!content.empty() && !isPlace(content)) {
            throw Failure("the ready file " + path + " exists and was not made by akdevserver");
        }
    }

private:
    std::string contentOrNothing() const {
        try {
            return files::read(path_);
        } catch (const Failure&) {
            return {};
        }
    }

    std::string path_;
    std::string content_;
};

/// Blocks the signals that end the server, for this thread and those it starts, so that only
/// sigwait gets them.
sigset_t takeStopSignals() {
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    return signals;
}

/// Tells of a filling that takes its time, and lets the signals that stop the server stop it too.
Filling watchedFilling(std::ostream& out) {
    constexpr std::size_t many = 100'000;
    return {
        [&out](const std::filesystem::path& root, std::size_t hosts) {
            if (hosts >= many) {
                out << "Filling " << root.string() << " with " << hosts << " hosts ..."
                    << std::endl;
            }
        },
        [] {
            sigset_t pending{};
            sigpending(&pending);
            return sigismember(&pending, SIGINT) == 1 || sigismember(&pending, SIGTERM) == 1;
        }};
}

void serve(const Options& options, std::ostream& out, std::ostream& err) {
    ReadyFile::checkPath(options.readyFile);
    Server::checkPlace(options.listen, options.port);
    const sigset_t signals = takeStopSignals();
    Root root(options, watchedFilling(out));
    Resources resources(root.database(), root.primaryName());
    Faults faults(options.faults);
    Server server(
        root.authority(), {options.listen, options.port, root.serverIdentity(), root.names()},
        resources, faults);
    server.start();
    printHowTo(root, options, out);
    warnOfOpenAddress(options, err);
    {
        out << "Ready: listening on " << options.listen << " port " << options.port
            << ". Stop with Ctrl-C." << std::endl;
        // Last: whoever waits for the file finds all of the above said.
        const std::string place = options.listen + ' ' + std::to_string(options.port);
        const ReadyFile ready(options.readyFile, place + '\n');
        int signal = 0;
        sigwait(&signals, &signal);
    }
    server.stop();
    out << "Stopped." << std::endl;
}

void printAudit(const Options& options, std::ostream& out) {
    const std::filesystem::path database = Root::databasePath(options.root);
    if (!std::filesystem::exists(database)) {
        throw Failure(options.root + " holds no host database");
    }
    out << auditText(HostDatabase::auditTrail(database));
    out.flush();
}

void perform(const Options& options, std::ostream& out, std::ostream& err) {
    switch (options.task) {
    case Options::Task::help:
        out << helpText();
        return;
    case Options::Task::version:
        out << "akdevserver " << AKDEVSERVER_VERSION << '\n';
        return;
    case Options::Task::audit:
        printAudit(options, out);
        return;
    case Options::Task::initialise:
        takeStopSignals();
        printHowTo(Root(options, watchedFilling(out)), options, out);
        warnOfOpenAddress(options, err);
        return;
    case Options::Task::serve:
        serve(options, out, err);
        return;
    }
}

}  // namespace

int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    Options options;
    try {
        options = parseOptions(arguments);
    } catch (const Failure& failure) {
        err << "akdevserver: " << failure.what() << std::endl;
        return 2;
    }
    try {
        ::umask(077);
        perform(options, out, err);
        return 0;
    } catch (const std::exception& failure) {
        err << "akdevserver: " << text::visible(failure.what()) << std::endl;
        return 1;
    }
}

}  // namespace devserver
