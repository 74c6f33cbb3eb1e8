// The mapping functions as SQL functions: arguments, results, errors.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Database.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class SqlFunctions : public testing::Test {
  protected:
    SqlFunctions() {
        database.Add("m", ModelOf("AUTOMOTIVE_DESIGN", R"(
            #3=PRODUCT('P1','Bolt \X\E9\X2\0141\X0\',$,(#5,#6));
            #5=PRODUCT_CONTEXT('',$,'');
            #6=PRODUCT_CONTEXT('',$,'');
            #7=PRODUCT_DEFINITION_FORMATION('','',#3);
            #8=MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),#5);)"));
        database.Add("n", ModelOf("AUTOMOTIVE_DESIGN",
                                  "#3=PRODUCT('Q1','Nut',$,());"
                                  "#4=PRODUCT_DEFINITION_FORMATION('','',#3);"));
    }

    Database database;
};

TEST_F(SqlFunctions, AreThereAll) {
    for (const orx::Export& row : orx::kExports) {
        EXPECT_EQ(database.Value("SELECT COUNT(*) FROM pragma_function_list WHERE name = lower('" +
                                 std::string(row.name) +
                                 "') AND narg = " + std::to_string(row.ArgumentCount())),
                  "1")
            << row.name;
    }
}

TEST_F(SqlFunctions, TakeAndGiveValues) {
    EXPECT_THAT(database.Query("SELECT ORXTrunc('trolley', 4), Minus(2), "
                               "typeof(Minus(2)), Minus(-0.5), DecodeKey('S0001AI000212', 2)"),
                ElementsAre(Row{"trol", "-2.0", "real", "0.5", "12"}));
    // Texts with any characters.
    EXPECT_EQ(database.Value("SELECT GetInst(3, 'NAME')"), "Bolt \u00E9\u0141");
    EXPECT_EQ(database.Value("SELECT ORXTrunc('\u00E9\u0141\U0001F600z', 3)"),
              "\u00E9\u0141\U0001F600");
    EXPECT_EQ(database.Value("SELECT GetInst(3, 'DESCRIPTION')"), "NULL");
}

TEST_F(SqlFunctions, GiveLogicalsAsNumbers) {
    EXPECT_THAT(database.Query("SELECT IsEncodedKey('S0001A'), IsEncodedKey('x'), "
                               "typeof(IsEncodedKey('x'))"),
                ElementsAre(Row{"1", "0", "integer"}));
}

TEST_F(SqlFunctions, NameInstances) {
    EXPECT_THAT(
        database.Query("SELECT GetInst(3, 'ID'), GetInst('#3', 'ID'), "
                       "GetInst('@m#3', 'ID'), GetInst('@n#3', 'ID'), GetInst('@N#3', 'ID')"),
        ElementsAre(Row{"P1", "P1", "P1", "Q1", "Q1"}));
    // An instance of any model but the first one is returned with the model's name.
    EXPECT_THAT(database.Query("SELECT GetInst(7, 'OF_PRODUCT'), GetInst('@n#4', 'OF_PRODUCT')"),
                ElementsAre(Row{"3", "@n#3"}));
    EXPECT_EQ(database.Value("SELECT GetInst(GetInst('@n#4', 'OF_PRODUCT'), 'NAME')"), "Nut");
    EXPECT_EQ(database.Value("SELECT GetItem(1, '@n#4')"),
              database.Value("SELECT GetItem(1, NULL)"));
}

TEST_F(SqlFunctions, TakeAndGiveListsAsJson) {
    EXPECT_EQ(database.Value("SELECT GetMemberCount(frame_of_reference) FROM product"), "2");
    EXPECT_EQ(database.Value("SELECT GetMemberCount('[1, \"a\", null, [2], true]')"), "5");
    EXPECT_EQ(database.Value("SELECT GetInst(3, 'FRAME_OF_REFERENCE')"), "[5,6]");
    EXPECT_EQ(database.Value("SELECT json_array(GetInst(3, 'FRAME_OF_REFERENCE'), 1)"),
              "[[5,6],1]");
    EXPECT_THAT(database.Column("SELECT value FROM json_each(GetAbsPlacement(3)) LIMIT 4"),
                ElementsAre("1.0", "0.0", "0.0", "0.0"));
    EXPECT_EQ(database.Value("SELECT GetPlacement0(NULL, 'x', '[1.0, 2]')"),
              database.Value("SELECT GetPlacement0(NULL, 'x', json_array(1.0, 2.0))"));
}

TEST_F(SqlFunctions, RefuseWhatTheyCannotTake) {
    struct Case {
        const char* call;
        const char* message;
    };
    for (const Case& each : std::vector<Case>{
             {"GetInst('x', 'ID')",
              "GetInst: argument 1: an instance, by its number, '#12' or '@model#12', expected, "
              "found 'x'"},
             {"GetInst(1.5, 'ID')",
              "GetInst: argument 1: an instance, by its number, '#12' or '@model#12', expected, "
              "found 1.5"},
             {"GetInst(99, 'ID')", "GetInst: argument 1: there is no instance #99 in model 'm'"},
             {"GetInst(-1, 'ID')",
              "GetInst: argument 1: an instance, by its number, '#12' or '@model#12', expected, "
              "found -1"},
             {"GetInst('@q#3', 'ID')", "GetInst: argument 1: unknown model 'q'; did you mean 'm'?"},
             {"GetInst('@n#9', 'ID')", "GetInst: argument 1: there is no instance #9 in model 'n'"},
             {"GetInst(3, 7)", "GetInst: argument 2: a text expected, found 7"},
             {"GetInst(3, X'00')", "GetInst: argument 2: a text expected, found a BLOB"},
             {"GetInst(3, 'a' || char(0) || 'b')",
              "GetInst: argument 2: the text holds a NUL at position 1"},
             {"DecodeKey('S0001A', 'one')",
              "DecodeKey: argument 2: an integer expected, found 'one'"},
             {"DecodeKey('S0001A', 1.0)", "DecodeKey: argument 2: an integer expected, found 1.0"},
             {"Minus('2')", "Minus: argument 1: a number expected, found '2'"},
             {"GetMemberCount('[1')",
              "GetMemberCount: argument 1: a JSON array expected, found '[1'"},
             {"GetMemberCount('{}')",
              "GetMemberCount: argument 1: a JSON array expected, found '{}'"},
             {"ComputeABSPlacement(3, 3, '[\"a\"]')",
              "ComputeABSPlacement: argument 3: a JSON array of numbers, such as '[]', expected, "
              "found '[\"a\"]'"},
             {"ComputeABSPlacement(3, 3, NULL)",
              "ComputeABSPlacement: argument 3: a JSON array of numbers, such as '[]', expected, "
              "found NULL"},
             {"GetMemberCount('[[{}]]')",
              "GetMemberCount: argument 1: a JSON array of values expected, found an object"},
             // Continuation bytes without a first byte.
             {"GetInst(CAST(X'"
              "8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E8E"
              "8E8E8E8E8E8E' AS TEXT), 'ID')",
              "GetInst: argument 1: an instance, by its number, '#12' or '@model#12', expected, "
              "found '...'"},
             {"ORXTrunc('a')", "wrong number of arguments to function ORXTrunc()"},
         }) {
        EXPECT_EQ(database.Value(std::string("SELECT ") + each.call), each.message) << each.call;
    }
    std::string deep(101, '[');
    deep += std::string(101, ']');
    EXPECT_EQ(database.Value("SELECT GetMemberCount('" + deep + "')"),
              "GetMemberCount: argument 1: lists nested more than 100 deep");
}

TEST_F(SqlFunctions, CreateNothing) {
    for (const char* call :
         {"BuildDatedEff('12312099235959', 3)", "GetStartDate(3, 3)", "GetEndDate(NULL, NULL)"}) {
        const std::string name = std::string(call).substr(0, std::string(call).find('('));
        EXPECT_EQ(database.Value(std::string("SELECT ") + call),
                  name + ": creates instances, and models are not written here");
    }
}

// A model that IsVersion has seen is kept until RemoveValueVersion.
TEST_F(SqlFunctions, KeepTheModelsOfVersions) {
    const std::shared_ptr<kor::Model> model =
        ModelOf("cdma", "#1=PART_OBJECT('P','A',1,'','',$,$,$,$,$);");
    database.Add("v", model);
    EXPECT_EQ(database.Query("SELECT IsVersion('@v#1', 1)").size(), 1U);
    EXPECT_THAT(database.Query("DETACH v"), testing::IsEmpty());
    database.Query("SELECT IsVersion(3, 1)");
    Database other;
    other.Add("w", ModelOf("cdma", ""));
    EXPECT_GT(model.use_count(), 1);
    EXPECT_EQ(other.Query("SELECT RemoveValueVersion()").size(), 1U);
    database.Add("v", ModelOf("cdma", ""));
    EXPECT_EQ(model.use_count(), 1);
}

}  // namespace
