#include "devserver/Options.h"

#include "devserver/Failure.h"
#include "devserver/Text.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>

namespace devserver {

namespace {

void setRoot(Options& options, const std::string& value) {
    if (value.empty()) {
        throw Failure("--root needs a folder");
    }
    options.root = value;
}

void setListen(Options& options, const std::string& value) {
    if (!isNumericAddress(value)) {
        throw Failure("--listen needs an IP address, not '" + text::visible(value) + "'");
    }
    options.listen = value;
}

void setPort(Options& options, const std::string& value) {
    const auto port = text::number(value, largestPort);
    if (!port || *port == 0) {
        throw Failure(
            "--port needs a number from 1 to " + std::to_string(largestPort) + ", not '" +
            text::visible(value) + "'");
    }
    options.port = static_cast<int>(*port);
}

/// A name goes into certificates and configuration files, hence the narrow choice of bytes.
void addName(Options& options, const std::string& value) {
    constexpr const char* allowed =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._:";
    if (value.empty() || value.size() > 253 ||
        value.find_first_not_of(allowed) != std::string::npos) {
        throw Failure("--name needs a host name or an address, not '" + text::visible(value) + "'");
    }
    options.names.push_back(value);
}

void setHosts(Options& options, const std::string& value) {
    const auto count = text::number(value, 10'000'000);
    if (!count) {
        throw Failure("--hosts needs a number up to 10000000, not '" + text::visible(value) + "'");
    }
    options.hosts = *count;
}

void setReadyFile(Options& options, const std::string& value) {
    if (value.empty()) {
        throw Failure("--ready-file needs a file");
    }
    options.readyFile = value;
}

void addFault(Options& options, const std::string& value) {
    options.faults.push_back(parseFaultRule(value));
}

/// An option as the help shows it, and what it sets.
struct Option {
    const char* name;
    const char* argument;  ///< null for an option without one
    void (*set)(Options&, const std::string&);
    const char* help;
};

template <Options::Task task>
void setTask(Options& options, const std::string&) {
    options.task = task;
}

constexpr std::array<Option, 11> table{{
    {"--root", "DIR", setRoot, "keep everything in DIR; filled on the first start"},
    {"--listen", "ADDR", setListen, "listen on this address (default 127.0.0.1)"},
    {"--port", "N", setPort, "listen on this port (default 1556)"},
    {"--name", "NAME", addName, "a name or address of the server; may be repeated"},
    {"--hosts", "N", setHosts, "fill a new root with N hosts instead of the samples"},
    {"--ready-file", "FILE", setReadyFile, "make FILE when ready, remove it when stopped"},
    {"--fault", "RULE", addFault, "misbehave as the rule says; may be repeated"},
    {"--init-only", nullptr, setTask<Options::Task::initialise>, "fill DIR and exit"},
    {"--audit", nullptr, setTask<Options::Task::audit>, "print the audit trail of DIR and exit"},
    {"--help", nullptr, setTask<Options::Task::help>, "print this text and exit"},
    {"--version", nullptr, setTask<Options::Task::version>, "print the version and exit"},
}};

const Option& find(const std::string& name) {
    for (const Option& option : table) {
        if (name == option.name) {
            return option;
        }
    }
    throw Failure("unknown option '" + text::visible(name) + "'; see --help");
}

void checkTogether(const Options& options) {
    const bool needsRoot = options.task == Options::Task::serve ||
                           options.task == Options::Task::initialise ||
                           options.task == Options::Task::audit;
    if (needsRoot && options.root.empty()) {
        throw Failure("--root is required; see --help");
    }
}

}  // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        // "--name=value" is the same as "--name value".
        const std::size_t equals = arguments[i].find('=');
        const Option& option = find(arguments[i].substr(0, equals));
        if (equals != std::string::npos && option.argument != nullptr) {
            option.set(options, arguments[i].substr(equals + 1));
        } else if (equals != std::string::npos) {
            throw Failure(std::string(option.name) + " takes no value");
        } else if (option.argument == nullptr) {
            option.set(options, "");
        } else if (i + 1 < arguments.size()) {
            option.set(options, arguments[++i]);
        } else {
            throw Failure(std::string(option.name) + " needs a value");
        }
    }
    checkTogether(options);
    return options;
}

std::string helpText() {
    std::string text =
        "Usage: akdevserver --root DIR [OPTION]...\n"
        "A local primary server for trying out and testing akhostmgmt. Not for production.\n\n";
    for (const Option& option : table) {
        std::string left = std::string("  ") + option.name;
        left += option.argument == nullptr ? "" : std::string(" ") + option.argument;
        left.resize(std::max<std::size_t>(left.size() + 1, 24), ' ');
        text += left + option.help + '\n';
    }
    text += "\nA fault RULE is METHOD TARGET[*] [xN] ACTION[,ACTION...] or CONNECT [xN] ACTION:\n"
            "  status=N[/CODE] html redirect=URL endless drop delay=MS drip=BYTES/MS cut=BYTES\n"
            "  length=+N|-N hostile[=escapes|controls|utf8|format]\n"
            "  CONNECT: expired wrong-name untrusted\n";
    return text;
}

bool isNumericAddress(const std::string& text) {
    std::array<unsigned char, sizeof(in6_addr)> bytes{};
    return inet_pton(AF_INET, text.c_str(), bytes.data()) == 1 ||
           inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1;
}

bool isLoopback(const std::string& address) {
    in_addr four{};
    if (inet_pton(AF_INET, address.c_str(), &four) == 1) {
        return ntohl(four.s_addr) >> 24U == 127U;
    }
    in6_addr six{};
    return inet_pton(AF_INET6, address.c_str(), &six) == 1 && IN6_IS_ADDR_LOOPBACK(&six);
}

}  // namespace devserver
