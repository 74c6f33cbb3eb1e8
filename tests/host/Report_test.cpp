// `orx report`.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>

#include "HostTest.h"
#include "XmlElement.h"

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

namespace {

const std::string kAssembly = SOURCE_DIRECTORY "/examples/assembly.stp";
const std::string kDatabase = SOURCE_DIRECTORY "/tests/host/trolley.stp";

class Report : public HostTest {
  protected:
    // The page, which must be well-formed XML.
    XmlElement PageOf(const std::string& file, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"report", "-m", file, "-o", "page.html"});
        ExpectPrints(Orx(options), "");
        return ReadXml(ReadFile(folder / "page.html"));
    }

    // The same for data with warnings.
    XmlElement PageOfOddData(const std::string& schema, const std::string& data) const {
        folder.Write("data.stp", ExchangeFile(schema, data));
        EXPECT_EQ(Orx({"report", "-m", "data.stp", "-o", "page.html"}).status, 0);
        return ReadXml(ReadFile(folder / "page.html"));
    }

    XmlElement PageOfData(const std::string& schema, const std::string& data) const {
        folder.Write("data.stp", ExchangeFile(schema, data));
        return PageOf("data.stp");
    }

    // The rows of the table with this heading in its first column.
    static std::vector<std::vector<std::string>> Rows(const XmlElement& page,
                                                      const std::string& head) {
        std::vector<std::vector<std::string>> rows;
        for (const XmlElement* table : page.All("table")) {
            if (table->Texts("th").at(0) != head) continue;
            for (const XmlElement* row : table->All("tr")) {
                if (!row->Texts("td").empty()) rows.push_back(row->Texts("td"));
            }
        }
        return rows;
    }

    // The drawing with a class; null if there is none.
    static const XmlElement* Drawing(const XmlElement& page, const std::string& ofClass) {
        const auto drawings = page.All("svg", ofClass);
        return drawings.empty() ? nullptr : drawings.front();
    }

    // The left and right ends of the bar with this title, in percent of the width.
    static std::pair<double, double> Ends(const XmlElement& page, const std::string& title) {
        for (const XmlElement* bar : page.All("g", "bar")) {
            if (bar->Texts("title").at(0) != title) continue;
            const auto& attributes = bar->All("rect").at(0)->attributes;
            const double left = std::stod(attributes.at("x"));
            return {left, left + std::stod(attributes.at("width"))};
        }
        ADD_FAILURE() << "no bar " << title;
        return {};
    }
};

}  // namespace

TEST_F(Report, IsOnePageThatNeedsNothingElse) {
    for (const std::string& file : {kAssembly, kDatabase}) {
        const XmlElement page = PageOf(file);
        ASSERT_EQ(page.children.size(), 1U);
        EXPECT_EQ(page.children[0]->name, "html");
        for (const char* element : {"link", "img", "iframe"}) {
            EXPECT_THAT(page.All(element), IsEmpty()) << element;
        }
        for (const XmlElement* link : page.All("a")) {
            EXPECT_EQ(link->attributes.at("href")[0], '#');
        }
        for (const XmlElement* script : page.All("script")) {
            EXPECT_EQ(script->attributes.count("src"), 0U);
        }
        EXPECT_THAT(page.Texts("style").at(0),
                    AllOf(Not(HasSubstr("url(")), Not(HasSubstr("@import")),
                          HasSubstr("prefers-color-scheme: dark"), HasSubstr("@media print")));
    }
}

TEST_F(Report, ShowsTheStructure) {
    const XmlElement page = PageOf(kDatabase);
    EXPECT_THAT(page.Texts("title"), Contains("trolley"));
    EXPECT_THAT(page.Texts("p"), Contains("8 parts, 6 occurrences in assemblies"));
    EXPECT_THAT(page.Texts("summary"), Contains("Hand trolley TR-100"));
    EXPECT_THAT(page.Texts("summary"), Contains("Axle with wheels TR-120"));
    const auto lists = page.All("ul", "tree");
    ASSERT_EQ(lists.size(), 1U);
    EXPECT_EQ(lists[0]->All("li").size(), 8U);
    EXPECT_THAT(lists[0]->Texts("li"), Contains("Wheel, sealed bearing TR-122 ×2"));
}

TEST_F(Report, AddsPlacementsUpDownTheTree) {
    // The arm is turned by a quarter and is at 25. The head, 410 above it, has its x axis along the
    // arm's y, which is -x, its y axis along z, and its z axis along the arm's x, which is y.
    EXPECT_THAT(
        Rows(PageOf(kAssembly), "part"),
        ElementsAre(ElementsAre("Desk lamp", "0", "0", "0", "1, 0, 0", "0, 1, 0", "0, 0, 1"),
                    ElementsAre(" Base", "0", "0", "0", "1, 0, 0", "0, 1, 0", "0, 0, 1"),
                    ElementsAre(" Arm with head", "0", "0", "25", "0, 1, 0", "-1, 0, 0", "0, 0, 1"),
                    ElementsAre("  Arm", "0", "0", "35", "0, 1, 0", "-1, 0, 0", "0, 0, 1"),
                    ElementsAre("  Head", "0", "0", "435", "-1, 0, 0", "0, 0, 1", "0, 1, 0"),
                    ElementsAre(" Screw", "0", "12.5", "-3", "1, 0, 0", "0, 0, 1", "0, -1, 0")));
    // The axle is at (0,120,-40) with its z axis along y and its y axis along -z; the wheels are
    // 250 to its left and right.
    const auto rows = Rows(PageOf(kDatabase), "part");
    ASSERT_EQ(rows.size(), 7U);
    EXPECT_THAT(rows[4], ElementsAre("  Wheel, sealed bearing", "-250", "120", "-40", "0, 1, 0",
                                     "0, 0, -1", "-1, 0, 0"));
    EXPECT_THAT(rows[5], ElementsAre("  Wheel, sealed bearing", "250", "120", "-40", "0, 1, 0",
                                     "0, 0, 1", "1, 0, 0"));
}

TEST_F(Report, DrawsTheFrames) {
    const XmlElement page = PageOf(kAssembly);
    const XmlElement* drawing = Drawing(page, "frames");
    ASSERT_NE(drawing, nullptr);
    const auto frames = drawing->All("g", "frame");
    ASSERT_EQ(frames.size(), 6U);
    for (const XmlElement* frame : frames) {
        for (const char* axis : {"x", "y", "z"}) EXPECT_EQ(frame->All("line", axis).size(), 1U);
    }
    const auto number = [](const XmlElement& element, const char* name) {
        return std::stod(element.attributes.at(name));
    };
    // The root's z axis points upwards, x to the lower right, y to the upper right.
    const XmlElement& z = *frames[0]->All("line", "z").front();
    EXPECT_EQ(number(z, "x1"), number(z, "x2"));
    EXPECT_GT(number(z, "y1"), number(z, "y2"));
    const XmlElement& x = *frames[0]->All("line", "x").front();
    EXPECT_LT(number(x, "x1"), number(x, "x2"));
    EXPECT_LT(number(x, "y1"), number(x, "y2"));
    const XmlElement& y = *frames[0]->All("line", "y").front();
    EXPECT_LT(number(y, "x1"), number(y, "x2"));
    EXPECT_GT(number(y, "y1"), number(y, "y2"));
    // The head is straight above the lamp's origin, and the arm is below it, at 35/435 of its
    // height.
    const auto origin = [&](std::size_t i) -> const XmlElement& {
        return *frames[i]->All("circle").front();
    };
    EXPECT_EQ(number(origin(4), "cx"), number(origin(0), "cx"));
    const double height = number(origin(0), "cy") - number(origin(4), "cy");
    EXPECT_GT(height, 100);
    EXPECT_NEAR(number(origin(0), "cy") - number(origin(3), "cy"), height * 35 / 435, 0.11);
    // Each place is labelled once.
    EXPECT_THAT(drawing->Texts("text", "label"),
                UnorderedElementsAre("Desk lamp, Base", "Arm with head", "Arm", "Head", "Screw"));
}

TEST_F(Report, LeavesFramesOutThatCannotBeDrawn) {
    const std::string data =
        "#1=PART_OBJECT('A',$,$,$,$,(#3,#4),$,$,$,$);\n#2=PART_OBJECT('B',$,$,$,$,$,$,$,$,$);\n"
        "#3=PART_LINK('L',$,#2,(1.,2.,3.),(0.,0.,0.),$,$);\n"
        "#4=PART_LINK('M',$,#2,(1.,2.,3.),$,$,$);\n";
    const XmlElement page = PageOfData("cdma", data);
    EXPECT_EQ(Drawing(page, "frames")->All("g", "frame").size(), 2U);
    EXPECT_THAT(page.Texts("figcaption").at(0),
                HasSubstr("1 place without a placement that can be drawn"));
}

TEST_F(Report, ListsConfigurationItems) {
    EXPECT_THAT(Rows(PageOf(kDatabase), "id").at(0),
                ElementsAre("CFG1", "Standard trolley", "Hand trolley", "H7"));
    const XmlElement page =
        PageOfData("CONFIG_CONTROL_DESIGN",
                   "#1=PRODUCT('W','Wheel','',());\n#2=PRODUCT_DEFINITION_FORMATION('A','',#1);\n"
                   "#3=PRODUCT_CONCEPT('T','Trolley','',$);\n"
                   "#4=CONFIGURATION_ITEM('C1','Standard',$,#3,$);\n"
                   "#5=CONFIGURATION_DESIGN(#4,#2);\n");
    EXPECT_THAT(Rows(page, "id"), ElementsAre(ElementsAre("C1", "Standard", "Trolley", "Wheel")));
}

TEST_F(Report, ListsEffectivitiesOfADatabase) {
    const auto rows = Rows(PageOf(kDatabase), "id");
    ASSERT_EQ(rows.size(), 8U);
    const std::string axle = "Hand trolley → Axle with wheels";
    const std::string handle = "Hand trolley → Handle";
    EXPECT_THAT(rows[2], ElementsAre("R12", "", "1", "100", axle + ", " + handle));
    EXPECT_THAT(rows[3], ElementsAre("R13", "", "101", "open", axle + ", " + handle));
    EXPECT_THAT(rows[4],
                ElementsAre("D01", "", "2025-01-15 08:00:00", "2029-12-31 23:59:59", axle));
    EXPECT_THAT(rows[5], ElementsAre("D02", "", "2030-01-01", "open", axle));
    EXPECT_THAT(rows[6], ElementsAre("E07", "O1", "2026-06-01 12:00:00", "open", handle));
    EXPECT_THAT(rows[7], ElementsAre("E08", "O2", "10", "20", "Axle with wheels → Axle"));
}

TEST_F(Report, DrawsEffectivitiesToScale) {
    const XmlElement page = PageOf(kDatabase);
    ASSERT_EQ(page.All("svg", "bars").size(), 2U);
    // Ranks: one is 99 long, the other 10, and they begin 9 apart.
    const auto [r12Left, r12Right] = Ends(page, "R12: 1 – 100");
    const auto [e08Left, e08Right] = Ends(page, "E08: 10 – 20");
    const double rank = (r12Right - r12Left) / 99;
    EXPECT_NEAR(e08Right - e08Left, 10 * rank, 0.005);
    EXPECT_NEAR(e08Left - r12Left, 9 * rank, 0.005);
    // An open end extends to the end of the drawing, beyond every bound.
    EXPECT_NEAR(Ends(page, "R13: 101 – open").second, 100, 0.002);
    EXPECT_LT(r12Right, 96);
    // Dates: D02 starts 1811 days and 16 hours after D01, one second after the end of D01; E07
    // starts 502 days and four hours after D01.
    const auto [d01Left, d01Right] = Ends(page, "D01: 2025-01-15 08:00:00 – 2029-12-31 23:59:59");
    const double day = (Ends(page, "D02: 2030-01-01 – open").first - d01Left) / (1811 + 2.0 / 3);
    EXPECT_NEAR(d01Right, Ends(page, "D02: 2030-01-01 – open").first, 0.003);
    EXPECT_NEAR(Ends(page, "E07: 2026-06-01 12:00:00 – open").first - d01Left,
                day * (502 + 1.0 / 6), 0.005);
    EXPECT_THAT(page.Texts("text", "note middle"), Contains("2028"));
}

TEST_F(Report, ShowsEffectivitiesOfExchangeData) {
    const XmlElement page = PageOfData(
        "CONFIG_CONTROL_DESIGN",
        "#1=CALENDAR_DATE(2026,1,3);\n#2=LOCAL_TIME(0,0,0.,#9);\n#3=DATE_AND_TIME(#1,#2);\n"
        "#9=COORDINATED_UNIVERSAL_TIME_OFFSET(0,$,.AHEAD.);\n"
        "#4=DATED_EFFECTIVITY('D1',#3,$);\n"
        "#5=SERIAL_NUMBERED_EFFECTIVITY('S0005rangeS0003R12','7','12');\n"
        "#6=SERIAL_NUMBERED_EFFECTIVITY('S','SN-7','SN-9');\n"
        "#7=EFFECTIVITY('plain');\n");
    const auto rows = Rows(page, "id");
    ASSERT_EQ(rows.size(), 4U);
    // A calendar date is year, day, month.
    EXPECT_THAT(rows[0], ElementsAre("D1", "2026-03-01", "open"));
    EXPECT_THAT(rows[1], ElementsAre("R12", "7", "12"));
    EXPECT_THAT(rows[2], ElementsAre("S", "SN-7", "SN-9"));
    EXPECT_THAT(rows[3], ElementsAre("plain", "", ""));
    EXPECT_EQ(page.All("g", "bar").size(), 2U);
}

TEST_F(Report, ShowsFractionsOfASecond) {
    const XmlElement page = PageOfData(
        "CONFIG_CONTROL_DESIGN",
        "#1=CALENDAR_DATE(2001,7,3);\n#2=LOCAL_TIME(8,5,12.5,#9);\n#3=DATE_AND_TIME(#1,#2);\n"
        "#9=COORDINATED_UNIVERSAL_TIME_OFFSET(0,$,.AHEAD.);\n"
        "#4=LOCAL_TIME(8,5,13.,#9);\n#5=DATE_AND_TIME(#1,#4);\n"
        "#6=LOCAL_TIME(0,0,0.5,#9);\n#7=DATE_AND_TIME(#1,#6);\n"
        "#8=DATED_EFFECTIVITY('D1',#3,#5);\n#10=DATED_EFFECTIVITY('D2',#7,$);\n");
    EXPECT_THAT(Rows(page, "id"),
                ElementsAre(ElementsAre("D1", "2001-03-07 08:05:12.5", "2001-03-07 08:05:13"),
                            ElementsAre("D2", "2001-03-07 00:00:00.5", "open")));
    EXPECT_EQ(page.All("g", "bar").size(), 2U);
}

TEST_F(Report, TakesTheDatesAndRanksThatTheFunctionsTake) {
    // An instance that is both an effectivity of its own and an option's has bounds of its own; its
    // end is open if both ends are.
    const XmlElement page = PageOfData(
        "cdma",
        "#1=(DATE_EFFECTIVITY('01012024000000','12312024000000')EFFECTIVITY_OBJECT('D',$)"
        "OPTION_EFFECTIVITY('option_date','O',$,$,'02022025000000','02022026000000'));\n"
        "#2=(DATE_EFFECTIVITY('01012024000000','00000000000000')EFFECTIVITY_OBJECT('E',$)"
        "OPTION_EFFECTIVITY('option_date','O',$,$,$,$));\n"
        "#3=(EFFECTIVITY_OBJECT('R',$)RANGE_EFFECTIVITY(1,5)"
        "OPTION_EFFECTIVITY('option_range','O',7,9,$,$));\n"
        "#4=RANGE_EFFECTIVITY('N',$,-5,-1);\n"
        "#5=OPTION_EFFECTIVITY('F',$,'option_date','O',3,4,'01012024000000','06012024000000');\n");
    EXPECT_THAT(Rows(page, "id"),
                ElementsAre(ElementsAre("D", "O", "2024-01-01", "2024-12-31"),
                            ElementsAre("E", "O", "2024-01-01", "open"),
                            ElementsAre("R", "O", "1", "5"), ElementsAre("N", "", "-5", "open"),
                            ElementsAre("F", "O", "2024-01-01", "2024-06-01")));
}

TEST_F(Report, TakesNothingForAnInstanceThatIsNone) {
    // Every attribute that should be an instance or a list of instances is something else.
    const XmlElement page =
        PageOfOddData("AUTOMOTIVE_DESIGN",
                      "#1=PRODUCT_DEFINITION_FORMATION('1','','x');\n"
                      "#2=PRODUCT_DEFINITION('d','',\"0F\",.E.);\n"
                      "#3=NEXT_ASSEMBLY_USAGE_OCCURRENCE('n','','',(1,2),#2,$);\n"
                      "#4=NEXT_ASSEMBLY_USAGE_OCCURRENCE('n','','',#2,'y',$);\n"
                      "#5=CONFIGURATION_ITEM('c','',$,7,$);\n#6=CONFIGURATION_DESIGN('x',.T.);\n"
                      "#7=DATED_EFFECTIVITY('e','x',(1.,2.));\n");
    EXPECT_THAT(page.Texts("h2"), Contains("Structure"));
    const XmlElement database = PageOfOddData(
        "cdma",
        "#1=PART_OBJECT('P',$,$,$,$,('x',1,$),$,$,$,$);\n"
        "#2=PART_OBJECT('Q',$,$,$,$,'x',$,$,$,$);\n"
        "#3=CDMA_REVISION_HISTORY(('x',1,(2)));\n#4=CDMA_REVISION_HISTORY('x');\n"
        "#5=RANGE_EFFECTIVITY('R',('x',1),1,2);\n#6=CONFIGURATION_ITEM('C','n','x');\n"
        "#7=CONFIGURATION_HANDLER('H','x');\n#8=CDMA_ID('x','1',$,$,$);\n");
    EXPECT_THAT(database.Texts("h2"), Contains("Effectivities"));
}

TEST_F(Report, ShowsBoundsThatAreNoDatesAsTheyAre) {
    const XmlElement page =
        PageOfData("cdma",
                   "#1=DATE_EFFECTIVITY('E1',$,'13322026000000','soon');\n"
                   "#2=DATE_EFFECTIVITY('E2',$,'02292024000000','02302024000000');\n"
                   "#3=DATE_EFFECTIVITY('E3',$,'-1-1-999000000',$);\n"
                   "#4=RANGE_EFFECTIVITY('E4',$,9223372036854775807,$);\n");
    EXPECT_THAT(Rows(page, "id"), ElementsAre(ElementsAre("E1", "13322026000000", "soon"),
                                              ElementsAre("E2", "2024-02-29", "02302024000000"),
                                              ElementsAre("E3", "-1-1-999000000", "open"),
                                              ElementsAre("E4", "9223372036854775807", "open")));
    EXPECT_THAT(page.All("g", "bar"), IsEmpty());
}

TEST_F(Report, ShowsVersionFamilies) {
    const XmlElement page = PageOf(kDatabase);
    const auto families = page.All("ol", "versions");
    ASSERT_EQ(families.size(), 2U);
    EXPECT_THAT(families[0]->Texts("li"),
                ElementsAre("00 Wheel", "01 Wheel, ball bearing", "02 Wheel, sealed bearing"));
    EXPECT_THAT(families[1]->Texts("li"), ElementsAre("02 Frame"));
    const XmlElement step = PageOfData("AUTOMOTIVE_DESIGN",
                                       "#1=PRODUCT('P','Bolt','',());\n#2=PRODUCT('Q','','',());\n"
                                       "#6=PRODUCT('P','Bolt, long','',());\n"
                                       "#7=PRODUCT('','','',());\n#8=PRODUCT('','','',());\n"
                                       "#9=PRODUCT_DEFINITION_FORMATION('A','',#7);\n"
                                       "#10=PRODUCT_DEFINITION_FORMATION('A','',#8);\n"
                                       "#3=PRODUCT_DEFINITION_FORMATION('A','',#1);\n"
                                       "#4=PRODUCT_DEFINITION_FORMATION('A','',#2);\n"
                                       "#5=PRODUCT_DEFINITION_FORMATION('B','',#1);\n"
                                       "#11=PRODUCT_DEFINITION_FORMATION('C','',#6);\n");
    const auto products = step.All("ol", "versions");
    ASSERT_EQ(products.size(), 1U);
    EXPECT_THAT(products[0]->Texts("li"), ElementsAre("A Bolt", "B Bolt", "C Bolt, long"));
}

TEST_F(Report, SaysInOneLineWhatTheDataDoNotHold) {
    const XmlElement page = PageOf(kAssembly);
    EXPECT_THAT(page.Texts("h2"), ElementsAre("Structure", "Placements"));
    EXPECT_THAT(page.Texts("p"), Contains("The data hold no configuration items, no effectivities, "
                                          "no part in several versions."));
    const XmlElement empty = PageOfData("AUTOMOTIVE_DESIGN", "");
    EXPECT_THAT(empty.Texts("h2"), IsEmpty());
}

TEST_F(Report, ShowsHostileTextsAsTexts) {
    const std::string hostile = R"(<script>alert("1")</script>&amp;]]>--><b x=)";
    const std::string text = "'" + hostile + "'''";
    const XmlElement page = PageOfData(
        "cdma",
        "#1=PART_OBJECT(" + text + ",$,$,$," + text + ",(#3),$,$,$,$);\n" +
            "#2=PART_OBJECT('2',$,$,$,'\\X\\00\\X\\1B\\X\\85 \\X\\E9 \\X2\\20ACFFFFFFFE\\X0\\',"
            "$,$,$,$,$);\n#3=PART_LINK(" +
            text + ",#1,#2,$,$,$,$);\n" + "#4=CONFIGURATION_ITEM(" + text + "," + text + ",#1);\n" +
            "#5=RANGE_EFFECTIVITY(" + text + ",(#3),1,2);\n" + "#6=CDMA_ID(#1," + text +
            ",$,$,$);\n#7=CDMA_REVISION_HISTORY((#6));\n");
    // Only the page's own script, which contains none of the data.
    ASSERT_EQ(page.All("script").size(), 1U);
    EXPECT_EQ(page.Texts("script"), PageOf(kAssembly).Texts("script"));
    EXPECT_THAT(page.All("b"), IsEmpty());
    EXPECT_THAT(page.Texts("summary"), Contains(hostile + "'"));
    EXPECT_THAT(Rows(page, "id").at(0), ElementsAre(hostile + "'", hostile + "'", hostile + "'"));
    EXPECT_THAT(page.Texts("li"), Contains("\uFFFD\uFFFD\uFFFD \u00E9 \u20AC\uFFFD\uFFFD 2"));
}

TEST_F(Report, EndsForDataWithoutAnEnd) {
    // A part of itself, and assemblies that use the next one twice in different places: 2^40
    // places.
    std::string data =
        "#1=PART_OBJECT('round',$,$,$,$,(#2),$,$,$,$);\n#2=PART_LINK('L',#1,#1,$,$,$,$);\n";
    for (int i = 10; i < 50; ++i) {
        const std::string n = std::to_string(i);
        const std::string next = std::to_string(i + 1);
        const std::string other = std::to_string(i + 100);
        data += "#" + n + "=PART_OBJECT('P" + n + "',$,$,$,$,(#2" + n + ",#3" + n +
                "),$,$,$,$);\n" + "#2" + n + "=PART_LINK('L',$,#" + next + ",$,$,$,$);\n#3" + n +
                "=PART_LINK('M',$,#" + other + ",$,$,$,$);\n#" + other + "=PART_OBJECT('Q" + n +
                "',$,$,$,$,(#4" + n + "),$,$,$,$);\n#4" + n + "=PART_LINK('N',$,#" + next +
                ",$,$,$,$);\n";
    }
    data += "#50=PART_OBJECT('end',$,$,$,$,$,$,$,$,$);\n";
    const XmlElement page = PageOfData("cdma", data);
    EXPECT_THAT(page.Texts("p"), Contains("The first 10000 lines. orx tree shows all."));
    EXPECT_THAT(page.Texts("figcaption").at(0), HasSubstr("The first 300 places."));
}

TEST_F(Report, HoldsEveryModel) {
    const XmlElement page = PageOf("db.stp", {"-m", "parts.stp"});
    EXPECT_THAT(page.Texts("h1"), ElementsAre("db", "parts"));
    EXPECT_THAT(page.Texts("title"), Contains("db, parts"));
}

TEST_F(Report, MayGoToTheStandardOutput) {
    const OrxResult result = Orx({"report", "-m", "db.stp", "-o", "-"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(ReadXml(result.out).Texts("h1"), ElementsAre("db"));
}

TEST_F(Report, IsRefusedWhereItCannotBeWritten) {
    for (const char* file : {"no/such/folder.html", "."}) {
        const OrxResult result = Orx({"report", "-m", "db.stp", "-o", file});
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.err, HasSubstr(std::string(file) + ": cannot be written"));
    }
    EXPECT_EQ(Orx({"report", "-o", "page.html"}).status, 2);
    EXPECT_FALSE(std::filesystem::exists(folder / "page.html"));
}

TEST_F(Report, ShowsARealAssembly) {
    const std::string file = SHARED_DATA "/data/as1-oc-214.stp";
    if (!std::ifstream(file)) GTEST_SKIP() << file << " is not there";
    const XmlElement page = PageOf(file);
    // Positions in the root: the placements in tests/host/Tree_test.cpp, and the root.
    const auto rows = Rows(page, "part");
    ASSERT_EQ(rows.size(), 28U);
    // The rod assembly is at (-10,75,60). Its z axis is x, so the nut at 185 along it is at 175;
    // its x axis is -z, so -10 along it is +10 in z.
    EXPECT_THAT(rows[1], Contains("-10"));
    EXPECT_THAT(std::vector(rows[2].begin(), rows[2].begin() + 4),
                ElementsAre("  nut", "175", "67.5", "70"));
    // The vertices of the plate range from (0,0,0) to (180,150,20).
    EXPECT_THAT(rows[27], Contains(" plate"));
    EXPECT_EQ(rows[27].at(7), "180 × 150 × 20");
    // The rod is a cylinder of radius 5 from 0 to 200, bounded by rational curves.
    EXPECT_THAT(rows[4], Contains("  rod"));
    EXPECT_EQ(rows[4].at(7), "10 × 10 × 200");
    EXPECT_THAT(page.Texts("th"), Contains("box (mm)"));
}

// ---- Boxes and units

namespace {

// A part in millimetres whose shape representation #10 has these items; numbers up to 20 are used.
std::string PartOfItems(const std::string& items, const std::string& more,
                        const std::string& unit =
                            "(LENGTH_UNIT()NAMED_UNIT(*)"
                            "SI_UNIT(.MILLI.,.METRE.))") {
    return "#1=PRODUCT('P','Part','',());\n#2=PRODUCT_DEFINITION_FORMATION('A','',#1);\n"
           "#3=PRODUCT_DEFINITION('d','',#2,$);\n#4=PRODUCT_DEFINITION_SHAPE('','',#3);\n"
           "#5=SHAPE_DEFINITION_REPRESENTATION(#4,#10);\n"
           "#10=ADVANCED_BREP_SHAPE_REPRESENTATION('',(" +
           items + "),#11);\n" +
           "#11=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#12))"
           "REPRESENTATION_CONTEXT('',''));\n#12=" +
           unit + ";\n#13=CARTESIAN_POINT('',(0.,0.,0.));\n" +
           "#14=AXIS2_PLACEMENT_3D('',#13,$,$);\n#15=DIRECTION('',(1.,0.,0.));\n"
           "#16=DIRECTION('',(0.,1.,0.));\n#17=AXIS2_PLACEMENT_3D('',#13,#15,#16);\n" +
           more;
}

// #20 is an edge from a vertex at (10,0,0) to one at (0,10,0), on a curve.
std::string EdgeOn(const std::string& curve, const std::string& sense) {
    return "#20=EDGE_CURVE('',#21,#22,#25," + sense +
           ");\n#21=VERTEX_POINT('',#23);\n#22=VERTEX_POINT('',#24);\n"
           "#23=CARTESIAN_POINT('',(10.,0.,0.));\n#24=CARTESIAN_POINT('',(0.,10.,0.));\n#25=" +
           curve + ";\n";
}

// Opposite corners of a box of 10 × 20 × 30 at (1,2,3).
const std::string kCorners =
    "#21=VERTEX_POINT('',#22);\n#22=CARTESIAN_POINT('',(1.,2.,3.));\n"
    "#23=VERTEX_POINT('',#24);\n#24=CARTESIAN_POINT('',(11.,22.,33.));\n";

class Shape : public Report {
  protected:
    // The sizes of the places in the page.
    std::vector<std::string> Sizes(const std::string& data) const {
        std::vector<std::string> sizes;
        for (const auto& row : Rows(PageOfOddData("AUTOMOTIVE_DESIGN", data), "part")) {
            sizes.push_back(row.size() > 7 ? row[7] : "");
        }
        return sizes;
    }
};

}  // namespace

TEST_F(Shape, GoesAroundTheVerticesAndNotAroundWhatPlacesAxesLinesAndSurfaces) {
    const std::string far = "#30=CARTESIAN_POINT('',(-1000.,-1000.,1000.));\n";
    EXPECT_THAT(Sizes(PartOfItems("#14,#20,#40",
                                  "#20=EDGE_CURVE('',#21,#23,#25,.T.);\n#25=LINE('',#30,$);\n"
                                  "#40=ADVANCED_FACE('',(#41),#43,.T.);\n"
                                  "#41=FACE_BOUND('',#42,.T.);\n#42=EDGE_LOOP('',(#44));\n"
                                  "#43=PLANE('',#45);\n#44=ORIENTED_EDGE('',*,*,#20,.T.);\n"
                                  "#45=AXIS2_PLACEMENT_3D('',#30,$,$);\n" +
                                      far + kCorners)),
                ElementsAre("10 × 20 × 30"));
}

TEST_F(Shape, GoesAroundSplinesAsFarAsTheyReachAndNotAroundParameterSpaces) {
    // x(t) = 10(1-t)² + 24t(1-t) has its maximum 504/49 at 1/7; y(t) = 30t(1-t) + 10t² its maximum
    // 11.25 at 3/4; z(t) = -8t(1-t) its minimum -2 at 1/2.
    EXPECT_THAT(
        Sizes(PartOfItems(
            "#20",
            EdgeOn("SURFACE_CURVE('',#30,(#31),.PCURVE_S1.)", ".T.") +
                "#30=B_SPLINE_CURVE_WITH_KNOTS('',2,(#23,#32,#24),.UNSPECIFIED.,.F.,.F.,(3,3),"
                "(0.,1.),.UNSPECIFIED.);\n#31=PCURVE('',#33,#34);\n"
                "#32=CARTESIAN_POINT('',(12.,15.,-4.));\n#33=PLANE('',#14);\n"
                "#34=DEFINITIONAL_REPRESENTATION('',(#35),$);\n#35=LINE('',#36,$);\n"
                "#36=CARTESIAN_POINT('',(500.,600.));\n")),
        ElementsAre("10.2857 × 11.25 × 2"));
    // A quarter circle around the x axis of its plane, from -45° to 45°: x from 10 cos 45° to 10.
    EXPECT_THAT(
        Sizes(PartOfItems(
            "#20",
            "#20=(BOUNDED_CURVE()B_SPLINE_CURVE(2,(#21,#22,#23),.CIRCULAR_ARC.,.F.,.F.)"
            "B_SPLINE_CURVE_WITH_KNOTS((3,3),(0.,1.),.UNSPECIFIED.)CURVE()"
            "GEOMETRIC_REPRESENTATION_ITEM()RATIONAL_B_SPLINE_CURVE((1.,0.7071067811865476,1.))"
            "REPRESENTATION_ITEM(''));\n"
            "#21=CARTESIAN_POINT('',(7.071067811865476,-7.071067811865476,0.));\n"
            "#22=CARTESIAN_POINT('',(14.142135623730951,0.,0.));\n"
            "#23=CARTESIAN_POINT('',(7.071067811865476,7.071067811865476,0.));\n")),
        ElementsAre("2.92893 × 14.1421 × 0"));
    // For invalid knots, and for other curves, the box encloses the control points.
    for (const char* curve : {"B_SPLINE_CURVE_WITH_KNOTS('',2,(#23,#32,#24),.UNSPECIFIED.,.F.,.F.,"
                              "(3,2),(0.,1.),.UNSPECIFIED.)",
                              "B_SPLINE_CURVE_WITH_KNOTS('',2,(#23,#32,#24),.UNSPECIFIED.,.F.,.F.,"
                              "(3,-3),(0.,1.),.UNSPECIFIED.)",
                              "B_SPLINE_CURVE_WITH_KNOTS('',99,(#23,#32,#24),$,$,$,(3,3),$)",
                              "BEZIER_CURVE('',2,(#23,#32,#24),.UNSPECIFIED.,.F.,.F.)"}) {
        EXPECT_THAT(Sizes(PartOfItems(
                        "#20", EdgeOn(curve, ".T.") + "#32=CARTESIAN_POINT('',(12.,15.,-4.));\n")),
                    ElementsAre("12 × 15 × 4"))
            << curve;
    }
}

TEST_F(Shape, GoesAroundArcsAsFarAsTheyReach) {
    const std::string circle = "CIRCLE('',#14,10.)";
    // A quarter circle, and the other three quarters.
    EXPECT_THAT(Sizes(PartOfItems("#20", EdgeOn(circle, ".T."))), ElementsAre("10 × 10 × 0"));
    EXPECT_THAT(Sizes(PartOfItems("#20", EdgeOn(circle, ".F."))), ElementsAre("20 × 20 × 0"));
    // A whole circle around the x axis, and an ellipse that is not an edge.
    EXPECT_THAT(Sizes(PartOfItems("#20",
                                  "#20=EDGE_CURVE('',#21,#21,#25,.T.);\n"
                                  "#21=VERTEX_POINT('',#22);\n#25=CIRCLE('',#17,10.);\n"
                                  "#22=CARTESIAN_POINT('',(0.,10.,0.));\n")),
                ElementsAre("0 × 20 × 20"));
    EXPECT_THAT(Sizes(PartOfItems("#20",
                                  "#20=GEOMETRIC_CURVE_SET('',(#21));\n"
                                  "#21=ELLIPSE('',#14,10.,2.5);\n")),
                ElementsAre("20 × 5 × 0"));
}

TEST_F(Shape, GoesAroundWholeSpheresAndTori) {
    const auto whole = [](const std::string& surface) {
        return PartOfItems("#20",
                           "#20=ADVANCED_FACE('',(#21),#22,.T.);\n"
                           "#21=FACE_BOUND('',#23,.T.);\n#22=" +
                               surface +
                               ";\n#23=VERTEX_LOOP('',#24);\n#24=VERTEX_POINT('',#13);\n");
    };
    EXPECT_THAT(Sizes(whole("SPHERICAL_SURFACE('',#14,7.)")), ElementsAre("14 × 14 × 14"));
    // A torus around the x axis.
    EXPECT_THAT(Sizes(whole("TOROIDAL_SURFACE('',#17,10.,2.)")), ElementsAre("4 × 24 × 24"));
    // A face with edges is bounded by them.
    EXPECT_THAT(Sizes(PartOfItems("#20,#21,#23",
                                  "#20=ADVANCED_FACE('',(),#40,.T.);\n"
                                  "#40=SPHERICAL_SURFACE('',#14,500.);\n" +
                                      kCorners)),
                ElementsAre("10 × 20 × 30"));
}

TEST_F(Shape, GoesAroundTessellationsAndPolygons) {
    EXPECT_THAT(Sizes(PartOfItems("#20",
                                  "#20=TESSELLATED_SOLID('',(#21),$);\n"
                                  "#21=TRIANGULATED_FACE('',#22,3,$,$,(),((1,2,3)));\n"
                                  "#22=COORDINATES_LIST('',3,((0.,0.,0.),(5.,0.,1.),(0,7,2)));\n")),
                ElementsAre("5 × 7 × 2"));
    EXPECT_THAT(Sizes(PartOfItems("#20",
                                  "#20=POLY_LOOP('',(#21,#22,#13));\n"
                                  "#21=CARTESIAN_POINT('',(3.,0.,0.));\n"
                                  "#22=CARTESIAN_POINT('',(0.,4.,0.));\n")),
                ElementsAre("3 × 4 × 0"));
}

TEST_F(Shape, GoesAroundMappedItemsWhereTheyAreMapped) {
    // A quarter turn about z: (x,y) goes to (-y,x). Once in place, once 100 higher.
    const std::string mapped =
        "#30=MAPPED_ITEM('',#32,#33);\n#31=MAPPED_ITEM('',#32,#34);\n"
        "#32=REPRESENTATION_MAP(#14,#35);\n#33=AXIS2_PLACEMENT_3D('',#13,$,#16);\n"
        "#34=AXIS2_PLACEMENT_3D('',#36,$,#16);\n"
        "#35=SHAPE_REPRESENTATION('',(#21,#23),#11);\n#36=CARTESIAN_POINT('',(0.,0.,100.));\n" +
        kCorners;
    EXPECT_THAT(Sizes(PartOfItems("#30", mapped)), ElementsAre("20 × 10 × 30"));
    EXPECT_THAT(Sizes(PartOfItems("#30,#31", mapped)), ElementsAre("20 × 10 × 130"));
    EXPECT_THAT(Sizes(PartOfItems("#40",
                                  "#40=MAPPED_ITEM('',#32,#41);\n#41="
                                  "CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',$,$,#13,2.,$);\n" +
                                      mapped)),
                ElementsAre("20 × 40 × 60"));
    // An origin that is scaled and turned, too.
    EXPECT_THAT(
        Sizes(PartOfItems("#42",
                          "#42=MAPPED_ITEM('',#43,#14);\n#43=REPRESENTATION_MAP(#44,#35);\n#44="
                          "CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',$,$,#13,4.,$);\n" +
                              mapped)),
        ElementsAre("2.5 × 5 × 7.5"));
    EXPECT_THAT(
        Sizes(PartOfItems("#21,#23,#42",
                          "#42=MAPPED_ITEM('',#43,#14);\n#43=REPRESENTATION_MAP(#44,#35);\n#44="
                          "CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',#16,#45,#36,2.,$);\n"
                          "#45=DIRECTION('',(-1.,0.,0.));\n" +
                              mapped)),
        ElementsAre("10 × 27.5 × 81.5"));
    // A representation mapped into itself.
    EXPECT_THAT(Sizes(PartOfItems("#21,#23,#30",
                                  "#30=MAPPED_ITEM('',#32,#14);\n"
                                  "#32=REPRESENTATION_MAP(#14,#10);\n" +
                                      kCorners)),
                ElementsAre("10 × 20 × 30"));
}

TEST_F(Shape, TakesRepresentationsThatAreRelatedWithoutATransformation) {
    const std::string other = "#30=SHAPE_REPRESENTATION('',(#21,#23),#11);\n" + kCorners;
    EXPECT_THAT(Sizes(PartOfItems(
                    "#14", "#31=SHAPE_REPRESENTATION_RELATIONSHIP('','',#30,#10);\n" + other)),
                ElementsAre("10 × 20 × 30"));
    // Not if there is a transformation, and not if the representation is the shape of another part:
    // then only that part is drawn.
    EXPECT_THAT(Sizes(PartOfItems("#14",
                                  "#31=(REPRESENTATION_RELATIONSHIP('','',#30,#10)"
                                  "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION($)"
                                  "SHAPE_REPRESENTATION_RELATIONSHIP());\n" +
                                      other)),
                IsEmpty());
    EXPECT_THAT(Sizes(PartOfItems("#14",
                                  "#31=SHAPE_REPRESENTATION_RELATIONSHIP('','',#30,#10);\n"
                                  "#32=PRODUCT_DEFINITION('e','',$,$);\n"
                                  "#33=PRODUCT_DEFINITION_SHAPE('','',#32);\n"
                                  "#34=SHAPE_DEFINITION_REPRESENTATION(#33,#30);\n" +
                                      other)),
                ElementsAre("10 × 20 × 30"));
}

TEST_F(Shape, IsDrawnToScaleFromFourSides) {
    const XmlElement page = PageOfData("AUTOMOTIVE_DESIGN", PartOfItems("#21,#23", kCorners));
    // Width and height of a drawn box.
    const auto size = [](const XmlElement& box) {
        double least[2] = {1e9, 1e9};
        double most[2] = {-1e9, -1e9};
        for (const XmlElement* side : box.All("polygon")) {
            std::istringstream points(side->attributes.at("points"));
            double p[2];
            char comma = 0;
            while (points >> p[0] >> comma >> p[1]) {
                for (int i = 0; i < 2; ++i) {
                    least[i] = std::min(least[i], p[i]);
                    most[i] = std::max(most[i], p[i]);
                }
            }
        }
        return std::pair(most[0] - least[0], most[1] - least[1]);
    };
    struct {
        const char* view;
        std::size_t sides;
        double ratio;  // of width and height
    } const views[] = {
        // x and y each go right by cos 30°; x goes down and y up by half; z goes up.
        {"frames", 3, 30 * std::sqrt(0.75) / (15 + 30)},
        {"view front", 1, 10.0 / 30},
        {"view above", 1, 10.0 / 20},
        {"view right", 1, 20.0 / 30},
    };
    for (const auto& [view, sides, ratio] : views) {
        const XmlElement* drawing = Drawing(page, view);
        ASSERT_NE(drawing, nullptr) << view;
        const auto boxes = drawing->All("g", "box c0");
        ASSERT_EQ(boxes.size(), 1U) << view;
        EXPECT_EQ(boxes[0]->All("polygon").size(), sides) << view;
        const auto [width, height] = size(*boxes[0]);
        EXPECT_NEAR(width / height, ratio, 0.01) << view;
    }
}

namespace {

// An assembly in one unit; its part, in another unit, is at x = 2, turned by a quarter.
std::string AssemblyInUnits(const std::string& unit, const std::string& unitOfPart) {
    return PartOfItems("#14,#21,#23", kCorners, unitOfPart) +
           "#50=PRODUCT('W','Whole','',());\n#51=PRODUCT_DEFINITION_FORMATION('A','',#50);\n"
           "#52=PRODUCT_DEFINITION('d','',#51,$);\n#53=PRODUCT_DEFINITION_SHAPE('','',#52);\n"
           "#54=SHAPE_DEFINITION_REPRESENTATION(#53,#55);\n"
           "#55=SHAPE_REPRESENTATION('',(#59),#56);\n"
           "#56=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#57))"
           "REPRESENTATION_CONTEXT('',''));\n#57=" +
           unit +
           ";\n#58=CARTESIAN_POINT('',(2.,0.,0.));\n#59=AXIS2_PLACEMENT_3D('',#58,$,#16);\n"
           "#60=NEXT_ASSEMBLY_USAGE_OCCURRENCE('n','','',#52,#3,$);\n"
           "#61=PRODUCT_DEFINITION_SHAPE('','',#60);\n"
           "#62=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#63,#61);\n"
           "#63=(REPRESENTATION_RELATIONSHIP('','',#10,#55)"
           "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#64)"
           "SHAPE_REPRESENTATION_RELATIONSHIP());\n"
           "#64=ITEM_DEFINED_TRANSFORMATION('','',#14,#59);\n"
           "#70=LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4),#71);\n"
           "#71=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n";
}

const std::string kMetre = "(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.))";
const std::string kMillimetre = "(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.))";
const std::string kInch = "(CONVERSION_BASED_UNIT('INCH',#70)LENGTH_UNIT()NAMED_UNIT($))";

}  // namespace

TEST_F(Shape, SaysLengthsInTheUnitOfTheFile) {
    struct {
        const std::string& unit;
        const char* symbol;
    } const units[] = {{kMillimetre, "mm"}, {kMetre, "m"}, {kInch, "in"}};
    for (const auto& [unit, symbol] : units) {
        const XmlElement page = PageOfData("AUTOMOTIVE_DESIGN", AssemblyInUnits(unit, unit));
        const std::string inUnit = std::string(" (") + symbol + ')';
        EXPECT_THAT(page.Texts("th"), AllOf(Contains("x" + inUnit), Contains("box" + inUnit)));
        EXPECT_THAT(page.Texts("figcaption").at(0),
                    HasSubstr(std::string("Lengths in ") + symbol + "."));
        for (const char* view : {"frames", "view front", "view above", "view right"}) {
            EXPECT_THAT(Drawing(page, view)->Texts("text", "note").at(0),
                        testing::EndsWith(std::string(" ") + symbol));
        }
        // The part's (x,y) goes to (2-y,x); the assembly is as large as its contents.
        const auto rows = Rows(page, "part");
        ASSERT_EQ(rows.size(), 2U);
        EXPECT_EQ(rows[0][7], "20 × 10 × 30");
        EXPECT_EQ(rows[1][1], "2");
        EXPECT_EQ(rows[1][7], "10 × 20 × 30");
    }
    // The lamp has a unit but no geometry, the database neither.
    EXPECT_THAT(PageOf(kAssembly).Texts("th"), Contains("x (mm)"));
    EXPECT_THAT(PageOf(kDatabase).Texts("th"), Contains("x"));
}

TEST_F(Shape, ConvertsLengthsOfOtherUnits) {
    const XmlElement page = PageOfData("AUTOMOTIVE_DESIGN", AssemblyInUnits(kMillimetre, kInch));
    const auto rows = Rows(page, "part");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[1][1], "2");
    EXPECT_EQ(rows[1][7], "254 × 508 × 762");
    EXPECT_THAT(page.Texts("figcaption").at(0),
                HasSubstr("Lengths in mm; those in other units are converted."));
}

TEST_F(Shape, IsNotToldWhereTheUnitIsNone) {
    for (const char* unit : {"(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.GRAM.))", "7", "$",
                             "(CONVERSION_BASED_UNIT('INCH',$)LENGTH_UNIT()NAMED_UNIT($))",
                             "(CONVERSION_BASED_UNIT('X',#40)LENGTH_UNIT()NAMED_UNIT($))",
                             "(MASS_UNIT()NAMED_UNIT(*)SI_UNIT(.KILO.,.GRAM.))"}) {
        folder.Write("data.stp",
                     ExchangeFile("AUTOMOTIVE_DESIGN",
                                  PartOfItems("#21,#23",
                                              "#40=LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(0.),#12)"
                                              ";\n" +
                                                  kCorners,
                                              unit)));
        EXPECT_EQ(Orx({"report", "--lenient", "data.stp", "-o", "page.html"}).status, 0) << unit;
        const XmlElement page = ReadXml(ReadFile(folder / "page.html"));
        EXPECT_THAT(page.Texts("th"), Contains("box")) << unit;
        EXPECT_THAT(Rows(page, "part").at(0), Contains("10 × 20 × 30")) << unit;
    }
}

TEST_F(Shape, BearsGeometryThatMakesNoSense) {
    // Missing values, values of other kinds, values that are too large, and cycles.
    EXPECT_THAT(
        Sizes(PartOfItems(
            "#21,#23,#30,#31,#32,#33,#34,#35,#36,#37,#38,#39,#40,#41,#42,#43",
            "#30=EDGE_CURVE('',$,$,$,$);\n#31=EDGE_CURVE('',#30,'x',#32,7);\n"
            "#32=CIRCLE('',#33,'wide');\n#33=CIRCLE('',#14,-1.);\n#34=ADVANCED_FACE('',$,$,$);\n"
            "#35=ADVANCED_FACE('',(1,#34,#36,$),#35,.T.);\n#36=FACE_BOUND('',#36,.T.);\n"
            "#37=SPHERICAL_SURFACE('',#13,1.E300);\n#38=CARTESIAN_POINT('',(1.E300,0.,0.));\n"
            "#39=MAPPED_ITEM('',#39,#39);\n#40=CARTESIAN_POINT('',('x',$,#40));\n"
            "#41=COORDINATES_LIST('',3,('x',(1.),((1.,2.,3.)),$));\n#42=EDGE_CURVE('x');\n"
            "#43=SHELL('',(#43,(#43,((#21)))));\n" +
                kCorners)),
        ElementsAre("10 × 20 × 30"));
}

TEST_F(Shape, IsLeftOutWherePartsShareTooMuch) {
    // 5,000 parts, each with a separate shape that has the same 5,000 points.
    std::string data = "#1=SHELL('',(#2";
    for (int i = 3; i <= 5001; ++i) data += ",#" + std::to_string(i);
    data += "));\n";
    for (int i = 2; i <= 5001; ++i) {
        data += "#" + std::to_string(i) + "=CARTESIAN_POINT('',(1.,2.,3.));\n";
    }
    for (int i = 10'000; i < 35'000; i += 5) {
        const auto ref = [i](int n) { return '#' + std::to_string(i + n); };
        data += ref(0) + "=PRODUCT_DEFINITION('','',$,$);\n" + ref(1) +
                "=PRODUCT_DEFINITION_SHAPE('','',";
        data += ref(0) + ");\n" + ref(2) + "=SHAPE_REPRESENTATION('',(#1),$);\n" + ref(3);
        data += "=SHAPE_DEFINITION_REPRESENTATION(" + ref(1) + ',' + ref(2) + ");\n";
    }
    const XmlElement page = PageOfOddData("AUTOMOTIVE_DESIGN", data);
    EXPECT_THAT(page.Texts("figcaption").at(0),
                HasSubstr("Some boxes are missing, since the parts share too much geometry."));
}

// ---- Navigation

TEST_F(Report, BeginsWithItsContents) {
    const auto links = [](const XmlElement& page) {
        std::vector<std::string> titles;
        for (const XmlElement* link : page.All("nav").at(0)->All("a")) {
            titles.push_back(link->text);
            const std::string id = link->attributes.at("href").substr(1);
            std::size_t targets = 0;
            for (const char* element : {"section", "h1"}) {
                for (const XmlElement* target : page.All(element)) {
                    const auto found = target->attributes.find("id");
                    if (found == target->attributes.end() || found->second != id) continue;
                    ++targets;
                    EXPECT_TRUE(element == std::string("h1") ||
                                target->Texts("h2").at(0) == link->text);
                }
            }
            EXPECT_EQ(targets, 1U) << id;
        }
        return titles;
    };
    EXPECT_THAT(links(PageOf(kDatabase)),
                ElementsAre("Structure", "Placements", "Configuration items", "Effectivities",
                            "Version families"));
    EXPECT_THAT(
        links(PageOf("db.stp", {"-m", kAssembly})),
        ElementsAre("db", "Structure", "Effectivities", "assembly", "Structure", "Placements"));
}

TEST_F(Report, NamesTheFileWithoutItsFolder) {
    const auto line = [](const XmlElement& page) { return page.Texts("p").at(0); };
    EXPECT_THAT(line(PageOf(folder / "db.stp")), testing::StartsWith("db.stp · cdma · "));
    EXPECT_EQ(Orx({"copy", "db.stp", "sqlite:" + std::string(folder / "kept.db")}).status, 0);
    EXPECT_THAT(line(PageOf("sqlite:" + std::string(folder / "kept.db"))),
                testing::StartsWith("kept.db · cdma · "));
    const std::string page = Orx({"report", "-", "-o", "-"}, Database()).out;
    EXPECT_THAT(line(ReadXml(page)), testing::StartsWith("standard input · cdma · "));
}

namespace {

// A database in which a part has `count` components, each of which has as many, and so on.
std::string DatabaseOfLevels(int count, int levels) {
    std::string data;
    int last = 0;
    const std::function<std::string(int, const std::string&)> add = [&](int level,
                                                                        const std::string& name) {
        std::string links;
        for (int i = 0; i < count && level < levels; ++i) {
            const std::string component = add(level + 1, name + '.' + std::to_string(i));
            const std::string link = '#' + std::to_string(++last);
            data += link + "=PART_LINK('L',$," + component + ",$,$,$,$);\n";
            links += (links.empty() ? "" : ",") + link;
        }
        const std::string part = '#' + std::to_string(++last);
        data += part + "=PART_OBJECT('" + name + "',$,$,$,$,(" + links + "),$,$,$,$);\n";
        return part;
    };
    add(0, "P");
    return data;
}

}  // namespace

TEST_F(Report, CollapsesALargeTreeBelowItsSecondLevel) {
    // 1 + 5 + 25 + 125 lines.
    const XmlElement large = PageOfData("cdma", DatabaseOfLevels(5, 3));
    std::size_t open = 0;
    for (const XmlElement* details : large.All("ul", "tree").at(0)->All("details")) {
        open += details->attributes.count("open");
    }
    EXPECT_EQ(large.All("ul", "tree").at(0)->All("details").size(), 31U);
    EXPECT_EQ(open, 1U);
    const auto fields = large.All("input");
    ASSERT_EQ(fields.size(), 1U);
    EXPECT_EQ(fields[0]->attributes.at("data-tree"),
              large.All("ul", "tree").at(0)->attributes.at("id"));
    // A small tree is expanded, and needs no filter.
    const XmlElement small = PageOfData("cdma", DatabaseOfLevels(3, 3));
    for (const XmlElement* details : small.All("ul", "tree").at(0)->All("details")) {
        EXPECT_EQ(details->attributes.count("open"), 1U);
    }
    EXPECT_THAT(small.All("input"), IsEmpty());
}

TEST_F(Report, LeavesTheLowestLevelsOutOfAHugeTree) {
    // 1 + 10 + 100 + 1,000 + 10,000 lines: the last level is too much. The first three levels fit
    // into the 300 places that can be drawn.
    const XmlElement page = PageOfData("cdma", DatabaseOfLevels(10, 4));
    EXPECT_EQ(page.All("ul", "tree").at(0)->All("li").size(), 1111U);
    EXPECT_THAT(page.Texts("p"), Contains("Down to level 4. orx tree shows all."));
    EXPECT_THAT(page.Texts("figcaption").at(0), HasSubstr("Down to level 3."));
    EXPECT_EQ(Drawing(page, "frames")->All("g", "frame").size(), 111U);
    // Too many components for a page, even on the first level.
    const XmlElement flat = PageOfData("cdma", DatabaseOfLevels(11'000, 1));
    EXPECT_THAT(flat.Texts("p"), Contains("The first 10000 lines. orx tree shows all."));
    EXPECT_THAT(flat.Texts("figcaption").at(0), HasSubstr("The first 300 places."));
}

// ---- In a browser

namespace {

// The SHA-256 of a file, as Base64.
std::string Sha256(const std::string& file) {
    const auto pipe = std::unique_ptr<FILE, int (*)(FILE*)>(
        popen(("sha256sum < '" + file + "'").c_str(), "r"), pclose);
    char hex[65] = "";
    if (std::fgets(hex, sizeof hex, pipe.get()) == nullptr) return "";
    std::string bits;
    for (const char* digit = hex; *digit != '\0'; ++digit) {
        const int value = std::stoi(std::string(1, *digit), nullptr, 16);
        for (int bit = 8; bit != 0; bit /= 2) bits += (value & bit) != 0 ? '1' : '0';
    }
    std::string text;
    for (std::size_t at = 0; at < bits.size(); at += 6) {
        std::string six = bits.substr(at, 6);
        six.resize(6, '0');
        text += "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"[std::stoul(
            six, nullptr, 2)];
    }
    text.resize((text.size() + 3) / 4 * 4, '=');
    return text;
}

class ReportInBrowser : public Report {
  protected:
    void SetUp() override {
        if (std::system("command -v chromium >/dev/null") != 0) {
            GTEST_SKIP() << "there is no chromium";
        }
    }

    // The output of the browser for a file in the folder.
    std::string Browse(const std::string& file, const std::string& options) const {
        const std::string command =
            "cd '" + folder.Path() + "' && HOME=. timeout 100 chromium --headless --no-sandbox " +
            "--disable-gpu --disable-quic --no-first-run --disable-background-networking " +
            "--disable-component-update --disable-sync --hide-scrollbars --user-data-dir=profile " +
            options + " 'file://" + folder.Path() + "/" + file + "' >browser.out 2>browser.log";
        EXPECT_EQ(std::system(command.c_str()), 0) << ReadFile(folder / "browser.log");
        return ReadFile(folder / "browser.out");
    }

    // The value of a JavaScript expression on page.html, which is made to allow it, on a display of
    // this width. The page's own script has already run.
    std::string Ask(const std::string& expression, const std::string& width) const {
        const std::string script =
            "parent.document.title = 'answer: ' + (" + expression + ") + ';';";
        const std::string hash = Sha256(folder.Write("script.js", script));
        std::string page = ReadFile(folder / "page.html");
        page.insert(page.find("script-src ") + 11, "'sha256-" + hash + "' ");
        page.insert(page.find("</body>"), "<script>" + script + "</script>\n");
        // A frame can be narrower than the browser's windows.
        std::string frame = "<!DOCTYPE html><html><body><iframe width=\"" + width +
                            "\" height=\"800\" style=\"border: 0\" srcdoc=\"";
        for (const char c : page)
            frame += c == '&' ? "&amp;" : c == '"' ? "&quot;" : std::string(1, c);
        folder.Write("frame.html", frame + "\"></iframe></body></html>");
        const std::string out = Browse("frame.html", "--dump-dom");
        const std::size_t begin = out.find("answer: ") + 8;
        return out.substr(begin, out.find(';', begin) - begin);
    }
};

}  // namespace

// The page's policy allows its script by its hash.
TEST_F(Report, AllowsItsOwnScriptAlone) {
    const XmlElement page = PageOf(kDatabase);
    ASSERT_EQ(page.All("script").size(), 1U);
    const std::string hash = Sha256(folder.Write("script.js", page.Texts("script")[0]));
    const auto metas = page.All("meta");
    const auto policy = std::find_if(metas.begin(), metas.end(), [](const XmlElement* meta) {
        return meta->attributes.count("http-equiv") != 0;
    });
    ASSERT_NE(policy, metas.end());
    EXPECT_EQ((*policy)->attributes.at("http-equiv"), "Content-Security-Policy");
    EXPECT_EQ((*policy)->attributes.at("content"),
              "default-src 'none'; style-src 'unsafe-inline'; script-src 'sha256-" + hash + "'");
}

TEST_F(ReportInBrowser, FiltersTheTree) {
    std::string data = DatabaseOfLevels(5, 3);
    const std::size_t name = data.find("'P.2'");
    data.replace(name, 5, "'Gear box'");
    PageOfData("cdma", data);
    // For each text: how many lines are found, shown and expanded.
    const std::string answer =
        Ask("['p.3.1', ' P.3.1.4 ', 'gear', 'nothing', ''].map(text => {"
            " const field = document.querySelector('.filter input');"
            " field.value = text; field.dispatchEvent(new Event('input'));"
            " return [document.querySelector('.filter output').textContent,"
            " document.querySelectorAll('.tree li:not([hidden])').length,"
            " document.querySelectorAll('.tree details[open]').length].join(' ');"
            "}).join(', ') + ', ' + document.querySelector('.filter').hidden",
            "800");
    // The matches: a part with its five components, below two lines, which are expanded as it is; a
    // part below three lines; a part with 30 lines below it, which stay collapsed; none; and all,
    // as at the beginning.
    EXPECT_EQ(answer,
              "6 of 156 lines 8 3, 1 of 156 lines 4 3, 1 of 156 lines 32 1, "
              "0 of 156 lines 0 0,  156 1, false");
}

// Nothing extends beyond a display of 390 pixels, and no text is smaller than 8 pixels there.
TEST_F(ReportInBrowser, IsReadableOnANarrowDisplay) {
    const std::string readable =
        "[innerWidth, document.documentElement.scrollWidth - innerWidth > 0,"
        " Math.min(...[...document.querySelectorAll('svg text')].map(text =>"
        " text.getScreenCTM().a * parseFloat(getComputedStyle(text).fontSize))) >= 8,"
        " [...document.querySelectorAll('.scroll')].some(table =>"
        " table.scrollWidth > table.clientWidth)].join(' ')";
    for (const std::string& file :
         {std::string(SOURCE_DIRECTORY "/examples/database.stp"), kAssembly}) {
        PageOf(file);
        EXPECT_EQ(Ask(readable, "390"), "390 false true false") << file;
    }
}

// The browser renders the page: its picture is many times as large as that of an empty page.
TEST_F(ReportInBrowser, IsShown) {
    const auto sizeOfPicture = [this](const std::string& page) -> std::uintmax_t {
        Browse(page, "--window-size=1100,1600 --screenshot=" + page + ".png");
        std::error_code error;
        const auto size = std::filesystem::file_size(folder / (page + ".png"), error);
        return error ? 0 : size;
    };
    folder.Write("empty.html", "<!DOCTYPE html><html><head><title>e</title></head><body/></html>");
    PageOf(kDatabase);
    const std::uintmax_t empty = sizeOfPicture("empty.html");
    EXPECT_GT(empty, 0U);
    EXPECT_GT(sizeOfPicture("page.html"), 5 * empty);
}
