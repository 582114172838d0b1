#include "devserver/Failure.h"
#include "devserver/Faults.h"
#include "devserver/Text.h"

#include <array>

namespace devserver {

namespace {

/// Why a rule is refused; completed with the rule's text further out.
struct Mistake {
    std::string reason;
};

constexpr unsigned long long longestTime = 3'600'000;
constexpr unsigned long long mostBytes = 1ULL << 31U;

unsigned long long numberOf(std::string_view text, unsigned long long limit) {
    const std::optional<unsigned long long> value = text::number(text, limit);
    if (!value) {
        throw Mistake{
            "'" + std::string(text) + "' is not a number from 0 to " + std::to_string(limit)};
    }
    return *value;
}

std::chrono::milliseconds timeOf(std::string_view text) {
    return std::chrono::milliseconds(numberOf(text, longestTime));
}

void setStatus(Fault& fault, std::string_view argument) {
    const std::size_t slash = argument.find('/');
    const unsigned long long status = numberOf(argument.substr(0, slash), 599);
    if (status < 200) {
        throw Mistake{"a status is from 200 to 599"};
    }
    fault.status = static_cast<int>(status);
    if (slash != std::string_view::npos) {
        constexpr unsigned long long largest = 9'223'372'036'854'775'807ULL;
        fault.errorCode = static_cast<std::int64_t>(numberOf(argument.substr(slash + 1), largest));
    }
}

void setDelay(Fault& fault, std::string_view argument) {
    fault.delay = timeOf(argument);
}

void setDrip(Fault& fault, std::string_view argument) {
    const std::size_t slash = argument.find('/');
    if (slash == std::string_view::npos) {
        throw Mistake{"drip needs BYTES/MILLISECONDS"};
    }
    fault.dripBytes = numberOf(argument.substr(0, slash), mostBytes);
    fault.dripInterval = timeOf(argument.substr(slash + 1));
    if (fault.dripBytes == 0) {
        throw Mistake{"drip needs at least one byte"};
    }
}

void setCut(Fault& fault, std::string_view argument) {
    fault.cut = numberOf(argument, mostBytes);
}

void setLength(Fault& fault, std::string_view argument) {
    if (argument.empty() || (argument.front() != '+' && argument.front() != '-')) {
        throw Mistake{"length needs +BYTES or -BYTES"};
    }
    const auto change = static_cast<long>(numberOf(argument.substr(1), mostBytes));
    fault.lengthChange = argument.front() == '-' ? -change : change;
    if (change == 0) {
        throw Mistake{"length needs a difference"};
    }
}

void setRedirect(Fault& fault, std::string_view argument) {
    if (argument.empty() || !text::isPlain(argument)) {
        throw Mistake{"redirect needs an address"};
    }
    fault.redirect = argument;
}

void setHostile(Fault& fault, std::string_view argument) {
    struct Row {
        std::string_view name;
        Hostile kind;
    };
    constexpr std::array<Row, 5> rows{{
        {"", Hostile::escapes},
        {"escapes", Hostile::escapes},
        {"controls", Hostile::controls},
        {"utf8", Hostile::utf8},
        {"format", Hostile::format},
    }};
    for (const Row& row : rows) {
        if (row.name == argument) {
            fault.hostile = row.kind;
            return;
        }
    }
    throw Mistake{"hostile knows escapes, controls, utf8 and format"};
}

/// An action of a request's rule: does it need an argument, may it have one, what does it do.
struct Action {
    /// Whether something stands behind the action's name.
    enum class Argument { none, optional, required };
    std::string_view name;
    Argument argument;
    void (*set)(Fault&, std::string_view);
};

constexpr std::array<Action, 11> actions{{
    {"status", Action::Argument::required, setStatus},
    {"html", Action::Argument::none,
     [](Fault& fault, std::string_view) {
         fault.html = true;
     }},
    {"redirect", Action::Argument::required, setRedirect},
    {"endless", Action::Argument::none,
     [](Fault& fault, std::string_view) {
         fault.endless = true;
     }},
    {"drop", Action::Argument::none,
     [](Fault& fault, std::string_view) {
         fault.drop = true;
     }},
    {"delay", Action::Argument::required, setDelay},
    {"drip", Action::Argument::required, setDrip},
    {"cut", Action::Argument::required, setCut},
    {"length", Action::Argument::required, setLength},
    {"hostile", Action::Argument::optional, setHostile},
    {"none", Action::Argument::none,
     [](Fault&, std::string_view) {
     }},
}};

void addAction(Fault& fault, std::string_view text) {
    const std::size_t equals = text.find('=');
    const std::string_view name = text.substr(0, equals);
    const bool hasArgument = equals != std::string_view::npos;
    for (const Action& action : actions) {
        if (action.name != name) {
            continue;
        }
        if (action.argument == Action::Argument::none && hasArgument) {
            throw Mistake{std::string(name) + " takes no argument"};
        }
        if (action.argument == Action::Argument::required && !hasArgument) {
            throw Mistake{std::string(name) + " needs an argument"};
        }
        action.set(fault, hasArgument ? text.substr(equals + 1) : "");
        return;
    }
    throw Mistake{"there is no action '" + std::string(name) + "'"};
}

CertificateFault certificateFault(std::string_view name) {
    if (name == "expired") {
        return CertificateFault::expired;
    }
    if (name == "wrong-name") {
        return CertificateFault::wrongName;
    }
    if (name == "untrusted") {
        return CertificateFault::untrusted;
    }
    throw Mistake{"CONNECT knows expired, wrong-name and untrusted"};
}

unsigned long long countOf(std::string_view text) {
    if (text == "x*") {
        return FaultRule::always;
    }
    const unsigned long long count = numberOf(text.substr(1), 1'000'000'000);
    if (count == 0) {
        throw Mistake{"a rule applies at least once"};
    }
    return count;
}

void checkMethod(std::string_view method) {
    for (const std::string_view known : {"*", "GET", "PUT", "POST", "PATCH", "DELETE", "CONNECT"}) {
        if (method == known) {
            return;
        }
    }
    throw Mistake{"there is no method '" + std::string(method) + "'"};
}

void checkPattern(std::string_view pattern) {
    const std::size_t star = pattern.find('*');
    if (pattern != "*" && pattern.front() != '/') {
        throw Mistake{"a target starts with '/' or is '*'"};
    }
    if (star != std::string_view::npos && star + 1 != pattern.size()) {
        throw Mistake{"a '*' may only stand at the end of a target"};
    }
}

std::vector<std::string_view> wordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    for (const std::string_view word : text::split(text, ' ')) {
        if (!word.empty()) {
            words.push_back(word);
        }
    }
    return words;
}

FaultRule ruleOf(std::vector<std::string_view> words) {
    FaultRule rule;
    const bool ofConnection = !words.empty() && words.front() == "CONNECT";
    // The count stands before the actions; taking it out leaves a fixed number of words.
    if (words.size() > 2 && words[words.size() - 2].front() == 'x') {
        rule.remaining = countOf(words[words.size() - 2]);
        words.erase(words.end() - 2);
    }
    if (words.size() != (ofConnection ? 2U : 3U)) {
        throw Mistake{"a rule is METHOD TARGET [xN] ACTION[,ACTION...] or CONNECT [xN] ACTION"};
    }
    checkMethod(words.front());
    rule.method = words.front();
    if (ofConnection) {
        rule.certificate = certificateFault(words.back());
        return rule;
    }
    checkPattern(words[1]);
    rule.pattern = words[1];
    for (const std::string_view action : text::split(words.back(), ',')) {
        addAction(rule.fault, action);
    }
    return rule;
}

}  // namespace

FaultRule parseFaultRule(const std::string& text) {
    try {
        return ruleOf(wordsOf(text));
    } catch (const Mistake& mistake) {
        throw Failure("--fault '" + text::visible(text) + "': " + text::visible(mistake.reason));
    }
}

}  // namespace devserver
