// The table from objects in arenas to values.

#include "model/ArenaTable.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace {

using Table = kor::ArenaTable<std::size_t>;

// Two arenas whose segments alternate; from small objects to those that stand apart.
class ObjectsInArenas : public testing::TestWithParam<std::size_t> {
  protected:
    static constexpr std::size_t kCount = 20'000;

    struct Object {
        const void* place;
        const kor::Arena* arena;
        std::size_t size;
    };

    std::vector<Object> Allocate() {
        std::vector<Object> objects;
        const std::size_t count = GetParam() < 1'000 ? kCount : kCount / 50;
        for (std::size_t i = 0; i < count; ++i) {
            kor::Arena& arena = i % 2 == 0 ? even_ : odd_;
            const std::size_t size = GetParam() + (i % 2 == 0 ? 0 : 16);
            objects.push_back({arena.Allocate(size), &arena, size});
        }
        return objects;
    }

  private:
    kor::Blocks blocks_;
    kor::Arena even_{blocks_};
    kor::Arena odd_{blocks_};
};

TEST_P(ObjectsInArenas, AreFoundWithTheirValues) {
    const std::vector<Object> objects = Allocate();
    Table table;
    // Every third is not in the table; the arena of the odd ones is not told.
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const auto& [place, arena, size] = objects[i];
        if (i % 3 == 0) continue;
        std::size_t* value = table.Find(place);
        if (value == nullptr) {
            value = i % 2 == 0 ? &table.Add(place, *arena, size) : &table.Add(place);
        }
        ASSERT_EQ(*value, 0U) << i;
        *value = i;
    }
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const std::size_t* const value = table.Find(objects[i].place);
        ASSERT_EQ(value != nullptr ? *value : 0, i % 3 == 0 ? 0 : i);
    }
}

TEST_P(ObjectsInArenas, AreVisitedOnceEach) {
    const std::vector<Object> objects = Allocate();
    Table table;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const auto& [place, arena, size] = objects[i];
        std::size_t* const found = table.Find(place);
        (found != nullptr ? *found : table.Add(place, *arena, size)) = i + 1;
    }
    std::vector<int> visits(objects.size() + 1);
    table.ForEach([&visits](std::size_t value) { ++visits.at(value); });
    for (std::size_t i = 1; i < visits.size(); ++i) ASSERT_EQ(visits[i], 1) << i;
}

INSTANTIATE_TEST_SUITE_P(ArenaTable, ObjectsInArenas,
                         testing::Values(8, 24, 40, 48, 72, 120, 264, 1'000, 4'104, 32'760,
                                         40'000));

TEST(ArenaTable, HasNothingAfterItIsCleared) {
    kor::Blocks blocks;
    kor::Arena arena(blocks);
    const void* object = nullptr;
    for (int i = 0; i < 100'000; ++i) object = arena.Allocate(64);
    Table table;
    EXPECT_EQ(table.Find(object), nullptr);
    EXPECT_EQ(table.Find(nullptr), nullptr);
    table.Add(object, arena, 64) = 7;
    table.Add(&table) = 8;
    table.Clear();
    EXPECT_EQ(table.Find(object), nullptr);
    EXPECT_EQ(table.Find(&table), nullptr);
    table.ForEach([](std::size_t) { FAIL() << "there is nothing to visit"; });
    EXPECT_EQ(table.Add(object, arena, 64), 0U);
}

}  // namespace
