#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace devserver {

/// Compresses a stream of pieces to one gzip member; fast rather than small.
class Gzip {
public:
    Gzip();
    ~Gzip();
    Gzip(const Gzip&) = delete;
    Gzip& operator=(const Gzip&) = delete;

    /// The compressed bytes that are ready after this piece; the last one ends the member.
    std::string add(std::string_view piece, bool last);

    /// A whole text at once.
    static std::string compress(std::string_view text);

private:
    struct Stream;
    std::unique_ptr<Stream> stream_;
};

}  // namespace devserver
