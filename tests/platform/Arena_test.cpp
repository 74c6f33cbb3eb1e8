// The memory of models.

#include "model/Arena.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
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

TEST(Arena, HoldsObjectsLargerThanASegment) {
    Blocks blocks;
    Arena arena(blocks);
    std::vector<std::byte*> memory;
    for (const std::size_t size : {Blocks::kSegment + 8, std::size_t{16}, Blocks::kSegment,
                                   3 * Blocks::kSegment, std::size_t{16}, Blocks::kSegment - 1}) {
        auto* const object = static_cast<std::byte*>(arena.Allocate(size));
        object[0] = object[size - 1] = static_cast<std::byte>(memory.size());
        memory.push_back(object);
    }
    for (std::size_t i = 0; i < memory.size(); ++i) {
        EXPECT_EQ(memory[i][0], static_cast<std::byte>(i));
    }
}

TEST(Blocks, AreKeptForTheNextModel) {
    auto blocks = std::make_unique<Blocks>();
    const std::byte* const memory = blocks->TakeSegment();
    blocks.reset();
    EXPECT_EQ(Blocks().TakeSegment(), memory);
}

}  // namespace
