// KORPSNTrace: scopes, lines and what goes into the file.

#include <gmock/gmock.h>

#include <filesystem>
#include <iomanip>
#include <string>

#include "KORPSNTrace.h"
#include "Orx.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::IsEmpty;

TEST(TraceLine, OfEachScopeIsItsOwn) {
    TraceCapture capture;
    {
        KORPSNTrace outer("outer ->", 12, 0);
        std::ostream& line = outer.GetLigne().GetStream();
        line << "begun";
        {
            KORPSNTrace inner("inner ->", 12, 0);
            inner.GetLigne().GetStream() << "another" << std::endl;
            inner.Out();
        }
        line << " and ended" << std::endl;
        outer.Out();
    }
    EXPECT_THAT(capture.Lines(), ElementsAre("outer -> {", "   inner -> {", "another",
                                             "   inner -> }", "begun and ended", "outer -> }"));
}

TEST(TraceLine, ShowsTheLineBreaksOfAValue) {
    TraceCapture capture;
    {
        KORPSNTrace trace("t ->", 12, 0);
        trace.GetLigne().GetStream() << "value >a\nt -> forged\r\nb\n<" << std::endl;
        trace.Out();
        trace.GetLigne().GetStream() << "ends in a break\n" << std::endl;
        trace.Out();
    }
    EXPECT_THAT(capture.Lines(), ElementsAre("t -> {", "value >a\\nt -> forged\\r\\nb\\n<",
                                             "ends in a break\\n", "t -> }"));
}

TEST(TraceLine, EndsInOneBreakAndIsHandedOverOnce) {
    TraceCapture capture;
    {
        KORPSNTrace trace("t ->", 12, 0);
        trace.GetLigne().GetStream() << "without a break";
        trace.Out();
        trace.Out();
        trace.GetLigne();
        trace.Out();
        trace.GetLigne().GetStream() << "dropped";
        trace.GetLigne().GetStream() << "kept\n";
        trace.Out();
        trace.GetLigne().GetStream() << std::endl;
        trace.Out();
        trace.GetLigne().GetStream() << "never handed over";
    }
    EXPECT_THAT(capture.Lines(), ElementsAre("t -> {", "without a break", "kept", "", "t -> }"));
}

TEST(TraceLine, BeginsWithTheFormatOfANewStream) {
    TraceCapture capture;
    for (int scope = 0; scope < 2; ++scope) {
        KORPSNTrace trace("t ->", 12, 0);
        trace.GetLigne().GetStream() << 255 << ' ' << 0.1234567 << std::hex << std::setprecision(2)
                                     << std::setfill('*') << std::setw(9) << "" << '\n';
        trace.Out();
        trace.GetLigne().GetStream() << 255 << ' ' << 0.1234567 << std::setw(2) << 1 << '\n';
        trace.Out();
    }
    EXPECT_THAT(capture.Lines(),
                ElementsAre("t -> {", "255 0.123457*********", "255 0.123457 1", "t -> }",  //
                            "t -> {", "255 0.123457*********", "255 0.123457 1", "t -> }"));
}

TEST(TraceLine, IsLentToAScopeThatWasOpenedBelowTheLevel) {
    TraceCapture capture(11);
    {
        KORPSNTrace trace("t ->", 12, 0);
        trace.GetLigne().GetStream() << "a line\n";
        trace.Out();
        EXPECT_EQ(KORPSNTrace::GetIndent(), 0);
    }
    EXPECT_THAT(capture.Lines(), ElementsAre("a line"));
}

TEST(TraceFile, IsEmptiedWhenItIsConfiguredAndAppendedToFromThenOn) {
    const TemporaryDirectory folder;
    const std::string file = folder.Write("trace", "an older trace\n");
    ASSERT_TRUE(KORPSNTrace::Configure(12, file.c_str()));
    EXPECT_EQ(ReadFile(file), "");
    { const KORPSNTrace trace("t ->", 12, 0); }
    folder.Write("more", "");
    std::ofstream(file, std::ios::app) << "of another\n";
    { const KORPSNTrace trace("t ->", 12, 0); }
    KORPSNTrace::Configure(0, nullptr);
    EXPECT_EQ(ReadFile(file), "t -> {\nt -> }\nof another\nt -> {\nt -> }\n");
}

TEST(TraceFile, ThatCannotBeOpenedSwitchesTheTraceOff) {
    const TemporaryDirectory folder;
    for (const std::string& file :
         {folder / "no/such/file", folder.Path(), folder / std::string(5000, 'x')}) {
        EXPECT_FALSE(KORPSNTrace::Configure(12, file.c_str())) << file;
        EXPECT_FALSE(KORPSNTrace::LevelIsActive(12)) << file;
    }
    KORPSNTrace::Configure(0, nullptr);
}
