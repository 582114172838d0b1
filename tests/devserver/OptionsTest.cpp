#include "devserver/Options.h"
#include "devserver/Failure.h"

#include <gtest/gtest.h>

namespace {

using namespace devserver;

TEST(Options, Defaults) {
    const Options options = parseOptions({"--root", "/r"});
    EXPECT_EQ(options.task, Options::Task::serve);
    EXPECT_EQ(options.root, "/r");
    EXPECT_EQ(options.listen, "127.0.0.1");
    EXPECT_EQ(options.port, 1556);
    EXPECT_FALSE(options.hosts);
}

TEST(Options, ReadsEveryOption) {
    const Options options = parseOptions(
        {"--root=/r", "--listen", "::1", "--port", "2000", "--name", "a", "--name=b", "--hosts",
         "7", "--ready-file", "f", "--init-only", "--fault", "GET / drop", "--fault",
         "CONNECT expired"});
    EXPECT_EQ(options.task, Options::Task::initialise);
    EXPECT_EQ(options.listen, "::1");
    EXPECT_EQ(options.port, 2000);
    EXPECT_EQ(options.names, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(options.hosts, 7U);
    EXPECT_EQ(options.readyFile, "f");
    EXPECT_EQ(options.faults.size(), 2U);
}

TEST(Options, RefusesWhatIsWrong) {
    const std::vector<std::vector<std::string>> wrong{
        {},
        {"--audit"},
        {"--root"},
        {"--root", ""},
        {"--root", "/r", "--nonsense"},
        {"--root", "/r", "word"},
        {"--root", "/r", "--port", "0"},
        {"--root", "/r", "--port", "65536"},
        {"--root", "/r", "--port", "x"},
        {"--root", "/r", "--listen", "localhost"},
        {"--root", "/r", "--listen", "127.0.0.1:1556"},
        {"--root", "/r", "--name", ""},
        {"--root", "/r", "--name", "a\"b"},
        {"--root", "/r", "--hosts", "-1"},
        {"--root", "/r", "--hosts", "many"},
        {"--root", "/r", "--fault", "bad"},
        {"--root", "/r", "--init-only=1"},
        {"--root", "/r", "--ready-file", ""},
    };
    for (const auto& arguments : wrong) {
        EXPECT_THROW(parseOptions(arguments), Failure)
            << (arguments.empty() ? "" : arguments.back());
    }
}

TEST(Options, HelpNamesEveryOptionOnce) {
    const std::string help = helpText();
    for (const char* name :
         {"--root", "--listen", "--port", "--name", "--hosts", "--ready-file", "--init-only",
          "--fault", "--audit", "--help", "--version"}) {
        const std::string start = std::string("\n  ") + name + ' ';
        EXPECT_NE(help.find(start), std::string::npos) << name;
        EXPECT_EQ(help.find(start), help.rfind(start)) << name;
    }
}

TEST(Options, HelpTellsTheDefaults) {
    const std::string help = helpText();
    const Options defaults;
    for (const std::string& value : {defaults.listen, std::to_string(defaults.port)}) {
        EXPECT_NE(help.find("(default " + value + ")"), std::string::npos) << value;
    }
}

TEST(Options, KnowsLoopbackAddresses) {
    for (const char* address : {"127.0.0.1", "127.200.3.4", "::1"}) {
        EXPECT_TRUE(isLoopback(address)) << address;
    }
    for (const char* address : {"0.0.0.0", "192.0.2.1", "::", "2001:db8::1", "128.0.0.1"}) {
        EXPECT_FALSE(isLoopback(address)) << address;
    }
}

}  // namespace
