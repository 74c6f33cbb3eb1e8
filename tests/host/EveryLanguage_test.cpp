// Names in every language: from a file through the functions to a file, and in JSON, the tree and
// the report.

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "HostTest.h"

using nlohmann::json;
using testing::HasSubstr;

namespace {

struct Language {
    const char* language;
    std::string name;    // of two words, each character a code point
    std::string letter;  // one character
};

const Language kLanguages[] = {
    {"Polish", "Łożysko ślizgowe", "Ł"},  {"Greek", "Ρουλεμάν πλάκας", "Ω"},
    {"Russian", "Подшипник кожуха", "Б"}, {"Chinese", "轴承 外壳组件", "甲"},
    {"Emoji", "Räder 🚲 😀", "😀"},
};

// How a file contains a text: as UTF-8 or in directives.
enum class Written { Utf8, Directives };

bool BeginsCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

std::size_t Characters(const std::string& utf8) {
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), BeginsCharacter));
}

std::string FirstCharacters(const std::string& utf8, std::size_t count) {
    std::size_t end = 0;
    while (end < utf8.size() && (count > 0 || !BeginsCharacter(utf8[end]))) {
        if (++end == utf8.size() || BeginsCharacter(utf8[end])) --count;
    }
    return utf8.substr(0, end);
}

std::string Hex(unsigned long value, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "%0*lX", digits, value);
    return text;
}

// As in an exchange file, without quotes.
std::string InFile(const std::string& utf8, Written written) {
    if (written == Written::Utf8) return utf8;
    std::string text;
    for (std::size_t at = 0; at < utf8.size();) {
        const auto first = static_cast<unsigned char>(utf8[at]);
        const int more = first < 0x80 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
        unsigned long code = more == 0 ? first : first & (0x3FU >> more);
        for (int i = 1; i <= more; ++i) {
            code = code << 6 |
                   (static_cast<unsigned char>(utf8[at + static_cast<std::size_t>(i)]) & 0x3FU);
        }
        at += static_cast<std::size_t>(more) + 1;
        text += code < 0x80      ? std::string(1, static_cast<char>(code))
                : code < 0x10000 ? "\\X2\\" + Hex(code, 4) + "\\X0\\"
                                 : "\\X4\\" + Hex(code, 8) + "\\X0\\";
    }
    return text;
}

// The name in file form.
std::string Marked(std::string utf8) {
    for (std::size_t at; (at = utf8.find(' ')) != std::string::npos;) utf8.replace(at, 1, "±");
    return utf8;
}

// A field of a key: its letter, the number of characters in four digits, the text.
std::string Field(char letter, const std::string& utf8) {
    char length[8];
    std::snprintf(length, sizeof length, "%04zu", Characters(utf8));
    return letter + std::string(length) + utf8;
}
std::string Field(const std::string& utf8) { return Field('S', utf8); }

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

// Calls with their results: a text, a number or a logical.
using Calls = std::vector<std::pair<std::string, json>>;

class EveryLanguage : public HostTest,
                      public testing::WithParamInterface<std::tuple<Language, Written>> {
  protected:
    EveryLanguage() {
        folder.Write("db.stp", ExchangeFile("cdma", DatabaseData()));
        folder.Write("step.stp", ExchangeFile("AUTOMOTIVE_DESIGN", StepData()));
    }

    const Language& Of() const { return std::get<0>(GetParam()); }
    std::string Name() const { return Of().name; }
    std::string Letter() const { return Of().letter; }
    std::string InFile(const std::string& text) const {
        return Quoted(::InFile(text, std::get<1>(GetParam())));
    }

    // A part in an assembly, with its models, documents, configurations and revisions.
    std::string DatabaseData() const {
        const std::string n = InFile(Name());
        const std::string l = InFile(Letter());
        return "#1=PART_OBJECT(" + n + ',' + l + ",12," + l + ',' + n + ",(#11),(#3),(#5),$,$);\n" +
               "#2=PART_OBJECT(" + InFile("2" + Letter()) + ',' + l + ",1," + l + ',' + l +
               ",$,$,$,$,$);\n" + "#3=MODEL_OBJECT(" + n + ",'3D',7," + l + ',' + n + ',' + n +
               ");\n" + "#4=CDM_DOCCAD(" + l + ',' + n + ',' + n + ");\n" + "#5=CDM_DOCUMENT(" + l +
               ',' + n + ',' + n + ',' + l + ");\n" + "#6=RANGE_EFFECTIVITY(" + n +
               ",(#11),1,2);\n" + "#7=OPTION_EFFECTIVITY(" + n + ",(#11),'option_range'," + l +
               ",1,2,$,$);\n" + "#8=CONFIGURATION_ITEM(" + n + ',' + l + ",#1);\n" +
               "#9=CONFIGURATION_HANDLER(" + l + ",#1);\n" + "#11=PART_LINK(" + n +
               ",#1,#2,$,$,$,$);\n" + "#21=CDMA_ID(#1,'1A','2B'," + n + ',' + l + ");\n" +
               "#22=CDMA_ID(#2,'1A','2C'," + n + ',' + l + ");\n" +
               "#23=CDMA_REVISION_HISTORY((#21,#22));\n";
    }

    std::string StepData() const {
        const std::string model = InFile(Marked(Name()) + ".model");
        return "#1=DOCUMENT_FILE(" + model + ",'',$,$,'','');\n" +
               "#2=PROPERTY_DEFINITION('',$,#1);\n"
               "#3=PROPERTY_DEFINITION_REPRESENTATION(#2,$);\n"
               "#4=EXTERNAL_SOURCE(IDENTIFIER('vault'));\n"
               "#5=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT(" +
               model + ",$,#4,(#1));\n" + "#6=CONFIGURATION_ITEM('',''," +
               InFile("S0003ORX" + Field(Name()) + Field(Letter())) + ",$,$);\n";
    }

    // Calls functions and compares the results as JSON.
    void ExpectGives(const std::vector<std::string>& options, const Calls& calls) const {
        std::vector<std::string> arguments{"--json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        for (const auto& [call, result] : calls) arguments.push_back(call);
        const OrxResult result = Call(arguments);
        EXPECT_EQ(result.err, "");
        const std::vector<std::string> lines = Lines(result.out);
        ASSERT_EQ(lines.size(), calls.size()) << result.out;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            EXPECT_EQ(json::parse(lines[i])["value"], calls[i].second) << calls[i].first;
        }
    }
};

}  // namespace

TEST_P(EveryLanguage, StandsInKeys) {
    const std::string part = Field(Name()) + Field(Letter()) + "I000212" + Field(Letter());
    const std::string document = Field(Letter()) + Field(Name()) + Field(Name()) + Field(Letter());
    ExpectGives({"-m", "db.stp"},
                {{"ConcatPartAtb(#1)", part},
                 {"ConcatModelAtb(#3)", "S00023DI00017" + Field(Letter()) + Field(Name())},
                 {"ConcatDocAtb(#4)", Field(Letter()) + Field(Name()) + Field(Name())},
                 {"ConcatDocAtb(#5)", document},
                 {"IsEncodedKey(ConcatPartAtb(#1))", true},
                 {"IsEncodedKey(#1.S_DESC)", false},
                 {"DecodeKey(ConcatPartAtb(#1), 1)", Name()},
                 {"DecodeKey(ConcatPartAtb(#1), 3)", 12},
                 {"DecodeKey(ConcatPartAtb(#1), 4)", Letter()},
                 {"DecodeKey(ConcatPartAtb(#1), 5)", "EMPTY VALUE"},
                 {"EncodeNARVOV5Doc(#5)", "_ORX_" + document},
                 {"IsEncodedNARVOV5(EncodeNARVOV5Doc(#5))", true},
                 {"DecodeNARVOV5(EncodeNARVOV5Doc(#5), 3)", Name()}});
}

TEST_P(EveryLanguage, StandsInConfigurations) {
    ExpectGives({"-m", "db.stp", "-m", "step.stp"},
                {{"GetIDEff(#6)", Name()},
                 {"GetIDEff(#7)", Letter()},
                 {"ConcatEffAtb(#6)", "S0005range" + Field(Name())},
                 {"ConcatEffAtb(#7)", "S0012option_range" + Field(Letter()) + Field(Name())},
                 {"ExtractEFFType(ConcatEffAtb(#7), 3)", true},
                 {"DecodeEFF(ConcatEffAtb(#6), 1)", Name()},
                 {"DecodeEFF(ConcatEffAtb(#7), 1)", Name()},
                 {"DecodeEFF(ConcatEffAtb(#7), 2)", Letter()},
                 {"ORXIdEff(#1, #6)", "S0003ORX" + Field(Name()) + "S0017range_effectivity"},
                 {"ExtractCFGType(ORXIdEff(#1, #6), 1)", true},
                 {"ExtractCFGType(ORXIdEff(#1, #6), 2)", false},
                 {"ORXIdCfg(#8)", "S0003ORX" + Field(Name()) + Field(Letter())},
                 {"HasAORXValue(@step#6)", true},
                 {"IsAORXCfg(@step#6)", true},
                 {"IsPartConfigurated(#1)", true},
                 {"IsUsedByPart(#1, #6)", true}});
}

TEST_P(EveryLanguage, IsConvertedAsAName) {
    const std::string file = Marked(Name());
    const std::string identifier = Quoted(file + "_ORXExchangedRep_42_ORXExchangedRep2_" + file);
    ExpectGives({"-m", "db.stp", "-m", "step.stp"},
                {{"ORX_GetDocName(#1.S_DESC, 1)", file},
                 {"ORX_GetDocName(ORX_GetDocName(#1.S_DESC, 1), 0)", Name()},
                 {"ORX_GetModelName(#1.S_DESC, 1)", file + ".model"},
                 {"ORX_GetModelName(ORX_GetModelName(#1.S_DESC, 1), 0)", Name()},
                 {"ORX_GetModelId_Exp(#3)", file + "_ORXExchangedRep2_" + Name()},
                 {"ORX_GetModelId_Imp3(ORX_GetModelId_Exp(#3))", Name()},
                 {"ORX_GetModelId_Imp1(" + identifier + ")", Name()},
                 {"ORX_GetModelId_Imp2(" + identifier + ")", 42},
                 {"ORX_GetModelId_Imp3(" + identifier + ")", Name()},
                 {"IsaNARVOModel(ORX_GetModelName(#1.S_DESC, 1))", true},
                 {"IsaNARVOModel(#1.S_DESC)", false},
                 {"IsaNARVORepProperty(@step#3)", true},
                 {"IsaNARVOV5Doc(" + Quoted(Name() + ".KORPart") + ")", true},
                 {"GetNARVOV5Ext(" + Quoted(Name() + ".KOR" + Letter()) + ")", "KOR" + Letter()},
                 {"GetNARVOV5Ext(" + Quoted(Letter() + ".KOR") + ")", ""},
                 {"GetExternalName(@step#5, @step#4)", Name()}});
}

TEST_P(EveryLanguage, IsReadCutAndHandedOn) {
    std::string four;
    for (int i = 0; i < 4; ++i) four += Letter();
    ExpectGives({"-m", "db.stp"}, {{"#1.S_PART_NUMBER", Name()},
                                   {"GetInst(#8, 'name')", Letter()},
                                   {"ReadMandatory(#1.S_DESC, 'S_DESC')", Name()},
                                   {"ReadPartVersion(#1.S_CHG_NUM)", Letter()},
                                   {"ReadPartVersion(" + Quoted(four.substr(Letter().size())) + ")",
                                    four.substr(Letter().size())},
                                   {"ReadPartVersion(" + Quoted(four) + ")", "A"},
                                   {"ORXTrunc(#1.S_DESC, 7)", FirstCharacters(Name(), 7)},
                                   {"GetValue(#1.S_DESC)", 0},
                                   {"IsInAssembly(#1, #2)", true},
                                   {"QuantifyRef(#1, #2)", 1.0},
                                   {"#1.S_DESC = " + Quoted(Name()), true}});
}

TEST_P(EveryLanguage, TellsRevisionsApart) {
    ExpectGives({"-m", "db.stp"}, {{"IsNewer(#2, #1)", true},
                                   {"IsNewer(#1, #2)", false},
                                   {"IsVersion(#1, 0)", false},
                                   {"IsVersion(#2, 0)", true},
                                   {"RemoveValueVersion()", true}});
}

TEST_P(EveryLanguage, GoesFromAFileIntoAFile) {
    ExpectPrints(Run("LET p = NEW @out.PART_OBJECT(S_PART_NUMBER = ConcatPartAtb(#1), "
                     "S_DESC = ORX_GetDocName(#1.S_DESC, 1), S_CHG_NUM = " +
                         Quoted(Letter()) + ")\n",
                     {"-m", "db.stp", "-n", "out=cdma", "-o", "out=out.stp"}),
                 "");
    ExpectGives({"-m", "out.stp"}, {{"DecodeKey(#1.S_PART_NUMBER, 1)", Name()},
                                    {"ORX_GetDocName(#1.S_DESC, 0)", Name()},
                                    {"ReadPartVersion(#1.S_CHG_NUM)", Letter()}});
    // A data set that is read and written again does not change.
    ExpectPrints(Call({"-m", "m=db.stp", "-o", "m=again.stp", "1"}), "1\n");
    ExpectPrints(Orx({"diff", "db.stp", "again.stp"}), "");
}

TEST_P(EveryLanguage, IsShownInTreesAndReports) {
    const OrxResult tree = Orx({"tree", "-m", "db.stp"});
    EXPECT_EQ(tree.err, "");
    // A part number that equals the name is not repeated.
    EXPECT_EQ(tree.out, Name() + "\n└── " + Letter() + " [2" + Letter() + "]\n");
    const std::vector<std::string> lines = Lines(Orx({"tree", "--json", "-m", "db.stp"}).out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(json::parse(lines[0])["name"], Name());
    EXPECT_EQ(json::parse(lines[1])["name"], Letter());
    const OrxResult report = Orx({"report", "-m", "db.stp", "-o", "-"});
    EXPECT_EQ(report.err, "");
    EXPECT_THAT(report.out, HasSubstr(Name()));
    EXPECT_THAT(report.out, HasSubstr(Letter()));
}

INSTANTIATE_TEST_SUITE_P(Texts, EveryLanguage,
                         testing::Combine(testing::ValuesIn(kLanguages),
                                          testing::Values(Written::Utf8, Written::Directives)),
                         [](const auto& parameter) {
                             return std::string(std::get<0>(parameter.param).language) +
                                    (std::get<1>(parameter.param) == Written::Utf8
                                         ? "InUtf8"
                                         : "InDirectives");
                         });

// ---- Invalid texts

class BrokenTexts : public HostTest {};

TEST_F(BrokenTexts, HalfASurrogatePairIsAnErrorAtItsPlace) {
    folder.Write(
        "half.stp",
        ExchangeFile("cdma", "#1=PART_OBJECT('\\X2\\D83D\\X0\\x','A',1,$,$,$,$,$,$,$);\n"));
    const OrxResult refused = Call({"-m", "half.stp", "ReadPartVersion(#1.S_PART_NUMBER)"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.out, "");
    EXPECT_THAT(refused.err,
                testing::ContainsRegex("half\\.stp:8:[0-9]+: .*half of a surrogate pair"));
    const OrxResult lenient = Call({"--lenient", "-m", "m=half.stp", "-o", "m=out.stp", "--json",
                                    "ReadPartVersion(#1.S_PART_NUMBER)"});
    EXPECT_EQ(lenient.status, 0);
    EXPECT_THAT(lenient.err,
                testing::ContainsRegex("warning: half\\.stp:8:[0-9]+: .*half of a surrogate pair"));
    EXPECT_EQ(json::parse(lenient.out)["value"], "\uFFFDx");
    const OrxResult again = Call({"-m", "out.stp", "--json", "#1.S_PART_NUMBER"});
    EXPECT_EQ(again.err, "");
    EXPECT_EQ(json::parse(again.out)["value"], "\uFFFDx");
}

TEST_F(BrokenTexts, AFileThatIsNotUtf8ThroughoutIsIso8859) {
    // A part in ISO 8859-1, after one whose bytes would be one letter in UTF-8.
    folder.Write("latin.stp",
                 ExchangeFile("cdma",
                              "#1=PART_OBJECT('\xC3\xA9','A',1,$,$,$,$,$,$,$);\n"
                              "#2=PART_OBJECT('Sch\xFCssel 1','A',1,$,$,$,$,$,$,$);\n"));
    const OrxResult result = Call({"-m", "m=latin.stp", "-o", "m=out.stp", "--json",
                                   "ORX_GetDocName(#2.S_PART_NUMBER, 1)",
                                   "ORXTrunc(#1.S_PART_NUMBER, 1)", "ConcatPartAtb(#2)"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(Lines(result.err).size(), 1U);
    EXPECT_THAT(result.err,
                HasSubstr("the file is not UTF-8 throughout and is read as ISO 8859-1"));
    const std::vector<std::string> lines = Lines(result.out);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(json::parse(lines[0])["value"], "Schüssel±1");
    EXPECT_EQ(json::parse(lines[1])["value"], "Ã");
    EXPECT_EQ(json::parse(lines[2])["value"], "S0010Schüssel 1S0001AI00011S0000");
    const OrxResult again = Call({"-m", "out.stp", "--json", "#2.S_PART_NUMBER"});
    EXPECT_EQ(again.err, "");
    EXPECT_EQ(json::parse(again.out)["value"], "Schüssel 1");
}
