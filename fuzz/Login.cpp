// The bytes of the login file.

#include "arkeon/LoginWithUserTokenManager.h"
#include "arkeon/debug_log.h"
#include "arkeon/status.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"
#include "support/Environment.h"
#include "support/TempDir.h"

#include <algorithm>

using fuzz::expect;

namespace {

/// The folder of the login file, and of a log that a test can read.
class Place {
public:
    Place() : variable_("XDG_CONFIG_HOME", folder_.path()) {
        int status = 0;
        std::filesystem::create_directory(folder_.path() / "log");
        open_debug_log(folder_.path().c_str(), "log", "log", 0600, &status);
        expect(status == 0, "the log is open");
        const std::filesystem::directory_iterator logs(folder_.path() / "log");
        log_ = logs->path();
    }

    void write(const std::string& text) const { folder_.write("arkeon/logins.json", text); }

    /// What was logged; the log is empty again afterwards.
    std::string takeLog() const {
        const std::string text = support::contentOf(log_);
        std::filesystem::resize_file(log_, 0);
        return text;
    }

private:
    support::TempDir folder_;
    support::ScopedVariable variable_;
    std::string log_;
};

void expectToken(int result, const std::string& token) {
    const bool visible = std::all_of(
        token.begin(), token.end(), [](char letter) { return letter > ' ' && letter <= '~'; });
    expect(visible && token.empty() == (result != 0), "a token is visible ASCII, or there is none");
    expect(
        result == arkeon::status::success || result == arkeon::status::notLoggedIn ||
            result == arkeon::status::unusableLogin || result == arkeon::status::loginExpired,
        "a login is found, missing, refused or expired");
}

/// The reasons are fixed words: nothing of the file gets into the log.
void expectLog(const std::string& log, int result) {
    static const char* const reasons[] = {
        ": not JSON, line ", ": not of the form of a login file\n", ": no login for p, port 1556\n",
        ": the token is empty or holds a byte that is no visible ASCII\n",
        ": the login for p has expired\n"};
    const bool known = std::any_of(std::begin(reasons), std::end(reasons), [&](const char* reason) {
        return log.find(reason) != std::string::npos;
    });
    expect(log.empty() ? result == 0 : known, "a failure is logged in fixed words");
    expect(std::count(log.begin(), log.end(), '\n') == (result == 0 ? 0 : 1), "in one line");
    const std::size_t place = log.find(": not JSON, line ");
    if (place != std::string::npos) {
        expect(
            log.find_first_not_of("0123456789, lineco.umJSONt:\n", place) == std::string::npos,
            "the place of a mistake is numbers");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Place place;
    place.write(fuzz::Input(data, size).rest());
    const LoginWithUserTokenManager tokens(1556, "", "", "", "", 1);
    std::string token = "of an earlier request";
    const int result = tokens.findToken("p", token);
    expectToken(result, token);
    expectLog(place.takeLog(), result);
    return 0;
}
