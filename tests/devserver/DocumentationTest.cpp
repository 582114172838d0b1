#include "devserver/Faults.h"
#include "devserver/Options.h"
#include "devserver/Reply.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>

namespace {

using namespace devserver;

std::string documentation() {
    std::ostringstream content;
    content << std::ifstream(AKDEVSERVER_DOCUMENTATION).rdbuf();
    return content.str();
}

/// All matches of an expression's first group.
std::vector<std::string> found(const std::string& text, const char* expression) {
    const std::regex pattern(expression);
    std::vector<std::string> all;
    for (std::sregex_iterator at(text.begin(), text.end(), pattern), end; at != end; ++at) {
        all.push_back((*at)[1]);
    }
    return all;
}

TEST(Documentation, ListsTheErrorsOfTheServer) {
    std::set<std::string> expected{"414 | 8711"};
    for (const ErrorKind& kind : errors::all) {
        expected.insert(std::to_string(kind.status) + " | " + std::to_string(kind.code));
    }
    const std::vector<std::string> rows =
        found(documentation(), "\n\\| ([0-9]{3} \\| [0-9]+) \\| ");
    EXPECT_EQ(std::set<std::string>(rows.begin(), rows.end()), expected);
}

TEST(Documentation, ListsEveryOption) {
    const std::vector<std::string> known = found(helpText(), "\n  (--[a-z-]+)");
    EXPECT_EQ(known.size(), 11U);
    const std::string text = documentation();
    for (const std::string& option : known) {
        EXPECT_NE(text.find('`' + option), std::string::npos) << option;
    }
}

TEST(Documentation, ItsExamplesOfFaultsAreRules) {
    const std::vector<std::string> rules = found(documentation(), "--fault '([^']+)'");
    EXPECT_GE(rules.size(), 8U);
    for (const std::string& rule : rules) {
        EXPECT_NO_THROW(parseFaultRule(rule)) << rule;
    }
}

}  // namespace
