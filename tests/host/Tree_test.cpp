// `orx tree`.

#include <nlohmann/json.hpp>
#include <set>

#include "HostTest.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string kAssembly = SOURCE_DIRECTORY "/examples/assembly.stp";
const std::string kDatabase = SOURCE_DIRECTORY "/tests/host/trolley.stp";
const std::string kAs1 = SHARED_DATA "/data/as1-oc-214.stp";

// A part of the database with these links.
std::string Part(int number, const std::string& id, const std::string& links) {
    return "#" + std::to_string(number) + "=PART_OBJECT('" + id + "',$,$,$,$," + links +
           ",$,$,$,$);\n";
}

std::string Link(int number, int component) {
    const std::string name = std::to_string(number);
    return "#" + name + "=PART_LINK('L" + name + "',$,#" + std::to_string(component) +
           ",$,$,$,$);\n";
}

class Tree : public HostTest {
  protected:
    OrxResult TreeOf(const std::string& file, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"tree", "-m", file});
        return Orx(options);
    }

    OrxResult TreeOfDatabase(const std::string& data, std::vector<std::string> options = {}) const {
        folder.Write("data.stp", ExchangeFile("cdma", data));
        return TreeOf("data.stp", std::move(options));
    }

    static std::vector<nlohmann::json> Objects(const OrxResult& result) {
        std::vector<nlohmann::json> objects;
        for (const std::string& line : Lines(result.out)) {
            objects.push_back(nlohmann::json::parse(line, nullptr, false));
            EXPECT_TRUE(objects.back().is_object()) << line;
        }
        return objects;
    }
};

}  // namespace

TEST_F(Tree, ShowsTheStructureOfExchangeData) {
    ExpectPrints(TreeOf(kAssembly),
                 "Desk lamp [LA-1]\n"
                 "├── Base [LA-3]\n"
                 "├── Arm with head [LA-2]\n"
                 "│   ├── Arm [LA-4]\n"
                 "│   └── Head [LA-5]\n"
                 "└── Screw [LA-6]\n");
}

TEST_F(Tree, ShowsTheStructureOfADatabaseAndCounts) {
    ExpectPrints(TreeOf(kDatabase),
                 "Hand trolley [TR-100]\n"
                 "├── Frame [TR-110]\n"
                 "├── Axle with wheels [TR-120]\n"
                 "│   ├── Axle [TR-121]\n"
                 "│   └── Wheel, sealed bearing [TR-122] x2\n"
                 "└── Handle [TR-130]\n"
                 "Wheel [TR-122]\n"
                 "Wheel, ball bearing [TR-122]\n");
}

TEST_F(Tree, ShowsThePlacementOfEachOccurrence) {
    // The arm is turned by a quarter about z; the screw's z axis is -y, and its x axis x, so its y
    // axis is z; the head's axes are y and z, so its third one is x.
    ExpectPrints(TreeOf(kAssembly, {"--placements"}),
                 "Desk lamp [LA-1]\n"
                 "├── Base [LA-3]  #202 (1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.)\n"
                 "├── Arm with head [LA-2]  #212 (0.,1.,0.,-1.,0.,0.,0.,0.,1.,0.,0.,25.)\n"
                 "│   ├── Arm [LA-4]  #232 (1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,10.)\n"
                 "│   └── Head [LA-5]  #242 (0.,1.,0.,0.,0.,1.,1.,0.,0.,0.,0.,410.)\n"
                 "└── Screw [LA-6]  #222 (1.,0.,0.,0.,0.,1.,0.,-1.,0.,0.,12.5,-3.)\n");
}

TEST_F(Tree, ShowsThePlacementsOfLinks) {
    // The y axis is the cross product of z and x.
    const std::vector<std::string> lines = Lines(TreeOf(kDatabase, {"--placements"}).out);
    ASSERT_EQ(lines.size(), 9U);
    EXPECT_EQ(lines[2],
              "├── Axle with wheels [TR-120]  #22 (1.,0.,0.,0.,0.,-1.,0.,1.,0.,0.,120.,-40.)");
    EXPECT_EQ(lines[4],
              "│   ├── Wheel, sealed bearing [TR-122]  #25 "
              "(0.,0.,1.,0.,1.,0.,-1.,0.,0.,-250.,0.,0.)");
    EXPECT_EQ(lines[5],
              "│   └── Wheel, sealed bearing [TR-122]  #26 "
              "(0.,0.,1.,0.,-1.,0.,1.,0.,0.,250.,0.,0.)");
    EXPECT_EQ(lines[6], "└── Handle [TR-130]  #23 (1.,0.,0.,0.,0.8,-0.6,0.,0.6,0.8,0.,0.,900.)");
}

TEST_F(Tree, PlacesALinkThatSaysNothingAtTheOrigin) {
    const OrxResult result =
        TreeOfDatabase(Part(1, "A", "(#3)") + Part(2, "B", "$") + Link(3, 2), {"--placements"});
    ExpectPrints(result, "A\n└── B  #3 (1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.)\n");
}

TEST_F(Tree, CountsAComponentOnceWhereverItsOccurrencesStand) {
    const OrxResult result =
        TreeOfDatabase(Part(1, "A", "(#11,#12,#13)") + Part(2, "B", "$") + Part(3, "C", "$") +
                       Link(11, 2) + Link(12, 3) + Link(13, 2));
    ExpectPrints(result, "A\n├── B x2\n└── C\n");
}

TEST_F(Tree, ShowsSharedAssembliesEachTime) {
    const OrxResult result =
        TreeOfDatabase(Part(1, "A", "(#11,#12)") + Part(2, "B", "(#13)") + Part(3, "C", "(#14)") +
                       Part(4, "D", "(#15)") + Part(5, "E", "$") + Link(11, 2) + Link(12, 3) +
                       Link(13, 4) + Link(14, 4) + Link(15, 5));
    ExpectPrints(result, "A\n├── B\n│   └── D\n│       └── E\n└── C\n    └── D\n        └── E\n");
}

TEST_F(Tree, EndsAtTheDepth) {
    ExpectPrints(TreeOf(kAssembly, {"--depth", "1"}),
                 "Desk lamp [LA-1]\n"
                 "├── Base [LA-3]\n"
                 "├── Arm with head [LA-2]  (2 occurrences below: --depth)\n"
                 "└── Screw [LA-6]\n");
    ExpectPrints(TreeOf(kAssembly, {"--depth", "0"}),
                 "Desk lamp [LA-1]  (3 occurrences below: --depth)\n");
    EXPECT_EQ(TreeOf(kAssembly, {"--depth", "-1"}).status, 2);
    EXPECT_EQ(TreeOf(kAssembly, {"--depth", "all"}).status, 2);
}

TEST_F(Tree, EndsAtAPartOfItself) {
    ExpectPrints(
        TreeOfDatabase(Part(1, "A", "(#11)") + Part(2, "B", "(#12)") + Link(11, 2) + Link(12, 2)),
        "A\n└── B\n    └── B  (a part of itself: not shown again)\n");
    // A circle without a beginning is shown from its first part.
    ExpectPrints(
        TreeOfDatabase(Part(1, "A", "(#11)") + Part(2, "B", "(#12)") + Link(11, 2) + Link(12, 1)),
        "A\n└── B\n    └── A  (a part of itself: not shown again)\n");
}

TEST_F(Tree, EndsForDataOfAnyDepth) {
    std::string data;
    constexpr int kParts = 20'000;
    for (int i = 1; i < kParts; ++i) {
        data += Part(i, "P", "(#" + std::to_string(kParts + i) + ")") + Link(kParts + i, i + 1);
    }
    data += Part(kParts, "last", "$");
    const OrxResult shallow = TreeOfDatabase(data);
    EXPECT_EQ(shallow.status, 0);
    EXPECT_EQ(Lines(shallow.out).size(), 101U);
    EXPECT_THAT(Lines(shallow.out).back(), HasSubstr("(1 occurrence below: --depth)"));
    const OrxResult whole = TreeOf("data.stp", {"--json", "--depth", "1000000"});
    EXPECT_EQ(whole.status, 0);
    EXPECT_EQ(Lines(whole.out).size(), static_cast<std::size_t>(kParts));
    EXPECT_THAT(Lines(whole.out).back(), HasSubstr("\"last\""));
}

TEST_F(Tree, IsCutWhereItHasMoreLinesThanAnybodyReads) {
    // Each of 40 assemblies uses the next one twice, in different places.
    std::string data;
    constexpr int kLevels = 40;
    for (int i = 1; i <= kLevels; ++i) {
        data +=
            Part(i, "P", "(#" + std::to_string(100 + i) + ",#" + std::to_string(200 + i) + ")") +
            Link(100 + i, i + 1) + Link(200 + i, i + 1);
    }
    data += Part(kLevels + 1, "last", "$");
    // With an occurrence in each line there are 1 + 2 + 4 + ... + 2^40 of them.
    const OrxResult cut = TreeOfDatabase(data, {"--placements", "--lines", "1000"});
    EXPECT_EQ(cut.status, 0);
    ASSERT_EQ(Lines(cut.out).size(), 1001U);
    EXPECT_EQ(Lines(cut.out).back(), "the first 1000 lines of 2199023255551 (--lines shows more)");
    const OrxResult json = TreeOf("data.stp", {"--placements", "--lines", "3", "--json"});
    ASSERT_EQ(Lines(json.out).size(), 4U);
    EXPECT_EQ(nlohmann::json::parse(Lines(json.out).back()),
              nlohmann::json::parse(R"({"model": "data", "remark": "lines", "lines": 3,
                                        "places": 2199023255551})"));
    // Up to a depth there are fewer; together they are one line each.
    EXPECT_EQ(
        Lines(TreeOf("data.stp", {"--placements", "--lines", "3", "--depth", "4"}).out).back(),
        "the first 3 lines of 31 (--lines shows more)");
    EXPECT_EQ(
        Lines(TreeOf("data.stp", {"--placements", "--lines", "31", "--depth", "4"}).out).size(),
        31U);
    EXPECT_EQ(Lines(TreeOf("data.stp", {"--lines", "3"}).out).back(),
              "the first 3 lines of 41 (--lines shows more)");
    // What is a part of itself has no such number.
    EXPECT_EQ(Lines(TreeOfDatabase(
                        Part(1, "A", "(#11)") + Part(2, "B", "(#12)") + Link(11, 2) + Link(12, 2),
                        {"--lines", "2"})
                        .out)
                  .back(),
              "the first 2 lines (--lines shows more)");
}

TEST_F(Tree, LeavesOutLinksThatLackAnEnd) {
    ExpectPrints(TreeOfDatabase(Part(1, "A", "(#3,#4)") + "#3=PART_LINK('L',#1,$,$,$,$,$);\n" +
                                Link(4, 2) + Part(2, "B", "$")),
                 "A\n└── B\n");
}

TEST_F(Tree, NamesPartsByWhatTheyHave) {
    ExpectPrints(TreeOfDatabase("#1=PART_OBJECT('N-1',$,$,$,'Bolt',$,$,$,$,$);\n"
                                "#2=PART_OBJECT('N-2',$,$,$,'',$,$,$,$,$);\n"
                                "#3=PART_OBJECT('',$,$,$,$,$,$,$,$,$);\n"
                                "#4=PART_OBJECT('same',$,$,$,'same',$,$,$,$,$);\n"),
                 "Bolt [N-1]\nN-2\n#3\nsame\n");
}

TEST_F(Tree, WritesNamesAsUtf8AndNoControlCharacters) {
    ExpectPrints(TreeOfDatabase("#1=PART_OBJECT('1',$,$,$,'\\X\\C9crou \\X2\\20AC\\X0\\ "
                                "\\X\\1B[31m\\X\\9B\\X\\0A',$,$,$,$,$);\n"),
                 "\u00C9crou \u20AC \uFFFD[31m\uFFFD\uFFFD [1]\n");
}

TEST_F(Tree, SaysThatThereAreNoParts) {
    folder.Write("none.stp", ExchangeFile("AUTOMOTIVE_DESIGN", ""));
    ExpectPrints(TreeOf("none.stp"), "no parts: model none holds no PRODUCT_DEFINITION\n");
    ExpectPrints(TreeOfDatabase(""), "no parts: model data holds no part_object\n");
    ExpectPrints(TreeOfDatabase("", {"--json"}), "");
}

TEST_F(Tree, TellsModelsApart) {
    ExpectPrints(Orx({"tree", "-m", "db.stp", "-m", "twin=db.stp"}),
                 "model db\nBolt M6 [P-1]\nP-2\nmodel twin\nBolt M6 [P-1]\nP-2\n");
}

TEST_F(Tree, IsOneObjectALineInJson) {
    const std::vector<nlohmann::json> lines = Objects(TreeOf(kDatabase, {"--json"}));
    ASSERT_EQ(lines.size(), 8U);
    EXPECT_EQ(lines[0], nlohmann::json::parse(R"({"model": "trolley", "level": 0, "part": "#1",
        "parent": null, "id": "TR-100", "name": "Hand trolley", "count": 1, "components": 3})"));
    EXPECT_EQ(lines[4], nlohmann::json::parse(R"({"model": "trolley", "level": 2, "part": "#7",
        "parent": "#3", "id": "TR-122", "name": "Wheel, sealed bearing", "count": 2,
        "components": 0})"));
    const std::vector<nlohmann::json> placed =
        Objects(TreeOf(kDatabase, {"--json", "--placements", "--depth", "1"}));
    ASSERT_EQ(placed.size(), 6U);
    EXPECT_EQ(placed[2]["occurrence"], "#22");
    EXPECT_EQ(
        placed[2]["placement"],
        nlohmann::json::parse("[1.0, 0.0, 0.0, 0.0, 0.0, -1.0, 0.0, 1.0, 0.0, 0.0, 120.0, -40.0]"));
    EXPECT_EQ(placed[2]["remark"], "depth");
}

TEST_F(Tree, WritesPlacementsThatAreNotFiniteAsJsonToo) {
    const OrxResult result =
        TreeOfDatabase(Part(1, "A", "(#3)") + Part(2, "B", "$") +
                           "#3=PART_LINK('L',$,#2,(1.,2.,3.),(0.,0.,0.),$,$);\n",
                       {"--json", "--placements"});
    const std::vector<nlohmann::json> lines = Objects(result);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[1]["placement"][11], 3.0);
    EXPECT_TRUE(lines[1]["placement"][6].is_string());
}

TEST_F(Tree, HasNoColoursWhereNoTerminalIs) {
    EXPECT_EQ(Orx({"tree", "-m", kAssembly}, "", {"TERM=xterm", "NO_COLOR="}).out.find('\033'),
              std::string::npos);
}

TEST_F(Tree, FailsWithoutAModelAndForAFileThatCannotBeRead) {
    EXPECT_EQ(Orx({"tree"}).status, 2);
    EXPECT_EQ(TreeOf("missing.stp").status, 2);
}

TEST_F(Tree, ShowsARealAssembly) {
    if (!std::ifstream(kAs1)) GTEST_SKIP() << kAs1 << " is not there";
    ExpectPrints(TreeOf(kAs1),
                 "as1\n"
                 "├── rod-assembly\n"
                 "│   ├── nut x2\n"
                 "│   └── rod\n"
                 "├── l-bracket-assembly x2\n"
                 "│   ├── nut-bolt-assembly x3\n"
                 "│   │   ├── bolt\n"
                 "│   │   └── nut\n"
                 "│   └── l-bracket\n"
                 "└── plate\n");
    // Thirteen occurrences in the data, in the places of the tree: 3 in the rod assembly, 10 in
    // each of the two bracket assemblies, and these four themselves.
    const std::vector<nlohmann::json> lines = Objects(TreeOf(kAs1, {"--json", "--placements"}));
    std::set<std::string> links;
    std::size_t places = 0;
    for (const nlohmann::json& line : lines) {
        if (line["level"] == 0) continue;
        links.insert(line["occurrence"].get<std::string>());
        ++places;
    }
    EXPECT_EQ(links.size(), 13U);
    EXPECT_EQ(places, 3U + 2 * 10 + 4);
}
