// `orx call` and `orx run`: expressions, and how results are printed.

#include "HostTest.h"

using testing::MatchesRegex;

namespace {

struct Example {
    std::string expression;
    std::string printed;
};

class CallAndRun : public HostTest {
  protected:
    // Evaluates the expressions in one call and in one script.
    void ExpectResults(const std::vector<Example>& examples,
                       const std::vector<std::string>& options = {}) const {
        std::vector<std::string> arguments = options;
        arguments.emplace_back("--");
        std::string script;
        std::string printed;
        for (const Example& example : examples) {
            arguments.push_back(example.expression);
            script += example.expression + "\n";
            printed += example.printed + "\n";
        }
        ExpectPrints(Call(arguments), printed);
        ExpectPrints(Run(script, options), printed);
    }
};

const std::string kIdentityAnd345 = "(1.,0.,0.,0.,1.,0.,0.,0.,1.,3.,4.,5.)";

}  // namespace

// ---- Literals

TEST_F(CallAndRun, PrintsTexts) {
    ExpectResults({
        {"'text'", "'text'"},
        {"''", "''"},
        {"' blanks  stay '", "' blanks  stay '"},
        {"'it''s'", "'it''s'"},
        {"''''", "''''"},
        {R"('a\\b')", R"('a\\b')"},
        {R"('\X\B1')", R"('\X\B1')"},
        {R"('\X\E9')", R"('\X\E9')"},
        {R"('\S\1')", R"('\X\B1')"},
        {R"('\X\09\X\0A\X\7F\X\00')", R"('\X\09\X\0A\X\7F\X\00')"},
        {"'\xC3\xA9'", R"('\X\E9')"},
        {R"('\X2\00E9\X0\')", R"('\X\E9')"},
        {R"('\X2\20AC\X0\')", R"('\X2\20AC\X0\')"},
        {"'Łódź'", R"('\X2\0141\X0\\X\F3d\X2\017A\X0\')"},
        {R"('\X4\0001F600\X0\')", R"('\X4\0001F600\X0\')"},
        {"'-- no remark'", "'-- no remark'"},
        {"'; # @ ( ) , :'", "'; # @ ( ) , :'"},
    });
}

TEST_F(CallAndRun, PrintsNumbers) {
    ExpectResults({
        {"7", "7"},
        {"0", "0"},
        {"-12", "-12"},
        {"+12", "12"},
        {"007", "7"},
        {"9223372036854775807", "9223372036854775807"},
        {"-9223372036854775808", "-9223372036854775808"},
        {"1.5", "1.5"},
        {"1.", "1."},
        {"0.", "0."},
        {"-0.25", "-0.25"},
        {"1.50", "1.5"},
        {"1.5E0", "1.5"},
        {"1.5E1", "15."},
        {"0.1", "0.1"},
        {"123.456", "123.456"},
    });
}

TEST_F(CallAndRun, PrintsTruthValuesEnumerationsBinariesAndUnset) {
    ExpectResults({
        {".T.", ".T."},
        {".F.", ".F."},
        {".U.", ".U."},
        {".MILLI.", ".MILLI."},
        {"\"0F\"", "\"0F\""},
        {"$", "$"},
    });
}

TEST_F(CallAndRun, PrintsLists) {
    ExpectResults(
        {
            {"(1.,2.,3.)", "(1.,2.,3.)"},
            // A list whose members are all numbers is a list of reals.
            {"(1,2)", "(1.,2.)"},
            {"(1,2.5)", "(1.,2.5)"},
            {"( 1. , 2. )", "(1.,2.)"},
            {"()", "()"},
            {"('a','b')", "('a','b')"},
            {"('a',1,$,.T.)", "('a',1,$,.T.)"},
            {"((1.,2.),('a'))", "((1.,2.),('a'))"},
            {"(#3,#4)", "(#3,#4)"},
        },
        {"-m", "parts.stp"});
}

TEST_F(CallAndRun, PrintsRealsThatAreNotFiniteByName) {
    // The reference direction of #17 has no length: the rotation cannot be computed.
    const std::string nine = "nan,nan,nan,nan,nan,nan,nan,nan,nan";
    ExpectResults({{"ComputeABSPlacement(#15, #17, ())", "(" + nine + ",0.,0.,0.)"}},
                  {"-m", "assembly.stp"});
}

// ---- Instances and attributes

TEST_F(CallAndRun, PrintsInstancesAndAttributes) {
    ExpectResults(
        {
            {"#3", "#3"},
            {"@parts#3", "#3"},
            {"#3.ID", "'P1'"},
            {"#3.id", "'P1'"},
            {"@parts#3.Name", "'Bolt'"},
            {"#3.DESCRIPTION", "$"},
            {"#3.FRAME_OF_REFERENCE", "(#2)"},
            {"#5.OF_PRODUCT", "#3"},
            {"#5.OF_PRODUCT.NAME", "'Bolt'"},
            // An attribute of an unset value is unset.
            {"#3.DESCRIPTION.NAME", "$"},
        },
        {"-m", "parts.stp"});
}

TEST_F(CallAndRun, NamesTheModelOfAnInstanceThatIsNotOfTheFirst) {
    ExpectResults(
        {
            {"#1", "#1"},
            {"@db#1", "#1"},
            {"@parts#3", "@parts#3"},
            {"@parts#3.FRAME_OF_REFERENCE", "(@parts#2)"},
            {"@parts#5.OF_PRODUCT", "@parts#3"},
            {"(#1,@parts#3)", "(#1,@parts#3)"},
        },
        {"-m", "db.stp", "-m", "parts.stp"});
}

TEST_F(CallAndRun, GoesThroughSelects) {
    ExpectResults(
        {
            {"#24.TRANSFORMATION_OPERATOR", "#23"},
            {"#24.TRANSFORMATION_OPERATOR.TRANSFORM_ITEM_2", "#15"},
            {"#25.REPRESENTATION_RELATION.REP_1.ITEMS", "(#13)"},
        },
        {"-m", "assembly.stp"});
}

// ---- Functions

TEST_F(CallAndRun, CallsFunctionsByTheirNames) {
    ExpectResults({
        {"IsEncodedKey('S0002ABI000212S0000')", ".T."},
        {"IsEncodedKey('X0002AB')", ".F."},
        {"IsEncodedKey($)", ".F."},
        {"DecodeKey('S0002ABI000212S0000', 1)", "'AB'"},
        {"DecodeKey('S0002ABI000212S0000', 2)", "12"},
        {"DecodeKey('S0002ABI000212S0000',3)", "''"},
        {"DecodeKey('S0002ABI000212S0000', 4)", "'EMPTY VALUE'"},
        {"DecodeKey('S0002ABI000212S0000', 0)", "$"},
        {"DecodeKey( 'R00031.5' , 1 )", "1.5"},
        {"Minus(-2.5)", "2.5"},
        {"Minus(0.)", "0."},
        {"ORXTrunc('abcdef', 3)", "'abc'"},
        {"ORXTrunc(ORXTrunc('abcdef', 4), 2)", "'ab'"},
        {"ORX_GetDocName('Left Door', 1)", R"('Left\X\B1Door')"},
        {"ORX_GetDocName(ORX_GetDocName('Left Door', 1), 0)", "'Left Door'"},
        {"GetInst($, 'X')", "0"},
        {"GetMemberCount((1.,2.,3.))", "3"},
        {"GetMemberCount(())", "0"},
        {"RemoveValueVersion()", ".T."},
    });
}

TEST_F(CallAndRun, CallsFunctionsOnInstances) {
    ExpectResults(
        {
            {"IsFree(#3, 'DESCRIPTION')", ".T."},
            {"IsFree(#4, 'DESCRIPTION')", ".F."},
            {"IsSame0(#5.OF_PRODUCT, #3)", ".T."},
            {"IsSame0(#3, #4)", ".F."},
            {"GetMemberCount(#3.FRAME_OF_REFERENCE)", "1"},
        },
        {"-m", "parts.stp"});
    ExpectResults(
        {
            {"GetItem(1, #24.TRANSFORMATION_OPERATOR)", "#13"},
            {"GetItem(2, #24.TRANSFORMATION_OPERATOR)", "#15"},
            {"GetItem(2, #24.TRANSFORMATION_OPERATOR).LOCATION.COORDINATES", "(4.,6.,8.)"},
            {"GetInst(#24, 'TRANSFORMATION_OPERATOR')", "#23"},
        },
        {"-m", "assembly.stp"});
}

TEST_F(CallAndRun, GivesEachUniqueIdentifierAnew) {
    const OrxResult result = Orx({"call", "GetUniqId($)", "GetUniqId($)"}, "", {"LOGNAME=someone"});
    const std::vector<std::string> lines = Lines(result.out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], MatchesRegex("'someone-[0-9a-f-]{36}'"));
    EXPECT_NE(lines[0], lines[1]);
    EXPECT_EQ(result.status, 0);
}

TEST_F(CallAndRun, CallsEveryFunctionOnWhatIsUnset) {
    const std::string calls =
        "IsEncodedKey($)\nDecodeKey($, $)\nConcatModelAtb($)\nConcatDocAtb($)\nConcatPartAtb($)\n"
        "IsPartInCfgitm($, $)\nIsRangeOrDateEffectivity($)\nGetIDEff($)\nIsRangeType($)\n"
        "GetRangeValue($, $)\nIsInfiniteRank($)\nIsDateType($)\nGetStartDate($, $)\n"
        "IsInfiniteDate($)\nGetEndDate($, $)\nIsPartConfigurated($)\nIsUsedByPart($, $)\n"
        "ORXIdEff($, $)\nHasAORXValue($)\nExtractCFGType($, $)\nORXIdCfg($)\nConcatEffAtb($)\n"
        "GetValue($)\nGetDate($)\nExtractEFFType($, $)\nIsAORXCfg($)\nDecodeEFF($, $)\n"
        "GetExternalName($, $)\nGetInst($, $)\nGetItem($, $)\nGetMemberCount($)\n"
        "GetPlacement0($, $, $)\nGetPlacement1($, $)\nGetPlacement2($, $)\nMinus($)\n"
        "GetAbsPlacement($)\nGetRepFromProperty($)\nIsAnAssembly($)\nIsFree($, $)\n"
        "PRDDFN_IsIn($, $)\nIsInAssembly($, $)\nIsModelDocLinked($)\nIsSame0($, $)\n"
        "IsSamePart($, $)\nIsSameRelating($, $)\nIsSameRelated($, $)\nIsSameNAUO($, $)\n"
        "IsSameShapeRep1($, $)\nIsSameIDT($, $)\nIsSameDocVersion($, $)\nIsaNARVOModel($)\n"
        "IsaNARVORepProperty($)\nIsaNARVOV5Doc($)\nGetNARVOV5Ext($)\nQuantifyRef($, $)\n"
        "ReadMandatory($, $)\nReadPartVersion($)\nEncodeNARVOV5Doc($)\nIsEncodedNARVOV5($)\n"
        "DecodeNARVOV5($, $)\nORXTrunc($, $)\nORX_GetDocName($, $)\nORX_GetModelId_Exp($)\n"
        "ORX_GetModelId_Imp1($)\nORX_GetModelId_Imp2($)\nORX_GetModelId_Imp3($)\n"
        "ORX_GetModelName($, $)\nIsNewer($, $)\nIsVersion($, $)\n"
        "RemoveValueVersion()\n";
    ExpectPrints(Run(calls),
                 ".F.\n$\n'EMPTY VALUE'\n'EMPTY VALUE'\n'EMPTY VALUE'\n"
                 ".F.\n.F.\n'EMPTY VALUE'\n.F.\n"
                 "''\n.T.\n.F.\n$\n"
                 ".T.\n$\n.F.\n.F.\n"
                 "'EMPTY VALUE'\n.F.\n.F.\n'EMPTY VALUE'\n'EMPTY VALUE'\n"
                 "0\n'00000000000000'\n.F.\n.F.\n'EMPTY VALUE'\n"
                 "''\n0\n$\n0\n"
                 "$\n'GetPlacement1 done'\n'GetPlacement2 done'\n0.\n"
                 "(1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.)\n$\n.F.\n.T.\n"
                 ".F.\n.F.\n.F.\n.F.\n"
                 ".F.\n.F.\n.F.\n.F.\n"
                 ".F.\n.F.\n.F.\n.F.\n"
                 ".F.\n.F.\n''\n0.\n"
                 "'ORX'\n''\n'EMPTY VALUE'\n.F.\n"
                 "'EMPTY VALUE'\n'NO VALUE'\n''\n''\n"
                 "''\n-999\n'EMPTY VALUE'\n"
                 "''\n.F.\n.F.\n"
                 ".T.\n");
}

// ---- Lists that functions fill

TEST_F(CallAndRun, PrintsTheListOfAFunctionThatReturnsNothing) {
    ExpectResults(
        {
            {"ComputeABSPlacement(#13, #15, ())", kIdentityAnd345},
            // The twelve values are appended to the list.
            {"ComputeABSPlacement(#13, #15, (7,8))", "(7.,8.,1.,0.,0.,0.,1.,0.,0.,0.,1.,3.,4.,5.)"},
            // The list is emptied first.
            {"GetPlacement0(#25, 'REP_1', (7,8))", kIdentityAnd345},
            {"GetPlacement0(#25, 'REP_2', ())", kIdentityAnd345},
            // Nothing is computed: the list does not change.
            {"GetPlacement0($, 'REP_1', (7,8))", "(7.,8.)"},
        },
        {"-m", "assembly.stp"});
}

TEST_F(CallAndRun, FillsAListThatHasAName) {
    ExpectPrints(Run("LET l = ()\n"
                     "GetPlacement1(#25, l)\n"
                     "l\n"
                     "GetMemberCount(l)\n"
                     "ComputeABSPlacement(#13, #13, l)\n"
                     "GetMemberCount(l)\n"
                     "LET other = (1, 2)\n"
                     "GetPlacement2(#25, other)\n"
                     "other\n",
                     {"-m", "assembly.stp"}),
                 "'GetPlacement1 done'\n" + kIdentityAnd345 +
                     "\n12\n"
                     "(1.,0.,0.,0.,1.,0.,0.,0.,1.,3.,4.,5.,1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.)\n"
                     "24\n'GetPlacement2 done'\n" +
                     kIdentityAnd345 + "\n");
}

TEST_F(CallAndRun, MakesAListLiteralAnewEachTime) {
    ExpectPrints(Run("EACH p IN AXIS2_PLACEMENT_3D WHERE IsSame0(p, #13):"
                     " ComputeABSPlacement(p, #15, ())\n"
                     "EACH s IN SHAPE_REPRESENTATION: GetMemberCount(()); "
                     "ComputeABSPlacement(#13, #13, ())\n",
                     {"-m", "assembly.stp"}),
                 "#13\t" + kIdentityAnd345 +
                     "\n#20\t0\t(1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.)\n"
                     "#21\t0\t(1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.)\n");
}

// ---- Functions that create instances

TEST_F(CallAndRun, MakesInstancesInTheModelThatIsGiven) {
    // Created in this order: the time offset, the time, the calendar date, the date and time.
    ExpectPrints(Call({"-n", "step=CONFIG_CONTROL_DESIGN", "BuildDatedEff('12312099235959', @step)",
                       "#4.DATE_COMPONENT", "#4.TIME_COMPONENT", "#3.MONTH_COMPONENT",
                       "#3.DAY_COMPONENT", "#3.YEAR_COMPONENT", "#2.HOUR_COMPONENT",
                       "#2.MINUTE_COMPONENT", "#2.SECOND_COMPONENT", "#2.ZONE", "#1.HOUR_OFFSET"}),
                 "#4\n#3\n#2\n12\n31\n2099\n23\n59\n59.\n#1\n$\n");
}

TEST_F(CallAndRun, NumbersTheInstancesThatAFunctionMakesAfterTheLargest) {
    folder.Write("step.stp", ExchangeFile("CONFIG_CONTROL_DESIGN",
                                          "#40=APPLICATION_CONTEXT('x');\n"
                                          "#1=APPLICATION_CONTEXT('y');\n"));
    ExpectPrints(Call({"-m", "db.stp", "-m", "step.stp", "GetStartDate(#5, @step#1)",
                       "@step#44.DATE_COMPONENT.YEAR_COMPONENT",
                       "BuildDatedEff('01022003040506', @step)", "GetEndDate(#5, @step#1)"}),
                 "@step#44\n2099\n@step#48\n$\n");
}

TEST_F(CallAndRun, TakesTheFirstModelWhereNoneIsNamed) {
    ExpectPrints(Call({"-n", "a=CONFIG_CONTROL_DESIGN", "-n", "b=CONFIG_CONTROL_DESIGN",
                       "BuildDatedEff('12312099235959', @)", "BuildDatedEff('12312099235959', @b)",
                       "@b#4.TIME_COMPONENT"}),
                 "#4\n@b#4\n@b#2\n");
}

// ---- Scripts

TEST_F(CallAndRun, RunsAScriptFromTheStandardInput) {
    ExpectPrints(Orx({"run", "-m", "parts.stp", "-"}, "#3.ID\nLET x = 'y'\nx\n"), "'P1'\n'y'\n");
}

TEST_F(CallAndRun, SkipsRemarksAndEmptyLines) {
    ExpectPrints(Run("-- a remark\n"
                     "\n"
                     "   \n"
                     "1 -- another\n"
                     "  -- 2\n"
                     "'a--b' -- the text has no remark\n"
                     "--3\n"
                     "4--5\n"),
                 "1\n'a--b'\n4\n");
}

TEST_F(CallAndRun, PrintsNothingForAnEmptyScript) {
    ExpectPrints(Run(""), "");
    ExpectPrints(Run("\n\n"), "");
    ExpectPrints(Run("-- only a remark"), "");
}

TEST_F(CallAndRun, NeedsNoLineBreakAtTheEnd) { ExpectPrints(Run("1\n2"), "1\n2\n"); }

TEST_F(CallAndRun, TakesBlanksAroundAStatement) { ExpectPrints(Run("   1   \n\t2\t\n"), "1\n2\n"); }

TEST_F(CallAndRun, GoesOnInTheNextLineAfterAColonSemicolonCommaOrParenthesis) {
    ExpectPrints(Run("EACH p IN PRODUCT:\n"
                     "  p.ID;\n"
                     "  IsFree(\n"
                     "    p,\n"
                     "    'DESCRIPTION')\n"
                     "(1,\n"
                     "2)\n"
                     "GetMemberCount( -- a remark ends no statement\n"
                     "  (1, -- nor here\n"
                     "   2))\n",
                     {"-m", "parts.stp"}),
                 "#3\t'P1'\t.T.\n#4\t'P2'\t.F.\n(1.,2.)\n2\n");
}

TEST_F(CallAndRun, PrintsAManyLinedScriptInOrder) {
    std::string script;
    std::string printed;
    for (int i = 0; i < 5'000; ++i) {
        script += std::to_string(i) + "\n";
        printed += std::to_string(i) + "\n";
    }
    ExpectPrints(Run(script), printed);
}
