// Aggregates and their iterators.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "Allocations.h"
#include "ParsedModel.h"
#include "SdaiIterator.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const kData =
    "#1=CARTESIAN_POINT('',(1.,2.,3.));"
    "#2=CARTESIAN_POINT('',(1.,2.,3.));"
    "#3=DIRECTION('',(0.,0.,1.));"
    "#4=SHAPE_REPRESENTATION('',(#1,#3),#5);"
    "#5=REPRESENTATION_CONTEXT('','');"
    "#6=PERSON('',$,$,('Ann','Bo'),$,());"
    "#7=GLOBAL_UNIT_ASSIGNED_CONTEXT('','',(#8));"
    "#8=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));";

ParsedModel Data() { return ParsedModel("AUTOMOTIVE_DESIGN", kData); }

SdaiPrimitiveH List(const std::vector<SdaiPrimitiveH>& members) {
    auto* list = new SdaiAggrInstance;
    for (const SdaiPrimitiveH& member : members) list->Append(member);
    return SdaiPrimitiveH::TakeOver(list);
}

std::string TypeName(const SdaiPrimitiveH& handle) {
    return std::string(handle.UnderlyingTypeName().View());
}

// The kinds of the members, in order; "" for an unset one.
std::vector<std::string> TypesIn(const SdaiAggrInstance& aggregate) {
    std::vector<std::string> types;
    for (long i = 0; i < aggregate.GetMemberCount(); ++i) {
        types.push_back(TypeName(aggregate.GetMember(i)));
    }
    return types;
}

// The integers that a walk visits; -1 for anything else.
std::vector<long> Visited(SdaiIterInstance& iterator) {
    std::vector<long> visited;
    while (iterator.Next()) {
        const SdaiPrimitiveH value = iterator.GetCurrentValue();
        visited.push_back(TypeName(value) == "INTEGER" ? static_cast<long>(value) : -1);
    }
    return visited;
}

}  // namespace

// ---- Members

TEST(Aggregate, IsEmptyAtFirst) {
    const SdaiAggrInstance aggregate;
    EXPECT_EQ(aggregate.GetMemberCount(), 0);
    EXPECT_TRUE(IsUnset(aggregate.GetMember(0)));
    EXPECT_EQ(aggregate.GetInstanceMember(0), nullptr);
    EXPECT_EQ(aggregate.GetRealMember(0), 0.0);
    EXPECT_TRUE(aggregate.IsMember(1_h) == sdaiFALSE);
    EXPECT_FALSE(aggregate.IsMember(static_cast<SdaiEntityInstance*>(nullptr)));
}

TEST(Aggregate, KeepsMembersOfOneKindInOrder) {
    SdaiAggrInstance reals;
    for (int i = 0; i < 100; ++i) reals.Append(i + 0.5);
    ASSERT_EQ(reals.GetMemberCount(), 100);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(RealIn(reals.GetMember(i)), i + 0.5);

    SdaiAggrInstance integers;
    for (long i = 0; i < 100; ++i) integers.Append(i);
    for (long i = 0; i < 100; ++i) EXPECT_EQ(IntegerIn(integers.GetMember(i)), i);

    SdaiAggrInstance strings;
    for (int i = 0; i < 100; ++i)
        strings.Append(Handle(std::string(static_cast<unsigned>(i), 'x')));
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(TextIn(strings.GetMember(i)), std::string(static_cast<unsigned>(i), 'x'));
    }
}

// Wherever a member of another kind is added, the previous members do not change.
TEST(Aggregate, KeepsMembersOfMixedKinds) {
    const ParsedModel model = Data();
    const std::vector<SdaiPrimitiveH> values{
        1.5_h,
        7_h,
        "text"_h,
        "a text of more than fifteen characters"_h,
        model[1],
        sdaiLTRUE,
        sdaiFALSE,
        SdaiPrimitiveH::Enumeration("MILLI"),
        SdaiPrimitiveH::Binary("0F"),
        SdaiPrimitiveH(),
        List({1_h, "a"_h}),
        SdaiSelectH("LENGTH_MEASURE", 2.5_h),
        model[1].GetAttr("COORDINATES"),
    };
    const std::vector<std::string> types{
        "REAL",      "INTEGER", "STRING",      "STRING", "CARTESIAN_POINT",
        "LOGICAL",   "BOOLEAN", "ENUMERATION", "BINARY", "",
        "AGGREGATE", "REAL",    "AGGREGATE"};
    for (std::size_t first = 0; first < values.size(); ++first) {
        SdaiAggrInstance aggregate;
        std::vector<std::string> expected;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::size_t at = (first + i) % values.size();
            aggregate.Append(values[at]);
            aggregate.Append(values[at]);
            expected.insert(expected.end(), 2, types[at]);
            ASSERT_EQ(TypesIn(aggregate), expected) << "from " << first;
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::size_t at = (first + i) % values.size();
            if (types[at].empty()) continue;
            EXPECT_TRUE(IsTrue(aggregate.GetMember(static_cast<long>(2 * i)) == values[at])) << at;
        }
    }
}

TEST(Aggregate, GivesNothingOutsideItsMembers) {
    SdaiAggrInstance aggregate;
    aggregate.Append(1.5);
    for (const long position : {-1L, 1L, 2L, LONG_MIN, LONG_MAX, 1L << 32}) {
        EXPECT_TRUE(IsUnset(aggregate.GetMember(position))) << position;
        EXPECT_EQ(aggregate.GetInstanceMember(position), nullptr) << position;
        EXPECT_EQ(aggregate.GetRealMember(position), 0.0) << position;
    }
}

TEST(Aggregate, GivesMembersAsInstancesAndAsReals) {
    const ParsedModel model = Data();
    SdaiAggrInstance mixed;
    mixed.Append(model[1]);
    mixed.Append(7_h);
    mixed.Append(1.5_h);
    mixed.Append("12"_h);
    mixed.Append(SdaiPrimitiveH());
    mixed.Append(SdaiSelectH(model[2]));
    mixed.Append(SdaiSelectH("LENGTH_MEASURE", 2.5_h));
    SdaiEntityInstance* const none = nullptr;
    SdaiEntityInstance* const instances[] = {InstanceIn(model[1]), none, none, none, none,
                                             InstanceIn(model[2]), none};
    const double reals[] = {0.0, 7.0, 1.5, 0.0, 0.0, 0.0, 2.5};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(mixed.GetInstanceMember(i), instances[i]) << i;
        EXPECT_EQ(mixed.GetRealMember(i), reals[i]) << i;
    }
    SdaiAggrInstance integers;
    integers.Append(7_h);
    EXPECT_EQ(integers.GetRealMember(0), 7.0);
    EXPECT_EQ(integers.GetInstanceMember(0), nullptr);
}

TEST(Aggregate, TellsWhatIsAMember) {
    const ParsedModel model = Data();
    SdaiAggrInstance aggregate;
    for (const SdaiPrimitiveH& value :
         {SdaiPrimitiveH("abc"_h), SdaiPrimitiveH(7_h), model[1], List({1_h})}) {
        aggregate.Append(value);
    }
    EXPECT_TRUE(aggregate.IsMember("abc"_h));
    EXPECT_TRUE(aggregate.IsMember(7_h));
    EXPECT_TRUE(aggregate.IsMember(7.0_h));
    EXPECT_TRUE(aggregate.IsMember(model[1]));
    EXPECT_TRUE(aggregate.IsMember(InstanceIn(model[1])));
    EXPECT_TRUE(aggregate.IsMember(SdaiPrimitiveH(SdaiSelectH(model[1]))));
    EXPECT_TRUE(aggregate.IsMember(List({1.0_h})));
    EXPECT_FALSE(aggregate.IsMember("ABC"_h));
    EXPECT_FALSE(aggregate.IsMember(8_h));
    EXPECT_FALSE(aggregate.IsMember("7"_h));
    // #2 has the same values as #1.
    EXPECT_FALSE(aggregate.IsMember(model[2]));
    EXPECT_FALSE(aggregate.IsMember(InstanceIn(model[2])));
    EXPECT_FALSE(aggregate.IsMember(SdaiPrimitiveH()));
    EXPECT_FALSE(aggregate.IsMember(static_cast<SdaiEntityInstance*>(nullptr)));
}

TEST(Aggregate, TellsWhatIsAMemberWhereAllAreOfOneKind) {
    const ParsedModel model = Data();
    const SdaiPrimitiveH reals = List({1.0_h, 2.5_h});
    const SdaiPrimitiveH integers = List({1_h, 2_h});
    const SdaiPrimitiveH instances = List({model[1], model[3]});
    const auto has = [](const SdaiPrimitiveH& list, const SdaiPrimitiveH& value) {
        return static_cast<SdaiAggrInstance*>(list)->IsMember(value) == sdaiTRUE;
    };
    EXPECT_TRUE(has(reals, 2.5_h));
    EXPECT_TRUE(has(reals, 1_h));
    EXPECT_FALSE(has(reals, 2_h));
    EXPECT_TRUE(has(integers, 2_h));
    EXPECT_TRUE(has(integers, 2.0_h));
    EXPECT_FALSE(has(integers, 2.5_h));
    EXPECT_TRUE(has(instances, model[3]));
    EXPECT_FALSE(has(instances, model[2]));
    EXPECT_FALSE(has(instances, 1_h));
    EXPECT_FALSE(has(reals, model[1]));
}

TEST(Aggregate, IsEmptyAfterRemoveAllAndTakesMembersOfAnotherKind) {
    SdaiAggrInstance aggregate;
    aggregate.RemoveAll();
    EXPECT_EQ(aggregate.GetMemberCount(), 0);
    aggregate.Append(1.5_h);
    aggregate.Append("a text of more than fifteen characters"_h);
    aggregate.RemoveAll();
    EXPECT_EQ(aggregate.GetMemberCount(), 0);
    EXPECT_TRUE(IsUnset(aggregate.GetMember(0)));
    aggregate.Append(7_h);
    aggregate.Append("text"_h);
    EXPECT_THAT(TypesIn(aggregate), ElementsAre("INTEGER", "STRING"));
}

TEST(Aggregate, TakesItsOwnMembersAgain) {
    SdaiAggrInstance aggregate;
    aggregate.Append("a text of more than fifteen characters"_h);
    for (int i = 0; i < 100; ++i) aggregate.Append(aggregate.GetMember(i));
    EXPECT_EQ(aggregate.GetMemberCount(), 101);
    EXPECT_EQ(TextIn(aggregate.GetMember(100)), "a text of more than fifteen characters");
}

TEST(Aggregate, AppendsWithoutAllocationUpToWhatWasReserved) {
    const ParsedModel model = Data();
    for (const SdaiPrimitiveH& value :
         {SdaiPrimitiveH(1.5), SdaiPrimitiveH(7L), model[1], SdaiPrimitiveH("text"_h)}) {
        SdaiAggrInstance aggregate;
        aggregate.Reserve(1'000);
        EXPECT_EQ(aggregate.GetMemberCount(), 0);
        const AllocationCounter allocations;
        for (int i = 0; i < 1'000; ++i) aggregate.Append(value);
        EXPECT_EQ(allocations.Count(), 0) << TypeName(value);
        EXPECT_EQ(aggregate.GetMemberCount(), 1'000);
    }
}

TEST(Aggregate, KeepsItsMembersWhenItReserves) {
    SdaiAggrInstance aggregate;
    aggregate.Append(1_h);
    aggregate.Append("text"_h);
    for (const long count : {0L, 1L, 2L, 500L, -1L}) aggregate.Reserve(count);
    EXPECT_THAT(TypesIn(aggregate), ElementsAre("INTEGER", "STRING"));
}

// ---- Ownership

TEST(AggregateOwnership, LastsAsLongAsAHandle) {
    SdaiPrimitiveH last;
    {
        const SdaiPrimitiveH first = List({"a text of more than fifteen characters"_h, 1.5_h});
        const SdaiPrimitiveH second = first;
        last = second;
    }
    EXPECT_EQ(last.GetMemberCount(), 2);
    const SdaiAggrInstance* aggregate = last;
    EXPECT_EQ(TextIn(aggregate->GetMember(0)), "a text of more than fifteen characters");
}

TEST(AggregateOwnership, IsGainedByAHandleOnAnAggregateThatHandlesOwn) {
    SdaiPrimitiveH first = List({7_h});
    SdaiAggrInstance* const aggregate = first;
    const SdaiPrimitiveH second(aggregate);
    first = SdaiPrimitiveH();
    EXPECT_EQ(second.GetMemberCount(), 1);
    EXPECT_EQ(static_cast<SdaiAggrInstance*>(second), aggregate);
}

TEST(AggregateOwnership, StaysWithTheOwnerOfAnAggregateOnTheStack) {
    SdaiAggrInstance aggregate;
    {
        SdaiPrimitiveH handle(&aggregate);
        const SdaiPrimitiveH copy = handle;
        handle = 1_h;
        static_cast<SdaiAggrInstance*>(copy)->Append(7_h);
    }
    aggregate.Append(8_h);
    EXPECT_EQ(aggregate.GetMemberCount(), 2);
}

TEST(AggregateOwnership, ReachesMembersThatAreAggregates) {
    SdaiPrimitiveH outer;
    {
        const SdaiPrimitiveH inner = List({1_h, 2_h});
        outer = List({inner, inner});
    }
    const SdaiPrimitiveH member = static_cast<SdaiAggrInstance*>(outer)->GetMember(1);
    outer = SdaiPrimitiveH();
    EXPECT_THAT(RealsIn(member), ElementsAre(1.0, 2.0));
}

TEST(AggregateOwnership, PassesThroughASelect) {
    SdaiPrimitiveH value;
    {
        const SdaiPrimitiveH select = SdaiSelectH("SOME_LIST", List({1_h, 2_h}));
        value = static_cast<const SdaiSelectH&>(select).getValue();
    }
    EXPECT_THAT(RealsIn(value), ElementsAre(1.0, 2.0));
}

TEST(AggregateOwnership, OfOneThatWasReadFromAnInstanceIsTheModels) {
    const ParsedModel model = Data();
    const SdaiAggrInstance* aggregate = nullptr;
    {
        const SdaiPrimitiveH handle = model[1].GetAttr("COORDINATES");
        aggregate = handle;
    }
    EXPECT_EQ(aggregate->GetMemberCount(), 3);
    EXPECT_EQ(static_cast<SdaiAggrInstance*>(model[1].GetAttr("COORDINATES")), aggregate);
}

// ---- Aggregates of a model

TEST(ModelAggregate, HoldsWhatTheDataSay) {
    const ParsedModel model = Data();
    EXPECT_THAT(RealsIn(model[1].GetAttr("COORDINATES")), ElementsAre(1.0, 2.0, 3.0));
    const SdaiAggrInstance* items = model[4].GetAttr("ITEMS");
    EXPECT_EQ(items->GetInstanceMember(0), InstanceIn(model[1]));
    EXPECT_EQ(items->GetInstanceMember(1), InstanceIn(model[3]));
    const SdaiAggrInstance* names = model[6].GetAttr("MIDDLE_NAMES");
    EXPECT_EQ(TextIn(names->GetMember(0)), "Ann");
    EXPECT_EQ(TextIn(names->GetMember(1)), "Bo");
}

TEST(ModelAggregate, IsSetWhenItIsEmpty) {
    const ParsedModel model = Data();
    EXPECT_TRUE(model[6].TestAttr("SUFFIX_TITLES") == sdaiTRUE);
    EXPECT_EQ(model[6].GetAttr("SUFFIX_TITLES").GetMemberCount(), 0);
    EXPECT_TRUE(IsUnset(model[6].GetAttr("PREFIX_TITLES")));
}

TEST(ModelAggregate, GivesSelectsWhereItsMembersAreSelects) {
    const ParsedModel model = Data();
    const SdaiAggrInstance* units = model[7].GetAttr("UNITS");
    const SdaiPrimitiveH unit = units->GetMember(0);
    EXPECT_EQ(InstanceIn(static_cast<const SdaiSelectH&>(unit).getValue()), InstanceIn(model[8]));
    EXPECT_EQ(units->GetInstanceMember(0), InstanceIn(model[8]));
    EXPECT_TRUE(units->IsMember(model[8]));
}

TEST(ModelAggregate, IsWrittenInPlace) {
    const ParsedModel model = Data();
    SdaiAggrInstance* coordinates = model[1].GetAttr("COORDINATES");
    coordinates->Append(4.0_h);
    EXPECT_THAT(RealsIn(model[1].GetAttr("COORDINATES")), ElementsAre(1.0, 2.0, 3.0, 4.0));
    coordinates->RemoveAll();
    EXPECT_EQ(model[1].GetAttr("COORDINATES").GetMemberCount(), 0);
    for (int i = 0; i < 100; ++i) coordinates->Append(i + 0.5);
    EXPECT_EQ(model[1].GetAttr("COORDINATES").GetMemberCount(), 100);
    EXPECT_EQ(coordinates->GetRealMember(99), 99.5);
    EXPECT_THAT(RealsIn(model[2].GetAttr("COORDINATES")), ElementsAre(1.0, 2.0, 3.0));
}

TEST(ModelAggregate, KeepsMembersThatHandlesHaveLetGo) {
    const ParsedModel model = Data();
    SdaiAggrInstance* names = model[6].GetAttr("MIDDLE_NAMES");
    {
        const std::string text = "a text of more than fifteen characters";
        names->Append(Handle(text));
        names->Append(List({"inner"_h}));
    }
    EXPECT_EQ(TextIn(names->GetMember(2)), "a text of more than fifteen characters");
    const SdaiPrimitiveH inner = names->GetMember(3);
    EXPECT_EQ(TextIn(static_cast<SdaiAggrInstance*>(inner)->GetMember(0)), "inner");
}

// ---- Lists of reals

TEST(RealList, TakesReals) {
    SdaiListClassOfSdaiReal list(0, 12);
    EXPECT_EQ(list.GetMemberCount(), 0);
    for (int i = 0; i < 12; ++i) list.Append(i * 0.5);
    EXPECT_EQ(list.GetMemberCount(), 12);
    EXPECT_EQ(list.GetRealMember(11), 5.5);
    EXPECT_EQ(RealIn(list.GetMember(3)), 1.5);
}

TEST(RealList, DoesNotEnforceItsBounds) {
    SdaiListClassOfSdaiReal list(2, 3);
    EXPECT_EQ(list.GetMemberCount(), 0);
    for (int i = 0; i < 5; ++i) list.Append(1.5);
    EXPECT_EQ(list.GetMemberCount(), 5);
}

TEST(RealList, BelongsToHandlesOnceTheyTookItOver) {
    SdaiPrimitiveH handle;
    {
        auto* list = new SdaiListClassOfSdaiReal(0, 12);
        list->Append(1.5);
        const SdaiPrimitiveH first = SdaiPrimitiveH::TakeOver(list);
        handle = first;
        list->Append(2.5);
    }
    EXPECT_THAT(RealsIn(handle), ElementsAre(1.5, 2.5));
    EXPECT_EQ(TypeName(handle), "AGGREGATE");
}

TEST(RealList, CanBeClearedAndFilledAgain) {
    SdaiListClassOfSdaiReal list(0, 12);
    list.Append(1.5);
    list.RemoveAll();
    EXPECT_EQ(list.GetMemberCount(), 0);
    list.Append(2.5);
    EXPECT_EQ(list.GetRealMember(0), 2.5);
}

// ---- Iterators

TEST(Iterator, VisitsTheMembersInOrder) {
    const SdaiPrimitiveH list = List({1_h, 2_h, 3_h});
    SdaiIterInstance iterator(list);
    EXPECT_THAT(Visited(iterator), ElementsAre(1, 2, 3));
    EXPECT_TRUE(iterator.Next() == sdaiFALSE);
    EXPECT_TRUE(iterator.Next() == sdaiFALSE);
    iterator.Beginning();
    EXPECT_THAT(Visited(iterator), ElementsAre(1, 2, 3));
}

TEST(Iterator, HasNoCurrentMemberBeforeTheFirstAndAfterTheLast) {
    const SdaiPrimitiveH list = List({1_h});
    SdaiIterInstance iterator(list);
    EXPECT_TRUE(IsUnset(iterator.GetCurrentValue()));
    EXPECT_TRUE(iterator.Next() == sdaiTRUE);
    EXPECT_EQ(IntegerIn(iterator.GetCurrentValue()), 1);
    EXPECT_TRUE(iterator.Next() == sdaiFALSE);
    EXPECT_TRUE(IsUnset(iterator.GetCurrentValue()));
    iterator.Beginning();
    EXPECT_TRUE(IsUnset(iterator.GetCurrentValue()));
}

TEST(Iterator, VisitsNothingInAnEmptyOrANullAggregate) {
    const SdaiAggrInstance empty;
    SdaiIterInstance over(&empty);
    EXPECT_THAT(Visited(over), IsEmpty());
    SdaiIterInstance nowhere(nullptr);
    EXPECT_TRUE(nowhere.Next() == sdaiFALSE);
    EXPECT_TRUE(IsUnset(nowhere.GetCurrentValue()));
    SdaiIterator_Of_SdaiEntityInstanceH instances(nullptr, sdaiRO);
    EXPECT_TRUE(instances.Next() == sdaiFALSE);
    EXPECT_EQ(instances.GetCurrentMember(), nullptr);
    SdaiIterator_Of_SdaiReal reals(nullptr, sdaiRO);
    EXPECT_TRUE(reals.Next() == sdaiFALSE);
    EXPECT_EQ(reals.GetCurrentMember(), 0.0);
}

TEST(Iterator, DoesNotVisitMembersThatAreAddedMeanwhile) {
    const SdaiPrimitiveH list = List({1_h, 2_h});
    SdaiAggrInstance* const aggregate = list;
    SdaiIterInstance iterator(aggregate);
    std::vector<long> visited;
    while (iterator.Next()) {
        visited.push_back(iterator.GetCurrentValue());
        for (long i = 0; i < 100; ++i) aggregate->Append(10 + i);
    }
    EXPECT_THAT(visited, ElementsAre(1, 2));
    iterator.Beginning();
    EXPECT_EQ(Visited(iterator).size(), 202U);
}

TEST(Iterator, FindsNothingWhereTheMembersWereRemoved) {
    const SdaiPrimitiveH list = List({1_h, 2_h, 3_h});
    SdaiIterInstance iterator(list);
    EXPECT_TRUE(iterator.Next() == sdaiTRUE);
    static_cast<SdaiAggrInstance*>(list)->RemoveAll();
    EXPECT_TRUE(IsUnset(iterator.GetCurrentValue()));
    EXPECT_TRUE(iterator.Next() == sdaiFALSE);
    EXPECT_TRUE(IsUnset(iterator.GetCurrentValue()));
}

TEST(Iterator, EndsWhereAnAggregateThatWasMadeAnewEnds) {
    const SdaiPrimitiveH list = List({1_h, 2_h, 3_h, 4_h});
    SdaiAggrInstance* const aggregate = list;
    SdaiIterInstance iterator(aggregate);
    EXPECT_TRUE(iterator.Next() == sdaiTRUE);
    aggregate->RemoveAll();
    aggregate->Append(5_h);
    aggregate->Append(6_h);
    EXPECT_TRUE(iterator.Next() == sdaiTRUE);
    EXPECT_EQ(IntegerIn(iterator.GetCurrentValue()), 6);
    EXPECT_TRUE(iterator.Next() == sdaiFALSE);
    EXPECT_TRUE(IsUnset(iterator.GetCurrentValue()));
}

TEST(Iterator, HasNoCurrentMemberAtItsEndWhereMembersWereAdded) {
    const SdaiPrimitiveH list = List({1_h});
    SdaiIterInstance iterator(list);
    EXPECT_TRUE(iterator.Next() == sdaiTRUE);
    EXPECT_TRUE(iterator.Next() == sdaiFALSE);
    static_cast<SdaiAggrInstance*>(list)->Append(2_h);
    EXPECT_TRUE(IsUnset(iterator.GetCurrentValue()));
    EXPECT_TRUE(iterator.Next() == sdaiFALSE);
    EXPECT_TRUE(IsUnset(iterator.GetCurrentValue()));
}

TEST(InstanceIterator, GivesInstancesAndThoseThatSelectsHold) {
    const ParsedModel model = Data();
    const SdaiPrimitiveH list = List({model[1], SdaiSelectH(model[2]), 7_h, model[3]});
    SdaiIterator_Of_SdaiEntityInstanceH iterator(list, sdaiRW);
    EXPECT_EQ(iterator.GetCurrentMember(), nullptr);
    std::vector<SdaiEntityInstance*> visited;
    while (iterator.Next()) visited.push_back(iterator.GetCurrentMember());
    EXPECT_THAT(visited, ElementsAre(InstanceIn(model[1]), InstanceIn(model[2]), nullptr,
                                     InstanceIn(model[3])));
    EXPECT_EQ(iterator.GetCurrentMember(), nullptr);
}

TEST(RealIterator, GivesNumbersAsReals) {
    const SdaiPrimitiveH list = List({1.5_h, 7_h, "2.5"_h, SdaiPrimitiveH()});
    SdaiIterator_Of_SdaiReal iterator(list);
    EXPECT_EQ(iterator.GetCurrentMember(), 0.0);
    std::vector<double> visited;
    while (iterator.Next()) visited.push_back(iterator.GetCurrentMember());
    EXPECT_THAT(visited, ElementsAre(1.5, 7.0, 0.0, 0.0));
    EXPECT_EQ(iterator.GetCurrentMember(), 0.0);
}

TEST(InstanceIterator, VisitsTheInstancesThatAnExtentHadWhenItBegan) {
    const ParsedModel model = Data();
    const SdaiEntity* points = model.Model().GetEntityDefinition("CARTESIAN_POINT");
    SdaiIterator_Of_SdaiEntityInstanceH iterator(model.Model().GetEntityExtent("CARTESIAN_POINT"));
    std::vector<unsigned long> visited;
    while (iterator.Next()) {
        visited.push_back(iterator.GetCurrentMember()->GetInstanceNameId());
        for (int i = 0; i < 100; ++i) points->CreateEntityInstance(&model.Model());
    }
    EXPECT_THAT(visited, ElementsAre(1, 2));
    EXPECT_EQ(model.Model().GetEntityExtent("CARTESIAN_POINT")->GetMemberCount(), 202);
}
