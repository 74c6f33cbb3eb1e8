// The kind of an effectivity: of an instance, and of an effectivity identifier.

#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <ostream>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

// ---- IsRangeOrDateEffectivity, IsRangeType, IsDateType

constexpr char kRangeKind[] = " -> Range Effectivity Type ";
constexpr char kDateKind[] = " -> Date Effectivity Type ";
constexpr char kOptionRange[] = " -> Option Range Effectivity Type ";
constexpr char kOptionDate[] = " -> Option Date Effectivity Type ";

// The instance #1 of a model, and the message with which each test accepts it; null if rejected.
struct Shape {
    const char* name;
    const char* data;
    const char* rangeOrDate;
    const char* range;
    const char* date;
};

void PrintTo(const Shape& shape, std::ostream* stream) { *stream << shape.data; }

const Shape kShapes[] = {
    {"Range", "RANGE_EFFECTIVITY('E',$,1,5)", kRangeKind, kRangeKind, nullptr},
    {"BareRange", "RANGE_EFFECTIVITY($,$,$,$)", kRangeKind, kRangeKind, nullptr},
    {"Date", "DATE_EFFECTIVITY('E',$,'01012000000000',$)", kDateKind, nullptr, kDateKind},
    {"OptionRange", "OPTION_EFFECTIVITY('E',$,'option_range','O',1,5,$,$)", kOptionRange,
     kOptionRange, nullptr},
    {"OptionDate", "OPTION_EFFECTIVITY('E',$,'option_date','O',$,$,$,$)", kOptionDate, nullptr,
     kOptionDate},
    {"OptionWithoutType", "OPTION_EFFECTIVITY('E',$,$,'O',1,5,$,$)", nullptr, nullptr, nullptr},
    {"OptionWithEmptyType", "OPTION_EFFECTIVITY('E',$,'','O',1,5,$,$)", nullptr, nullptr, nullptr},
    {"OptionRangeInOtherCase", "OPTION_EFFECTIVITY('E',$,'Option_Range','O',1,5,$,$)", nullptr,
     nullptr, nullptr},
    {"OptionDateInOtherCase", "OPTION_EFFECTIVITY('E',$,'option_DATE','O',1,5,$,$)", nullptr,
     nullptr, nullptr},
    // The types must be equal here, unlike in ExtractCFGType.
    {"OptionRangeCutShort", "OPTION_EFFECTIVITY('E',$,'option_rang','O',1,5,$,$)", nullptr, nullptr,
     nullptr},
    {"OptionRangeWithMore", "OPTION_EFFECTIVITY('E',$,'option_range ','O',1,5,$,$)", nullptr,
     nullptr, nullptr},
    {"OptionWithNameOfTheKind", "OPTION_EFFECTIVITY('E',$,'range_effectivity','O',1,5,$,$)",
     nullptr, nullptr, nullptr},
    {"AnotherType", "CONFIGURATION_ITEM('E',$,$)", nullptr, nullptr, nullptr},
    // The instance's own kind ends the test; the other test continues with the option's type.
    {"RangeAndDateOption",
     "(EFFECTIVITY_OBJECT('E',$)OPTION_EFFECTIVITY('option_date','O',$,$,$,$)"
     "RANGE_EFFECTIVITY(1,5))",
     kRangeKind, kRangeKind, kOptionDate},
    {"DateAndRangeOption",
     "(DATE_EFFECTIVITY($,$)EFFECTIVITY_OBJECT('E',$)"
     "OPTION_EFFECTIVITY('option_range','O',$,$,$,$))",
     kDateKind, kOptionRange, kDateKind},
    {"RangeAndDate", "(DATE_EFFECTIVITY($,$)EFFECTIVITY_OBJECT('E',$)RANGE_EFFECTIVITY(1,5))",
     kRangeKind, kRangeKind, kDateKind},
};

struct Classifier {
    SdaiPrimitiveH (*function)(const SdaiPrimitiveH&);
    const char* label;
    const char* Shape::*accepted;
    const char* no;
    const char* yes;
};

const Classifier kClassifiers[] = {
    {IsRangeOrDateEffectivity, "SdaiPrimitiveH IsRangeOrDateEffectivity ->", &Shape::rangeOrDate,
     ">> Effectivity IS NOT a date or range type <<", ">> Effectivity IS a date or range type <<"},
    {IsRangeType, "SdaiPrimitiveH IsRangeType ->", &Shape::range,
     ">> Effectivity IS NOT a range type <<", ">> Effectivity IS range type <<"},
    {IsDateType, "SdaiPrimitiveH IsDateType ->", &Shape::date,
     ">> Effectivity IS NOT a date type <<", ">> Effectivity IS date type <<"},
};

// Runs the three tests over an instance of a shape.
void ExpectClassified(const SdaiPrimitiveH& effectivity, const Shape& shape) {
    for (const Classifier& classifier : kClassifiers) {
        SCOPED_TRACE(classifier.label);
        const char* accepted = shape.*classifier.accepted;
        std::vector<std::string> messages{"Effectivity exists : OK "};
        if (accepted != nullptr) messages.emplace_back(accepted);
        messages.emplace_back(accepted != nullptr ? classifier.yes : classifier.no);

        EXPECT_EQ(IsTrue(classifier.function(effectivity)), accepted != nullptr);
        TraceCapture trace;
        const SdaiPrimitiveH result = classifier.function(effectivity);
        EXPECT_EQ(IsTrue(result), accepted != nullptr);
        EXPECT_EQ(IsFalse(result), accepted == nullptr);
        EXPECT_THAT(trace.Messages(classifier.label), ElementsAreArray(messages));
    }
}

class EffectivityClassifiers : public testing::TestWithParam<Shape> {};

TEST_P(EffectivityClassifiers, TellTheKindOfTheInstance) {
    const TestModel model("cdma", std::string("#1=") + GetParam().data + ";");
    ExpectClassified(model[1], GetParam());
}

INSTANTIATE_TEST_SUITE_P(Shapes, EffectivityClassifiers, testing::ValuesIn(kShapes),
                         [](const auto& shape) { return shape.param.name; });

TEST(EffectivityClassifiers, AreFalseForAMissingEffectivity) {
    for (const Classifier& classifier : kClassifiers) {
        SCOPED_TRACE(classifier.label);
        EXPECT_TRUE(IsFalse(classifier.function(SdaiPrimitiveH())));
        TraceCapture trace;
        EXPECT_TRUE(IsFalse(classifier.function(SdaiPrimitiveH())));
        EXPECT_THAT(trace.Messages(classifier.label),
                    ElementsAre("KO : Effectivity doesn't exist", classifier.no));
    }
}

TEST(EffectivityClassifiers, AreFalseForAValueThatIsNoInstance) {
    const Shape none{"", "", nullptr, nullptr, nullptr};
    ExpectClassified("range_effectivity"_h, none);
    ExpectClassified(1_h, none);
    ExpectClassified(sdaiLTRUE, none);
}

// Subtypes, and an option type that is not a text. A kind test needs none of the attributes.
constexpr char kSubtypes[] = R"(SCHEMA small;
    ENTITY range_effectivity; END_ENTITY;
    ENTITY serial_effectivity SUBTYPE OF (range_effectivity); END_ENTITY;
    ENTITY date_effectivity; END_ENTITY;
    ENTITY weekly_effectivity SUBTYPE OF (date_effectivity); END_ENTITY;
    ENTITY option_effectivity; option_type : INTEGER; END_ENTITY;
    ENTITY range_effectivity_list; END_ENTITY;
    ENTITY untyped_option SUBTYPE OF (option_effectivity_without_type); END_ENTITY;
    ENTITY option_effectivity_without_type; END_ENTITY;
    END_SCHEMA;)";

TEST(EffectivityClassifiers, TakeSubtypesForTheirKind) {
    const TestModel model(kSubtypes, "#1=SERIAL_EFFECTIVITY();#2=WEEKLY_EFFECTIVITY();");
    ExpectClassified(model[1], {"", "", kRangeKind, kRangeKind, nullptr});
    ExpectClassified(model[2], {"", "", kDateKind, nullptr, kDateKind});
}

TEST(EffectivityClassifiers, AreFalseForTypesThatOnlyShareTheBeginningOfTheName) {
    const TestModel model(kSubtypes, "#1=RANGE_EFFECTIVITY_LIST();#2=UNTYPED_OPTION();");
    ExpectClassified(model[1], {"", "", nullptr, nullptr, nullptr});
    ExpectClassified(model[2], {"", "", nullptr, nullptr, nullptr});
}

TEST(EffectivityClassifiers, AreFalseForAnOptionTypeThatIsNoText) {
    const TestModel model(kSubtypes, "#1=OPTION_EFFECTIVITY(1);");
    ExpectClassified(model[1], {"", "", nullptr, nullptr, nullptr});
}

TEST(EffectivityClassifiers, AreFalseForAnOptionWhoseTypeLacksTheAttribute) {
    const TestModel model("SCHEMA small; ENTITY option_effectivity; END_ENTITY; END_SCHEMA;",
                          "#1=OPTION_EFFECTIVITY();");
    ExpectClassified(model[1], {"", "", nullptr, nullptr, nullptr});
}

// The attributes alone do not make an effectivity.
constexpr char kLookAlike[] = R"(SCHEMA small;
    ENTITY effectivity; id, option_type, option_id : STRING; END_ENTITY;
    END_SCHEMA;)";

TEST(EffectivityClassifiers, AreFalseForAnotherTypeWithAnOptionType) {
    const TestModel model(kLookAlike,
                          "#1=EFFECTIVITY('E','option_range','O');"
                          "#2=EFFECTIVITY('E','option_date','O');");
    ExpectClassified(model[1], {"", "", nullptr, nullptr, nullptr});
    ExpectClassified(model[2], {"", "", nullptr, nullptr, nullptr});
}

// ---- GetIDEff

constexpr char kGetIDEff[] = "SdaiPrimitiveH GetIDEff ->";

TEST(GetIDEff, GivesTheIdentifierThatBelongsToTheKind) {
    const struct {
        const char* data;
        const char* id;
    } cases[] = {
        {"RANGE_EFFECTIVITY('R1',$,1,5)", "R1"},
        {"DATE_EFFECTIVITY('D1',$,$,$)", "D1"},
        {"OPTION_EFFECTIVITY('E1',$,'option_range','O1',$,$,$,$)", "O1"},
        {"OPTION_EFFECTIVITY('E1',$,$,'O1',$,$,$,$)", "O1"},
        // An empty identifier is an identifier.
        {"RANGE_EFFECTIVITY('',$,1,5)", ""},
        {"OPTION_EFFECTIVITY('E1',$,$,'',$,$,$,$)", ""},
        {"RANGE_EFFECTIVITY($,$,1,5)", "EMPTY VALUE"},
        {"DATE_EFFECTIVITY($,$,$,$)", "EMPTY VALUE"},
        // The id of an option effectivity is not used if the option has none.
        {"OPTION_EFFECTIVITY('E1',$,'option_range',$,$,$,$,$)", "EMPTY VALUE"},
        {"CONFIGURATION_ITEM('C1',$,$)", "EMPTY VALUE"},
        // Of an instance of both kinds, the id takes precedence if it is set.
        {"(EFFECTIVITY_OBJECT('R1',$)OPTION_EFFECTIVITY($,'O1',$,$,$,$)RANGE_EFFECTIVITY(1,5))",
         "R1"},
        {"(DATE_EFFECTIVITY($,$)EFFECTIVITY_OBJECT('D1',$)OPTION_EFFECTIVITY($,'O1',$,$,$,$))",
         "D1"},
        {"(EFFECTIVITY_OBJECT($,$)OPTION_EFFECTIVITY($,'O1',$,$,$,$)RANGE_EFFECTIVITY(1,5))", "O1"},
        {"(EFFECTIVITY_OBJECT('R1',$)OPTION_EFFECTIVITY($,$,$,$,$,$)RANGE_EFFECTIVITY(1,5))", "R1"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.data);
        const TestModel model("cdma", std::string("#1=") + c.data + ";");
        EXPECT_EQ(TextIn(GetIDEff(model[1])), c.id);
        TraceCapture trace;
        EXPECT_EQ(TextIn(GetIDEff(model[1])), c.id);
        EXPECT_THAT(trace.Messages(kGetIDEff),
                    ElementsAre("Effectivity exists : OK ",
                                std::string(">> la valeur retournee est : ") + c.id + " <<"));
    }
}

TEST(GetIDEff, IsEmptyValueForAMissingEffectivity) {
    EXPECT_EQ(TextIn(GetIDEff(SdaiPrimitiveH())), "EMPTY VALUE");
    TraceCapture trace;
    EXPECT_EQ(TextIn(GetIDEff(SdaiPrimitiveH())), "EMPTY VALUE");
    EXPECT_THAT(trace.Messages(kGetIDEff), ElementsAre("KO : Effectivity doesn't exist",
                                                       ">> la valeur retournee est : EMPTY VALUE"
                                                       " <<"));
}

TEST(GetIDEff, IsEmptyValueForAValueThatIsNoInstance) {
    TraceCapture trace;
    EXPECT_EQ(TextIn(GetIDEff("R1"_h)), "EMPTY VALUE");
    EXPECT_THAT(
        trace.Messages(kGetIDEff),
        ElementsAre("Effectivity exists : OK ", ">> la valeur retournee est : EMPTY VALUE <<"));
}

TEST(GetIDEff, IsEmptyValueForAnotherTypeWithIdentifiers) {
    const TestModel model(kLookAlike, "#1=EFFECTIVITY('E','option_range','O');");
    EXPECT_EQ(TextIn(GetIDEff(model[1])), "EMPTY VALUE");
}

// ---- ExtractCFGType

constexpr char kExtractCFGType[] = "SdaiPrimitiveH ExtractCFGType ->";

constexpr const char* kTypes[] = {"range_effectivity", "date_effectivity", "option_range",
                                  "option_date"};

// An effectivity identifier of configuration item CFG1 with this type.
std::string Identifier(const std::string& type) {
    char length[8];
    std::snprintf(length, sizeof length, "%04d", static_cast<int>(type.size()));
    return "S0003ORXS0004CFG1S" + std::string(length) + type;
}

// Checks the result and the messages for one text and a search mode from 1 to 4.
void ExpectExtracted(const std::string& identifier, long mode, bool accepted) {
    SCOPED_TRACE(identifier + ", mode " + std::to_string(mode));
    EXPECT_EQ(IsTrue(ExtractCFGType(Handle(identifier), Handle(mode))), accepted);
    TraceCapture trace;
    const SdaiPrimitiveH result = ExtractCFGType(Handle(identifier), Handle(mode));
    EXPECT_EQ(IsTrue(result), accepted);
    EXPECT_EQ(IsFalse(result), !accepted);
    EXPECT_THAT(
        trace.Messages(kExtractCFGType),
        ElementsAre("The ATTRIBUTE VALUE exists : OK ", " -> InputFlag = " + std::to_string(mode),
                    accepted ? ">> IS A RIGHT TYPE <<" : ">> NOT A RIGHT TYPE <<"));
}

TEST(ExtractCFGType, AcceptsTheTypeOfTheModeAlone) {
    for (long mode = 1; mode <= 4; ++mode) {
        for (long type = 1; type <= 4; ++type) {
            ExpectExtracted(Identifier(kTypes[type - 1]), mode, mode == type);
        }
    }
}

TEST(ExtractCFGType, AcceptsWhatBeginsTheTypeOrGoesOnAfterIt) {
    const struct {
        const char* type;
        std::vector<long> modes;  // those that accept the type
    } cases[] = {
        {"r", {1}},
        {"range", {1}},
        {"range_effectivit", {1}},
        {"range_effectivity_2", {1}},
        {"date", {2}},
        {"date_effectivity ", {2}},
        {"o", {3, 4}},
        {"option_", {3, 4}},
        {"option_range_and_option_date", {3}},
        {"option_dates", {4}},
        // Neither text begins with the other.
        {"", {}},
        {"UNDEFINED", {}},
        {"Range_effectivity", {}},
        {"RANGE_EFFECTIVITY", {}},
        {"effectivity", {}},
        {" range_effectivity", {}},
        {"option_X", {}},
    };
    for (const auto& c : cases) {
        for (long mode = 1; mode <= 4; ++mode) {
            const bool accepted = std::find(c.modes.begin(), c.modes.end(), mode) != c.modes.end();
            ExpectExtracted(Identifier(c.type), mode, accepted);
        }
    }
}

TEST(ExtractCFGType, FindsTheTypeWhereTheLengthsSay) {
    const struct {
        const char* identifier;
        long mode;
        bool accepted;
    } cases[] = {
        // An empty id: the type's length at 14, the type at 18.
        {"S0003ORXS0000S0017range_effectivity", 1, true},
        {"S0003ORXS0000S0016date_effectivity", 2, true},
        // An id that looks like a field.
        {"S0003ORXS0010S0005rangeS0016date_effectivity", 2, true},
        {"S0003ORXS0010S0005rangeS0016date_effectivity", 1, false},
        // The length truncates the type, and the end of the text truncates the length.
        {"S0003ORXS0004CFG1S0005range_effectivity", 1, true},
        {"S0003ORXS0004CFG1S0001oops", 3, true},
        {"S0003ORXS0004CFG1S0002oops", 3, false},
        {"S0003ORXS0004CFG1S9999date_effectivity", 2, true},
        {"S0003ORXS0004CFG1S0012option_date", 4, true},
        // Only the lengths and the type are read.
        {".........0002ab.0004date", 2, true},
        {"S0003ORXX0004CFG1X0011option_date", 4, true},
        {"S0003ORXS0004CFG1S0011option_dateS0001x", 4, true},
        // A length that is not a number counts as 0.
        {"S0003ORXSzeroS0016date_effectivity", 2, true},
        {"S0003ORXS0004CFG1Slongdate_effectivity", 2, false},
        {"S0003ORXS0004CFG1S0000date_effectivity", 2, false},
        // Blanks around a number do not matter.
        {"S0003ORXS   4CFG1S16  date_effectivity", 2, true},
        // Too short to have a type.
        {"", 1, false},
        {"S", 1, false},
        {"S0003ORX", 1, false},
        {"S0003ORXS0004", 1, false},
        {"S0003ORXS0004CFG1", 1, false},
        {"S0003ORXS0004CFG1S", 1, false},
        {"S0003ORXS0004CFG1S0017", 1, false},
        {"S0003ORXS0004CFG1S0017r", 1, true},
        // The id extends past the end.
        {"S0003ORXS9999CFG1S0016date_effectivity", 2, false},
        // Off by one character.
        {"S0003ORXS0003CFG1S0016date_effectivity", 2, false},
        {"S0003ORXS0005CFG1S0016date_effectivity", 2, false},
    };
    for (const auto& c : cases) ExpectExtracted(c.identifier, c.mode, c.accepted);
}

TEST(ExtractCFGType, RefusesOtherModesAtOnce) {
    for (const long mode : {0L, 5L, -1L, 4294967297L, LONG_MAX, LONG_MIN}) {
        for (const char* identifier : {"S0003ORXS0004CFG1S0017range_effectivity", ""}) {
            SCOPED_TRACE(identifier);
            EXPECT_TRUE(IsFalse(ExtractCFGType(Handle(identifier), Handle(mode))));
            TraceCapture trace;
            EXPECT_TRUE(IsFalse(ExtractCFGType(Handle(identifier), Handle(mode))));
            EXPECT_THAT(trace.Messages(kExtractCFGType),
                        ElementsAre("The ATTRIBUTE VALUE exists : OK ",
                                    " -> InputFlag = " + std::to_string(mode),
                                    " >> Invalid search mode << "));
        }
    }
}

TEST(ExtractCFGType, IsFalseForAMissingArgument) {
    const SdaiPrimitiveH unset;
    const SdaiPrimitiveH identifier = Handle(Identifier("range_effectivity"));
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> cases[] = {
        {unset, 1_h}, {identifier, unset}, {unset, unset}, {unset, 9_h}};
    for (const auto& [text, mode] : cases) {
        EXPECT_TRUE(IsFalse(ExtractCFGType(text, mode)));
        TraceCapture trace;
        EXPECT_TRUE(IsFalse(ExtractCFGType(text, mode)));
        EXPECT_THAT(trace.Messages(kExtractCFGType),
                    ElementsAre("KO : At least one of the entities doesn't exist",
                                ">> NOT A RIGHT TYPE <<"));
    }
}

TEST(ExtractCFGType, TakesAValueOfAnotherKindForAnEmptyTextOrModeZero) {
    EXPECT_TRUE(IsFalse(ExtractCFGType(1_h, 1_h)));
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(ExtractCFGType(Handle(Identifier("range_effectivity")), "1"_h)));
    EXPECT_THAT(trace.Messages(kExtractCFGType),
                ElementsAre("The ATTRIBUTE VALUE exists : OK ", " -> InputFlag = 0",
                            " >> Invalid search mode << "));
}

}  // namespace
