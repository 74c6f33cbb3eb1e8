// GetInst, GetItem, GetMemberCount and the other small accessors.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <stdlib.h>

#include <limits>
#include <optional>
#include <set>
#include <string>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr char kGetInst[] = "SdaiPrimitiveH GetInst ->";
constexpr char kGetItem[] = "SdaiPrimitiveH GetItem ->";
constexpr char kGetMemberCount[] = "SdaiPrimitiveH GetMemberCount ->";
constexpr char kGetRepFromProperty[] = "SdaiPrimitiveH GetRepFromProperty->";
constexpr char kGetUniqId[] = "SdaiPrimitiveH GetUniqId ->";
constexpr char kIsFree[] = "SdaiPrimitiveH IsFree ->";
constexpr char kIsIn[] = "SdaiPrimitiveH PRDDFN_IsIn ->";
constexpr char kReadMandatory[] = "SdaiPrimitiveH ReadMandatory->";
constexpr char kTrunc[] = "SdaiPrimitiveH ORXTrunc ->";

const SdaiPrimitiveH kMissing;

// Parts with properties, documents and assignments.
const TestModel& Data() {
    static const TestModel data("AUTOMOTIVE_DESIGN", R"(
        #1=PRODUCT('P1','Wheel',$,());
        #2=PRODUCT_DEFINITION_FORMATION_WITH_SPECIFIED_SOURCE('A',$,#1,.MADE.);
        #3=PRODUCT_DEFINITION('design',$,#2,$);
        #4=PRODUCT_DEFINITION('design',$,#2,$);
        #5=PRODUCT_DEFINITION('other',$,#2,$);
        #10=DOCUMENT_FILE('wheel.model','',$,$,'','');
        #11=PROPERTY_DEFINITION('file',$,#10);
        #12=PROPERTY_DEFINITION_REPRESENTATION(#11,$);
        #13=PRODUCT_DEFINITION_SHAPE('file of a shape',$,#10);
        #14=SHAPE_DEFINITION_REPRESENTATION(#13,$);
        #15=PROPERTY_DEFINITION('of a part',$,#3);
        #16=PROPERTY_DEFINITION_REPRESENTATION(#15,$);
        #17=PROPERTY_DEFINITION('of nothing',$,$);
        #18=PROPERTY_DEFINITION_REPRESENTATION(#17,$);
        #19=SHAPE_ASPECT('','a shape aspect',#13,.U.);
        #20=PROPERTY_DEFINITION_REPRESENTATION(#19,$);
        #21=PROPERTY_DEFINITION_REPRESENTATION($,$);
        #22=PROPERTY_DEFINITION('of a property',$,#11);
        #30=EXTERNAL_SOURCE(IDENTIFIER('shelf'));
        #31=MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),$);
        #32=CARTESIAN_POINT('',(1.,2.,3.));
        #40=CARTESIAN_POINT('',());
        #41=CARTESIAN_POINT('',$);
        #50=APPLIED_APPROVAL_ASSIGNMENT($,(#1,#5,#3));
        #51=APPLIED_APPROVAL_ASSIGNMENT($,(#3));
        #52=APPLIED_APPROVAL_ASSIGNMENT($,());
        #53=APPLIED_APPROVAL_ASSIGNMENT($,$);
        #54=APPLIED_APPROVAL_ASSIGNMENT($,('design',7,(#3)));
        #55=REPRESENTATION('',(#32,#40),$);
        #60=MY_OWN_TYPE('a',#3);)");
    return data;
}

}  // namespace

// ---- GetInst

TEST(GetInst, TakesAnInstanceOutOfItsSelect) {
    const SdaiPrimitiveH value = GetInst(Data()[11], "DEFINITION"_h);
    EXPECT_EQ(InstanceIn(value), InstanceIn(Data()[10]));
}

TEST(GetInst, TakesAValueOutOfTheDefinedTypeUnderWhichItWasSelected) {
    const auto definedType = [](const SdaiPrimitiveH& handle) {
        return std::string(static_cast<const SdaiSelectH&>(handle).DefinedType());
    };
    EXPECT_EQ(definedType(Data()[30].GetAttr("SOURCE_ID")), "IDENTIFIER");
    const SdaiPrimitiveH text = GetInst(Data()[30], "SOURCE_ID"_h);
    EXPECT_EQ(TextIn(text), "shelf");
    EXPECT_EQ(definedType(text), "");
    EXPECT_EQ(RealIn(GetInst(Data()[31], "VALUE_COMPONENT"_h)), 2.5);
}

TEST(GetInst, GivesAPlainValueAsItIs) {
    EXPECT_EQ(TextIn(GetInst(Data()[1], "ID"_h)), "P1");
    EXPECT_EQ(InstanceIn(GetInst(Data()[3], "FORMATION"_h)), InstanceIn(Data()[2]));
    EXPECT_THAT(RealsIn(GetInst(Data()[32], "COORDINATES"_h)), ElementsAre(1., 2., 3.));
    EXPECT_EQ(std::string(GetInst(Data()[2], "MAKE_OR_BUY"_h).UnderlyingTypeName()), "ENUMERATION");
}

TEST(GetInst, PassesAnUnknownLogicalOn) {
    const SdaiPrimitiveH value = GetInst(Data()[19], "PRODUCT_DEFINITIONAL"_h);
    EXPECT_FALSE(IsTrue(value));
    EXPECT_FALSE(IsFalse(value));
}

TEST(GetInst, MatchesAttributeNamesWithoutRegardToCase) {
    EXPECT_EQ(InstanceIn(GetInst(Data()[11], "definition"_h)), InstanceIn(Data()[10]));
}

TEST(GetInst, GivesAnUnsetHandleWhereTheAttributeHasNoValue) {
    EXPECT_TRUE(IsUnset(GetInst(Data()[17], "DEFINITION"_h)));
    EXPECT_TRUE(IsUnset(GetInst(Data()[1], "DESCRIPTION"_h)));
}

TEST(GetInst, GivesAnUnsetHandleWhereThereIsNoSuchAttribute) {
    EXPECT_TRUE(IsUnset(GetInst(Data()[1], "DEFINITION"_h)));
    EXPECT_TRUE(IsUnset(GetInst(Data()[1], ""_h)));
    EXPECT_TRUE(IsUnset(GetInst(Data()[60], "DEFINITION"_h)));
    EXPECT_TRUE(IsUnset(GetInst("no instance"_h, "DEFINITION"_h)));
    EXPECT_TRUE(IsUnset(GetInst(7_h, "DEFINITION"_h)));
}

TEST(GetInst, GivesTheIntegerZeroWhenAnArgumentIsMissing) {
    EXPECT_EQ(IntegerIn(GetInst(kMissing, "DEFINITION"_h)), 0);
    EXPECT_EQ(IntegerIn(GetInst(Data()[11], kMissing)), 0);
    EXPECT_EQ(IntegerIn(GetInst(kMissing, kMissing)), 0);
    EXPECT_EQ(IntegerIn(GetInst(static_cast<SdaiEntityInstance*>(nullptr), "ID"_h)), 0);
}

TEST(GetInst, TracesTheEntityTypeAndTheAttribute) {
    TraceCapture trace;
    GetInst(Data()[11], "Definition"_h);
    EXPECT_THAT(trace.Messages(kGetInst), ElementsAre("GetInst sur l'entite:PROPERTY_DEFINITION",
                                                      "et l'attribut      :Definition"));
}

TEST(GetInst, TracesBeforeItLooksWhetherTheInstanceIsThere) {
    TraceCapture trace;
    GetInst(kMissing, "ID"_h);
    EXPECT_THAT(trace.Messages(kGetInst),
                ElementsAre(StartsWith("GetInst sur l'entite:"), "et l'attribut      :ID"));
}

// ---- GetItem

namespace {

const TestModel& Transformations() {
    static const TestModel data("AUTOMOTIVE_DESIGN", R"(
        #1=AXIS2_PLACEMENT_3D('first',$,$,$);
        #2=AXIS2_PLACEMENT_3D('second',$,$,$);
        #3=ITEM_DEFINED_TRANSFORMATION('',$,#1,#2);
        #4=REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION('',$,$,$,#3);
        #5=CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',$,$,$,$,$);
        #6=REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION('',$,$,$,#5);
        #7=ITEM_DEFINED_TRANSFORMATION('',$,$,$);
        #8=REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION('',$,$,$,#7);)");
    return data;
}

// The select that contains the transformation of a relationship.
SdaiPrimitiveH Operator(unsigned long relationship) {
    return Transformations()[relationship].GetAttr("TRANSFORMATION_OPERATOR");
}

}  // namespace

TEST(GetItem, GivesTheFirstItemForIndexOne) {
    EXPECT_EQ(InstanceIn(GetItem(1_h, Operator(4))), InstanceIn(Transformations()[1]));
}

TEST(GetItem, GivesTheSecondItemForEveryOtherIndex) {
    for (const long index : {2L, 7L, 0L, 3L, -1L, std::numeric_limits<long>::max(),
                             std::numeric_limits<long>::min(), 0x100000001L}) {
        EXPECT_EQ(InstanceIn(GetItem(Handle(index), Operator(4))), InstanceIn(Transformations()[2]))
            << index;
    }
}

TEST(GetItem, TakesATransformationThatIsNoSelect) {
    EXPECT_EQ(InstanceIn(GetItem(1_h, Transformations()[3])), InstanceIn(Transformations()[1]));
}

TEST(GetItem, ReadsAnIndexThatIsNoIntegerAsOne) {
    EXPECT_EQ(InstanceIn(GetItem(1.0_h, Operator(4))), InstanceIn(Transformations()[1]));
    EXPECT_EQ(InstanceIn(GetItem("1"_h, Operator(4))), InstanceIn(Transformations()[2]));
}

TEST(GetItem, GivesAnUnsetHandleWhenAnArgumentIsMissing) {
    TraceCapture trace;
    EXPECT_TRUE(IsUnset(GetItem(kMissing, Operator(4))));
    EXPECT_TRUE(IsUnset(GetItem(1_h, kMissing)));
    EXPECT_TRUE(IsUnset(GetItem(kMissing, kMissing)));
    EXPECT_THAT(trace.Messages(kGetItem), IsEmpty());
}

TEST(GetItem, GivesAnUnsetHandleWhereThereIsNoSuchItem) {
    EXPECT_TRUE(IsUnset(GetItem(1_h, Operator(8))));
    EXPECT_TRUE(IsUnset(GetItem(1_h, Operator(6))));
    EXPECT_TRUE(IsUnset(GetItem(2_h, "no transformation"_h)));
}

TEST(GetItem, TracesTheEntityTypeAndTheAttribute) {
    TraceCapture trace;
    GetItem(1_h, Operator(4));
    GetItem(7_h, Operator(4));
    EXPECT_THAT(
        trace.Messages(kGetItem),
        ElementsAre("Nom d'entite:ITEM_DEFINED_TRANSFORMATION", "Attribut lu :TRANSFORM_ITEM_1",
                    "Nom d'entite:ITEM_DEFINED_TRANSFORMATION", "Attribut lu :TRANSFORM_ITEM_2"));
}

// ---- GetMemberCount

TEST(GetMemberCount, CountsTheMembersOfAnAggregate) {
    TraceCapture trace;
    EXPECT_EQ(IntegerIn(GetMemberCount(Data()[32].GetAttr("COORDINATES"))), 3);
    EXPECT_EQ(IntegerIn(GetMemberCount(Data()[51].GetAttr("ITEMS"))), 1);
    EXPECT_THAT(trace.Messages(kGetMemberCount), ElementsAre("Taille3", "Taille1"));
}

TEST(GetMemberCount, CountsNestedAggregatesAsOneMemberEach) {
    EXPECT_EQ(IntegerIn(GetMemberCount(Data()[54].GetAttr("ITEMS"))), 3);
}

TEST(GetMemberCount, IsZeroForAnEmptyAggregate) {
    TraceCapture trace;
    EXPECT_EQ(IntegerIn(GetMemberCount(Data()[40].GetAttr("COORDINATES"))), 0);
    EXPECT_THAT(trace.Messages(kGetMemberCount), ElementsAre("Taille0"));
}

TEST(GetMemberCount, IsZeroWhenTheAggregateIsMissing) {
    TraceCapture trace;
    EXPECT_EQ(IntegerIn(GetMemberCount(kMissing)), 0);
    EXPECT_THAT(trace.Messages(kGetMemberCount), ElementsAre("Taille0"));
}

TEST(GetMemberCount, IsZeroForWhatIsNoAggregate) {
    EXPECT_EQ(IntegerIn(GetMemberCount("(1.,2.)"_h)), 0);
    EXPECT_EQ(IntegerIn(GetMemberCount(3_h)), 0);
    EXPECT_EQ(IntegerIn(GetMemberCount(Data()[32])), 0);
}

// ---- GetRepFromProperty

TEST(GetRepFromProperty, FollowsThePropertyToItsDocumentFile) {
    EXPECT_EQ(InstanceIn(GetRepFromProperty(Data()[12])), InstanceIn(Data()[10]));
}

TEST(GetRepFromProperty, TakesASubtypeOfPropertyDefinition) {
    EXPECT_EQ(InstanceIn(GetRepFromProperty(Data()[14])), InstanceIn(Data()[10]));
}

TEST(GetRepFromProperty, TakesASubtypeOfDocumentFile) {
    const TestModel own(
        "SCHEMA shelf; ENTITY property_definition; definition : document_file; END_ENTITY;"
        "ENTITY property_use; definition : property_definition; END_ENTITY;"
        "ENTITY document_file; id : STRING; END_ENTITY;"
        "ENTITY scanned_file SUBTYPE OF (document_file); END_ENTITY; END_SCHEMA;",
        "#1=SCANNED_FILE('s');#2=PROPERTY_DEFINITION(#1);#3=PROPERTY_USE(#2);");
    EXPECT_EQ(InstanceIn(GetRepFromProperty(own[3])), InstanceIn(own[1]));
}

TEST(GetRepFromProperty, GivesTheIntegerZeroWhenThePropertyIsNotOfADocumentFile) {
    EXPECT_EQ(IntegerIn(GetRepFromProperty(Data()[16])), 0);  // of a product definition
    EXPECT_EQ(IntegerIn(GetRepFromProperty(Data()[18])), 0);  // of nothing
}

TEST(GetRepFromProperty, GivesTheIntegerZeroWhenThereIsNoProperty) {
    EXPECT_EQ(IntegerIn(GetRepFromProperty(Data()[20])), 0);  // a shape aspect instead
    EXPECT_EQ(IntegerIn(GetRepFromProperty(Data()[21])), 0);  // nothing
    EXPECT_EQ(IntegerIn(GetRepFromProperty(Data()[11])), 0);  // one step short of it
    EXPECT_EQ(IntegerIn(GetRepFromProperty(Data()[1])), 0);   // no such attribute
    EXPECT_EQ(IntegerIn(GetRepFromProperty("text"_h)), 0);
}

TEST(GetRepFromProperty, FollowsAPropertyOfAPropertyTwoStepsOnly) {
    EXPECT_EQ(InstanceIn(GetRepFromProperty(Data()[22])), InstanceIn(Data()[10]));
}

TEST(GetRepFromProperty, GivesAnUnsetHandleWhenTheInstanceIsMissing) {
    EXPECT_TRUE(IsUnset(GetRepFromProperty(kMissing)));
}

TEST(GetRepFromProperty, AsksGetInstForEachStep) {
    const std::vector<std::string> firstStep = {
        "GetInst sur l'entite:PROPERTY_DEFINITION_REPRESENTATION",
        "et l'attribut      :DEFINITION"};
    {
        TraceCapture trace;
        GetRepFromProperty(Data()[12]);
        EXPECT_THAT(
            trace.Messages(kGetInst),
            ElementsAre(firstStep[0], firstStep[1], "GetInst sur l'entite:PROPERTY_DEFINITION",
                        "et l'attribut      :DEFINITION"));
    }
    {
        TraceCapture trace;
        GetRepFromProperty(Data()[20]);
        EXPECT_EQ(trace.Messages(kGetInst), firstStep);
    }
    {
        TraceCapture trace;
        GetRepFromProperty(kMissing);
        EXPECT_THAT(trace.Lines(), ElementsAre(std::string(kGetRepFromProperty) + " {",
                                               std::string(kGetRepFromProperty) + " }"));
    }
}

// ---- GetUniqId

namespace {

constexpr char kUuid[] = "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}";

// Sets the owner's name in the environment, or removes it, while it exists.
class Owner {
  public:
    explicit Owner(const std::optional<std::string>& name) {
        if (const char* before = getenv("LOGNAME")) before_ = before;
        Set(name);
    }
    ~Owner() { Set(before_); }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

  private:
    static void Set(const std::optional<std::string>& name) {
        if (name) {
            setenv("LOGNAME", name->c_str(), 1);
        } else {
            unsetenv("LOGNAME");
        }
    }

    std::optional<std::string> before_;
};

}  // namespace

TEST(GetUniqId, BeginsWithTheOwner) {
    const Owner owner("dupont");
    EXPECT_THAT(TextIn(GetUniqId(kMissing)), MatchesRegex(std::string("dupont-") + kUuid));
}

TEST(GetUniqId, KeepsAnOwnerOfAnyLength) {
    const std::string name(5000, 'x');
    const Owner owner(name);
    const std::string id = TextIn(GetUniqId(kMissing));
    EXPECT_EQ(id.size(), name.size() + 1 + 36);
    EXPECT_THAT(id, StartsWith(name + "-"));
}

TEST(GetUniqId, HasAnOwnerOfItsOwnWhereTheEnvironmentNamesNone) {
    for (const std::optional<std::string>& name : {std::optional<std::string>(), {""}}) {
        const Owner owner(name);
        EXPECT_THAT(TextIn(GetUniqId(kMissing)), MatchesRegex(std::string("RZ/ORX-") + kUuid));
    }
}

TEST(GetUniqId, GivesANewIdentifierEachTime) {
    std::set<std::string> identifiers;
    for (int i = 0; i < 1000; ++i) identifiers.insert(TextIn(GetUniqId(kMissing)));
    EXPECT_EQ(identifiers.size(), 1000U);
}

TEST(GetUniqId, DoesNotReadItsArgument) {
    const Owner owner("dupont");
    for (const SdaiPrimitiveH& argument : {kMissing, "durand"_h, 7_h, 1.5_h}) {
        EXPECT_THAT(TextIn(GetUniqId(argument)), MatchesRegex(std::string("dupont-") + kUuid));
    }
}

TEST(GetUniqId, TracesTheIdentifier) {
    TraceCapture trace;
    const std::string id = TextIn(GetUniqId(kMissing));
    EXPECT_THAT(trace.Messages(kGetUniqId), ElementsAre("valeur rendue = " + id));
}

// ---- IsFree

TEST(IsFree, IsTrueForAnAttributeWithoutValue) {
    TraceCapture trace;
    EXPECT_TRUE(IsTrue(IsFree(Data()[1], "DESCRIPTION"_h)));
    EXPECT_THAT(trace.Messages(kIsFree),
                ElementsAre("IsFree sur l'entite:PRODUCT", "et l'attribut      :DESCRIPTION",
                            "Attribut NON value"));
}

TEST(IsFree, IsFalseForAnAttributeWithAValue) {
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(IsFree(Data()[1], "NAME"_h)));
    EXPECT_THAT(trace.Messages(kIsFree), ElementsAre("IsFree sur l'entite:PRODUCT",
                                                     "et l'attribut      :NAME", "Attribut value"));
}

TEST(IsFree, TakesEmptyTextsAndAggregatesAsValues) {
    EXPECT_TRUE(IsFalse(IsFree(Data()[32], "NAME"_h)));
    EXPECT_TRUE(IsFalse(IsFree(Data()[40], "COORDINATES"_h)));
    EXPECT_TRUE(IsTrue(IsFree(Data()[41], "COORDINATES"_h)));
}

TEST(IsFree, SeesInheritedAttributesAndSelects) {
    EXPECT_TRUE(IsFalse(IsFree(Data()[13], "DEFINITION"_h)));
    EXPECT_TRUE(IsTrue(IsFree(Data()[13], "DESCRIPTION"_h)));
    EXPECT_TRUE(IsFalse(IsFree(Data()[30], "SOURCE_ID"_h)));
}

TEST(IsFree, MatchesAttributeNamesWithoutRegardToCase) {
    EXPECT_TRUE(IsFalse(IsFree(Data()[1], "name"_h)));
    EXPECT_TRUE(IsTrue(IsFree(Data()[1], "Description"_h)));
}

TEST(IsFree, IsTrueWhereThereIsNoSuchAttribute) {
    EXPECT_TRUE(IsTrue(IsFree(Data()[1], "COLOUR"_h)));
    EXPECT_TRUE(IsTrue(IsFree(Data()[1], ""_h)));
    EXPECT_TRUE(IsTrue(IsFree(Data()[1], kMissing)));
    EXPECT_TRUE(IsTrue(IsFree(Data()[60], "NAME"_h)));
    EXPECT_TRUE(IsTrue(IsFree("no instance"_h, "NAME"_h)));
}

TEST(IsFree, IsTrueAndSaysNothingOfTheAttributeWhenTheInstanceIsMissing) {
    TraceCapture trace;
    EXPECT_TRUE(IsTrue(IsFree(kMissing, "NAME"_h)));
    EXPECT_TRUE(IsTrue(IsFree(kMissing, kMissing)));
    EXPECT_THAT(trace.Messages(kIsFree), Not(Contains("Attribut value")));
    EXPECT_THAT(trace.Messages(kIsFree), Not(Contains("Attribut NON value")));
}

// ---- PRDDFN_IsIn

namespace {

constexpr char kIsAMember[] = "c''est un element de la liste";
constexpr char kIsNoMember[] = "ce n''est pas un element de la liste";

// If set, the values that are read as instances are counted there.
int* readAsInstances = nullptr;

}  // namespace

// This replaces the platform's conversion, which gives null for a missing value.
SdaiPrimitiveH::operator SdaiEntityInstance*() const {
    if (readAsInstances != nullptr) ++*readAsInstances;
    using Platform = SdaiEntityInstance* (*)(const SdaiPrimitiveH*);
    static const auto platform = reinterpret_cast<Platform>(
        dlsym(RTLD_NEXT, "_ZNK14SdaiPrimitiveHcvP18SdaiEntityInstanceEv"));
    return platform(this);
}

TEST(PRDDFN_IsIn, FindsAMemberWhereverItStands) {
    TraceCapture trace;
    EXPECT_TRUE(IsTrue(PRDDFN_IsIn(Data()[3], Data()[50])));
    EXPECT_TRUE(IsTrue(PRDDFN_IsIn(Data()[5], Data()[50])));
    EXPECT_TRUE(IsTrue(PRDDFN_IsIn(Data()[1], Data()[50])));
    EXPECT_THAT(trace.Messages(kIsIn), ElementsAre(kIsAMember, kIsAMember, kIsAMember));
}

TEST(PRDDFN_IsIn, FindsAMemberOfAnAggregateOfPlainInstances) {
    EXPECT_TRUE(IsTrue(PRDDFN_IsIn(Data()[40], Data()[55])));
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(Data()[41], Data()[55])));
}

TEST(PRDDFN_IsIn, ComparesInstancesAndNotTheirValues) {
    // #4 has the values of #3.
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(Data()[4], Data()[51])));
    EXPECT_THAT(trace.Messages(kIsIn), ElementsAre(kIsNoMember));
}

TEST(PRDDFN_IsIn, TakesAnInstanceHeldByASelect) {
    EXPECT_TRUE(IsTrue(PRDDFN_IsIn(Data()[15].GetAttr("DEFINITION"), Data()[51])));
}

TEST(PRDDFN_IsIn, FindsNothingAmongOtherValues) {
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(Data()[3], Data()[54])));
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn("design"_h, Data()[54])));
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(7_h, Data()[54])));
}

TEST(PRDDFN_IsIn, IsFalseForAnEmptySetAndForNone) {
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(Data()[3], Data()[52])));
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(Data()[3], Data()[53])));
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(Data()[3], Data()[1])));
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(Data()[3], "set"_h)));
    EXPECT_THAT(trace.Messages(kIsIn),
                ElementsAre(kIsNoMember, kIsNoMember, kIsNoMember, kIsNoMember));
}

TEST(PRDDFN_IsIn, IsFalseWhenAnArgumentIsMissing) {
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(kMissing, Data()[50])));
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(Data()[3], kMissing)));
    EXPECT_TRUE(IsFalse(PRDDFN_IsIn(kMissing, kMissing)));
    EXPECT_THAT(trace.Messages(kIsIn), ElementsAre(kIsNoMember, kIsNoMember, kIsNoMember));
}

TEST(PRDDFN_IsIn, ReadsNothingWhenAnArgumentIsMissing) {
    const SdaiPrimitiveH definition = Data()[3];
    const SdaiPrimitiveH set = Data()[51];
    const auto reads = [](const SdaiPrimitiveH& a, const SdaiPrimitiveH& b) {
        int count = 0;
        readAsInstances = &count;
        PRDDFN_IsIn(a, b);
        readAsInstances = nullptr;
        return count;
    };
    EXPECT_GT(reads(definition, set), 0);
    EXPECT_EQ(reads(kMissing, set), 0);
    EXPECT_EQ(reads(definition, kMissing), 0);
    EXPECT_EQ(reads(kMissing, kMissing), 0);
}

// ---- ReadMandatory

TEST(ReadMandatory, GivesTheValueUnchanged) {
    TraceCapture trace;
    EXPECT_EQ(TextIn(ReadMandatory("Dupont"_h, "NAME"_h)), "Dupont");
    EXPECT_THAT(trace.Messages(kReadMandatory),
                ElementsAre("valeur lue :Dupont -> Dupont", "valeur retourne: >Dupont<"));
}

TEST(ReadMandatory, TakesBlanksAsAValue) { EXPECT_EQ(TextIn(ReadMandatory(" "_h, "NAME"_h)), " "); }

TEST(ReadMandatory, SubstitutesAnEmptyValueWithAWarning) {
    TraceCapture trace;
    EXPECT_EQ(TextIn(ReadMandatory(""_h, "S_PART_NUMBER"_h)), "ORX");
    EXPECT_THAT(trace.Messages(kReadMandatory),
                ElementsAre("valeur lue : -> ", "ORX import mapping WARNING:",
                            "   The attribute [S_PART_NUMBER] is valuated by ORX",
                            "valeur retourne: >ORX<"));
}

TEST(ReadMandatory, SubstitutesAMissingValueWithAWarning) {
    TraceCapture trace;
    EXPECT_EQ(TextIn(ReadMandatory(kMissing, "S_PART_NUMBER"_h)), "ORX");
    EXPECT_THAT(trace.Messages(kReadMandatory),
                ElementsAre("ORX import mapping WARNING:",
                            "   The attribute [S_PART_NUMBER] is valuated by ORX",
                            "valeur retourne: >ORX<"));
}

TEST(ReadMandatory, KeepsTheBracketsOfAnEmptyAttributeName) {
    TraceCapture trace;
    EXPECT_EQ(TextIn(ReadMandatory(kMissing, ""_h)), "ORX");
    EXPECT_THAT(trace.Messages(kReadMandatory), Contains("   The attribute [] is valuated by ORX"));
}

TEST(ReadMandatory, SubstitutesWhenBothArgumentsAreMissing) {
    EXPECT_EQ(TextIn(ReadMandatory(kMissing, kMissing)), "ORX");
}

TEST(ReadMandatory, SubstitutesWhatIsNoText) {
    EXPECT_EQ(TextIn(ReadMandatory(7_h, "NAME"_h)), "ORX");
}

// ---- ORXTrunc

TEST(ORXTrunc, GivesTheFirstCharacters) {
    static constexpr struct {
        const char* text;
        long count;
        const char* expected;
    } kCases[] = {
        {"abcdef", 0, ""},
        {"abcdef", 1, "a"},
        {"abcdef", 5, "abcde"},
        {"abcdef", 6, "abcdef"},
        {"abcdef", 7, "abcdef"},  // longer than the text: all of it
        {"", 0, ""},
        {"", 3, ""},
        {"a text of more than fifteen characters", 20, "a text of more than "},
        {"caf\xE9 noir", 4, "caf\xE9"},  // characters are bytes
        {"abcdef", std::numeric_limits<int>::max(), "abcdef"},
        {"abcdef", std::numeric_limits<long>::max(), "abcdef"},
        {"abcdef", 0x100000002L, "abcdef"},  // not 2, as a 32-bit int would have it
        {"abcdef", -1, ""},
        {"abcdef", std::numeric_limits<long>::min(), ""},
        {"abcdef", -0xFFFFFFFEL, ""},
    };
    for (const auto& [text, count, expected] : kCases) {
        EXPECT_EQ(TextIn(ORXTrunc(Handle(text), Handle(count))), expected) << text << ' ' << count;
    }
}

TEST(ORXTrunc, KeepsNulCharacters) {
    EXPECT_EQ(TextIn(ORXTrunc(Handle(std::string_view("a\0bc", 4)), 3_h)), std::string("a\0b", 3));
}

TEST(ORXTrunc, LeavesItsArgumentAsItIs) {
    const SdaiPrimitiveH text = "a text of more than fifteen characters"_h;
    ORXTrunc(text, 3_h);
    EXPECT_EQ(TextIn(text), "a text of more than fifteen characters");
}

TEST(ORXTrunc, ReadsOtherKindsOfArguments) {
    EXPECT_EQ(TextIn(ORXTrunc("abcdef"_h, 2.9_h)), "ab");
    EXPECT_EQ(TextIn(ORXTrunc("abcdef"_h, "2"_h)), "");  // a text reads as the integer 0
    EXPECT_EQ(TextIn(ORXTrunc(12345_h, 2_h)), "");       // a number reads as an empty text
}

TEST(ORXTrunc, HasNoValueWhenAnArgumentIsMissing) {
    TraceCapture trace;
    EXPECT_EQ(TextIn(ORXTrunc(kMissing, 3_h)), "NO VALUE");
    EXPECT_EQ(TextIn(ORXTrunc("abc"_h, kMissing)), "NO VALUE");
    EXPECT_EQ(TextIn(ORXTrunc(kMissing, kMissing)), "NO VALUE");
    EXPECT_THAT(trace.Messages(kTrunc),
                ElementsAre("Valeur de retour: >NO VALUE", "Valeur de retour: >NO VALUE",
                            "Valeur de retour: >NO VALUE"));
}

TEST(ORXTrunc, TracesWhatItReadsAndGives) {
    TraceCapture trace;
    ORXTrunc("abcdef"_h, 2_h);
    EXPECT_THAT(trace.Messages(kTrunc),
                ElementsAre("TheLongStringabcdef", "TheNbOfChar2", "on test la longueur",
                            "on lie la valeur", "Valeur de retour: >ab"));
}

TEST(ORXTrunc, TracesTheCountAsItWasGiven) {
    TraceCapture trace;
    ORXTrunc("abc"_h, 10_h);
    EXPECT_THAT(trace.Messages(kTrunc),
                ElementsAre("TheLongStringabc", "TheNbOfChar10", "on test la longueur",
                            "on lie la valeur", "Valeur de retour: >abc"));
}
