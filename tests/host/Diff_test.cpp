// `orx diff` and `orx check`.

#include "HostTest.h"

using testing::HasSubstr;

namespace {

class Diff : public HostTest {
  protected:
    Diff() {
        folder.Write("same.stp", Renumbered(Database()));
        std::string changed = Database();
        changed.replace(changed.find("Bolt M6"), 7, "Bolt M8");
        folder.Write("changed.stp", changed);
    }

    // #1 becomes #91, and so on.
    static std::string Renumbered(std::string text) {
        for (std::size_t at = text.find('#'); at != std::string::npos;
             at = text.find('#', at + 1)) {
            text.insert(at + 1, "9");
        }
        return text;
    }
};

using Check = HostTest;

}  // namespace

TEST_F(Diff, ExitsWith0AndSaysNothingWhenDataSetsAreEqual) {
    const OrxResult result = Orx({"diff", "db.stp", "same.stp"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
}

TEST_F(Diff, ExitsWith1AndPrintsALineForEachDifference) {
    const OrxResult result = Orx({"diff", "db.stp", "changed.stp"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "part_object P-1: S_DESC 'Bolt M6' against 'Bolt M8'\n");
}

TEST_F(Diff, NamesTheFileThatAloneHasAnInstance) {
    folder.Write("more.stp", ExchangeFile("cdma", "#7=MODEL_OBJECT('frame',$,$,$,$,$);\n"));
    folder.Write("none.stp", ExchangeFile("cdma", ""));
    EXPECT_EQ(Orx({"diff", "more.stp", "none.stp"}).out,
              "model_object frame: only in more.stp (#7)\n");
    EXPECT_EQ(Orx({"diff", "none.stp", "more.stp"}).out,
              "model_object frame: only in more.stp (#7)\n");
}

TEST_F(Diff, PrintsObjectsWithJson) {
    EXPECT_EQ(Orx({"diff", "--json", "db.stp", "changed.stp"}).out,
              "{\"type\":\"part_object\",\"label\":\"P-1\",\"attribute\":\"S_DESC\","
              "\"left\":\"'Bolt M6'\",\"right\":\"'Bolt M8'\"}\n");
}

TEST_F(Diff, ExitsWith2WhenAFileCannotBeRead) {
    const OrxResult result = Orx({"diff", "db.stp", "missing.stp"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("missing.stp"));
}

TEST_F(Check, ExitsWith0WhenADataSetKeepsToItsSchema) {
    const OrxResult result = Orx({"check", "db.stp"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
}

TEST_F(Check, ExitsWith1AndNamesInstanceAndAttribute) {
    folder.Write("bad.stp", ExchangeFile("cdma", "#7=MODEL_OBJECT($,$,$,$,$,$);\n"));
    const OrxResult result = Orx({"check", "db.stp", "bad.stp"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "bad.stp: #7 MODEL_OBJECT.S_NAME: is mandatory and unset\n");
}
