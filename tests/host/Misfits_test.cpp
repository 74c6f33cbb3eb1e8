// Arguments of another kind than in the export table.

#include "HostTest.h"

using testing::HasSubstr;

namespace {

class Misfits : public HostTest {
  protected:
    static std::string Warning(const std::string& place, const std::string& text) {
        return "orx: warning: <command line>:" + place + ": " + text + "\n";
    }
};

}  // namespace

TEST_F(Misfits, AreWarnedOfAndKeepTheResult) {
    const OrxResult result = Call({"-m", "parts.stp", "IsFree('x', 'NAME')", "GetMemberCount(#3)"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(
        result.out,
        Call({"--quiet", "-m", "parts.stp", "IsFree('x', 'NAME')", "GetMemberCount(#3)"}).out);
    EXPECT_EQ(result.err,
              Warning("1:8", "argument 1 is a string, IsFree takes an instance") +
                  Warning("2:16", "argument 1 is an instance, GetMemberCount takes an aggregate"));
}

TEST_F(Misfits, AreToldOnceAStatement) {
    EXPECT_EQ(Call({"-m", "parts.stp", "EACH p IN PRODUCT: IsFree(p.ID, 7)",
                    "(IsFree(.T., 1), IsFree(2, 3))"})
                  .err,
              Warning("1:29", "argument 1 is a string, IsFree takes an instance") +
                  Warning("2:9", "argument 1 is a logical, IsFree takes an instance"));
}

TEST_F(Misfits, AreNotWhatConvertsOrIsUnset) {
    for (const std::string call :
         {"Minus(1)", "Minus(1.5)", "ORXTrunc('text', 2.)", "IsFree($, 'NAME')", "GetItem(1, #3)",
          "GetUniqId('x')", "GetUniqId(#3)", "GetDate('x')", "BuildDatedEff('x', @)",
          "ORXTrunc(.MILLI., 2)"}) {
        EXPECT_EQ(Call({"-m", "parts.stp", call}).err, "") << call;
    }
}

TEST_F(Misfits, AreErrorsWhereThatIsAsked) {
    const OrxResult result = Call({"--strict", "1", "Minus('x')", "2"});
    EXPECT_EQ(result.out, "1\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orx: <command line>:2:7: argument 1 is a string, Minus takes a real\n");
    EXPECT_EQ(Call({"--strict", "--quiet", "1"}).status, 2);
}

TEST_F(Misfits, AreToldInTheShell) {
    const OrxResult result = Orx({"shell"}, "1\nMinus('x')\n");
    EXPECT_EQ(result.err, "orx: warning: 2:7: argument 1 is a string, Minus takes a real\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(Orx({"shell", "--quiet"}, "Minus('x')\n").err, "");
    EXPECT_THAT(Orx({"shell", "--strict"}, "Minus('x')\n").err, HasSubstr("orx: 1:7: argument 1"));
}
