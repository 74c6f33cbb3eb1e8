// LET, SET, NEW and EACH.

#include "HostTest.h"

using testing::HasSubstr;

namespace {

class Statements : public HostTest {
  protected:
    OrxResult RunOnParts(const std::string& script) const {
        return Run(script, {"-m", "parts.stp"});
    }
};

}  // namespace

// ---- LET

TEST_F(Statements, LetNamesAValueAndPrintsNothing) {
    ExpectPrints(RunOnParts("LET a = 'text'\n"
                            "LET b = #3\n"
                            "LET c = b.NAME\n"
                            "LET d = GetMemberCount((1., 2.))\n"
                            "LET e = $\n"),
                 "");
    ExpectPrints(RunOnParts("LET a = 'text'\n"
                            "a\n"
                            "LET b = #3\n"
                            "b\n"
                            "b.NAME\n"
                            "LET c = b.NAME\n"
                            "c\n"
                            "LET e = $\n"
                            "e\n"
                            "(a, c, 7)\n"
                            "ORXTrunc(c, 2)\n"),
                 "'text'\n#3\n'Bolt'\n'Bolt'\n$\n('text','Bolt',7)\n'Bo'\n");
}

TEST_F(Statements, LetNamesAnotherValueByTheSameName) {
    ExpectPrints(Run("LET a = 1\nLET a = 'two'\na\nLET a = (a, 3)\na\n"), "'two'\n('two',3)\n");
}

TEST_F(Statements, LetKeepsAValueWhenTheAttributeIsSet) {
    ExpectPrints(RunOnParts("LET n = #3.NAME\n"
                            "LET f = #3.FRAME_OF_REFERENCE\n"
                            "SET #3.NAME = 'new'\n"
                            "SET #3.FRAME_OF_REFERENCE = ()\n"
                            "n\n"
                            "f\n"
                            "#3.FRAME_OF_REFERENCE\n"),
                 "'Bolt'\n(#2)\n()\n");
}

// ---- SET

TEST_F(Statements, SetWritesAnAttributeAndPrintsNothing) {
    ExpectPrints(RunOnParts("SET #3.NAME = 'Screw'\n"
                            "#3.NAME\n"
                            "SET #3.description = #4.NAME\n"
                            "#3.DESCRIPTION\n"
                            "SET #4.DESCRIPTION = $\n"
                            "#4.DESCRIPTION\n"
                            "SET #3.FRAME_OF_REFERENCE = (#2, #2)\n"
                            "#3.FRAME_OF_REFERENCE\n"
                            "SET #5.OF_PRODUCT = #4\n"
                            "#5.OF_PRODUCT\n"),
                 "'Screw'\n'Nut'\n$\n(#2,#2)\n#4\n");
}

TEST_F(Statements, SetFollowsAttributes) {
    ExpectPrints(RunOnParts("SET #5.OF_PRODUCT.NAME = 'Screw'\n"
                            "#3.NAME\n"
                            "LET p = #3\n"
                            "SET p.ID = 'P9'\n"
                            "#3.ID\n"
                            "SET @parts#3.ID = 'P8'\n"
                            "#3.ID\n"),
                 "'Screw'\n'P9'\n'P8'\n");
}

TEST_F(Statements, SetKeepsAnIntegerAsARealWhereARealIsDeclared) {
    ExpectPrints(Run("SET #10.COORDINATES = (1, 2, 3)\n"
                     "#10.COORDINATES\n"
                     "LET t = NEW @assembly.LOCAL_TIME(SECOND_COMPONENT = 7)\n"
                     "t.SECOND_COMPONENT\n",
                     {"-m", "assembly.stp"}),
                 "(1.,2.,3.)\n7.\n");
}

// ---- NEW

TEST_F(Statements, NewMakesAnInstanceNumberedAfterTheLargest) {
    ExpectPrints(RunOnParts("NEW @parts.PRODUCT(ID = 'P3', NAME = 'Washer')\n"
                            "#6.ID\n"
                            "#6.NAME\n"
                            "#6.DESCRIPTION\n"
                            "NEW @parts.product(name = 'Pin')\n"
                            "#7.ID\n"
                            "#7.NAME\n"
                            "NEW @parts.APPLICATION_CONTEXT()\n"),
                 "#6\n'P3'\n'Washer'\n$\n#7\n$\n'Pin'\n#8\n");
}

TEST_F(Statements, NewTakesAnyExpressionForAnAttribute) {
    ExpectPrints(RunOnParts("LET p = NEW @parts.PRODUCT(ID = ORXTrunc('P3456', 2), "
                            "NAME = #3.NAME, FRAME_OF_REFERENCE = (#2))\n"
                            "p\n"
                            "p.ID\n"
                            "p.NAME\n"
                            "p.FRAME_OF_REFERENCE\n"
                            "LET f = NEW @parts.PRODUCT_DEFINITION_FORMATION(\n"
                            "  ID = 'B',\n"
                            "  OF_PRODUCT = NEW @parts.PRODUCT(ID = 'inner'))\n"
                            "f.OF_PRODUCT.ID\n"),
                 "#6\n'P3'\n'Bolt'\n(#2)\n'inner'\n");
}

TEST_F(Statements, NewMakesInstancesInTheModelThatIsNamed) {
    ExpectPrints(Run("NEW @step.CONFIGURATION_ITEM(ID = 'C1', NAME = #1.S_PART_NUMBER)\n"
                     "@step#1.NAME\n"
                     "EACH c IN @step.CONFIGURATION_ITEM: c.ID\n",
                     {"-m", "db.stp", "-n", "step=CONFIG_CONTROL_DESIGN"}),
                 "@step#1\n'P-1'\n@step#1\t'C1'\n");
}

// ---- EACH

TEST_F(Statements, EachPrintsTheInstanceAndItsResultsWithTabsBetween) {
    ExpectPrints(RunOnParts("EACH p IN PRODUCT: p.ID; p.NAME; IsFree(p, 'DESCRIPTION')\n"),
                 "#3\t'P1'\t'Bolt'\t.T.\n#4\t'P2'\t'Nut'\t.F.\n");
    ExpectPrints(RunOnParts("EACH p IN @parts.product: p.ID\n"), "#3\t'P1'\n#4\t'P2'\n");
}

TEST_F(Statements, EachPrintsWhatIsUnset) {
    ExpectPrints(RunOnParts("EACH p IN PRODUCT: p.DESCRIPTION\n"), "#3\t$\n#4\t'a nut'\n");
}

TEST_F(Statements, EachGoesThroughSubtypesInTheOrderOfTheFile) {
    folder.Write("contexts.stp", ExchangeFile("AUTOMOTIVE_DESIGN",
                                              "#30=APPLICATION_CONTEXT('x');\n"
                                              "#10=PRODUCT_CONTEXT('a',#30,'');\n"
                                              "#20=PRODUCT_DEFINITION_CONTEXT('b',#30,'');\n"
                                              "#5=PRODUCT_CONTEXT('c',#30,'');\n"));
    ExpectPrints(Run("EACH c IN APPLICATION_CONTEXT_ELEMENT: c.NAME\n", {"-m", "contexts.stp"}),
                 "#10\t'a'\n#20\t'b'\n#5\t'c'\n");
}

TEST_F(Statements, EachGoesThroughTheInstancesOfAnUndeclaredType) {
    folder.Write("odd.stp", ExchangeFile("AUTOMOTIVE_DESIGN",
                                         "#1=MYSTERY_TYPE(7);\n"
                                         "#2=MYSTERY_TYPE(8);\n"));
    ExpectPrints(Run("EACH m IN MYSTERY_TYPE: 1\n", {"-m", "odd.stp"}), "#1\t1\n#2\t1\n");
}

TEST_F(Statements, EachPrintsNothingWhereTheTypeHasNoInstances) {
    ExpectPrints(RunOnParts("EACH p IN CARTESIAN_POINT: p.COORDINATES\n"), "");
}

TEST_F(Statements, EachPrintsNothingWhereTheBodyHasNoPrintingItem) {
    ExpectPrints(RunOnParts("EACH p IN PRODUCT: LET n = p.NAME\n"
                            "EACH p IN PRODUCT: SET p.DESCRIPTION = p.NAME\n"
                            "EACH p IN PRODUCT: LET n = p.ID; SET p.NAME = n\n"
                            "#3.DESCRIPTION\n"
                            "#4.NAME\n"),
                 "'Bolt'\n'P2'\n");
}

TEST_F(Statements, EachPrintsOnlyThePrintingItems) {
    ExpectPrints(RunOnParts("EACH p IN PRODUCT: LET n = p.NAME; n; SET p.NAME = 'x'; p.NAME\n"),
                 "#3\t'Bolt'\t'x'\n#4\t'Nut'\t'x'\n");
}

TEST_F(Statements, AddStoresAMemberAsTheAttributeIsDeclared) {
    ExpectPrints(RunOnParts("LET p = NEW CARTESIAN_POINT(NAME = 'p', COORDINATES = (1., 2.))\n"
                            "ADD 31 TO p.COORDINATES\n"
                            "p.COORDINATES\n"),
                 "(1.,2.,31.)\n");
}

TEST_F(Statements, EachPrintsTheListOfAFunctionThatReturnsNothing) {
    ExpectPrints(Run("EACH p IN AXIS2_PLACEMENT_3D WHERE IsSame0(p, #15): "
                     "ComputeABSPlacement(#13, p, ())\n",
                     {"-m", "assembly.stp"}),
                 "#15\t(1.,0.,0.,0.,1.,0.,0.,0.,1.,3.,4.,5.)\n");
}

TEST_F(Statements, EachTakesOnlyWhatTheConditionIsTrueFor) {
    ExpectPrints(RunOnParts("EACH p IN PRODUCT WHERE IsFree(p, 'DESCRIPTION'): p.ID\n"),
                 "#3\t'P1'\n");
    ExpectPrints(RunOnParts("EACH p IN PRODUCT WHERE .T.: p.ID\n"), "#3\t'P1'\n#4\t'P2'\n");
    ExpectPrints(RunOnParts("EACH p IN PRODUCT WHERE (.T.): p.ID\n"), "#3\t'P1'\n#4\t'P2'\n");
    for (const char* condition : {".F.", ".U.", "$"}) {
        ExpectPrints(RunOnParts(std::string("EACH p IN PRODUCT WHERE ") + condition + ": p.ID\n"),
                     "");
    }
}

TEST_F(Statements, EachNamesTheModelOfAnInstanceThatIsNotOfTheFirst) {
    ExpectPrints(Run("EACH p IN @parts.PRODUCT: p.ID; p.FRAME_OF_REFERENCE\n"
                     "EACH p IN PART_OBJECT: p.S_PART_NUMBER\n"
                     "EACH p IN @db.part_object WHERE IsFree(p, 'S_DESC'): p\n",
                     {"-m", "db.stp", "-m", "parts.stp"}),
                 "@parts#3\t'P1'\t(@parts#2)\n@parts#4\t'P2'\t(@parts#2)\n"
                 "#1\t'P-1'\n#2\t'P-2'\n#2\t#2\n");
}

TEST_F(Statements, EachWalksTheInstancesThatWereThereWhenItBegan) {
    ExpectPrints(RunOnParts("EACH p IN PRODUCT: NEW @parts.PRODUCT(ID = p.ID)\n"
                            "EACH p IN PRODUCT: p.ID\n"),
                 "#3\t#6\n#4\t#7\n#3\t'P1'\n#4\t'P2'\n#6\t'P1'\n#7\t'P2'\n");
}

TEST_F(Statements, EachWalksTheMembersOfAnAggregate) {
    ExpectPrints(RunOnParts("EACH c IN #3.FRAME_OF_REFERENCE: c.DISCIPLINE_TYPE\n"
                            "LET l = (#4, #3)\n"
                            "EACH p IN l: p.ID\n"
                            "EACH p IN (#3, #4, #3) WHERE IsFree(p, 'DESCRIPTION'): p.NAME\n"
                            "EACH p IN (): p\n"),
                 "#2\t'mechanical'\n#4\t'P2'\n#3\t'P1'\n#3\t'Bolt'\n#3\t'Bolt'\n");
}

TEST_F(Statements, EachWalksNumbersAndTexts) {
    ExpectPrints(Run("EACH x IN #10.COORDINATES: Minus(x)\n"
                     "EACH t IN ('abc', 'de'): ORXTrunc(t, 1)\n",
                     {"-m", "assembly.stp"}),
                 "1.\t-1.\n2.\t-2.\n3.\t-3.\n'abc'\t'a'\n'de'\t'd'\n");
}

TEST_F(Statements, EachWalksTheMembersThatAnAggregateHadWhenItBegan) {
    ExpectPrints(RunOnParts("LET other = NEW @parts.PRODUCT_CONTEXT(NAME = '')\n"
                            "SET #3.FRAME_OF_REFERENCE = (#2, other)\n"
                            "EACH c IN #3.FRAME_OF_REFERENCE: SET #3.FRAME_OF_REFERENCE = (c); c\n"
                            "#3.FRAME_OF_REFERENCE\n"),
                 "#2\t#2\n#6\t#6\n(#6)\n");
    ExpectPrints(Run("LET l = (1, 2)\n"
                     "EACH x IN l: ComputeABSPlacement(#13, #13, l); GetMemberCount(l)\n",
                     {"-m", "assembly.stp"}),
                 "1.\t(1.,2.,1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.)\t14\n"
                 "2.\t(1.,2.,1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.,"
                 "1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.)\t26\n");
}

// ---- A small mapping

TEST_F(Statements, CarryOutAMappingFromTheDatabaseIntoAnExchangeFile) {
    const std::vector<std::string> options{"-m", "db.stp",      "-n", "step=CONFIG_CONTROL_DESIGN",
                                           "-o", "step=out.stp"};
    ExpectPrints(Run("-- every part becomes a product\n"
                     "LET context = NEW @step.PRODUCT_CONTEXT(NAME = '')\n"
                     "EACH p IN part_object:\n"
                     "  LET q = NEW @step.PRODUCT(\n"
                     "    ID = p.S_PART_NUMBER,\n"
                     "    NAME = p.S_DESC,\n"
                     "    FRAME_OF_REFERENCE = (context));\n"
                     "  LET key = ConcatPartAtb(p);\n"
                     "  SET q.DESCRIPTION = key\n"
                     "EACH q IN @step.PRODUCT: q.ID; q.NAME\n",
                     options),
                 "@step#2\t'P-1'\t'Bolt M6'\n@step#3\t'P-2'\t$\n");
    // The written data read the same.
    ExpectPrints(Run("EACH q IN PRODUCT: q.ID; q.NAME; DecodeKey(q.DESCRIPTION, 1); "
                     "q.FRAME_OF_REFERENCE\n",
                     {"-m", "out.stp"}),
                 "#2\t'P-1'\t'Bolt M6'\t'P-1'\t(#1)\n#3\t'P-2'\t$\t'P-2'\t(#1)\n");
}
