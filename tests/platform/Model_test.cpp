// Models, instances, extents and the dictionary.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "ParsedModel.h"
#include "SdaiIterator.h"

using namespace sdai_names;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// One attribute of every kind, a hierarchy with several supertypes, and a derived attribute.
const char* const kPlant = R"(SCHEMA plant;
TYPE label = STRING; END_TYPE;
TYPE length_measure = REAL; END_TYPE;
TYPE mass_measure = REAL; END_TYPE;
TYPE colour = ENUMERATION OF (red, green); END_TYPE;
TYPE length_or_name = SELECT (length_measure, label, item); END_TYPE;
TYPE some_measure = SELECT (length_measure, mass_measure); END_TYPE;
ENTITY item;
  name : label;
END_ENTITY;
ENTITY machine SUBTYPE OF (item);
  power : OPTIONAL REAL;
  speed : OPTIONAL length_measure;
  slots : OPTIONAL INTEGER;
  paint : OPTIONAL colour;
  running : OPTIONAL LOGICAL;
  licensed : OPTIONAL BOOLEAN;
  code : OPTIONAL BINARY;
  part_of : OPTIONAL item;
  size : OPTIONAL length_or_name;
  amount : OPTIONAL some_measure;
  ratios : OPTIONAL LIST OF REAL;
  grid : OPTIONAL LIST OF LIST OF REAL;
  tags : OPTIONAL LIST OF STRING;
  parts : OPTIONAL SET OF item;
  sizes : OPTIONAL LIST OF length_or_name;
  colours : OPTIONAL LIST OF colour;
END_ENTITY;
ENTITY press SUBTYPE OF (machine);
  force : OPTIONAL REAL;
DERIVE
  SELF\machine.power : REAL := force * 2.0;
END_ENTITY;
ENTITY movable;
  wheels : OPTIONAL INTEGER;
END_ENTITY;
ENTITY robot SUBTYPE OF (machine, movable);
END_ENTITY;
ENTITY tool SUBTYPE OF (item);
END_ENTITY;
END_SCHEMA;
)";

SdaiAppInstance* New(kor::Model& model, const char* type) {
    const SdaiEntity* entity = model.GetEntityDefinition(type);
    EXPECT_NE(entity, nullptr) << type;
    return entity != nullptr ? entity->CreateEntityInstance(&model) : nullptr;
}

std::vector<unsigned long> IdsIn(const SdaiAggrInstance* extent) {
    std::vector<unsigned long> ids;
    EXPECT_NE(extent, nullptr);
    SdaiIterator_Of_SdaiEntityInstanceH iterator(extent);
    while (iterator.Next()) {
        EXPECT_NE(iterator.GetCurrentMember(), nullptr);
        ids.push_back(iterator.GetCurrentMember()->GetInstanceNameId());
    }
    return ids;
}
std::vector<unsigned long> Extent(const ParsedModel& model, const char* type) {
    return IdsIn(model.Model().GetEntityExtent(type));
}

std::string TypeName(const SdaiPrimitiveH& handle) {
    return std::string(handle.UnderlyingTypeName().View());
}
std::string DefinedType(const SdaiPrimitiveH& handle) {
    return std::string(static_cast<const SdaiSelectH&>(handle).DefinedType().View());
}
std::string Name(const SdaiLogical& logical) {
    std::ostringstream stream;
    stream << logical;
    return stream.str();
}

SdaiPrimitiveH List(const std::vector<SdaiPrimitiveH>& members) {
    auto* list = new SdaiAggrInstance;
    for (const SdaiPrimitiveH& member : members) list->Append(member);
    return SdaiPrimitiveH::TakeOver(list);
}

class Plant : public testing::Test {
  protected:
    ParsedModel model{kPlant};
    SdaiAppInstance* machine = New(model.Model(), "MACHINE");
};

}  // namespace

// ---- Schemas and the dictionary

TEST(Dictionary, NamesASchemaInUpperCase) {
    const ParsedModel model("AUTOMOTIVE_DESIGN");
    EXPECT_EQ(model.Model().SchemaName().View(), "AUTOMOTIVE_DESIGN");
    EXPECT_EQ(model.Model().Underlying_schema()->Name().View(), "AUTOMOTIVE_DESIGN");
    const ParsedModel plant(kPlant);
    EXPECT_EQ(plant.Model().SchemaName().View(), "PLANT");
}

TEST(Dictionary, NamesTypesAndAttributesInUpperCase) {
    const ParsedModel model("AUTOMOTIVE_DESIGN", "#1=PRODUCT('p','Part',$,());");
    const SdaiEntity* product = model.Model().GetEntityDefinition("product");
    ASSERT_NE(product, nullptr);
    EXPECT_EQ(product->Name().View(), "PRODUCT");
    EXPECT_EQ(product->AttrDefinition("frame_of_reference")->Name().View(), "FRAME_OF_REFERENCE");
    EXPECT_EQ(model[1].GetInstanceType()->Name().View(), "PRODUCT");
    EXPECT_EQ(TypeName(model[1]), "PRODUCT");
}

TEST(Dictionary, NamesWhatIsInTheDatabaseAsTheSchemaSpellsIt) {
    const ParsedModel model("cdma", "#1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);#2=CDM_DOCCAD($,$,$);");
    EXPECT_EQ(model.Model().SchemaName().View(), "cdma");
    EXPECT_EQ(model.Model().Underlying_schema()->Name().View(), "cdma");
    EXPECT_EQ(model[1].GetInstanceType()->Name().View(), "part_object");
    EXPECT_EQ(TypeName(model[1]), "part_object");
    EXPECT_EQ(model[2].GetInstanceType()->Name().View(), "CDM_DOCCAD");
    const SdaiEntity* part = model.Model().GetEntityDefinition("PART_OBJECT");
    ASSERT_NE(part, nullptr);
    EXPECT_EQ(part->Name().View(), "part_object");
    EXPECT_EQ(part->AttrDefinition("s_part_number")->Name().View(), "S_PART_NUMBER");
    EXPECT_EQ(part->AttrDefinition("MODELS")->Name().View(), "models");
}

TEST(Dictionary, FindsEntityTypesInAnyCase) {
    const ParsedModel model("AUTOMOTIVE_DESIGN");
    const SdaiEntity* product = model.Model().GetEntityDefinition("PRODUCT");
    ASSERT_NE(product, nullptr);
    EXPECT_EQ(model.Model().GetEntityDefinition("product"), product);
    EXPECT_EQ(model.Model().GetEntityDefinition("Product"), product);
    EXPECT_EQ(model.Model().GetEntityDefinition("PRODUCT"_name), product);
    EXPECT_EQ(model.Model().GetEntityDefinition("product"_name), product);
    EXPECT_EQ(model.Model().GetEntityDefinition(""), nullptr);
    EXPECT_EQ(model.Model().GetEntityDefinition("PRODUCTS"), nullptr);
    EXPECT_EQ(model.Model().GetEntityDefinition("NO_SUCH_TYPE"_name), nullptr);
    // A defined type is not an entity type.
    EXPECT_EQ(model.Model().GetEntityDefinition("LABEL"), nullptr);
}

TEST(Dictionary, FindsAttributesInheritedOnesIncluded) {
    const ParsedModel model(kPlant);
    const SdaiEntity* robot = model.Model().GetEntityDefinition("ROBOT");
    ASSERT_NE(robot, nullptr);
    for (const char* name : {"NAME", "name", "Power", "WHEELS", "grid"}) {
        EXPECT_NE(robot->AttrDefinition(name), nullptr) << name;
    }
    EXPECT_NE(robot->AttrDefinition("WHEELS"_name), nullptr);
    EXPECT_EQ(robot->AttrDefinition("FORCE"), nullptr);
    EXPECT_EQ(robot->AttrDefinition("FORCE"_name), nullptr);
    EXPECT_EQ(robot->AttrDefinition(""), nullptr);
    EXPECT_EQ(robot->AttrDefinition("NAMES"), nullptr);
}

// ---- Reading attributes

TEST(Instance, ReadsItsAttributesByNameInAnyCase) {
    const ParsedModel model("AUTOMOTIVE_DESIGN", "#1=PRODUCT('p','Part',$,());");
    const SdaiEntityInstance* product = InstanceIn(model[1]);
    for (const char* name : {"NAME", "name", "Name", "nAmE"}) {
        EXPECT_EQ(TextIn(product->GetAttr(name)), "Part") << name;
        EXPECT_EQ(TextIn(model[1].GetAttr(name)), "Part") << name;
        EXPECT_TRUE(product->TestAttr(name) == sdaiTRUE) << name;
        EXPECT_TRUE(model[1].TestAttr(name) == sdaiTRUE) << name;
    }
    EXPECT_EQ(TextIn(product->GetAttr("NAME"_name)), "Part");
    EXPECT_EQ(TextIn(model[1].GetAttr("name"_name)), "Part");
    EXPECT_TRUE(product->TestAttr("name"_name) == sdaiTRUE);
    EXPECT_TRUE(model[1].TestAttr("NAME"_name) == sdaiTRUE);
}

TEST(Instance, HasNothingInAnAttributeThatIsNotSet) {
    const ParsedModel model("AUTOMOTIVE_DESIGN", "#1=PRODUCT('p','Part',$,());");
    EXPECT_TRUE(IsUnset(model[1].GetAttr("DESCRIPTION")));
    EXPECT_TRUE(model[1].TestAttr("DESCRIPTION") == sdaiFALSE);
    EXPECT_TRUE(model[1].TestAttr("DESCRIPTION"_name) == sdaiFALSE);
}

TEST(Instance, HasNothingInAnAttributeThatItsTypeLacks) {
    const ParsedModel model("AUTOMOTIVE_DESIGN", "#1=PRODUCT('p','Part',$,());");
    for (const char* name : {"NO_SUCH_ATTRIBUTE", "", "NAME ", "NAM", "NAMES"}) {
        EXPECT_TRUE(IsUnset(model[1].GetAttr(name))) << name;
        EXPECT_TRUE(model[1].TestAttr(name) == sdaiFALSE) << name;
    }
    EXPECT_TRUE(IsUnset(model[1].GetAttr("NO_SUCH_ATTRIBUTE"_name)));
    EXPECT_TRUE(model[1].TestAttr("NO_SUCH_ATTRIBUTE"_name) == sdaiFALSE);
}

TEST(Instance, KnowsItsNumberItsModelAndItself) {
    const ParsedModel model("AUTOMOTIVE_DESIGN",
                            "#7=APPLICATION_CONTEXT('x');"
                            "#9=APPLICATION_CONTEXT('x');");
    SdaiEntityInstance* seven = InstanceIn(model[7]);
    SdaiEntityInstance* nine = InstanceIn(model[9]);
    EXPECT_EQ(seven->GetInstanceNameId(), 7U);
    EXPECT_EQ(nine->GetInstanceNameId(), 9U);
    EXPECT_EQ(seven->FindEntityInstanceModel(), &model.Model());
    EXPECT_TRUE(seven->IsSameInstance(seven));
    EXPECT_FALSE(seven->IsSameInstance(nine));
    EXPECT_FALSE(seven->IsSameInstance(nullptr));
}

// ---- Kinds

TEST(Kind, IsTheTypeAndEverySupertype) {
    const ParsedModel model(kPlant);
    const SdaiPrimitiveH robot(New(model.Model(), "ROBOT"));
    for (const char* name : {"ROBOT", "robot", "MACHINE", "Machine", "MOVABLE", "ITEM"}) {
        EXPECT_TRUE(robot.IsKindOf(name) == sdaiTRUE) << name;
        EXPECT_TRUE(InstanceIn(robot)->IsKindOf(name) == sdaiTRUE) << name;
    }
    EXPECT_TRUE(robot.IsKindOf("item"_name) == sdaiTRUE);
    EXPECT_TRUE(InstanceIn(robot)->IsKindOf("MOVABLE"_name) == sdaiTRUE);
    for (const char* name : {"PRESS", "TOOL", "NO_SUCH_TYPE", "", "LABEL", "ROBOTS"}) {
        EXPECT_TRUE(robot.IsKindOf(name) == sdaiFALSE) << name;
        EXPECT_TRUE(InstanceIn(robot)->IsKindOf(name) == sdaiFALSE) << name;
    }
    EXPECT_TRUE(robot.IsKindOf("TOOL"_name) == sdaiFALSE);
    EXPECT_TRUE(robot.IsKindOf("NO_SUCH_TYPE"_name) == sdaiFALSE);
}

TEST(Kind, OfASupertypeIsNotItsSubtype) {
    const ParsedModel model(kPlant);
    const SdaiPrimitiveH item(New(model.Model(), "ITEM"));
    EXPECT_TRUE(item.IsKindOf("ITEM") == sdaiTRUE);
    EXPECT_TRUE(item.IsKindOf("MACHINE") == sdaiFALSE);
}

TEST(Kind, OfAComplexInstanceIsEachOfItsTypes) {
    const ParsedModel model(
        "AUTOMOTIVE_DESIGN",
        "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));"
        "#2=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))"
        "REPRESENTATION_CONTEXT('id','type'));"
        // Written in another order.
        "#3=(SI_UNIT($,.METRE.)NAMED_UNIT(*)LENGTH_UNIT());");
    EXPECT_EQ(model[1].GetInstanceType()->Name().View(), "LENGTH_UNIT+NAMED_UNIT+SI_UNIT");
    EXPECT_EQ(model[3].GetInstanceType()->Name().View(), "LENGTH_UNIT+NAMED_UNIT+SI_UNIT");
    EXPECT_EQ(TypeName(model[2]),
              "GEOMETRIC_REPRESENTATION_CONTEXT+GLOBAL_UNIT_ASSIGNED_CONTEXT+"
              "REPRESENTATION_CONTEXT");
    for (const char* name : {"LENGTH_UNIT", "named_unit", "SI_UNIT"}) {
        EXPECT_TRUE(model[1].IsKindOf(name) == sdaiTRUE) << name;
    }
    EXPECT_TRUE(model[1].IsKindOf("MASS_UNIT") == sdaiFALSE);
    EXPECT_TRUE(model[2].IsKindOf("REPRESENTATION_CONTEXT") == sdaiTRUE);
    // The attributes of all.
    EXPECT_EQ(TypeName(model[1].GetAttr("PREFIX")), "ENUMERATION");
    EXPECT_EQ(IntegerIn(model[2].GetAttr("COORDINATE_SPACE_DIMENSION")), 3);
    EXPECT_EQ(model[2].GetAttr("UNITS").GetMemberCount(), 1);
    EXPECT_EQ(TextIn(model[2].GetAttr("context_type")), "type");
    // In the extent of each, once.
    for (const char* name : {"LENGTH_UNIT", "NAMED_UNIT", "SI_UNIT"}) {
        EXPECT_THAT(Extent(model, name), ElementsAre(1, 3)) << name;
    }
}

TEST(ComplexType, IsFoundByItsNameWithItsExtent) {
    const ParsedModel model("AUTOMOTIVE_DESIGN",
                            "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));"
                            "#2=(MASS_UNIT()NAMED_UNIT(*)SI_UNIT(.KILO.,.GRAM.));"
                            "#3=(SI_UNIT($,.METRE.)NAMED_UNIT(*)LENGTH_UNIT());"
                            // A part whose type no schema declares, with one value and with two.
                            "#4=(LENGTH_UNIT()NAMED_UNIT(*)STRANGE_UNIT(1));"
                            "#5=(LENGTH_UNIT()NAMED_UNIT(*)STRANGE_UNIT(1,2));"
                            "#6=STRANGE_UNIT(1);");
    const SdaiPrimitiveH instance = model[1];
    for (const char* name : {"LENGTH_UNIT+NAMED_UNIT+SI_UNIT", "length_unit+Named_Unit+si_unit"}) {
        SdaiEntity* entity = model.Model().GetEntityDefinition(name);
        ASSERT_NE(entity, nullptr) << name;
        EXPECT_EQ(static_cast<SdaiNamedType*>(entity), instance.GetInstanceType());
        EXPECT_NE(entity->AttrDefinition("PREFIX"), nullptr);
        EXPECT_EQ(entity->AttrDefinition("UNITS"), nullptr);
        EXPECT_THAT(Extent(model, name), ElementsAre(1, 3));
        EXPECT_THAT(IdsIn(model.Model().GetEntityExtent(entity)), ElementsAre(1, 3));
        EXPECT_TRUE(instance.IsKindOf(name) == sdaiTRUE);
        EXPECT_TRUE(model[2].IsKindOf(name) == sdaiFALSE);
    }
    EXPECT_NE(model.Model().GetEntityDefinition("LENGTH_UNIT+NAMED_UNIT+STRANGE_UNIT"), nullptr);
    EXPECT_THAT(Extent(model, "LENGTH_UNIT+NAMED_UNIT+STRANGE_UNIT"), ElementsAre(4, 5));
    EXPECT_THAT(Extent(model, "STRANGE_UNIT"), ElementsAre(4, 5, 6));
    // A combination without instances in the model is not a type.
    EXPECT_EQ(model.Model().GetEntityDefinition("LENGTH_UNIT+MASS_UNIT"), nullptr);
    EXPECT_THAT(Extent(model, "LENGTH_UNIT+MASS_UNIT"), ElementsAre());
}

TEST(ComplexType, IsThatOfInstancesThatAreCreated) {
    const ParsedModel model("AUTOMOTIVE_DESIGN",
                            "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));");
    EXPECT_THAT(Extent(model, "LENGTH_UNIT+NAMED_UNIT+SI_UNIT"), ElementsAre(1));
    SdaiAppInstance* created = New(model.Model(), "LENGTH_UNIT+NAMED_UNIT+SI_UNIT");
    ASSERT_NE(created, nullptr);
    created->PutAttr("NAME", SdaiPrimitiveH::Enumeration("METRE"));
    EXPECT_THAT(Extent(model, "LENGTH_UNIT+NAMED_UNIT+SI_UNIT"), ElementsAre(1, 2));
    EXPECT_THAT(Extent(model, "SI_UNIT"), ElementsAre(1, 2));
}

TEST(UndeclaredType, IsKeptWithItsInstances) {
    const ParsedModel model("AUTOMOTIVE_DESIGN",
                            "#1=MYSTERY_TYPE('a',2,#2);#2=APPLICATION_CONTEXT('x');"
                            "#3=MYSTERY_TYPE('b',3,$);");
    EXPECT_EQ(TypeName(model[1]), "MYSTERY_TYPE");
    EXPECT_TRUE(model[1].IsKindOf("MYSTERY_TYPE") == sdaiTRUE);
    EXPECT_TRUE(model[1].IsKindOf("mystery_type"_name) == sdaiTRUE);
    EXPECT_TRUE(model[1].IsKindOf("APPLICATION_CONTEXT") == sdaiFALSE);
    EXPECT_TRUE(IsUnset(model[1].GetAttr("NAME")));
    EXPECT_TRUE(IsUnset(model[1].GetAttr("")));
    EXPECT_THAT(Extent(model, "MYSTERY_TYPE"), ElementsAre(1, 3));
    EXPECT_THAT(Extent(model, "Mystery_Type"), ElementsAre(1, 3));
    const SdaiEntity* entity = model.Model().GetEntityDefinition("MYSTERY_TYPE");
    ASSERT_NE(entity, nullptr);
    EXPECT_EQ(entity->Name().View(), "MYSTERY_TYPE");
    EXPECT_EQ(entity->AttrDefinition("NAME"), nullptr);
    EXPECT_THAT(IdsIn(model.Model().GetEntityExtent(entity)), ElementsAre(1, 3));
}

// ---- Extents

TEST(Extents, HoldTheTypeAndItsSubtypesInTheOrderOfCreation) {
    const ParsedModel model(kPlant);
    for (const char* type : {"TOOL", "ROBOT", "ITEM", "MOVABLE", "PRESS", "MACHINE", "TOOL"}) {
        New(model.Model(), type);
    }
    EXPECT_THAT(Extent(model, "ITEM"), ElementsAre(1, 2, 3, 5, 6, 7));
    EXPECT_THAT(Extent(model, "MACHINE"), ElementsAre(2, 5, 6));
    EXPECT_THAT(Extent(model, "MOVABLE"), ElementsAre(2, 4));
    EXPECT_THAT(Extent(model, "TOOL"), ElementsAre(1, 7));
    EXPECT_THAT(Extent(model, "robot"), ElementsAre(2));
    EXPECT_THAT(IdsIn(model.Model().GetEntityExtent("MOVABLE"_name)), ElementsAre(2, 4));
    EXPECT_THAT(IdsIn(model.Model().GetEntityExtent(model.Model().GetEntityDefinition("PRESS"))),
                ElementsAre(5));
}

TEST(Extents, HoldTheInstancesOfAFileInTheOrderOfTheFile) {
    const ParsedModel model("CONFIG_CONTROL_DESIGN",
                            "#30=APPLICATION_CONTEXT('x');#10=PRODUCT_CONTEXT('',#30,'');"
                            "#20=PRODUCT_DEFINITION_CONTEXT('',#30,'');"
                            "#5=PRODUCT_CONTEXT('',#30,'');");
    EXPECT_THAT(Extent(model, "APPLICATION_CONTEXT_ELEMENT"), ElementsAre(10, 20, 5));
    EXPECT_THAT(Extent(model, "PRODUCT_CONTEXT"), ElementsAre(10, 5));
}

TEST(Extents, GrowAsInstancesAreCreated) {
    const ParsedModel model(kPlant);
    const SdaiAggrInstance* items = model.Model().GetEntityExtent("ITEM");
    const SdaiAggrInstance* presses = model.Model().GetEntityExtent("PRESS");
    EXPECT_EQ(items->GetMemberCount(), 0);
    for (int i = 0; i < 1'000; ++i) New(model.Model(), i % 2 == 0 ? "PRESS" : "TOOL");
    EXPECT_EQ(items->GetMemberCount(), 1'000);
    EXPECT_EQ(presses->GetMemberCount(), 500);
    EXPECT_EQ(model.Model().GetEntityExtent("ITEM"), items);
    for (long i = 0; i < 1'000; ++i) {
        ASSERT_EQ(items->GetInstanceMember(i)->GetInstanceNameId(),
                  static_cast<unsigned long>(i + 1));
    }
    // An extent requested later has the same members.
    EXPECT_EQ(model.Model().GetEntityExtent("MACHINE")->GetMemberCount(), 500);
}

TEST(Extents, AreEmptyForANameThatTheModelDoesNotKnow) {
    const ParsedModel model(kPlant, "#1=ITEM('a');");
    for (const char* name : {"NO_SUCH_TYPE", "", "LABEL", "PRODUCT"}) {
        const SdaiAggrInstance* extent = model.Model().GetEntityExtent(name);
        ASSERT_NE(extent, nullptr) << name;
        EXPECT_EQ(extent->GetMemberCount(), 0) << name;
    }
    EXPECT_THAT(IdsIn(model.Model().GetEntityExtent("NO_SUCH_TYPE"_name)), IsEmpty());
    EXPECT_THAT(IdsIn(model.Model().GetEntityExtent(static_cast<const SdaiEntity*>(nullptr))),
                IsEmpty());
}

TEST(Extents, TakeNoMembersAndLoseNone) {
    const ParsedModel model(kPlant, "#1=ITEM('a');#2=TOOL('b');");
    auto* tools = const_cast<SdaiAggrInstance*>(model.Model().GetEntityExtent("TOOL"));
    tools->Append(model[1]);
    tools->Append(7_h);
    EXPECT_THAT(IdsIn(tools), ElementsAre(2));
    tools->RemoveAll();
    EXPECT_THAT(IdsIn(tools), ElementsAre(2));
    auto* none = const_cast<SdaiAggrInstance*>(model.Model().GetEntityExtent("NO_SUCH_TYPE"));
    none->Append(model[1]);
    EXPECT_THAT(Extent(model, "NO_SUCH_TYPE"), IsEmpty());
    EXPECT_THAT(Extent(model, "ANOTHER"), IsEmpty());
}

TEST(Extents, TellWhatIsAMember) {
    const ParsedModel model(kPlant, "#1=ITEM('a');#2=TOOL('b');");
    const SdaiAggrInstance* tools = model.Model().GetEntityExtent("TOOL");
    EXPECT_TRUE(tools->IsMember(model[2]));
    EXPECT_FALSE(tools->IsMember(model[1]));
}

// ---- Creating

TEST(Creation, NumbersInstancesAfterTheLargest) {
    const ParsedModel model(kPlant, "#900=ITEM('a');#5=ITEM('b');");
    const SdaiAppInstance* first = New(model.Model(), "TOOL");
    const SdaiAppInstance* second = New(model.Model(), "MACHINE");
    EXPECT_EQ(first->GetInstanceNameId(), 901U);
    EXPECT_EQ(second->GetInstanceNameId(), 902U);
    EXPECT_EQ(model.Model().Find(901), first);
    EXPECT_THAT(Extent(model, "ITEM"), ElementsAre(900, 5, 901, 902));
}

TEST(Creation, BeginsAt1InAnEmptyModel) {
    const ParsedModel model(kPlant);
    EXPECT_EQ(New(model.Model(), "TOOL")->GetInstanceNameId(), 1U);
}

TEST(Creation, LeavesEveryAttributeUnset) {
    const ParsedModel model(kPlant);
    const SdaiAppInstance* robot = New(model.Model(), "ROBOT");
    for (const char* name : {"NAME", "POWER", "WHEELS", "GRID"}) {
        EXPECT_TRUE(robot->TestAttr(name) == sdaiFALSE) << name;
        EXPECT_TRUE(IsUnset(robot->GetAttr(name))) << name;
    }
    EXPECT_EQ(robot->FindEntityInstanceModel(), &model.Model());
    EXPECT_EQ(robot->GetInstanceType()->Name().View(), "ROBOT");
}

TEST(Creation, FailsInNoModelAndInAModelOfAnotherSchema) {
    const ParsedModel plant(kPlant);
    const ParsedModel pdm("PDM_SCHEMA");
    const ParsedModel automotive("AUTOMOTIVE_DESIGN");
    const SdaiEntity* tool = plant.Model().GetEntityDefinition("TOOL");
    EXPECT_EQ(tool->CreateEntityInstance(nullptr), nullptr);
    EXPECT_EQ(tool->CreateEntityInstance(&pdm.Model()), nullptr);
    // Both schemas have a PRODUCT, but not the same one.
    const SdaiEntity* product = automotive.Model().GetEntityDefinition("PRODUCT");
    EXPECT_EQ(product->CreateEntityInstance(&pdm.Model()), nullptr);
    EXPECT_EQ(pdm.Model().InstanceCount(), 0U);
    EXPECT_EQ(plant.Model().InstanceCount(), 0U);
    EXPECT_EQ(automotive.Model().InstanceCount(), 0U);
}

TEST(Creation, PutsTheInstanceIntoTheModelThatIsGiven) {
    const ParsedModel a("PDM_SCHEMA", "#7=APPLICATION_CONTEXT('a');");
    const ParsedModel b("PDM_SCHEMA");
    const SdaiEntity* context = a.Model().GetEntityDefinition("APPLICATION_CONTEXT");
    const SdaiAppInstance* instance = context->CreateEntityInstance(&b.Model());
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(instance->FindEntityInstanceModel(), &b.Model());
    EXPECT_EQ(instance->GetInstanceNameId(), 1U);
    EXPECT_THAT(Extent(a, "APPLICATION_CONTEXT"), ElementsAre(7));
    EXPECT_THAT(Extent(b, "APPLICATION_CONTEXT"), ElementsAre(1));
}

TEST(Models, AreIndependentOfEachOther) {
    const ParsedModel a(kPlant, "#1=TOOL('a');");
    const ParsedModel b(kPlant, "#1=TOOL('b');#2=ITEM('c');");
    EXPECT_EQ(TextIn(a[1].GetAttr("NAME")), "a");
    EXPECT_EQ(TextIn(b[1].GetAttr("NAME")), "b");
    EXPECT_EQ(a[1].FindEntityInstanceModel(), &a.Model());
    EXPECT_EQ(b[1].FindEntityInstanceModel(), &b.Model());
    EXPECT_FALSE(InstanceIn(a[1])->IsSameInstance(InstanceIn(b[1])));
    EXPECT_THAT(Extent(a, "ITEM"), ElementsAre(1));
    EXPECT_THAT(Extent(b, "ITEM"), ElementsAre(1, 2));
}

// ---- Writing attributes

TEST_F(Plant, KeepsAValueOfEveryKind) {
    machine->PutAttr("NAME", "lathe"_h);
    EXPECT_EQ(TextIn(machine->GetAttr("NAME")), "lathe");
    machine->PutAttr("name", "a name of more than fifteen characters"_h);
    EXPECT_EQ(TextIn(machine->GetAttr("NAME")), "a name of more than fifteen characters");
    machine->PutAttr("NAME", ""_h);
    EXPECT_EQ(TextIn(machine->GetAttr("NAME")), "");
    EXPECT_TRUE(machine->TestAttr("NAME") == sdaiTRUE);
    machine->PutAttr("POWER"_name, 2.5_h);
    EXPECT_EQ(RealIn(machine->GetAttr("POWER")), 2.5);
    machine->PutAttr("SLOTS", 7_h);
    EXPECT_EQ(IntegerIn(machine->GetAttr("SLOTS")), 7);
    machine->PutAttr("SLOTS", -1L);
    EXPECT_EQ(IntegerIn(machine->GetAttr("SLOTS")), -1);
    machine->PutAttr("RUNNING", SdaiLogical());
    EXPECT_EQ(Name(machine->GetAttr("RUNNING")), "UNKNOWN");
    EXPECT_TRUE(machine->TestAttr("RUNNING") == sdaiTRUE);
    machine->PutAttr("RUNNING", sdaiLTRUE);
    EXPECT_TRUE(IsTrue(machine->GetAttr("RUNNING")));
    machine->PutAttr("LICENSED", sdaiTRUE);
    EXPECT_EQ(Name(machine->GetAttr("LICENSED")), "TRUE");
    machine->PutAttr("CODE", SdaiPrimitiveH::Binary("0F"));
    EXPECT_EQ(TypeName(machine->GetAttr("CODE")), "BINARY");
    EXPECT_TRUE(IsTrue(machine->GetAttr("CODE") == SdaiPrimitiveH::Binary("0F")));
    machine->PutAttr("PAINT", SdaiPrimitiveH::Enumeration("RED"));
    EXPECT_EQ(TypeName(machine->GetAttr("PAINT")), "ENUMERATION");
    SdaiAppInstance* tool = New(model.Model(), "TOOL");
    machine->PutAttr("PART_OF", SdaiPrimitiveH(tool));
    EXPECT_EQ(InstanceIn(machine->GetAttr("PART_OF")), tool);
    machine->PutAttr("PART_OF", SdaiPrimitiveH(machine));
    EXPECT_EQ(InstanceIn(machine->GetAttr("PART_OF")), machine);
    machine->PutAttr("RATIOS", List({1.5_h, 2.5_h}));
    EXPECT_THAT(RealsIn(machine->GetAttr("RATIOS")), ElementsAre(1.5, 2.5));
    machine->PutAttr("PARTS", List({SdaiPrimitiveH(tool), SdaiPrimitiveH(machine)}));
    EXPECT_THAT(IdsIn(machine->GetAttr("PARTS")), ElementsAre(2, 1));
}

TEST_F(Plant, ClearsAnAttributeWithAnUnsetValue) {
    machine->PutAttr("NAME", "lathe"_h);
    machine->PutAttr("RATIOS", List({1.5_h}));
    machine->PutAttr("PART_OF", SdaiPrimitiveH(machine));
    for (const char* name : {"NAME", "RATIOS", "PART_OF", "POWER"}) {
        machine->PutAttr(name, SdaiPrimitiveH());
        EXPECT_TRUE(machine->TestAttr(name) == sdaiFALSE) << name;
        EXPECT_TRUE(IsUnset(machine->GetAttr(name))) << name;
    }
}

TEST_F(Plant, StaysAsItIsWhenAnAttributeIsWrittenThatTheTypeLacks) {
    machine->PutAttr("NAME", "lathe"_h);
    machine->PutAttr("FORCE", 1.5_h);
    machine->PutAttr("", 1.5_h);
    machine->PutAttr("NO_SUCH_ATTRIBUTE"_name, 1.5_h);
    EXPECT_TRUE(IsUnset(machine->GetAttr("FORCE")));
    EXPECT_EQ(TextIn(machine->GetAttr("NAME")), "lathe");
}

TEST_F(Plant, DoesNotWriteADerivedAttribute) {
    SdaiAppInstance* press = New(model.Model(), "PRESS");
    press->PutAttr("POWER", 1.5_h);
    press->PutAttr("POWER"_name, 1.5_h);
    EXPECT_TRUE(press->TestAttr("POWER") == sdaiFALSE);
    EXPECT_TRUE(IsUnset(press->GetAttr("POWER")));
    press->PutAttr("FORCE", 1.5_h);
    EXPECT_EQ(RealIn(press->GetAttr("FORCE")), 1.5);
    // A type that does not derive it has a value.
    machine->PutAttr("POWER", 1.5_h);
    EXPECT_EQ(RealIn(machine->GetAttr("POWER")), 1.5);
}

TEST(DerivedAttribute, OfAUnitIsNotWrittenWhereverTheInstanceComesFrom) {
    const ParsedModel model("AUTOMOTIVE_DESIGN",
                            "#1=DIMENSIONAL_EXPONENTS(1.,0.,0.,0.,0.,0.,0.);"
                            "#2=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));");
    SdaiAppInstance* created = New(model.Model(), "SI_UNIT");
    created->PutAttr("DIMENSIONS", model[1]);
    EXPECT_TRUE(IsUnset(created->GetAttr("DIMENSIONS")));
    EXPECT_TRUE(IsUnset(model[2].GetAttr("DIMENSIONS")));
    EXPECT_TRUE(model[2].TestAttr("DIMENSIONS") == sdaiFALSE);
}

TEST_F(Plant, KeepsAnIntegerAsARealWhereARealIsDeclared) {
    machine->PutAttr("POWER", 7_h);
    EXPECT_EQ(RealIn(machine->GetAttr("POWER")), 7.0);
    machine->PutAttr("SPEED", 7_h);
    EXPECT_EQ(RealIn(machine->GetAttr("SPEED")), 7.0);
    machine->PutAttr("RATIOS", List({1_h, 2_h}));
    const SdaiAggrInstance* ratios = machine->GetAttr("RATIOS");
    EXPECT_EQ(RealIn(ratios->GetMember(0)), 1.0);
    EXPECT_EQ(RealIn(ratios->GetMember(1)), 2.0);
    machine->PutAttr("GRID", List({List({1_h, 2.5_h}), List({3_h})}));
    const SdaiAggrInstance* grid = machine->GetAttr("GRID");
    const SdaiAggrInstance* row = grid->GetMember(0);
    EXPECT_EQ(RealIn(row->GetMember(0)), 1.0);
    EXPECT_EQ(RealIn(row->GetMember(1)), 2.5);
    // An attribute declared as an integer keeps it.
    machine->PutAttr("SLOTS", 7_h);
    EXPECT_EQ(IntegerIn(machine->GetAttr("SLOTS")), 7);
}

TEST_F(Plant, LeavesAnAttributeAsItIsForAnItemThatIsNotDeclared) {
    machine->PutAttr("PAINT", "red"_h);
    machine->PutAttr("COLOURS", List({"GREEN"_h}));
    for (const char* text : {"BLUE", "RED.);#9=MACHINE(.RED", "", " RED", "R\xC9", "RED\n"}) {
        machine->PutAttr("PAINT", SdaiString(text));
        EXPECT_TRUE(IsTrue(machine->GetAttr("PAINT") == SdaiPrimitiveH::Enumeration("red")))
            << text;
        machine->PutAttr("COLOURS", List({"RED"_h, SdaiPrimitiveH(SdaiString(text))}));
        const SdaiAggrInstance* colours = machine->GetAttr("COLOURS");
        EXPECT_EQ(colours->GetMemberCount(), 1) << text;
    }
    machine->PutAttr("PAINT", SdaiPrimitiveH::Enumeration("BLUE"));
    EXPECT_TRUE(IsTrue(machine->GetAttr("PAINT") == SdaiPrimitiveH::Enumeration("red")));
    machine->PutAttr("PAINT", {});
    EXPECT_FALSE(machine->TestAttr("PAINT"));
}

TEST_F(Plant, KeepsAStringAsAnItemWhereAnEnumerationIsDeclared) {
    machine->PutAttr("PAINT", "RED"_h);
    EXPECT_EQ(TypeName(machine->GetAttr("PAINT")), "ENUMERATION");
    EXPECT_TRUE(IsTrue(machine->GetAttr("PAINT") == SdaiPrimitiveH::Enumeration("RED")));
    machine->PutAttr("COLOURS", List({"RED"_h, "GREEN"_h}));
    const SdaiAggrInstance* colours = machine->GetAttr("COLOURS");
    EXPECT_EQ(TypeName(colours->GetMember(1)), "ENUMERATION");
    // An attribute declared as a string keeps it.
    machine->PutAttr("NAME", "RED"_h);
    EXPECT_EQ(TextIn(machine->GetAttr("NAME")), "RED");
}

TEST_F(Plant, SelectsAPlainValueUnderTheOneDefinedTypeThatItCanBe) {
    machine->PutAttr("SIZE", 2.5_h);
    EXPECT_EQ(RealIn(machine->GetAttr("SIZE")), 2.5);
    EXPECT_EQ(DefinedType(machine->GetAttr("SIZE")), "LENGTH_MEASURE");
    machine->PutAttr("SIZE", "big"_h);
    EXPECT_EQ(TextIn(machine->GetAttr("SIZE")), "big");
    EXPECT_EQ(DefinedType(machine->GetAttr("SIZE")), "LABEL");
    machine->PutAttr("SIZES", List({2.5_h, "big"_h}));
    const SdaiAggrInstance* sizes = machine->GetAttr("SIZES");
    EXPECT_EQ(DefinedType(sizes->GetMember(0)), "LENGTH_MEASURE");
    EXPECT_EQ(DefinedType(sizes->GetMember(1)), "LABEL");
}

TEST_F(Plant, SelectsAnInstanceAsItIs) {
    SdaiAppInstance* tool = New(model.Model(), "TOOL");
    machine->PutAttr("SIZE", SdaiPrimitiveH(tool));
    const SdaiPrimitiveH value = machine->GetAttr("SIZE");
    EXPECT_EQ(DefinedType(value), "");
    EXPECT_EQ(InstanceIn(static_cast<const SdaiSelectH&>(value).getValue()), tool);
}

TEST_F(Plant, LeavesAPlainValueThatSeveralDefinedTypesCanBe) {
    machine->PutAttr("AMOUNT", 2.5_h);
    EXPECT_EQ(RealIn(machine->GetAttr("AMOUNT")), 2.5);
    EXPECT_EQ(DefinedType(machine->GetAttr("AMOUNT")), "");
}

TEST_F(Plant, KeepsTheDefinedTypeOfASelect) {
    machine->PutAttr("AMOUNT", SdaiSelectH("MASS_MEASURE", 2.5_h));
    EXPECT_EQ(RealIn(machine->GetAttr("AMOUNT")), 2.5);
    EXPECT_EQ(DefinedType(machine->GetAttr("AMOUNT")), "MASS_MEASURE");
    SdaiAppInstance* other = New(model.Model(), "MACHINE");
    other->PutAttr("AMOUNT", machine->GetAttr("AMOUNT"));
    machine->PutAttr("AMOUNT", SdaiPrimitiveH());
    EXPECT_EQ(DefinedType(other->GetAttr("AMOUNT")), "MASS_MEASURE");
}

TEST_F(Plant, KeepsACopyOfAnAggregateAndOfItsMembers) {
    const SdaiPrimitiveH row = List({1.5_h});
    const SdaiPrimitiveH grid = List({row, row});
    machine->PutAttr("GRID", grid);
    static_cast<SdaiAggrInstance*>(grid)->RemoveAll();
    static_cast<SdaiAggrInstance*>(row)->Append(2.5_h);
    const SdaiAggrInstance* kept = machine->GetAttr("GRID");
    ASSERT_EQ(kept->GetMemberCount(), 2);
    EXPECT_THAT(RealsIn(kept->GetMember(0)), ElementsAre(1.5));
    EXPECT_THAT(RealsIn(kept->GetMember(1)), ElementsAre(1.5));
    // Writing through the model does not change the original lists.
    static_cast<SdaiAggrInstance*>(kept->GetMember(0))->Append(3.5_h);
    EXPECT_THAT(RealsIn(row), ElementsAre(1.5, 2.5));
    EXPECT_THAT(RealsIn(kept->GetMember(1)), ElementsAre(1.5));
}

TEST_F(Plant, KeepsACopyOfAnAggregateOnTheStack) {
    {
        SdaiAggrInstance tags;
        tags.Append("a tag of more than fifteen characters"_h);
        machine->PutAttr("TAGS", &tags);
    }
    const SdaiAggrInstance* tags = machine->GetAttr("TAGS");
    ASSERT_EQ(tags->GetMemberCount(), 1);
    EXPECT_EQ(TextIn(tags->GetMember(0)), "a tag of more than fifteen characters");
}

TEST_F(Plant, KeepsACopyOfAnAggregateOfAnotherInstance) {
    SdaiAppInstance* other = New(model.Model(), "MACHINE");
    machine->PutAttr("RATIOS", List({1.5_h}));
    other->PutAttr("RATIOS", machine->GetAttr("RATIOS"));
    static_cast<SdaiAggrInstance*>(machine->GetAttr("RATIOS"))->Append(2.5_h);
    EXPECT_THAT(RealsIn(other->GetAttr("RATIOS")), ElementsAre(1.5));
    EXPECT_THAT(RealsIn(machine->GetAttr("RATIOS")), ElementsAre(1.5, 2.5));
}

TEST_F(Plant, StaysTheSameWhenAnAttributeIsWrittenIntoItself) {
    machine->PutAttr("NAME", "a name of more than fifteen characters"_h);
    machine->PutAttr("NAME", machine->GetAttr("NAME"));
    EXPECT_EQ(TextIn(machine->GetAttr("NAME")), "a name of more than fifteen characters");
    machine->PutAttr("RATIOS", List({1.5_h, 2.5_h}));
    machine->PutAttr("RATIOS", machine->GetAttr("RATIOS"));
    EXPECT_THAT(RealsIn(machine->GetAttr("RATIOS")), ElementsAre(1.5, 2.5));
    machine->PutAttr("GRID", List({List({1.5_h})}));
    const SdaiAggrInstance* grid = machine->GetAttr("GRID");
    machine->PutAttr("GRID", grid->GetMember(0));
    EXPECT_THAT(RealsIn(machine->GetAttr("GRID")), ElementsAre(1.5));
}

TEST_F(Plant, LeavesHandlesAsTheyWereWhenTheAttributeIsOverwritten) {
    machine->PutAttr("NAME", "a name of more than fifteen characters"_h);
    machine->PutAttr("TAGS", List({"a tag of more than fifteen characters"_h, "b"_h}));
    machine->PutAttr("RATIOS", List({1.5_h, 2.5_h}));
    machine->PutAttr("AMOUNT", SdaiSelectH("MASS_MEASURE", 2.5_h));
    machine->PutAttr("SIZE", "a size of more than fifteen characters"_h);
    const SdaiPrimitiveH name = machine->GetAttr("NAME");
    const SdaiPrimitiveH tags = machine->GetAttr("TAGS");
    const SdaiPrimitiveH ratios = machine->GetAttr("RATIOS");
    const SdaiPrimitiveH amount = machine->GetAttr("AMOUNT");
    const SdaiPrimitiveH size = machine->GetAttr("SIZE");
    for (int round = 0; round < 3; ++round) {
        for (const char* attribute : {"NAME", "TAGS", "RATIOS", "AMOUNT", "SIZE"}) {
            machine->PutAttr(attribute, round == 1 ? SdaiPrimitiveH() : 1.5_h);
        }
        machine->PutAttr("TAGS", List({"c"_h}));
        machine->PutAttr("RATIOS", List({3.5_h, 4.5_h, 5.5_h}));
    }
    EXPECT_EQ(TextIn(name), "a name of more than fifteen characters");
    const SdaiAggrInstance* oldTags = tags;
    ASSERT_EQ(oldTags->GetMemberCount(), 2);
    EXPECT_EQ(TextIn(oldTags->GetMember(0)), "a tag of more than fifteen characters");
    EXPECT_THAT(RealsIn(ratios), ElementsAre(1.5, 2.5));
    EXPECT_EQ(RealIn(amount), 2.5);
    EXPECT_EQ(DefinedType(amount), "MASS_MEASURE");
    EXPECT_EQ(TextIn(size), "a size of more than fifteen characters");
    EXPECT_EQ(DefinedType(size), "LABEL");
    EXPECT_THAT(RealsIn(machine->GetAttr("RATIOS")), ElementsAre(3.5, 4.5, 5.5));
}

// Pointers and iterators own nothing: what they refer to belongs to the model, wherever it came
// from.
TEST_F(Plant, LeavesPointersAndIteratorsAsTheyWereWhenTheAttributeIsOverwritten) {
    const ParsedModel file(kPlant,
                           "#1=MACHINE('m',$,$,$,$,$,$,$,$,$,$,$,((1.5,2.5),(3.5)),"
                           "('a tag of more than fifteen characters','b'),$,$,$);");
    auto* read = static_cast<SdaiAppInstance*>(InstanceIn(file[1]));
    machine->PutAttr("GRID", List({List({1.5_h, 2.5_h}), List({3.5_h})}));
    machine->PutAttr("TAGS", List({"a tag of more than fifteen characters"_h, "b"_h}));
    for (SdaiAppInstance* instance : {machine, read}) {
        const SdaiAggrInstance* grid = instance->GetAttr("GRID");
        const SdaiAggrInstance* row = grid->GetMember(0);
        const SdaiAggrInstance* tags = instance->GetAttr("TAGS");
        SdaiIterInstance tag(tags);
        SdaiIterator_Of_SdaiReal real(row, sdaiRO);
        EXPECT_TRUE(real.Next() == sdaiTRUE);
        EXPECT_TRUE(tag.Next() == sdaiTRUE);
        for (int round = 0; round < 3; ++round) {
            instance->PutAttr("GRID", List({List({9.5_h})}));
            instance->PutAttr("TAGS", round == 1 ? SdaiPrimitiveH() : List({"c"_h}));
        }
        EXPECT_EQ(TextIn(tag.GetCurrentValue()), "a tag of more than fifteen characters");
        EXPECT_TRUE(tag.Next() == sdaiTRUE);
        EXPECT_EQ(TextIn(tag.GetCurrentValue()), "b");
        EXPECT_TRUE(real.Next() == sdaiTRUE);
        EXPECT_EQ(real.GetCurrentMember(), 2.5);
        EXPECT_EQ(grid->GetMemberCount(), 2);
        EXPECT_THAT(RealsIn(grid->GetMember(1)), ElementsAre(3.5));
    }
}

TEST_F(Plant, LeavesPointersAsTheyWereWhenASelectThatHoldsAnAggregateIsOverwritten) {
    machine->PutAttr("SIZE", SdaiSelectH("SOME_LIST", List({1.5_h, 2.5_h})));
    const SdaiAggrInstance* size = machine->GetAttr("SIZE");
    machine->PutAttr("SIZE", SdaiPrimitiveH());
    EXPECT_EQ(size->GetMemberCount(), 2);
    EXPECT_EQ(size->GetRealMember(1), 2.5);
}

TEST_F(Plant, LeavesPointersOnMembersAsTheyWereWhenTheAggregateIsCleared) {
    const ParsedModel file(kPlant,
                           "#1=MACHINE('m',$,$,$,$,$,$,$,$,$,$,$,((1.5,2.5),(3.5)),$,$,$,$);");
    machine->PutAttr("GRID", List({List({1.5_h, 2.5_h}), List({3.5_h})}));
    for (const SdaiEntityInstance* instance : {InstanceIn(file[1]), InstanceIn(machine)}) {
        SdaiAggrInstance* grid = instance->GetAttr("GRID");
        for (int round = 0; round < 2; ++round) {
            SdaiAggrInstance* row = grid->GetMember(0);
            row->Append(9.5_h);
            grid->RemoveAll();
            EXPECT_EQ(grid->GetMemberCount(), 0);
            ASSERT_EQ(row->GetMemberCount(), 3);
            EXPECT_EQ(row->GetRealMember(1), 2.5);
            row->Append(10.5_h);
            EXPECT_EQ(row->GetRealMember(3), 10.5);
            grid->Append(List({1.5_h, 2.5_h}));
        }
    }
}

TEST_F(Plant, WritesInstancesThatWereReadFromAFile) {
    const ParsedModel file("AUTOMOTIVE_DESIGN", "#1=PRODUCT('p','Part',$,());");
    auto* product = static_cast<SdaiAppInstance*>(InstanceIn(file[1]));
    product->PutAttr("DESCRIPTION", "new"_h);
    product->PutAttr("NAME", SdaiPrimitiveH());
    EXPECT_EQ(TextIn(file[1].GetAttr("DESCRIPTION")), "new");
    EXPECT_TRUE(IsUnset(file[1].GetAttr("NAME")));
    EXPECT_EQ(TextIn(file[1].GetAttr("ID")), "p");
}

// ---- References

TEST(References, AreReadFromInstancesOfManyTypes) {
    const ParsedModel model(
        "AUTOMOTIVE_DESIGN",
        "#1=APPLICATION_CONTEXT('x');#2=PRODUCT_CONTEXT('',#1,'');"
        "#3=PRODUCT('p','Part',$,(#2));#4=PRODUCT_DEFINITION_FORMATION('f',$,#3);"
        "#5=PRODUCT_DEFINITION_CONTEXT('',#1,'');#6=PRODUCT_DEFINITION('d',$,#4,#5);"
        "#7=PROPERTY_DEFINITION('',$,#6);#8=GENERAL_PROPERTY('','',$);"
        "#9=PROPERTY_DEFINITION('',$,$);#10=DOCUMENT_TYPE('t');"
        "#11=ALTERNATE_PRODUCT_RELATIONSHIP('','definition as a text',#3,#3,'');"
        "#12=SHAPE_DEFINITION_REPRESENTATION(#7,$);");
    const auto definition = [](SdaiEntityInstance* instance) -> SdaiEntityInstance* {
        return SdaiPrimitiveH(instance).GetAttr("definition"_name);
    };
    for (int round = 0; round < 2; ++round) {
        // A select returns the instance in it.
        EXPECT_EQ(definition(InstanceIn(model[7])), InstanceIn(model[6]));
        EXPECT_EQ(definition(InstanceIn(model[12])), InstanceIn(model[7]));
        // Unset; no such attribute; not an instance; no instance to read from.
        EXPECT_EQ(definition(InstanceIn(model[9])), nullptr);
        EXPECT_EQ(definition(InstanceIn(model[8])), nullptr);
        EXPECT_EQ(definition(InstanceIn(model[11])), nullptr);
        EXPECT_EQ(definition(nullptr), nullptr);
    }
    // An aggregate is not an instance.
    const auto frame = [](SdaiEntityInstance* instance) -> SdaiEntityInstance* {
        return SdaiPrimitiveH(instance).GetAttr("FRAME_OF_REFERENCE"_name);
    };
    EXPECT_EQ(frame(InstanceIn(model[2])), InstanceIn(model[1]));
    EXPECT_EQ(frame(InstanceIn(model[3])), nullptr);
    EXPECT_EQ(frame(InstanceIn(model[6])), InstanceIn(model[5]));
}
