#include <gtest/gtest.h>

#include <string>

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

}  // namespace
