// `orx shell`: plain if standard input is not a terminal, with editing if it is.

#include <fcntl.h>
#include <poll.h>
#include <pty.h>

#include <chrono>
#include <filesystem>

#include "HostTest.h"

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class Shell : public HostTest {
  protected:
    OrxResult Type(const std::string& input, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"shell", "-m", "parts.stp"});
        return Orx(options, input);
    }
};

}  // namespace

// ---- Plain

TEST_F(Shell, CarriesOutStatements) {
    ExpectPrints(Type("1\n'text'\n#3.ID\nLET x = #3\nx.NAME\n"), "1\n'text'\n'P1'\n'Bolt'\n");
    ExpectPrints(Type(""), "");
    ExpectPrints(Type("7"), "7\n");
}

TEST_F(Shell, GoesOnInTheNextLine) {
    ExpectPrints(Type("EACH p IN PRODUCT:\n  -- a remark\n\n  p.ID;\n  p.NAME -- another,\n1\n"),
                 "#3\t'P1'\t'Bolt'\n#4\t'P2'\t'Nut'\n1\n");
    ExpectPrints(Type("GetMemberCount(\n(1.,\n2.))\n"), "2\n");
    // Quoted characters do not continue a line.
    ExpectPrints(Type("'a,'\n'it''s: ('\n"), "'a,'\n'it''s: ('\n");
}

TEST_F(Shell, GoesOnAfterAnErrorAndPointsAtIt) {
    const OrxResult result = Type("1\nGetMembrCount(#3)\n(1, nobody)\n2\n");
    EXPECT_EQ(result.out, "1\n2\n");
    EXPECT_EQ(result.err,
              "orx: 2:1: unknown function 'GetMembrCount'; did you mean 'GetMemberCount'?\n"
              "    GetMembrCount(#3)\n"
              "    ^\n"
              "orx: 3:5: unknown name 'nobody' (a text stands between single quotes: 'nobody')\n"
              "    (1, nobody)\n"
              "        ^\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(Shell, PointsIntoTheLineOfAStatementAndCountsCharacters) {
    // The second character takes two bytes, and counts as two in the column.
    EXPECT_EQ(Type("(1,\n'\u00E9', zz)\n").err,
              "orx: 2:7: unknown name 'zz' (a text stands between single quotes: 'zz')\n    "
              "'\u00E9', zz)\n         ^\n");
    EXPECT_EQ(Type("\t zz\n").err,
              "orx: 1:3: unknown name 'zz' (a text stands between single quotes: 'zz')\n    \t "
              "zz\n    \t ^\n");
}

TEST_F(Shell, PointsBelowWideAndCombiningCharacters) {
    // Two columns for each of the first two characters; a letter with a combining accent has one.
    EXPECT_EQ(Type("('\u8F74\u627F', zz)\n").err,
              "orx: 1:12: unknown name 'zz' (a text stands between single quotes: 'zz')\n    "
              "('\u8F74\u627F', zz)\n             ^\n");
    EXPECT_EQ(Type("('e\u0301', zz)\n").err,
              "orx: 1:9: unknown name 'zz' (a text stands between single quotes: 'zz')\n    "
              "('e\u0301', zz)\n          ^\n");
}

TEST_F(Shell, TellsAStatementWithoutAnEnd) {
    const OrxResult result = Type("1\nGetMemberCount((1.,\n");
    EXPECT_EQ(result.out, "1\n");
    EXPECT_THAT(result.err, ContainsRegex("orx: [23]:[0-9]+: "));
    EXPECT_EQ(result.status, 1);
}

TEST_F(Shell, Helps) {
    const OrxResult result = Type("help\n");
    EXPECT_EQ(result.status, 0);
    for (const char* word : {"EACH", "LET", "SET", "NEW", "help NAME", "quit"}) {
        EXPECT_THAT(result.out, HasSubstr(word));
    }
    ExpectPrints(Type("help DecodeKey\n  help isencodedkey \n"),
                 "DecodeKey(string, integer) gives string | integer | real | unset\n"
                 "source unit ConcatAtb, trace label \"SdaiPrimitiveH DecodeKey ->\"\n"
                 "IsEncodedKey(string) gives logical\n"
                 "source unit ConcatAtb, trace label \"SdaiPrimitiveH IsEncodeKey ->\"\n");
    ExpectPrints(Type("help product\n"),
                 "PRODUCT\n  ID\tSTRING\n  NAME\tSTRING\n  DESCRIPTION\tOPTIONAL STRING\n"
                 "  FRAME_OF_REFERENCE\tSET [0:?] OF PRODUCT_CONTEXT\n");
    const OrxResult unknown = Type("help DecodKey\n2\n");
    EXPECT_EQ(unknown.out, "2\n");
    EXPECT_THAT(unknown.err, HasSubstr("did you mean 'DecodeKey'?"));
}

TEST_F(Shell, LeavesWhenItIsTold) {
    ExpectPrints(Type("1\nquit\n2\n"), "1\n");
    ExpectPrints(Type("1\nexit\n2\n"), "1\n");
}

TEST_F(Shell, SavesWhenItLeaves) {
    ExpectPrints(Type("SET #3.NAME = 'Screw'\nquit\n", {"-o", "parts=out.stp"}), "");
    ExpectPrints(Orx({"call", "-m", "out.stp", "#3.NAME"}), "'Screw'\n");
    EXPECT_EQ(Type("1\n", {"-o", "nomodel=out.stp"}).status, 2);
}

TEST_F(Shell, WritesJson) {
    ExpectPrints(Type("7\n", {"--json"}), "{\"line\":1,\"kind\":\"INTEGER\",\"value\":7}\n");
}

TEST_F(Shell, OpensMakesAndSavesModels) {
    ExpectPrints(Orx({"shell"},
                     "open parts.stp\nopen b=db.stp\nnew c=cdma\n@b#1.S_PART_NUMBER\n"
                     "NEW @c.PART_OBJECT(S_PART_NUMBER = 'C-1')\n"
                     "SET #3.NAME = 'Screw'\nsave parts=out.stp\nsave c=c.stp\n"),
                 "'P-1'\n@c#1\n");
    ExpectPrints(Orx({"call", "-m", "out.stp", "-m", "c.stp", "#3.NAME", "@c#1.S_PART_NUMBER"}),
                 "'Screw'\n'C-1'\n");
    ExpectPrints(Type("save only.stp\n"), "");
    ExpectPrints(Orx({"call", "-m", "only.stp", "#3.NAME"}), "'Bolt'\n");
}

TEST_F(Shell, GoesOnAfterAModelThatCannotBeOpenedOrSaved) {
    const OrxResult result = Type(
        "open missing.stp\nopen\nopen parts.stp\nnew x\nsave other=x.stp\nsave no/x.stp\n"
        "open db.stp\nsave x.stp\n7\n");
    EXPECT_EQ(result.out, "7\n");
    EXPECT_EQ(result.status, 1);
    const std::vector<std::string> errors = Lines(result.err);
    ASSERT_EQ(errors.size(), 7U) << result.err;
    EXPECT_THAT(errors[0], StartsWith("orx: missing.stp: "));
    EXPECT_EQ(errors[1], "orx: open [NAME=]FILE");
    EXPECT_EQ(errors[2], "orx: two models are named 'parts' (name one with NAME=...)");
    EXPECT_THAT(errors[3], HasSubstr("NAME=SCHEMA"));
    EXPECT_THAT(errors[4], StartsWith("orx: unknown model 'other'; known: parts"));
    EXPECT_THAT(errors[5], StartsWith("orx: no/x.stp: "));
    EXPECT_THAT(errors[6], HasSubstr("of several models, the one that is saved is named"));
}

TEST_F(Shell, SavesNoModelOverTheFileOfAnother) {
    folder.Write("own.exp", "SCHEMA own;\nEND_SCHEMA;\n");
    std::filesystem::create_symlink("db.stp", folder / "link.stp");
    const OrxResult result = Type(
        "open db.stp\nsave parts=db.stp\nsave parts=./db.stp\nsave parts=link.stp\n"
        "save parts=own.exp\n7\n",
        {"-s", "own.exp"});
    const std::string read = ": is read, and not to be overwritten\n";
    EXPECT_EQ(result.err, "orx: db.stp" + read + "orx: ./db.stp" + read + "orx: link.stp" + read +
                              "orx: own.exp" + read);
    EXPECT_EQ(result.out, "7\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(ReadFile(folder / "db.stp"), Database());
    EXPECT_EQ(ReadFile(folder / "own.exp"), "SCHEMA own;\nEND_SCHEMA;\n");
    // Each may go over its own file.
    ExpectPrints(Type("open db.stp\nsave db=link.stp\nsave parts=parts.stp\n"), "");
}

TEST_F(Shell, OpensNoFileThatAModelIsSavedToAtTheEnd) {
    const OrxResult result = Type("open other=out.stp\nopen db.stp\n7\n", {"-o", "parts=out.stp"});
    EXPECT_EQ(result.err, "orx: out.stp: is read, and not to be overwritten\n");
    EXPECT_EQ(result.out, "7\n");
    EXPECT_EQ(result.status, 1);
    ExpectPrints(Orx({"call", "-m", "out.stp", "#3.NAME"}), "'Bolt'\n");
}

TEST_F(Shell, NamesTheModelsThatThereAre) {
    EXPECT_THAT(Type("@part#3\n").err, HasSubstr("unknown model 'part'; known: parts"));
}

// ---- On a terminal

namespace {

// Whether the system provides terminals.
bool HasTerminals() {
    const int descriptor = posix_openpt(O_RDWR | O_NOCTTY);
    if (descriptor >= 0) close(descriptor);
    return descriptor >= 0;
}

// orx shell on its own terminal, 200 columns wide.
class Terminal {
  public:
    explicit Terminal(const std::string& directory,
                      const std::vector<std::string>& arguments = {"-m", "parts.stp"},
                      const std::string& pager = "") {
        winsize size{};
        size.ws_col = 200;
        size.ws_row = 50;
        process_ = forkpty(&descriptor_, nullptr, nullptr, &size);
        if (process_ != 0) return;
        setenv("TERM", "xterm", 1);
        setenv("NO_COLOR", "1", 1);
        setenv("XDG_STATE_HOME", directory.c_str(), 1);
        setenv("HOME", directory.c_str(), 1);
        setenv("PAGER", pager.c_str(), 1);
        std::vector<const char*> words{"orx", "shell"};
        for (const std::string& argument : arguments) words.push_back(argument.c_str());
        words.push_back(nullptr);
        if (chdir(directory.c_str()) == 0) {
            execv(ORX_PROGRAM, const_cast<char* const*>(words.data()));
        }
        _exit(127);
    }
    ~Terminal() {
        close(descriptor_);
        if (!ended_ && process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
        }
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void Press(const std::string& keys) const {
        EXPECT_EQ(write(descriptor_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    // The unread output up to a text; all of it if that does not arrive in time.
    std::string ReadUpTo(const std::string& text) {
        using std::chrono::steady_clock;
        const auto end = steady_clock::now() + std::chrono::seconds(20);
        while (unread_.find(text) == std::string::npos && steady_clock::now() < end) {
            pollfd waiting{descriptor_, POLLIN, 0};
            if (poll(&waiting, 1, 200) <= 0) continue;
            char piece[4096];
            const ssize_t count = read(descriptor_, piece, sizeof piece);
            if (count <= 0) break;
            unread_.append(piece, static_cast<std::size_t>(count));
        }
        const std::size_t at = unread_.find(text);
        const std::size_t length = at != std::string::npos ? at + text.size() : unread_.size();
        std::string shown = unread_.substr(0, length);
        unread_.erase(0, length);
        return shown;
    }

    // -1 if the shell does not end.
    int ExitStatus() {
        using std::chrono::steady_clock;
        int status = 0;
        const auto end = steady_clock::now() + std::chrono::seconds(20);
        while (!ended_) {
            ended_ = waitpid(process_, &status, WNOHANG) == process_;
            if (!ended_ && steady_clock::now() > end) return -1;
            usleep(10'000);
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

  private:
    int descriptor_ = -1;
    pid_t process_ = -1;
    bool ended_ = false;
    std::string unread_;
};

}  // namespace

TEST_F(Shell, EditsAndCompletesOnATerminal) {
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    Terminal terminal(folder.Path());
    EXPECT_THAT(terminal.ReadUpTo("orx> "), HasSubstr("AUTOMOTIVE_DESIGN, 5 instances"));
    // A function.
    terminal.Press("GetMemb\t(1.,2.,3.))\r");
    EXPECT_THAT(terminal.ReadUpTo("\n3\r\n"), HasSubstr("\n3\r\n"));
    // An attribute of the instance, in any letter case; the name of a model.
    terminal.Press("@\t#5.of\t.NAM\t\r");
    EXPECT_THAT(terminal.ReadUpTo("'Bolt'"), HasSubstr("'Bolt'"));
    // An entity type, and an attribute of the instances that the variable visits.
    terminal.Press("EACH f IN PRODUCT_DEFINITION_FORM\t: f.I\t\r");
    const std::string row = terminal.ReadUpTo("#5  'A'");
    EXPECT_THAT(row, AllOf(HasSubstr("f   f.ID"), HasSubstr("#5  'A'"), Not(HasSubstr("orx:"))));
    // A variable.
    terminal.Press("LET thread = 'M6'\rthr\t\r");
    EXPECT_THAT(terminal.ReadUpTo("\n'M6'"), HasSubstr("\n'M6'"));
    // The list of choices.
    terminal.Press("#3.\t");
    const std::string shown = terminal.ReadUpTo("NAME");
    for (const char* name : {"DESCRIPTION", "FRAME_OF_REFERENCE", "ID"}) {
        EXPECT_THAT(shown, HasSubstr(name));
    }
    // Cancels the line, and an unfinished statement; the shell continues.
    terminal.Press("\x03");
    EXPECT_THAT(terminal.ReadUpTo("^C"), HasSubstr("^C"));
    terminal.Press("EACH p IN PRODUCT:\r");
    terminal.ReadUpTo("...> ");
    terminal.Press("\x03");
    terminal.ReadUpTo("orx> ");
    terminal.Press("'still there'\r");
    EXPECT_THAT(terminal.ReadUpTo("\n'still there'"), HasSubstr("\n'still there'"));
    terminal.ReadUpTo("orx> ");
    terminal.Press("\x04");
    EXPECT_EQ(terminal.ExitStatus(), 0);
}

TEST_F(Shell, AlignsWideAndCombiningCharacters) {
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    folder.Write("parts.stp", ExchangeFile("AUTOMOTIVE_DESIGN",
                                           "#1=PRODUCT('a','\u8F74\u627F','',());\n"
                                           "#2=PRODUCT('b','Nut','',());\n"
                                           "#3=PRODUCT('c','e\u0301','',());\n"
                                           "#4=PRODUCT('d','\U0001F600','',());\n"));
    Terminal terminal(folder.Path());
    terminal.ReadUpTo("orx> ");
    terminal.Press("EACH p IN PRODUCT: p.NAME; p.ID\r");
    // The widest name takes six columns, quotes included.
    EXPECT_THAT(terminal.ReadUpTo("'d'"), HasSubstr("p   p.NAME  p.ID\r\n"
                                                    "#1  '\u8F74\u627F'  'a'\r\n"
                                                    "#2  'Nut'   'b'\r\n"
                                                    "#3  'e\u0301'     'c'\r\n"
                                                    "#4  '\U0001F600'    'd'"));
}

TEST_F(Shell, CompletesNamesInEveryLanguage) {
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    const auto write = [this](const std::string& name) {
        folder.Write(name,
                     ExchangeFile("AUTOMOTIVE_DESIGN", "#1=PRODUCT('" + name + "','','',());\n"));
    };
    // Two names that begin with the same letter, followed by different letters with the same first
    // byte.
    const std::string door = "\u0434\u0432\u0435\u0440\u044C.stp";
    const std::string house = "\u0434\u043E\u043C.stp";
    write(door);
    write(house);
    Terminal terminal(folder.Path(), {"-m", door, "-m", house});
    terminal.ReadUpTo("orx> ");
    terminal.Press("@\t\u043E\t#1.ID\r");
    EXPECT_THAT(terminal.ReadUpTo("\n'" + house + "'"), HasSubstr("\n'" + house + "'"));
    terminal.ReadUpTo("orx> ");
    terminal.Press("@\u0434\u0432\t#1.ID\r");
    EXPECT_THAT(terminal.ReadUpTo("\n'" + door + "'"), HasSubstr("\n'" + door + "'"));
}

TEST_F(Shell, ListsNamesInColumnsOfWideCharacters) {
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    for (const char* name : {"a\u8F74.stp", "bolts.stp", "c.stp"}) {
        folder.Write(name, ExchangeFile("AUTOMOTIVE_DESIGN", ""));
    }
    Terminal terminal(folder.Path(), {"-m", "a\u8F74.stp", "-m", "bolts.stp", "-m", "c.stp"});
    terminal.ReadUpTo("orx> ");
    terminal.Press("@\t");
    EXPECT_THAT(terminal.ReadUpTo("  c"), HasSubstr("\na\u8F74    bolts  c"));
}

TEST_F(Shell, RemembersLines) {
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    {
        Terminal terminal(folder.Path());
        terminal.ReadUpTo("orx> ");
        terminal.Press("'remembered'\r");
        terminal.ReadUpTo("\n'remembered'");
        terminal.ReadUpTo("orx> ");
        terminal.Press("\x04");
        EXPECT_EQ(terminal.ExitStatus(), 0);
    }
    const std::filesystem::path file = folder / "orx/history";
    ASSERT_TRUE(std::filesystem::exists(file));
    EXPECT_EQ(std::filesystem::status(file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    Terminal again(folder.Path());
    again.ReadUpTo("orx> ");
    again.Press("\x1b[A\r");  // upwards
    EXPECT_THAT(again.ReadUpTo("\n'remembered'"), HasSubstr("\n'remembered'"));
}

// A file with so many products that their rows do not fit into a terminal's buffer.
namespace {

constexpr int kManyProducts = 20'000;

std::string ManyProducts() {
    std::string data;
    for (int i = 1; i <= kManyProducts; ++i) {
        const std::string number = std::to_string(i);
        data += "#" + number + "=PRODUCT('P" + number + "','',$,());\n";
    }
    return ExchangeFile("AUTOMOTIVE_DESIGN", data);
}

}  // namespace

TEST_F(Shell, LivesOnWhenAStatementIsInterrupted) {
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    folder.Write("many.stp", ManyProducts());
    Terminal terminal(folder.Path(), {"many.stp"});
    terminal.ReadUpTo("orx> ");
    terminal.Press("LET kept = 'alive'\r");
    terminal.ReadUpTo("orx> ");
    terminal.Press("EACH p IN PRODUCT: p.ID\r");
    // The output buffer is full: the loop cannot have ended.
    EXPECT_THAT(terminal.ReadUpTo("#1     'P1'"), HasSubstr("p      p.ID"));
    terminal.Press("\x03");
    const std::string rest = terminal.ReadUpTo("orx: interrupted");
    EXPECT_THAT(rest, HasSubstr("orx: interrupted"));
    EXPECT_THAT(rest, Not(HasSubstr("'P20000'")));
    terminal.ReadUpTo("orx> ");
    terminal.Press("kept\r");
    EXPECT_THAT(terminal.ReadUpTo("\n'alive'"), HasSubstr("\n'alive'"));
    // The name of the EACH is gone, the model is still there.
    terminal.Press("p\r");
    EXPECT_THAT(terminal.ReadUpTo("unknown name 'p'"), HasSubstr("unknown name 'p'"));
    terminal.Press("#20000.ID\r");
    EXPECT_THAT(terminal.ReadUpTo("\n'P20000'"), HasSubstr("\n'P20000'"));
    terminal.ReadUpTo("orx> ");
    terminal.Press("quit\r");
    EXPECT_EQ(terminal.ExitStatus(), 0);
}

// Of lines that nobody types, the first errors get suggestions.
TEST_F(Shell, SuggestsNamesForEveryLineThatIsTyped) {
    std::string lines;
    for (int i = 0; i < 25; ++i) lines += "GetMembrCount(#3)\n";
    const std::string suggestion = "did you mean 'GetMemberCount'?";
    int count = 0;
    for (const std::string& line : Lines(Type(lines).err)) count += line.ends_with(suggestion);
    EXPECT_EQ(count, 20);
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    Terminal terminal(folder.Path());
    terminal.ReadUpTo("orx> ");
    for (int i = 0; i < 25; ++i) {
        terminal.Press("GetMembrCount(#3)\r");
        ASSERT_THAT(terminal.ReadUpTo(suggestion), HasSubstr(suggestion)) << i;
    }
    terminal.ReadUpTo("orx> ");
    terminal.Press("\x04");
    EXPECT_EQ(terminal.ExitStatus(), 0);
}

TEST_F(Shell, AsksBeforeUnsavedModelsAreLost) {
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    Terminal terminal(folder.Path(), {"-m", "parts.stp", "-m", "db.stp", "-o", "db=out.stp"});
    terminal.ReadUpTo("orx> ");
    // There is no question about changes that are saved at the end.
    terminal.Press("SET @db#1.S_DESC = 'x'\r");
    terminal.ReadUpTo("orx> ");
    const std::string question = "not saved: parts; leave? (y/N) ";
    for (const std::string change : {"SET #3.NAME = 'Screw'", "ADD #2 TO #4.FRAME_OF_REFERENCE",
                                     "NEW PRODUCT()", "BuildDatedEff('12312099235959', @)"}) {
        terminal.Press(change + "\r");
        terminal.ReadUpTo("orx> ");
        terminal.Press("quit\r");
        EXPECT_THAT(terminal.ReadUpTo(question), HasSubstr(question)) << change;
        terminal.Press("\r");
        terminal.ReadUpTo("orx> ");
        terminal.Press("\x04");
        EXPECT_THAT(terminal.ReadUpTo(question), HasSubstr(question)) << change;
        terminal.Press("no\r");
        terminal.ReadUpTo("orx> ");
        terminal.Press("save parts=saved.stp\r");
        EXPECT_THAT(terminal.ReadUpTo("saved: parts=saved.stp"), HasSubstr("saved: parts"));
        terminal.ReadUpTo("orx> ");
    }
    terminal.Press("SET #3.NAME = 'Nail'\r");
    terminal.ReadUpTo("orx> ");
    terminal.Press("exit\r");
    terminal.ReadUpTo(question);
    terminal.Press("y\r");
    EXPECT_EQ(terminal.ExitStatus(), 0);
    EXPECT_THAT(ReadFile(folder / "saved.stp"), HasSubstr("Screw"));
    EXPECT_THAT(ReadFile(folder / "out.stp"), HasSubstr("'x'"));
}

TEST_F(Shell, LeavesWithoutAQuestionWhenNothingIsLost) {
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    Terminal terminal(folder.Path());
    terminal.ReadUpTo("orx> ");
    terminal.Press("#3.NAME\rGetStartDate($, #3)\r");
    terminal.ReadUpTo("orx> ");
    terminal.Press("SET #3.NAME = 'Screw'\rsave out.stp\r\x04");
    EXPECT_EQ(terminal.ExitStatus(), 0);
}

TEST_F(Shell, ShowsLongOutputThroughThePager) {
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    folder.Write("many.stp", ManyProducts());
    {
        Terminal terminal(folder.Path(), {"many.stp"}, "cat > paged.txt");
        terminal.ReadUpTo("orx> ");
        // 44 rows and their header fit into the 50 lines of the terminal.
        terminal.Press("EACH p IN PRODUCT WHERE p.ID >= 'P996': p.ID\r");
        terminal.ReadUpTo("orx> ");
        EXPECT_FALSE(std::filesystem::exists(folder / "paged.txt"));
        terminal.Press("EACH p IN PRODUCT: p.ID\r");
        terminal.ReadUpTo("orx> ");
        const std::vector<std::string> paged = Lines(ReadFile(folder / "paged.txt"));
        ASSERT_EQ(paged.size(), static_cast<std::size_t>(kManyProducts) + 1);
        EXPECT_EQ(paged.back(), "#20000  'P20000'");
        terminal.Press("quit\r");
        EXPECT_EQ(terminal.ExitStatus(), 0);
    }
    // Quitting the pager early ends the statement, which is not an error.
    Terminal terminal(folder.Path(), {"many.stp"}, "head -n 2 > paged.txt");
    terminal.ReadUpTo("orx> ");
    terminal.Press("EACH p IN PRODUCT: p.ID\r");
    EXPECT_THAT(terminal.ReadUpTo("orx> "), Not(HasSubstr("interrupted")));
    EXPECT_EQ(Lines(ReadFile(folder / "paged.txt")).size(), 2U);
    terminal.Press("'still there'\r");
    EXPECT_THAT(terminal.ReadUpTo("\n'still there'"), HasSubstr("\n'still there'"));
}

TEST_F(Shell, KeepsNoHistoryForAnotherUser) {
    if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    if (geteuid() != 0) GTEST_SKIP() << "files cannot be given away";
    ASSERT_EQ(chown(folder.Path().c_str(), 1, 1), 0);
    Terminal terminal(folder.Path());
    terminal.ReadUpTo("orx> ");
    terminal.Press("'mine'\r");
    terminal.ReadUpTo("orx> ");
    terminal.Press("\x04");
    EXPECT_EQ(terminal.ExitStatus(), 0);
    EXPECT_FALSE(std::filesystem::exists(folder / "orx/history"));
}
