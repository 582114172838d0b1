#include "https/SharedLibrary.h"

#include "support/LogReader.h"
#include "support/TempDir.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

using arkeon::SharedLibrary;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

using ProcessId = pid_t (*)();

class SharedLibraryTest : public testing::Test {
protected:
    support::TempDir folder_;
    support::LogReader log_;
    ProcessId function_ = nullptr;
};

TEST_F(SharedLibraryTest, AFunctionIsFound) {
    SharedLibrary library("libc.so.6");
    library.find("getpid", function_);
    EXPECT_TRUE(library.complete());
    ASSERT_NE(function_, nullptr);
    EXPECT_EQ(function_(), getpid());
    EXPECT_THAT(log_.text(), IsEmpty());
}

TEST_F(SharedLibraryTest, AFileThatIsNotThereGivesWayToTheName) {
    SharedLibrary library("/not/there.so", "libc.so.6");
    library.find("getpid", function_);
    EXPECT_TRUE(library.complete());
    EXPECT_THAT(log_.text(), IsEmpty());
}

TEST_F(SharedLibraryTest, AFileThatIsNoLibraryGivesWayToTheName) {
    const std::string file = folder_.write("library.so", "no library", 0700);
    SharedLibrary library(file, "libc.so.6");
    EXPECT_TRUE(library.complete());
    EXPECT_THAT(log_.lines(), testing::ElementsAre(HasSubstr("file too short")));
}

TEST_F(SharedLibraryTest, AFileThatOthersCouldChangeIsNotLoaded) {
    for (const mode_t mode : {0720U, 0702U}) {
        const std::string file = folder_.write("library.so", "no library", mode);
        SharedLibrary library(file, "libc.so.6");
        EXPECT_TRUE(library.complete());
    }
    const auto refused = HasSubstr("not loaded, since others could have changed it");
    EXPECT_THAT(log_.lines(), testing::ElementsAre(refused, refused));
}

TEST_F(SharedLibraryTest, NothingElseThanARegularFileIsLoaded) {
    const std::string fifo = folder_.file("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string link = folder_.file("link");
    ASSERT_EQ(symlink("/lib/x86_64-linux-gnu/libm.so.6", link.c_str()), 0);
    for (const std::string& file : {fifo, link, folder_.path().string(), std::string()}) {
        SharedLibrary library(file, "libc.so.6");
        EXPECT_TRUE(library.complete());
    }
    EXPECT_THAT(log_.text(), Not(HasSubstr("libm"))) << "a link is not followed";
}

TEST_F(SharedLibraryTest, ALibraryThatIsNotThereIsReported) {
    SharedLibrary library("libnot-there.so.0");
    library.find("getpid", function_);
    EXPECT_FALSE(library.complete());
    EXPECT_EQ(function_, nullptr);
    EXPECT_THAT(log_.lines(), testing::ElementsAre(HasSubstr(" 16 arkeon: libnot-there.so.0: ")));
}

TEST_F(SharedLibraryTest, AFunctionThatIsNotThereIsReported) {
    SharedLibrary library("libc.so.6");
    library.find("not_there", function_);
    library.find("getpid", function_);
    EXPECT_FALSE(library.complete());
    EXPECT_NE(function_, nullptr);
    EXPECT_THAT(log_.lines(), testing::ElementsAre(HasSubstr("undefined symbol: not_there")));
}

}  // namespace
