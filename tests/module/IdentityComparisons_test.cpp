// IsSame0 and the comparisons at the end of a chain of attributes.

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <array>
#include <ostream>
#include <string>
#include <vector>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAreArray;

namespace {

// If set, the numbers of the instances that are taken out of selects are recorded there.
std::vector<unsigned long>* selected = nullptr;

}  // namespace

// This replaces the platform's function, which takes a plain reference for its own value: no result
// shows what is read as a select.
SdaiPrimitiveH SdaiSelectH::getValue() const {
    using Platform = SdaiPrimitiveH (*)(const SdaiSelectH*);
    static const auto platform =
        reinterpret_cast<Platform>(dlsym(RTLD_NEXT, "_ZNK11SdaiSelectH8getValueEv"));
    SdaiPrimitiveH value = platform(this);
    if (selected != nullptr) selected->push_back(InstanceIn(value)->GetInstanceNameId());
    return value;
}

namespace {

// The structure that the chains follow. The DEFINITION of a shape definition representation is
// either a select, as in the later application protocols, or a plain reference.
std::string Schema(const std::string& name, bool definitionIsSelect = true) {
    return "SCHEMA " + name + R"(;
        ENTITY product_definition_formation; id : STRING; END_ENTITY;
        ENTITY product_definition; formation : product_definition_formation; END_ENTITY;
        ENTITY next_assembly_usage_occurrence;
            relating_product_definition : product_definition;
            related_product_definition : product_definition;
        END_ENTITY;
        TYPE characterized_definition = SELECT
            (product_definition, next_assembly_usage_occurrence);
        END_TYPE;
        ENTITY product_definition_shape; definition : characterized_definition; END_ENTITY;
        TYPE represented_definition = SELECT (product_definition_shape); END_TYPE;
        ENTITY representation; name : STRING; END_ENTITY;
        ENTITY shape_definition_representation;
            definition : )" +
           (definitionIsSelect ? "represented_definition" : "product_definition_shape") + R"(;
            used_representation : representation;
        END_ENTITY;
        ENTITY item_defined_transformation; name : STRING; END_ENTITY;
        ENTITY mirrored_transformation SUBTYPE OF (item_defined_transformation); END_ENTITY;
        ENTITY cartesian_transformation_operator; name : STRING; END_ENTITY;
        TYPE transformation = SELECT
            (item_defined_transformation, cartesian_transformation_operator);
        END_TYPE;
        ENTITY representation_relationship_with_transformation;
            rep_1 : representation;
            rep_2 : representation;
            transformation_operator : transformation;
        END_ENTITY;
        ENTITY context_dependent_shape_representation;
            representation_relation : representation_relationship_with_transformation;
            represented_product_relation : product_definition_shape;
        END_ENTITY;
        TYPE product_or_formation = SELECT (product_definition_formation); END_TYPE;
        ENTITY document_product_association;
            related_product_or_formation : product_or_formation;
        END_ENTITY;
        END_SCHEMA;)";
}

// An assembly #3 with a component #4 and, from #21 on, other instances with the same values.
constexpr char kAssembly[] = R"(
    #1=PRODUCT_DEFINITION_FORMATION('1');
    #2=PRODUCT_DEFINITION_FORMATION('1');
    #3=PRODUCT_DEFINITION(#1);
    #4=PRODUCT_DEFINITION(#2);
    #5=NEXT_ASSEMBLY_USAGE_OCCURRENCE(#3,#4);
    #6=PRODUCT_DEFINITION_SHAPE(#3);
    #7=PRODUCT_DEFINITION_SHAPE(#4);
    #8=PRODUCT_DEFINITION_SHAPE(#5);
    #9=REPRESENTATION('shape');
    #10=REPRESENTATION('shape');
    #11=SHAPE_DEFINITION_REPRESENTATION(#6,#9);
    #12=SHAPE_DEFINITION_REPRESENTATION(#7,#10);
    #13=ITEM_DEFINED_TRANSFORMATION('');
    #14=REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#10,#9,#13);
    #15=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#14,#8);
    #16=DOCUMENT_PRODUCT_ASSOCIATION(#2);
    #21=PRODUCT_DEFINITION_FORMATION('1');
    #23=PRODUCT_DEFINITION(#1);
    #24=PRODUCT_DEFINITION(#21);
    #25=NEXT_ASSEMBLY_USAGE_OCCURRENCE(#3,#4);
    #26=PRODUCT_DEFINITION_SHAPE(#23);
    #29=REPRESENTATION('shape');
    #31=SHAPE_DEFINITION_REPRESENTATION(#26,#29);
    #33=ITEM_DEFINED_TRANSFORMATION('');
    #40=PRODUCT_DEFINITION($);
    #41=PRODUCT_DEFINITION_SHAPE($);
    #42=SHAPE_DEFINITION_REPRESENTATION($,$);
    #43=SHAPE_DEFINITION_REPRESENTATION(#41,$);
    #44=REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION($,$,$);
    #45=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,$);
    #46=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#44,#41);
    #47=DOCUMENT_PRODUCT_ASSOCIATION($);)";

using Pair = std::array<unsigned long, 2>;

// A comparison, and instances of kAssembly to test it with.
struct Comparison {
    const char* name;
    SdaiPrimitiveH (*call)(const SdaiPrimitiveH&, const SdaiPrimitiveH&);
    const char* label;
    const char* saysTrue;  // the last message
    const char* saysFalse;
    Pair same;
    std::vector<Pair> different;
    std::vector<Pair> incomplete;  // one or both ends are missing
};

void PrintTo(const Comparison& comparison, std::ostream* stream) { *stream << comparison.name; }

const Comparison kComparisons[] = {
    {"IsSame0",
     IsSame0,
     "SdaiPrimitiveH IsSame0->",
     "IsSame0 retourne sdaiLTRUE",
     "IsSame0 retourne sdaiLFALSE",
     {3, 3},
     {{3, 23}, {3, 4}, {3, 5}},
     {}},
    {"IsSamePart",
     IsSamePart,
     "SdaiPrimitiveH IsSamePart->",
     "retourne sdaiLTRUE",
     " retourne sdaiLFALSE",
     {3, 11},
     {{4, 11}, {23, 11}, {3, 12}, {3, 31}},
     {{3, 42}, {3, 43}}},
    {"IsSameRelating",
     IsSameRelating,
     "SdaiPrimitiveH IsSameRelating->",
     "IsSameRelating retourne sdaiLTRUE",
     "IsSameRelating retourne sdaiLFALSE",
     {11, 15},
     {{12, 15}, {31, 15}},
     {{42, 45}, {43, 46}, {11, 45}, {11, 46}, {42, 15}, {43, 15}}},
    {"IsSameRelated",
     IsSameRelated,
     "SdaiPrimitiveH IsSameRelated->",
     "IsSameRelated retourne sdaiLTRUE",
     "IsSameRelated retourne sdaiLFALSE",
     {12, 15},
     {{11, 15}, {31, 15}},
     {{42, 45}, {43, 46}, {12, 45}, {12, 46}, {42, 15}, {43, 15}}},
    {"IsSameNAUO",
     IsSameNAUO,
     "SdaiPrimitiveH IsSameNAUO->",
     "IsSameNAUO retourne sdaiLTRUE",
     "IsSameNAUO retourne sdaiLFALSE",
     {5, 15},
     {{25, 15}, {3, 15}},
     {{5, 45}, {5, 46}}},
    {"IsSameShapeRep1",
     IsSameShapeRep1,
     "IsSameShapeRep1->",
     "IsSameShapeRep1 retourne sdaiLTRUE",
     "IsSameShapeRep1 retourne sdaiLFALSE",
     {12, 15},
     {{11, 15}, {31, 15}},  // #11 has the shape REP_2
     {{42, 45}, {42, 46}, {12, 45}, {12, 46}, {42, 15}}},
    {"IsSameIDT",
     IsSameIDT,
     "IsSameIDT->",
     "IsSameIDT retourne sdaiLTRUE",
     "IsSameIDT retourne sdaiLFALSE",
     {13, 14},
     {{33, 14}, {3, 14}},
     {{13, 44}}},
    {"IsSameDocVersion",
     IsSameDocVersion,
     "SdaiPrimitiveH IsSameDocVersion ->",
     "IsSameDocVersion retourne sdaiLTRUE",
     "IsSameDocVersion retourne sdaiLFALSE",
     {4, 16},
     {{3, 16}, {24, 16}},
     {{40, 47}, {4, 47}, {40, 16}}},
};

class IdentityComparison : public testing::TestWithParam<Comparison> {
  protected:
    // Checks the result for two handles, and the last message.
    void ExpectAnswer(const SdaiPrimitiveH& a, const SdaiPrimitiveH& b, bool same) const {
        const SdaiPrimitiveH untraced = function_.call(a, b);
        EXPECT_EQ(IsTrue(untraced), same);
        EXPECT_EQ(IsFalse(untraced), !same);
        TraceCapture trace;
        EXPECT_EQ(IsTrue(function_.call(a, b)), same) << "with the trace on";
        const auto messages = trace.Messages(function_.label);
        ASSERT_THAT(messages, Not(SizeIs(0)));
        EXPECT_EQ(messages.back(), same ? function_.saysTrue : function_.saysFalse);
    }
    void ExpectAnswer(const Pair& pair, bool same) const {
        SCOPED_TRACE("#" + std::to_string(pair[0]) + ", #" + std::to_string(pair[1]));
        ExpectAnswer(model_[pair[0]], model_[pair[1]], same);
    }

    const Comparison& function_ = GetParam();
    const TestModel model_{Schema("AUTOMOTIVE_DESIGN"), kAssembly};
};

INSTANTIATE_TEST_SUITE_P(Functions, IdentityComparison, testing::ValuesIn(kComparisons),
                         [](const auto& function) { return function.param.name; });

}  // namespace

TEST_P(IdentityComparison, HoldsForTheInstanceAtTheEndOfTheChain) {
    ExpectAnswer(function_.same, true);
}

TEST_P(IdentityComparison, DoesNotHoldForAnotherInstanceWithEqualValuesOrNot) {
    for (const Pair& pair : function_.different) ExpectAnswer(pair, false);
}

TEST_P(IdentityComparison, DoesNotHoldWhereAChainBreaksOff) {
    for (const Pair& pair : function_.incomplete) ExpectAnswer(pair, false);
}

TEST_P(IdentityComparison, ReadsNothingWhenAnArgumentIsMissing) {
    const SdaiPrimitiveH a = model_[function_.same[0]];
    const SdaiPrimitiveH b = model_[function_.same[1]];
    const std::array<SdaiPrimitiveH, 2> pairs[] = {{{{}, b}}, {{a, {}}}, {{{}, {}}}};
    for (const auto& [first, second] : pairs) {
        EXPECT_TRUE(IsFalse(function_.call(first, second)));
        TraceCapture trace;
        EXPECT_TRUE(IsFalse(function_.call(first, second)));
        EXPECT_THAT(trace.Messages(function_.label), ElementsAre(function_.saysFalse));
        EXPECT_THAT(trace.Lines(), SizeIs(3)) << "an opening, a closing and one line";
    }
}

TEST_P(IdentityComparison, DoesNotHoldForValuesThatAreNoInstances) {
    const SdaiPrimitiveH a = model_[function_.same[0]];
    const SdaiPrimitiveH b = model_[function_.same[1]];
    SdaiListClassOfSdaiReal list(0, 3);
    for (const SdaiPrimitiveH& value :
         {"PRODUCT_DEFINITION"_h, 3_h, 2.5_h, SdaiPrimitiveH(&list)}) {
        ExpectAnswer(value, b, false);
        ExpectAnswer(a, value, false);
        ExpectAnswer(value, value, false);
    }
}

TEST_P(IdentityComparison, DoesNotHoldAcrossModels) {
    const TestModel other(Schema("AUTOMOTIVE_DESIGN"), kAssembly);
    ExpectAnswer(other[function_.same[0]], model_[function_.same[1]], false);
}

TEST_P(IdentityComparison, HoldsForSelectsThatHoldTheArguments) {
    const SdaiSelectH a(model_[function_.same[0]]);
    const SdaiSelectH b(model_[function_.same[1]]);
    ExpectAnswer(a, b, true);
}

// ---- IsSame0

TEST(IsSame0, NamesTheTypesOfTheTwoInstances) {
    const TestModel model(Schema("AUTOMOTIVE_DESIGN"), kAssembly);
    TraceCapture trace;
    IsSame0(model[3], model[1]);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH IsSame0->"),
                ElementsAre("l'entite1: PRODUCT_DEFINITION",
                            "l'entite2        : PRODUCT_DEFINITION_FORMATION",
                            "IsSame0 retourne sdaiLFALSE"));
}

TEST(IsSame0, NamesTheTypeTwiceForOneInstance) {
    const TestModel model(Schema("AUTOMOTIVE_DESIGN"), kAssembly);
    TraceCapture trace;
    IsSame0(model[4], model[4]);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH IsSame0->"),
                ElementsAre("l'entite1: PRODUCT_DEFINITION",
                            "l'entite2        : PRODUCT_DEFINITION", "IsSame0 retourne sdaiLTRUE"));
}

// What is not an instance is compared, too, and has no type name.
TEST(IsSame0, NamesNoTypeOfWhatIsNoInstance) {
    const TestModel model(Schema("AUTOMOTIVE_DESIGN"), kAssembly);
    const struct {
        SdaiPrimitiveH a;
        SdaiPrimitiveH b;
        const char* entity1;
        const char* entity2;
    } cases[] = {
        {model[3], "part"_h, "l'entite1: PRODUCT_DEFINITION", "l'entite2        : "},
        {7_h, model[3], "l'entite1: ", "l'entite2        : PRODUCT_DEFINITION"},
        {"part"_h, "part"_h, "l'entite1: ", "l'entite2        : "},
    };
    for (const auto& [a, b, entity1, entity2] : cases) {
        TraceCapture trace;
        EXPECT_TRUE(IsFalse(IsSame0(a, b)));
        EXPECT_THAT(trace.Messages("SdaiPrimitiveH IsSame0->"),
                    ElementsAre(entity1, entity2, "IsSame0 retourne sdaiLFALSE"));
    }
}

TEST(IsSame0, FindsAnInstanceThatWasReachedAlongAnotherPath) {
    const TestModel model(Schema("AUTOMOTIVE_DESIGN"), kAssembly);
    EXPECT_TRUE(IsTrue(IsSame0(model[5], model[8].GetAttr("DEFINITION"))));
    EXPECT_TRUE(IsTrue(IsSame0(model[5].GetAttr("RELATING_PRODUCT_DEFINITION"), model[3])));
}

TEST(IsSame0, DoesNotHoldForEqualTexts) { EXPECT_TRUE(IsFalse(IsSame0("part"_h, "part"_h))); }

// ---- The schemas that the comparisons distinguish

namespace {

struct SchemaCase {
    const char* name;
    const char* kept;  // the first ten characters
    bool definitionIsSelect;
};

void PrintTo(const SchemaCase& schema, std::ostream* stream) {
    *stream << schema.name << (schema.definitionIsSelect ? " with" : " without") << " the select";
}

class ShapeDefinitions : public testing::TestWithParam<SchemaCase> {
  protected:
    const TestModel model_{Schema(GetParam().name, GetParam().definitionIsSelect), kAssembly};
};

// In every schema, DEFINITION leads to the shape, as a select or as a reference.
INSTANTIATE_TEST_SUITE_P(Schemas, ShapeDefinitions,
                         testing::Values(SchemaCase{"PDM_SCHEMA", "PDM_SCHEMA", true},
                                         SchemaCase{"PDM_SCHEMA", "PDM_SCHEMA", false},
                                         SchemaCase{"PDM_SCHEMA_1_2", "PDM_SCHEMA", true},
                                         SchemaCase{"AUTOMOTIVE_DESIGN", "AUTOMOTIVE", true},
                                         SchemaCase{"AUTOMOTIVE_DESIGN", "AUTOMOTIVE", false},
                                         SchemaCase{"AUTOMOTIVE", "AUTOMOTIVE", true},
                                         SchemaCase{"CONFIG_CONTROL_DESIGN", "CONFIG_CON", true},
                                         SchemaCase{"CONFIG_CONTROL_DESIGN", "CONFIG_CON", false},
                                         SchemaCase{"PDM_SCHEM", "PDM_SCHEM", false},
                                         SchemaCase{"S", "S", true}));

}  // namespace

TEST_P(ShapeDefinitions, AreReadInEverySchema) {
    EXPECT_TRUE(IsTrue(IsSamePart(model_[3], model_[11])));
    EXPECT_TRUE(IsFalse(IsSamePart(model_[3], model_[12])));
    EXPECT_TRUE(IsTrue(IsSameRelating(model_[11], model_[15])));
    EXPECT_TRUE(IsFalse(IsSameRelating(model_[12], model_[15])));
    EXPECT_TRUE(IsTrue(IsSameRelated(model_[12], model_[15])));
    EXPECT_TRUE(IsFalse(IsSameRelated(model_[11], model_[15])));
}

TEST_P(ShapeDefinitions, AreReadAsTheFirstTenCharactersOfTheSchemaNameSay) {
    const std::string full = std::string("nom du schema : ") + GetParam().name;
    const std::string kept = std::string("nom garde: ") + GetParam().kept;
    TraceCapture trace;
    IsSamePart(model_[3], model_[11]);
    IsSameRelating(model_[11], model_[15]);
    IsSameRelated(model_[12], model_[15]);
    for (const char* label : {"SdaiPrimitiveH IsSamePart->", "SdaiPrimitiveH IsSameRelating->",
                              "SdaiPrimitiveH IsSameRelated->"}) {
        EXPECT_THAT(trace.Messages(label), AllOf(Contains(full).Times(1), Contains(kept).Times(1)))
            << label;
    }
}

// The DEFINITION of the shape is a select where the schema has one of the names that the function
// knows, whatever the schema declares; those that follow are selects everywhere.
TEST_P(ShapeDefinitions, AreTakenOutOfASelectInTheSchemasThatTheFunctionKnows) {
    const std::string kept = GetParam().kept;
    const bool isPdm = kept == "PDM_SCHEMA";
    const bool isPdmOrAutomotive = isPdm || kept == "AUTOMOTIVE";
    const struct {
        SdaiPrimitiveH (*call)(const SdaiPrimitiveH&, const SdaiPrimitiveH&);
        Pair arguments;
        unsigned long shape;
        bool isSelect;
        std::vector<unsigned long> following;
    } functions[] = {
        {IsSamePart, {3, 11}, 6, isPdm, {3}},
        {IsSameRelating, {11, 15}, 6, isPdmOrAutomotive, {3, 5}},
        {IsSameRelated, {12, 15}, 7, isPdmOrAutomotive, {4, 5}},
    };
    for (const auto& [call, arguments, shape, isSelect, following] : functions) {
        const SdaiPrimitiveH a = model_[arguments[0]];
        const SdaiPrimitiveH b = model_[arguments[1]];
        std::vector<unsigned long> numbers;
        selected = &numbers;
        call(a, b);
        selected = nullptr;
        std::vector<unsigned long> expected = following;
        if (isSelect) expected.push_back(shape);
        EXPECT_THAT(numbers, UnorderedElementsAreArray(expected)) << "#" << shape;
    }
}

TEST(ShapeDefinitions, AreReadAsTheModelOfTheSecondArgumentSays) {
    const TestModel pdm(Schema("PDM_SCHEMA"), kAssembly);
    const TestModel automotive(Schema("AUTOMOTIVE_DESIGN"), kAssembly);
    TraceCapture trace;
    IsSamePart(pdm[3], automotive[11]);
    IsSameRelating(pdm[11], automotive[15]);
    IsSameRelated(pdm[12], automotive[15]);
    for (const char* label : {"SdaiPrimitiveH IsSamePart->", "SdaiPrimitiveH IsSameRelating->",
                              "SdaiPrimitiveH IsSameRelated->"}) {
        EXPECT_THAT(trace.Messages(label), Contains("nom du schema : AUTOMOTIVE_DESIGN")) << label;
    }
}

// ---- The built-in schemas

namespace {

// The structure of kAssembly as in exchange files.
constexpr char kExchangedAssembly[] = R"(
    #1=PRODUCT_DEFINITION_FORMATION('','',$);
    #2=PRODUCT_DEFINITION_FORMATION('','',$);
    #3=PRODUCT_DEFINITION('','',#1,$);
    #4=PRODUCT_DEFINITION('','',#2,$);
    #5=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#3,#4,$);
    #6=PRODUCT_DEFINITION_SHAPE('','',#3);
    #7=PRODUCT_DEFINITION_SHAPE('','',#4);
    #8=PRODUCT_DEFINITION_SHAPE('','',#5);
    #9=SHAPE_REPRESENTATION('',(),$);
    #10=SHAPE_REPRESENTATION('',(),$);
    #11=SHAPE_DEFINITION_REPRESENTATION(#6,#9);
    #12=SHAPE_DEFINITION_REPRESENTATION(#7,#10);
    #13=ITEM_DEFINED_TRANSFORMATION('','',$,$);
    #14=(REPRESENTATION_RELATIONSHIP('','',#10,#9)
        REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#13)SHAPE_REPRESENTATION_RELATIONSHIP());
    #15=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#14,#8);)";

class ExchangeSchemas : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    Schemas, ExchangeSchemas,
    testing::Values("CONFIG_CONTROL_DESIGN", "AUTOMOTIVE_DESIGN", "PDM_SCHEMA",
                    "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_"
                    "MIM_LF",
                    "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF"),
    [](const auto& schema) { return std::string(schema.param); });

}  // namespace

TEST_P(ExchangeSchemas, TellTheSidesOfALinkApart) {
    const TestModel model(GetParam(), kExchangedAssembly);
    for (const unsigned long shape : {11UL, 12UL}) {
        const bool parent = shape == 11;
        EXPECT_EQ(IsTrue(IsSamePart(model[3], model[shape])), parent);
        EXPECT_EQ(IsTrue(IsSamePart(model[4], model[shape])), !parent);
        EXPECT_EQ(IsTrue(IsSameRelating(model[shape], model[15])), parent);
        EXPECT_EQ(IsTrue(IsSameRelated(model[shape], model[15])), !parent);
        EXPECT_EQ(IsTrue(IsSameShapeRep1(model[shape], model[15])), !parent);
    }
    EXPECT_TRUE(IsTrue(IsSameNAUO(model[5], model[15])));
    EXPECT_TRUE(IsTrue(IsSameIDT(model[13], model[14])));
}

// ---- IsSameRelating and IsSameRelated

TEST(IsSameRelated, HoldsTogetherWithIsSameRelatingOnlyForALinkOfADefinitionToItself) {
    const TestModel model(Schema("AUTOMOTIVE_DESIGN"), R"(
        #1=PRODUCT_DEFINITION($);
        #2=NEXT_ASSEMBLY_USAGE_OCCURRENCE(#1,#1);
        #3=PRODUCT_DEFINITION_SHAPE(#1);
        #4=PRODUCT_DEFINITION_SHAPE(#2);
        #5=SHAPE_DEFINITION_REPRESENTATION(#3,$);
        #6=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,#4);)");
    EXPECT_TRUE(IsTrue(IsSameRelating(model[5], model[6])));
    EXPECT_TRUE(IsTrue(IsSameRelated(model[5], model[6])));
}

// ---- IsSameIDT

namespace {

struct Operator {
    const char* description;
    const char* instance;
    bool same;
};

void PrintTo(const Operator& op, std::ostream* stream) { *stream << op.description; }

class TransformationOperator : public testing::TestWithParam<Operator> {};

// Only the exact type counts, not its supertypes.
INSTANTIATE_TEST_SUITE_P(
    Types, TransformationOperator,
    testing::Values(
        Operator{"ItsOwnType", "ITEM_DEFINED_TRANSFORMATION('')", true},
        Operator{"ASubtype", "MIRRORED_TRANSFORMATION('')", false},
        Operator{"SeveralTypes",
                 "(CARTESIAN_TRANSFORMATION_OPERATOR('')ITEM_DEFINED_TRANSFORMATION(''))", false},
        Operator{"AnotherType", "CARTESIAN_TRANSFORMATION_OPERATOR('')", false}),
    [](const auto& op) { return op.param.description; });

}  // namespace

TEST_P(TransformationOperator, IsTheTransformationOnlyWhenItsTypeIsThatByName) {
    const TestModel model(Schema("AUTOMOTIVE_DESIGN"),
                          std::string("#1=") + GetParam().instance +
                              ";#2=REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION($,$,#1);");
    EXPECT_EQ(IsTrue(IsSameIDT(model[1], model[2])), GetParam().same);
}

// ---- The trace along the chains

TEST(IsSameShapeRep1, NamesRep1AsAnotherFunctionDoes) {
    const TestModel model(Schema("AUTOMOTIVE_DESIGN"), kAssembly);
    TraceCapture trace;
    IsSameShapeRep1(model[12], model[15]);
    EXPECT_THAT(trace.Messages("IsSameShapeRep1->"),
                Contains(StartsWith("IsSameNAUO: entite2.REPRESENTATION_RELATION.REP_1: ")));
}

TEST(IsSameRelated, NamesTheDefinitionOfTheShape) {
    const TestModel model(Schema("AUTOMOTIVE_DESIGN"), kAssembly);
    TraceCapture trace;
    IsSameRelated(model[12], model[15]);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH IsSameRelated->"),
                Contains(StartsWith("IsSameRelated: entite1.DEFINITION              : ")));
}

TEST(IdentityComparisons, TellTheirStepsInTheTrace) {
    const TestModel model(Schema("AUTOMOTIVE_DESIGN"), kAssembly);
    TraceCapture trace;
    for (const Comparison& function : kComparisons) {
        function.call(model[function.same[0]], model[function.same[1]]);
        const Pair& different = function.different.front();
        function.call(model[different[0]], model[different[1]]);
    }
    for (const char* text : {"apres recuperation de definition",
                             "entite1.DEFINITION : ", "cas egalite", "cas difference"}) {
        EXPECT_THAT(trace.Lines(), Contains(HasSubstr(text)));
    }
}

TEST(IdentityComparisons, WriteNothingToTheStandardStreams) {
    const TestModel model(Schema("AUTOMOTIVE_DESIGN"), kAssembly);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (const Comparison& function : kComparisons) {
        function.call(model[function.same[0]], model[function.same[1]]);
        function.call({}, {});
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}
