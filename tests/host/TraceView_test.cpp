// The trace that orx writes: which statements, which functions, how deep.

#include "HostTest.h"

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string kCount =
    "SdaiPrimitiveH GetMemberCount -> {\n"
    "   SdaiPrimitiveH GetMemberCount -> Taille0\n"
    "SdaiPrimitiveH GetMemberCount -> }\n";

class TraceView : public HostTest {
  protected:
    // The trace of a script.
    std::string TraceOf(const std::string& script, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"--quiet", "-m", "assembly.stp", "-t", "trace.txt"});
        EXPECT_EQ(Run(script, options).err, "");
        return ReadFile(folder / "trace.txt");
    }
};

}  // namespace

TEST_F(TraceView, SaysForWhatItIs) {
    EXPECT_EQ(TraceOf("1\nLET n =  GetMemberCount(())\n"), "== 2:10 GetMemberCount(())\n" + kCount);
    EXPECT_EQ(TraceOf("(1, GetMemberCount(()),\n GetMemberCount(GetMemberCount(())))\n"),
              "== 1:5 GetMemberCount(())\n" + kCount + "== 2:17 GetMemberCount(())\n" + kCount +
                  "== 2:2 GetMemberCount(0)\n" + kCount);
}

TEST_F(TraceView, SaysForWhichMemberItIs) {
    const std::string trace =
        TraceOf("EACH p IN CARTESIAN_POINT WHERE GetMemberCount($) = 0: p; GetMemberCount(p)\n");
    EXPECT_EQ(trace, "== 1:33 GetMemberCount($)\n" + kCount + "== 1:59 GetMemberCount(#10)\n" +
                         kCount + "== 1:33 GetMemberCount($)\n" + kCount +
                         "== 1:59 GetMemberCount(#14)\n" + kCount);
}

TEST_F(TraceView, ShortensLongArgumentsAndNamesModels) {
    EXPECT_THAT(TraceOf("GetMemberCount('" + std::string(500, 'x') + "')\n"),
                HasSubstr("== 1:1 GetMemberCount('" + std::string(96, 'x') + "...)\n"));
    EXPECT_THAT(TraceOf("BuildDatedEff('x', @assembly)\n"),
                HasSubstr("== 1:1 BuildDatedEff('x', @assembly)\n"));
}

TEST_F(TraceView, ShowsSomeFunctionsAlone) {
    const std::string script = "GetMemberCount(())\nGetItem(1, #23)\nGetMemberCount(())\n";
    EXPECT_EQ(TraceOf(script, {"--trace-only", "GetMemberCount"}),
              "== 1:1 GetMemberCount(())\n" + kCount + "== 3:1 GetMemberCount(())\n" + kCount);
    EXPECT_THAT(TraceOf(script, {"--trace-only", "GetItem"}),
                AllOf(HasSubstr("== 2:1 GetItem(1, #23)\nSdaiPrimitiveH GetItem -> {\n"),
                      EndsWith("SdaiPrimitiveH GetItem -> }\n"), Not(HasSubstr("Count"))));
    EXPECT_EQ(TraceOf(script, {"--trace-only", "GetItem", "--trace-only", "GetMemberCount"}),
              TraceOf(script));
    EXPECT_EQ(TraceOf(script, {"--trace-only", "IsFree"}), "");
}

// IsaNARVORepProperty calls IsaNARVOModel with the name of a document file.
class NestedTraceView : public TraceView {
  protected:
    NestedTraceView() {
        folder.Write("assembly.stp",
                     ExchangeFile("AUTOMOTIVE_DESIGN",
                                  "#20=DOCUMENT_FILE('wheel.model','',$,$,'','');\n"
                                  "#21=PROPERTY_DEFINITION('',$,#20);\n"
                                  "#22=PROPERTY_DEFINITION_REPRESENTATION(#21,$);\n"));
    }

    // The trace lines of a function.
    static std::string Of(const std::string& function, const std::string& trace) {
        std::string part;
        for (const std::string& line : Lines(trace)) {
            const bool isHeader = line.find("== ") == 0;
            if (isHeader || line.find(' ' + function + " ->") != std::string::npos) {
                part += line + "\n";
            }
        }
        return part;
    }

    const std::string script = "IsaNARVORepProperty(#22)\n";
};

TEST_F(NestedTraceView, ShowsAFunctionWhereverItIsCalled) {
    const std::string all = TraceOf(script);
    ASSERT_THAT(all, HasSubstr("\n   SdaiPrimitiveH IsaNARVOModel -> {\n"));
    ASSERT_THAT(all, EndsWith("\nSdaiPrimitiveH IsaNARVORepProperty -> }\n"));
    const std::string nested = TraceOf(script, {"--trace-only", "IsaNARVOModel"});
    EXPECT_EQ(nested, Of("IsaNARVOModel", all));
    EXPECT_EQ(TraceOf(script, {"--trace-only", "IsaNARVORepProperty"}), all);
    // The depth counts from the function that is shown.
    EXPECT_EQ(TraceOf(script, {"--trace-only", "IsaNARVOModel", "--trace-depth", "1"}), nested);
}

TEST_F(NestedTraceView, GoesAsDeepAsItIsAsked) {
    const std::string all = TraceOf(script);
    EXPECT_EQ(TraceOf(script, {"--trace-depth", "1"}), Of("IsaNARVORepProperty", all));
    EXPECT_EQ(TraceOf(script, {"--trace-depth", "2"}), all);
}

TEST_F(TraceView, GoesToTheStandardErrorStreamUnlessAFileIsNamed) {
    EXPECT_EQ(Call({"--trace-only", "GetMemberCount", "GetMemberCount(())"}).err,
              "== 1:1 GetMemberCount(())\n" + kCount);
    EXPECT_EQ(Call({"--trace-depth", "1", "GetMemberCount(())"}).err,
              "== 1:1 GetMemberCount(())\n" + kCount);
    const OrxResult unknown = Call({"--trace-only", "GetMembrCount", "1"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.err,
              "orx: unknown function 'GetMembrCount'; did you mean 'GetMemberCount'?\n");
}

TEST_F(TraceView, IsSwitchedInTheShell) {
    const auto type = [this](const std::string& lines) { return Orx({"shell"}, lines); };
    const std::string call = "GetMemberCount(())\n";
    const auto expected = [](int line) {
        return "== " + std::to_string(line) + ":1 GetMemberCount(())\n" + kCount;
    };
    EXPECT_EQ(type(call + "trace on\n" + call + "trace off\n" + call + "trace on\n" + call).err,
              expected(3) + expected(7));
    EXPECT_EQ(type("trace only IsFree\n" + call + "trace all\n" + call).err, expected(4));
    EXPECT_EQ(type("trace only IsFree GetMemberCount\n" + call).err, expected(2));
    EXPECT_EQ(type("trace depth 1\n" + call).err, expected(2));
    for (const std::string wrong : {"trace", "trace maybe", "trace only", "trace only X",
                                    "trace depth", "trace depth x", "trace on file"}) {
        const OrxResult result = type(wrong + "\n1\n");
        EXPECT_EQ(result.out, "1\n") << wrong;
        EXPECT_THAT(result.err, testing::StartsWith("orx: ")) << wrong;
    }
}

TEST_F(TraceView, OfTheEnvironmentIsThatOfTheFunctionsAlone) {
    EXPECT_EQ(Orx({"call", "GetMemberCount(())"}, "", {"KOR_TRACE=12"}).err, kCount);
}
