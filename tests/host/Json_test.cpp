// JSON output, and texts made safe for terminals.

#include "console/Json.h"

#include <pty.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>

#include "HostTest.h"
#include "console/Printable.h"

using host::Json;
using host::Printable;
using testing::HasSubstr;
using testing::Not;

namespace {

// Control characters for terminals, in UTF-8: C0, DEL, C1, bidirectional controls, line ends, tags.
const std::string kControls[] = {std::string(1, '\0'),
                                 "\x07",
                                 "\x1B",
                                 "\x7F",
                                 "\u0085",
                                 "\u009B",
                                 "\u200E",
                                 "\u2028",
                                 "\u202E",
                                 "\u2066",
                                 "\uFEFF",
                                 "\U000E0041"};

}  // namespace

TEST(Json, IsWrittenFromLeftToRight) {
    Json json;
    json.Object([&] {
        json.Name("empty").Object([] {});
        json.Name("list").Array([&] {
            json.Integer(-1).Count(18446744073709551615U).Truth(true).Truth(false).Null();
            json.Array([] {});
            json.Text("a\"b\\c");
        });
    });
    EXPECT_EQ(json.Line(), R"({"empty":{},"list":[-1,18446744073709551615,true,false,null,[],)"
                           R"("a\"b\\c"]})");
}

TEST(Json, KeepsEveryRealAsItIs) {
    for (const double value :
         {0.0, -0.0, 1.0, 2.5, -1e-300, 1e15, 1e300, 0.1, 1e-5, 123456.0,
          std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::max()}) {
        const std::string text = Json().Real(value).Line();
        const auto read = nlohmann::json::parse(text, nullptr, false);
        ASSERT_TRUE(read.is_number_float()) << text;
        EXPECT_EQ(read.get<double>(), value) << text;
        EXPECT_EQ(std::signbit(read.get<double>()), std::signbit(value)) << text;
    }
    EXPECT_EQ(Json().Real(123456).Line(), "123456.0");
    EXPECT_EQ(Json().Real(1e20).Line(), "1e+20");
    EXPECT_EQ(Json().Real(std::numeric_limits<double>::quiet_NaN()).Line(), "\"nan\"");
    EXPECT_EQ(Json().Real(-std::numeric_limits<double>::infinity()).Line(), "\"-inf\"");
}

TEST(Json, EscapesWhatATerminalActsOn) {
    for (const std::string& control : kControls) {
        const std::string text = Json().Text("a" + control + "b").Line();
        EXPECT_THAT(text, Not(HasSubstr(control)));
        EXPECT_EQ(nlohmann::json::parse(text), "a" + control + "b") << text;
    }
    EXPECT_EQ(Json().Text("\u202E").Line(), "\"\\u202E\"");
    EXPECT_EQ(Json().Text("\u00E9 \u20AC \U0001F600").Line(), "\"\u00E9 \u20AC \U0001F600\"");
}

TEST(Json, IsUtf8WhateverTheBytes) {
    EXPECT_EQ(Json().Text("a\xE9z\xC0\x80\xED\xA0\x80\xF5").Line(),
              "\"a\uFFFDz\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\"");
    EXPECT_EQ(Json().Text("\xE2\x82").Line(), "\"\uFFFD\uFFFD\"");
}

TEST(Printable, LeavesNothingThatATerminalActsOn) {
    for (const std::string& control : kControls) {
        EXPECT_EQ(Printable("a" + control + "b"), "a\uFFFDb");
    }
    EXPECT_EQ(Printable("\x9B[2J"), "\uFFFD[2J");
    EXPECT_EQ(Printable("\u00E9 \u20AC \U0001F600 ~"), "\u00E9 \u20AC \U0001F600 ~");
    EXPECT_EQ(Printable(""), "");
}

TEST(Width, CountsTheColumnsOfATerminal) {
    EXPECT_EQ(host::DisplayWidth(""), 0U);
    EXPECT_EQ(host::DisplayWidth("Bolt"), 4U);
    EXPECT_EQ(host::DisplayWidth("\u0141\u00F3d\u017A"), 4U);
    EXPECT_EQ(host::DisplayWidth("\u8F74\u627F"), 4U);  // wide
    EXPECT_EQ(host::DisplayWidth("e\u0301"), 1U);       // combining
    EXPECT_EQ(host::DisplayWidth("\U0001F600"), 2U);    // beyond the BMP
    EXPECT_EQ(host::DisplayWidth("\uFF21\uFF76"), 3U);  // full and half width
    EXPECT_EQ(host::DisplayWidth("\uFFFD"), 1U);
}

// ---- The output of orx

namespace {

class Terminals : public HostTest {
  protected:
    // Only printable text, tabs and line breaks.
    static void ExpectHarmless(const std::string& text) {
        for (const std::string& line : Lines(text)) {
            std::string rest = line;
            std::erase(rest, '\t');
            EXPECT_EQ(Printable(rest), rest);
        }
    }
    static void ExpectHarmless(const OrxResult& result) {
        ExpectHarmless(result.out);
        ExpectHarmless(result.err);
    }

    // What orx writes when its streams are a terminal; nothing where there are none.
    std::optional<std::string> Shown(const std::vector<std::string>& arguments) const {
        int terminal = -1;
        const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
        if (process < 0) return std::nullopt;
        if (process == 0) {
            setenv("NO_COLOR", "1", 1);
            std::vector<const char*> words{"orx"};
            for (const std::string& argument : arguments) words.push_back(argument.c_str());
            words.push_back(nullptr);
            if (chdir(folder.Path().c_str()) == 0) {
                execv(ORX_PROGRAM, const_cast<char* const*>(words.data()));
            }
            _exit(127);
        }
        std::string shown;
        char piece[4096];
        for (ssize_t count = 0; (count = read(terminal, piece, sizeof piece)) > 0;) {
            shown.append(piece, static_cast<std::size_t>(count));
        }
        close(terminal);
        int status = 0;
        waitpid(process, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) <= 1) << shown;
        // The terminal ends a line with two characters.
        for (std::size_t end = shown.find("\r\n"); end != std::string::npos;
             end = shown.find("\r\n", end)) {
            shown.erase(end, 1);
        }
        return shown;
    }
};

}  // namespace

TEST_F(Terminals, GetNoControlsFromNamesOfFiles) {
    const std::string name = "m\x1B]0;title\x07\x9B\u009B\u202Eelif\n";
    folder.Write(name + ".stp", Parts());
    folder.Write(name + ".orx", "nobody\n");
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"describe", "-m", name + ".stp"},
             {"describe", "--json", "-m", name + ".stp"},
             {"describe", "-m", name + ".missing"},
             {"tree", "-m", name + ".stp"},
             {"tree", "--json", "-m", name + ".stp"},
             {"call", "-m", "db.stp", "-m", name + ".stp", "@" + name + "#3"},
             {"call", "--json", "-m", "db.stp", "-m", name + ".stp", "@" + name + "#3"},
             {"call", "-m", name + ".stp", "-m", name + ".stp", "1"},
             {"call", "-s", name + ".exp", "1"},
             {"call", "-n", name, "1"},
             {"call", "-n", "a=" + name, "1"},
             {"call", "-m", "db.stp", "-o", name + "=x", "1"},
             {"call", "-m", "db.stp", "-o", "db=" + name + "/x", "1"},
             {"call", "-t", name + "/x", "1"},
             {"call", "--module", name, "1"},
             {"call", "@" + name + "#1"},
             {"call", name},
             {"call", "'" + name},
             {"run", name + ".orx"},
             {"run", name + ".missing"},
             {"report", "-m", name + ".stp", "-o", name + "/page.html"},
             {"report", "-m", name + ".stp", "-o", "-"},
             {name},
             {"call", "--" + name}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const OrxResult result = Orx(arguments);
        EXPECT_LE(result.status, 2);
        ExpectHarmless(result);
    }
    const OrxResult shell =
        Orx({"shell", "-m", name + ".stp"}, "help " + name + "\n" + name + "\n");
    ExpectHarmless(shell);
}

namespace {

// An escape sequence, a control of eight bits and two marks that change the text direction.
const char* const kHostile = "'\\X\\1B[2J\\X\\9B\\X2\\202E2066\\X0\\'";

std::string HostileParts() {
    const std::string text = kHostile;
    return ExchangeFile("cdma", "#1=PART_OBJECT(" + text + ",$,$,$," + text + ",(#3),$,$,$,$);\n" +
                                    "#2=PART_OBJECT('2',$,$,$," + text + ",$,$,$,$,$);\n" +
                                    "#3=PART_LINK(" + text + ",#1,#2,$,$,$,$);\n");
}

}  // namespace

TEST_F(Terminals, GetNoControlsFromData) {
    folder.Write("data.stp", HostileParts());
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"tree", "-m", "data.stp"},
             {"tree", "--json", "-m", "data.stp"},
             {"report", "-m", "data.stp", "-o", "-"},
             {"call", "-m", "data.stp", "#1.S_PART_NUMBER"},
             {"call", "--json", "-m", "data.stp", "#1.S_PART_NUMBER"},
             {"call", "-m", "data.stp", "#1.S_PART_NUMBER.X"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        ExpectHarmless(Orx(arguments));
    }
}

TEST_F(Terminals, GetNoControlsFromDataInAnyForm) {
    folder.Write("data.stp", HostileParts());
    // A part without its number for check, and without its link for diff.
    folder.Write("other.stp",
                 ExchangeFile("cdma", "#1=PART_OBJECT($,$,$,$," + std::string(kHostile) +
                                          ",$,$,$,$,$);\n"
                                          "#2=PART_OBJECT('2',$,$,$,$,$,$,$,$,$);\n"));
    const std::string query = "SELECT *, s_desc AS '\x1B[2J' FROM part_object";
    const std::string each = "EACH p IN PART_OBJECT: p.S_DESC; p.KORASS";
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"sql", "data.stp", query},
             {"sql", "--csv", "data.stp", query},
             {"sql", "--json", "data.stp", query},
             {"call", "-m", "data.stp", "#1.S_DESC", "(#1.S_DESC)", each},
             {"call", "--csv", "-m", "data.stp", "#1.S_DESC", "(#1.S_DESC)", each},
             {"show", "data.stp", "#1"},
             {"show", "--csv", "data.stp", "#1"},
             {"users", "data.stp", "#2"},
             {"users", "--csv", "data.stp", "#2"},
             {"bom", "data.stp"},
             {"bom", "--csv", "data.stp"},
             {"tree", "data.stp"},
             {"tree", "--csv", "data.stp"},
             {"check", "data.stp", "other.stp"},
             {"diff", "data.stp", "other.stp"},
             {"describe", "data.stp"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const std::optional<std::string> shown = Shown(arguments);
        if (!shown.has_value()) GTEST_SKIP() << "there are no pseudo-terminals";
        EXPECT_THAT(*shown, Not(testing::IsEmpty()));
        ExpectHarmless(*shown);
    }
}

// A program that reads the file gets the text itself.
TEST_F(Terminals, AloneGetCsvWithoutControls) {
    folder.Write("data.stp", HostileParts());
    const std::vector<std::string> arguments = {
        "sql", "--csv", "data.stp", "SELECT s_desc FROM part_object WHERE instance = 1"};
    ExpectPrints(Orx(arguments), "s_desc\n\x1B[2J\u009B\u202E\u2066\n");
    const std::optional<std::string> shown = Shown(arguments);
    if (!shown.has_value()) GTEST_SKIP() << "there are no pseudo-terminals";
    EXPECT_EQ(*shown, "s_desc\n\uFFFD[2J\uFFFD\uFFFD\uFFFD\n");
}
