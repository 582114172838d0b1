#include "https/SharedLibrary.h"

#include "support/LogReader.h"

#include <gmock/gmock.h>
#include <unistd.h>

using arkeon::SharedLibrary;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using ProcessId = pid_t (*)();

class SharedLibraryTest : public testing::Test {
protected:
    support::LogReader log_;
    ProcessId function_ = nullptr;
};

TEST_F(SharedLibraryTest, TheFirstThatCanBeLoadedIsTaken) {
    SharedLibrary library{"libnot-there.so.0", "libc.so.6", "libnot-there-either.so.0"};
    library.find("getpid", function_);
    EXPECT_TRUE(library.complete());
    ASSERT_NE(function_, nullptr);
    EXPECT_EQ(function_(), getpid());
    EXPECT_THAT(log_.text(), IsEmpty());
}

TEST_F(SharedLibraryTest, ALibraryThatIsNotThereIsReported) {
    SharedLibrary library{"libnot-there.so.0"};
    library.find("getpid", function_);
    EXPECT_FALSE(library.complete());
    EXPECT_EQ(function_, nullptr);
    EXPECT_THAT(log_.lines(), testing::ElementsAre(HasSubstr(" 16 arkeon: libnot-there.so.0: ")));
}

TEST_F(SharedLibraryTest, AFunctionThatIsNotThereIsReported) {
    SharedLibrary library{"libc.so.6"};
    library.find("not_there", function_);
    library.find("getpid", function_);
    EXPECT_FALSE(library.complete());
    EXPECT_NE(function_, nullptr);
    EXPECT_THAT(log_.lines(), testing::ElementsAre(HasSubstr("undefined symbol: not_there")));
}

}  // namespace
