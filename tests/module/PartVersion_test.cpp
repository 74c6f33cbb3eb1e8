// ReadPartVersion.

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <vector>

#include "KORDMNarvo.h"
#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const kLabel = "SdaiPrimitiveH ReadPartVersion ->";

// Results must not depend on the trace: every table runs with it off and on.
const int kTraceLevels[] = {0, 12};

// A call of GetRevVerStartValue.
struct StartValueCall {
    int selector;
    std::string texts;
    bool hasStatus;
    bool operator==(const StartValueCall& other) const = default;
};
void PrintTo(const StartValueCall& call, std::ostream* stream) {
    *stream << call.selector << " '" << call.texts << "' " << (call.hasStatus ? "with" : "without")
            << " a status";
}

// If set, calls are recorded there.
std::vector<StartValueCall>* recording = nullptr;

}  // namespace

// This replaces the platform's function, which has one starting value and reads none of the texts.
KORUnicodeString KORDMNarvo::GetRevVerStartValue(int selector, const KORDMMappingText& caenv,
                                                 const KORDMMappingText& catab,
                                                 const KORDMMappingText& type, int* status) {
    if (recording != nullptr) {
        std::string texts;
        for (const KORDMMappingText* text : {&caenv, &catab, &type}) texts += text->View();
        recording->push_back({selector, texts, status != nullptr});
    }
    using Platform = KORUnicodeString (*)(int, const KORDMMappingText&, const KORDMMappingText&,
                                          const KORDMMappingText&, int*);
    static const auto platform = reinterpret_cast<Platform>(
        dlsym(RTLD_NEXT, "_ZN10KORDMNarvo19GetRevVerStartValueEiRK16KORUnicodeStringS2_S2_Pi"));
    return platform(selector, caenv, catab, type, status);
}

namespace {

// The starting value is global: each test begins and ends with the usual one.
class ReadPartVersionTest : public testing::Test {
  protected:
    ReadPartVersionTest() { KORDMNarvo::SetRevVerStartValue("A"); }
    ~ReadPartVersionTest() override { KORDMNarvo::SetRevVerStartValue("A"); }

    static std::string Read(const std::string& version) {
        return TextIn(ReadPartVersion(Handle(version)));
    }
};

}  // namespace

TEST_F(ReadPartVersionTest, KeepsOneToThreeCharacters) {
    KORDMNarvo::SetRevVerStartValue("S");
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const char* const version :
             {"A", "AB", "ABC", "a", "1", "---", "A ", " A", " ", "   ", "\xB1", "\xE9\xE8\xE7"}) {
            EXPECT_EQ(Read(version), version);
        }
    }
}

TEST_F(ReadPartVersionTest, KeepsAnyCharacter) {
    KORDMNarvo::SetRevVerStartValue("S");
    for (int c = 0; c < 256; ++c) {
        const std::string version(1, static_cast<char>(c));
        EXPECT_EQ(Read(version), version) << c;
        EXPECT_EQ(Read(version + version + version), version + version + version) << c;
    }
}

TEST_F(ReadPartVersionTest, ReplacesAnEmptyOrLongerTextByTheStartingValue) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const char* const version : {"", "ABCD", "    ", "A   ", "version 1"}) {
            EXPECT_EQ(Read(version), "A") << version;
        }
        for (const std::size_t length : {4U, 5U, 6U, 7U, 79U, 80U, 81U, 160U, 161U, 100000U}) {
            EXPECT_EQ(Read(std::string(length, 'V')), "A") << length;
        }
    }
}

TEST_F(ReadPartVersionTest, AsksForTheStartingValueOnEveryCall) {
    for (const char* const start : {"B", "01", "", "---", "a value of any length is taken", "A"}) {
        KORDMNarvo::SetRevVerStartValue(start);
        EXPECT_EQ(Read("ABCD"), start);
        EXPECT_EQ(Read(""), start);
        EXPECT_EQ(Read("ABC"), "ABC");
        EXPECT_EQ(TextIn(ReadPartVersion({})), "");
    }
}

// Once, whatever the version is and whether it is needed or not.
TEST_F(ReadPartVersionTest, AsksForTheRevisionOfANewObject) {
    for (const SdaiPrimitiveH& version : {"A"_h, "ABC"_h, "ABCD"_h, ""_h, 12_h, SdaiPrimitiveH()}) {
        std::vector<StartValueCall> calls;
        recording = &calls;
        ReadPartVersion(version);
        recording = nullptr;
        EXPECT_THAT(calls, ElementsAre(StartValueCall{1, "", false}));
    }
}

TEST_F(ReadPartVersionTest, GivesAnEmptyTextForAMissingVersion) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_EQ(TextIn(ReadPartVersion({})), "");
    }
}

TEST_F(ReadPartVersionTest, ReplacesWhatIsNoText) {
    EXPECT_EQ(TextIn(ReadPartVersion(12_h)), "A");
    EXPECT_EQ(TextIn(ReadPartVersion(1.5_h)), "A");
    EXPECT_EQ(TextIn(ReadPartVersion(sdaiLTRUE)), "A");
}

TEST_F(ReadPartVersionTest, TracesTheVersionTwiceAndTheResult) {
    for (const std::string version : {"A", "AB", "ABC", "A "}) {
        const TraceCapture trace;
        Read(version);
        EXPECT_THAT(trace.Messages(kLabel),
                    ElementsAre("ReadPartVersion - " + version + " -> " + version,
                                "ReadPartVersion retourne: >" + version + "<"));
    }
}

TEST_F(ReadPartVersionTest, WarnsInFourLinesOfWhichTheLastIsEmpty) {
    KORDMNarvo::SetRevVerStartValue("01");
    for (const std::string version : {"ABCD", ""}) {
        const TraceCapture trace;
        Read(version);
        EXPECT_THAT(trace.Messages(kLabel),
                    ElementsAre("ReadPartVersion - " + version + " -> " + version,
                                "ORX import mapping WARNING:", "   input value   >" + version + "<",
                                "   substitued by >01<", "", "ReadPartVersion retourne: >01<"));
    }
}

TEST_F(ReadPartVersionTest, WritesTheWarningAsLinesOfTheTrace) {
    const TraceCapture trace;
    Read("ABCD");
    const std::string label = kLabel;
    EXPECT_THAT(trace.Lines(),
                ElementsAre(label + " {", "   " + label + " ReadPartVersion - ABCD -> ABCD",
                            "   " + label + " ORX import mapping WARNING:",
                            "   " + label + "    input value   >ABCD<",
                            "   " + label + "    substitued by >A<", "   " + label + " ",
                            "   " + label + " ReadPartVersion retourne: >A<", label + " }"));
}

TEST_F(ReadPartVersionTest, TracesItsResultAloneForAMissingVersion) {
    const TraceCapture trace;
    ReadPartVersion({});
    EXPECT_THAT(trace.Messages(kLabel), ElementsAre("ReadPartVersion retourne: ><"));
}
