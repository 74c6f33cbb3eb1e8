// The memory of models.

#include "model/Arena.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <vector>

namespace {

using kor::Arena;
using kor::Blocks;
using testing::ElementsAre;

struct Object {
    long number;
    long others[3];
};

void Add(Arena& arena, long number) {
    new (arena.Allocate(sizeof(Object))) Object{number, {number, number, number}};
}

std::vector<long> NumbersIn(const Arena& arena) {
    std::vector<long> numbers;
    arena.ForEach(sizeof(Object), [&numbers](std::byte* memory) {
        const Object& object = *reinterpret_cast<Object*>(memory);
        EXPECT_EQ(object.others[2], object.number);
        numbers.push_back(object.number);
    });
    return numbers;
}

std::vector<long> NumbersTo(long end) {
    std::vector<long> numbers;
    for (long number = 0; number < end; ++number) numbers.push_back(number);
    return numbers;
}

// More than several blocks hold.
constexpr long kMany = 600'000;

TEST(Arena, VisitsItsObjectsInOrder) {
    Blocks blocks;
    Arena arena(blocks);
    for (long number = 0; number < kMany; ++number) Add(arena, number);
    EXPECT_EQ(NumbersIn(arena), NumbersTo(kMany));
}

TEST(Arena, SharesBlocksWithOthers) {
    Blocks blocks;
    Arena even(blocks);
    Arena odd(blocks);
    std::vector<long> numbers[2];
    for (long number = 0; number < kMany; ++number) {
        Add(number % 2 == 0 ? even : odd, number);
        numbers[number % 2].push_back(number);
    }
    EXPECT_EQ(NumbersIn(even), numbers[0]);
    EXPECT_EQ(NumbersIn(odd), numbers[1]);
}

TEST(Arena, KnowsWhichOfItsObjectsLieInSegments) {
    Blocks blocks;
    Arena even(blocks);
    Arena odd(blocks);
    std::vector<const void*> objects[2];
    for (long number = 0; number < kMany / 10; ++number) {
        Arena& arena = number % 2 == 0 ? even : odd;
        objects[number % 2].push_back(arena.Allocate(sizeof(Object)));
    }
    // The first 255 kB are in chunks of 1 to 128 kB.
    constexpr std::size_t kFirst = 255 * 1024 / sizeof(Object);
    for (std::size_t i = 0; i < objects[0].size(); ++i) {
        ASSERT_EQ(even.IsInSegment(objects[0][i]), i >= kFirst) << i;
        ASSERT_FALSE(even.IsInSegment(objects[1][i])) << i;
        ASSERT_EQ(odd.IsInSegment(objects[1][i]), i >= kFirst) << i;
    }
    EXPECT_FALSE(even.IsInSegment(even.Allocate(2 * Blocks::kSegment)));
    EXPECT_FALSE(even.IsInSegment(nullptr));
}

TEST(Arena, TakesOverWhatAnotherAllocatedWithItsBlocks) {
    Blocks blocks;
    Arena arena(blocks);
    for (long number = 0; number < kMany / 3; ++number) Add(arena, number);
    {
        Blocks otherBlocks;
        Arena other(otherBlocks);
        for (long number = kMany / 3; number < 2 * kMany / 3; ++number) Add(other, number);
        blocks.TakeOver(otherBlocks);
        arena.TakeOver(other);
        EXPECT_THAT(NumbersIn(other), ElementsAre());
    }
    // The memory of others is not that which was taken over.
    Blocks laterBlocks;
    Arena later(laterBlocks);
    for (long number = 0; number < kMany; ++number) Add(later, -number);
    for (long number = 2 * kMany / 3; number < kMany; ++number) Add(arena, number);
    EXPECT_EQ(NumbersIn(arena), NumbersTo(kMany));
}

TEST(Arena, HoldsObjectsOfAnySize) {
    constexpr std::size_t kSizes[] = {
        Blocks::kSegment + 8, 16, Blocks::kSegment, 100'000, 24, 3 * Blocks::kSegment,
        Blocks::kSegment - 1};
    Blocks blocks;
    Arena arena(blocks);
    std::vector<std::byte*> memory;
    const auto add = [&memory](Arena& to, std::size_t size) {
        auto* const object = static_cast<std::byte*>(to.Allocate(size));
        object[0] = object[size - 1] = static_cast<std::byte>(memory.size());
        memory.push_back(object);
    };
    for (const std::size_t size : kSizes) add(arena, size);
    {
        Blocks otherBlocks;
        Arena other(otherBlocks);
        for (const std::size_t size : kSizes) add(other, size);
        blocks.TakeOver(otherBlocks);
        arena.TakeOver(other);
    }
    for (const std::size_t size : kSizes) add(arena, size);
    for (std::size_t i = 0; i < memory.size(); ++i) {
        EXPECT_EQ(memory[i][0], static_cast<std::byte>(i));
        EXPECT_EQ(memory[i][kSizes[i % std::size(kSizes)] - 1], static_cast<std::byte>(i));
    }
}

TEST(Arena, VisitsReservedObjectsOfAnySize) {
    for (const std::size_t size : {std::size_t{40'000}, 2 * Blocks::kSegment}) {
        Blocks blocks;
        Arena arena(blocks);
        std::vector<void*> memory;
        for (int i = 0; i < 20; ++i) {
            memory.push_back(arena.Reserve(size));
            arena.TakeReserved(size);
        }
        std::vector<void*> visited;
        arena.ForEach(size, [&visited](void* object) { visited.push_back(object); });
        EXPECT_EQ(visited, memory);
    }
}

// Large objects between small ones leave no gaps.
TEST(Arena, TakesFewSegmentsForSmallObjects) {
    Blocks blocks;
    Arena arena(blocks);
    const auto* const first = static_cast<const std::byte*>(arena.Allocate(100));
    const auto* last = first;
    for (int i = 0; i < 8; ++i) {
        arena.Allocate(Blocks::kSegment);
        last = static_cast<const std::byte*>(arena.Allocate(100));
    }
    EXPECT_EQ(last - first, 8 * 104);
}

TEST(Blocks, AreKeptForTheNextModel) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "under AddressSanitizer none are kept";
#endif
    auto blocks = std::make_unique<Blocks>();
    const std::byte* const memory = blocks->TakeSegment();
    blocks.reset();
    EXPECT_EQ(Blocks().TakeSegment(), memory);
}

// Many small models leave room for the blocks of a large one.
TEST(Blocks, AreKeptWhereTheyAreLarge) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "under AddressSanitizer none are kept";
#endif
    std::vector<Blocks> small(100);
    for (Blocks& blocks : small) blocks.TakeSegment();
    small.clear();
    constexpr std::size_t kMemory = 100 << 20;
    {
        Blocks large;
        for (std::size_t taken = 0; taken < kMemory; taken += Blocks::kSegment) large.TakeSegment();
    }
    const struct mallinfo2 heap = mallinfo2();
    EXPECT_GE(heap.uordblks + heap.hblkhd, kMemory);
}

}  // namespace
