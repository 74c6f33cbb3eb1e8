// The trace of the functions; tracing has no cost while it is off, and changes no result.

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <limits>
#include <string>

#include "Allocations.h"
#include "ExchangeText.h"
#include "ORXExUtilities.h"
#include "Orx.h"
#include "ParsedModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

const SdaiPrimitiveH kMissing;

// A part with a link, a configuration and effectivities; an assembly link with its shapes.
const ParsedModel& Database() {
    static const ParsedModel data("cdma", R"(
        #1=PART_OBJECT('ROOT','A',1,'t',$,(#3),$,$,$,$);
        #2=PART_OBJECT('LEAF','A',1,'t',$,$,$,$,$,$);
        #3=PART_LINK('l',$,#2,$,$,$,$);
        #4=CONFIGURATION_ITEM('C','',#1);
        #5=RANGE_EFFECTIVITY('R',(#3),1,5);
        #6=DATE_EFFECTIVITY('D',(#3),'01012000000000','00000000000000');
        #7=MODEL_OBJECT('Wheel','3D',7,'A','','V5');
        #8=CDM_DOCUMENT('T','N','O','F');)");
    return data;
}

const ParsedModel& Step() {
    static const ParsedModel data("AUTOMOTIVE_DESIGN", R"(
        #1=PRODUCT_DEFINITION('root',$,$,$);
        #2=PRODUCT_DEFINITION('leaf',$,$,$);
        #3=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#1,#2,$);
        #4=PRODUCT_DEFINITION_SHAPE('',$,#3);
        #5=CARTESIAN_POINT('',(1.,2.,3.));
        #6=DIRECTION('',(0.,0.,1.));
        #7=DIRECTION('',(1.,0.,0.));
        #8=AXIS2_PLACEMENT_3D('',#5,#6,#7);
        #9=AXIS2_PLACEMENT_3D('',#5,#6,#7);
        #10=SHAPE_REPRESENTATION('',(#8),$);
        #11=SHAPE_REPRESENTATION('',(#9),$);
        #12=PRODUCT_DEFINITION_SHAPE('',$,#1);
        #13=PRODUCT_DEFINITION_SHAPE('',$,#2);
        #14=SHAPE_DEFINITION_REPRESENTATION(#12,#10);
        #15=SHAPE_DEFINITION_REPRESENTATION(#13,#11);
        #16=ITEM_DEFINED_TRANSFORMATION('',$,#8,#9);
        #17=(REPRESENTATION_RELATIONSHIP('',$,#10,#11)
             REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#16)
             SHAPE_REPRESENTATION_RELATIONSHIP());
        #18=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#17,#4);
        #20=DOCUMENT_FILE('wheel.model','',$,$,'','');
        #21=PROPERTY_DEFINITION('',$,#20);
        #22=PROPERTY_DEFINITION_REPRESENTATION(#21,$);
        #23=CONFIGURATION_ITEM('','','S0003ORXS0004CFG1S0002H7',$,$);)");
    return data;
}

}  // namespace

// ---- Lines

TEST(Trace, LaysALineOutAsIndentationLabelBlankAndMessage) {
    TraceCapture trace;
    GetMemberCount(Step()[5].GetAttr("COORDINATES"));
    EXPECT_THAT(trace.Lines(), ElementsAre("SdaiPrimitiveH GetMemberCount -> {",
                                           "   SdaiPrimitiveH GetMemberCount -> Taille3",
                                           "SdaiPrimitiveH GetMemberCount -> }"));
}

TEST(Trace, KeepsTheBlanksThatAMessageBeginsAndEndsWith) {
    TraceCapture trace;
    IsRangeType(Database()[5]);
    EXPECT_THAT(trace.Lines(),
                ElementsAre("SdaiPrimitiveH IsRangeType -> {",
                            "   SdaiPrimitiveH IsRangeType -> Effectivity exists : OK ",
                            "   SdaiPrimitiveH IsRangeType ->  -> Range Effectivity Type ",
                            "   SdaiPrimitiveH IsRangeType -> >> Effectivity IS range type <<",
                            "SdaiPrimitiveH IsRangeType -> }"));
}

TEST(Trace, KeepsTheLabelsAsTheyAre) {
    // With and without a blank before the arrow, and one without the type of the result.
    TraceCapture trace;
    IsSame0(kMissing, kMissing);
    IsSameIDT(kMissing, kMissing);
    EXPECT_THAT(trace.Lines(),
                ElementsAre("SdaiPrimitiveH IsSame0-> {",
                            "   SdaiPrimitiveH IsSame0-> IsSame0 retourne sdaiLFALSE",
                            "SdaiPrimitiveH IsSame0-> }", "IsSameIDT-> {",
                            "   IsSameIDT-> IsSameIDT retourne sdaiLFALSE", "IsSameIDT-> }"));
}

TEST(Trace, ShowsACallThatHasNoMessage) {
    TraceCapture trace;
    DecodeKey(kMissing, kMissing);
    EXPECT_THAT(trace.Lines(),
                ElementsAre("SdaiPrimitiveH DecodeKey -> {", "SdaiPrimitiveH DecodeKey -> }"));
}

TEST(Trace, IndentsTheCallsOfAFunction) {
    TraceCapture trace;
    DecodeNARVOV5("_ORX_S0002AB"_h, 1_h);
    EXPECT_THAT(
        trace.Lines(),
        ElementsAre("SdaiPrimitiveH DecodeNARVOV5 -> {",
                    "   SdaiPrimitiveH DecodeNARVOV5 -> everything ok : go ahead",
                    "   SdaiPrimitiveH IsEncodedNARVOV5 -> {",
                    "      SdaiPrimitiveH IsEncodedNARVOV5 -> the input value exists",
                    "      SdaiPrimitiveH ORXTrunc -> {",
                    "         SdaiPrimitiveH ORXTrunc -> TheLongString_ORX_S0002AB",
                    "         SdaiPrimitiveH ORXTrunc -> TheNbOfChar5",
                    "         SdaiPrimitiveH ORXTrunc -> on test la longueur",
                    "         SdaiPrimitiveH ORXTrunc -> on lie la valeur",
                    "         SdaiPrimitiveH ORXTrunc -> Valeur de retour: >_ORX_",
                    "      SdaiPrimitiveH ORXTrunc -> }",
                    "      SdaiPrimitiveH IsEncodedNARVOV5 ->  Valeur retournee : TRUE",
                    "   SdaiPrimitiveH IsEncodedNARVOV5 -> }", "   SdaiPrimitiveH DecodeKey -> {",
                    "      SdaiPrimitiveH DecodeKey -> TheEncodedKey = S0002AB",
                    "      SdaiPrimitiveH DecodeKey -> ThePlacement = 1",
                    "      SdaiPrimitiveH DecodeKey -> CurrPlacement = 1",
                    "      SdaiPrimitiveH DecodeKey -> Type a lire: S",
                    "      SdaiPrimitiveH DecodeKey -> Index de debut : 5",
                    "      SdaiPrimitiveH DecodeKey -> Longueur a lire: 2",
                    "      SdaiPrimitiveH DecodeKey -> on a trouve a priori le bon placement",
                    "      SdaiPrimitiveH DecodeKey -> Lecture de la chaine de caracteres: [AB]",
                    "   SdaiPrimitiveH DecodeKey -> }", "SdaiPrimitiveH DecodeNARVOV5 -> }"));
}

TEST(Trace, IndentsBelowTheScopesOfTheHost) {
    TraceCapture trace;
    {
        const KORPSNTrace outer("rule ->", 12, 0);
        const KORPSNTrace inner("step ->", 12, 0);
        IsaNARVOModel(kMissing);
    }
    EXPECT_THAT(
        trace.Lines(),
        ElementsAre("rule -> {", "   step -> {", "      SdaiPrimitiveH IsaNARVOModel -> {",
                    "         SdaiPrimitiveH IsaNARVOModel -> IsaNARVOModel retourne: FALSE",
                    "      SdaiPrimitiveH IsaNARVOModel -> }", "   step -> }", "rule -> }"));
}

TEST(Trace, StartsEachCallAtTheSameIndentation) {
    // However the previous call ended.
    const struct {
        const char* label;
        std::function<void()> call;
    } kCalls[] = {
        {"SdaiPrimitiveH DecodeKey ->", [] { DecodeKey("S0000"_h, 0_h); }},
        {"SdaiPrimitiveH GetRangeValue ->", [] { GetRangeValue(Database()[5], 3_h); }},
        {"SdaiPrimitiveH IsPartConfigurated ->", [] { IsPartConfigurated(Database()[1]); }},
        {"SdaiPrimitiveH IsUsedByPart ->", [] { IsUsedByPart(Database()[2], Database()[5]); }},
        {"SdaiPrimitiveH DecodeEFF ->", [] { DecodeEFF("S0005rangeS0001R"_h, 2_h); }},
        {"SdaiPrimitiveH GetDate ->", [] { GetDate(kMissing); }},
        {"SdaiPrimitiveH GetRepFromProperty->", [] { GetRepFromProperty(Step()[22]); }},
        {"SdaiPrimitiveH GetAbsPlacement->", [] { GetAbsPlacement(Step()[3]); }},
        {"SdaiPrimitiveH IsModelDocLinked ->", [] { IsModelDocLinked(Database()[3]); }},
        {"SdaiPrimitiveH IsVersion ->", [] { IsVersion(Database()[1], 2_h); }},
    };
    TraceCapture trace;
    for (const auto& [label, call] : kCalls) {
        const std::size_t before = trace.Lines().size();
        call();
        const std::vector<std::string> lines = trace.Lines();
        ASSERT_GE(lines.size(), before + 2) << label;
        EXPECT_EQ(lines[before], std::string(label) + " {");
        EXPECT_EQ(lines.back(), std::string(label) + " }");
    }
}

TEST(Trace, KeepsTheTextsAroundAnEmptyValue) {
    TraceCapture trace;
    ORX_GetDocName(kMissing, 1_h);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH ORX_GetDocName ->"),
                ElementsAre("le nom du document retourne: ><"));
}

TEST(Trace, PrintsRealsAsAStreamDoes) {
    TraceCapture trace;
    Minus(0.123456789_h);
    Minus(12345678.9_h);
    Minus(2.0_h);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH Minus ->"),
                ElementsAre("valeur d''entree 0.123457", "valeur de sortie -> -0.123457",
                            "valeur d''entree 1.23457e+07", "valeur de sortie -> -1.23457e+07",
                            "valeur d''entree 2", "valeur de sortie -> -2"));
}

TEST(Trace, PrintsIntegersInFull) {
    TraceCapture trace;
    GetValue("9223372036854775807"_h);
    GetValue("-9223372036854775808"_h);
    EXPECT_THAT(
        trace.Messages("SdaiPrimitiveH GetValue ->"),
        ElementsAre("String exists : OK ", ">> la valeur retournee est : 9223372036854775807 <<",
                    "String exists : OK ", ">> la valeur retournee est : -9223372036854775808 <<"));
}

TEST(Trace, PrintsLogicals) {
    TraceCapture trace;
    IsInfiniteDate(Database()[6]);
    IsInfiniteRank(Database()[5]);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH IsInfiniteDate ->"),
                ElementsAre("Effectivity exists : OK ", "Valeur Retournee :TRUE"));
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH IsInfiniteRank ->"),
                ElementsAre("Effectivity exists : OK ", "Valeur Retournee :FALSE"));
}

TEST(Trace, PrintsATextOfAnyLength) {
    const std::string text(100000, 'x');
    TraceCapture trace;
    ReadMandatory(Handle(text), kMissing);
    EXPECT_THAT(
        trace.Messages("SdaiPrimitiveH ReadMandatory->"),
        ElementsAre("valeur lue :" + text + " -> " + text, "valeur retourne: >" + text + "<"));
}

TEST(Trace, PrintsATextUpToANulCharacter) {
    // A line contains a text up to the first NUL.
    TraceCapture trace;
    ReadMandatory(Handle(std::string_view("ab\0cd", 5)), kMissing);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH ReadMandatory->"),
                ElementsAre("valeur lue :ab -> ab", "valeur retourne: >ab<"));
}

TEST(Trace, WritesTheBytesOfIso8859) {
    TraceCapture trace;
    ORX_GetDocName("Port\xE9 1"_h, 1_h);
    EXPECT_THAT(
        trace.Messages("SdaiPrimitiveH ORX_GetDocName ->"),
        ElementsAre("nom rentre Port\xE9 1", "Conversion NARVO name -> file name",
                    "Nom de document en base: Port\xE9 1", "On remplace les blancs par des \xB1",
                    "Nom de model traite : Port\xE9\xB1"
                    "1",
                    "le nom du document retourne: >Port\xE9\xB1"
                    "1<"));
}

// ---- Warnings

TEST(Trace, WritesAWarningAsLinesThatFollowEachOther) {
    TraceCapture trace;
    ReadMandatory(""_h, "NAME"_h);
    ReadPartVersion("A.12"_h);
    EXPECT_THAT(
        trace.Lines(),
        ElementsAre("SdaiPrimitiveH ReadMandatory-> {",
                    "   SdaiPrimitiveH ReadMandatory-> valeur lue : -> ",
                    "   SdaiPrimitiveH ReadMandatory-> ORX import mapping WARNING:",
                    "   SdaiPrimitiveH ReadMandatory->    The attribute [NAME] is valuated by ORX",
                    "   SdaiPrimitiveH ReadMandatory-> valeur retourne: >ORX<",
                    "SdaiPrimitiveH ReadMandatory-> }",  //
                    "SdaiPrimitiveH ReadPartVersion -> {",
                    "   SdaiPrimitiveH ReadPartVersion -> ReadPartVersion - A.12 -> A.12",
                    "   SdaiPrimitiveH ReadPartVersion -> ORX import mapping WARNING:",
                    "   SdaiPrimitiveH ReadPartVersion ->    input value   >A.12<",
                    "   SdaiPrimitiveH ReadPartVersion ->    substitued by >A<",
                    "   SdaiPrimitiveH ReadPartVersion -> ",
                    "   SdaiPrimitiveH ReadPartVersion -> ReadPartVersion retourne: >A<",
                    "SdaiPrimitiveH ReadPartVersion -> }"));
}

TEST(Trace, WritesNoWarningWhenOff) {
    TraceCapture trace(0);
    EXPECT_EQ(TextIn(ReadMandatory(""_h, "NAME"_h)), "ORX");
    EXPECT_EQ(TextIn(ReadPartVersion("A.12"_h)), "A");
    EXPECT_THAT(trace.Lines(), IsEmpty());
}

// ---- Levels

TEST(Trace, WritesNothingBelowLevel12) {
    for (const int level : {std::numeric_limits<int>::min(), -12, 0, 1, 11}) {
        TraceCapture trace(level);
        GetMemberCount(kMissing);
        DecodeNARVOV5("_ORX_S0002AB"_h, 1_h);
        EXPECT_FALSE(KORPSNTrace::LevelIsActive(12)) << level;
        EXPECT_THAT(trace.Lines(), IsEmpty()) << level;
    }
}

TEST(Trace, WritesAtLevel12AndAbove) {
    for (const int level : {12, 13, 100, std::numeric_limits<int>::max()}) {
        TraceCapture trace(level);
        GetMemberCount(kMissing);
        EXPECT_TRUE(KORPSNTrace::LevelIsActive(12)) << level;
        EXPECT_EQ(trace.Lines().size(), 3U) << level;
    }
}

TEST(Trace, IsSwitchedOnAndOffBetweenCalls) {
    GetMemberCount(kMissing);
    TraceCapture trace;
    Minus(kMissing);
    KORPSNTrace::Configure(0, nullptr);
    IsAnAssembly(kMissing);
    EXPECT_THAT(trace.Lines(), ElementsAre("SdaiPrimitiveH Minus -> {",
                                           "   SdaiPrimitiveH Minus -> valeur de sortie -> 0",
                                           "SdaiPrimitiveH Minus -> }"));
}

TEST(Trace, WritesNothingOnceItIsSwitchedOffInsideAScope) {
    TraceCapture trace;
    testing::internal::CaptureStderr();
    {
        const KORPSNTrace scope("rule ->", 12, 0);
        KORPSNTrace::Configure(0, nullptr);
        GetMemberCount(kMissing);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(trace.Lines(), ElementsAre("rule -> {"));
}

// ---- Results

namespace {

// Calls of functions that read, decide and build. Results are shown with their kinds.
struct Call {
    const char* text;
    std::function<SdaiPrimitiveH()> call;
    const char* result;
};

const Call kCalls[] = {
    {"IsEncodedKey", [] { return IsEncodedKey("S0002ABI000212S0000"_h); }, "LOGICAL .T."},
    {"DecodeKey", [] { return DecodeKey("S0002ABI000212S0000"_h, 2_h); }, "INTEGER 12"},
    {"DecodeKey of a real", [] { return DecodeKey("R00031.5"_h, 1_h); }, "REAL 1.5"},
    {"DecodeKey of no place", [] { return DecodeKey("R00031.5"_h, 0_h); }, " $"},
    {"ConcatModelAtb", [] { return ConcatModelAtb(Database()[7]); },
     "STRING 'S00023DI00017S0001AS0000'"},
    {"ConcatPartAtb", [] { return ConcatPartAtb(Database()[1]); },
     "STRING 'S0004ROOTS0001AI00011S0001t'"},
    {"ConcatDocAtb", [] { return ConcatDocAtb(Database()[8]); },
     "STRING 'S0001TS0001NS0001OS0001F'"},
    {"GetInst", [] { return GetInst(Step()[21], "DEFINITION"_h); }, "DOCUMENT_FILE #20"},
    {"GetItem", [] { return GetItem(2_h, Step()[16]); }, "AXIS2_PLACEMENT_3D #9"},
    {"GetMemberCount", [] { return GetMemberCount(Step()[10].GetAttr("ITEMS")); }, "INTEGER 1"},
    {"GetRepFromProperty", [] { return GetRepFromProperty(Step()[22]); }, "DOCUMENT_FILE #20"},
    {"IsFree", [] { return IsFree(Step()[1], "DESCRIPTION"_h); }, "LOGICAL .T."},
    {"PRDDFN_IsIn", [] { return PRDDFN_IsIn(Step()[8], Step()[10]); }, "LOGICAL .T."},
    {"ReadMandatory", [] { return ReadMandatory(""_h, "NAME"_h); }, "STRING 'ORX'"},
    {"ORXTrunc", [] { return ORXTrunc("a long enough text"_h, 6_h); }, "STRING 'a long'"},
    {"IsRangeType", [] { return IsRangeType(Database()[5]); }, "LOGICAL .T."},
    {"GetRangeValue", [] { return GetRangeValue(Database()[5], 2_h); }, "STRING '5'"},
    {"IsInfiniteDate", [] { return IsInfiniteDate(Database()[6]); }, "LOGICAL .T."},
    {"IsUsedByPart", [] { return IsUsedByPart(Database()[1], Database()[5]); }, "LOGICAL .T."},
    {"ORXIdEff", [] { return ORXIdEff(Database()[1], Database()[6]); },
     "STRING 'S0003ORXS0001CS0016date_effectivity'"},
    {"DecodeEFF", [] { return DecodeEFF("S0005rangeS0003R12"_h, 1_h); }, "STRING 'R12'"},
    {"HasAORXValue", [] { return HasAORXValue(Step()[23]); }, "LOGICAL .T."},
    {"QuantifyRef", [] { return QuantifyRef(Database()[1], Database()[2]); }, "REAL 1."},
    {"IsSameNAUO", [] { return IsSameNAUO(Step()[3], Step()[18]); }, "LOGICAL .T."},
    {"IsaNARVORepProperty", [] { return IsaNARVORepProperty(Step()[22]); }, "LOGICAL .T."},
    {"ORX_GetModelName", [] { return ORX_GetModelName("wheel.model"_h, 0_h); }, "STRING 'wheel'"},
    {"EncodeNARVOV5Doc", [] { return EncodeNARVOV5Doc(Database()[8]); },
     "STRING '_ORX_S0001TS0001NS0001OS0001F'"},
    {"ReadPartVersion", [] { return ReadPartVersion("ABCD"_h); }, "STRING 'A'"},
    {"Minus", [] { return Minus(2.5_h); }, "REAL -2.5"},
};

std::string Show(const SdaiPrimitiveH& handle) {
    const std::string kind(handle.UnderlyingTypeName());
    std::string text = kind + " ";
    if (!handle.exists()) {
        text += "$";
    } else if (const SdaiEntityInstance* instance = handle) {
        text += "#" + std::to_string(instance->GetInstanceNameId());
    } else if (kind == "STRING") {
        exchange::AppendString(text, TextIn(handle));
    } else if (kind == "REAL") {
        exchange::AppendReal(text, RealIn(handle));
    } else if (kind == "INTEGER") {
        text += std::to_string(IntegerIn(handle));
    } else {
        exchange::AppendLogical(text, static_cast<const SdaiLogical&>(handle));
    }
    return text;
}

void ExpectResults(const char* state) {
    for (const auto& [text, call, result] : kCalls)
        EXPECT_EQ(Show(call()), result) << text << state;
}

}  // namespace

TEST(Trace, ChangesNoResult) {
    ExpectResults(" without trace");
    TraceCapture trace;
    ExpectResults(" with trace");
    EXPECT_THAT(trace.Lines(), Not(IsEmpty()));
}

TEST(Trace, ChangesNoResultWhenItsFileCannotBeOpened) {
    const TemporaryDirectory directory;
    for (const std::string& path : {directory / "no such directory/trace", directory.Path()}) {
        EXPECT_FALSE(KORPSNTrace::Configure(12, path.c_str())) << path;
        EXPECT_FALSE(KORPSNTrace::LevelIsActive(12)) << path;
        ExpectResults(" with a trace file that cannot be opened");
    }
    KORPSNTrace::Configure(0, nullptr);
}

TEST(Trace, ChangesNoResultWhenItsFileCannotBeWritten) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
    EXPECT_TRUE(KORPSNTrace::Configure(12, "/dev/full"));
    ExpectResults(" with a full trace file");
    KORPSNTrace::Configure(0, nullptr);
}

// ---- Cost

TEST(Trace, AllocatesNothingWhenOff) {
    // Functions that allocate nothing themselves, with texts that the trace would have to copy.
    const SdaiPrimitiveH part = Database()[1];
    const SdaiPrimitiveH leaf = Database()[2];
    const SdaiPrimitiveH item = Database()[4];
    const SdaiPrimitiveH range = Database()[5];
    const SdaiPrimitiveH date = Database()[6];
    const SdaiPrimitiveH definition = Step()[1];
    const SdaiPrimitiveH link = Step()[3];
    const SdaiPrimitiveH point = Step()[5];
    const SdaiPrimitiveH placement = Step()[8];
    const SdaiPrimitiveH shape = Step()[10];
    const SdaiPrimitiveH context = Step()[18];
    const SdaiPrimitiveH configuration = Step()[23];
    const SdaiPrimitiveH attribute = "REPRESENTED_PRODUCT_RELATION"_h;
    const SdaiPrimitiveH key = "S0002ABI000212S0000R00031.5"_h;
    const SdaiPrimitiveH effectivity = "S0005rangeS0016an effectivity 1"_h;
    const SdaiPrimitiveH fileName = "a file name of some length.model"_h;
    const SdaiPrimitiveH one = 1_h;
    const SdaiPrimitiveH coordinates = point.GetAttr("COORDINATES");
    const struct {
        const char* text;
        std::function<SdaiPrimitiveH()> call;
    } kTests[] = {
        {"IsEncodedKey", [&] { return IsEncodedKey(key); }},
        {"DecodeKey", [&] { return DecodeKey(key, one); }},
        {"GetMemberCount", [&] { return GetMemberCount(coordinates); }},
        {"GetInst", [&] { return GetInst(context, attribute); }},
        {"IsFree", [&] { return IsFree(context, attribute); }},
        {"PRDDFN_IsIn", [&] { return PRDDFN_IsIn(placement, shape); }},
        {"IsRangeOrDateEffectivity", [&] { return IsRangeOrDateEffectivity(date); }},
        {"IsRangeType", [&] { return IsRangeType(range); }},
        {"IsDateType", [&] { return IsDateType(date); }},
        {"IsInfiniteRank", [&] { return IsInfiniteRank(range); }},
        {"IsInfiniteDate", [&] { return IsInfiniteDate(date); }},
        {"IsPartInCfgitm", [&] { return IsPartInCfgitm(part, item); }},
        {"ExtractEFFType", [&] { return ExtractEFFType(effectivity, one); }},
        {"HasAORXValue", [&] { return HasAORXValue(configuration); }},
        {"IsAORXCfg", [&] { return IsAORXCfg(configuration); }},
        {"IsAnAssembly", [&] { return IsAnAssembly(part); }},
        {"IsInAssembly", [&] { return IsInAssembly(part, leaf); }},
        {"QuantifyRef", [&] { return QuantifyRef(part, leaf); }},
        {"IsModelDocLinked", [&] { return IsModelDocLinked(part); }},
        {"IsSame0", [&] { return IsSame0(definition, link); }},
        {"IsSameNAUO", [&] { return IsSameNAUO(link, context); }},
        {"IsaNARVOModel", [&] { return IsaNARVOModel(fileName); }},
        {"IsaNARVOV5Doc", [&] { return IsaNARVOV5Doc(fileName); }},
        {"IsEncodedNARVOV5", [&] { return IsEncodedNARVOV5(fileName); }},
        {"Minus", [&] { return Minus(one); }},
    };
    ASSERT_FALSE(KORPSNTrace::LevelIsActive(12));
    for (const auto& [text, call] : kTests) {
        const AllocationCounter allocations;
        call();
        EXPECT_EQ(allocations.Count(), 0) << text;
    }
    // Allocations of the module are counted, too.
    const AllocationCounter allocations;
    ORXTrunc(fileName, 20_h);
    EXPECT_GT(allocations.Count(), 0);
}

// ---- The environment

namespace {

constexpr char kExpression[] = "ORXTrunc('Port\\X\\E9',5)";
constexpr char kResult[] = "'Port\\X\\E9'\n";
constexpr char kTrace[] =
    "SdaiPrimitiveH ORXTrunc -> {\n"
    "   SdaiPrimitiveH ORXTrunc -> TheLongStringPort\xE9\n"
    "   SdaiPrimitiveH ORXTrunc -> TheNbOfChar5\n"
    "   SdaiPrimitiveH ORXTrunc -> on test la longueur\n"
    "   SdaiPrimitiveH ORXTrunc -> on lie la valeur\n"
    "   SdaiPrimitiveH ORXTrunc -> Valeur de retour: >Port\xE9\n"
    "SdaiPrimitiveH ORXTrunc -> }\n";

OrxResult RunTraced(const std::string& level, const std::string& file) {
    return RunOrx({"call", kExpression}, "", "", {"KOR_TRACE=" + level, "KOR_TRACE_FILE=" + file});
}

}  // namespace

TEST(TraceVariables, SwitchTheTraceOnIntoAFile) {
    for (const char* level : {"12", "99"}) {
        const TemporaryDirectory directory;
        const OrxResult run = RunTraced(level, directory / "trace");
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out, kResult);
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(ReadFile(directory / "trace"), kTrace);
    }
}

TEST(TraceVariables, SwitchTheTraceOnIntoTheStandardErrorStream) {
    const OrxResult run = RunTraced("12", "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, kResult);
    EXPECT_EQ(run.err, kTrace);
}

TEST(TraceVariables, LeaveTheTraceOffBelowLevel12) {
    const TemporaryDirectory directory;
    for (const char* level : {"", "0", "1", "11", "-12"}) {
        const OrxResult run = RunTraced(level, directory / "trace");
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out, kResult);
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(ReadFile(directory / "trace"), "") << level;
        EXPECT_EQ(RunTraced(level, "").err, "") << level;
    }
}

TEST(TraceVariables, ChangeNoResultWhenTheFileCannotBeWritten) {
    const TemporaryDirectory directory;
    for (const std::string& file :
         {directory / "no such directory/trace", directory.Path(), std::string("/dev/full")}) {
        const OrxResult run = RunTraced("12", file);
        EXPECT_EQ(run.status, 0) << file;
        EXPECT_EQ(run.out, kResult) << file;
    }
}
