// The table from pointers to values.

#include "model/PointerTable.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using Table = kor::PointerTable<std::size_t>;

// Objects of a size, one behind the other. They are named only, never read.
const void* ObjectAt(std::size_t index, std::size_t size) {
    return reinterpret_cast<const void*>(std::uintptr_t{0x7F00'0000'0018} + index * size);
}

class ObjectsOfSize : public testing::TestWithParam<std::size_t> {};

TEST_P(ObjectsOfSize, AreFoundWithTheirValues) {
    constexpr std::size_t kCount = 20'000;
    Table table;
    // Every third is not in the table.
    for (std::size_t i = 0; i < kCount; ++i) {
        if (i % 3 != 0) table.FindOrAdd(ObjectAt(i, GetParam())) = i;
    }
    for (std::size_t i = 0; i < kCount; ++i) {
        const std::size_t* const value = table.Find(ObjectAt(i, GetParam()));
        ASSERT_EQ(value != nullptr, i % 3 != 0) << i;
        if (value != nullptr) {
            ASSERT_EQ(*value, i);
        }
    }
}

TEST_P(ObjectsOfSize, AreVisitedOnceEach) {
    constexpr std::size_t kCount = 1'000;
    Table table;
    table.Reserve(kCount);
    for (std::size_t i = kCount; i-- > 0;) table.FindOrAdd(ObjectAt(i, GetParam())) += i + 1;
    std::unordered_map<const void*, std::size_t> visited;
    table.ForEach([&visited](const void* pointer, std::size_t& value) {
        EXPECT_TRUE(visited.emplace(pointer, value).second);
    });
    ASSERT_EQ(visited.size(), kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
        EXPECT_EQ(visited[ObjectAt(i, GetParam())], i + 1);
    }
}

INSTANTIATE_TEST_SUITE_P(PointerTable, ObjectsOfSize,
                         testing::Values(8, 24, 40, 64, 72, 120, 256, 1'000, 4'096, 262'144));

TEST(PointerTable, HasNothingAfterItIsCleared) {
    Table table;
    EXPECT_EQ(table.Find(ObjectAt(1, 64)), nullptr);
    table.FindOrAdd(ObjectAt(1, 64)) = 7;
    table.Clear();
    EXPECT_EQ(table.Find(ObjectAt(1, 64)), nullptr);
    table.ForEach([](const void*, std::size_t&) { FAIL() << "there is nothing to visit"; });
    EXPECT_EQ(table.FindOrAdd(ObjectAt(1, 64)), 0U);
}

}  // namespace
