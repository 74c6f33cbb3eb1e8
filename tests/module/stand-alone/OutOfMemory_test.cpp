// A call that runs out of memory, at any allocation, returns either its result or its default, and
// nothing else.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Allocations.h"
#include "ORXExUtilities.h"
#include "ParsedModel.h"
#include "TraceCapture.h"
#include "TypicalCalls.h"
#include "console/Display.h"

using testing::AnyOf;
using testing::Each;

namespace {

using Extent = FailingAllocations::Extent;

constexpr long kNone = 1'000'000;  // more than any call allocates

const std::vector<double> kIdentity{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};

// The result of a call, and its list.
std::string TextOf(const SdaiPrimitiveH& result, const TypicalArguments& arguments) {
    std::string text = host::ToText(result, host::Session());
    for (const SdaiPrimitiveH& argument : arguments) {
        const SdaiAggrInstance* list = argument;
        if (list != nullptr) text += ' ' + host::ToText(argument, host::Session());
    }
    return text;
}

struct Outcome {
    std::string text;
    bool failed = false;
};

class FailingCall : public testing::TestWithParam<std::string_view> {
  protected:
    // Calls the function on new data; the allocation after `succeeding` others fails.
    Outcome CallOnNewData(long succeeding, Extent extent) const {
        const TypicalData data;
        return Call(ArgumentsOf(function, data), succeeding, extent);
    }

    Outcome Call(const TypicalArguments& arguments, long succeeding, Extent extent) const {
        RemoveValueVersion();
        Outcome outcome;
        WithCall(function, address, arguments, [&](auto call) {
            SdaiPrimitiveH result;
            {
                const FailingAllocations failing(succeeding, extent);
                result = call();
                outcome.failed = failing.HaveFailed();
            }
            outcome.text = TextOf(result, arguments);
        });
        RemoveValueVersion();
        return outcome;
    }

    // The result and an initially empty list, without the other arguments.
    std::string Default() const {
        if (function.name == "GetUniqId") return "''";
        if (function.name == "IsVersion") return "$";               // for the flag 1
        if (function.name == "ComputeABSPlacement") return "$ ()";  // if nothing could be allocated
        TypicalArguments none;
        for (std::size_t i = 1; i < function.ArgumentCount(); ++i) {
            const bool isList = (function.arguments[i] & orx::Aggregate) != 0;
            if (isList) none[i] = SdaiPrimitiveH::TakeOver(new SdaiListClassOfSdaiReal(0, 12));
        }
        std::string text;
        WithCall(function, address, none, [&](auto call) { text = TextOf(call(), none); });
        return text;
    }

    const orx::Export& function = *orx::FindExport(GetParam());
    void* address = dlsym(RTLD_DEFAULT, std::string(GetParam()).c_str());
};

std::vector<std::string_view> Names() {
    std::vector<std::string_view> names;
    for (const orx::Export& function : orx::kExports) names.push_back(function.name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(ExportTable, FailingCall, testing::ValuesIn(Names()),
                         [](const auto& name) { return std::string(name.param); });

TEST_P(FailingCall, GivesItsResultOrItsDefault) {
    const std::string right = CallOnNewData(kNone, Extent::Once).text;
    const bool isNew = function.name == "GetUniqId";  // differs on each call
    for (const Extent extent : {Extent::Once, Extent::FromThenOn}) {
        for (long n = 0;; ++n) {
            SCOPED_TRACE(n);
            const Outcome outcome = CallOnNewData(n, extent);
            if (!outcome.failed) break;
            if (!isNew) {
                EXPECT_THAT(outcome.text, AnyOf(right, Default()));
            } else if (outcome.text != Default()) {
                EXPECT_EQ(outcome.text.size(), right.size());
            }
        }
    }
}

TEST_P(FailingCall, GivesTheSameTraced) {
    const std::string right = CallOnNewData(kNone, Extent::Once).text;
    const bool creates = function.name == "GetStartDate" || function.name == "GetEndDate" ||
                         function.name == "BuildDatedEff";
    const bool isNew = function.name == "GetUniqId";
    const TypicalData data;
    const TypicalArguments arguments = ArgumentsOf(function, data);
    for (long n = 0;; ++n) {
        SCOPED_TRACE(n);
        const TraceCapture trace;
        const Outcome outcome =
            creates ? CallOnNewData(n, Extent::Once) : Call(arguments, n, Extent::Once);
        if (!outcome.failed) break;
        if (!isNew) {
            EXPECT_THAT(outcome.text, AnyOf(right, Default()));
        }
    }
}

// ---- Lists of placements

class FailingPlacement : public testing::Test {
  protected:
    SdaiPrimitiveH Call(long succeeding) const {
        const FailingAllocations failing(succeeding, Extent::Once);
        return GetAbsPlacement(data.Step(212));
    }

    const TypicalData data;
    const std::vector<double> placement = RealsIn(GetAbsPlacement(data.Step(212)));
};

TEST_F(FailingPlacement, IsOneAllocation) {
    const AllocationCounter allocations;
    const SdaiPrimitiveH list = GetAbsPlacement(data.Step(212));
    EXPECT_EQ(allocations.Count(), 1);
}

TEST_F(FailingPlacement, StandsInTheListInReserve) {
    ASSERT_NE(placement, kIdentity);
    EXPECT_EQ(RealsIn(Call(0)), placement);
}

TEST_F(FailingPlacement, HasAListOfItsOwnInEachCall) {
    std::vector<SdaiPrimitiveH> lists;
    for (int i = 0; i < 5; ++i) {
        lists.push_back(Call(0));      // the one in reserve,
        lists.push_back(Call(kNone));  // which is replaced by the next call,
        lists.push_back(Call(1));      // or is not
    }
    for (std::size_t i = 0; i < lists.size(); ++i) {
        EXPECT_EQ(RealsIn(lists[i]), placement) << i;
        SdaiAggrInstance* list = lists[i];
        list->RemoveAll();  // must not affect the other lists
    }
}

TEST_F(FailingPlacement, HasAReserveOnEachThread) {
    std::vector<std::vector<double>> placements(4);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < placements.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 100; ++round) {
                placements[i] = RealsIn(Call(round % 3));
                if (placements[i] != placement) break;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(placements, Each(placement));
}

TEST_F(FailingPlacement, IsNotThereWhereNothingIsLeft) {
    const SdaiPrimitiveH link = data.Step(212);
    SdaiPrimitiveH first;
    SdaiPrimitiveH second;
    {
        const FailingAllocations failing(0, Extent::FromThenOn);
        first = GetAbsPlacement(link);
        second = GetAbsPlacement(link);
    }
    EXPECT_EQ(RealsIn(first), placement);
    EXPECT_TRUE(IsUnset(second));
    EXPECT_EQ(RealsIn(GetAbsPlacement(link)), placement);
}

TEST_F(FailingPlacement, IsNotThereForAThreadThatNeverHadAReserve) {
    // This thread has one, and keeps it.
    const SdaiPrimitiveH link = data.Step(212);
    SdaiPrimitiveH elsewhere;
    std::thread([&] {
        const FailingAllocations failing(0, Extent::FromThenOn);
        elsewhere = GetAbsPlacement(link);
    }).join();
    EXPECT_TRUE(IsUnset(elsewhere));
    EXPECT_EQ(RealsIn(Call(0)), placement);
}

TEST_F(FailingPlacement, TakesNoMoreMemoryHoweverOftenTheReserveIsTaken) {
    for (int i = 0; i < 2000; ++i) {
        Call(0);  // takes the reserve,
        Call(0);  // has no memory for another one,
        const AllocationCounter allocations;
        Call(kNone);  // has
        ASSERT_EQ(allocations.Count(), 2) << i << ": a reserve and the list";
    }
}

// Lists that a caller has filled in various ways.
std::vector<SdaiPrimitiveH> Lists(const TypicalData& data) {
    std::vector<SdaiPrimitiveH> lists;
    const auto add = [&lists](SdaiAggrInstance* list, const SdaiPrimitiveH& member, int count) {
        for (int i = 0; i < count; ++i) list->Append(member);
        lists.push_back(SdaiPrimitiveH::TakeOver(list));
    };
    add(new SdaiListClassOfSdaiReal(0, 12), {}, 0);
    add(new SdaiListClassOfSdaiReal(0, 12), 1.5_h, 12);
    add(new SdaiListClassOfSdaiReal(0, 12), 1.5_h, 30);
    add(new SdaiListClassOfSdaiReal(0, 12), "a text"_h, 3);
    add(new SdaiAggrInstance, 1_h, 5);
    add(new SdaiAggrInstance, data.Step(212), 14);
    add(new SdaiAggrInstance, "a text"_h, 2);
    return lists;
}

// The list is unchanged, or a placement is appended.
TEST_F(FailingPlacement, IsAppendedAsAWhole) {
    for (std::size_t which = 0; which < Lists(data).size(); ++which) {
        SCOPED_TRACE(which);
        bool failed = true;
        for (long n = 0; failed; ++n) {
            const SdaiPrimitiveH handle = Lists(data)[which];
            auto* list =
                static_cast<SdaiListClassOfSdaiReal*>(static_cast<SdaiAggrInstance*>(handle));
            const long before = list->GetMemberCount();
            {
                const FailingAllocations failing(n, Extent::Once);
                ComputeABSPlacement(data.Step(208), data.Step(204), list);
                failed = failing.HaveFailed();
            }
            EXPECT_THAT(list->GetMemberCount(), AnyOf(before, before + 12));
        }
    }
}

TEST_F(FailingPlacement, ReplacesAListAsAWhole) {
    for (std::size_t which = 0; which < Lists(data).size(); ++which) {
        SCOPED_TRACE(which);
        bool failed = true;
        for (long n = 0; failed; ++n) {
            const SdaiPrimitiveH list = Lists(data)[which];
            const std::string before = host::ToText(list, host::Session());
            {
                const FailingAllocations failing(n, Extent::Once);
                GetPlacement1(data.Step(216), list);
                failed = failing.HaveFailed();
            }
            if (host::ToText(list, host::Session()) != before) {
                EXPECT_EQ(list.GetMemberCount(), 12);
            }
        }
    }
}

// A list without room for a placement: the trace tells the step, then the list cannot grow.
TEST_F(FailingPlacement, IsToldBeforeTheListIsGivenRoom) {
    bool toldLast = false;
    bool failed = true;
    for (long n = 0; failed && !toldLast; ++n) {
        const SdaiPrimitiveH list = SdaiPrimitiveH::TakeOver(new SdaiAggrInstance);
        const TraceCapture trace;
        {
            const FailingAllocations failing(n, Extent::Once);
            GetPlacement1(data.Step(216), list);
            failed = failing.HaveFailed();
        }
        const auto messages = trace.Messages("void GetPlacement0 ->");
        toldLast = list.GetMemberCount() == 0 && !messages.empty() &&
                   messages.back() == "Valuation de la liste de sortie";
    }
    EXPECT_TRUE(toldLast);
}

}  // namespace
