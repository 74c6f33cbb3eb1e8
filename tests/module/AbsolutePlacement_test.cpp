// GetAbsPlacement: the placement of a component in its parent.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>
#include <vector>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Gt;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

using Reals = std::vector<double>;

MATCHER_P(IsNearly, expected, "") {
    if (arg.size() != expected.size()) return false;
    for (std::size_t i = 0; i < arg.size(); ++i) {
        if (!(std::abs(arg[i] - expected[i]) <= 1e-12)) return false;
    }
    return true;
}

// The differences between the assemblies of these tests. By default, the placement #30 is among the
// items of the component's shape #10, the placement #20 among those of the parent's shape #8.
struct Wiring {
    std::string rep1 = "#10";
    std::string rep2 = "#8";
    std::string operation = "ITEM_DEFINED_TRANSFORMATION('','',#30,#20)";
    std::string parentItems = "#20";
    std::string componentItems = "#30";
    std::string parentPlacementName = {};
    std::string componentPlacementName = {};
};

// The component #2 in the parent #1; #3 is the link.
std::string Link(const std::string& relating = "#1", const std::string& related = "#2") {
    return R"(
        #1=PRODUCT_DEFINITION('','',$,$);
        #2=PRODUCT_DEFINITION('','',$,$);
        #3=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',)" +
           relating + "," + related + R"(,$);
        #4=PRODUCT_DEFINITION_SHAPE('','',#1);
        #5=PRODUCT_DEFINITION_SHAPE('','',#2);
        #6=PRODUCT_DEFINITION_SHAPE('','',#3);)";
}

constexpr char kParentShape[] = "#7=SHAPE_DEFINITION_REPRESENTATION(#4,#8);";
constexpr char kComponentShape[] = "#9=SHAPE_DEFINITION_REPRESENTATION(#5,#10);";
constexpr char kContext[] = "#13=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#12,#6);";

// The shapes and their relationship #12. Placement #20 takes x to y, y to z and z to x; #30, a
// quarter turn about z, takes x to y and y to -x. #40 and #50 are placements equal to them.
std::string Relationship(const Wiring& wiring = {}) {
    return R"(
        #8=SHAPE_REPRESENTATION('',()" +
           wiring.parentItems + R"(),$);
        #10=SHAPE_REPRESENTATION('',()" +
           wiring.componentItems + R"(),$);
        #11=)" +
           wiring.operation + R"(;
        #12=(REPRESENTATION_RELATIONSHIP('','',)" +
           wiring.rep1 + "," + wiring.rep2 + R"()
            REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#11)
            SHAPE_REPRESENTATION_RELATIONSHIP());
        #14=SHAPE_REPRESENTATION('',(#20,#30),$);
        #20=AXIS2_PLACEMENT_3D(')" +
           wiring.parentPlacementName + R"(',#21,#61,#62);
        #21=CARTESIAN_POINT('',(4.,6.,8.));
        #30=AXIS2_PLACEMENT_3D(')" +
           wiring.componentPlacementName + R"(',#31,#63,#62);
        #31=CARTESIAN_POINT('',(1.,2.,3.));
        #40=AXIS2_PLACEMENT_3D('',#21,#61,#62);
        #50=AXIS2_PLACEMENT_3D('',#31,#63,#62);
        #61=DIRECTION('',(1.,0.,0.));
        #62=DIRECTION('',(0.,1.,0.));
        #63=DIRECTION('',(0.,0.,1.));)";
}

std::string Assembly(const Wiring& wiring = {}) {
    return Link() + kParentShape + kComponentShape + kContext + Relationship(wiring);
}

// Placement #30 in #20: the inverse of the quarter turn takes x to -y and y to x, then #20 takes -y
// to -z, x to y and z to x. The inverse is #20 in #30.
const Reals kPlaced{0, 0, -1, 0, 1, 0, 1, 0, 0, 3, 4, 5};
const Reals kInverse{0, 0, 1, 0, 1, 0, -1, 0, 0, -3, -4, -5};
const Reals kIdentity{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};

const char* const kLabel = "SdaiPrimitiveH GetAbsPlacement->";
const char* const kBegin = " CALCUL POSITIONNEMENT ...";
const char* const kSchema = "Nom du schema: AUTOMOTIVE_DESIGN";
const char* const kWild = "Cannot understand the STEP WILD WEB - 1";
const char* const kNoRelating = "SHAPE_REPRESENTATION of the RELATING part NOT FOUND";
const char* const kNoRelated = "SHAPE_REPRESENTATION of the RELATED part NOT FOUND";

// The last lines of a call that found no placement.
const std::vector<std::string> kDefault{"Use of default placement",
                                        "Affichage du positionnement:",
                                        "1  0  0",
                                        "0  1  0",
                                        "0  0  1",
                                        "0  0  0"};

std::vector<std::string> ThenDefault(std::vector<std::string> lines) {
    lines.insert(lines.end(), kDefault.begin(), kDefault.end());
    return lines;
}

// The results of one call.
struct Call {
    explicit Call(const SdaiPrimitiveH& link) {
        testing::internal::CaptureStderr();
        placement = RealsIn(GetAbsPlacement(link));
        errors = testing::internal::GetCapturedStderr();

        const TraceCapture trace;
        testing::internal::CaptureStderr();
        EXPECT_EQ(RealsIn(GetAbsPlacement(link)), placement) << "traced";
        EXPECT_EQ(testing::internal::GetCapturedStderr(), errors) << "traced";
        messages = trace.Messages(kLabel);
        lines = trace.Lines();
    }

    Reals placement;
    std::string errors;                 // standard error output
    std::vector<std::string> messages;  // from the trace
    std::vector<std::string> lines;
};

// As Call, for the link of an assembly.
Call CallFor(const std::string& data, const std::string& schema = "AUTOMOTIVE_DESIGN") {
    const TestModel model(schema, data);
    return Call(model[3]);
}

}  // namespace

// ---- How the two placements may be assigned to the two shapes

namespace {

struct WiringCase {
    const char* description;
    Wiring wiring;
    Reals placement;  // kIdentity if the wiring is rejected
};

void PrintTo(const WiringCase& wiring, std::ostream* stream) { *stream << wiring.description; }

const char* const kFromParent = "ITEM_DEFINED_TRANSFORMATION('','',#20,#30)";
const char* const kFromComponent = "ITEM_DEFINED_TRANSFORMATION('','',#30,#20)";
const char* const kMarker = "DEFAULT_PLACEMENT";

const WiringCase kWirings[] = {
    // In any order, the placement among the component's items is expressed in the other one.
    {"ComponentFirst", {}, kPlaced},
    {"ParentFirst", {.rep1 = "#8", .rep2 = "#10", .operation = kFromParent}, kPlaced},
    {"ShapesSwapped", {.rep1 = "#8", .rep2 = "#10"}, kPlaced},
    {"ItemsSwapped", {.operation = kFromParent}, kPlaced},
    {"AmongOtherItems", {.parentItems = "#40,#50,#20", .componentItems = "#40,#30,#50"}, kPlaced},
    {"FurtherTypesOfOperator",
     {.operation = "(FUNCTIONALLY_DEFINED_TRANSFORMATION('','')"
                   "ITEM_DEFINED_TRANSFORMATION('','',#30,#20))"},
     kPlaced},
    // If both shapes contain both placements, the first one is taken for the parent's.
    {"BothItemsInBothShapesParentFirst",
     {.operation = kFromParent, .parentItems = "#20,#30", .componentItems = "#20,#30"},
     kPlaced},
    {"BothItemsInBothShapesComponentFirst",
     {.operation = kFromComponent, .parentItems = "#20,#30", .componentItems = "#20,#30"},
     kInverse},
    {"SecondItemInBothShapes", {.componentItems = "#20,#30"}, kPlaced},
    {"FirstItemInBothShapes", {.operation = kFromParent, .componentItems = "#20,#30"}, kPlaced},

    {"OnlyParentItemFound", {.componentItems = ""}, kIdentity},
    {"OnlyComponentItemFound", {.parentItems = ""}, kIdentity},
    {"OnlyParentItemFoundAsFirst", {.operation = kFromParent, .componentItems = ""}, kIdentity},
    {"OnlyComponentItemFoundAsFirst", {.operation = kFromParent, .parentItems = ""}, kIdentity},
    {"BothItemsInParent", {.parentItems = "#20,#30", .componentItems = ""}, kIdentity},
    {"BothItemsInComponent", {.parentItems = "", .componentItems = "#20,#30"}, kIdentity},
    {"OneItemForBoth", {.operation = "ITEM_DEFINED_TRANSFORMATION('','',#20,#20)"}, kIdentity},
    {"EqualItems", {.parentItems = "#40", .componentItems = "#50"}, kIdentity},
    {"NoItems", {.operation = "ITEM_DEFINED_TRANSFORMATION('','',$,$)"}, kIdentity},

    // The first placement is the origin of its shape and need not be listed.
    {"DefaultOfParent",
     {.operation = kFromParent, .parentItems = "", .parentPlacementName = kMarker},
     kPlaced},
    {"DefaultOfComponent",
     {.operation = kFromComponent, .componentItems = "", .componentPlacementName = kMarker},
     kPlaced},
    {"DefaultWithShapesSwapped",
     {.rep1 = "#8",
      .rep2 = "#10",
      .operation = kFromComponent,
      .componentItems = "",
      .componentPlacementName = kMarker},
     kPlaced},
    // Only the second placement decides, and the component's items are searched first.
    {"DefaultWithSecondItemInBothShapes",
     {.operation = kFromComponent, .componentItems = "#20,#30", .componentPlacementName = kMarker},
     kInverse},
    {"DefaultWithBothItemsInParent",
     {.operation = kFromComponent,
      .parentItems = "#20,#30",
      .componentItems = "",
      .componentPlacementName = kMarker},
     kPlaced},
    {"DefaultWithBothItemsInComponent",
     {.operation = kFromComponent,
      .parentItems = "",
      .componentItems = "#20,#30",
      .componentPlacementName = kMarker},
     kInverse},
    {"DefaultWithoutSecondItem",
     {.operation = kFromComponent, .parentItems = "", .componentPlacementName = kMarker},
     kIdentity},

    // Only with that name, and only for the first placement.
    {"DefaultAsSecondItem",
     {.operation = kFromComponent, .componentItems = "", .parentPlacementName = kMarker},
     kIdentity},
    {"DefaultInLowerCase",
     {.operation = kFromComponent,
      .componentItems = "",
      .componentPlacementName = "default_placement"},
     kIdentity},
    {"DefaultWithMoreBehind",
     {.operation = kFromComponent,
      .componentItems = "",
      .componentPlacementName = "DEFAULT_PLACEMENT "},
     kIdentity},
    {"DefaultCutShort",
     {.operation = kFromComponent,
      .componentItems = "",
      .componentPlacementName = "DEFAULT_PLACEMEN"},
     kIdentity},

    {"BothShapesTheParents", {.rep1 = "#8", .rep2 = "#8"}, kIdentity},
    {"BothShapesTheComponents", {.rep1 = "#10", .rep2 = "#10"}, kIdentity},
    {"FirstShapeAnother", {.rep1 = "#14"}, kIdentity},
    {"SecondShapeAnother", {.rep2 = "#14"}, kIdentity},
    {"SwappedFirstShapeAnother", {.rep1 = "#14", .rep2 = "#10"}, kIdentity},
    {"SwappedSecondShapeAnother", {.rep1 = "#8", .rep2 = "#14"}, kIdentity},
    {"NoShapes", {.rep1 = "$", .rep2 = "$"}, kIdentity},
};

class GetAbsPlacementOf : public testing::TestWithParam<WiringCase> {};

INSTANTIATE_TEST_SUITE_P(Wirings, GetAbsPlacementOf, testing::ValuesIn(kWirings),
                         [](const auto& wiring) { return wiring.param.description; });

}  // namespace

TEST_P(GetAbsPlacementOf, PlacesTheComponentInTheParent) {
    const Call call = CallFor(Assembly(GetParam().wiring));
    EXPECT_THAT(call.placement, IsNearly(GetParam().placement));
    EXPECT_EQ(call.errors, "");
    if (GetParam().placement == kIdentity) {
        ASSERT_THAT(call.messages, SizeIs(Gt(7U)));
        const std::vector<std::string> end(call.messages.end() - 7, call.messages.end());
        EXPECT_THAT(end, ElementsAreArray(ThenDefault({kWild})));
    } else {
        EXPECT_THAT(call.messages, Not(Contains(kWild)));
        EXPECT_THAT(call.messages, Not(Contains("Use of default placement")));
    }
}

TEST_P(GetAbsPlacementOf, SaysWhetherTheFirstPlacementIsTheDefaultOne) {
    const Wiring& wiring = GetParam().wiring;
    const Call call = CallFor(Assembly(wiring));
    // Shapes that do not match are rejected earlier.
    const bool shapesFit = (wiring.rep1 == "#10" && wiring.rep2 == "#8") ||
                           (wiring.rep1 == "#8" && wiring.rep2 == "#10");
    const bool isDefault = wiring.operation == kFromParent
                               ? wiring.parentPlacementName == kMarker
                               : wiring.componentPlacementName == kMarker;
    EXPECT_THAT(call.messages,
                Contains(" > Placement RZ < ").Times(shapesFit && isDefault ? 1 : 0));
    EXPECT_THAT(call.messages,
                Contains(" > External Placement < ").Times(shapesFit && !isDefault ? 1 : 0));
}

// ---- Schemas

namespace {

class ExchangeSchema : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    Schemas, ExchangeSchema,
    testing::Values("CONFIG_CONTROL_DESIGN", "AUTOMOTIVE_DESIGN", "PDM_SCHEMA",
                    "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_"
                    "MIM_LF",
                    "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF"),
    [](const auto& schema) { return std::string(schema.param); });

}  // namespace

TEST_P(ExchangeSchema, IsNoObstacleToAPlacement) {
    const Call call = CallFor(Assembly(), GetParam());
    EXPECT_THAT(call.placement, IsNearly(kPlaced));
    EXPECT_THAT(call.messages, Contains(std::string("Nom du schema: ") + GetParam()));
}

// ---- The trace

TEST(GetAbsPlacement, TellsTheStepsOfAnItemDefinedTransformation) {
    // Both placements have the same rotation.
    const Call call = CallFor(Link() + kParentShape + kComponentShape + kContext + R"(
        #8=SHAPE_REPRESENTATION('',(#20),$);
        #10=SHAPE_REPRESENTATION('',(#30),$);
        #11=ITEM_DEFINED_TRANSFORMATION('','',#30,#20);
        #12=(REPRESENTATION_RELATIONSHIP('','',#10,#8)
            REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#11)
            SHAPE_REPRESENTATION_RELATIONSHIP());
        #20=AXIS2_PLACEMENT_3D('',#21,#22,#23);
        #21=CARTESIAN_POINT('',(4.,6.,8.5));
        #22=DIRECTION('',(0.,0.,1.));
        #23=DIRECTION('',(1.,0.,0.));
        #30=AXIS2_PLACEMENT_3D('',#31,#22,#23);
        #31=CARTESIAN_POINT('',(1.,2.,3.));)");
    EXPECT_THAT(
        call.messages,
        ElementsAre(
            kBegin, kSchema, "Absolute placement computation",
            "GetAbsPlacement - ITEM_DEFINED_TRANSFORMATION ", " -> RELATING_PRODUCT_DEFINITION OK ",
            " -> RELATED_PRODUCT_DEFINITION OK ", " -> SHAPE_DEFINITION_REPRESENTATION OK ",
            " - CurrShapeDefRep : #7=SHAPE_DEFINITION_REPRESENTATION",
            " - CurrP_D_S : #4=PRODUCT_DEFINITION_SHAPE", " - CurrProdDef : #1=PRODUCT_DEFINITION",
            " - CurrShapeDefRep : #9=SHAPE_DEFINITION_REPRESENTATION",
            " - CurrP_D_S : #5=PRODUCT_DEFINITION_SHAPE", " - CurrProdDef : #2=PRODUCT_DEFINITION",
            "RELATING SHAPE_REPRESENTATION recupere", "RELATED SHAPE_REPRESENTATION recupere",
            StartsWith(" - RelatingShapeRep : #8"), StartsWith(" - RelatedShapeRep : #10"),
            StartsWith(" - ShapeRep1 : #10"), StartsWith(" - ShapeRep2 : #8"),
            StartsWith(" - A2P3D_1 : #30"), StartsWith(" - A2P3D_2 : #20"),
            " > External Placement < ", "Affichage du positionnement:", "1  0  0", "0  1  0",
            "0  0  1", "3  4  5.5"));
    EXPECT_THAT(call.lines, Contains("   void ComputeABSPlacement -> {").Times(1));
}

// A definition that is set but not an instance is compared, too, and has no type name. The search
// of the contexts compares it with the link, the search of the shapes with both sides.
TEST(GetAbsPlacement, AsksIsSame0ForDefinitionsThatAreNoInstances) {
    const TestModel model("AUTOMOTIVE_DESIGN",
                          "#70=PRODUCT_DEFINITION_SHAPE('','','text');"
                          "#71=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,#70);"
                          "#72=SHAPE_DEFINITION_REPRESENTATION(#70,$);" +
                              Assembly());
    const TraceCapture trace;
    GetAbsPlacement(model[3]);
    const std::vector<std::string> messages = trace.Messages("SdaiPrimitiveH IsSame0->");
    const std::vector<std::string> none{"l'entite2        : ", "IsSame0 retourne sdaiLFALSE"};
    const auto begin = messages.begin();
    ASSERT_GE(messages.size(), 12U);
    // The contexts #71 and #13.
    EXPECT_THAT(std::vector(begin, begin + 3),
                ElementsAre("l'entite1: NEXT_ASSEMBLY_USAGE_OCCURRENCE", none[0], none[1]));
    EXPECT_EQ(messages[5], "IsSame0 retourne sdaiLTRUE");
    // The shape #72, for the parent and for the component.
    EXPECT_THAT(std::vector(begin + 6, begin + 12),
                ElementsAre("l'entite1: PRODUCT_DEFINITION", none[0], none[1],
                            "l'entite1: PRODUCT_DEFINITION", none[0], none[1]));
}

TEST(GetAbsPlacement, GivesTheIdentityForAMissingArgument) {
    const Call call{SdaiPrimitiveH()};
    EXPECT_EQ(call.placement, kIdentity);
    EXPECT_EQ(call.errors, "");
    EXPECT_THAT(call.messages,
                ElementsAreArray(ThenDefault({kBegin, "Input argument not allocated"})));
}

TEST(GetAbsPlacement, GivesTheIdentityForValuesThatAreNoInstances) {
    for (const SdaiPrimitiveH& value : {"#3"_h, 3_h, 2.5_h}) {
        EXPECT_EQ(RealsIn(GetAbsPlacement(value)), kIdentity);
    }
}

// ---- The result

TEST(GetAbsPlacement, GivesANewListEachTime) {
    const TestModel model("AUTOMOTIVE_DESIGN", Assembly());
    const SdaiPrimitiveH first = GetAbsPlacement(model[3]);
    const SdaiPrimitiveH second = GetAbsPlacement(model[3]);
    EXPECT_EQ(std::string(first.UnderlyingTypeName()), "AGGREGATE");
    SdaiAggrInstance* list = first;
    list->Append(SdaiPrimitiveH(13.0));
    EXPECT_THAT(RealsIn(first), SizeIs(13));
    EXPECT_THAT(RealsIn(second), IsNearly(kPlaced));
    EXPECT_THAT(RealsIn(GetAbsPlacement(model[3])), IsNearly(kPlaced));
}

TEST(GetAbsPlacement, OutlivesTheModel) {
    SdaiPrimitiveH placement;
    {
        const TestModel model("AUTOMOTIVE_DESIGN", Assembly());
        placement = GetAbsPlacement(model[3]);
    }
    EXPECT_THAT(RealsIn(placement), IsNearly(kPlaced));
}

TEST(GetAbsPlacement, TakesALinkThatASelectHolds) {
    const TestModel model("AUTOMOTIVE_DESIGN", Assembly());
    EXPECT_THAT(RealsIn(GetAbsPlacement(model[6].GetAttr("DEFINITION"))), IsNearly(kPlaced));
}

TEST(GetAbsPlacement, TakesAnyRelationshipOfProductDefinitions) {
    std::string data = Assembly();
    const std::string link = "NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#1,#2,$)";
    data.replace(data.find(link), link.size(), "PRODUCT_DEFINITION_RELATIONSHIP('','','',#1,#2)");
    EXPECT_THAT(CallFor(data).placement, IsNearly(kPlaced));
}

// ---- The context of the link

TEST(GetAbsPlacement, GivesTheIdentityForALinkWithoutContext) {
    const Call call = CallFor(Link() + kParentShape + kComponentShape + Relationship());
    EXPECT_EQ(call.placement, kIdentity);
    EXPECT_EQ(call.errors, "");
    EXPECT_THAT(call.messages, ElementsAreArray(ThenDefault({kBegin, kSchema, "RRWT not found"})));
}

TEST(GetAbsPlacement, GivesTheIdentityForAnInstanceThatIsNoLink) {
    const TestModel model("AUTOMOTIVE_DESIGN", Assembly());
    for (const unsigned long id : {1UL, 6UL, 13UL, 20UL}) {
        const Call call(model[id]);
        EXPECT_EQ(call.placement, kIdentity);
        EXPECT_THAT(call.messages, Contains("RRWT not found"));
    }
}

TEST(GetAbsPlacement, GivesTheIdentityInASchemaWithoutContexts) {
    const TestModel model("cdma", "#3=part_link('1',$,$,$,$,$,$);");
    const Call call(model[3]);
    EXPECT_EQ(call.placement, kIdentity);
    EXPECT_THAT(call.messages,
                ElementsAreArray(ThenDefault({kBegin, "Nom du schema: cdma", "RRWT not found"})));
}

// A second link #71 between the same parts, and contexts without a link.
constexpr char kOtherContexts[] = R"(
    #71=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#1,#2,$);
    #72=PRODUCT_DEFINITION_SHAPE('','',#71);
    #73=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,#72);
    #74=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,$);
    #75=PRODUCT_DEFINITION_SHAPE('','',$);
    #76=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,#75);)";

// The calls of IsSame0 before the context was found.
long ComparisonsForContext(const Call& call) {
    const std::string found = std::string("   ") + kLabel + " Absolute placement computation";
    return std::count(call.lines.begin(), std::find(call.lines.begin(), call.lines.end(), found),
                      "   SdaiPrimitiveH IsSame0-> {");
}

TEST(GetAbsPlacement, PassesOverTheContextsOfOtherLinks) {
    const Call call = CallFor(kOtherContexts + Assembly());
    EXPECT_THAT(call.placement, IsNearly(kPlaced));
    EXPECT_EQ(ComparisonsForContext(call), 4);
}

TEST(GetAbsPlacement, LooksNoFurtherThanTheContextOfTheLink) {
    const Call call = CallFor(Assembly() + kOtherContexts);
    EXPECT_THAT(call.placement, IsNearly(kPlaced));
    EXPECT_EQ(ComparisonsForContext(call), 1);
}

TEST(GetAbsPlacement, TakesTheFirstContextOfTheLink) {
    const std::string other = R"(
        #81=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#82,#6);
        #82=(REPRESENTATION_RELATIONSHIP('','',#10,#8)
            REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#83)
            SHAPE_REPRESENTATION_RELATIONSHIP());
        #83=ITEM_DEFINED_TRANSFORMATION('','',$,$);)";
    EXPECT_THAT(CallFor(Assembly() + other).placement, IsNearly(kPlaced));
    EXPECT_THAT(CallFor(other + Assembly()).placement, IsNearly(kIdentity));
}

// ---- The shapes of the two sides

namespace {

struct Missing {
    const char* description;
    std::string shapes;
    bool relating;
    bool related;
};

void PrintTo(const Missing& missing, std::ostream* stream) { *stream << missing.description; }

class MissingShape : public testing::TestWithParam<Missing> {};

INSTANTIATE_TEST_SUITE_P(Sides, MissingShape,
                         testing::Values(Missing{"Relating", kComponentShape, true, false},
                                         Missing{"Related", kParentShape, false, true},
                                         Missing{"Both", "", true, true},
                                         Missing{"DefinitionsNotSet",
                                                 "#7=SHAPE_DEFINITION_REPRESENTATION($,#8);"
                                                 "#9=SHAPE_DEFINITION_REPRESENTATION(#15,#10);"
                                                 "#15=PRODUCT_DEFINITION_SHAPE('','',$);",
                                                 true, true}),
                         [](const auto& missing) { return missing.param.description; });

}  // namespace

TEST_P(MissingShape, IsToldOnTheStandardErrorStreamForTheRelatingSideAlone) {
    const Call call = CallFor(Link() + GetParam().shapes + kContext + Relationship());
    EXPECT_EQ(call.placement, kIdentity);
    EXPECT_EQ(call.errors, GetParam().relating ? std::string(kNoRelating) + "\n" : "");
    EXPECT_THAT(call.messages, Contains(kNoRelated).Times(GetParam().related ? 1 : 0));
    EXPECT_THAT(call.messages, Not(Contains(kNoRelating)));
    EXPECT_THAT(call.messages, Not(Contains(kWild)));
    ASSERT_THAT(call.messages, SizeIs(Gt(6U)));
    const std::vector<std::string> end(call.messages.end() - 6, call.messages.end());
    EXPECT_THAT(end, ElementsAreArray(kDefault));
}

TEST(MissingShape, IsToldWhenTheLinkHasNoSides) {
    const Call call =
        CallFor(Link("$", "$") + kParentShape + kComponentShape + kContext + Relationship());
    EXPECT_EQ(call.placement, kIdentity);
    EXPECT_EQ(call.errors, std::string(kNoRelating) + "\n");
    EXPECT_THAT(call.messages, Contains(kNoRelated));
}

TEST(MissingShape, LetsTheTraceSayAllUpToThere) {
    const Call call = CallFor(Link() + kParentShape + kContext + Relationship());
    EXPECT_THAT(call.messages,
                ElementsAreArray(ThenDefault(
                    {kBegin, kSchema, "Absolute placement computation",
                     "GetAbsPlacement - ITEM_DEFINED_TRANSFORMATION ",
                     " -> RELATING_PRODUCT_DEFINITION OK ", " -> RELATED_PRODUCT_DEFINITION OK ",
                     " -> SHAPE_DEFINITION_REPRESENTATION OK ",
                     " - CurrShapeDefRep : #7=SHAPE_DEFINITION_REPRESENTATION",
                     " - CurrP_D_S : #4=PRODUCT_DEFINITION_SHAPE",
                     " - CurrProdDef : #1=PRODUCT_DEFINITION", kNoRelated})));
}

TEST(GetAbsPlacement, FindsTheShapesInAnyOrderAmongOthers) {
    const Call call = CallFor(Link() + kContext + R"(
        #91=SHAPE_ASPECT('','',#4,.T.);
        #92=PRODUCT_DEFINITION_SHAPE('','',#91);
        #93=SHAPE_DEFINITION_REPRESENTATION(#92,#14);
        #94=SHAPE_DEFINITION_REPRESENTATION(#6,#14);
        #95=SHAPE_DEFINITION_REPRESENTATION($,$);)" +
                              kComponentShape + kParentShape + Relationship());
    EXPECT_THAT(call.placement, IsNearly(kPlaced));
    EXPECT_EQ(call.errors, "");
}

TEST(GetAbsPlacement, LooksNoFurtherThanTheSecondShape) {
    const std::string others =
        "#91=SHAPE_DEFINITION_REPRESENTATION(#4,#14);"
        "#92=SHAPE_DEFINITION_REPRESENTATION(#5,#14);";
    const Call call = CallFor(Assembly() + others);
    EXPECT_THAT(call.placement, IsNearly(kPlaced));
    EXPECT_THAT(call.messages, Contains(StartsWith(" - CurrShapeDefRep : #")).Times(2));
}

TEST(GetAbsPlacement, TakesTheFirstShapeOfEachSide) {
    for (const char* first : {"#91=SHAPE_DEFINITION_REPRESENTATION(#4,#14);",
                              "#91=SHAPE_DEFINITION_REPRESENTATION(#5,#14);"}) {
        const Call call = CallFor(first + Assembly());
        EXPECT_EQ(call.placement, kIdentity) << first;
        EXPECT_THAT(call.messages, Contains(kWild)) << first;
    }
}

// ---- A part in itself: one product definition is on both sides of the link

TEST(GetAbsPlacement, GivesNoShapeToBothSides) {
    const Call call = CallFor(Link("#1", "#1") + kParentShape + kContext +
                              Relationship({.rep1 = "#8", .rep2 = "#8"}));
    EXPECT_EQ(call.placement, kIdentity);
    EXPECT_EQ(call.errors, "");
    EXPECT_THAT(call.messages, Contains(kNoRelated));
}

TEST(GetAbsPlacement, GivesTheFirstOfTwoShapesToTheRelatingSide) {
    const std::string link = Link("#1", "#1") + kContext + Relationship();
    const char* const second = "#9=SHAPE_DEFINITION_REPRESENTATION(#4,#10);";
    EXPECT_THAT(CallFor(link + kParentShape + second).placement, IsNearly(kPlaced));
    // In the other order, the component's placement is on the relating side.
    EXPECT_THAT(CallFor(link + second + kParentShape).placement, IsNearly(kInverse));
}

// ---- Cartesian transformation operators

namespace {

struct Cartesian {
    const char* description;
    const char* axes[3];
    const char* origin;
    const char* scale;
    Reals placement;
};

void PrintTo(const Cartesian& cartesian, std::ostream* stream) { *stream << cartesian.description; }

const Cartesian kCartesians[] = {
    {"NoThirdAxis",
     {"(1.,0.,0.)", "(0.,1.,0.)", ""},
     "(5.,0.,0.)",
     "$",
     {1, 0, 0, 0, 1, 0, 0, 0, 1, 5, 0, 0}},
    {"LongAxis",
     {"(2.,0.,0.)", "(0.,3.,0.)", ""},
     "(1.,2.,3.)",
     "$",
     {2, 0, 0, 0, 3, 0, 0, 0, 6, 1, 2, 3}},
    // (2*6 - 5*3, 3*4 - 6*1, 1*5 - 4*2)
    {"ObliqueAxes",
     {"(1.,2.,3.)", "(4.,5.,6.)", ""},
     "(7.,8.,9.)",
     "$",
     {1, 2, 3, 4, 5, 6, -3, 6, -3, 7, 8, 9}},
    {"ParallelAxes",
     {"(1.,2.,3.)", "(1.,2.,3.)", ""},
     "(0.,0.,0.)",
     "$",
     {1, 2, 3, 1, 2, 3, 0, 0, 0, 0, 0, 0}},
    {"ThirdAxisGiven",
     {"(0.,1.,0.)", "(0.,0.,1.)", "(1.,0.,0.)"},
     "(1.,2.,3.)",
     "$",
     {0, 1, 0, 0, 0, 1, 1, 0, 0, 1, 2, 3}},
    {"MirroringThirdAxis",
     {"(1.,0.,0.)", "(0.,1.,0.)", "(0.,0.,-1.)"},
     "(0.,0.,0.)",
     "$",
     {1, 0, 0, 0, 1, 0, 0, 0, -1, 0, 0, 0}},
    {"ObliqueThirdAxis",
     {"(1.,0.,0.)", "(0.,1.,0.)", "(1.,1.,1.)"},
     "(0.,0.,0.)",
     "$",
     {1, 0, 0, 0, 1, 0, 1, 1, 1, 0, 0, 0}},
    {"Scale",
     {"(1.,0.,0.)", "(0.,1.,0.)", "(0.,0.,1.)"},
     "(5.,6.,7.)",
     "10.",
     {1, 0, 0, 0, 1, 0, 0, 0, 1, 5, 6, 7}},
};

// The operator #11 of the link #3; its components are #101 to #104. There is no shape, and none is
// searched for.
std::string CartesianAssembly(const Cartesian& cartesian) {
    const bool third = *cartesian.axes[2] != '\0';
    return Link() + kContext + R"(
        #12=(REPRESENTATION_RELATIONSHIP('','',$,$)
            REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#11)
            SHAPE_REPRESENTATION_RELATIONSHIP());
        #101=DIRECTION('',)" +
           cartesian.axes[0] + ");#102=DIRECTION(''," + cartesian.axes[1] + ");" +
           (third ? std::string("#103=DIRECTION('',") + cartesian.axes[2] + ");" : "") +
           "#104=CARTESIAN_POINT(''," + cartesian.origin +
           ");#11=CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',#101,#102,#104," + cartesian.scale +
           (third ? ",#103);" : ",$);");
}

class CartesianOperator : public testing::TestWithParam<Cartesian> {};

INSTANTIATE_TEST_SUITE_P(Operators, CartesianOperator, testing::ValuesIn(kCartesians),
                         [](const auto& cartesian) { return cartesian.param.description; });

}  // namespace

TEST_P(CartesianOperator, IsTakenAsItIs) {
    const Call call = CallFor(CartesianAssembly(GetParam()));
    EXPECT_EQ(call.placement, GetParam().placement);
    EXPECT_EQ(call.errors, "");
    EXPECT_THAT(call.lines, Not(Contains(HasSubstr("ComputeABSPlacement"))));
}

TEST(CartesianOperator, IsToldInTheTrace) {
    const Call call = CallFor(CartesianAssembly(kCartesians[1]));
    EXPECT_THAT(call.messages, ElementsAre(kBegin, kSchema, "Absolute placement computation",
                                           "GetAbsPlacement - CARTESIAN_TRANSFORMATION_OPERATOR",
                                           "Affichage du positionnement:", "2  0  0", "0  3  0",
                                           "0  0  6", "1  2  3"));
}

TEST(CartesianOperator, CompletesThreeAxesWhereItsTypeHasTwo) {
    std::string data = CartesianAssembly(kCartesians[2]);
    const std::string type = "CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',#101,#102,#104,$,$)";
    data.replace(data.find(type), type.size(),
                 "CARTESIAN_TRANSFORMATION_OPERATOR('','','',#101,#102,#104,$)");
    EXPECT_EQ(CallFor(data).placement, kCartesians[2].placement);
}

TEST(CartesianOperator, TakesAnOriginInThePlane) {
    std::string data = CartesianAssembly(kCartesians[1]);
    const std::string origin = "(1.,2.,3.)";
    data.replace(data.find(origin), origin.size(), "(1.,2.)");
    EXPECT_EQ(CallFor(data).placement, (Reals{2, 0, 0, 0, 3, 0, 0, 0, 6, 1, 2, 0}));
}

namespace {

// Whether each of the values has a minus sign, including zeros.
std::vector<bool> SignsOf(const Reals& values) {
    std::vector<bool> signs;
    for (const double value : values) signs.push_back(std::signbit(value));
    return signs;
}

}  // namespace

TEST(CartesianOperator, KeepsTheSignOfAZero) {
    const Call given = CallFor(CartesianAssembly(
        {"", {"(-0.,1.,-0.)", "(0.,-0.,1.)", "(1.,0.,-0.)"}, "(-0.,0.,-0.)", "$", {}}));
    EXPECT_EQ(given.placement, (Reals{0, 1, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(SignsOf(given.placement), (std::vector<bool>{true, false, true, false, true, false,
                                                           false, false, true, true, false, true}));
    EXPECT_THAT(given.messages, Contains("-0  1  -0"));
    EXPECT_THAT(given.messages, Contains("-0  0  -0"));
}

// A third axis that is set is used as it is, whatever its values.
TEST(CartesianOperator, TakesAThirdAxisThatIsSetWhateverItHolds) {
    const Cartesian two{"", {"(1.,0.,0.)", "(0.,1.,0.)", ""}, "(1.,2.,3.)", "$", {}};
    const struct {
        const char* axis;
        Reals placement;
    } kAxes[] = {
        {"DIRECTION('',$)", {1, 0, 0, 0, 1, 0, 0, 0, 0, 1, 2, 3}},
        {"DIRECTION('',())", {1, 0, 0, 0, 1, 0, 0, 0, 0, 1, 2, 3}},
        {"DIRECTION('',(4.))", {1, 0, 0, 0, 1, 0, 4, 0, 0, 1, 2, 3}},
        {"DIRECTION('',(0.,0.,0.))", {1, 0, 0, 0, 1, 0, 0, 0, 0, 1, 2, 3}},
        {"CARTESIAN_POINT('',(4.,5.,6.))", {1, 0, 0, 0, 1, 0, 0, 0, 0, 1, 2, 3}},
    };
    for (const auto& [axis, placement] : kAxes) {
        std::string data = CartesianAssembly(two) + "#103=" + axis + ";";
        const std::string unset = ",$,$);";
        data.replace(data.rfind(unset), unset.size(), ",$,#103);");
        EXPECT_EQ(CallFor(data).placement, placement) << axis;
    }
    // If it is unset, it is computed from the other two.
    EXPECT_EQ(CallFor(CartesianAssembly(two)).placement,
              (Reals{1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 2, 3}));
}

TEST(CartesianOperator, IsTheIdentityWhereItSaysNothing) {
    const std::string begin =
        "#101=DIRECTION('',(0.,2.,0.));#102=DIRECTION('',(3.,0.,0.));"
        "#104=CARTESIAN_POINT('',(5.,6.,7.));";
    const struct {
        const char* operation;
        Reals placement;
    } kOperators[] = {
        {"$,$,$,$,$", kIdentity},
        {"$,#102,#104,$,$", {1, 0, 0, 3, 0, 0, 0, 0, 0, 5, 6, 7}},
        {"#101,$,#104,$,$", {0, 2, 0, 0, 1, 0, 0, 0, 0, 5, 6, 7}},
        {"#101,#102,$,$,$", {0, 2, 0, 3, 0, 0, 0, 0, -6, 0, 0, 0}},
    };
    for (const auto& [operation, placement] : kOperators) {
        const std::string type = "CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',";
        const Call call = CallFor(begin + Assembly({.operation = type + operation + ")"}));
        EXPECT_EQ(call.placement, placement) << operation;
    }
}

// Any operator that is not an item-defined transformation results in twelve values.
TEST(CartesianOperator, IsReadWithoutATestOfItsType) {
    for (const char* operation : {"CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',$,$,$,$,$)",
                                  "FUNCTIONALLY_DEFINED_TRANSFORMATION('','')"}) {
        const Call call = CallFor(Assembly({.operation = operation}));
        EXPECT_THAT(call.placement, SizeIs(12)) << operation;
        EXPECT_THAT(call.messages, Contains("GetAbsPlacement - CARTESIAN_TRANSFORMATION_OPERATOR"));
    }
}

TEST(CartesianOperator, MayBeMissing) {
    for (const char* relationship : {"SHAPE_REPRESENTATION_RELATIONSHIP('','',$,$)",
                                     "(REPRESENTATION_RELATIONSHIP('','',$,$)"
                                     "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION($)"
                                     "SHAPE_REPRESENTATION_RELATIONSHIP())"}) {
        const Call call = CallFor(Link() + kContext + "#12=" + relationship + ";");
        EXPECT_THAT(call.placement, SizeIs(12)) << relationship;
        EXPECT_EQ(call.errors, "");
    }
}

// ---- Broken chains

TEST(GetAbsPlacement, GivesTwelveValuesWhateverIsNotSet) {
    const std::string whole = Assembly();
    // Drops each reference in turn.
    int dropped = 0;
    for (std::size_t at = whole.find('#'); at != std::string::npos; at = whole.find('#', at + 1)) {
        const std::size_t end = whole.find_first_not_of("0123456789", at + 1);
        if (whole[end] == '=') continue;
        std::string broken = whole;
        broken.replace(at, end - at, "$");
        SCOPED_TRACE(broken);
        const Call call = CallFor(broken);
        EXPECT_THAT(call.placement, SizeIs(12));
        for (const double value : call.placement) EXPECT_TRUE(std::isfinite(value));
        ++dropped;
    }
    EXPECT_GT(dropped, 30);
}
