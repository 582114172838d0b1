// The bytes of a message catalogue: what is found sound, gettext can be given.

#include "arkeon/catalogue.h"
#include "arkeon/text.h"
#include "catalogue/CatalogueFile.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"
#include "fuzz/Root.h"
#include "support/Environment.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using fuzz::expect;

namespace {

/// Asks for the one language that has a catalogue.
void chooseLanguage() {
    static const support::ScopedVariable all("LC_ALL", "C.UTF-8");
    static const support::ScopedVariable language("LANGUAGE", "xx");
}

void lookUp(const char* id, const char* text) {
    zvlocale locale{};
    int status = 0;
    zvgetlocaleEx(&locale, &status);
    std::array<char, 128> buffer{};
    zvgetmsg(id, locale, buffer.data(), buffer.size(), text, "a", "b");
    expect(buffer[0] == '\0' || buffer.back() == '\0', "a text is terminated");
}

/// Waits for a process, past the signals of the fuzzer's own clock.
int statusOf(pid_t child) {
    int status = -1;
    pid_t ended = 0;
    do {
        ended = waitpid(child, &status, 0);
    } while (ended < 0 && errno == EINTR);
    return status;
}

/// In a process of its own, since gettext never forgets a catalogue; one that lasts is ended.
void lookUpAlone() {
    constexpr unsigned longEnough = 5;
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGALRM, SIG_DFL);
        alarm(longEnough);
        for (const char* id : {"a", "b", "SmeHmm0003N", "SmeHmm9999N"}) {
            lookUp(id, "%s is successfully mapped to %s.");
            lookUp(id, "%s%s");
        }
        _exit(0);
    }
    expect(child > 0, "there is a process to look up in");
    expect(statusOf(child) == 0, "a look-up in a sound catalogue ends, and ends well");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = fuzz::Input(data, size).rest();
    if (arkeon::isSoundCatalogue(bytes)) {
        chooseLanguage();
        fuzz::root().write("locale/xx/LC_MESSAGES/akhostmgmt.mo", bytes);
        lookUpAlone();
    }
    return 0;
}
