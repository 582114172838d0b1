#include "hostmgmt/JsonMemory.h"

#include "hostmgmt/Json.h"

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <new>
#include <string>

namespace {

class JsonMemory : public testing::Test {
protected:
    JsonMemory() {
        keepJsonUntilExit();
        json_get_alloc_funcs(&allocate_, &release_);
    }

    json_malloc_t allocate_ = nullptr;
    json_free_t release_ = nullptr;
};

std::string dumped(const json_t* value) {
    json_free_t release = nullptr;
    json_get_alloc_funcs(nullptr, &release);
    char* text = json_dumps(value, JSON_COMPACT);
    std::string copy = text == nullptr ? "" : text;
    release(text);
    return copy;
}

TEST_F(JsonMemory, PiecesOfAllSizesLieApart) {
    std::map<std::uintptr_t, std::size_t> pieces;
    for (std::size_t size = 1; size < 3'000; ++size) {
        void* piece = allocate_(size);
        ASSERT_NE(piece, nullptr);
        std::memset(piece, 0xFF, size);
        pieces[reinterpret_cast<std::uintptr_t>(piece)] = size;
    }
    std::uintptr_t end = 0;
    for (const auto& [begin, size] : pieces) {
        EXPECT_EQ(begin % alignof(json_int_t), 0U);
        EXPECT_GE(begin, end);
        end = begin + size;
    }
}

TEST_F(JsonMemory, APieceMayBeLargerThanABlock) {
    constexpr std::size_t size = 100'000'000;
    auto* piece = static_cast<char*>(allocate_(size));
    ASSERT_NE(piece, nullptr);
    piece[0] = 'a';
    piece[size - 1] = 'z';
    release_(piece);
    EXPECT_EQ(piece[0], 'a') << "released memory stays";
}

TEST_F(JsonMemory, MemoryThatCannotBeHadIsAnException) {
    EXPECT_NE(allocate_(1), nullptr);
    for (const std::size_t size : {SIZE_MAX, SIZE_MAX - 8, SIZE_MAX / 2, SIZE_MAX / 4}) {
        EXPECT_THROW(allocate_(size), std::bad_alloc) << size;
    }
    EXPECT_NE(allocate_(1), nullptr);
}

TEST_F(JsonMemory, ValuesOutliveTheirRelease) {
    std::string text = "[0";
    for (int i = 1; i < 200'000; ++i) {
        text += ",{\"name\":\"" + std::to_string(i) + "\"}";
    }
    text += ']';
    const json_t* values = nullptr;
    {
        const JsonRef read(json_loads(text.c_str(), 0, nullptr));
        values = read.get();
    }
    EXPECT_TRUE(jsonIsKeptUntilExit());
    EXPECT_EQ(dumped(values), text);
}

TEST(JsonMemoryNotAskedFor, LeavesValuesToTheirReferences) {
    EXPECT_FALSE(jsonIsKeptUntilExit());
    const JsonRef first(json_object());
    {
        const JsonRef second(json_incref(first.get()));
        EXPECT_EQ(first->refcount, 2U);
    }
    EXPECT_EQ(first->refcount, 1U);
}

}  // namespace
