#include "hostmgmt/JsonMemory.h"

#include <algorithm>
#include <cstdlib>
#include <jansson.h>
#include <new>
#include <sys/mman.h>

namespace {

/// What jansson's structures hold: pointers, 64-bit integers and doubles.
constexpr std::size_t jsonAlignment = 8;

constexpr std::size_t page = 4096;
constexpr std::size_t largeBlock = std::size_t{1024} * 1024;
constexpr std::size_t smallBlock = std::size_t{64} * 1024;

/// No single piece is larger; a reply has 2 GiB at most.
constexpr std::size_t longest = std::size_t{64} * 1024 * 1024 * 1024;

constexpr std::size_t roundedUp(std::size_t size, std::size_t unit) {
    return (size + unit - 1) / unit * unit;
}

/// Hands out memory from the beginning of a block to its end, then from the next block. What begins
/// each block keeps the one before in sight, so that none counts as lost.
class Arena {
public:
    void* allocate(std::size_t size) {
        if (size > longest) {
            return nullptr;
        }
        size = roundedUp(size, jsonAlignment);
        if (size > left_ && !takeBlock(size)) {
            return nullptr;
        }
        char* memory = next_;
        next_ += size;
        left_ -= size;
        return memory;
    }

private:
    /// Stands at the beginning of each block and chains it to the one before.
    struct alignas(jsonAlignment) Header {
        Header* before;
    };

    /// The first block is small, since most replies are.
    bool takeBlock(std::size_t room) {
        const std::size_t needed = room + sizeof(Header);
        const bool small = last_ == nullptr && needed <= smallBlock;
        const std::size_t size = small ? smallBlock : roundedUp(std::max(needed, largeBlock), page);
        void* block = std::aligned_alloc(page, size);
        if (block == nullptr) {
            return false;
        }
        if (!small) {
            // All pages at once take less time than one by one. A kernel before 5.14 refuses.
            static_cast<void>(madvise(block, size, MADV_POPULATE_WRITE));
        }
        last_ = new (block) Header{last_};
        next_ = static_cast<char*>(block) + sizeof(Header);
        left_ = size - sizeof(Header);
        return true;
    }

    Header* last_ = nullptr;
    char* next_ = nullptr;
    std::size_t left_ = 0;
};

Arena arena;
bool kept = false;

/// jansson does not always look whether it got memory: a text that it reads may lose bytes then,
/// and be read beyond its end. So the lack of memory leaves jansson as an exception; that nothing
/// is given back on the way matters not, since all is kept.
void* allocateForGood(std::size_t size) {
    void* memory = arena.allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void keep(void* /*memory*/) {}

}  // namespace

void keepJsonUntilExit() {
    json_set_alloc_funcs(allocateForGood, keep);
    kept = true;
}

bool jsonIsKeptUntilExit() {
    return kept;
}
