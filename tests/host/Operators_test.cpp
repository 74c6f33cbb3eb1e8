// Comparisons, logic, members of lists, COUNT; the handling of data that do not match their
// declarations.

#include "HostTest.h"

using testing::HasSubstr;

namespace {

class Operators : public HostTest {
  protected:
    // The result of an expression, without its line break.
    std::string Value(const std::string& expression) const {
        const OrxResult result = Call({"-m", "parts.stp", expression});
        EXPECT_EQ(result.err, "") << expression;
        return result.out.substr(0, result.out.find('\n'));
    }

    std::string Error(const std::string& expression) const {
        const OrxResult result = Call({"-m", "parts.stp", expression});
        EXPECT_EQ(result.status, 1) << expression;
        EXPECT_EQ(result.out, "") << expression;
        return result.err;
    }
};

}  // namespace

TEST_F(Operators, CompareNumbersByTheirValue) {
    for (const char* holds :
         {"1 = 1", "1 = 1.", "1. <> 2", "1 < 1.5", "-1 > -1.5", "2 <= 2.", "2 >= 2", "-2 < -1.",
          "9223372036854775807 < 9.3E18", "9223372036854775807 <> 9223372036854775808.",
          "9007199254740993 > 9007199254740992.", "1.E300 > 9223372036854775807"}) {
        EXPECT_EQ(Value(holds), ".T.") << holds;
    }
    for (const char* fails : {"1 = 2", "1 <> 1.", "2 < 2", "2. > 2", "3 <= 2", "1.5 >= 2"}) {
        EXPECT_EQ(Value(fails), ".F.") << fails;
    }
}

TEST_F(Operators, CompareTextsByTheirCharacters) {
    for (const char* holds :
         {"'a' = 'a'", "'a' <> 'A'", "'B' < 'a'", "'a' < 'ab'", "'' <= ''", "'z' < '\\X\\E9'"}) {
        EXPECT_EQ(Value(holds), ".T.") << holds;
    }
    EXPECT_EQ(Value("'a' = 'b'"), ".F.");
}

TEST_F(Operators, OrderLogicalsFromFalseOverUnknownToTrue) {
    for (const char* holds : {".F. < .U.", ".U. < .T.", ".T. = .T.", ".U. = .U.", ".T. <> .U."}) {
        EXPECT_EQ(Value(holds), ".T.") << holds;
    }
}

TEST_F(Operators, CompareInstancesByIdentity) {
    EXPECT_EQ(Value("#3 = #3"), ".T.");
    EXPECT_EQ(Value("#3 = #4"), ".F.");
    EXPECT_EQ(Value("#3 <> #4"), ".T.");
    EXPECT_EQ(Value("#5.OF_PRODUCT = #3"), ".T.");
    EXPECT_THAT(Error("#3 < #4"),
                HasSubstr("<command line>:1:4: #3 and #4 have no order to each other"));
}

TEST_F(Operators, HoldUnsetEqualToUnsetAlone) {
    EXPECT_EQ(Value("$ = $"), ".T.");
    EXPECT_EQ(Value("#3.DESCRIPTION = $"), ".T.");
    EXPECT_EQ(Value("#4.DESCRIPTION = $"), ".F.");
    EXPECT_EQ(Value("$ <> ''"), ".T.");
    EXPECT_EQ(Value("$ = 0"), ".F.");
    EXPECT_EQ(Value("$ < 1"), ".U.");
}

TEST_F(Operators, HoldValuesOfDifferentKindsUnequal) {
    EXPECT_EQ(Value("1 = '1'"), ".F.");
    EXPECT_EQ(Value("#3 <> 3"), ".T.");
    EXPECT_EQ(Value("(1.,2.) = (1.,2.)"), ".T.");
    EXPECT_THAT(Error("1 < '2'"), HasSubstr("1 and '2' have no order to each other"));
}

TEST_F(Operators, CombineThreeTruthValues) {
    const struct {
        const char* expression;
        const char* value;
    } kCases[] = {
        {".T. AND .T.", ".T."}, {".T. AND .F.", ".F."}, {".U. AND .F.", ".F."},
        {".U. AND .T.", ".U."}, {"$ AND .F.", ".F."},   {".F. OR .T.", ".T."},
        {".U. OR .T.", ".T."},  {".U. OR .F.", ".U."},  {".F. OR .F.", ".F."},
        {"NOT .T.", ".F."},     {"NOT .U.", ".U."},     {"NOT NOT .T.", ".T."},
        {"NOT $", ".U."},
    };
    for (const auto& [expression, value] : kCases) {
        EXPECT_EQ(Value(expression), value) << expression;
    }
    EXPECT_THAT(Error("1 AND .T."), HasSubstr(":1: AND takes a logical, found 1"));
    EXPECT_THAT(Error("NOT 'a'"), HasSubstr(":5: NOT takes a logical, found 'a'"));
}

TEST_F(Operators, DecideWithoutTheSecondOperandWhereTheFirstOneDoes) {
    EXPECT_EQ(Value(".F. AND 1"), ".F.");
    EXPECT_EQ(Value(".T. OR 1"), ".T.");
}

TEST_F(Operators, BindFromComparisonsOverNotAndAndToOr) {
    EXPECT_EQ(Value("NOT 1 = 2"), ".T.");
    EXPECT_EQ(Value(".T. OR .F. AND .F."), ".T.");
    EXPECT_EQ(Value("(.T. OR .F.) AND .F."), ".F.");
    EXPECT_EQ(Value("NOT (1 = 1 AND 2 = 2) OR 3 = 3"), ".T.");
    EXPECT_EQ(Value("NOT (.F.)"), ".T.");
    EXPECT_EQ(Value("((1 = 1))"), ".T.");
    EXPECT_EQ(Value("(1 = 1, 2)"), "(.T.,2)");
    EXPECT_EQ(Value("('a')"), "('a')");
    EXPECT_EQ(Value("GetMemberCount((1.,2.)) = 2"), ".T.");
}

TEST_F(Operators, LeaveNamesThatBeginLikeThem) {
    ExpectPrints(Run("LET ORDER = 1\nLET NOTE = 2\nLET ANDY = 3\n"
                     "LET same = ORDER = NOTE\nsame\nORDER = 1 AND ANDY = 3\n"),
                 ".F.\n.T.\n");
}

TEST_F(Operators, SetAndNewStillTakeTheFirstEqualSignAsTheirOwn) {
    ExpectPrints(Run("SET #3.NAME = 'x'\nLET n = NEW PRODUCT(ID = 'a', NAME = 'b')\n"
                     "#3.NAME = 'x' AND n.ID = 'a'\n",
                     {"-m", "parts.stp"}),
                 ".T.\n");
}

TEST_F(Operators, FindMembersCountedFromOne) {
    EXPECT_EQ(Value("#3.FRAME_OF_REFERENCE[1].NAME"), "''");
    EXPECT_EQ(Value("#3.FRAME_OF_REFERENCE[1].DISCIPLINE_TYPE = 'mechanical'"), ".T.");
    EXPECT_EQ(Value("(1.,2.,3.)[2 ]"), "2.");
    EXPECT_EQ(Value("(('a','b'),'c')[1][2]"), "'b'");
    EXPECT_EQ(Value("$[1]"), "$");
    EXPECT_EQ(Value("COUNT(#3.FRAME_OF_REFERENCE)"), "1");
    EXPECT_EQ(Value("COUNT(()) = 0"), ".T.");
    EXPECT_EQ(Value("COUNT($)"), "0");
    EXPECT_THAT(Error("(1.,2.)[3]"), HasSubstr(":9: there is no member 3: the list has 2"));
    EXPECT_THAT(Error("(1.,2.)[0]"), HasSubstr("there is no member 0"));
    EXPECT_THAT(Error("(1.,2.)['a']"), HasSubstr("the number of a member expected, found 'a'"));
    EXPECT_THAT(Error("5[1]"), HasSubstr("a member is asked of 5, which is no list"));
    EXPECT_THAT(Error("(1.)[1"), HasSubstr("']' expected"));
    EXPECT_THAT(Error("COUNT(5)"), HasSubstr("COUNT takes a list, found 5"));
    EXPECT_THAT(Error("COUNT()"), HasSubstr("COUNT takes 1 argument, found 0"));
}

TEST_F(Operators, FindValuesOfInstancesThatNoSchemaDeclares) {
    folder.Write("strange.stp", ExchangeFile("AUTOMOTIVE_DESIGN",
                                             "#65=STRANGE('a',#66,(1,2));\n"
                                             "#66=PRODUCT('p','n',$,());\n"));
    ExpectPrints(Call({"-m", "strange.stp", "#65[1]", "#65[2].NAME", "#65[3][2]"}),
                 "'a'\n'n'\n2\n");
    EXPECT_THAT(Call({"-m", "strange.stp", "#65[4]"}).err, HasSubstr("there is no member 4"));
    EXPECT_THAT(Call({"-m", "strange.stp", "#66[1]"}).err,
                HasSubstr("#66 is of type PRODUCT, whose attributes have names"));
}

// ---- WHERE

TEST_F(Operators, WhereTakesWhatIsTrue) {
    ExpectPrints(Run("EACH p IN PRODUCT WHERE p.ID = 'P2' OR p.DESCRIPTION = $: p.ID\n"
                     "EACH p IN PRODUCT WHERE NOT p.ID = 'P2': p.NAME\n"
                     "EACH p IN PRODUCT WHERE p.DESCRIPTION < 'b': p.NAME\n"
                     "EACH p IN PRODUCT WHERE $: p.NAME\n",
                     {"-m", "parts.stp"}),
                 "#3\t'P1'\n#4\t'P2'\n#3\t'Bolt'\n#4\t'Nut'\n");
}

TEST_F(Operators, WhereThatIsNoLogicalIsAnError) {
    const OrxResult result = Run("EACH p IN PRODUCT WHERE p.ID: p.NAME\n", {"-m", "parts.stp"});
    EXPECT_EQ(result.err, "orx: script.orx:1:27: #3: WHERE takes a logical, found 'P1'\n");
    EXPECT_EQ(result.status, 1);
}

// ---- Errors within EACH

TEST_F(Operators, AnErrorWithinEachNamesTheMember) {
    const std::string script = "EACH p IN PRODUCT: p.ID; p.DESCRIPTION[1]\n'behind'\n";
    const OrxResult result = Run(script, {"-m", "parts.stp"});
    EXPECT_EQ(result.out, "#3\t'P1'\t$\n");
    EXPECT_EQ(result.err,
              "orx: script.orx:1:39: #4: a member is asked of 'a nut', which is no list\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(Operators, KeepGoingGoesOnWithTheNextMember) {
    const OrxResult result =
        Run("EACH p IN PRODUCT WHERE p.NAME <> 1: ORXTrunc(p.NAME, 2); "
            "(p.ID, 'x')[COUNT(p.DESCRIPTION)]\n'behind'\n",
            {"--keep-going", "-m", "parts.stp"});
    EXPECT_EQ(result.out, "'behind'\n");
    EXPECT_EQ(Lines(result.err).size(), 2U);
    EXPECT_THAT(result.err, HasSubstr("#3: there is no member 0: the list has 2\n"));
    EXPECT_THAT(result.err, HasSubstr("#4: COUNT takes a list, found 'a nut'\n"));
    EXPECT_EQ(result.status, 1);
}

// ---- Data that do not match their declarations

TEST_F(Operators, AnAttributeThatAnInstanceLacksIsAnError) {
    EXPECT_THAT(Error("#3.NAMES"),
                HasSubstr("<command line>:1:4: #3 is of type PRODUCT, which has no attribute "
                          "'NAMES'; did you mean 'NAME'?"));
    EXPECT_EQ(Value("#3.DESCRIPTION.ANYTHING"), "$");
    const OrxResult result = Call({"--lenient", "-m", "parts.stp", "#3.NAMES"});
    EXPECT_EQ(result.out, "$\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.err, HasSubstr("orx: warning: <command line>:1:4: #3 is of type PRODUCT"));
}

TEST_F(Operators, AValueOfAnotherKindIsRefused) {
    EXPECT_THAT(Error("SET #3.NAME = 5"), HasSubstr(": attribute 'NAME' takes a text, found 5\n"));
    EXPECT_THAT(Error("SET #5.OF_PRODUCT = #2"),
                HasSubstr("takes an instance of PRODUCT, found #2\n"));
    EXPECT_THAT(Error("ADD #3 TO #3.FRAME_OF_REFERENCE"),
                HasSubstr("takes an instance of PRODUCT_CONTEXT, found #3\n"));
    const OrxResult made =
        Run("NEW PRODUCT(ID = 1)\nEACH p IN PRODUCT: p.ID\n", {"--keep-going", "-m", "parts.stp"});
    EXPECT_THAT(made.err, HasSubstr("script.orx:1:13: attribute 'ID' takes a text, found 1\n"));
    EXPECT_EQ(made.out, "#3\t'P1'\n#4\t'P2'\n");
}

TEST_F(Operators, AValueOfAnotherKindIsKeptWithAWarningWhereDataAreReadLeniently) {
    const OrxResult result = Run("SET #3.NAME = 5\n#3.NAME\nLET n = NEW PRODUCT(ID = 1)\nn.ID\n",
                                 {"--lenient", "-m", "parts.stp"});
    EXPECT_EQ(result.out, "5\n1\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(Lines(result.err).size(), 2U);
    EXPECT_THAT(result.err, HasSubstr("orx: warning: script.orx:1:"));
}
