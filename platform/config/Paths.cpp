#include "config/Paths.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace arkeon {
namespace {

bool isAbsolute(const std::string& path) {
    return path.starts_with('/');
}

std::string homeFromPasswordDatabase() {
    const passwd* entry = getpwuid(geteuid());
    return entry == nullptr || entry->pw_dir == nullptr ? "" : entry->pw_dir;
}

std::string homeDirectory() {
    std::string home = environment("HOME");
    return isAbsolute(home) ? home : homeFromPasswordDatabase();
}

/// The XDG Base Directory rules: a relative path in XDG_CONFIG_HOME is ignored.
std::string configDirectory() {
    std::string directory = environment("XDG_CONFIG_HOME");
    if (isAbsolute(directory)) {
        return directory;
    }
    const std::string home = homeDirectory();
    return isAbsolute(home) ? home + "/.config" : std::string();
}

}  // namespace

std::string environment(const char* name) {
    const char* value = secure_getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string rootDirectory() {
    std::string root = environment("ARKEON_ROOT");
    return root.empty() ? "/usr/zelvik/arkeon" : root;
}

std::string masterConfigFile() {
    return rootDirectory() + "/etc/master.toml";
}

std::string certificateInfoFile() {
    return rootDirectory() + "/etc/certificates.toml";
}

std::string localeDirectory() {
    return rootDirectory() + "/locale";
}

std::string loginFile() {
    const std::string directory = configDirectory();
    return directory.empty() ? std::string() : directory + "/arkeon/logins.json";
}

}  // namespace arkeon
