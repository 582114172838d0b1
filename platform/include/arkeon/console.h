#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace arkeon {

/// The process's standard streams; nothing else touches them.
///
/// Bytes are exact where a stream is a pipe or a file. Where it is a terminal, control characters
/// but newline and tab, and bytes that are not valid UTF-8, are shown in a visible form (`^[`,
/// `\x9b`), so that no text of a server can steer the administrator's screen.
class Console {
public:
    /// The console of this process, on descriptors 0, 1 and 2. On first use, descriptors 0 to 2
    /// that are closed are opened on /dev/null, so that no file or socket gets their number; using
    /// them fails with EBADF.
    static Console& standard();

    /// A line of standard input without its newline.
    struct Line {
        std::string text;        ///< at most `maxLineLength` bytes; the rest of a line is dropped
        bool endsInput = false;  ///< no newline ended it, but the end of the input
    };
    static constexpr std::size_t maxLineLength = 4096;

    /// A console on other descriptors, which it does not own; without input by default.
    Console(int output, int error, int input = -1);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Appends to standard output, which is buffered. After a failed write further output is
    /// dropped.
    void write(std::string_view text);

    /// Writes to standard error at once, after what standard output still holds.
    void writeError(std::string_view text);

    /// Writes out what standard output still holds, then reads a line from standard input.
    /// Bytes after the line are left unread for other readers of the same input. Input that cannot
    /// be read has ended.
    Line readLine();

    /// Writes out what standard output still holds.
    /// @return whether all output so far was written
    bool flush();

    /// The errno value of the first write to standard output that failed, 0 when none did.
    int outputError() const { return outputError_; }

private:
    void writeThrough(std::string_view text);

    int output_;
    int error_;
    int input_;
    bool outputIsTerminal_;
    bool errorIsTerminal_;
    int outputError_ = 0;
    std::string buffer_;
};

/// `text` as it is shown on a terminal: C0 controls but newline and tab as `^X`, DEL as `^?`, C1
/// controls (also in UTF-8 form) and bytes that are not valid UTF-8 (RFC 3629) as `\xHH`.
std::string visibleText(std::string_view text);

}  // namespace arkeon
