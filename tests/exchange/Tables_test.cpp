// Entity types as tables: names and kinds of columns.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Exchange.h"
#include "Shapes.h"
#include "Tables.h"

namespace {

using exchange::Column;
using exchange::ColumnKind;
using testing::ElementsAre;
using testing::Field;

class Tables : public testing::Test {
  protected:
    Tables() {
        exchange::Messages messages;
        schemas_ = exchange::ParseSchemas(kShapesSchema, "shapes.exp", messages);
        EXPECT_EQ(messages.ErrorCount(), 0U);
    }
    const kor::EntityType& Entity(std::string_view name) const {
        return *schemas_.front()->FindEntity(name);
    }
    static std::vector<std::string> NamesOf(const std::vector<Column>& columns) {
        std::vector<std::string> names;
        for (const Column& column : columns) names.push_back(column.name);
        return names;
    }
    static std::vector<ColumnKind> KindsOf(const std::vector<Column>& columns) {
        std::vector<ColumnKind> kinds;
        for (const Column& column : columns) kinds.push_back(column.kind);
        return kinds;
    }

    std::vector<exchange::SchemaPtr> schemas_;
};

TEST_F(Tables, AreNamedInLowerCase) { EXPECT_EQ(exchange::TableName(Entity("THING")), "thing"); }

TEST_F(Tables, HaveAColumnForEachAttribute) {
    const std::vector<Column> columns = exchange::ColumnsOf(Entity("part"));
    EXPECT_THAT(NamesOf(columns),
                ElementsAre("entity", "size", "count", "made", "good", "code", "tint", "next", "at",
                            "of_any", "parts", "grid", "marks"));
    EXPECT_THAT(
        KindsOf(columns),
        ElementsAre(ColumnKind::Text, ColumnKind::Real, ColumnKind::Integer, ColumnKind::Boolean,
                    ColumnKind::Text, ColumnKind::Text, ColumnKind::Text, ColumnKind::Reference,
                    ColumnKind::Reference, ColumnKind::Exchange, ColumnKind::Aggregate,
                    ColumnKind::Aggregate, ColumnKind::Aggregate));
}

TEST_F(Tables, AreNamedInLowerCaseThroughout) {
    const std::vector<Column> columns = exchange::ColumnsOf(Entity("named"));
    EXPECT_THAT(NamesOf(columns), ElementsAre("name", "instance_", "weight"));
    EXPECT_THAT(KindsOf(columns),
                ElementsAre(ColumnKind::Text, ColumnKind::Integer, ColumnKind::Real));
}

// Inherited attributes come first; those derived in the subtype are omitted; `name` and `instance_`
// are already used by inherited attributes.
TEST_F(Tables, AppendToNamesThatAreTaken) {
    const std::vector<Column> columns = exchange::ColumnsOf(Entity("renamed"));
    EXPECT_THAT(NamesOf(columns), ElementsAre("name", "instance_", "name_", "instance__"));
    EXPECT_THAT(columns.back(), Field(&Column::slot, 4U));
    EXPECT_EQ(exchange::ColumnsOf(Entity("renamed"), {"instance", "entity", "name"}).front().name,
              "name_");
}

TEST_F(Tables, NumberTheValuesOfUndeclaredTypes) {
    kor::Model model(schemas_.front());
    EXPECT_THAT(NamesOf(exchange::ColumnsOf(*model.UndeclaredEntity("POINT", 2))),
                ElementsAre("value_1", "value_2"));
}

TEST_F(Tables, WriteOtherValuesAsExchangeFilesDo) {
    const auto form = [](const SdaiPrimitiveH& value) {
        const kor::CellHolder cell(kor::ToCell(value, nullptr));
        return exchange::ExchangeForm(cell.Get());
    };
    EXPECT_EQ(form(SdaiPrimitiveH()), "$");
    EXPECT_EQ(form(SdaiPrimitiveH(sdaiLTRUE)), ".T.");
    EXPECT_EQ(form(SdaiPrimitiveH(SdaiLogical())), ".U.");
    EXPECT_EQ(form(SdaiPrimitiveH::Binary(SdaiString("0A"))), "\"0A\"");
    EXPECT_EQ(form(SdaiPrimitiveH(SdaiString("it's"))), "'it''s'");
    EXPECT_EQ(form(SdaiPrimitiveH(SdaiSelectH(SdaiString("LENGTH_MEASURE"), SdaiPrimitiveH(2.5)))),
              "LENGTH_MEASURE(2.5)");
}

}  // namespace
