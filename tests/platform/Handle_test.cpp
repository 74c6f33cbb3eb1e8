// SdaiPrimitiveH and SdaiSelectH: kinds of values, conversions, copies and equality.

#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Allocations.h"
#include "ParsedModel.h"

namespace {

const char* const kData =
    "#1=CARTESIAN_POINT('',(1.,2.,3.));"
    "#2=CARTESIAN_POINT('',(1.,2.,3.));"
    "#3=MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),#4);"
    "#4=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));";

const ParsedModel& Data() {
    static const ParsedModel model("AUTOMOTIVE_DESIGN", kData);
    return model;
}

SdaiPrimitiveH List(const std::vector<SdaiPrimitiveH>& members) {
    auto* list = new SdaiAggrInstance;
    for (const SdaiPrimitiveH& member : members) list->Append(member);
    return SdaiPrimitiveH::TakeOver(list);
}

SdaiPrimitiveH Selected(const SdaiPrimitiveH& value) { return SdaiSelectH(value); }
SdaiPrimitiveH Selected(const char* type, const SdaiPrimitiveH& value) {
    return SdaiSelectH(SdaiString(type), value);
}

std::string Name(const SdaiLogical& logical) {
    std::ostringstream stream;
    stream << logical;
    return stream.str();
}
std::string TypeName(const SdaiPrimitiveH& handle) {
    return std::string(handle.UnderlyingTypeName().View());
}

// A value of each kind, and the results of reading it as each kind.
struct Kind {
    std::string name;
    SdaiPrimitiveH handle;
    std::string type;
    std::optional<std::string> text;  // none for items of enumerations and binaries
    long integer = 0;
    double real = 0.0;
    std::string logical = "FALSE";
    bool instance = false;
    long members = 0;
    bool aggregate = false;
};

std::vector<Kind> PlainKinds() {
    const SdaiPrimitiveH instance = Data()[1];
    return {
        {.name = "String", .handle = "12"_h, .type = "STRING", .text = "12"},
        {.name = "EmptyString", .handle = ""_h, .type = "STRING", .text = ""},
        {.name = "LongString",
         .handle = "a text of more than fifteen characters"_h,
         .type = "STRING",
         .text = "a text of more than fifteen characters"},
        {.name = "Integer",
         .handle = -7L,
         .type = "INTEGER",
         .text = "",
         .integer = -7,
         .real = -7.0},
        {.name = "Zero", .handle = 0L, .type = "INTEGER", .text = ""},
        {.name = "Real", .handle = 2.9, .type = "REAL", .text = "", .integer = 2, .real = 2.9},
        {.name = "True", .handle = sdaiLTRUE, .type = "LOGICAL", .text = "", .logical = "TRUE"},
        {.name = "False", .handle = sdaiLFALSE, .type = "LOGICAL", .text = ""},
        {.name = "Unknown",
         .handle = SdaiLogical(),
         .type = "LOGICAL",
         .text = "",
         .logical = "UNKNOWN"},
        {.name = "BooleanTrue",
         .handle = sdaiTRUE,
         .type = "BOOLEAN",
         .text = "",
         .logical = "TRUE"},
        {.name = "BooleanFalse", .handle = sdaiFALSE, .type = "BOOLEAN", .text = ""},
        {.name = "Enumeration",
         .handle = SdaiPrimitiveH::Enumeration("MILLI"),
         .type = "ENUMERATION",
         .text = std::nullopt},
        {.name = "Binary",
         .handle = SdaiPrimitiveH::Binary("0F"),
         .type = "BINARY",
         .text = std::nullopt},
        {.name = "Instance",
         .handle = instance,
         .type = "CARTESIAN_POINT",
         .text = "",
         .instance = true},
        {.name = "ModelAggregate",
         .handle = instance.GetAttr("COORDINATES"),
         .type = "AGGREGATE",
         .text = "",
         .members = 3,
         .aggregate = true},
        {.name = "OwnAggregate",
         .handle = List({"a"_h, 1_h}),
         .type = "AGGREGATE",
         .text = "",
         .members = 2,
         .aggregate = true},
    };
}

std::vector<Kind> AllKinds() {
    std::vector<Kind> kinds;
    for (const Kind& kind : PlainKinds()) {
        kinds.push_back(kind);
        kinds.push_back(kind);
        kinds.back().name = "SelectOf" + kind.name;
        kinds.back().handle = Selected(kind.handle);
        kinds.push_back(kind);
        kinds.back().name = "TypedSelectOf" + kind.name;
        kinds.back().handle = Selected("SOME_MEASURE", kind.handle);
    }
    return kinds;
}

void ExpectReadsAs(const SdaiPrimitiveH& handle, const Kind& kind) {
    EXPECT_TRUE(handle.exists() == sdaiTRUE);
    EXPECT_EQ(TypeName(handle), kind.type);
    if (kind.text) {
        EXPECT_EQ(static_cast<const SdaiString&>(handle).View(), *kind.text);
    }
    EXPECT_EQ(static_cast<long>(handle), kind.integer);
    EXPECT_EQ(static_cast<double>(handle), kind.real);
    EXPECT_EQ(Name(handle), kind.logical);
    EXPECT_EQ(static_cast<SdaiEntityInstance*>(handle),
              kind.instance ? InstanceIn(Data()[1]) : nullptr);
    EXPECT_EQ(static_cast<SdaiAggrInstance*>(handle) != nullptr, kind.aggregate);
    EXPECT_EQ(handle.GetMemberCount(), kind.members);
    EXPECT_EQ(handle.GetInstanceType() != nullptr, kind.instance);
    EXPECT_EQ(handle.FindEntityInstanceModel(), kind.instance ? &Data().Model() : nullptr);
    EXPECT_EQ(handle.GetAttr("COORDINATES").GetMemberCount(), kind.instance ? 3 : 0);
    EXPECT_EQ(static_cast<int>(handle.TestAttr("COORDINATES")), kind.instance ? 1 : 0);
    EXPECT_EQ(static_cast<int>(handle.IsKindOf("POINT")), kind.instance ? 1 : 0);
}

void ExpectUnset(const SdaiPrimitiveH& handle) {
    EXPECT_TRUE(handle.exists() == sdaiFALSE);
    EXPECT_EQ(TypeName(handle), "");
    EXPECT_EQ(static_cast<const SdaiString&>(handle).View(), "");
    EXPECT_EQ(static_cast<long>(handle), 0);
    EXPECT_EQ(static_cast<double>(handle), 0.0);
    EXPECT_EQ(Name(handle), "FALSE");
    EXPECT_EQ(static_cast<SdaiEntityInstance*>(handle), nullptr);
    EXPECT_EQ(static_cast<SdaiAggrInstance*>(handle), nullptr);
    EXPECT_EQ(handle.GetMemberCount(), 0);
    EXPECT_EQ(handle.GetInstanceType(), nullptr);
    EXPECT_EQ(handle.FindEntityInstanceModel(), nullptr);
    EXPECT_TRUE(IsUnset(handle.GetAttr("COORDINATES")));
    EXPECT_TRUE(handle.TestAttr("COORDINATES") == sdaiFALSE);
    EXPECT_TRUE(handle.IsKindOf("POINT") == sdaiFALSE);
    EXPECT_TRUE(handle.IsKindOf("") == sdaiFALSE);
    EXPECT_TRUE(IsUnset(static_cast<const SdaiSelectH&>(handle).getValue()));
}

class HandleOfKind : public testing::TestWithParam<Kind> {};

}  // namespace

// ---- Every kind

TEST_P(HandleOfKind, ReadsAsEveryOther) { ExpectReadsAs(GetParam().handle, GetParam()); }

TEST_P(HandleOfKind, GivesItselfWhenViewedAsASelect) {
    const SdaiSelectH& select = GetParam().handle;
    ExpectReadsAs(select.getValue(), GetParam());
}

TEST_P(HandleOfKind, IsNoSelectOnceItIsTakenOut) {
    const SdaiSelectH& select = GetParam().handle;
    const SdaiPrimitiveH value = select.getValue();
    EXPECT_EQ(static_cast<const SdaiSelectH&>(value).DefinedType().View(), "");
}

TEST_P(HandleOfKind, IsCopiedMovedAndAssigned) {
    const Kind& kind = GetParam();
    SdaiPrimitiveH handle = kind.handle;
    const SdaiPrimitiveH& same = handle;
    handle = same;
    ExpectReadsAs(handle, kind);

    const SdaiPrimitiveH copy(handle);
    ExpectReadsAs(copy, kind);
    ExpectReadsAs(handle, kind);

    SdaiPrimitiveH moved(std::move(handle));
    ExpectReadsAs(moved, kind);

    // Assignment to a value of every other kind, and to an unset one.
    for (const Kind& before : AllKinds()) {
        SdaiPrimitiveH target = before.handle;
        target = copy;
        ExpectReadsAs(target, kind);
        target = before.handle;
        SdaiPrimitiveH source = copy;
        target = std::move(source);
        ExpectReadsAs(target, kind);
        ExpectReadsAs(before.handle, before);
    }
    handle = std::move(moved);
    ExpectReadsAs(handle, kind);
    handle = SdaiPrimitiveH();
    EXPECT_TRUE(IsUnset(handle));
}

TEST_P(HandleOfKind, IsASelectValueThatCanBeCopiedAndAssigned) {
    const Kind& kind = GetParam();
    SdaiSelectH select(kind.handle);
    const SdaiSelectH& same = select;
    select = same;
    SdaiSelectH other;
    other = select;
    const SdaiSelectH copy(other);
    const SdaiSelectH moved(std::move(other));
    for (const SdaiSelectH& one : {select, copy, moved}) ExpectReadsAs(one.getValue(), kind);
}

INSTANTIATE_TEST_SUITE_P(Kinds, HandleOfKind, testing::ValuesIn(AllKinds()),
                         [](const auto& kind) { return kind.param.name; });

// ---- Unset handles

TEST(Handle, IsUnsetWhenBuiltFromNothing) {
    ExpectUnset(SdaiPrimitiveH());
    const SdaiPrimitiveH unset;
    ExpectUnset(SdaiPrimitiveH(unset));
}

TEST(Handle, IsUnsetWhenBuiltFromANullPointer) {
    ExpectUnset(static_cast<SdaiEntityInstance*>(nullptr));
    ExpectUnset(static_cast<SdaiAggrInstance*>(nullptr));
    ExpectUnset(SdaiPrimitiveH::TakeOver(nullptr));
}

TEST(Handle, IsUnsetWhenBuiltFromASelectThatHoldsNothing) {
    ExpectUnset(SdaiSelectH());
    ExpectUnset(SdaiSelectH(SdaiPrimitiveH()));
    ExpectUnset(SdaiSelectH("SOME_MEASURE", SdaiPrimitiveH()));
}

// ---- Building and assigning

TEST(Handle, IsAssignedValuesOfEveryKind) {
    SdaiPrimitiveH handle;
    handle = SdaiString("text");
    EXPECT_EQ(TextIn(handle), "text");
    handle = 7L;
    EXPECT_EQ(IntegerIn(handle), 7);
    handle = 8;
    EXPECT_EQ(IntegerIn(handle), 8);
    handle = 2.5;
    EXPECT_EQ(RealIn(handle), 2.5);
    handle = sdaiLTRUE;
    EXPECT_TRUE(IsTrue(handle));
    handle = InstanceIn(Data()[1]);
    EXPECT_EQ(TypeName(handle), "CARTESIAN_POINT");
    SdaiAggrInstance list;
    handle = &list;
    EXPECT_EQ(TypeName(handle), "AGGREGATE");
    const SdaiString constant("constant");
    handle = constant;
    EXPECT_EQ(TextIn(handle), "constant");
    EXPECT_EQ(constant.View(), "constant");
}

TEST(Handle, IsBuiltAndCopiedWithoutAllocation) {
    const SdaiString text("a text of more than fifteen characters");
    const SdaiPrimitiveH instance = Data()[1];
    const AllocationCounter allocations;
    const SdaiPrimitiveH string(text);
    const SdaiPrimitiveH copy(string);
    const SdaiPrimitiveH number(7L);
    const SdaiPrimitiveH real(2.5);
    const SdaiPrimitiveH same(instance);
    const SdaiPrimitiveH aggregate = instance.GetAttr("COORDINATES");
    EXPECT_EQ(allocations.Count(), 0);
}

TEST(Handle, DoesNotChangeWhenTheStringItWasBuiltFromIsWritten) {
    SdaiString text("a text of more than fifteen characters");
    const SdaiPrimitiveH handle(text);
    text.remove(0, 1);
    EXPECT_EQ(TextIn(handle), "a text of more than fifteen characters");
}

TEST(Handle, SharesInstancesAndAggregatesWithItsCopies) {
    const SdaiPrimitiveH instance = Data()[1];
    EXPECT_EQ(InstanceIn(SdaiPrimitiveH(instance)), InstanceIn(instance));
    const SdaiPrimitiveH list = List({1_h});
    const SdaiPrimitiveH copy = list;
    static_cast<SdaiAggrInstance*>(copy)->Append(2_h);
    EXPECT_EQ(list.GetMemberCount(), 2);
}

// ---- Numbers

TEST(Handle, ReadsARealTowardsZeroAsAnInteger) {
    const struct {
        double real;
        long expected;
    } cases[] = {
        {0.0, 0},
        {-0.0, 0},
        {0.9, 0},
        {-0.9, 0},
        {2.9, 2},
        {-2.9, -2},
        {1e15, 1'000'000'000'000'000},
        // The largest real below 2 to the power 63, and -2 to the power 63.
        {9223372036854774784.0, 9223372036854774784},
        {-9223372036854775808.0, LONG_MIN},
        // Out of the range of an integer.
        {9223372036854775808.0, 0},
        {-9223372036854777856.0, 0},
        {1e300, 0},
        {-1e300, 0},
        {std::numeric_limits<double>::infinity(), 0},
        {-std::numeric_limits<double>::infinity(), 0},
        {std::numeric_limits<double>::quiet_NaN(), 0},
    };
    for (const auto& [real, expected] : cases) {
        EXPECT_EQ(static_cast<long>(SdaiPrimitiveH(real)), expected) << real;
    }
}

TEST(Handle, ReadsAnIntegerAsAReal) {
    EXPECT_EQ(static_cast<double>(SdaiPrimitiveH(7L)), 7.0);
    EXPECT_EQ(static_cast<double>(SdaiPrimitiveH(LONG_MIN)), -9223372036854775808.0);
}

// ---- Selects

TEST(Select, TellsTheDefinedTypeOfItsValue) {
    const SdaiSelectH typed("LENGTH_MEASURE", 2.5_h);
    EXPECT_EQ(typed.DefinedType().View(), "LENGTH_MEASURE");
    EXPECT_EQ(RealIn(typed.getValue()), 2.5);
    const SdaiSelectH copy = typed;
    EXPECT_EQ(copy.DefinedType().View(), "LENGTH_MEASURE");
    const SdaiPrimitiveH handle(typed);
    EXPECT_EQ(static_cast<const SdaiSelectH&>(handle).DefinedType().View(), "LENGTH_MEASURE");
    EXPECT_EQ(SdaiSelectH(2.5_h).DefinedType().View(), "");
    EXPECT_EQ(SdaiSelectH().DefinedType().View(), "");
}

TEST(Select, GivesWhatItHoldsWhereItWasReadFromAnInstance) {
    const SdaiPrimitiveH value = Data()[3].GetAttr("VALUE_COMPONENT");
    EXPECT_EQ(static_cast<const SdaiSelectH&>(value).DefinedType().View(), "LENGTH_MEASURE");
    EXPECT_EQ(RealIn(value), 2.5);
    EXPECT_EQ(RealIn(static_cast<const SdaiSelectH&>(value).getValue()), 2.5);
    const SdaiPrimitiveH unit = Data()[3].GetAttr("UNIT_COMPONENT");
    EXPECT_EQ(InstanceIn(static_cast<const SdaiSelectH&>(unit).getValue()), InstanceIn(Data()[4]));
    EXPECT_EQ(InstanceIn(unit), InstanceIn(Data()[4]));
    EXPECT_EQ(TypeName(unit.GetAttr("PREFIX")), "ENUMERATION");
}

TEST(Select, OutlivesTheHandleItWasTakenFrom) {
    SdaiSelectH select;
    {
        const SdaiPrimitiveH handle("a text of more than fifteen characters"_h);
        select = SdaiSelectH("LABEL", handle);
    }
    EXPECT_EQ(TextIn(select.getValue()), "a text of more than fifteen characters");
    EXPECT_EQ(select.DefinedType().View(), "LABEL");
}

TEST(Select, OfASelectGivesTheValue) {
    const SdaiPrimitiveH inner = Selected("LENGTH_MEASURE", 2.5_h);
    const SdaiSelectH outer(inner);
    EXPECT_EQ(RealIn(outer.getValue()), 2.5);
    const SdaiSelectH typed("POSITIVE_LENGTH_MEASURE", inner);
    EXPECT_EQ(typed.DefinedType().View(), "POSITIVE_LENGTH_MEASURE");
    EXPECT_EQ(RealIn(SdaiPrimitiveH(typed)), 2.5);
}

// ---- Types

TEST(Handle, TellsTheTypeOfAnInstance) {
    EXPECT_EQ(Data()[1].GetInstanceType()->Name().View(), "CARTESIAN_POINT");
    EXPECT_EQ(Selected(Data()[1]).GetInstanceType()->Name().View(), "CARTESIAN_POINT");
    EXPECT_EQ(TypeName(Data()[4]), "LENGTH_UNIT+NAMED_UNIT+SI_UNIT");
}

TEST(Handle, GivesUnsetForAnAttributeThatTheTypeLacks) {
    ExpectUnset(Data()[1].GetAttr("NO_SUCH_ATTRIBUTE"));
    ExpectUnset(Data()[1].GetAttr(""));
    EXPECT_TRUE(Data()[1].TestAttr("NO_SUCH_ATTRIBUTE") == sdaiFALSE);
}

// ---- Equality

namespace {

struct Value {
    std::string name;
    SdaiPrimitiveH handle;
    int group;  // values of one group are equal, those of different groups are not
};

std::vector<Value> Values() {
    const SdaiPrimitiveH one = Data()[1];
    const SdaiPrimitiveH two = Data()[2];
    return {
        {"'abc'", "abc"_h, 1},
        {"select of 'abc'", Selected("abc"_h), 1},
        {"typed 'abc'", Selected("LABEL", "abc"_h), 1},
        {"'ABC'", "ABC"_h, 2},
        {"''", ""_h, 3},
        {"'7'", "7"_h, 4},
        {"7", 7L, 5},
        {"7.", 7.0, 5},
        {"select of 7.", Selected("COUNT_MEASURE", 7.0_h), 5},
        {"7.5", 7.5, 6},
        {"0", 0L, 7},
        {"0.", 0.0, 7},
        {"-0.", -0.0, 7},
        {".T.", sdaiLTRUE, 8},
        {"boolean .T.", sdaiTRUE, 8},
        {".F.", sdaiLFALSE, 9},
        {"boolean .F.", sdaiFALSE, 9},
        {".U.", SdaiLogical(), 10},
        {".MILLI.", SdaiPrimitiveH::Enumeration("MILLI"), 11},
        {".MILLI. again", SdaiPrimitiveH::Enumeration("MILLI"), 11},
        {".MICRO.", SdaiPrimitiveH::Enumeration("MICRO"), 12},
        {"\"0F\"", SdaiPrimitiveH::Binary("0F"), 13},
        {"\"0F\" again", SdaiPrimitiveH::Binary("0F"), 13},
        {"\"0E\"", SdaiPrimitiveH::Binary("0E"), 14},
        // Equal attribute values do not make instances equal.
        {"#1", one, 15},
        {"select of #1", Selected(one), 15},
        {"#2", two, 16},
        {"()", List({}), 17},
        {"() again", List({}), 17},
        {"(1.,2.,3.)", List({1.0_h, 2.0_h, 3.0_h}), 18},
        {"(1,2,3)", List({1_h, 2_h, 3_h}), 18},
        {"coordinates of #1", one.GetAttr("COORDINATES"), 18},
        {"coordinates of #2", two.GetAttr("COORDINATES"), 18},
        {"(3.,2.,1.)", List({3.0_h, 2.0_h, 1.0_h}), 19},
        {"(1.,2.)", List({1.0_h, 2.0_h}), 20},
        {"('abc',#1)", List({"abc"_h, one}), 21},
        {"('abc',#1) again", List({"abc"_h, one}), 21},
        {"('abc',#2)", List({"abc"_h, two}), 22},
        {"((1.,2.),'abc')", List({List({1.0_h, 2.0_h}), "abc"_h}), 23},
        {"((1,2),'abc')", List({List({1_h, 2_h}), "abc"_h}), 23},
        {"((2.,1.),'abc')", List({List({2.0_h, 1.0_h}), "abc"_h}), 24},
    };
}

}  // namespace

TEST(HandleEquality, HoldsForEqualValuesOnly) {
    const std::vector<Value> values = Values();
    for (const Value& a : values) {
        for (const Value& b : values) {
            EXPECT_EQ(Name(a.handle == b.handle), a.group == b.group ? "TRUE" : "FALSE")
                << a.name << " and " << b.name;
        }
    }
}

TEST(HandleEquality, IsUnknownWhereAHandleIsUnset) {
    const SdaiPrimitiveH unset;
    EXPECT_EQ(Name(unset == unset), "UNKNOWN");
    EXPECT_EQ(Name(unset == SdaiPrimitiveH()), "UNKNOWN");
    for (const Value& value : Values()) {
        EXPECT_EQ(Name(value.handle == unset), "UNKNOWN") << value.name;
        EXPECT_EQ(Name(unset == value.handle), "UNKNOWN") << value.name;
    }
}

TEST(HandleEquality, OfAggregatesGoesByEveryPair) {
    const SdaiPrimitiveH unset;
    const SdaiPrimitiveH nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* values;
        SdaiPrimitiveH a;
        SdaiPrimitiveH b;
        const char* equal;
    } rows[] = {
        {"($,1) and ($,2)", List({unset, 1_h}), List({unset, 2_h}), "FALSE"},
        {"(1,$) and (2,$)", List({1_h, unset}), List({2_h, unset}), "FALSE"},
        {"($,1) and ($,1)", List({unset, 1_h}), List({unset, 1_h}), "UNKNOWN"},
        {"(1,$) and (1,3)", List({1_h, unset}), List({1_h, 3_h}), "UNKNOWN"},
        {"($,$) and ($)", List({unset, unset}), List({unset}), "FALSE"},
        {"(($),1) and (($),2)", List({List({unset}), 1_h}), List({List({unset}), 2_h}), "FALSE"},
        {"(($),1) and (($),1)", List({List({unset}), 1_h}), List({List({unset}), 1_h}), "UNKNOWN"},
        {"(nan) and (nan)", List({nan}), List({nan}), "FALSE"},
    };
    for (const auto& [values, a, b, equal] : rows) {
        EXPECT_EQ(Name(a == b), equal) << values;
        EXPECT_EQ(Name(b == a), equal) << values;
    }
}

TEST(HandleEquality, OfAnAggregateAndItselfIsThatOfACopy) {
    const SdaiPrimitiveH nan = List({1_h, std::numeric_limits<double>::quiet_NaN()});
    const SdaiPrimitiveH unset = List({1_h, SdaiPrimitiveH()});
    const SdaiPrimitiveH set = List({1_h, 2.5_h, "a"_h});
    EXPECT_EQ(Name(nan == nan), "FALSE");
    EXPECT_EQ(Name(unset == unset), "UNKNOWN");
    EXPECT_EQ(Name(set == set), "TRUE");
}

TEST(HandleEquality, TellsAnIntegerFromARealThatIsNearToIt) {
    // This integer is not representable as a real; the nearest real is 1 less.
    const SdaiPrimitiveH integer = (1L << 53) + 1;
    const SdaiPrimitiveH real = static_cast<double>(1L << 53);
    EXPECT_EQ(Name(integer == real), "FALSE");
    EXPECT_EQ(Name(real == integer), "FALSE");
    EXPECT_EQ(Name(SdaiPrimitiveH(1L << 53) == real), "TRUE");
    // 2 to the power 63 is not an integer.
    EXPECT_EQ(Name(SdaiPrimitiveH(LONG_MAX) == SdaiPrimitiveH(9223372036854775808.0)), "FALSE");
}

TEST(SdaiPrimitiveH, IsUnsetForAnItemThatIsNoWordAndABinaryThatIsNone) {
    for (const char* text : {"", "A B", ".A.", "A.", "A\xC9", "A\n", "x.);#9=FOO(.y"}) {
        EXPECT_FALSE(SdaiPrimitiveH::Enumeration(text).exists()) << text;
    }
    for (const char* text : {"A", "not_known", "A1_B2"}) {
        EXPECT_TRUE(SdaiPrimitiveH::Enumeration(text).exists()) << text;
    }
    for (const char* text : {"", "4F", "0f", "0\"", "0 ", "FF"}) {
        EXPECT_FALSE(SdaiPrimitiveH::Binary(text).exists()) << text;
    }
    for (const char* text : {"0", "0F", "3ABCDEF0123456789"}) {
        EXPECT_TRUE(SdaiPrimitiveH::Binary(text).exists()) << text;
    }
}

// ---- Text for users

namespace {

struct Literal {
    const char* expected;
    SdaiPrimitiveH handle;
};

void PrintTo(const Literal& literal, std::ostream* stream) { *stream << literal.expected; }

class HandleText : public testing::TestWithParam<Literal> {};

}  // namespace

TEST_P(HandleText, IsTheLiteralOfAnExchangeFile) {
    EXPECT_EQ(ToString(GetParam().handle), GetParam().expected);
    std::ostringstream stream;
    stream << '[' << GetParam().handle << ']';
    EXPECT_EQ(stream.str(), std::string("[") + GetParam().expected + "]");
}

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, HandleText,
    testing::Values(Literal{"$", {}}, Literal{"'It''s'", "It's"_h}, Literal{"''", ""_h},
                    Literal{"'\u0141\u00F3d\u017A\\'",
                            SdaiPrimitiveH(SdaiString::FromUtf8("\u0141\u00F3d\u017A\\"))},
                    Literal{"-7", -7L}, Literal{"9223372036854775807", LONG_MAX},
                    Literal{"2.5", 2.5}, Literal{"-3.", -3.0}, Literal{"-0.", -0.0},
                    Literal{"1.E+300", 1e300}, Literal{"0.1", 0.1}, Literal{".T.", sdaiLTRUE},
                    Literal{".F.", sdaiFALSE}, Literal{".U.", SdaiLogical()},
                    Literal{".MILLI.", SdaiPrimitiveH::Enumeration("MILLI")},
                    Literal{"\"0A\"", SdaiPrimitiveH::Binary("0A")}, Literal{"#2", Data()[2]},
                    Literal{"(1.,2.,3.)", Data()[1].GetAttr("COORDINATES")},
                    Literal{"LENGTH_MEASURE(2.5)", Data()[3].GetAttr("VALUE_COMPONENT")},
                    Literal{"#4", Data()[3].GetAttr("UNIT_COMPONENT")}, Literal{"()", List({})},
                    Literal{"('a',$,(1,#1),LABEL('b'))",
                            List({"a"_h, {}, List({1L, Data()[1]}), Selected("LABEL", "b"_h)})}));
