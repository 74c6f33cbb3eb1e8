// A call in which an allocation fails either returns the same result as with enough memory, or
// notes that memory ran out.

#include "KORMemory.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "Allocations.h"
#include "ORXExUtilities.h"
#include "TypicalCalls.h"
#include "console/Display.h"

namespace {

using Extent = FailingAllocations::Extent;

// More allocations than any typical call makes, including the lists of extents.
constexpr long kMost = 2'000;

// The result of one call on new data, and whether the failing allocation was reached and noted.
struct Outcome {
    std::string result;
    bool failed = false;
    bool noted = false;
};

Outcome CallWithFailure(const orx::Export& function, long succeeding, Extent extent) {
    const TypicalData data;
    const TypicalArguments arguments = ArgumentsOf(function, data);
    void* address = dlsym(RTLD_DEFAULT, std::string(function.name).c_str());
    RemoveValueVersion();
    KORMemory::TakeExhausted();
    Outcome outcome;
    WithCall(function, address, arguments, [&](auto call) {
        SdaiPrimitiveH result;
        {
            const FailingAllocations failing(succeeding, extent);
            result = call();
            outcome.failed = failing.HaveFailed();
        }
        outcome.noted = KORMemory::TakeExhausted();
        outcome.result = host::ToText(result, host::Session());
        // The list that a procedure fills.
        outcome.result += host::ToText(arguments[2], host::Session());
    });
    RemoveValueVersion();
    return outcome;
}

class AnyFunction : public testing::TestWithParam<std::string_view> {};

// All functions except the one whose result differs on each call.
std::vector<std::string_view> Names() {
    std::vector<std::string_view> names;
    for (const orx::Export& function : orx::kExports) {
        if (function.name != "GetUniqId") names.push_back(function.name);
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(ExportTable, AnyFunction, testing::ValuesIn(Names()),
                         [](const auto& name) { return std::string(name.param); });

}  // namespace

TEST_P(AnyFunction, TellsWhenItsResultIsForLackOfMemory) {
    const orx::Export& function = *orx::FindExport(GetParam());
    const Outcome undisturbed = CallWithFailure(function, kMost, Extent::Once);
    ASSERT_FALSE(undisturbed.failed);
    EXPECT_FALSE(undisturbed.noted);
    for (const Extent extent : {Extent::Once, Extent::FromThenOn}) {
        for (long n = 0;; ++n) {
            SCOPED_TRACE(n);
            const Outcome outcome = CallWithFailure(function, n, extent);
            if (!outcome.failed) break;
            if (outcome.result != undisturbed.result) {
                EXPECT_TRUE(outcome.noted);
            }
        }
    }
}

TEST(Memory, AnsweringForgets) {
    KORMemory::TakeExhausted();
    EXPECT_FALSE(KORMemory::TakeExhausted());
    KORMemory::NoteExhausted();
    EXPECT_TRUE(KORMemory::TakeExhausted());
    EXPECT_FALSE(KORMemory::TakeExhausted());
}
