// The same calls under other conditions return the same results: traced and untraced, repeated, in
// any order; and what one function encodes, others decode.

#include <gtest/gtest.h>

#include <numeric>

#include "ORXExUtilities.h"
#include "ParsedModel.h"
#include "SeededChoices.h"
#include "TraceCapture.h"
#include "console/Display.h"

namespace {

constexpr std::size_t kCalls = 2'000;
constexpr std::uint64_t kSeeds = 10;

const calls::Module& TheModule() {
    static const calls::Module module("");
    return module;
}

// A world and calls on it, determined by the seed.
struct Work {
    template <class Allowed>
    Work(std::uint64_t seed, Allowed allowed) : choices(seed), world(choices, 40) {
        while (calls.size() < kCalls) {
            RandomCall call = world.AnyCall();
            if (allowed(*call.function)) calls.push_back(std::move(call));
        }
    }
    ~Work() { RemoveValueVersion(); }

    // Makes a call and returns it as text, with its result.
    std::string Do(std::size_t call) const {
        const RandomCall& made = calls[call];
        const std::string asked = made.ToText(world.Session());
        const SdaiPrimitiveH result = TheModule().Call(*made.function, made.arguments);
        return asked + " = " + std::string(result.UnderlyingTypeName()) + ' ' +
               (IsUnique(*made.function) ? "unique" : host::ToText(result, world.Session()));
    }

    SeededChoices choices;
    RandomWorld world;
    std::vector<RandomCall> calls;
};

}  // namespace

TEST(Differential, TracingChangesNoResultAndNoModel) {
    const auto all = [](const orx::Export&) { return true; };
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
        SCOPED_TRACE(seed);
        std::vector<std::string> untraced;
        std::string content;
        {
            const Work work(seed, all);
            for (std::size_t i = 0; i < kCalls; ++i) untraced.push_back(work.Do(i));
            content = work.world.Content();
        }
        const Work work(seed, all);
        const TraceCapture trace;
        for (std::size_t i = 0; i < kCalls; ++i) ASSERT_EQ(work.Do(i), untraced[i]);
        EXPECT_EQ(work.world.Content(), content);
    }
}

TEST(Differential, TheOrderOfCallsChangesNoResult) {
    const auto stateless = [](const orx::Export& function) {
        // A list that a call fills is not the same for the next call.
        return !CreatesInstances(function) && !KeepsVersions(function) &&
               !function.name.starts_with("GetPlacement") && function.name != "ComputeABSPlacement";
    };
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
        SCOPED_TRACE(seed);
        const Work work(seed, stateless);
        std::vector<std::string> first;
        for (std::size_t i = 0; i < kCalls; ++i) first.push_back(work.Do(i));
        std::vector<std::size_t> order(kCalls);
        std::iota(order.begin(), order.end(), std::size_t{0});
        for (std::size_t i = kCalls; i > 1; --i) {
            std::swap(order[i - 1], order[SeededChoices(seed + i).Below(i)]);
        }
        for (const std::size_t i : order) ASSERT_EQ(work.Do(i), first[i]);
    }
}

// ---- Keys

TEST(Differential, AKeyGivesBackTheValuesThatItWasBuiltFrom) {
    const ParsedModel model("cdma", "#1=PART_OBJECT('',$,$,$,$,$,$,$,$,$);");
    auto& part = static_cast<SdaiAppInstance&>(*InstanceIn(model[1]));
    SeededChoices choices(1);
    const auto text = [&choices](std::size_t length) {
        std::string made;
        while (made.size() < length) made += static_cast<char>(choices.Below(256));
        return SdaiString(std::string_view(made));
    };
    for (std::size_t length = 0; length <= 9'999; ++length) {
        const SdaiString number = text(length);
        const SdaiString change = text(choices.Below(20));
        const long version = static_cast<long>(choices.Below(1U << 31U)) - (1L << 30);
        const SdaiString type = text(9'999 - length);
        part.PutAttr("S_PART_NUMBER", number);
        part.PutAttr("S_CHG_NUM", change);
        part.PutAttr("C_VERSION", version);
        part.PutAttr("S_TYPE", type);
        const SdaiPrimitiveH key = ConcatPartAtb(model[1]);
        ASSERT_TRUE(IsTrue(IsEncodedKey(key))) << length;
        ASSERT_EQ(TextIn(DecodeKey(key, 1_h)), number.View()) << length;
        ASSERT_EQ(TextIn(DecodeKey(key, 2_h)), change.View()) << length;
        ASSERT_EQ(IntegerIn(DecodeKey(key, 3_h)), version) << length;
        ASSERT_EQ(TextIn(DecodeKey(key, 4_h)), type.View()) << length;
        ASSERT_EQ(TextIn(DecodeKey(key, 5_h)), "EMPTY VALUE") << length;
    }
}
