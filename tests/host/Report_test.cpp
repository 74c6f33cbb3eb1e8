// `orx report`.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>

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

    // The same for data that the reader warns of.
    XmlElement PageOfOddData(const std::string& schema, const std::string& data) const {
        folder.Write("data.stp", ExchangeFile(schema, data));
        EXPECT_EQ(Orx({"report", "-m", "data.stp", "-o", "page.html"}).status, 0);
        return ReadXml(ReadFile(folder / "page.html"));
    }

    XmlElement PageOfData(const std::string& schema, const std::string& data) const {
        folder.Write("data.stp", ExchangeFile(schema, data));
        return PageOf("data.stp");
    }

    // The rows of the table whose first column head is this.
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

    // The drawing of a class.
    static const XmlElement* Drawing(const XmlElement& page, const std::string& ofClass) {
        const auto drawings = page.All("svg", ofClass);
        return drawings.empty() ? nullptr : drawings.front();
    }

    // The left and the right end of the bar with that title.
    static std::pair<double, double> Ends(const XmlElement& page, const std::string& title) {
        for (const XmlElement* bar : page.All("polygon", "bar")) {
            if (bar->text != title) continue;
            std::istringstream points(bar->attributes.at("points"));
            std::vector<double> xs;
            double x = 0;
            double y = 0;
            char comma = 0;
            while (points >> x >> comma >> y) xs.push_back(x);
            return {*std::min_element(xs.begin(), xs.end()),
                    *std::max_element(xs.begin(), xs.end())};
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
        for (const char* element : {"script", "link", "img", "iframe", "a"}) {
            EXPECT_THAT(page.All(element), IsEmpty()) << element;
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
    // The arm is turned by a quarter and stands at 25. The head, at 410 above it, has its x axis
    // along the arm's y, which is -x, its y axis along z, and its z axis along the arm's x, which
    // is y.
    EXPECT_THAT(
        Rows(PageOf(kAssembly), "part"),
        ElementsAre(ElementsAre("Desk lamp", "0", "0", "0", "1, 0, 0", "0, 1, 0", "0, 0, 1"),
                    ElementsAre(" Base", "0", "0", "0", "1, 0, 0", "0, 1, 0", "0, 0, 1"),
                    ElementsAre(" Arm with head", "0", "0", "25", "0, 1, 0", "-1, 0, 0", "0, 0, 1"),
                    ElementsAre("  Arm", "0", "0", "35", "0, 1, 0", "-1, 0, 0", "0, 0, 1"),
                    ElementsAre("  Head", "0", "0", "435", "-1, 0, 0", "0, 0, 1", "0, 1, 0"),
                    ElementsAre(" Screw", "0", "12.5", "-3", "1, 0, 0", "0, 0, 1", "0, -1, 0")));
    // The axle stands at (0,120,-40) with its z axis along y and its y axis along -z; the wheels
    // are 250 to its left and right.
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
    // The head stands straight above the lamp's origin, and the arm below it at 35/435 of the way.
    const auto origin = [&](std::size_t i) -> const XmlElement& {
        return *frames[i]->All("circle").front();
    };
    EXPECT_EQ(number(origin(4), "cx"), number(origin(0), "cx"));
    const double height = number(origin(0), "cy") - number(origin(4), "cy");
    EXPECT_GT(height, 100);
    EXPECT_NEAR(number(origin(0), "cy") - number(origin(3), "cy"), height * 35 / 435, 0.11);
    // Each place has its name, once.
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
    EXPECT_NEAR(e08Right - e08Left, 10 * rank, 0.2);
    EXPECT_NEAR(e08Left - r12Left, 9 * rank, 0.2);
    // An open end goes beyond every bound.
    EXPECT_GT(Ends(page, "R13: 101 – open").second, r12Right + 10);
    // Dates: 1811 days and 16 hours from the start of one to the start of the other, which is a
    // second behind its end; the option's start is 502 days and four hours behind.
    const auto [d01Left, d01Right] = Ends(page, "D01: 2025-01-15 08:00:00 – 2029-12-31 23:59:59");
    const double day = (Ends(page, "D02: 2030-01-01 – open").first - d01Left) / (1811 + 2.0 / 3);
    EXPECT_NEAR(d01Right, Ends(page, "D02: 2030-01-01 – open").first, 0.11);
    EXPECT_NEAR(Ends(page, "E07: 2026-06-01 12:00:00 – open").first - d01Left,
                day * (502 + 1.0 / 6), 0.2);
    EXPECT_THAT(page.Texts("text", "note middle"), Contains("2027"));
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
    EXPECT_EQ(page.All("polygon", "bar").size(), 2U);
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
    EXPECT_EQ(page.All("polygon", "bar").size(), 2U);
}

TEST_F(Report, TakesTheDatesAndRanksThatTheFunctionsTake) {
    // What is an effectivity of its own and hangs on an option has bounds of its own; its end is
    // open where both are.
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
    // Every attribute that should be an instance, or instances, is a text.
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
    EXPECT_THAT(page.All("polygon", "bar"), IsEmpty());
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
    EXPECT_THAT(page.All("script"), IsEmpty());
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
    EXPECT_THAT(page.Texts("p"), Contains("The first 5000 lines."));
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
    // Positions in the whole: the places of tests/host/Tree_test.cpp and the root.
    const auto rows = Rows(page, "part");
    ASSERT_EQ(rows.size(), 28U);
    // The rod assembly stands at (-10,75,60); its z axis is x, so the nut at 185 along it is at
    // 175, its x axis is -z, so -10 along it is +10 in z.
    EXPECT_THAT(rows[1], Contains("-10"));
    EXPECT_THAT(std::vector(rows[2].begin(), rows[2].begin() + 4),
                ElementsAre("  nut", "175", "67.5", "70"));
}

// Rendered by a browser, the page is no empty one: its picture takes many times as much.
TEST_F(Report, IsShownByABrowser) {
    if (std::system("command -v chromium >/dev/null") != 0) GTEST_SKIP() << "there is no chromium";
    const auto sizeOfPicture = [this](const std::string& page) -> std::uintmax_t {
        const std::string command =
            "cd '" + folder.Path() + "' && HOME=. timeout 100 chromium --headless --no-sandbox " +
            "--disable-gpu --hide-scrollbars --window-size=1100,1600 --screenshot=" + page +
            ".png 'file://" + folder.Path() + "/" + page + "' >browser.log 2>&1";
        const int status = std::system(command.c_str());
        EXPECT_EQ(status, 0) << ReadFile(folder / "browser.log");
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
