// `orx show` and `orx users`, on the command line and in the shell.

#include <nlohmann/json.hpp>

#include "HostTest.h"

using testing::HasSubstr;

namespace {

class Inspect : public HostTest {
  protected:
    Inspect() {
        // Of a type that no schema declares: an instance that refers to a product in lists and
        // through a select, and one that refers to itself. A formation that refers to the product.
        folder.Write("uses.stp",
                     ExchangeFile("AUTOMOTIVE_DESIGN",
                                  "#1=PRODUCT('P1','Bolt',$,(#2));\n"
                                  "#2=PRODUCT_CONTEXT('',#3,'mechanical');\n"
                                  "#3=APPLICATION_CONTEXT('design');\n"
                                  "#4=OWN_TYPE('x',(#1,(#1)),MEASURE(#1));\n"
                                  "#5=PRODUCT_DEFINITION_FORMATION('A','\\X2\\4E2D\\X0\\',#1);\n"
                                  "#6=OWN_TYPE(#6,$,$);\n"));
    }
};

}  // namespace

TEST_F(Inspect, ShowsAttributesWithTypesValuesAndNames) {
    ExpectPrints(Orx({"show", "uses.stp", "#5"}),
                 "#5 PRODUCT_DEFINITION_FORMATION\n"
                 "ID\tSTRING\t'A'\t\n"
                 "DESCRIPTION\tOPTIONAL STRING\t'\\X2\\4E2D\\X0\\'\t\n"
                 "OF_PRODUCT\tPRODUCT\t#1\tPRODUCT 'Bolt'\n");
    ExpectPrints(Orx({"show", "uses.stp", "#1"}),
                 "#1 PRODUCT\n"
                 "ID\tSTRING\t'P1'\t\n"
                 "NAME\tSTRING\t'Bolt'\t\n"
                 "DESCRIPTION\tOPTIONAL STRING\t$\t\n"
                 "FRAME_OF_REFERENCE\tSET [0:?] OF PRODUCT_CONTEXT\t(#2)\tPRODUCT_CONTEXT\n");
}

TEST_F(Inspect, ShowsValuesOfTypesThatNoSchemaDeclares) {
    ExpectPrints(Orx({"show", "uses.stp", "4"}),
                 "#4 OWN_TYPE (not declared by the schema)\n"
                 "[1]\t\t'x'\t\n"
                 "[2]\t\t(#1,(#1))\tPRODUCT 'Bolt', PRODUCT 'Bolt'\n"
                 "[3]\t\t#1\tPRODUCT 'Bolt'\n");
}

TEST_F(Inspect, TellsWhoRefersToAnInstance) {
    ExpectPrints(Orx({"users", "uses.stp", "#1"}),
                 "#4\tOWN_TYPE\t[2]\t\n"
                 "#4\tOWN_TYPE\t[3]\t\n"
                 "#5\tPRODUCT_DEFINITION_FORMATION\tOF_PRODUCT\t'Bolt'\n");
    ExpectPrints(Orx({"users", "uses.stp", "#6"}), "#6\tOWN_TYPE\t[1]\t\n");
    ExpectPrints(Orx({"users", "uses.stp", "#4"}), "");
    ExpectPrints(Orx({"users", "uses.stp", "2"}), "#1\tPRODUCT\tFRAME_OF_REFERENCE\t'Bolt'\n");
}

TEST_F(Inspect, TakesNumbersNamesOfModelsAndExpressions) {
    const std::string bolt = Orx({"show", "parts.stp", "#3"}).out;
    EXPECT_THAT(bolt, HasSubstr("#3 PRODUCT\nID\tSTRING\t'P1'"));
    for (const std::string name : {"3", "@parts#3", "#5.OF_PRODUCT"}) {
        ExpectPrints(Orx({"show", "parts.stp", name}), bolt);
        ExpectPrints(Orx({"show", "-m", "parts.stp", name}), bolt);
    }
    ExpectPrints(Orx({"show", "-m", "db.stp", "-m", "parts.stp", "@parts#3"}).status == 0
                     ? Orx({"users", "-m", "db.stp", "-m", "parts.stp", "@parts#3"})
                     : OrxResult{},
                 "@parts#5\tPRODUCT_DEFINITION_FORMATION\tOF_PRODUCT\t'Bolt'\n");
}

TEST_F(Inspect, GoesOnAfterWhatIsNoInstance) {
    const OrxResult result = Orx({"users", "uses.stp", "#99", "'text'", "#6"});
    EXPECT_EQ(result.out, "#6\tOWN_TYPE\t[1]\t\n");
    EXPECT_EQ(result.err,
              "orx: <command line>:1:1: there is no instance #99 in model 'uses'\n"
              "orx: <command line>:2:1: an instance expected, such as #12, found 'text'\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Orx({"show", "uses.stp"}).status, 2);
    EXPECT_EQ(Orx({"users"}).status, 2);
}

TEST_F(Inspect, WritesCsvAndJson) {
    ExpectPrints(Orx({"users", "--csv", "uses.stp", "#1"}),
                 "instance,type,attribute,name\n"
                 "#4,OWN_TYPE,[2],\n"
                 "#4,OWN_TYPE,[3],\n"
                 "#5,PRODUCT_DEFINITION_FORMATION,OF_PRODUCT,'Bolt'\n");
    const auto shown = nlohmann::json::parse(Orx({"show", "--json", "uses.stp", "#5"}).out);
    EXPECT_EQ(shown["instance"]["instance"], "#5");
    EXPECT_EQ(shown["attributes"][1]["value"], "\u4E2D");
    EXPECT_EQ(shown["attributes"][2]["type"], "PRODUCT");
    EXPECT_EQ(shown["attributes"][2]["optional"], false);
    EXPECT_EQ(shown["attributes"][2]["value"]["instance"], "#1");
    const auto used = nlohmann::json::parse(Orx({"users", "--json", "uses.stp", "#6"}).out);
    EXPECT_EQ(used["instance"]["instance"], "#6");
    EXPECT_EQ(used["attribute"], "[1]");
}

TEST_F(Inspect, SaysOfEveryKindOfTypeWhatIsDeclared) {
    folder.Write(
        "kinds.exp",
        "SCHEMA kinds; TYPE colour = ENUMERATION OF (red, green); END_TYPE;\n"
        "TYPE length = REAL; END_TYPE; TYPE any_of = SELECT (length, other); END_TYPE;\n"
        "ENTITY other; END_ENTITY;\n"
        "ENTITY all_kinds; a : INTEGER; b : OPTIONAL length; c : LOGICAL; d : BOOLEAN;\n"
        "e : BINARY; f : NUMBER; g : colour; h : any_of; i : LIST [1:3] OF other;\n"
        "j : ARRAY [1:4] OF LIST [0:?] OF STRING; k : BAG OF REAL; END_ENTITY; END_SCHEMA;");
    ExpectPrints(Orx({"shell", "-s", "kinds.exp", "-n", "m=kinds"}, "help all_kinds\n"),
                 "ALL_KINDS\n  A\tINTEGER\n  B\tOPTIONAL REAL\n  C\tLOGICAL\n  D\tBOOLEAN\n"
                 "  E\tBINARY\n  F\tNUMBER\n  G\tENUMERATION (GREEN, RED)\n"
                 "  H\tSELECT (LENGTH, OTHER)\n  I\tLIST [1:3] OF OTHER\n"
                 "  J\tARRAY [1:4] OF LIST [0:?] OF STRING\n  K\tBAG [0:?] OF REAL\n");
}

TEST_F(Inspect, IsACommandOfTheShell) {
    ExpectPrints(Orx({"shell", "uses.stp"},
                     "show #5.OF_PRODUCT\n  users   6 \nLET p = #5\nshow p\nEACH c IN PRODUCT:\n"
                     "c.ID\n"),
                 Orx({"show", "uses.stp", "#1"}).out + Orx({"users", "uses.stp", "#6"}).out +
                     Orx({"show", "uses.stp", "#5"}).out + "#1\t'P1'\n");
    EXPECT_EQ(Orx({"shell", "uses.stp"}, "1\n users #99\n").err,
              "orx: 2:8: there is no instance #99 in model 'uses'\n     users #99\n           ^\n");
    ExpectPrints(Orx({"shell", "uses.stp"}, "?\n"), Orx({"shell", "uses.stp"}, "help\n").out);
}
