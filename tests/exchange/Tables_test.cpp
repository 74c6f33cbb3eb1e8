// Entity types as tables: names and kinds of columns.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Exchange.h"
#include "Tables.h"

namespace {

using exchange::Column;
using exchange::ColumnKind;
using testing::ElementsAre;
using testing::Field;

constexpr const char* kSchema = R"(SCHEMA shapes;
  TYPE colour = ENUMERATION OF (red, green); END_TYPE;
  TYPE label = STRING; END_TYPE;
  TYPE place = SELECT (thing, other); END_TYPE;
  TYPE mixed = SELECT (thing, label); END_TYPE;
  ENTITY other; END_ENTITY;
  ENTITY thing;
    Name : label;
    instance : INTEGER;
    size : REAL;
    weight : NUMBER;
    made : BOOLEAN;
    good : LOGICAL;
    code : BINARY;
    tint : colour;
    next : thing;
    at : place;
    of_any : mixed;
    parts : SET OF thing;
  END_ENTITY;
  ENTITY part SUBTYPE OF (thing);
    name : label;
    instance_ : INTEGER;
  DERIVE
    SELF\thing.size : REAL := 1.0;
  END_ENTITY;
END_SCHEMA;)";

class Tables : public testing::Test {
  protected:
    Tables() {
        exchange::Messages messages;
        schemas_ = exchange::ParseSchemas(kSchema, "shapes.exp", messages);
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

    std::vector<exchange::SchemaPtr> schemas_;
};

TEST_F(Tables, AreNamedInLowerCase) { EXPECT_EQ(exchange::TableName(Entity("THING")), "thing"); }

TEST_F(Tables, HaveAColumnForEachAttribute) {
    const std::vector<Column> columns = exchange::ColumnsOf(Entity("thing"));
    EXPECT_THAT(NamesOf(columns), ElementsAre("name", "instance_", "size", "weight", "made", "good",
                                              "code", "tint", "next", "at", "of_any", "parts"));
    std::vector<ColumnKind> kinds;
    for (const Column& column : columns) kinds.push_back(column.kind);
    EXPECT_THAT(kinds,
                ElementsAre(ColumnKind::Text, ColumnKind::Integer, ColumnKind::Real,
                            ColumnKind::Real, ColumnKind::Boolean, ColumnKind::Text,
                            ColumnKind::Text, ColumnKind::Text, ColumnKind::Reference,
                            ColumnKind::Reference, ColumnKind::Exchange, ColumnKind::Aggregate));
}

// Inherited ones first; what is derived in the subtype is left out; `name` and `instance_` are
// taken by inherited attributes.
TEST_F(Tables, AppendToNamesThatAreTaken) {
    const std::vector<Column> columns = exchange::ColumnsOf(Entity("part"));
    EXPECT_THAT(NamesOf(columns),
                ElementsAre("name", "instance_", "weight", "made", "good", "code", "tint", "next",
                            "at", "of_any", "parts", "name_", "instance__"));
    EXPECT_THAT(columns.back(), Field(&Column::slot, 13U));
    EXPECT_EQ(exchange::ColumnsOf(Entity("part"), {"instance", "entity", "name"}).front().name,
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
