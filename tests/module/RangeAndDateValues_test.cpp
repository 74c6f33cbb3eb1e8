// The bounds of effectivities: ranges as text, dates as instances of the target model.

#include <gmock/gmock.h>

#include <climits>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr char kMissing[] = "KO : At least one of the entities doesn't exist";

// A database model with one effectivity, #1.
TestModel Database(const std::string& effectivity) {
    return TestModel("cdma", "#1=" + effectivity + ";");
}

// ---- GetRangeValue

constexpr char kGetRangeValue[] = "SdaiPrimitiveH GetRangeValue ->";

TEST(GetRangeValue, WritesTheBoundAsDecimals) {
    const struct {
        const char* effectivity;
        const char* start;
        const char* end;
    } cases[] = {
        {"RANGE_EFFECTIVITY('R',$,1,25)", "1", "25"},
        {"RANGE_EFFECTIVITY('R',$,0,-5)", "0", "-5"},
        {"RANGE_EFFECTIVITY('R',$,$,7)", "", "7"},
        {"RANGE_EFFECTIVITY('R',$,7,$)", "7", ""},
        {"RANGE_EFFECTIVITY('R',$,$,$)", "", ""},
        {"RANGE_EFFECTIVITY('R',$,9223372036854775807,-9223372036854775807)", "9223372036854775807",
         "-9223372036854775807"},
        // The option's bounds are read whatever its type.
        {"OPTION_EFFECTIVITY('E',$,'option_range','O',3,4,$,$)", "3", "4"},
        {"OPTION_EFFECTIVITY('E',$,'option_date','O',3,4,$,$)", "3", "4"},
        {"OPTION_EFFECTIVITY('E',$,$,'O',3,$,'01012000000000',$)", "3", ""},
        // An instance of both kinds counts as a range, even without bounds.
        {"(EFFECTIVITY_OBJECT('E',$)OPTION_EFFECTIVITY($,$,3,4,$,$)RANGE_EFFECTIVITY(1,$))", "1",
         ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.effectivity);
        const TestModel model = Database(c.effectivity);
        for (const long bound : {1L, 2L}) {
            const std::string value = bound == 1 ? c.start : c.end;
            EXPECT_EQ(TextIn(GetRangeValue(model[1], Handle(bound))), value);
            TraceCapture trace;
            EXPECT_EQ(TextIn(GetRangeValue(model[1], Handle(bound))), value);
            EXPECT_THAT(trace.Messages(kGetRangeValue),
                        ElementsAre("Effectivity && Flag exist : OK ",
                                    " -> InputFlag = " + std::to_string(bound),
                                    ">> la valeur retournee est : " + value + " <<"));
        }
    }
}

TEST(GetRangeValue, IsEmptyForAnotherBoundBeforeItLooksAtTheEffectivity) {
    for (const char* effectivity :
         {"RANGE_EFFECTIVITY('R',$,1,5)", "CONFIGURATION_ITEM('C',$,$)"}) {
        const TestModel model = Database(effectivity);
        for (const long bound : {0L, 3L, -1L, 4294967297L, LONG_MAX, LONG_MIN}) {
            EXPECT_EQ(TextIn(GetRangeValue(model[1], Handle(bound))), "");
            TraceCapture trace;
            EXPECT_EQ(TextIn(GetRangeValue(model[1], Handle(bound))), "");
            EXPECT_THAT(trace.Messages(kGetRangeValue),
                        ElementsAre("Effectivity && Flag exist : OK ",
                                    " -> InputFlag = " + std::to_string(bound),
                                    "      Input Flag UNKNOWN "));
        }
    }
}

TEST(GetRangeValue, IsEmptyForAnotherKindOfEffectivity) {
    for (const char* effectivity :
         {"DATE_EFFECTIVITY('D',$,'01012000000000',$)", "CONFIGURATION_ITEM('C',$,$)"}) {
        SCOPED_TRACE(effectivity);
        const TestModel model = Database(effectivity);
        EXPECT_EQ(TextIn(GetRangeValue(model[1], 1_h)), "");
        TraceCapture trace;
        EXPECT_EQ(TextIn(GetRangeValue(model[1], 2_h)), "");
        EXPECT_THAT(trace.Messages(kGetRangeValue),
                    ElementsAre("Effectivity && Flag exist : OK ", " -> InputFlag = 2",
                                "la valeur retournee est : "));
    }
}

TEST(GetRangeValue, IsEmptyForAMissingArgument) {
    const TestModel model = Database("RANGE_EFFECTIVITY('R',$,1,5)");
    const SdaiPrimitiveH unset;
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> cases[] = {
        {unset, 1_h}, {model[1], unset}, {unset, unset}, {unset, 3_h}};
    for (const auto& [effectivity, bound] : cases) {
        EXPECT_EQ(TextIn(GetRangeValue(effectivity, bound)), "");
        TraceCapture trace;
        EXPECT_EQ(TextIn(GetRangeValue(effectivity, bound)), "");
        EXPECT_THAT(trace.Messages(kGetRangeValue),
                    ElementsAre(kMissing, ">> la valeur retournee est :  <<"));
    }
}

TEST(GetRangeValue, TakesValuesOfOtherKindsForNoEffectivityAndNoBound) {
    const TestModel model = Database("RANGE_EFFECTIVITY('R',$,1,5)");
    EXPECT_EQ(TextIn(GetRangeValue("R"_h, 1_h)), "");
    TraceCapture trace;
    EXPECT_EQ(TextIn(GetRangeValue(model[1], "1"_h)), "");
    EXPECT_THAT(trace.Messages(kGetRangeValue),
                ElementsAre("Effectivity && Flag exist : OK ", " -> InputFlag = 0",
                            "      Input Flag UNKNOWN "));
}

// ---- IsInfiniteRank, IsInfiniteDate

// An end without a bound is open; so is that of a missing effectivity.
void ExpectInfinite(SdaiPrimitiveH (*function)(const SdaiPrimitiveH&), const char* label,
                    const SdaiPrimitiveH& effectivity, bool infinite) {
    EXPECT_EQ(IsTrue(function(effectivity)), infinite);
    TraceCapture trace;
    const SdaiPrimitiveH result = function(effectivity);
    EXPECT_EQ(IsTrue(result), infinite);
    EXPECT_EQ(IsFalse(result), !infinite);
    std::vector<std::string> messages;
    if (effectivity.exists()) messages.emplace_back("Effectivity exists : OK ");
    messages.emplace_back(infinite ? "Valeur Retournee :TRUE" : "Valeur Retournee :FALSE");
    EXPECT_THAT(trace.Messages(label), ElementsAreArray(messages));
}

constexpr char kIsInfiniteRank[] = "SdaiPrimitiveH IsInfiniteRank ->";

TEST(IsInfiniteRank, IsFalseOnlyForAnEndAboveZero) {
    const struct {
        const char* effectivity;
        bool infinite;
    } cases[] = {
        {"RANGE_EFFECTIVITY('R',$,1,$)", true},
        {"RANGE_EFFECTIVITY('R',$,1,0)", true},
        {"RANGE_EFFECTIVITY('R',$,1,-1)", true},
        {"RANGE_EFFECTIVITY('R',$,1,1)", false},
        {"RANGE_EFFECTIVITY('R',$,9,1)", false},
        {"RANGE_EFFECTIVITY('R',$,1,9223372036854775807)", false},
        {"OPTION_EFFECTIVITY('E',$,'option_range','O',1,$,$,$)", true},
        {"OPTION_EFFECTIVITY('E',$,'option_range','O',1,0,$,$)", true},
        {"OPTION_EFFECTIVITY('E',$,'option_range','O',1,-7,$,$)", true},
        {"OPTION_EFFECTIVITY('E',$,'option_range','O',1,7,$,$)", false},
        {"OPTION_EFFECTIVITY('E',$,'option_date','O',1,7,$,$)", false},
        {"DATE_EFFECTIVITY('D',$,$,'01012000000000')", true},
        {"CONFIGURATION_ITEM('C',$,$)", true},
        // For an instance of both kinds, either end counts.
        {"(EFFECTIVITY_OBJECT($,$)OPTION_EFFECTIVITY($,$,1,0,$,$)RANGE_EFFECTIVITY(1,5))", false},
        {"(EFFECTIVITY_OBJECT($,$)OPTION_EFFECTIVITY($,$,1,5,$,$)RANGE_EFFECTIVITY(1,0))", false},
        {"(EFFECTIVITY_OBJECT($,$)OPTION_EFFECTIVITY($,$,1,0,$,$)RANGE_EFFECTIVITY(1,$))", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.effectivity);
        const TestModel model = Database(c.effectivity);
        ExpectInfinite(IsInfiniteRank, kIsInfiniteRank, model[1], c.infinite);
    }
}

TEST(IsInfiniteRank, IsTrueForAMissingEffectivityAndForNone) {
    ExpectInfinite(IsInfiniteRank, kIsInfiniteRank, SdaiPrimitiveH(), true);
    ExpectInfinite(IsInfiniteRank, kIsInfiniteRank, 5_h, true);
}

constexpr char kIsInfiniteDate[] = "SdaiPrimitiveH IsInfiniteDate ->";

TEST(IsInfiniteDate, IsFalseOnlyForAnEndOtherThanTheOpenDate) {
    const struct {
        const char* effectivity;
        bool infinite;
    } cases[] = {
        {"DATE_EFFECTIVITY('D',$,'01012000000000',$)", true},
        {"DATE_EFFECTIVITY('D',$,$,'00000000000000')", true},
        {"DATE_EFFECTIVITY('D',$,$,'01012000000000')", false},
        {"DATE_EFFECTIVITY('D',$,$,'00000000000001')", false},
        // Any other text is an end.
        {"DATE_EFFECTIVITY('D',$,$,'')", false},
        {"DATE_EFFECTIVITY('D',$,$,'0000000000000')", false},
        {"DATE_EFFECTIVITY('D',$,$,'000000000000000')", false},
        {"DATE_EFFECTIVITY('D',$,$,' 00000000000000')", false},
        {"OPTION_EFFECTIVITY('E',$,'option_date','O',$,$,$,$)", true},
        {"OPTION_EFFECTIVITY('E',$,'option_date','O',$,$,$,'00000000000000')", true},
        {"OPTION_EFFECTIVITY('E',$,'option_date','O',$,$,$,'12312099235959')", false},
        {"OPTION_EFFECTIVITY('E',$,'option_range','O',$,$,$,'12312099235959')", false},
        {"RANGE_EFFECTIVITY('R',$,1,5)", true},
        {"CONFIGURATION_ITEM('C',$,$)", true},
        {"(DATE_EFFECTIVITY($,'01012000000000')EFFECTIVITY_OBJECT($,$)"
         "OPTION_EFFECTIVITY($,$,$,$,$,'00000000000000'))",
         false},
        {"(DATE_EFFECTIVITY($,$)EFFECTIVITY_OBJECT($,$)"
         "OPTION_EFFECTIVITY($,$,$,$,$,'01012000000000'))",
         false},
        {"(DATE_EFFECTIVITY($,'00000000000000')EFFECTIVITY_OBJECT($,$)"
         "OPTION_EFFECTIVITY($,$,$,$,$,$))",
         true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.effectivity);
        const TestModel model = Database(c.effectivity);
        ExpectInfinite(IsInfiniteDate, kIsInfiniteDate, model[1], c.infinite);
    }
}

TEST(IsInfiniteDate, IsTrueForAMissingEffectivityAndForNone) {
    ExpectInfinite(IsInfiniteDate, kIsInfiniteDate, SdaiPrimitiveH(), true);
    ExpectInfinite(IsInfiniteDate, kIsInfiniteDate, "01012000000000"_h, true);
}

// The attributes alone do not make an effectivity.
constexpr char kLookAlike[] = R"(SCHEMA small;
    ENTITY effectivity;
      start_range, end_range, option_start_range, option_end_range : INTEGER;
      start_date, end_date, option_start_date, option_end_date : STRING;
    END_ENTITY;
    END_SCHEMA;)";
constexpr char kLookAlikeData[] =
    "#1=EFFECTIVITY(1,5,1,5,'01022003040506','12312099235959','01022003040506',"
    "'12312099235959');";

TEST(GetRangeValue, IsEmptyForAnotherTypeWithBounds) {
    const TestModel model(kLookAlike, kLookAlikeData);
    EXPECT_EQ(TextIn(GetRangeValue(model[1], 1_h)), "");
    EXPECT_EQ(TextIn(GetRangeValue(model[1], 2_h)), "");
}

TEST(IsInfiniteRank, IsTrueForAnotherTypeWithBounds) {
    const TestModel model(kLookAlike, kLookAlikeData);
    ExpectInfinite(IsInfiniteRank, kIsInfiniteRank, model[1], true);
}

TEST(IsInfiniteDate, IsTrueForAnotherTypeWithDates) {
    const TestModel model(kLookAlike, kLookAlikeData);
    ExpectInfinite(IsInfiniteDate, kIsInfiniteDate, model[1], true);
}

// ---- BuildDatedEff

constexpr char kBuildDatedEff[] = "SdaiPrimitiveH BuildDatedEff ->";

// The fields of a date string, in the order in which they are traced.
struct Date {
    long year, month, day, hour, minute, second;
    bool operator==(const Date&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Date& date) {
    return stream << date.year << '-' << date.month << '-' << date.day << ' ' << date.hour << ':'
                  << date.minute << ':' << date.second;
}

constexpr Date kZeros{0, 0, 0, 0, 0, 0};

// Reads a date from its instances; each component must have its own type.
Date DateIn(const SdaiPrimitiveH& dateAndTime) {
    const SdaiPrimitiveH date = dateAndTime.GetAttr("DATE_COMPONENT");
    const SdaiPrimitiveH time = dateAndTime.GetAttr("TIME_COMPONENT");
    const double second = RealIn(time.GetAttr("SECOND_COMPONENT"));
    EXPECT_EQ(second, static_cast<double>(static_cast<long>(second)));
    return {IntegerIn(date.GetAttr("YEAR_COMPONENT")),   IntegerIn(date.GetAttr("MONTH_COMPONENT")),
            IntegerIn(date.GetAttr("DAY_COMPONENT")),    IntegerIn(time.GetAttr("HOUR_COMPONENT")),
            IntegerIn(time.GetAttr("MINUTE_COMPONENT")), static_cast<long>(second)};
}

std::vector<std::string> TraceOf(const std::string& text, const Date& date) {
    return {"Depiautage de la date: [" + text + "]",  "Annee  : " + std::to_string(date.year),
            "Mois   : " + std::to_string(date.month), "Jour   : " + std::to_string(date.day),
            "Heure  : " + std::to_string(date.hour),  "Minute : " + std::to_string(date.minute),
            "Seconde: " + std::to_string(date.second)};
}

// A target model with one instance, the anchor #40.
TestModel Target(const std::string& schema = "CONFIG_CONTROL_DESIGN") {
    return TestModel(schema, "#40=DIRECTION('anchor',(0.,0.,1.));");
}

// The types of a model's instances, in the order of creation.
std::vector<std::string> TypesIn(const TestModel& model) {
    std::vector<std::string> types;
    for (const SdaiEntityInstance* instance : model.Instances()) {
        types.emplace_back(instance->GetInstanceType()->Name().View());
    }
    return types;
}

std::string TypeOf(const SdaiPrimitiveH& instance) {
    return std::string(instance.UnderlyingTypeName());
}

TEST(BuildDatedEff, CutsTheDateWithTheMonthFirst) {
    const struct {
        const char* text;
        Date date;
    } cases[] = {
        {"12312099235959", {2099, 12, 31, 23, 59, 59}},
        {"01022003040506", {2003, 1, 2, 4, 5, 6}},
        // Decimal, never octal.
        {"08090010080908", {10, 8, 9, 8, 9, 8}},
        {"00000000000000", kZeros},
        // No field is checked.
        {"13451234997788", {1234, 13, 45, 99, 77, 88}},
        {"99999999999999", {9999, 99, 99, 99, 99, 99}},
        // Missing fields are 0, excess characters are ignored.
        {"", kZeros},
        {"12", {0, 12, 0, 0, 0, 0}},
        {"1231", {0, 12, 31, 0, 0, 0}},
        {"12312099", {2099, 12, 31, 0, 0, 0}},
        {"1231209923", {2099, 12, 31, 23, 0, 0}},
        {"123120992359", {2099, 12, 31, 23, 59, 0}},
        {"123120992359591", {2099, 12, 31, 23, 59, 59}},
        // If a text ends within a field, its digits are read.
        {"1", {0, 1, 0, 0, 0, 0}},
        {"123", {0, 12, 3, 0, 0, 0}},
        {"12312", {2, 12, 31, 0, 0, 0}},
        {"123120", {20, 12, 31, 0, 0, 0}},
        {"1231209", {209, 12, 31, 0, 0, 0}},
        {"123120992", {2099, 12, 31, 2, 0, 0}},
        {"12312099235", {2099, 12, 31, 23, 5, 0}},
        {"1231209923595", {2099, 12, 31, 23, 59, 5}},
        {"12312099235959 or so", {2099, 12, 31, 23, 59, 59}},
        // The leading digits of a field count.
        {"1x2y20z9ab5c6:", {20, 1, 2, 0, 5, 6}},
        {"x1y2z999u3v4w5", kZeros},
        {"no date at all", kZeros},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const TestModel target = Target();
        EXPECT_EQ(DateIn(BuildDatedEff(c.text, &target.Model())), c.date);
        TraceCapture trace;
        EXPECT_EQ(DateIn(BuildDatedEff(c.text, &target.Model())), c.date);
        EXPECT_THAT(trace.Messages(kBuildDatedEff), ElementsAreArray(TraceOf(c.text, c.date)));
    }
}

TEST(BuildDatedEff, CreatesItsInstancesInOrderInEverySchema) {
    for (const char* schema :
         {"CONFIG_CONTROL_DESIGN", "AUTOMOTIVE_DESIGN", "PDM_SCHEMA",
          "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF",
          "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF"}) {
        SCOPED_TRACE(schema);
        const TestModel target = Target(schema);
        const SdaiPrimitiveH result = BuildDatedEff("12312099235959", &target.Model());
        EXPECT_THAT(TypesIn(target), ElementsAre("DIRECTION", "COORDINATED_UNIVERSAL_TIME_OFFSET",
                                                 "LOCAL_TIME", "CALENDAR_DATE", "DATE_AND_TIME"));
        // Numbered after the largest number.
        EXPECT_EQ(TypeOf(target[41]), "COORDINATED_UNIVERSAL_TIME_OFFSET");
        EXPECT_EQ(TypeOf(target[42]), "LOCAL_TIME");
        EXPECT_EQ(TypeOf(target[43]), "CALENDAR_DATE");
        EXPECT_EQ(InstanceIn(result), InstanceIn(target[44]));
        EXPECT_EQ(InstanceIn(result.GetAttr("DATE_COMPONENT")), InstanceIn(target[43]));
        EXPECT_EQ(InstanceIn(result.GetAttr("TIME_COMPONENT")), InstanceIn(target[42]));
        EXPECT_EQ(InstanceIn(target[42].GetAttr("ZONE")), InstanceIn(target[41]));
    }
}

TEST(BuildDatedEff, LeavesTheTimeOffsetEmpty) {
    const TestModel target = Target();
    ASSERT_NE(BuildDatedEff("12312099235959", &target.Model()), nullptr);
    for (const char* attribute : {"HOUR_OFFSET", "MINUTE_OFFSET", "SENSE"}) {
        EXPECT_FALSE(target[41].TestAttr(attribute)) << attribute;
    }
}

TEST(BuildDatedEff, SharesNothingBetweenCalls) {
    const TestModel target = Target();
    SdaiEntityInstance* first = BuildDatedEff("12312099235959", &target.Model());
    SdaiEntityInstance* second = BuildDatedEff("12312099235959", &target.Model());
    EXPECT_NE(first, second);
    EXPECT_EQ(target.Instances().size(), 9U);
    EXPECT_EQ(InstanceIn(SdaiPrimitiveH(second).GetAttr("DATE_COMPONENT")), InstanceIn(target[47]));
    EXPECT_EQ(InstanceIn(SdaiPrimitiveH(second).GetAttr("TIME_COMPONENT")), InstanceIn(target[46]));
    EXPECT_EQ(InstanceIn(target[46].GetAttr("ZONE")), InstanceIn(target[45]));
    EXPECT_EQ(DateIn(first), DateIn(second));
}

TEST(BuildDatedEff, IsNullWithoutAModelThatHasTheTypes) {
    EXPECT_EQ(BuildDatedEff("12312099235959", nullptr), nullptr);
    const TestModel database = Database("DATE_EFFECTIVITY('D',$,$,$)");
    EXPECT_EQ(BuildDatedEff("12312099235959", &database.Model()), nullptr);
    EXPECT_EQ(database.Instances().size(), 1U);
}

TEST(BuildDatedEff, CreatesNothingWhereOneTypeIsMissing) {
    const struct {
        std::string name;
        std::string attributes;
    } types[] = {{"coordinated_universal_time_offset", "hour_offset : INTEGER;"},
                 {"local_time",
                  "hour_component, minute_component : INTEGER; second_component : REAL;"
                  " zone : coordinated_universal_time_offset;"},
                 {"calendar_date", "year_component, day_component, month_component : INTEGER;"},
                 {"date_and_time", "date_component : calendar_date; time_component : local_time;"}};
    for (const auto& missing : types) {
        SCOPED_TRACE(missing.name);
        std::string schema = "SCHEMA small;";
        for (const auto& type : types) {
            if (type.name == missing.name) continue;
            schema += "ENTITY " + type.name + "; " + type.attributes + " END_ENTITY;";
        }
        // An attribute of the missing type gets any type.
        const std::string use = " : " + missing.name + ";";
        if (const std::size_t at = schema.find(use); at != std::string::npos) {
            schema.replace(at, use.size(), " : GENERIC;");
        }
        schema += "END_SCHEMA;";
        const TestModel target(schema);
        EXPECT_EQ(BuildDatedEff("12312099235959", &target.Model()), nullptr);
        EXPECT_EQ(target.Instances().size(), 0U);
        // Nor with an instance of the type that is missing.
        const TestModel undeclared(schema, "#1=" + missing.name + "($);");
        EXPECT_EQ(BuildDatedEff("12312099235959", &undeclared.Model()), nullptr);
        EXPECT_EQ(undeclared.Instances().size(), 1U);
    }
}

// The types of instances that the schema does not declare are not used to create dates.
TEST(BuildDatedEff, CreatesNothingOfTypesThatAreNotDeclared) {
    const TestModel target("cdma", R"(
        #1=COORDINATED_UNIVERSAL_TIME_OFFSET(0,$,.AHEAD.);
        #2=LOCAL_TIME(1,2,3.,#1);
        #3=CALENDAR_DATE(2001,2,3);
        #4=DATE_AND_TIME(#3,#2);
        #5=DATE_EFFECTIVITY('D',$,'01022003040506','12312099235959');)");
    EXPECT_EQ(BuildDatedEff("12312099235959", &target.Model()), nullptr);
    EXPECT_TRUE(IsUnset(GetStartDate(target[5], target[4])));
    EXPECT_TRUE(IsUnset(GetEndDate(target[5], target[4])));
    EXPECT_EQ(target.Instances().size(), 5U);
}

// ---- GetStartDate, GetEndDate

constexpr char kGetStartDate[] = "SdaiPrimitiveH GetStartDate ->";
constexpr char kGetEndDate[] = "SdaiPrimitiveH GetEndDate ->";
constexpr char kBothExist[] = "Effectivity && EntityModel exist : OK ";

using DateFunction = SdaiPrimitiveH (*)(const SdaiPrimitiveH&, const SdaiPrimitiveH&);

// Expects the date of the text, in the model of the anchor.
void ExpectBuilt(DateFunction function, const char* label, const char* effectivity,
                 const std::string& text, const Date& date) {
    SCOPED_TRACE(effectivity);
    const TestModel database = Database(effectivity);
    const TestModel target = Target();
    EXPECT_EQ(DateIn(function(database[1], target[40])), date);
    EXPECT_EQ(target.Instances().size(), 5U);
    TraceCapture trace;
    const SdaiPrimitiveH result = function(database[1], target[40]);
    EXPECT_EQ(InstanceIn(result), InstanceIn(target[48]));
    EXPECT_EQ(TypeOf(result), "DATE_AND_TIME");
    EXPECT_EQ(DateIn(result), date);
    EXPECT_EQ(database.Instances().size(), 1U);
    EXPECT_THAT(trace.Messages(label), ElementsAre(kBothExist));
    EXPECT_THAT(trace.Messages(kBuildDatedEff), ElementsAreArray(TraceOf(text, date)));
}

TEST(GetStartDate, BuildsTheStart) {
    const auto expect = [](const char* effectivity, const std::string& text, const Date& date) {
        ExpectBuilt(GetStartDate, kGetStartDate, effectivity, text, date);
    };
    expect("DATE_EFFECTIVITY('D',$,'01022003040506','12312099235959')", "01022003040506",
           {2003, 1, 2, 4, 5, 6});
    // The option's date is read whatever its type.
    expect("OPTION_EFFECTIVITY('E',$,'option_date','O',$,$,'01022003040506','12312099235959')",
           "01022003040506", {2003, 1, 2, 4, 5, 6});
    expect("OPTION_EFFECTIVITY('E',$,'option_range','O',1,5,'01022003040506',$)", "01022003040506",
           {2003, 1, 2, 4, 5, 6});
    expect(
        "(DATE_EFFECTIVITY('01022003040506',$)EFFECTIVITY_OBJECT($,$)"
        "OPTION_EFFECTIVITY($,$,$,$,'12312099235959',$))",
        "01022003040506", {2003, 1, 2, 4, 5, 6});
}

TEST(GetStartDate, BuildsADateOfZerosWithoutAStart) {
    for (const char* effectivity :
         {"DATE_EFFECTIVITY('D',$,$,'12312099235959')", "DATE_EFFECTIVITY('D',$,'',$)",
          "OPTION_EFFECTIVITY('E',$,'option_date','O',$,$,$,'12312099235959')",
          "RANGE_EFFECTIVITY('R',$,1,5)", "CONFIGURATION_ITEM('C',$,$)",
          "(DATE_EFFECTIVITY($,$)EFFECTIVITY_OBJECT($,$)"
          "OPTION_EFFECTIVITY($,$,$,$,'12312099235959',$))"}) {
        ExpectBuilt(GetStartDate, kGetStartDate, effectivity, "", kZeros);
    }
}

TEST(GetStartDate, BuildsADateOfZerosForAnotherTypeWithDates) {
    const TestModel database(kLookAlike, kLookAlikeData);
    const TestModel target = Target();
    EXPECT_EQ(DateIn(GetStartDate(database[1], target[40])), kZeros);
}

TEST(GetEndDate, BuildsTheEnd) {
    const auto expect = [](const char* effectivity, const std::string& text, const Date& date) {
        ExpectBuilt(GetEndDate, kGetEndDate, effectivity, text, date);
    };
    expect("DATE_EFFECTIVITY('D',$,'01022003040506','12312099235959')", "12312099235959",
           {2099, 12, 31, 23, 59, 59});
    expect("OPTION_EFFECTIVITY('E',$,'option_date','O',$,$,'01022003040506','12312099235959')",
           "12312099235959", {2099, 12, 31, 23, 59, 59});
    expect("OPTION_EFFECTIVITY('E',$,'option_range','O',1,5,$,'12312099235959')", "12312099235959",
           {2099, 12, 31, 23, 59, 59});
    // The open date is set, and so is an empty text.
    expect("DATE_EFFECTIVITY('D',$,$,'00000000000000')", "00000000000000", kZeros);
    expect("DATE_EFFECTIVITY('D',$,$,'')", "", kZeros);
}

// For every kind of effectivity.
TEST(GetEndDate, IsNullAndCreatesNothingWithoutAnEnd) {
    for (const char* effectivity :
         {"DATE_EFFECTIVITY('D',$,'01022003040506',$)",
          "OPTION_EFFECTIVITY('E',$,'option_date','O',1,5,'01022003040506',$)",
          "RANGE_EFFECTIVITY('R',$,1,5)", "CONFIGURATION_ITEM('C',$,$)"}) {
        SCOPED_TRACE(effectivity);
        const TestModel database = Database(effectivity);
        const TestModel target = Target();
        EXPECT_TRUE(IsUnset(GetEndDate(database[1], target[40])));
        TraceCapture trace;
        EXPECT_TRUE(IsUnset(GetEndDate(database[1], target[40])));
        EXPECT_EQ(target.Instances().size(), 1U);
        EXPECT_THAT(trace.Messages(kGetEndDate),
                    ElementsAre(kBothExist, "No END VALUE : return NULL"));
        EXPECT_THAT(trace.Messages(kBuildDatedEff), IsEmpty());
    }
}

class DateFunctions : public testing::Test {
  protected:
    const TestModel database =
        Database("DATE_EFFECTIVITY('D',$,'01022003040506','12312099235959')");
    const TestModel target = Target();
    const struct {
        DateFunction function;
        const char* label;
    } functions[2] = {{GetStartDate, kGetStartDate}, {GetEndDate, kGetEndDate}};
};

TEST_F(DateFunctions, AreNullForAMissingArgument) {
    const SdaiPrimitiveH unset;
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> cases[] = {
        {unset, target[40]}, {database[1], unset}, {unset, unset}};
    for (const auto& [function, label] : functions) {
        for (const auto& [effectivity, anchor] : cases) {
            EXPECT_TRUE(IsUnset(function(effectivity, anchor)));
            TraceCapture trace;
            EXPECT_TRUE(IsUnset(function(effectivity, anchor)));
            EXPECT_THAT(trace.Messages(label), ElementsAre(kMissing));
            EXPECT_THAT(trace.Messages(kBuildDatedEff), IsEmpty());
        }
    }
    EXPECT_EQ(target.Instances().size(), 1U);
    EXPECT_EQ(database.Instances().size(), 1U);
}

TEST_F(DateFunctions, AreNullWhereTheAnchorHasNoModelForDates) {
    for (const auto& [function, label] : functions) {
        EXPECT_TRUE(IsUnset(function(database[1], "anchor"_h)));
        EXPECT_TRUE(IsUnset(function(database[1], database[1])));
    }
    EXPECT_EQ(database.Instances().size(), 1U);
}

TEST_F(DateFunctions, MayBuildIntoTheModelOfTheEffectivity) {
    const TestModel both(
        "SCHEMA small;"
        "ENTITY date_effectivity; start_date, end_date : STRING; END_ENTITY;"
        "ENTITY coordinated_universal_time_offset; hour_offset : INTEGER; END_ENTITY;"
        "ENTITY local_time; hour_component, minute_component : INTEGER; second_component : REAL;"
        " zone : coordinated_universal_time_offset; END_ENTITY;"
        "ENTITY calendar_date; year_component, day_component, month_component : INTEGER;"
        " END_ENTITY;"
        "ENTITY date_and_time; date_component : calendar_date; time_component : local_time;"
        " END_ENTITY;"
        "END_SCHEMA;",
        "#1=DATE_EFFECTIVITY('01022003040506','12312099235959');");
    EXPECT_EQ(DateIn(GetStartDate(both[1], both[1])), (Date{2003, 1, 2, 4, 5, 6}));
    EXPECT_EQ(DateIn(GetEndDate(both[1], both[1])), (Date{2099, 12, 31, 23, 59, 59}));
    EXPECT_EQ(both.Instances().size(), 9U);
}

}  // namespace
