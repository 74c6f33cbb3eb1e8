// Functions that neither create instances nor keep versions, called from several threads over
// models that no thread writes. Run it under ThreadSanitizer, too.

#include <gtest/gtest.h>

#include <thread>

#include "KORPSNTrace.h"
#include "SeededChoices.h"
#include "console/Display.h"

namespace {

constexpr std::size_t kThreads = 4;
constexpr std::size_t kCalls = 4'000;

// A world, and the calls of each thread; the same for the same seed.
struct Work {
    explicit Work(std::uint64_t seed) : choices(seed), world(choices, 60) {
        for (std::vector<RandomCall>& mine : calls) {
            while (mine.size() < kCalls) {
                RandomCall call = world.AnyCall();
                if (CreatesInstances(*call.function) || KeepsVersions(*call.function)) continue;
                mine.push_back(std::move(call));
            }
        }
    }

    // Makes the calls of one thread and gives what they gave.
    std::vector<std::string> Do(const calls::Module& module, std::size_t thread) const {
        std::vector<std::string> results;
        for (const RandomCall& call : calls[thread]) {
            const SdaiPrimitiveH result = module.Call(*call.function, call.arguments);
            const bool unique = IsUnique(*call.function);
            results.push_back(call.ToText(world.Session()) + " = " +
                              (unique ? "unique" : host::ToText(result, world.Session())));
        }
        return results;
    }

    SeededChoices choices;
    RandomWorld world;
    std::vector<RandomCall> calls[kThreads];
};

void ExpectTheSameFromThreads(std::uint64_t seed) {
    const calls::Module module("");
    // What one thread gets, from models of its own: whatever is made when it is first asked for has
    // not been made yet where the threads come.
    std::vector<std::vector<std::string>> expected(kThreads);
    {
        const Work work(seed);
        for (std::size_t i = 0; i < kThreads; ++i) expected[i] = work.Do(module, i);
    }
    const Work work(seed);
    std::vector<std::vector<std::string>> results(kThreads);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] { results[i] = work.Do(module, i); });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < kThreads; ++i) {
        ASSERT_EQ(results[i].size(), kCalls);
        for (std::size_t call = 0; call < kCalls; ++call) {
            EXPECT_EQ(results[i][call], expected[i][call]);
        }
    }
}

TEST(Threads, GetTheSameResultsAsOneThread) {
    for (std::uint64_t seed = 1; seed <= 3; ++seed) ExpectTheSameFromThreads(seed);
}

TEST(Threads, MayTrace) {
    ASSERT_TRUE(KORPSNTrace::Configure(12, "/dev/null"));
    ExpectTheSameFromThreads(4);
    KORPSNTrace::Configure(0, nullptr);
}

// The first to ask for an extent makes it, whoever it is.
TEST(Threads, MayAskForAnExtentAtTheSameTime) {
    for (std::uint64_t seed = 1; seed <= 50; ++seed) {
        SeededChoices choices(seed);
        const RandomWorld world(choices, 40);
        const kor::Model& model = world.Session().Models().front().Model();
        std::vector<const SdaiAggrInstance*> extents(kThreads);
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, i] {
                extents[i] = model.GetEntityExtent(SdaiString("effectivity_object"));
                static_cast<void>(extents[i]->GetMemberCount());
            });
        }
        for (std::thread& thread : threads) thread.join();
        for (const SdaiAggrInstance* extent : extents) EXPECT_EQ(extent, extents.front());
    }
}

}  // namespace
