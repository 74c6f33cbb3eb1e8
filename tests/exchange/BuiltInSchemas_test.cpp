// The built-in schemas, by themselves and compared with the full schemas that they replace.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "Exchange.h"

namespace {

using exchange::Messages;
using exchange::SchemaPtr;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

const std::vector<std::string> kNames = {
    "CONFIG_CONTROL_DESIGN",
    "AUTOMOTIVE_DESIGN",
    "PDM_SCHEMA",
    "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF",
    "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF",
    "cdma",
};

std::vector<std::string> SlotNames(const kor::EntityType& entity) {
    std::vector<std::string> names;
    for (const kor::Slot& slot : entity.Slots()) {
        names.emplace_back(slot.attribute->Name().View());
    }
    return names;
}

TEST(BuiltInSchemas, AreSix) {
    EXPECT_THAT(exchange::BuiltInSchemaNames(), testing::UnorderedElementsAreArray(kNames));
    EXPECT_EQ(exchange::BuiltInSchema("NO_SUCH_SCHEMA"), nullptr);
    EXPECT_EQ(exchange::BuiltInSchema(""), nullptr);
}

class EachBuiltInSchema : public testing::TestWithParam<std::string> {};

TEST_P(EachBuiltInSchema, IsThereAndNamedAsItIs) {
    const SchemaPtr schema = exchange::BuiltInSchema(GetParam());
    ASSERT_NE(schema, nullptr);
    EXPECT_EQ(schema->Name().View(), GetParam());
    EXPECT_FALSE(schema->Entities().empty());
    EXPECT_EQ(exchange::SchemaCatalog().Find(GetParam()), schema);
}

TEST_P(EachBuiltInSchema, SpellsItsNamesInOneWay) {
    const SchemaPtr schema = exchange::BuiltInSchema(GetParam());
    ASSERT_NE(schema, nullptr);
    if (schema->Name().View() == "cdma") return;  // spelled as in the database
    for (const kor::EntityType* entity : schema->Entities()) {
        EXPECT_EQ(entity->Name().View(), kor::Folded(entity->Name().View()));
        for (const std::string& name : SlotNames(*entity)) EXPECT_EQ(name, kor::Folded(name));
    }
}

TEST_P(EachBuiltInSchema, HoldsAnEmptyModel) {
    const exchange::DataSet dataSet =
        exchange::NewDataSet(exchange::BuiltInSchema(GetParam()), "empty");
    Messages messages;
    const exchange::DataSet again = exchange::ParseDataSet(
        exchange::ToExchangeText(dataSet), "again", exchange::SchemaCatalog(), {}, messages);
    EXPECT_EQ(messages.ErrorCount(), 0U);
    ASSERT_NE(again.model, nullptr);
    EXPECT_EQ(again.model->SchemaName().View(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(BuiltInSchemas, EachBuiltInSchema, testing::ValuesIn(kNames),
                         [](const auto& tested) { return tested.param; });

TEST(BuiltInSchemas, DeclareProductStructure) {
    for (const std::string& name : kNames) {
        if (name == "cdma") continue;
        const SchemaPtr schema = exchange::BuiltInSchema(name);
        ASSERT_NE(schema, nullptr);
        for (const char* entity :
             {"PRODUCT", "PRODUCT_DEFINITION_FORMATION", "PRODUCT_DEFINITION",
              "NEXT_ASSEMBLY_USAGE_OCCURRENCE", "PRODUCT_DEFINITION_SHAPE",
              "SHAPE_DEFINITION_REPRESENTATION", "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION",
              "SHAPE_REPRESENTATION", "ITEM_DEFINED_TRANSFORMATION", "AXIS2_PLACEMENT_3D",
              "CARTESIAN_POINT", "DIRECTION", "CONFIGURATION_ITEM", "CONFIGURATION_EFFECTIVITY",
              "CALENDAR_DATE", "LOCAL_TIME", "DATE_AND_TIME", "DOCUMENT"}) {
            EXPECT_NE(schema->FindEntity(std::string_view(entity)), nullptr)
                << name << " " << entity;
        }
    }
}

TEST(BuiltInSchemas, DeclareTheDatabase) {
    const SchemaPtr schema = exchange::BuiltInSchema("cdma");
    ASSERT_NE(schema, nullptr);
    const kor::EntityType* history = schema->FindEntity(std::string_view("CDMA_REVISION_HISTORY"));
    ASSERT_NE(history, nullptr);
    EXPECT_EQ(history->Name().View(), "cdma_revision_history");
    EXPECT_THAT(SlotNames(*history), ElementsAre("Revisions"));
    const kor::Domain* revisions = history->Slots()[0].domain;
    ASSERT_EQ(revisions->base, kor::Base::Aggregate);
    EXPECT_EQ(revisions->element->entity, schema->FindEntity(std::string_view("cdma_id")));
    EXPECT_NE(schema->FindEntity(std::string_view("PART_OBJECT")), nullptr);
}

// ---- Comparison with the full schemas

struct Full {
    const char* name;
    const char* file;
};

std::ostream& operator<<(std::ostream& stream, const Full& full) { return stream << full.file; }

class BesideTheFullSchema : public testing::TestWithParam<Full> {
  protected:
    void SetUp() override {
        const std::string path = std::string(SHARED_DATA) + "/schemas/" + GetParam().file;
        if (!std::filesystem::exists(path)) GTEST_SKIP() << path << " is not there";
        Messages messages;
        for (SchemaPtr& schema : exchange::ReadSchemas(path, messages)) full_ = schema;
        ASSERT_NE(full_, nullptr);
        builtIn_ = exchange::BuiltInSchema(GetParam().name);
        ASSERT_NE(builtIn_, nullptr);
        ASSERT_EQ(full_->Name().View(), builtIn_->Name().View());
    }

    // Calls compare(built-in entity type, full entity type) for those that both schemas declare.
    template <class Compare>
    void ForEachCommon(Compare compare) const {
        int count = 0;
        for (const kor::EntityType* entity : builtIn_->Entities()) {
            const kor::EntityType* counterpart =
                full_->FindEntity(std::string_view(entity->FoldedName()));
            if (counterpart == nullptr) continue;
            SCOPED_TRACE(entity->FoldedName());
            compare(*entity, *counterpart);
            ++count;
        }
        EXPECT_GT(count, 100);
    }

    SchemaPtr full_;
    SchemaPtr builtIn_;
};

TEST_P(BesideTheFullSchema, HasTheSameAttributesInTheSameOrder) {
    ForEachCommon([](const kor::EntityType& builtIn, const kor::EntityType& full) {
        EXPECT_EQ(SlotNames(builtIn), SlotNames(full));
    });
}

TEST_P(BesideTheFullSchema, HasTheSameSupertypes) {
    const SchemaPtr& schema = builtIn_;
    ForEachCommon([&schema](const kor::EntityType& builtIn, const kor::EntityType& full) {
        std::set<std::string> of[2];
        for (const kor::EntityType* supertype : builtIn.Lineage()) {
            of[0].insert(supertype->FoldedName());
        }
        for (const kor::EntityType* supertype : full.Lineage()) {
            if (schema->FindEntity(std::string_view(supertype->FoldedName())) != nullptr) {
                of[1].insert(supertype->FoldedName());
            }
        }
        EXPECT_EQ(of[0], of[1]);
    });
}

INSTANTIATE_TEST_SUITE_P(BuiltInSchemas, BesideTheFullSchema,
                         testing::Values(Full{"CONFIG_CONTROL_DESIGN", "ap203.exp"},
                                         Full{"AUTOMOTIVE_DESIGN", "AP214E3_2010.exp"},
                                         Full{"PDM_SCHEMA", "pdm_schema_12.exp"}),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
