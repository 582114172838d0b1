#include "fuzz/Output.h"

#include "arkeon/console.h"
#include "fuzz/Property.h"

#include <sys/mman.h>
#include <unistd.h>

/// Of the sanitizers' runtime; null where there is none.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the runtime's
extern "C" __attribute__((weak)) void __sanitizer_set_report_fd(void* descriptor);

namespace fuzz {
namespace {

/// A file in memory that stands in a standard stream's place while a Redirection lives.
class Memory {
public:
    explicit Memory(int stream) : stream_(stream), file_(memfd_create("output", MFD_CLOEXEC)) {
        expect(file_ >= 0, "there is a file in memory");
    }

    void begin() {
        kept_ = dup(stream_);
        dup2(file_, stream_);
    }

    void end() {
        dup2(kept_, stream_);
        close(kept_);
    }

    /// What was written; empty again afterwards.
    std::string take() {
        const off_t size = lseek(file_, 0, SEEK_CUR);
        std::string text(static_cast<std::size_t>(size), '\0');
        expect(pread(file_, text.data(), text.size(), 0) == size, "the output can be read");
        lseek(file_, 0, SEEK_SET);
        return text;
    }

private:
    int stream_;
    int file_;
    int kept_ = -1;
};

class Redirection {
public:
    Redirection(Memory& out, Memory& err) : out_(out), err_(err) {
        out_.begin();
        err_.begin();
    }
    ~Redirection() {
        arkeon::Console::standard().flush();
        out_.end();
        err_.end();
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    Memory& out_;
    Memory& err_;
};

/// A descriptor of a pointer's width, the form in which the runtime wants it.
void keepReportsVisible() {
    if (__sanitizer_set_report_fd != nullptr) {
        const auto descriptor = static_cast<std::uintptr_t>(dup(STDERR_FILENO));
        __sanitizer_set_report_fd(reinterpret_cast<void*>(descriptor));
    }
}

}  // namespace

Output outputOf(const std::function<void()>& code) {
    static const bool visible = (keepReportsVisible(), true);
    static_cast<void>(visible);
    static Memory out(STDOUT_FILENO);
    static Memory err(STDERR_FILENO);
    {
        const Redirection redirection(out, err);
        code();
    }
    return {out.take(), err.take()};
}

}  // namespace fuzz
