// Functions that neither create instances nor keep versions, called from several threads on models
// that no thread writes. Run this under ThreadSanitizer, too.

#include <gtest/gtest.h>

#include <thread>

#include "KORPSNTrace.h"
#include "ParsedModel.h"
#include "SdaiUsers.h"
#include "SeededChoices.h"
#include "console/Display.h"

namespace {

constexpr std::size_t kThreads = 4;
constexpr std::size_t kCalls = 4'000;

// A world, and the calls of each thread, determined by the seed.
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

    // Makes the calls of one thread and returns the results.
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
    // The results of a single thread, from separate models: anything created on first use does not
    // exist yet when the threads run.
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

// The first thread that requests an extent creates it.
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

// The first thread that asks for users puts those written out of order in their places.
TEST(Threads, MayAskForUsersAtTheSameTime) {
    using namespace sdai_names;
    const ParsedModel model(
        "SCHEMA store; ENTITY part; END_ENTITY;"
        "ENTITY place; owner : OPTIONAL part; END_ENTITY; END_SCHEMA;",
        "#1=PART();");
    const SdaiEntityInstance* part = InstanceIn(model[1]);
    const SdaiEntity* type = model.Model().GetEntityDefinition("place"_name);
    std::vector<SdaiAppInstance*> places(200);
    for (SdaiAppInstance*& place : places) place = type->CreateEntityInstance(&model.Model());
    const auto users = [&] {
        SdaiIterator_Of_Users found(&model.Model(), "place"_name, "owner"_name, {&part, 1});
        std::vector<SdaiEntityInstance*> all;
        while (found.Next()) all.push_back(found.GetCurrentMember());
        return all;
    };
    EXPECT_TRUE(users().empty());
    for (std::size_t first = 0; first < places.size(); first += 20) {
        for (std::size_t i = 20; i > 0; --i) places[first + i - 1]->PutAttr("owner", model[1]);
        std::vector<std::vector<SdaiEntityInstance*>> seen(kThreads);
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, i] { seen[i] = users(); });
        }
        for (std::thread& thread : threads) thread.join();
        const std::vector<SdaiEntityInstance*> expected(
            places.begin(), places.begin() + static_cast<std::ptrdiff_t>(first) + 20);
        for (const auto& found : seen) EXPECT_EQ(found, expected);
    }
}

}  // namespace
