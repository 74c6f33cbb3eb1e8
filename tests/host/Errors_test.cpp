// The messages of orx about statements that cannot be evaluated.

#include <algorithm>
#include <string>
#include <vector>

#include "HostTest.h"

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

class Errors : public HostTest {
  protected:
    // Two models: the first is "db", the second "parts".
    OrxResult CallOnBoth(const std::string& expression) const {
        return Call({"-m", "db.stp", "-m", "parts.stp", "--", expression});
    }
    OrxResult RunOnBoth(const std::string& script) const {
        return Run(script, {"-m", "db.stp", "-m", "parts.stp"});
    }
    static long CountOfSuggestions(const std::vector<std::string>& errors) {
        return std::count_if(errors.begin(), errors.end(), [](const std::string& error) {
            return error.find("did you mean") != std::string::npos;
        });
    }
};

}  // namespace

// ---- Where

TEST_F(Errors, TellFileLineAndColumn) {
    const struct {
        std::string script;
        std::string place;
    } cases[] = {
        {"NoFunction(1)\n", "1:1"},
        {"  NoFunction(1)\n", "1:3"},
        {"1\n\n-- a remark\n NoFunction(1)\n", "4:2"},
        {"GetMemberCount(NoFunction(1))\n", "1:16"},
        {"IsFree(#1, NoFunction(1))\n", "1:12"},
        {"nobody\n", "1:1"},
        {"(1, nobody)\n", "1:5"},
        {"LET x = nobody\n", "1:9"},
        {"SET #1.S_DESC = nobody\n", "1:17"},
        {"EACH p IN NO_TYPE: p\n", "1:11"},
        {"EACH p IN @nomodel.PRODUCT: p\n", "1:11"},
        {"EACH p IN PART_OBJECT WHERE nobody: p\n", "1:29"},
        {"EACH p IN PART_OBJECT: p; nobody\n", "1:27"},
        {"@nomodel#1\n", "1:1"},
        // In a statement of several lines, the line of the error itself.
        {"EACH p IN PART_OBJECT:\n  p.S_DESC;\n  NoFunction(p)\n", "3:3"},
        {"1\nIsFree(\n  #1,\n     nobody)\n", "4:6"},
        {"GetMemberCount( -- a remark\n  nobody)\n", "2:3"},
    };
    for (const auto& [script, place] : cases) {
        const OrxResult result = RunOnBoth(script);
        EXPECT_EQ(result.status, 1) << script;
        EXPECT_THAT(result.err, StartsWith("orx: script.orx:" + place + ": ")) << script;
        EXPECT_EQ(Lines(result.err).size(), 1U) << result.err;
    }
}

TEST_F(Errors, NameTheScriptAsItWasGiven) {
    folder.Write("other.orx", "NoFunction(1)\n");
    const std::string path = folder / "other.orx";
    EXPECT_THAT(Orx({"run", path}).err, StartsWith("orx: " + path + ":1:1: "));
    EXPECT_THAT(Orx({"run", "./other.orx"}).err, StartsWith("orx: ./other.orx:1:1: "));
    EXPECT_THAT(Orx({"run", "-"}, "1\nNoFunction(1)\n").err, ContainsRegex("^orx: .+:2:1: .+\n$"));
}

TEST_F(Errors, CountTheArgumentsOfACallAsLines) {
    EXPECT_THAT(Call({"NoFunction(1)"}).err, StartsWith("orx: <command line>:1:1: "));
    EXPECT_THAT(Call({"1", "'a'", "  NoFunction(1)"}).err, StartsWith("orx: <command line>:3:3: "));
    // Options do not count as lines.
    EXPECT_THAT(Call({"-m", "parts.stp", "1", "(1, nobody)"}).err,
                StartsWith("orx: <command line>:2:5: "));
}

// ---- What

TEST_F(Errors, StopTheRun) {
    const OrxResult result = Run("1\nNoFunction(1)\n3\n");
    EXPECT_EQ(result.out, "1\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Lines(result.err).size(), 1U);
}

TEST_F(Errors, AreAllThatTheDesignOfTheLanguageRulesOut) {
    const std::string cases[] = {
        // A number of arguments that the table does not allow.
        "IsFree(#1)",
        "IsFree(#1, 'S_DESC', 1)",
        "IsFree()",
        "GetMemberCount()",
        "RemoveValueVersion(1)",
        "ComputeABSPlacement(#1, #1)",
        "GetPlacement0(#1, 'REP_1')",
        "BuildDatedEff('12312099235959')",
        // Unknown names.
        "nobody",
        "NoFunction(1)",
        "NEW @db.NO_TYPE()",
        "NEW @nomodel.PART_OBJECT()",
        "EACH p IN NO_TYPE: p",
        "EACH p IN @parts.PART_OBJECT: p",
        "EACH p IN @nomodel.PRODUCT: p",
        "@nomodel",
        "@nomodel#1",
        "#99",
        "@parts#99",
        "IsFree(#99, 'S_DESC')",
        // A model instead of a value, or the reverse.
        "@",
        "@parts",
        "IsFree(@, 'S_DESC')",
        "GetMemberCount(@parts)",
        "(1, @parts)",
        "SET #1.S_DESC = @parts",
        "NEW @db.PART_OBJECT(S_DESC = @parts)",
        "EACH p IN PART_OBJECT WHERE @parts: p",
        "BuildDatedEff('12312099235959', 7)",
        "BuildDatedEff('12312099235959', 'parts')",
        "BuildDatedEff('12312099235959', #1)",
        "BuildDatedEff('12312099235959', $)",
        "BuildDatedEff(@parts, @parts)",
        // An attribute of a value that is neither an instance nor unset.
        "'text'.NAME",
        ".T..NAME",
        "().NAME",
        "(1, 2).NAME",
        "#1.S_DESC.NAME",
        "@parts#3.FRAME_OF_REFERENCE.NAME",
        "GetMemberCount(()).NAME",
        "EACH p IN PART_OBJECT: p.S_PART_NUMBER.NAME",
        "SET 'text'.NAME = 1",
        "SET #1.S_DESC.NAME = 1",
    };
    for (const std::string& expression : cases) {
        const OrxResult result = RunOnBoth(expression + "\n");
        EXPECT_EQ(result.status, 1) << expression;
        EXPECT_EQ(result.out, "") << expression;
        EXPECT_THAT(result.err, MatchesRegex("orx: script\\.orx:1:[0-9]+: .+\n")) << expression;
        const OrxResult called = CallOnBoth(expression);
        EXPECT_EQ(called.status, 1) << expression;
        EXPECT_THAT(called.err, MatchesRegex("orx: <command line>:1:[0-9]+: .+\n")) << expression;
    }
}

TEST_F(Errors, NameWhatIsUnknown) {
    EXPECT_THAT(CallOnBoth("NoFunction(1)").err, HasSubstr("NoFunction"));
    EXPECT_THAT(CallOnBoth("nobody").err, HasSubstr("nobody"));
    EXPECT_THAT(CallOnBoth("@nomodel#1").err, HasSubstr("nomodel"));
    EXPECT_THAT(CallOnBoth("@parts#99").err, HasSubstr("99"));
    EXPECT_THAT(RunOnBoth("EACH p IN NO_TYPE: p\n").err, HasSubstr("NO_TYPE"));
    EXPECT_THAT(CallOnBoth("IsFree(#1)").err, HasSubstr("IsFree"));
}

TEST_F(Errors, SuggestWhatMayBeMeant) {
    EXPECT_THAT(CallOnBoth("IsEncodedKy('x')").err, HasSubstr("IsEncodedKey"));
    EXPECT_THAT(CallOnBoth("GetMembrCount(())").err, HasSubstr("GetMemberCount"));
    EXPECT_THAT(CallOnBoth("isencodedkey('x')").err, HasSubstr("IsEncodedKey"));
    EXPECT_THAT(RunOnBoth("EACH p IN @parts.PRODUKT: p\n").err, ContainsRegex("PRODUKT.*PRODUCT"));
    EXPECT_THAT(RunOnBoth("EACH p IN PART_OBJEKT: p\n").err,
                ContainsRegex("PART_OBJEKT.*(PART_OBJECT|part_object)"));
    EXPECT_THAT(CallOnBoth("@part#3").err, HasSubstr("parts"));
}

TEST_F(Errors, ShowHowAFunctionIsCalledThatHasNoParentheses) {
    EXPECT_EQ(
        Call({"GetItem"}).err,
        "orx: <command line>:1:1: GetItem is a function, called as GetItem(integer, select)\n");
    EXPECT_EQ(Call({"RemoveValueVersion"}).err,
              "orx: <command line>:1:1: RemoveValueVersion is a function, called as "
              "RemoveValueVersion()\n");
    // A name may be that of a function.
    ExpectPrints(Call({"LET GetItem = 3", "GetItem"}), "3\n");
    EXPECT_THAT(Call({"getitem"}).err, HasSubstr("did you mean 'GetItem'?"));
}

TEST_F(Errors, SuggestNothingFarFetched) {
    EXPECT_THAT(CallOnBoth("Xyzzy(1)").err, testing::Not(ContainsRegex("[Dd]id you mean")));
}

// ---- Damaged statements

TEST_F(Errors, AreStatementsThatCannotBeRead) {
    for (const std::string statement : {"(",
                                        "(1,",
                                        "1,",
                                        ")",
                                        "1 2",
                                        "'unterminated",
                                        "'",
                                        "\"0F",
                                        "\"0G\"",
                                        "#",
                                        "@#",
                                        "# 1",
                                        "#1.",
                                        "#1..S_DESC",
                                        ".T",
                                        ".",
                                        "+",
                                        "-",
                                        "1e",
                                        "1.5.2",
                                        "*",
                                        "=",
                                        "!",
                                        "{",
                                        "GetMemberCount(",
                                        "GetMemberCount(()",
                                        "GetMemberCount(,)",
                                        "GetMemberCount((),)",
                                        "LET",
                                        "LET x",
                                        "LET x =",
                                        "LET = 1",
                                        "LET 1 = 1",
                                        "LET x 1",
                                        "LET x = 1 2",
                                        "SET",
                                        "SET #1.S_DESC",
                                        "SET #1 = 1",
                                        "SET 5 = 6",
                                        "SET #1.S_DESC =",
                                        "NEW",
                                        "NEW PART_OBJECT",
                                        "NEW @db.PART_OBJECT",
                                        "NEW @db.PART_OBJECT(",
                                        "NEW @db.PART_OBJECT('x')",
                                        "NEW @db.PART_OBJECT(S_DESC)",
                                        "NEW @db.PART_OBJECT(S_DESC = )",
                                        "EACH",
                                        "EACH p",
                                        "EACH p IN",
                                        "EACH p IN PART_OBJECT",
                                        "EACH p IN PART_OBJECT:",
                                        "EACH p IN PART_OBJECT: ;",
                                        "EACH IN PART_OBJECT: 1",
                                        "EACH p PART_OBJECT: 1",
                                        "EACH p IN PART_OBJECT WHERE: 1",
                                        "EACH p IN PART_OBJECT: EACH q IN PART_OBJECT: 1",
                                        "EACH p IN 7: p",
                                        "EACH p IN 'text': p",
                                        "EACH p IN #1: p",
                                        "99999999999999999999999999",
                                        "#99999999999999999999999999",
                                        "'\\X2\\00'",
                                        "\x01",
                                        "\xFF"}) {
        const OrxResult result = RunOnBoth(statement + "\n");
        EXPECT_EQ(result.out, "") << statement;
        EXPECT_EQ(result.status, 1) << statement;
        EXPECT_THAT(result.err, ContainsRegex("^orx: script\\.orx:[0-9]+:[0-9]+: .+\n$"))
            << statement;
    }
}

TEST_F(Errors, TellTheColumnOfWhatCannotBeRead) {
    EXPECT_THAT(Run("1 2\n").err, StartsWith("orx: script.orx:1:3: "));
    EXPECT_THAT(Run("(1, *)\n").err, StartsWith("orx: script.orx:1:5: "));
    EXPECT_THAT(Run("LET x 1\n").err, StartsWith("orx: script.orx:1:7: "));
    EXPECT_THAT(Run("GetMemberCount((), )\n").err, StartsWith("orx: script.orx:1:20: "));
}

// An engine may get any text; it must not crash.
TEST_F(Errors, ComeFromDeepNestingToo) {
    const std::string open(200'000, '(');
    const OrxResult unclosed = Run(open + "\n");
    EXPECT_EQ(unclosed.status, 1);
    EXPECT_THAT(unclosed.err, StartsWith("orx: script.orx:1:"));
    const OrxResult closed = Run(open + "1" + std::string(200'000, ')') + "\n");
    EXPECT_TRUE(closed.status == 0 || closed.status == 1) << closed.status;
    // The same for long chains of attributes.
    std::string path = "#1";
    for (int i = 0; i < 100'000; ++i) path += ".S_NEXT";
    const OrxResult attributes = RunOnBoth(path + "\n");
    EXPECT_TRUE(attributes.status == 0 || attributes.status == 1) << attributes.status;
}

// ---- Continuing after errors

TEST_F(Errors, DoNotStopARunThatKeepsGoing) {
    const OrxResult result = Run("1\nNoFunction(1)\n3\n  nobody\nLET x = 5\nx\n", {"--keep-going"});
    EXPECT_EQ(result.out, "1\n3\n5\n");
    EXPECT_EQ(result.status, 1);
    const std::vector<std::string> errors = Lines(result.err);
    ASSERT_EQ(errors.size(), 2U) << result.err;
    EXPECT_THAT(errors[0], StartsWith("orx: script.orx:2:1: "));
    EXPECT_THAT(errors[1], StartsWith("orx: script.orx:4:3: "));
}

TEST_F(Errors, DoNotStopACallThatKeepsGoing) {
    const OrxResult result = Call({"--keep-going", "NoFunction(1)", "2", "(", "4"});
    EXPECT_EQ(result.out, "2\n4\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Lines(result.err).size(), 2U) << result.err;
}

TEST_F(Errors, LeaveNothingToTellWhereARunKeepsGoingAndAllIsWell) {
    ExpectPrints(Run("1\n2\n", {"--keep-going"}), "1\n2\n");
}

// ---- Items of enumerations

namespace {

std::string Units() {
    return ExchangeFile("AUTOMOTIVE_DESIGN",
                        "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
                        "#2=OWN_TYPE(.ANY.);\n");
}

}  // namespace

TEST_F(Errors, AreItemsThatTheSchemaDoesNotDeclare) {
    folder.Write("units.stp", Units());
    const auto run = [this](const std::string& statement) {
        return Run(statement + "\n#1.PREFIX\nEACH u IN NAMED_UNIT: u.NAME\n",
                   {"-m", "units.stp", "-o", "units=out.stp", "--keep-going"});
    };
    const std::string unchanged = ".MILLI.\n#1\t.METRE.\n";
    const std::string kNoItem = "takes an item of an enumeration";
    const std::string kUnknown = "is not an item of the enumeration of attribute 'PREFIX'";
    const std::pair<std::string, std::string> kRefused[] = {{"'x.);#9=FOO(.y'", kNoItem},
                                                            {"''", kNoItem},
                                                            {"'MILLI '", kNoItem},
                                                            {"'MILLY'", kUnknown},
                                                            {".MILLY.", kUnknown}};
    for (const auto& [value, message] : kRefused) {
        for (const std::string& statement :
             {"SET #1.PREFIX = " + value, "NEW SI_UNIT(NAME = .METRE., PREFIX = " + value + ")"}) {
            const OrxResult result = run(statement);
            EXPECT_EQ(result.status, 1) << statement;
            EXPECT_EQ(result.out, unchanged) << statement;
            EXPECT_THAT(result.err, HasSubstr(message)) << statement;
        }
    }
    EXPECT_THAT(run("SET #1.PREFIX = .MILLY.").err, HasSubstr("did you mean 'MILLI'?"));
    EXPECT_THAT(ReadFile(folder / "out.stp"), Not(HasSubstr("FOO")));
    EXPECT_EQ(run("SET #1.PREFIX = 'KILO'").out, ".KILO.\n#1\t.METRE.\n");
    EXPECT_EQ(run("SET #1.PREFIX = .CENTI.").out, ".CENTI.\n#1\t.METRE.\n");
    EXPECT_EQ(run("SET #1.PREFIX = $").out, "$\n#1\t.METRE.\n");
}

TEST_F(Errors, OfItemsAreWarningsOnReading) {
    folder.Write("units.stp",
                 ExchangeFile("AUTOMOTIVE_DESIGN", "#1=SI_UNIT(*,.MILLY.,.METRE.);\n"));
    const OrxResult result = Call({"-m", "units.stp", "#1.PREFIX"});
    EXPECT_EQ(result.out, ".MILLY.\n");
    EXPECT_EQ(result.err,
              "orx: warning: units.stp:8:14: MILLY is not an item of the enumeration "
              "(attribute PREFIX)\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(Errors, AreListsThatNestTooDeep) {
    std::string script = "LET a = ()\n";
    for (int i = 0; i < 99; ++i) script += "LET a = (a)\n";
    EXPECT_EQ(Run(script).err, "");
    const OrxResult result = Run(script + "LET a = (a)\n");
    EXPECT_EQ(result.err, "orx: script.orx:101:9: lists nested more than 100 deep\n");
    EXPECT_EQ(result.status, 1);
    // As a member of an attribute's aggregate it would also be one level deeper.
    const std::string add =
        "LET n = NEW PRODUCT(FRAME_OF_REFERENCE = (1))\n"
        "ADD a TO n.FRAME_OF_REFERENCE\n";
    EXPECT_THAT(Run(script + add, {"-n", "m=AUTOMOTIVE_DESIGN", "--lenient"}).err,
                AllOf(HasSubstr(":102:"), HasSubstr("lists nested more than 100 deep")));
}

// ---- Unreadable scripts

TEST_F(Errors, EndARunWhoseScriptCannotBeReadToItsEnd) {
    // Reading a process's memory from its start fails with a device error; a folder is not a file.
    for (const std::string command : {"run /proc/self/mem", "run .", "run - <.", "shell <."}) {
        const std::string line = "cd '" + folder.Path() + "' && " ORX_PROGRAM " " + command +
                                 " -m parts.stp -o parts=out.stp 2>err.txt";
        EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 2) << command;
        EXPECT_THAT(ReadFile(folder / "err.txt"), HasSubstr("cannot be read")) << command;
        EXPECT_EQ(ReadFile(folder / "out.stp"), "") << command;
    }
}

// ---- Many unknown names

TEST_F(Errors, SuggestNamesForTheFirstTwentyOnly) {
    // Comparing each unknown name with all known ones would take time by the square of the script.
    constexpr int kCount = 8'000;
    std::string script;
    for (int i = 0; i < kCount; ++i) script += "LET name" + std::to_string(i) + " = 1\n";
    for (int i = 0; i < kCount; ++i) script += "nama1\n";
    const std::vector<std::string> errors = Lines(Run(script, {"--keep-going"}).err);
    ASSERT_EQ(errors.size(), 8'000U);
    EXPECT_EQ(errors[0], "orx: script.orx:8001:1: unknown name 'nama1'; did you mean 'name1'?");
    EXPECT_EQ(errors[19], "orx: script.orx:8020:1: unknown name 'nama1'; did you mean 'name1'?");
    EXPECT_EQ(errors[20],
              "orx: script.orx:8021:1: unknown name 'nama1' (a text stands between single quotes: "
              "'nama1')");
    EXPECT_EQ(CountOfSuggestions(errors), 20);
}

TEST_F(Errors, SuggestNamesOfEveryKindForTheFirstTwentyTogether) {
    std::string script;
    for (int i = 0; i < 5; ++i) {
        script +=
            "GetMembrCount(())\n"
            "EACH p IN PRODUKT: p\n"
            "NEW PRODUKT()\n"
            "#3.NAM\n"
            "SET #3.NAM = 'x'\n";
    }
    const OrxResult result = Run(script, {"-m", "parts.stp", "--keep-going"});
    const std::vector<std::string> errors = Lines(result.err);
    ASSERT_EQ(errors.size(), 25U) << result.err;
    EXPECT_THAT(errors[19], HasSubstr("did you mean 'NAME'?"));
    EXPECT_EQ(errors[20], "orx: script.orx:21:1: unknown function 'GetMembrCount'");
    EXPECT_EQ(CountOfSuggestions(errors), 20);
}
