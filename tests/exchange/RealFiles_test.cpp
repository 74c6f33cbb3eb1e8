// Published schemas and a file of a CAD system, if available.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Exchange.h"
#include "Orx.h"
#include "ParsedModel.h"

namespace {

using exchange::DataSet;
using exchange::Messages;
using exchange::SchemaPtr;
using kor::Domain;
using testing::Contains;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

// ---- Schemas

class RealSchema : public testing::Test {
  protected:
    explicit RealSchema(const char* file) : path_(std::string(SHARED_DATA) + "/schemas/" + file) {}

    void SetUp() override {
        if (!std::filesystem::exists(path_)) GTEST_SKIP() << path_ << " is not there";
        Messages messages;
        const std::vector<SchemaPtr> schemas = exchange::ReadSchemas(path_, messages);
        for (const auto& error : messages.Errors()) ADD_FAILURE() << error.ToString();
        for (const auto& warning : messages.Warnings()) ADD_FAILURE() << warning.ToString();
        ASSERT_EQ(schemas.size(), 1U);
        schema_ = schemas[0];
    }

    const kor::EntityType& Entity(const std::string& name) const {
        const kor::EntityType* entity = schema_->FindEntity(std::string_view(name));
        if (entity == nullptr) throw std::runtime_error("no entity type " + name);
        return *entity;
    }
    // The attributes of an entity type; a derived one in brackets.
    std::vector<std::string> Slots(const std::string& name) const {
        std::vector<std::string> names;
        for (const kor::Slot& slot : Entity(name).Slots()) {
            const std::string attribute(slot.attribute->Name().View());
            names.push_back(slot.derived ? "(" + attribute + ")" : attribute);
        }
        return names;
    }
    const Domain& DomainOf(const std::string& entity, const std::string& attribute) const {
        const kor::Index slot = Entity(entity).SlotOf(std::string_view(attribute));
        if (!slot) throw std::runtime_error("no attribute " + attribute);
        return *Entity(entity).Slots()[*slot].domain;
    }
    std::vector<std::string> Choices(const std::string& entity,
                                     const std::string& attribute) const {
        const Domain* domain = &DomainOf(entity, attribute);
        while (domain->base == kor::Base::Aggregate) domain = domain->element;
        EXPECT_EQ(domain->base, kor::Base::Select);
        std::vector<std::string> names;
        for (const auto& [name, choice] : domain->choices) names.push_back(name);
        for (const kor::EntityType* choice : domain->entities) {
            names.emplace_back(choice->Name().View());
        }
        return names;
    }
    std::string EntityOf(const std::string& entity, const std::string& attribute) const {
        const Domain& domain = DomainOf(entity, attribute);
        return domain.entity == nullptr ? "" : std::string(domain.entity->Name().View());
    }

    std::string path_;
    SchemaPtr schema_;
};

class AutomotiveDesign : public RealSchema {
  protected:
    AutomotiveDesign() : RealSchema("AP214E3_2010.exp") {}
};

TEST_F(AutomotiveDesign, IsReadWhole) {
    EXPECT_EQ(schema_->Name().View(), "AUTOMOTIVE_DESIGN");
    EXPECT_EQ(schema_->Entities().size(), 915U);
}

TEST_F(AutomotiveDesign, HasItsAttributesInOrder) {
    EXPECT_THAT(Slots("EDGE_CURVE"),
                ElementsAre("NAME", "EDGE_START", "EDGE_END", "EDGE_GEOMETRY", "SAME_SENSE"));
    EXPECT_THAT(
        Slots("CARTESIAN_TRANSFORMATION_OPERATOR"),
        ElementsAre("NAME", "NAME", "DESCRIPTION", "AXIS1", "AXIS2", "LOCAL_ORIGIN", "SCALE"));
    EXPECT_THAT(Slots("DOCUMENT_FILE"),
                ElementsAre("ID", "NAME", "DESCRIPTION", "KIND", "NAME", "DESCRIPTION"));
    EXPECT_THAT(Slots("STYLED_ITEM"), ElementsAre("NAME", "STYLES", "ITEM"));
}

TEST_F(AutomotiveDesign, HasItsSupertypes) {
    // Both supertypes of a literal number come from simple_generic_expression.
    for (const char* kind :
         {"INT_LITERAL", "LITERAL_NUMBER", "SIMPLE_NUMERIC_EXPRESSION", "NUMERIC_EXPRESSION",
          "EXPRESSION", "GENERIC_EXPRESSION", "SIMPLE_GENERIC_EXPRESSION", "GENERIC_LITERAL"}) {
        EXPECT_TRUE(Entity("INT_LITERAL").IsKindOf(std::string_view(kind))) << kind;
    }
    EXPECT_EQ(Entity("INT_LITERAL").Lineage().size(), 8U);
    EXPECT_TRUE(Entity("SEAM_EDGE").IsKindOf(std::string_view("TOPOLOGICAL_REPRESENTATION_ITEM")));
    EXPECT_FALSE(Entity("SEAM_EDGE").IsKindOf(std::string_view("EDGE_CURVE")));
}

TEST_F(AutomotiveDesign, HasItsRedeclaredAttributes) {
    EXPECT_THAT(Slots("INT_LITERAL"), ElementsAre("THE_VALUE"));
    EXPECT_EQ(DomainOf("LITERAL_NUMBER", "THE_VALUE").base, kor::Base::Number);
    EXPECT_EQ(DomainOf("INT_LITERAL", "THE_VALUE").base, kor::Base::Integer);
    EXPECT_EQ(DomainOf("REAL_LITERAL", "THE_VALUE").base, kor::Base::Real);

    EXPECT_THAT(Slots("ANNOTATION_CURVE_OCCURRENCE"), ElementsAre("NAME", "STYLES", "ITEM"));
    EXPECT_EQ(EntityOf("STYLED_ITEM", "ITEM"), "REPRESENTATION_ITEM");
    EXPECT_EQ(EntityOf("ANNOTATION_CURVE_OCCURRENCE", "ITEM"), "CURVE");
    EXPECT_EQ(EntityOf("CAMERA_IMAGE", "MAPPING_SOURCE"), "CAMERA_USAGE");
    EXPECT_EQ(EntityOf("CAMERA_IMAGE", "MAPPING_TARGET"), "PLANAR_BOX");

    EXPECT_THAT(Slots("CYLINDRICAL_PAIR_RANGE"),
                ElementsAre("APPLIES_TO_PAIR", "LOWER_LIMIT_ACTUAL_TRANSLATION",
                            "UPPER_LIMIT_ACTUAL_TRANSLATION", "LOWER_LIMIT_ACTUAL_ROTATION",
                            "UPPER_LIMIT_ACTUAL_ROTATION"));
    EXPECT_EQ(EntityOf("CYLINDRICAL_PAIR_RANGE", "APPLIES_TO_PAIR"), "CYLINDRICAL_PAIR");
}

TEST_F(AutomotiveDesign, HasItsDerivedAttributes) {
    EXPECT_THAT(Slots("SI_UNIT"), ElementsAre("(DIMENSIONS)", "PREFIX", "NAME"));
    EXPECT_THAT(Slots("CONVERSION_BASED_UNIT"),
                ElementsAre("(DIMENSIONS)", "NAME", "CONVERSION_FACTOR"));
    EXPECT_THAT(Slots("LENGTH_UNIT"), ElementsAre("DIMENSIONS"));
    EXPECT_THAT(Slots("ORIENTED_EDGE"),
                ElementsAre("NAME", "(EDGE_START)", "(EDGE_END)", "EDGE_ELEMENT", "ORIENTATION"));
    EXPECT_THAT(Slots("SEAM_EDGE"), ElementsAre("NAME", "(EDGE_START)", "(EDGE_END)",
                                                "EDGE_ELEMENT", "ORIENTATION", "PCURVE_REFERENCE"));
    // One attribute narrowed, another derived.
    EXPECT_THAT(Slots("MECHANISM_BASE_PLACEMENT"),
                ElementsAre("NAME", "DESCRIPTION", "REP_1", "(REP_2)", "TRANSFORMATION_OPERATOR",
                            "BASE_OF_MECHANISM"));
    EXPECT_EQ(EntityOf("MECHANISM_BASE_PLACEMENT", "TRANSFORMATION_OPERATOR"),
              "CARTESIAN_TRANSFORMATION_OPERATOR_3D");
}

TEST_F(AutomotiveDesign, HasItsSelects) {
    EXPECT_THAT(Choices("PROPERTY_DEFINITION", "DEFINITION"),
                UnorderedElementsAre("CHARACTERIZED_OBJECT", "PRODUCT_DEFINITION",
                                     "PRODUCT_DEFINITION_RELATIONSHIP", "PRODUCT_DEFINITION_SHAPE",
                                     "SHAPE_ASPECT", "SHAPE_ASPECT_RELATIONSHIP"));
    EXPECT_THAT(
        Choices("MEASURE_WITH_UNIT", "VALUE_COMPONENT"),
        UnorderedElementsAre(
            "AMOUNT_OF_SUBSTANCE_MEASURE", "AREA_MEASURE", "CELSIUS_TEMPERATURE_MEASURE",
            "CONTEXT_DEPENDENT_MEASURE", "COUNT_MEASURE", "DESCRIPTIVE_MEASURE",
            "ELECTRIC_CURRENT_MEASURE", "LENGTH_MEASURE", "LUMINOUS_INTENSITY_MEASURE",
            "MASS_MEASURE", "NUMERIC_MEASURE", "NON_NEGATIVE_LENGTH_MEASURE", "PARAMETER_VALUE",
            "PLANE_ANGLE_MEASURE", "POSITIVE_LENGTH_MEASURE", "POSITIVE_PLANE_ANGLE_MEASURE",
            "POSITIVE_RATIO_MEASURE", "RATIO_MEASURE", "SOLID_ANGLE_MEASURE",
            "THERMODYNAMIC_TEMPERATURE_MEASURE", "TIME_MEASURE", "VOLUME_MEASURE"));
}

class ConfigControlDesign : public RealSchema {
  protected:
    ConfigControlDesign() : RealSchema("ap203.exp") {}
};

TEST_F(ConfigControlDesign, IsReadWhole) {
    EXPECT_EQ(schema_->Name().View(), "CONFIG_CONTROL_DESIGN");
    EXPECT_EQ(schema_->Entities().size(), 254U);
}

TEST_F(ConfigControlDesign, HasItsAttributes) {
    EXPECT_THAT(Slots("PERSON"), ElementsAre("ID", "LAST_NAME", "FIRST_NAME", "MIDDLE_NAMES",
                                             "PREFIX_TITLES", "SUFFIX_TITLES"));
    EXPECT_FALSE(Entity("PERSON").Slots()[0].attribute->optional);
    EXPECT_TRUE(Entity("PERSON").Slots()[5].attribute->optional);
    EXPECT_THAT(Slots("RATIONAL_B_SPLINE_CURVE"),
                ElementsAre("NAME", "DEGREE", "CONTROL_POINTS_LIST", "CURVE_FORM", "CLOSED_CURVE",
                            "SELF_INTERSECT", "WEIGHTS_DATA"));
    EXPECT_THAT(Slots("BOUNDED_SURFACE_CURVE"),
                ElementsAre("NAME", "CURVE_3D", "ASSOCIATED_GEOMETRY", "MASTER_REPRESENTATION"));
    EXPECT_THAT(Slots("ORIENTED_PATH"),
                ElementsAre("NAME", "(EDGE_LIST)", "PATH_ELEMENT", "ORIENTATION"));
    EXPECT_TRUE(Entity("BOUNDED_SURFACE_CURVE").IsKindOf(std::string_view("BOUNDED_CURVE")));
    EXPECT_TRUE(Entity("BOUNDED_SURFACE_CURVE").IsKindOf(std::string_view("SURFACE_CURVE")));
}

TEST_F(ConfigControlDesign, HasItsSelects) {
    EXPECT_THAT(Choices("PROPERTY_DEFINITION", "DEFINITION"),
                UnorderedElementsAre("PRODUCT_DEFINITION", "PRODUCT_DEFINITION_RELATIONSHIP",
                                     "PRODUCT_DEFINITION_SHAPE", "SHAPE_ASPECT",
                                     "SHAPE_ASPECT_RELATIONSHIP"));
    EXPECT_THAT(Choices("CC_DESIGN_APPROVAL", "ITEMS"),
                UnorderedElementsAre("PRODUCT_DEFINITION_FORMATION", "PRODUCT_DEFINITION",
                                     "CONFIGURATION_EFFECTIVITY", "CONFIGURATION_ITEM",
                                     "SECURITY_CLASSIFICATION", "CHANGE_REQUEST", "CHANGE",
                                     "START_REQUEST", "START_WORK", "CERTIFICATION", "CONTRACT"));
    EXPECT_THAT(Choices("TRIMMED_CURVE", "TRIM_1"),
                UnorderedElementsAre("CARTESIAN_POINT", "PARAMETER_VALUE"));
}

class PdmSchema : public RealSchema {
  protected:
    PdmSchema() : RealSchema("pdm_schema_12.exp") {}
};

TEST_F(PdmSchema, IsReadWhole) {
    EXPECT_EQ(schema_->Name().View(), "PDM_SCHEMA");
    EXPECT_EQ(schema_->Entities().size(), 210U);
    EXPECT_THAT(Slots("SI_UNIT"), ElementsAre("(DIMENSIONS)", "PREFIX", "NAME"));
    EXPECT_THAT(Slots("DOCUMENT_FILE"),
                ElementsAre("ID", "NAME", "DESCRIPTION", "KIND", "NAME", "DESCRIPTION"));
    EXPECT_THAT(
        Choices("APPLIED_APPROVAL_ASSIGNMENT", "ITEMS"),
        UnorderedElementsAre("ACTION", "APPLIED_ACTION_ASSIGNMENT", "CERTIFICATION",
                             "CONFIGURATION_EFFECTIVITY", "CONTRACT", "PRODUCT_DEFINITION",
                             "PRODUCT_DEFINITION_FORMATION", "PRODUCT_DEFINITION_RELATIONSHIP",
                             "VERSIONED_ACTION_REQUEST"));
}

// ---- An assembly

class Assembly : public testing::Test {
  protected:
    void SetUp() override {
        if (!std::filesystem::exists(kPath)) GTEST_SKIP() << kPath << " is not there";
    }

    static DataSet Read(const exchange::SchemaCatalog& schemas) {
        Messages messages;
        DataSet dataSet = exchange::ReadDataSet(kPath, schemas, {}, messages);
        for (const auto& error : messages.Errors()) ADD_FAILURE() << error.ToString();
        for (const auto& warning : messages.Warnings()) ADD_FAILURE() << warning.ToString();
        if (dataSet.model == nullptr) throw std::runtime_error("the assembly cannot be read");
        return dataSet;
    }
    // The full schema, which must be available.
    static exchange::SchemaCatalog FullSchema() {
        Messages messages;
        exchange::SchemaCatalog schemas;
        for (SchemaPtr& schema : exchange::ReadSchemas(kSchemaPath, messages)) {
            schemas.Add(std::move(schema));
        }
        return schemas;
    }
    static long Count(const DataSet& dataSet, const char* type) {
        return dataSet.model->GetEntityExtent(SdaiString(type))->GetMemberCount();
    }
    static void CheckContent(const DataSet& dataSet) {
        EXPECT_EQ(dataSet.model->InstanceCount(), 6425U);
        std::uint64_t largestId = 0;
        dataSet.model->ForEachInstance([&largestId](const kor::Instance& instance) {
            largestId = std::max(largestId, instance.Id());
        });
        EXPECT_EQ(largestId, 6425U);
        EXPECT_EQ(Count(dataSet, "PRODUCT"), 9);
        EXPECT_EQ(Count(dataSet, "NEXT_ASSEMBLY_USAGE_OCCURRENCE"), 13);
        EXPECT_EQ(Count(dataSet, "CARTESIAN_POINT"), 3506);
        EXPECT_EQ(Count(dataSet, "ADVANCED_FACE"), 53);
        EXPECT_EQ(Count(dataSet, "MANIFOLD_SOLID_BREP"), 5);
        const SdaiPrimitiveH product = dataSet.model->Find(7);
        EXPECT_EQ(TextIn(product.GetAttr("ID")), "as1");
        const SdaiPrimitiveH unit = dataSet.model->Find(32);
        EXPECT_EQ(unit.UnderlyingTypeName().View(), "LENGTH_UNIT+NAMED_UNIT+SI_UNIT");
        const SdaiPrimitiveH uncertainty = dataSet.model->Find(35);
        EXPECT_EQ(RealIn(uncertainty.GetAttr("VALUE_COMPONENT")), 5e-6);
        const SdaiPrimitiveH placement = dataSet.model->Find(15);
        EXPECT_THAT(RealsIn(placement.GetAttr("LOCATION").GetAttr("COORDINATES")),
                    ElementsAre(-10.0, 75.0, 60.0));
    }

    inline static const std::string kPath = std::string(SHARED_DATA) + "/data/as1-oc-214.stp";
    inline static const std::string kSchemaPath =
        std::string(SHARED_DATA) + "/schemas/AP214E3_2010.exp";
};

TEST_F(Assembly, IsReadWithTheBuiltInSchema) { CheckContent(Read(exchange::SchemaCatalog())); }

TEST_F(Assembly, IsReadWithTheFullSchema) {
    if (!std::filesystem::exists(kSchemaPath)) GTEST_SKIP() << kSchemaPath << " is not there";
    const DataSet dataSet = Read(FullSchema());
    CheckContent(dataSet);
    EXPECT_TRUE(dataSet.model->Find(7)->IsKindOf("PRODUCT"));
    EXPECT_GT(Count(dataSet, "REPRESENTATION_ITEM"), 3506);
}

TEST_F(Assembly, IsWrittenTheSameUnderBothSchemas) {
    if (!std::filesystem::exists(kSchemaPath)) GTEST_SKIP() << kSchemaPath << " is not there";
    EXPECT_TRUE(exchange::ToExchangeText(Read(exchange::SchemaCatalog())) ==
                exchange::ToExchangeText(Read(FullSchema())));
}

TEST_F(Assembly, ReadAndWrittenAgainIsTheSame) {
    const std::string text = exchange::ToExchangeText(Read(exchange::SchemaCatalog()));
    Messages messages;
    const DataSet again =
        exchange::ParseDataSet(text, "again", exchange::SchemaCatalog(), {}, messages);
    EXPECT_EQ(messages.ErrorCount(), 0U);
    EXPECT_EQ(messages.WarningCount(), 0U);
    ASSERT_NE(again.model, nullptr);
    CheckContent(again);
    EXPECT_TRUE(exchange::ToExchangeText(again) == text);
}

// The text is the same, token for token, apart from the spelling of its reals.
TEST_F(Assembly, KeepsItsRecords) {
    const std::string text = exchange::ToExchangeText(Read(exchange::SchemaCatalog()));
    for (const char* record :
         {"FILE_DESCRIPTION(('Open CASCADE Model'),'2;1');",
          "FILE_SCHEMA(('AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }'));",
          "#7=PRODUCT('as1','as1','',(#8));",
          "#31=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNCERTAINTY_ASSIGNED_CONTEXT((#35))"
          "GLOBAL_UNIT_ASSIGNED_CONTEXT((#32,#33,#34))REPRESENTATION_CONTEXT('Context #1',"
          "'3D Context with UNIT and UNCERTAINTY'));",
          "#32=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));",
          "#33=(NAMED_UNIT(*)PLANE_ANGLE_UNIT()SI_UNIT($,.RADIAN.));",
          "#36=PRODUCT_RELATED_PRODUCT_CATEGORY('part',$,(#7));",
          "#16=CARTESIAN_POINT('',(-10.,75.,60.));",
          "#6425=CARTESIAN_POINT('centre point',(89.999958232116,74.999996882312,"
          "18.859503194781));"}) {
        EXPECT_THAT(text, testing::HasSubstr(record));
    }
}

}  // namespace
