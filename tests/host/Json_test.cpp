// JSON output, and texts made safe for terminals.

#include "console/Json.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "HostTest.h"
#include "console/Printable.h"

using host::Json;
using host::Printable;
using testing::HasSubstr;
using testing::Not;

namespace {

// What a terminal acts on, in UTF-8: C0, DEL, C1, marks of direction, ends of lines, tags.
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

// ---- What orx writes

namespace {

class Terminals : public HostTest {
  protected:
    // Nothing but printable text, tabs and line breaks.
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

TEST_F(Terminals, GetNoControlsFromData) {
    const std::string text = "'\\X\\1B[2J\\X\\9B\\X2\\202E2066\\X0\\'";
    folder.Write("data.stp", ExchangeFile("cdma", "#1=PART_OBJECT(" + text + ",$,$,$," + text +
                                                      ",(#3),$,$,$,$);\n" +
                                                      "#2=PART_OBJECT('2',$,$,$,$,$,$,$,$,$);\n"
                                                      "#3=PART_LINK('L',#1,#2,$,$,$,$);\n"));
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
