#include "devserver/Gzip.h"

#include <zlib.h>

#include <array>
#include <new>

namespace devserver {

/// zlib's state, which the header does not show.
struct Gzip::Stream {
    z_stream state{};
};

Gzip::Gzip() : stream_(std::make_unique<Stream>()) {
    // zlib's manual: 16 more than the window's size asks for a gzip header and trailer.
    constexpr int gzipWindow = MAX_WBITS + 16;
    if (deflateInit2(
            &stream_->state, Z_BEST_SPEED, Z_DEFLATED, gzipWindow, MAX_MEM_LEVEL,
            Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::bad_alloc();
    }
}

Gzip::~Gzip() {
    deflateEnd(&stream_->state);
}

std::string Gzip::add(std::string_view piece, bool last) {
    z_stream& state = stream_->state;
    // zlib's interface is without const, but it only reads.
    state.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(piece.data()));
    state.avail_in = static_cast<uInt>(piece.size());
    std::string compressed;
    std::array<char, 16384> buffer{};
    do {
        state.next_out = reinterpret_cast<Bytef*>(buffer.data());
        state.avail_out = static_cast<uInt>(buffer.size());
        deflate(&state, last ? Z_FINISH : Z_NO_FLUSH);
        compressed.append(buffer.data(), buffer.size() - state.avail_out);
    } while (state.avail_out == 0);
    return compressed;
}

std::string Gzip::compress(std::string_view text) {
    return Gzip().add(text, true);
}

}  // namespace devserver
