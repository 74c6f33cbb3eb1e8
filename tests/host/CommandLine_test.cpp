// Arguments of the command line that are not options, and the messages about typing errors.

#include <filesystem>

#include "HostTest.h"

using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class CommandLine : public HostTest {
  protected:
    static void ExpectRefused(const OrxResult& result, const std::string& message) {
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "orx: " + message + "\n");
    }
};

}  // namespace

TEST_F(CommandLine, TakesFilesWithoutAnOption) {
    EXPECT_EQ(Orx({"parts.stp"}).out, Orx({"describe", "-m", "parts.stp"}).out);
    EXPECT_THAT(Orx({"parts.stp"}).out, StartsWith("model parts\nfile parts.stp\n"));
    EXPECT_EQ(Orx({"parts.stp", "--json"}).out, Orx({"describe", "--json", "-m", "parts.stp"}).out);
    EXPECT_EQ(Orx({"describe", "parts.stp", "db.stp"}).out,
              Orx({"describe", "-m", "parts.stp", "-m", "db.stp"}).out);
    ExpectPrints(Orx({"tree", "db.stp"}), Orx({"tree", "-m", "db.stp"}).out);
    ExpectPrints(Orx({"shell", "parts.stp"}, "#3.ID\n"), "'P1'\n");
}

TEST_F(CommandLine, WritesThePageBesideNothingThatIsThere) {
    ExpectPrints(Orx({"report", "db.stp"}), "written: db.html\n");
    EXPECT_THAT(ReadFile(folder / "db.html"), StartsWith("<!DOCTYPE html>"));
    folder.Write("db.html", "mine");
    ExpectRefused(Orx({"report", "db.stp"}),
                  "db.html: is there already (--output db.html replaces it)");
    EXPECT_EQ(ReadFile(folder / "db.html"), "mine");
    ExpectPrints(Orx({"report", "db.stp", "--output", "db.html"}), "");
}

TEST_F(CommandLine, TakesTheStandardInputWhereAFileIsTaken) {
    EXPECT_THAT(Orx({"-"}, Parts()).out,
                StartsWith("model stdin\nfile -\nschema AUTOMOTIVE_DESIGN\ninstances 5\n"));
    ExpectPrints(Orx({"tree", "-"}, Database()), Orx({"tree", "db.stp"}).out);
    ExpectPrints(Orx({"call", "-m", "-", "#3.ID", "@stdin#4.ID"}, Parts()), "'P1'\n'P2'\n");
    ExpectPrints(Orx({"call", "-m", "p=-", "@p#3.ID"}, Parts()), "'P1'\n");
    ExpectPrints(Orx({"diff", "-", "parts.stp"}, Parts()), "");
    EXPECT_EQ(Orx({"check", "-"}, Parts()).status, 0);
    ExpectPrints(Orx({"call", "-s", "-", "-n", "m=plant", "NEW MACHINE()"},
                     "SCHEMA plant; ENTITY machine; END_ENTITY; END_SCHEMA;"),
                 "#1\n");
    EXPECT_THAT(Orx({"-"}, "no exchange file").err, StartsWith("orx: <standard input>:1:1: "));
    ExpectRefused(Orx({"diff", "-", "-"}, Parts()), "the standard input (-) can be read once");
    ExpectRefused(Orx({"run", "-m", "-", "-"}, Parts()), "the standard input (-) can be read once");
}

TEST_F(CommandLine, SuggestsWhatMayBeMeant) {
    ExpectRefused(Orx({"tre", "x"}), "'tre' is no command and no file; did you mean 'tree'?");
    ExpectRefused(Orx({"usres"}), "'usres' is no command and no file; did you mean 'users'?");
    ExpectRefused(Orx({"missing-file.stp"}),
                  "'missing-file.stp' is no command and no file (orx --help lists the commands)");
    ExpectRefused(Call({"--jsn", "1"}), "unknown option '--jsn'; did you mean '--json'?");
    ExpectRefused(Orx({"tree", "--placement", "parts.stp"}),
                  "unknown option '--placement'; did you mean '--placements'?");
    ExpectRefused(Call({"--xyzzyxyzzy=7", "1"}), "unknown option '--xyzzyxyzzy' (orx call --help)");
}

TEST_F(CommandLine, SaysInALineWhatIsWrong) {
    const std::vector<std::string> cases[] = {
        {"nonsense"},
        {"--nonsense"},
        {"call"},
        {"call", "--nonsense", "1"},
        {"run", "a", "b"},
        {"tree"},
        {"tree", "--depth", "-1", "parts.stp"},
        {"tree", "--lines", "1e3", "parts.stp"},
        {"diff", "--tolerance", "-1", "parts.stp", "parts.stp"},
        {"diff", "--tolerance", "wide", "parts.stp", "parts.stp"},
        {"diff", "parts.stp"},
        {"call", "--json", "--csv", "1"},
        {"call", "-m"},
        {"describe", "missing.stp"},
        {"call", "x"},
    };
    for (const std::vector<std::string>& arguments : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const OrxResult result = Orx(arguments);
        EXPECT_NE(result.status, 0);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(Lines(result.err).size(), 1U) << result.err;
        EXPECT_THAT(Lines(result.err), Each(StartsWith("orx: ")));
        EXPECT_LT(result.err.size(), 130U) << result.err;
    }
    ExpectRefused(Orx({"tree", "--depth", "-1", "parts.stp"}),
                  "--depth: a whole number from 0 expected, found '-1' (orx tree --help)");
    ExpectRefused(Orx({"diff", "--tolerance", "wide", "a", "b"}),
                  "--tolerance: a number from 0 expected, found 'wide' (orx diff --help)");
    ExpectRefused(Orx({"tree"}), "a data set is missing: orx tree FILE");
    EXPECT_EQ(Orx({"tree", "--depth", "0", "db.stp"}).status, 0);
    EXPECT_EQ(Orx({"diff", "--tolerance", "1e-9", "db.stp", "db.stp"}).status, 0);
}

TEST_F(CommandLine, TellsWhatATextAndAModelNeed) {
    EXPECT_EQ(Call({"x"}).err,
              "orx: <command line>:1:1: unknown name 'x' (a text stands between single quotes: "
              "'x')\n");
    EXPECT_THAT(Run("NEW @step.PRODUCT()\n").err,
                HasSubstr("unknown model 'step' (--model FILE gives one, --new NAME=SCHEMA an "
                          "empty one)"));
    EXPECT_THAT(
        Run("NEW @step.PRODUCT()\n", {"-m", "db.stp"}).err,
        HasSubstr("unknown model 'step'; known: db (--new NAME=SCHEMA makes an empty one)"));
    EXPECT_THAT(Run("#1\n").err, HasSubstr("--new"));
    EXPECT_THAT(Call({"GetMembrCount(())"}).err, Not(HasSubstr("quotes")));
}

// ---- Options in the man page and in completions

namespace {

// The commands that `orx --help` lists.
std::vector<std::string> Commands(const std::string& help) {
    std::vector<std::string> commands;
    bool listed = false;
    for (const std::string& line : Lines(help)) {
        if (listed && line.starts_with("  ") && line[2] != ' ') {
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
        }
        listed |= line.starts_with("Subcommands:");
    }
    return commands;
}

// The long options in the help of a command.
std::vector<std::string> LongOptions(const std::string& help) {
    std::vector<std::string> options;
    for (const std::string& line : Lines(help)) {
        const std::size_t start = line.find("--");
        if (!line.starts_with("  -") || start == std::string::npos) continue;
        options.push_back(line.substr(start, line.find_first_of(" ,=", start) - start));
    }
    return options;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

}  // namespace

TEST_F(CommandLine, HasALineInTheManPageAndTheCompletionsForEachOption) {
    const std::string man = ReadFile(SOURCE_DIRECTORY "/docs/orx.1.in");
    EXPECT_THAT(man, HasSubstr("\n.SH OPTIONS\n@OPTIONS@\n"));
    const std::string described = Replaced(Orx({"completion", "man"}).out, "\\-", "-");
    const std::string bash = Orx({"completion", "bash"}).out;
    const std::string zsh = Orx({"completion", "zsh"}).out;
    const std::vector<std::string> commands = Commands(Orx({"--help"}).out);
    ASSERT_GE(commands.size(), 12U);
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        EXPECT_THAT(man, HasSubstr("\n.B " + command + "\n"));
        const std::size_t row = bash.find("[" + command + "]='");
        ASSERT_NE(row, std::string::npos);
        const std::string offered = bash.substr(row, bash.find("'\n", row) - row) + " ";
        EXPECT_THAT(zsh, HasSubstr("        " + command + ") _arguments"));
        const std::vector<std::string> options = LongOptions(Orx({command, "--help"}).out);
        EXPECT_GE(options.size(), 1U);
        for (const std::string& option : options) {
            EXPECT_THAT(offered, testing::ContainsRegex("[' ]" + option + "[' ]")) << option;
            // Each option has one entry, which names the command.
            const std::size_t entry = described.find("\\fB" + option + "\\fR");
            ASSERT_NE(entry, std::string::npos) << option;
            const std::string paragraph =
                described.substr(entry, described.find(".TP\n", entry) - entry);
            EXPECT_TRUE(option == "--help" ||
                        paragraph.find("\\fB" + command + "\\fR") != std::string::npos)
                << option << " in " << paragraph;
        }
    }
}

TEST_F(CommandLine, IsCompletedByBash) {
    folder.Write("orx.bash", Orx({"completion", "bash"}).out);
    const auto complete = [this](const std::string& words, int at) {
        const std::string command =
            "cd '" + folder.Path() +
            "' && bash -c 'compopt() { :; }; source ./orx.bash; COMP_WORDS=(" + words +
            "); COMP_CWORD=" + std::to_string(at) + "; _orx \"$0\" \"${COMP_WORDS[" +
            std::to_string(at) + "]}\" \"${COMP_WORDS[" + std::to_string(at - 1) +
            "]}\"; printf \"%s\\n\" \"${COMPREPLY[@]}\" | sort' " ORX_PROGRAM " > out.txt";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return Lines(ReadFile(folder / "out.txt"));
    };
    using testing::Contains;
    using testing::ElementsAre;
    EXPECT_THAT(complete("orx us", 1), ElementsAre("users"));
    EXPECT_THAT(complete("orx tree --ab", 2), ElementsAre("--absolute"));
    EXPECT_THAT(complete("orx call IsEnc", 2), ElementsAre("IsEncodedKey(", "IsEncodedNARVOV5("));
    EXPECT_THAT(complete("orx call -m part", 3), ElementsAre("parts.stp"));
    EXPECT_THAT(complete("orx tree part", 2), ElementsAre("parts.stp"));
    EXPECT_THAT(complete("orx part", 1), ElementsAre("parts.stp"));
}
