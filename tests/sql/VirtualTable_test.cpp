// Entity types as SQLite tables.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "Database.h"
#include "Shapes.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class VirtualTable : public testing::Test {
  protected:
    VirtualTable() { database.Add("m", ModelOf("shapes", kShapesData, kShapesSchema)); }

    Database database;
};

TEST_F(VirtualTable, GivesEachKindOfValue) {
    EXPECT_THAT(database.Query("SELECT * FROM thing WHERE instance = 5"),
                ElementsAre(Row{"5", "THING", "first", "1.5", "7", "1", ".U.", "\"0A\"", "RED"}));
    EXPECT_THAT(
        database.Query("SELECT * FROM part WHERE instance = 3"),
        ElementsAre(Row{"3", "PART", "it's \u0141", "-0.25", "NULL", "0", ".T.", "NULL", "GREEN",
                        "5", "2", "#5", "[5,3]", "[[1.0,2.0],[]]", "[\"#5\",\"LABEL('x')\"]"}));
    EXPECT_THAT(database.Query("SELECT * FROM bolt"),
                ElementsAre(Row{"4", "BOLT", "NULL", "NULL", "NULL", ".F.", "NULL", "NULL", "3",
                                "3", "LABEL('m\\X\\E9')", "[]", "NULL", "NULL"}));
    EXPECT_EQ(database.Value("SELECT typeof(size) || typeof(count) || typeof(made) || typeof(good) "
                             "FROM thing WHERE instance = 5"),
              "realintegerintegertext");
}

TEST_F(VirtualTable, HasTheNamesOfItsColumns) {
    const auto names = [this](const std::string& table) {
        return database.Column("SELECT name FROM pragma_table_info('" + table + "')");
    };
    EXPECT_THAT(names("thing"), ElementsAre("instance", "entity", "entity_", "size", "count",
                                            "made", "good", "code", "tint"));
    // A derived attribute has no column. If two attributes have the same name, the second column
    // gets another one.
    EXPECT_THAT(names("bolt"),
                ElementsAre("instance", "entity", "entity_", "count", "made", "good", "code",
                            "tint", "next", "at", "of_any", "parts", "grid", "marks"));
    EXPECT_THAT(names("nut"), testing::Contains("next_"));
    EXPECT_THAT(names("point"), ElementsAre("instance", "entity", "value_1", "value_2", "value_3"));
}

TEST_F(VirtualTable, HoldsTheInstancesOfSubtypesInTheirOrder) {
    EXPECT_THAT(
        database.Query("SELECT instance, entity FROM thing"),
        ElementsAre(Row{"5", "THING"}, Row{"3", "PART"}, Row{"4", "BOLT"}, Row{"9", "PART"}));
    EXPECT_THAT(database.Query("SELECT * FROM nut"), IsEmpty());
    EXPECT_THAT(database.Query("SELECT size FROM thing WHERE instance = 4"),
                ElementsAre(Row{"NULL"}));
}

TEST_F(VirtualTable, HoldsTypesThatTheSchemaDoesNotDeclare) {
    EXPECT_THAT(database.Query("SELECT * FROM point"),
                ElementsAre(Row{"7", "POINT", "'p'", "(1.,2.)", "#5"},
                            Row{"8", "POINT", "'q'", "NULL", "NULL"}));
}

TEST(VirtualTables, HoldInstancesOfSeveralTypes) {
    Database database;
    database.Add("m", ModelOf("AUTOMOTIVE_DESIGN",
                              "#5=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));"));
    EXPECT_THAT(database.Query("SELECT instance, entity, prefix, name FROM si_unit"),
                ElementsAre(Row{"5", "LENGTH_UNIT+NAMED_UNIT+SI_UNIT", "MILLI", "METRE"}));
    EXPECT_EQ(database.Value("SELECT instance FROM length_unit"), "5");
    EXPECT_EQ(database.Value("SELECT prefix FROM \"length_unit+named_unit+si_unit\""), "MILLI");
}

// ---- Query plans

TEST_F(VirtualTable, FindsInstancesByTheirNumbers) {
    EXPECT_THAT(database.Ways("SELECT * FROM thing WHERE instance = 3"),
                ElementsAre("by instance"));
    for (const char* number : {"3", "3.0", "'3'", "' 3'"}) {
        EXPECT_EQ(
            database.Value(std::string("SELECT entity FROM thing WHERE instance = ") + number),
            "PART")
            << number;
    }
    for (const char* number : {"1", "2", "-3", "3.5", "NULL", "'x'", "X'33'", "9e99"}) {
        EXPECT_THAT(
            database.Query(std::string("SELECT entity FROM thing WHERE instance = ") + number),
            IsEmpty())
            << number;
    }
    EXPECT_EQ(database.Value("SELECT entity FROM thing WHERE rowid = 3"), "PART");
    EXPECT_THAT(database.Column("SELECT instance FROM thing WHERE instance IN (9, 3, 2)"),
                testing::UnorderedElementsAre("9", "3"));
}

TEST_F(VirtualTable, FindsInstancesByWhatTheyReferTo) {
    const char* const bySelect = "SELECT instance FROM part WHERE at = 3";
    EXPECT_THAT(database.Ways(bySelect), ElementsAre("by reference"));
    EXPECT_EQ(database.Value(bySelect), "4");
    EXPECT_THAT(database.Column("SELECT instance FROM part WHERE at = 2"), ElementsAre("3"));
    EXPECT_THAT(database.Column("SELECT instance FROM part WHERE at = 99"), IsEmpty());
    const char* const mixed = "SELECT instance FROM part WHERE of_any = '#5'";
    EXPECT_THAT(database.Ways(mixed), ElementsAre("by reference"));
    EXPECT_EQ(database.Value(mixed), "3");
    EXPECT_EQ(database.Value("SELECT instance FROM part WHERE of_any = 'LABEL(''m\\X\\E9'')'"),
              "4");
}

// `nut` has another attribute with this name, by which the platform would find different rows.
TEST_F(VirtualTable, FindsInstancesByTheRightAttribute) {
    database.Add("n", ModelOf("shapes",
                              "#1=THING($,$,$,$,$,$,$);#2=OTHER();"
                              "#3=NUT($,$,$,$,$,$,$,#1,$,$,$,$,$,#2);"
                              "#4=PART($,$,$,$,$,$,$,#1,$,$,$,$,$);",
                              kShapesSchema));
    EXPECT_THAT(database.Column("SELECT instance FROM n.part WHERE next = 1"),
                ElementsAre("3", "4"));
    EXPECT_THAT(database.Column("SELECT instance FROM n.nut WHERE next = 1"), ElementsAre("3"));
    EXPECT_THAT(database.Column("SELECT instance FROM n.nut WHERE next_ = 2"), ElementsAre("3"));
    EXPECT_THAT(database.Column("SELECT instance FROM n.nut WHERE next = 2"), IsEmpty());
}

TEST_F(VirtualTable, FindsInstancesByTheirOwnType) {
    const char* const query = "SELECT instance FROM thing WHERE entity = 'part'";
    EXPECT_THAT(database.Ways(query), ElementsAre("by entity"));
    EXPECT_THAT(database.Column(query), ElementsAre("3", "9"));
    EXPECT_THAT(database.Column("SELECT instance FROM thing WHERE entity = 'PART' COLLATE BINARY"),
                ElementsAre("3", "9"));
    EXPECT_THAT(database.Column("SELECT instance FROM thing WHERE entity = 'part' COLLATE BINARY"),
                IsEmpty());
    for (const char* name : {"'other'", "''", "NULL", "5"}) {
        EXPECT_THAT(
            database.Query(std::string("SELECT instance FROM thing WHERE entity = ") + name),
            IsEmpty());
    }
}

TEST_F(VirtualTable, GivesRowsInTheOrderOfNumbersAndReferences) {
    const auto isSorted = [this](const std::string& query) {
        for (const std::string& way : database.Ways(query)) {
            if (way.find("TEMP B-TREE") != std::string::npos) return true;
        }
        return false;
    };
    struct Case {
        const char* order;
        std::vector<std::string> expected;
    };
    for (const Case& each : std::vector<Case>{
             {"instance", {"3", "4", "9"}},
             {"instance DESC", {"9", "4", "3"}},
             {"next", {"4", "3", "9"}},  // #3, #5, #5
             {"next DESC", {"3", "9", "4"}},
             {"at", {"9", "3", "4"}},  // unset, #2, #3
             {"at DESC", {"4", "3", "9"}},
         }) {
        const std::string query = std::string("SELECT instance FROM part ORDER BY ") + each.order;
        EXPECT_FALSE(isSorted(query)) << each.order;
        EXPECT_EQ(database.Column(query), each.expected) << each.order;
    }
    EXPECT_THAT(database.Column("SELECT instance FROM part ORDER BY at NULLS LAST"),
                ElementsAre("3", "4", "9"));
    EXPECT_THAT(database.Column("SELECT instance FROM part ORDER BY entity_, instance"),
                ElementsAre("4", "9", "3"));
    EXPECT_THAT(database.Query("SELECT next, COUNT(*) FROM part GROUP BY next"),
                ElementsAre(Row{"3", "1"}, Row{"5", "2"}));
    EXPECT_THAT(database.Column("SELECT DISTINCT next FROM part"),
                testing::UnorderedElementsAre("3", "5"));
}

// Values of other kinds than declared are ordered after the numbers, as texts.
TEST_F(VirtualTable, OrdersWhatIsNoReferenceAsText) {
    database.Add("n", ModelOf("shapes",
                              "#1=THING($,$,$,$,$,$,$);"
                              "#2=PART($,$,$,$,$,$,$,'b',$,$,$,$,$);"
                              "#3=PART($,$,$,$,$,$,$,#1,$,$,$,$,$);"
                              "#4=PART($,$,$,$,$,$,$,'a',$,$,$,$,$);"
                              "#5=PART($,$,$,$,$,$,$,$,$,$,$,$,$);",
                              kShapesSchema));
    EXPECT_THAT(database.Query("SELECT next, instance FROM n.part ORDER BY next"),
                ElementsAre(Row{"NULL", "5"}, Row{"1", "3"}, Row{"a", "4"}, Row{"b", "2"}));
}

// Every plan finds the same rows as a search of all rows.
TEST_F(VirtualTable, GivesTheSameRowsByEveryWay) {
    for (const char* column : {"instance", "entity", "next", "at", "of_any"}) {
        for (const char* value : {"1", "2", "3", "4", "5", "9", "'#5'", "'5'", "'BOLT'", "'part'",
                                  "NULL", "2.0", "'#2'", "'LABEL(''x'')'"}) {
            const std::string quoted = std::string(column) + " = " + value;
            EXPECT_EQ(database.Column("SELECT instance FROM part WHERE " + quoted),
                      database.Column("SELECT instance FROM part WHERE (SELECT " + quoted + ')'))
                << quoted;
        }
    }
}

TEST_F(VirtualTable, JoinsWithoutWalks) {
    EXPECT_THAT(database.Ways("SELECT 1 FROM part p JOIN thing t ON t.instance = p.next"),
                ElementsAre("every instance", "by instance"));
    // By the cheaper side.
    const std::string users =
        "SELECT p.instance FROM thing t JOIN part p ON p.next = t.instance "
        "WHERE t.instance = 5";
    EXPECT_THAT(database.Ways(users), ElementsAre("by instance", "by reference"));
    EXPECT_THAT(database.Column(users), ElementsAre("3", "9"));
}

TEST(VirtualTables, JoinOccurrencesToProductsInLinearTime) {
    std::string data;
    constexpr int kCount = 20'000;
    for (int i = 1; i <= kCount; ++i) {
        const std::string product = '#' + std::to_string(3 * i);
        const std::string definition = '#' + std::to_string(3 * i + 1);
        data += product + "=PRODUCT('" + std::to_string(i) + "','',$,());" + definition +
                "=PRODUCT_DEFINITION_FORMATION('',''," + product + ");#" +
                std::to_string(3 * i + 2) + "=PRODUCT_DEFINITION('',''," + definition + ",$);";
    }
    Database database;
    database.Add("m", ModelOf("AUTOMOTIVE_DESIGN", data));
    const auto start = std::chrono::steady_clock::now();
    // From either end; 400 million visits would take minutes.
    EXPECT_EQ(database.Value("SELECT COUNT(p.id) FROM product_definition d "
                             "JOIN product_definition_formation f ON f.instance = d.formation "
                             "JOIN product p ON p.instance = f.of_product"),
              std::to_string(kCount));
    EXPECT_EQ(database.Value("SELECT COUNT(d.id) FROM product p CROSS JOIN "
                             "product_definition_formation f ON f.of_product = p.instance "
                             "CROSS JOIN product_definition d ON d.formation = f.instance"),
              std::to_string(kCount));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

// ---- The tables themselves

TEST_F(VirtualTable, IsMadeOfModelsAlone) {
    EXPECT_THAT(database.Value("CREATE VIRTUAL TABLE x USING orx"),
                HasSubstr("no model has an entity type 'main.x'"));
    EXPECT_THAT(database.Value("CREATE VIRTUAL TABLE m.x USING orx"),
                HasSubstr("no model has an entity type 'm.x'"));
    EXPECT_THAT(database.Value("SELECT * FROM orx"), HasSubstr("no such table"));
}

TEST_F(VirtualTable, IsReadOnly) {
    for (const char* query : {"INSERT INTO part(size) VALUES (1)", "DELETE FROM part",
                              "UPDATE part SET size = 1", "REPLACE INTO part(size) VALUES (1)"}) {
        EXPECT_EQ(database.Value(query), "table part may not be modified") << query;
    }
}

TEST_F(VirtualTable, GoesWithItsModel) {
    const std::shared_ptr<kor::Model> model = ModelOf("shapes", kShapesData, kShapesSchema);
    database.Add("n", model);
    EXPECT_GT(model.use_count(), 1);
    EXPECT_THROW(database.Add("n", model), std::runtime_error);
    EXPECT_EQ(database.Value("SELECT COUNT(*) FROM n.thing"), "4");
    EXPECT_THAT(database.Query("DETACH n"), IsEmpty());
    database.Add("o", ModelOf("shapes", "", kShapesSchema));
    EXPECT_EQ(model.use_count(), 1);
    EXPECT_EQ(database.Value("SELECT COUNT(*) FROM o.thing"), "0");
}

TEST_F(VirtualTable, TakesAsManyColumnsAsSqliteHas) {
    std::string values = "$";
    for (int i = 1; i < 2'500; ++i) values += ",$";
    database.Add("n", ModelOf("shapes", "#1=WIDE(" + values + ");", kShapesSchema));
    EXPECT_EQ(database.Value("SELECT COUNT(*) FROM n.wide WHERE value_1998 IS NULL"), "1");
    EXPECT_EQ(database.Value("SELECT value_1999 FROM n.wide"), "no such column: value_1999");
}

}  // namespace
