// Options, exit statuses, and the files that orx reads and writes.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "HostTest.h"

using testing::AnyOf;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

// The module that the program loads, next to it in the build.
std::string Module() {
    return (std::filesystem::path(ORX_PROGRAM).parent_path().parent_path() / "lib" /
            "libORXExUtilities.so")
        .string();
}

// Whether a value occurs in a JSON value, at any depth.
bool Holds(const nlohmann::json& json, const nlohmann::json& value) {
    if (json == value) return true;
    if (!json.is_structured()) return false;
    return std::any_of(json.begin(), json.end(),
                       [&](const nlohmann::json& member) { return Holds(member, value); });
}

class Options : public HostTest {
  protected:
    // Runs a shell command in the folder; $ORX is the program.
    OrxResult Shell(const std::string& command) const {
        const std::string all = "cd '" + folder.Path() + "' && ORX='" + ORX_PROGRAM + "' && { " +
                                command + "; } > shell.out 2> shell.err";
        const int status = std::system(all.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                ReadFile(folder / "shell.out"), ReadFile(folder / "shell.err")};
    }

    std::string File(const std::string& name) const { return ReadFile(folder / name); }
    bool Exists(const std::string& name) const { return std::filesystem::exists(folder / name); }

    // Bad usage or an unreadable file: only an error message is printed.
    static void ExpectRefused(const OrxResult& result, const std::string& what = "") {
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr(what));
        EXPECT_NE(result.err, "");
    }
};

}  // namespace

// ---- The command line itself

TEST_F(Options, VersionIsTold) {
    const OrxResult result = Orx({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, testing::MatchesRegex("orx [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    EXPECT_EQ(result.err, "");
}

TEST_F(Options, HelpIsGiven) {
    const OrxResult result = Orx({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    for (const char* word : {"functions", "describe", "tree", "report", "call", "run", "shell",
                             "--help", "--version"}) {
        EXPECT_THAT(result.out, HasSubstr(word));
    }
    for (const char* command : {"call", "run"}) {
        const OrxResult help = Orx({command, "--help"});
        EXPECT_EQ(help.status, 0) << command;
        EXPECT_EQ(help.err, "") << command;
        for (const char* option :
             {"-m", "--model", "-n", "--new", "-s", "--schema", "-t", "--trace", "-o", "--save",
              "--json", "--keep-going", "--lenient", "--threads", "--module"}) {
            EXPECT_THAT(help.out, HasSubstr(option)) << command;
        }
    }
    for (const char* command : {"functions", "describe", "tree", "report", "shell"}) {
        EXPECT_EQ(Orx({command, "--help"}).status, 0) << command;
    }
}

TEST_F(Options, BadUsageIsRefused) {
    ExpectRefused(Orx({}));
    ExpectRefused(Orx({"nonsense"}));
    ExpectRefused(Orx({"--nonsense"}));
    ExpectRefused(Orx({"call"}));
    ExpectRefused(Orx({"run"}));
    ExpectRefused(Call({"--nonsense", "1"}), "--nonsense");
    ExpectRefused(Call({"-m"}));
    ExpectRefused(Orx({"run", "a.orx", "b.orx"}));
}

TEST_F(Options, NothingAtAllIsAnsweredWithWhatToDoNext) {
    const OrxResult result = Orx({});
    ExpectRefused(result, "orx tree FILE.stp");
    EXPECT_THAT(result.err, HasSubstr("orx --help"));
    EXPECT_LE(Lines(result.err).size(), 10U);
}

TEST_F(Options, EndAtTwoDashes) { ExpectPrints(Call({"--", "-12", "-1.5"}), "-12\n-1.5\n"); }

TEST_F(Options, StandBeforeAndBehindTheExpressions) {
    ExpectPrints(Call({"#3.ID", "-m", "parts.stp"}), "'P1'\n");
}

TEST_F(Options, EachTakesOneValue) {
    folder.Write("plant.exp", "SCHEMA plant; ENTITY machine; END_ENTITY; END_SCHEMA;");
    ExpectPrints(Call({"-m", "parts.stp", "1", "2", "3"}), "1\n2\n3\n");
    ExpectPrints(Call({"-n", "new=PDM_SCHEMA", "1", "2", "3"}), "1\n2\n3\n");
    ExpectPrints(Call({"-t", "trace.txt", "1", "2", "3"}), "1\n2\n3\n");
    ExpectPrints(Call({"-s", "plant.exp", "1", "2", "3"}), "1\n2\n3\n");
    ExpectPrints(Call({"-m", "parts.stp", "-o", "parts=out.stp", "1", "2", "3"}), "1\n2\n3\n");
    EXPECT_TRUE(Exists("out.stp"));
}

TEST_F(Options, ExitStatusTellsHowItWent) {
    EXPECT_EQ(Call({"1"}).status, 0);
    EXPECT_EQ(Call({"1", "nobody"}).status, 1);
    EXPECT_EQ(Call({"-m", "missing.stp", "1"}).status, 2);
}

// ---- Models

TEST_F(Options, ModelIsNamedAfterTheStemOfItsFile) {
    std::filesystem::create_directories(folder / "sub.dir");
    const struct {
        std::string file;
        std::string name;
    } cases[] = {
        {"plain.stp", "plain"},           {"as1-oc-214.stp", "as1-oc-214"},
        {"part.v2.stp", "part.v2"},       {"a-b.c-d.e.step", "a-b.c-d.e"},
        {"no_extension", "no_extension"}, {"sub.dir/inner.stp", "inner"},
        {"UPPER_1.STP", "UPPER_1"},       {"2024.stp", "2024"},
    };
    for (const auto& [file, name] : cases) {
        folder.Write(file, Parts());
        const std::string prefix = "@" + name;
        ExpectPrints(Run(prefix + "#3.ID\n" + prefix + "#3\nEACH p IN " + prefix +
                             ".PRODUCT: p.ID\n" + "NEW " + prefix + ".PRODUCT(ID = 'new')\n" +
                             "GetStartDate(#5, " + prefix + "#3)\n",
                         {"-m", "db.stp", "-m", file}),
                     "'P1'\n" + prefix + "#3\n" + prefix + "#3\t'P1'\n" + prefix + "#4\t'P2'\n" +
                         prefix + "#6\n" + prefix + "#10\n");
    }
}

TEST_F(Options, ModelIsNamedAsTheOptionSays) {
    ExpectPrints(Call({"-m", "db.stp", "--model", "my-model.1=parts.stp", "@my-model.1#3",
                       "@my-model.1#3.ID"}),
                 "@my-model.1#3\n'P1'\n");
    ExpectPrints(Call({"--model=x=parts.stp", "@x#3.ID"}), "'P1'\n");
}

TEST_F(Options, ModelsAreNumberedInTheOrderOfTheCommandLine) {
    // Only the first model's instances are written without its name.
    ExpectPrints(Call({"-m", "parts.stp", "-n", "new=AUTOMOTIVE_DESIGN", "-m", "db.stp", "#3",
                       "@parts#3", "@db#1", "NEW @new.PRODUCT()"}),
                 "#3\n#3\n@db#1\n@new#1\n");
    ExpectPrints(Call({"-n", "new=AUTOMOTIVE_DESIGN", "-m", "parts.stp", "-m", "db.stp", "@parts#3",
                       "@db#1", "NEW @new.PRODUCT()", "#1", "@new#1"}),
                 "@parts#3\n@db#1\n#1\n#1\n#1\n");
    ExpectPrints(Call({"-m", "db.stp", "-m", "parts.stp", "-n", "new=AUTOMOTIVE_DESIGN", "#1",
                       "@parts#3", "NEW @new.PRODUCT()"}),
                 "#1\n@parts#3\n@new#1\n");
}

TEST_F(Options, SameFileMayBeReadUnderTwoNames) {
    ExpectPrints(Run("SET @a#3.ID = 'changed'\n@a#3.ID\n@b#3.ID\nIsSame0(@a#3, @b#3)\n",
                     {"-m", "a=parts.stp", "-m", "b=parts.stp"}),
                 "'changed'\n'P1'\n.F.\n");
}

TEST_F(Options, DuplicateModelNamesAreRefused) {
    folder.Write("copy.stp", Parts());
    ExpectRefused(Call({"-m", "parts.stp", "-m", "parts.stp", "1"}), "parts");
    ExpectRefused(Call({"-m", "x=parts.stp", "-m", "x=copy.stp", "1"}), "x");
    ExpectRefused(Call({"-m", "parts.stp", "-m", "parts=copy.stp", "1"}), "parts");
    ExpectRefused(Call({"-m", "parts.stp", "-n", "parts=PDM_SCHEMA", "1"}), "parts");
    ExpectRefused(Call({"-n", "x=PDM_SCHEMA", "-n", "x=AUTOMOTIVE_DESIGN", "1"}), "x");
    ExpectRefused(Orx({"describe", "-m", "parts.stp", "-m", "parts.stp"}), "parts");
}

TEST_F(Options, FilesThatCannotBeReadAreRefused) {
    folder.Write("script.orx", "1\n");
    folder.Write("empty.stp", "");
    folder.Write("text.stp", "this is no exchange file\n");
    for (const char* file : {"missing.stp", "empty.stp", "text.stp", "no/such/folder.stp"}) {
        ExpectRefused(Call({"-m", file, "1"}), file);
        ExpectRefused(Orx({"run", "-m", file, "script.orx"}), file);
    }
    ExpectRefused(Call({"-m", "x=.", "1"}));
    ExpectRefused(Orx({"run", "missing.orx"}), "missing.orx");
    ExpectRefused(Orx({"run", "."}));
    ExpectRefused(Call({"-s", "missing.exp", "1"}), "missing.exp");
    folder.Write("broken.exp", "SCHEMA broken; ENTITY");
    ExpectRefused(Call({"-s", "broken.exp", "1"}), "broken.exp:1:");
}

TEST_F(Options, DamagedFilesAreToldWithThePlaceOfEachError) {
    folder.Write("damaged.stp", ExchangeFile("AUTOMOTIVE_DESIGN",
                                             "#1=PRODUCT('p','',$,(#7));\n"
                                             "#2=PRODUCT('q','',$,());\n"
                                             "#2=PRODUCT('r','',$,());\n"));
    // The data begin in line 8 of the file.
    const OrxResult result = Call({"-m", "damaged.stp", "1"});
    ExpectRefused(result);
    EXPECT_THAT(result.err, ContainsRegex("damaged\\.stp:8:[0-9]+: "));
    EXPECT_THAT(result.err, ContainsRegex("damaged\\.stp:10:[0-9]+: "));
    // No other messages.
    EXPECT_EQ(Lines(result.err).size(), 2U) << result.err;
}

TEST_F(Options, LenientReadsDamagedFilesAsFarAsTheyGo) {
    folder.Write("damaged.stp", ExchangeFile("AUTOMOTIVE_DESIGN",
                                             "#1=PRODUCT('p','',#7,());\n"
                                             "#2=PRODUCT('q','broken;\n"
                                             "#3=PRODUCT('r','',$,());\n"
                                             "#4=PRODUCT('s','',$,());\n"));
    ExpectRefused(Call({"-m", "damaged.stp", "#1.ID"}));
    const OrxResult dangling =
        Call({"--lenient", "-m", "damaged.stp", "#1.ID", "#1.DESCRIPTION", "#4.ID"});
    EXPECT_EQ(dangling.out, "'p'\n$\n's'\n");
    EXPECT_EQ(dangling.status, 0);
    EXPECT_THAT(dangling.err, ContainsRegex("damaged\\.stp:8:"));
}

TEST_F(Options, MessagesNameTheRemedy) {
    const auto damaged = [this](const std::string& data) {
        folder.Write("damaged.stp", ExchangeFile("AUTOMOTIVE_DESIGN", data));
        return Call({"-m", "damaged.stp", "1"});
    };
    ExpectRefused(damaged("#1=PRODUCT('p','',#7,());\n"), "--lenient");
    // Only once, and only if it would help.
    const std::string twice = damaged("#1=PRODUCT(;\n#2=PRODUCT(;\n").err;
    EXPECT_EQ(Lines(twice).size(), 2U);
    EXPECT_EQ(twice.find("--lenient"), twice.rfind("--lenient"));
    // A message that says more of it says enough.
    const std::string great = damaged("#9223372036854775808=PRODUCT('p','',$,());\n").err;
    EXPECT_THAT(great, EndsWith(" (--lenient numbers the instance anew)\n"));
    EXPECT_EQ(great.find("--lenient"), great.rfind("--lenient"));
    folder.Write("text.stp", "this is no exchange file\n");
    EXPECT_THAT(Call({"-m", "text.stp", "1"}).err, Not(HasSubstr("--lenient")));
    EXPECT_THAT(Call({"-m", "missing.stp", "1"}).err, Not(HasSubstr("--lenient")));
    folder.Write("plant.stp", ExchangeFile("PLANT", ""));
    ExpectRefused(Call({"-m", "plant.stp", "1"}), "--schema");
    EXPECT_THAT(Call({"-m", "plant.stp", "1"}).err, Not(HasSubstr("--lenient")));
    ExpectRefused(Call({"-n", "a=PLANT", "1"}), "--schema");
    EXPECT_THAT(Call({"-m", "db.stp", "-m", "parts.stp", "@step#1"}).err,
                HasSubstr("known: db, parts"));
    EXPECT_THAT(Call({"@step#1"}).err, HasSubstr("--model"));
    ExpectRefused(Call({"-m", "db.stp", "-o", "step=out.stp", "1"}), "known: db");
}

// With files large enough for two threads.
TEST_F(Options, ThreadsChangeNothing) {
    std::string data;
    for (int id = 1; id <= 30'000; ++id) {
        data += '#' + std::to_string(id) + "=PRODUCT('a product of the data set','',$,());\n";
    }
    folder.Write("large.stp", ExchangeFile("AUTOMOTIVE_DESIGN", data));
    folder.Write("broken.stp",
                 ExchangeFile("AUTOMOTIVE_DESIGN", data + "#30001=PRODUCT(7,'',#5,());\n"
                                                          "#30002=PRODUCT('a','',#6,();\n"));
    const auto call = [this](const char* threads, const char* file) {
        return Call({"--threads", threads, "-m", file, "#29999.ID", "GetInst(#30000, 'NAME')"});
    };
    const OrxResult alone = call("1", "large.stp");
    EXPECT_EQ(call("2", "large.stp").out, alone.out);
    EXPECT_EQ(call("0", "large.stp").out, alone.out);
    EXPECT_THAT(alone.out, HasSubstr("'a product of the data set'\n"));
    const OrxResult refused = call("1", "broken.stp");
    ExpectRefused(refused, "broken.stp:300");
    EXPECT_EQ(call("2", "broken.stp").err, refused.err);
    ExpectRefused(call("two", "large.stp"), "two");
}

TEST_F(Options, LenientLeavesOutNothingButWhatIsBroken) {
    folder.Write("damaged.stp", ExchangeFile("AUTOMOTIVE_DESIGN",
                                             "#1=PRODUCT('a','',$,());\n"
                                             "#1=PRODUCT('b','',$,());\n"
                                             "#2=PRODUCT('c','',$,());\n"));
    const OrxResult result = Run("EACH p IN PRODUCT: p.ID\n", {"--lenient", "-m", "damaged.stp"});
    EXPECT_EQ(result.out, "#1\t'a'\n#2\t'c'\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(Options, NewModelsAreEmptyAndOfTheSchemaThatIsNamed) {
    ExpectPrints(Run("EACH p IN PRODUCT: p\nNEW @a.PRODUCT(ID = 'x')\nNEW @b.part_object()\n",
                     {"-n", "a=PDM_SCHEMA", "--new", "b=cdma"}),
                 "#1\n@b#1\n");
    ExpectPrints(Call({"-n", "a=automotive_design", "NEW @a.PRODUCT()"}), "#1\n");
    ExpectRefused(Call({"-n", "a=NO_SUCH_SCHEMA", "1"}), "NO_SUCH_SCHEMA");
    ExpectRefused(Call({"-n", "a", "1"}));
    ExpectRefused(Call({"-n", "=PDM_SCHEMA", "1"}));
    ExpectRefused(Call({"-n", "a=", "1"}));
}

// ---- Schemas

TEST_F(Options, AsNamesTheSchemaToReadWith) {
    folder.Write("other.stp", ExchangeFile("IFC4", "#1=PRODUCT('P1','Bolt',$,());\n"));
    EXPECT_EQ(Call({"-m", "other.stp", "#1.NAME"}).status, 2);
    ExpectPrints(Call({"--as", "automotive_design", "-m", "other.stp", "#1.NAME"}), "'Bolt'\n");
    // The file's own schema name is kept.
    ExpectPrints(Call({"--as", "PDM_SCHEMA", "-m", "m=other.stp", "-o", "m=out.stp", "#1.ID"}),
                 "'P1'\n");
    EXPECT_THAT(ReadFile(folder.Path() + "/out.stp"), HasSubstr("FILE_SCHEMA(('IFC4'))"));
    const OrxResult unknown = Call({"--as", "NOBODY", "-m", "other.stp", "#1"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_THAT(unknown.err, StartsWith("orx: unknown schema 'NOBODY'"));
}

TEST_F(Options, InstancesOfUndeclaredTypesAnswerByPosition) {
    folder.Write("cnc.stp", ExchangeFile("INTEGRATED_CNC_SCHEMA",
                                         "#1=MACHINING_WORKSTEP('drill',#2,3,(1.5,2.));\n"
                                         "#2=PRODUCT('P1','Bolt',$,());\n"));
    const OrxResult result = Call({"-m", "cnc.stp", "#1[1]", "#1[2].NAME", "#1[3]", "#1[4][2]"});
    EXPECT_THAT(result.err, HasSubstr("schema 'INTEGRATED_CNC_SCHEMA' is not built in"));
    EXPECT_EQ(result.out, "'drill'\n'Bolt'\n3\n2.\n");
}

TEST_F(Options, SchemasThatAreGivenComeBeforeTheBuiltInOnes) {
    folder.Write("plant.exp",
                 "SCHEMA plant;\nENTITY machine;\n  power : REAL;\nEND_ENTITY;\nEND_SCHEMA;\n");
    folder.Write("own.exp",
                 "SCHEMA automotive_design;\nENTITY gadget;\n  name : STRING;\n"
                 "END_ENTITY;\nEND_SCHEMA;\n");
    folder.Write("plant.stp", ExchangeFile("PLANT", "#1=MACHINE(7);\n"));
    ExpectPrints(Call({"-s", "plant.exp", "-m", "plant.stp", "#1.POWER"}), "7.\n");
    ExpectPrints(Call({"-s", "plant.exp", "--schema", "own.exp", "-n", "p=plant", "-n",
                       "a=AUTOMOTIVE_DESIGN", "-n", "b=PDM_SCHEMA", "NEW @p.MACHINE(POWER = 1)",
                       "NEW @a.GADGET(NAME = 'g')", "@a#1.NAME", "NEW @b.PRODUCT()"}),
                 "#1\n@a#1\n'g'\n@b#1\n");
    EXPECT_EQ(Call({"-s", "own.exp", "-n", "a=AUTOMOTIVE_DESIGN", "NEW @a.PRODUCT()"}).status, 1);
    ExpectRefused(Call({"-m", "plant.stp", "1"}), "PLANT");
}

// ---- Saving

TEST_F(Options, SaveWritesTheModelAfterTheLastStatement) {
    ExpectPrints(Run("NEW @parts.PRODUCT(ID = 'P3', NAME = 'it''s new \\X\\E9')\n"
                     "SET #3.DESCRIPTION = 'described'\n"
                     "SET #4.DESCRIPTION = $\n"
                     "SET #3.FRAME_OF_REFERENCE = (#2, #2)\n",
                     {"-m", "parts.stp", "-o", "parts=out.stp"}),
                 "#6\n");
    EXPECT_THAT(File("out.stp"), StartsWith("ISO-10303-21;"));
    ExpectPrints(Run("EACH p IN PRODUCT: p.ID; p.NAME; p.DESCRIPTION; p.FRAME_OF_REFERENCE\n"
                     "#5.OF_PRODUCT\n"
                     "NEW @out.PRODUCT()\n",
                     {"-m", "out.stp"}),
                 "#3\t'P1'\t'Bolt'\t'described'\t(#2,#2)\n#4\t'P2'\t'Nut'\t$\t(#2)\n"
                 "#6\t'P3'\t'it''s new \\X\\E9'\t$\t$\n#3\n#7\n");
    // The file that was read is unchanged.
    EXPECT_EQ(File("parts.stp"), Parts());
}

TEST_F(Options, SaveWritesNewModelsAndSeveral) {
    ExpectPrints(Call({"-n", "a=PDM_SCHEMA", "-n", "b=cdma", "--save", "a=a.stp", "--save",
                       "b=b.stp", "NEW @a.PRODUCT(ID = 'x')", "NEW @b.part_object()",
                       "BuildDatedEff('12312099235959', @a)"}),
                 "#1\n@b#1\n#5\n");
    ExpectPrints(Call({"-m", "a.stp", "-m", "b.stp", "#1.ID", "#5.DATE_COMPONENT.YEAR_COMPONENT",
                       "#3.SECOND_COMPONENT", "@b#1"}),
                 "'x'\n2099\n59.\n@b#1\n");
    EXPECT_THAT(File("a.stp"), HasSubstr("PDM_SCHEMA"));
}

TEST_F(Options, SaveMayReplaceTheFileThatWasRead) {
    ExpectPrints(Run("SET #3.ID = 'changed'\n", {"-m", "parts.stp", "-o", "parts=parts.stp"}), "");
    ExpectPrints(Call({"-m", "parts.stp", "#3.ID", "#4.ID"}), "'changed'\n'P2'\n");
}

TEST_F(Options, SaveLeavesNothingElseBehind) {
    ExpectPrints(Call({"-m", "parts.stp", "-o", "parts=out.stp", "1"}), "1\n");
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
        names.push_back(entry.path().filename());
    }
    EXPECT_THAT(names,
                testing::UnorderedElementsAre("assembly.stp", "db.stp", "out.stp", "parts.stp"));
}

TEST_F(Options, SaveOfAnUnknownModelIsRefusedBeforeAnythingRuns) {
    ExpectRefused(Call({"-m", "parts.stp", "-o", "nomodel=out.stp", "1"}), "nomodel");
    ExpectRefused(Call({"-m", "parts.stp", "-o", "out.stp", "1"}));
    EXPECT_FALSE(Exists("out.stp"));
}

TEST_F(Options, SaveThatFailsIsTold) {
    const OrxResult result = Call({"-m", "parts.stp", "-o", "parts=no/such/folder/out.stp", "1"});
    EXPECT_EQ(result.out, "1\n");
    EXPECT_NE(result.status, 0);
    EXPECT_LT(result.status, 128);
    EXPECT_THAT(result.err, HasSubstr("no/such/folder"));
}

// ---- JSON

TEST_F(Options, JsonIsOneObjectAResult) {
    const OrxResult result =
        Run("'text'\n"
            "'\\X\\E9t\\X\\E9 \\X2\\20AC\\X0\\ \"quoted\" \\\\'\n"
            "7\n"
            "1.5\n"
            ".T.\n"
            "$\n"
            "LET x = 1\n"
            "SET #3.NAME = 'n'\n"
            "#3\n"
            "(1., 2.)\n"
            "('a', $)\n"
            "EACH p IN PRODUCT: p.ID; p.NAME\n"
            "EACH p IN PRODUCT: LET y = p\n",
            {"-m", "parts.stp", "--json"});
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    std::vector<nlohmann::json> objects;
    for (const std::string& line : Lines(result.out)) {
        objects.push_back(nlohmann::json::parse(line, nullptr, false));
        EXPECT_TRUE(objects.back().is_object()) << line;
    }
    ASSERT_EQ(objects.size(), 11U) << result.out;
    EXPECT_TRUE(Holds(objects[0], "text")) << objects[0];
    EXPECT_TRUE(Holds(objects[1], "\u00E9t\u00E9 \u20AC \"quoted\" \\")) << objects[1];
    EXPECT_TRUE(Holds(objects[2], 7)) << objects[2];
    EXPECT_TRUE(Holds(objects[3], 1.5)) << objects[3];
    EXPECT_TRUE(Holds(objects[4], true)) << objects[4];
    EXPECT_TRUE(Holds(objects[5], nullptr)) << objects[5];
    EXPECT_THAT(objects[6].dump(), HasSubstr("3"));
    EXPECT_TRUE(Holds(objects[7], nlohmann::json::parse("[1.0, 2.0]"))) << objects[7];
    EXPECT_TRUE(Holds(objects[8], "a")) << objects[8];
    EXPECT_TRUE(Holds(objects[9], "P1") && Holds(objects[9], "n")) << objects[9];
    EXPECT_TRUE(Holds(objects[10], "P2") && Holds(objects[10], "Nut")) << objects[10];
}

TEST_F(Options, JsonHasNoNumberThatIsNotFinite) {
    const OrxResult result =
        Call({"-m", "assembly.stp", "--json", "ComputeABSPlacement(#15, #17, ())"});
    EXPECT_EQ(result.status, 0);
    ASSERT_EQ(Lines(result.out).size(), 1U);
    EXPECT_TRUE(nlohmann::json::accept(result.out)) << result.out;
}

TEST_F(Options, JsonStaysReadableForEveryByte) {
    std::string text = "'";
    for (int c = 0; c < 256; ++c) {
        char directive[8];
        std::snprintf(directive, sizeof directive, "\\X\\%02X", static_cast<unsigned>(c));
        text += directive;
    }
    const OrxResult result = Call({"--json", text + "'"});
    EXPECT_EQ(result.status, 0);
    ASSERT_EQ(Lines(result.out).size(), 1U);
    EXPECT_TRUE(nlohmann::json::accept(result.out)) << result.out;
}

TEST_F(Options, JsonIsUtf8WhateverAFileIsNamed) {
    folder.Write("caf\xE9.stp", Parts());
    folder.Write("caf\u00E9.stp", Parts());
    for (const std::string file : {"caf\xE9.stp", "caf\u00E9.stp"}) {
        const OrxResult described = Orx({"describe", "--json", "-m", file});
        EXPECT_EQ(described.status, 0);
        EXPECT_EQ(nlohmann::json::parse(described.out)["model"], "caf\u00E9");
        const std::string stem = file.substr(0, file.size() - 4);
        const OrxResult called = Call({"--json", "-m", "db.stp", "-m", file, "@" + stem + "#3"});
        EXPECT_TRUE(Holds(nlohmann::json::parse(called.out), "@caf\u00E9#3")) << called.out;
    }
}

// ---- Overwriting

TEST_F(Options, NothingIsWrittenOverWhatIsRead) {
    const std::string data = Parts();
    const auto expectRefused = [&](const std::vector<std::string>& arguments) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        ExpectRefused(Orx(arguments), "is read, and not to be overwritten");
        EXPECT_EQ(File("parts.stp"), data);
    };
    folder.Write("script.orx", "1\n");
    folder.Write("own.exp", "SCHEMA own;\nEND_SCHEMA;\n");
    std::filesystem::create_symlink("parts.stp", folder / "link.stp");
    std::filesystem::create_hard_link(folder / "parts.stp", folder / "second.stp");
    for (const std::string trace : {"parts.stp", "./parts.stp", "link.stp", "second.stp"}) {
        expectRefused({"call", "-t", trace, "-m", "parts.stp", "1"});
        expectRefused({"shell", "-t", trace, "-m", "a=parts.stp"});
        expectRefused({"report", "-m", "parts.stp", "-o", trace});
    }
    expectRefused({"call", "-t", "own.exp", "-s", "own.exp", "1"});
    expectRefused({"run", "-t", "script.orx", "script.orx"});
    EXPECT_EQ(File("script.orx"), "1\n");
    // "-" is not a file.
    EXPECT_EQ(Call({"-t", "-", "-m", "parts.stp", "1"}).status, 0);
}

TEST_F(Options, SaveWritesOverNoFileButTheModelsOwn) {
    const auto expectRefused = [&](const std::vector<std::string>& arguments) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        ExpectRefused(Orx(arguments), "is read, and not to be overwritten");
        EXPECT_EQ(File("parts.stp"), Parts());
        EXPECT_EQ(File("db.stp"), Database());
        EXPECT_EQ(File("script.orx"), "1\n");
        EXPECT_EQ(File("own.exp"), "SCHEMA own;\nEND_SCHEMA;\n");
    };
    folder.Write("script.orx", "1\n");
    folder.Write("own.exp", "SCHEMA own;\nEND_SCHEMA;\n");
    std::filesystem::create_symlink("parts.stp", folder / "link.stp");
    std::filesystem::create_hard_link(folder / "parts.stp", folder / "second.stp");
    for (const std::string file : {"parts.stp", "./parts.stp", "link.stp", "second.stp"}) {
        expectRefused({"call", "-m", "db.stp", "-m", "parts.stp", "-o", "db=" + file, "1"});
        expectRefused({"call", "-m", "x=parts.stp", "-m", "y=db.stp", "-o", "y=" + file, "1"});
        expectRefused({"call", "-n", "x=cdma", "-m", "parts.stp", "-o", "x=" + file, "1"});
        expectRefused({"shell", "-m", "db.stp", "-m", "parts.stp", "-o", "db=" + file});
        expectRefused({"copy", "parts.stp", file});
    }
    expectRefused({"run", "-m", "db.stp", "-o", "db=script.orx", "script.orx"});
    expectRefused({"call", "-s", "own.exp", "-m", "db.stp", "-o", "db=own.exp", "1"});
    expectRefused({"copy", "-s", "own.exp", "db.stp", "own.exp"});
    // A file that two models were read from is the file of each.
    ExpectPrints(Call({"-m", "db.stp", "-o", "db=db.stp", "1"}), "1\n");
    ExpectPrints(Call({"-m", "a=db.stp", "-m", "b=db.stp", "-o", "b=./db.stp", "1"}), "1\n");
    std::filesystem::remove(folder / "second.stp");
    ExpectPrints(Call({"-m", "a=parts.stp", "-m", "db.stp", "-o", "a=link.stp", "1"}), "1\n");
}

TEST_F(Options, SaveWritesOverNoDatabaseButTheModelsOwn) {
    EXPECT_EQ(Orx({"copy", "db.stp", "sqlite:kept.db"}).status, 0);
    const std::string kept = File("kept.db");
    for (const std::string target : {"sqlite:kept.db", "sqlite:./kept.db", "kept.db"}) {
        ExpectRefused(Call({"-m", "a=sqlite:kept.db", "-m", "b=db.stp", "-o", "b=" + target, "1"}),
                      "is read, and not to be overwritten");
        EXPECT_EQ(File("kept.db"), kept) << target;
    }
    ExpectPrints(
        Call({"-m", "a=sqlite:kept.db", "-m", "b=sqlite:kept.db", "-o", "a=sqlite:kept.db", "1"}),
        "1\n");
}

TEST_F(Options, NoTwoResultsGoIntoOneFile) {
    const auto expectRefused = [&](const std::vector<std::string>& arguments) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        ExpectRefused(Call(arguments), "two results cannot go into one file");
        EXPECT_FALSE(std::filesystem::exists(folder / "out.stp"));
    };
    const std::vector<std::string> both = {"-n", "a=PDM_SCHEMA", "-n", "b=PDM_SCHEMA"};
    const auto with = [&both](std::vector<std::string> more) {
        more.insert(more.begin(), both.begin(), both.end());
        more.emplace_back("1");
        return more;
    };
    expectRefused(with({"-o", "a=out.stp", "-o", "b=out.stp"}));
    expectRefused(with({"-o", "a=out.stp", "-o", "b=./x/../out.stp"}));
    expectRefused(with({"-o", "a=out.stp", "-o", "a=" + (folder / "out.stp")}));
    expectRefused(with({"-o", "a=out.stp", "-t", "out.stp"}));
    std::filesystem::create_symlink("out.stp", folder / "link.stp");
    expectRefused(with({"-o", "a=out.stp", "-o", "b=link.stp"}));
    ExpectPrints(Call(with({"-o", "a=/dev/null", "-o", "b=/dev/null"})), "1\n");
    ExpectPrints(Call(with({"-o", "a=out.stp", "-o", "b=other.stp"})), "1\n");
}

TEST_F(Options, HelpThatCannotBeWrittenIsTold) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
    for (const std::string option : {"--help", "--version", "call --help"}) {
        const std::string command = ORX_PROGRAM " " + option + " >/dev/full 2>/dev/null";
        EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 2) << option;
    }
}

// ---- Trace

TEST_F(Options, TraceIsWrittenIntoAFile) {
    for (const char* option : {"-t", "--trace"}) {
        ExpectPrints(Call({option, "trace.txt", "GetMemberCount((1., 2.))", "1"}), "2\n1\n");
        EXPECT_EQ(File("trace.txt"),
                  "== 1:1 GetMemberCount((1.,2.))\n"
                  "SdaiPrimitiveH GetMemberCount -> {\n"
                  "   SdaiPrimitiveH GetMemberCount -> Taille2\n"
                  "SdaiPrimitiveH GetMemberCount -> }\n");
    }
}

TEST_F(Options, TraceIsWrittenToTheStandardErrorStream) {
    const OrxResult result = Call({"-t", "-", "GetMemberCount((1., 2.))"});
    EXPECT_EQ(result.out, "2\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err,
              "== 1:1 GetMemberCount((1.,2.))\n"
              "SdaiPrimitiveH GetMemberCount -> {\n"
              "   SdaiPrimitiveH GetMemberCount -> Taille2\n"
              "SdaiPrimitiveH GetMemberCount -> }\n");
    EXPECT_FALSE(Exists("-"));
}

TEST_F(Options, TraceIsSwitchedOnByTheEnvironmentToo) {
    const std::string trace =
        "SdaiPrimitiveH GetMemberCount -> {\n"
        "   SdaiPrimitiveH GetMemberCount -> Taille0\n"
        "SdaiPrimitiveH GetMemberCount -> }\n";
    const OrxResult stream = Orx({"call", "GetMemberCount(())"}, "", {"KOR_TRACE=12"});
    EXPECT_EQ(stream.out, "0\n");
    EXPECT_EQ(stream.err, trace);
    const OrxResult file = Orx({"call", "GetMemberCount(())"}, "",
                               {"KOR_TRACE=12", "KOR_TRACE_FILE=" + (folder / "trace.txt")});
    ExpectPrints(file, "0\n");
    EXPECT_EQ(File("trace.txt"), trace);
    // The lines of the functions are of level 12.
    ExpectPrints(Orx({"call", "GetMemberCount(())"}, "", {"KOR_TRACE=11"}), "0\n");
}

TEST_F(Options, TraceStaysOffUnlessItIsAskedFor) {
    ExpectPrints(Call({"ReadMandatory('', 'NAME')"}), "'ORX'\n");
    EXPECT_EQ(Call({"-t", "-", "ReadMandatory('', 'NAME')"}).out, "'ORX'\n");
}

// ---- The module

TEST_F(Options, ModuleMayBeAnotherBuild) {
    ASSERT_TRUE(std::filesystem::exists(Module()));
    ExpectPrints(Call({"--module", Module(), "GetMemberCount(())"}), "0\n");
    folder.Write("script.orx", "GetMemberCount((1,2))\n");
    ExpectPrints(Orx({"run", "--module", Module(), "script.orx"}), "2\n");
}

TEST_F(Options, ModuleThatCannotBeLoadedIsRefused) {
    folder.Write("no.so", "this is no library");
    ExpectRefused(Call({"--module", "./missing.so", "GetMemberCount(())"}), "missing.so");
    ExpectRefused(Call({"--module", "./no.so", "GetMemberCount(())"}), "no.so");
}

// ---- Standard output

TEST_F(Options, StandardOutputThatIsFullIsAFailure) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
    for (const char* command :
         {"\"$ORX\" call 1 > /dev/full", "\"$ORX\" functions > /dev/full",
          "\"$ORX\" functions --json > /dev/full", "\"$ORX\" describe -m parts.stp > /dev/full",
          "echo 1 | \"$ORX\" run - > /dev/full"}) {
        const OrxResult result = Shell(command);
        EXPECT_NE(result.status, 0) << command;
        EXPECT_LT(result.status, 128) << command;
        EXPECT_NE(result.err, "") << command;
    }
}

TEST_F(Options, StandardOutputThatIsClosedIsAFailure) {
    const OrxResult result = Shell("\"$ORX\" call 1 >&-");
    EXPECT_NE(result.status, 0);
    EXPECT_LT(result.status, 128);
    EXPECT_NE(result.err, "");
}

// A file that is opened while a standard stream is closed must not get its descriptor.
TEST_F(Options, StandardErrorStreamThatIsClosedSpoilsNoFile) {
    const OrxResult result = Shell("\"$ORX\" call -t trace.txt 1 nobody 2>&-");
    EXPECT_EQ(result.out, "1\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(File("trace.txt"), "");
}

TEST_F(Options, StandardOutputThatIsClosedSpoilsNoFile) {
    Shell(
        "\"$ORX\" call -m parts.stp -o parts=out.stp -t trace.txt '#3.NAME' 'NEW @parts.PRODUCT()'"
        " >&-");
    EXPECT_THAT(File("trace.txt"), IsEmpty());
    if (Exists("out.stp")) {
        EXPECT_THAT(File("out.stp"), StartsWith("ISO-10303-21;"));
        EXPECT_THAT(File("out.stp"), EndsWith("END-ISO-10303-21;\n"));
    }
    EXPECT_EQ(File("parts.stp"), Parts());
}

TEST_F(Options, ReaderThatGoesAwayEndsTheRun) {
    std::string script;
    for (int i = 0; i < 100'000; ++i) script += "'some text to print'\n";
    folder.Write("long.orx", script);
    EXPECT_EQ(Shell("\"$ORX\" run long.orx | head -n 1").out, "'some text to print'\n");
}

// ---- Real data

TEST_F(Options, ModelOfARealFileIsNamedAndCounted) {
    const std::string file = SHARED_DATA "/data/as1-oc-214.stp";
    if (!std::filesystem::exists(file)) GTEST_SKIP() << file << " is not here";
    const OrxResult result =
        Run("EACH p IN @as1-oc-214.PRODUCT WHERE IsFree(p, 'NAME'): p\n"
            "EACH p IN @as1-oc-214.PRODUCT: IsSame0(p, p)\n",
            {"-m", file});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    const std::vector<std::string> lines = Lines(result.out);
    EXPECT_FALSE(lines.empty());
    for (const std::string& line : lines) {
        EXPECT_THAT(line, testing::MatchesRegex("#[0-9]+\t\\.T\\."));
    }
}
