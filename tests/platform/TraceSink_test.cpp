// KORPSNSink and KORPSNCapture: the trace as received by a program.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "KORPSNTrace.h"

namespace {

class Collected final : public KORPSNSink {
  public:
    void Write(std::string_view line) noexcept override { text += line; }
    std::string text;
};

void Say(const char* words) {
    KORPSNTrace trace("Label", 12, 0);
    if (KORPSNTrace::LevelIsActive(trace.GetLevel()) == 0) return;
    trace.GetLigne().GetStream() << words << '\n';
    trace.Out();
}

TEST(TraceSink, TakesTheLinesInPlaceOfTheFile) {
    Collected outer;
    Collected inner;
    const KORPSNTrace::Target before = KORPSNTrace::Redirect({12, &outer});
    Say("one");
    const KORPSNTrace::Target ofOuter = KORPSNTrace::Redirect({12, &inner});
    EXPECT_EQ(ofOuter.level, 12);
    EXPECT_EQ(ofOuter.sink, &outer);
    Say("two");
    KORPSNTrace::Redirect(ofOuter);
    Say("three");
    const KORPSNTrace::Target ofTest = KORPSNTrace::Redirect(before);
    EXPECT_EQ(ofTest.sink, &outer);
    Say("nobody hears this");
    EXPECT_EQ(outer.text, "Label {\none\nLabel }\nLabel {\nthree\nLabel }\n");
    EXPECT_EQ(inner.text, "Label {\ntwo\nLabel }\n");
}

TEST(TraceSink, GetsTheLinesOfActiveLevelsAlone) {
    Collected lines;
    const KORPSNTrace::Target before = KORPSNTrace::Redirect({11, &lines});
    Say("nothing");
    KORPSNTrace::Redirect(before);
    EXPECT_EQ(lines.text, "");
    EXPECT_EQ(KORPSNTrace::LevelIsActive(12), 0);
}

TEST(TraceSink, MayBeACallable) {
    std::string outer;
    std::string inner;
    std::vector<int> depths;
    {
        const KORPSNCapture all([&](std::string_view line) { outer += line; });
        Say("one");
        {
            const KORPSNCapture some([&](std::string_view line) {
                inner += line;
                depths.push_back(KORPSNTrace::GetIndent() / 3);
            });
            const KORPSNTrace around("Around", 12, 0);
            Say("two");
        }
        Say("three");
        const KORPSNCapture none([&](std::string_view line) { inner += line; }, 11);
        Say("nothing");
    }
    Say("nobody hears this");
    EXPECT_EQ(outer, "Label {\none\nLabel }\nLabel {\nthree\nLabel }\n");
    EXPECT_EQ(inner, "Around {\n   Label {\ntwo\n   Label }\nAround }\n");
    EXPECT_EQ(depths, (std::vector<int>{0, 1, 1, 1, 0}));
    EXPECT_EQ(KORPSNTrace::LevelIsActive(12), 0);
}

TEST(TraceSink, LosesWhatACallableThrowsAndNothingElse) {
    int lines = 0;
    const KORPSNCapture throwing([&](std::string_view) {
        if (++lines == 1) throw std::bad_alloc();
    });
    Say("goes on");
    EXPECT_EQ(lines, 3);
}

TEST(TraceSink, MayPassLinesOnToWhatIsConfigured) {
    const std::string file = testing::TempDir() + "passed-" + std::to_string(getpid());
    ASSERT_TRUE(KORPSNTrace::Configure(0, file.c_str()));
    {
        const KORPSNCapture some([](std::string_view line) {
            if (line.find("Label {") == std::string_view::npos) KORPSNTrace::Pass(line);
        });
        KORPSNTrace::Pass("of its own\nin one line");
        Say("one");
    }
    KORPSNTrace::Configure(0, nullptr);
    std::ifstream stream(file);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(text, "of its own\\nin one line\none\nLabel }\n");
    std::remove(file.c_str());
}

}  // namespace
