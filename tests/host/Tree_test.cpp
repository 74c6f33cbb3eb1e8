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

// A part of the database with links.
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
    // The arm is turned by a quarter about z. The screw's z axis is -y and its x axis x, so its y
    // axis is z. The head's x and y axes are y and z, so its z axis is x.
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
    // A cycle without a root is shown from its first part.
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
    // One line per occurrence is 1 + 2 + 4 + ... + 2^40 lines.
    const OrxResult cut = TreeOfDatabase(data, {"--placements", "--lines", "1000"});
    EXPECT_EQ(cut.status, 0);
    ASSERT_EQ(Lines(cut.out).size(), 1001U);
    EXPECT_EQ(Lines(cut.out).back(), "the first 1000 lines of 2199023255551 (--lines shows more)");
    const OrxResult json = TreeOf("data.stp", {"--placements", "--lines", "3", "--json"});
    ASSERT_EQ(Lines(json.out).size(), 4U);
    EXPECT_EQ(nlohmann::json::parse(Lines(json.out).back()),
              nlohmann::json::parse(R"({"model": "data", "remark": "lines", "lines": 3,
                                        "places": 2199023255551})"));
    // Fewer lines down to a depth; without placements, equal parts share a line.
    EXPECT_EQ(
        Lines(TreeOf("data.stp", {"--placements", "--lines", "3", "--depth", "4"}).out).back(),
        "the first 3 lines of 31 (--lines shows more)");
    EXPECT_EQ(
        Lines(TreeOf("data.stp", {"--placements", "--lines", "31", "--depth", "4"}).out).size(),
        31U);
    EXPECT_EQ(Lines(TreeOf("data.stp", {"--lines", "3"}).out).back(),
              "the first 3 lines of 41 (--lines shows more)");
    // If a part contains itself, the number of lines is not known.
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
    // The data contain thirteen occurrences, which the tree shows in several places: 3 in the rod
    // assembly, 10 in each of the two bracket assemblies, and 4 below the root.
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

// ---- Names, placements in the root, one part, rows

TEST_F(Tree, NamesOccurrences) {
    ExpectPrints(TreeOf(kAssembly, {"--names"}),
                 "Desk lamp [LA-1]\n"
                 "├── Base [LA-3]  'base'\n"
                 "├── Arm with head [LA-2]  'arm'\n"
                 "│   ├── Arm [LA-4]  'tube'\n"
                 "│   └── Head [LA-5]  'head'\n"
                 "└── Screw [LA-6]  'screw'\n");
    // Links of a database have ids; two links to one part are two lines.
    ExpectPrints(
        TreeOfDatabase(Part(1, "A", "(#3,#4)") + Part(2, "B", "$") + Link(3, 2) + Link(4, 2),
                       {"--names"}),
        "A\n├── B  'L3'\n└── B  'L4'\n");
}

TEST_F(Tree, PlacesOccurrencesInTheRoot) {
    // The arm is turned by a quarter about z, x to y and y to -x, and raised by 25. The tube is 10
    // above it. The head's x, y and z axes, which are y, z and x in the arm, are -x, z and y in the
    // lamp; it is 410 above the arm.
    ExpectPrints(TreeOf(kAssembly, {"--absolute"}),
                 "Desk lamp [LA-1]\n"
                 "├── Base [LA-3]  #202 (1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.)\n"
                 "├── Arm with head [LA-2]  #212 (0.,1.,0.,-1.,0.,0.,0.,0.,1.,0.,0.,25.)\n"
                 "│   ├── Arm [LA-4]  #232 (0.,1.,0.,-1.,0.,0.,0.,0.,1.,0.,0.,35.)\n"
                 "│   └── Head [LA-5]  #242 (-1.,0.,0.,0.,0.,1.,0.,1.,0.,0.,0.,435.)\n"
                 "└── Screw [LA-6]  #222 (1.,0.,0.,0.,0.,1.,0.,-1.,0.,0.,12.5,-3.)\n");
}

TEST_F(Tree, BeginsWithAPart) {
    const std::string arm = "Arm with head [LA-2]\n├── Arm [LA-4]\n└── Head [LA-5]\n";
    for (const std::string name : {"LA-2", "Arm with head", "#112"}) {
        ExpectPrints(TreeOf(kAssembly, {"--root", name}), arm);
    }
    const OrxResult unknown = TreeOf(kAssembly, {"--root", "LA-22"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.err,
              "orx: no part has the id, the name or the instance 'LA-22'; did you mean 'LA-2'?\n");
}

TEST_F(Tree, WritesRows) {
    ExpectPrints(TreeOf(kAssembly, {"--csv", "--root", "LA-2"}),
                 "level,part,parent,id,name,count\n"
                 "0,#112,,LA-2,Arm with head,1\n"
                 "1,#132,#112,LA-4,Arm,1\n"
                 "1,#142,#112,LA-5,Head,1\n");
    ExpectPrints(TreeOf(kAssembly, {"--csv", "--absolute", "--root", "LA-2"}),
                 "level,part,parent,id,name,count,occurrence,occurrence name,"
                 "x1,x2,x3,y1,y2,y3,z1,z2,z3,t1,t2,t3\n"
                 "0,#112,,LA-2,Arm with head,1,,,,,,,,,,,,,,\n"
                 "1,#132,#112,LA-4,Arm,1,#232,tube,1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,10.\n"
                 "1,#142,#112,LA-5,Head,1,#242,head,0.,1.,0.,0.,0.,1.,1.,0.,0.,0.,0.,410.\n");
}

// ---- The parts list

TEST_F(Tree, TotalsPartsOverAllLevels) {
    // Two B and a C in A; three D in B, a D in C; so 2 x 3 + 1 of D.
    const std::string data = Part(1, "A", "(#11,#12,#13)") + Part(2, "B", "(#14,#15,#16)") +
                             Part(3, "C", "(#17)") + Part(4, "D", "$") + Link(11, 2) + Link(12, 2) +
                             Link(13, 3) + Link(14, 4) + Link(15, 4) + Link(16, 4) + Link(17, 4);
    folder.Write("data.stp", ExchangeFile("cdma", data));
    ExpectPrints(Orx({"bom", "data.stp"}), "2\tB\tB\t#2\tA\n1\tC\tC\t#3\tA\n7\tD\tD\t#4\tA\n");
    ExpectPrints(Orx({"bom", "--root", "B", "data.stp"}), "3\tD\tD\t#4\tB\n");
    ExpectPrints(Orx({"bom", "--root", "D", "data.stp"}), "");
    ExpectPrints(Orx({"bom", "--csv", "--root", "C", "data.stp"}),
                 "quantity,id,name,part,of\n1,D,D,#4,C\n");
    const std::vector<nlohmann::json> objects = Objects(Orx({"bom", "--json", "data.stp"}));
    ASSERT_EQ(objects.size(), 3U);
    EXPECT_EQ(objects[2]["quantity"], 7);
    EXPECT_EQ(objects[2]["part"], "#4");
    EXPECT_EQ(objects[2]["of"], "#1");
}

TEST_F(Tree, ListsThePartsOfEachRoot) {
    ExpectPrints(Orx({"bom", kAssembly}),
                 "1\tLA-2\tArm with head\t#112\tDesk lamp\n"
                 "1\tLA-3\tBase\t#122\tDesk lamp\n"
                 "1\tLA-4\tArm\t#132\tDesk lamp\n"
                 "1\tLA-5\tHead\t#142\tDesk lamp\n"
                 "1\tLA-6\tScrew\t#152\tDesk lamp\n");
}

TEST_F(Tree, LeavesOutAPartsListThatHasNoEnd) {
    // A and B contain each other; C contains D.
    folder.Write("data.stp", ExchangeFile("cdma", Part(1, "A", "(#11)") + Part(2, "B", "(#12)") +
                                                      Part(3, "C", "(#13)") + Part(4, "D", "$") +
                                                      Link(11, 2) + Link(12, 1) + Link(13, 4)));
    const OrxResult result = Orx({"bom", "data.stp"});
    EXPECT_EQ(result.out, "1\tD\tD\t#4\tC\n");
    EXPECT_EQ(result.err, "orx: 'A' is left out: a part of it is a part of itself\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(Tree, CountsBeyondWhatCanBeWalked) {
    // Each of 60 levels contains two of the next: 2^60 of the last.
    std::string data;
    for (int i = 1; i <= 60; ++i) {
        const int first = 100 + 2 * i;
        data += Part(i, "P" + std::to_string(i),
                     "(#" + std::to_string(first) + ",#" + std::to_string(first + 1) + ")") +
                Link(first, i + 1) + Link(first + 1, i + 1);
    }
    folder.Write("data.stp", ExchangeFile("cdma", data + Part(61, "P61", "$")));
    const std::vector<nlohmann::json> objects = Objects(Orx({"bom", "--json", "data.stp"}));
    ASSERT_EQ(objects.size(), 60U);
    EXPECT_EQ(objects[0]["quantity"], 2);
    EXPECT_EQ(objects[39]["quantity"], 1099511627776);  // 2^40
    EXPECT_EQ(objects[59]["quantity"].get<double>(), 1152921504606846976.0);
}
