// EncodeNARVOV5Doc, IsEncodedNARVOV5 and DecodeNARVOV5.

#include <gmock/gmock.h>

#include <string>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const kEncodeLabel = "SdaiPrimitiveH EncodeNARVOV5Doc->";
const char* const kTestLabel = "SdaiPrimitiveH IsEncodedNARVOV5 ->";
const char* const kDecodeLabel = "SdaiPrimitiveH DecodeNARVOV5 ->";

// Results must not depend on the trace: every table runs with it off and on.
const int kTraceLevels[] = {0, 12};

// One document of each table, and some with missing values.
const TestModel& Documents() {
    static const TestModel model("cdma", R"(
#1=CDM_DOCUMENT('3D','left door','a note','KOR');
#2=CDM_DOCCAD('2D','plan','b');
#3=CDM_DOCNOTE('TXT','unread','S0001X');
#4=CDM_DOCUMENT($,$,$,$);
#5=CDM_DOCUMENT('','','','');
#6=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);
)");
    return model;
}

}  // namespace

// ---- EncodeNARVOV5Doc

TEST(EncodeNARVOV5Doc, IsTheMarkerAndTheKeyOfTheDocument) {
    const struct {
        unsigned long id;
        const char* key;
    } kDocuments[] = {
        {1, "_ORX_S00023DS0009left doorS0006a noteS0003KOR"},
        {2, "_ORX_S00022DS0004planS0001b"},
        {3, "_ORX_S0003TXTS0006S0001X"},
        {4, "_ORX_S0000S0000S0000S0000"},
        {5, "_ORX_S0000S0000S0000S0000"},
    };
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [id, key] : kDocuments) {
            EXPECT_EQ(TextIn(EncodeNARVOV5Doc(Documents()[id])), key) << id;
        }
    }
}

TEST(EncodeNARVOV5Doc, PutsTheMarkerBeforeWhateverTheKeyIs) {
    for (const unsigned long id : {1UL, 2UL, 3UL, 4UL, 5UL, 6UL}) {
        EXPECT_EQ(TextIn(EncodeNARVOV5Doc(Documents()[id])),
                  "_ORX_" + TextIn(ConcatDocAtb(Documents()[id])))
            << id;
    }
    for (const SdaiPrimitiveH& value : {"text"_h, 7_h, 1.5_h}) {
        EXPECT_EQ(TextIn(EncodeNARVOV5Doc(value)), "_ORX_" + TextIn(ConcatDocAtb(value)));
    }
}

TEST(EncodeNARVOV5Doc, GivesEmptyValueWithoutMarkerForAMissingDocument) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_EQ(TextIn(EncodeNARVOV5Doc({})), "EMPTY VALUE");
    }
}

TEST(EncodeNARVOV5Doc, TracesTheDocumentAndTheKey) {
    const TraceCapture trace;
    EncodeNARVOV5Doc(Documents()[2]);
    EXPECT_THAT(
        trace.Messages(kEncodeLabel),
        ElementsAre("the Document exists", "la valeur retournee est _ORX_S00022DS0004planS0001b"));
    EXPECT_THAT(trace.Lines(), Contains("   SdaiPrimitiveH ConcatDocAtb -> {").Times(1));
    // Without the marker.
    EXPECT_EQ(trace.Messages("SdaiPrimitiveH ConcatDocAtb ->").back(),
              "la valeur retournee est S00022DS0004planS0001b");
}

TEST(EncodeNARVOV5Doc, TracesOnlyTheResultForAMissingDocument) {
    const TraceCapture trace;
    EncodeNARVOV5Doc({});
    EXPECT_THAT(trace.Lines(),
                ElementsAre("SdaiPrimitiveH EncodeNARVOV5Doc-> {",
                            "   SdaiPrimitiveH EncodeNARVOV5Doc-> la valeur retournee est "
                            "EMPTY VALUE",
                            "SdaiPrimitiveH EncodeNARVOV5Doc-> }"));
}

// ---- IsEncodedNARVOV5

TEST(IsEncodedNARVOV5, LooksAtTheFirstFiveCharactersOnly) {
    const struct {
        const char* text;
        bool isEncoded;
    } kTexts[] = {
        {"_ORX_S0002AB", true},
        {"_ORX_", true},
        {"_ORX__ORX_", true},
        {"_ORX_no key at all", true},
        {"_ORX", false},
        {"_OR", false},
        {"", false},
        {"_orx_abc", false},
        {"_ORx_abc", false},
        {"_ORX abc", false},
        {" _ORX_", false},
        {"S0005_ORX_", false},
        {"EMPTY VALUE", false},
    };
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [text, isEncoded] : kTexts) {
            EXPECT_EQ(IsTrue(IsEncodedNARVOV5(Handle(text))), isEncoded) << text;
            EXPECT_EQ(IsFalse(IsEncodedNARVOV5(Handle(text))), !isEncoded) << text;
        }
    }
}

TEST(IsEncodedNARVOV5, IsFalseForAnythingButAText) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_TRUE(IsFalse(IsEncodedNARVOV5({})));
        EXPECT_TRUE(IsFalse(IsEncodedNARVOV5(12345_h)));
        EXPECT_TRUE(IsFalse(IsEncodedNARVOV5(1.5_h)));
        EXPECT_TRUE(IsFalse(IsEncodedNARVOV5(Documents()[1])));
    }
}

TEST(IsEncodedNARVOV5, TracesTheValueAndTheResult) {
    for (const auto& [text, result] :
         {std::pair("_ORX_", "TRUE"), std::pair("plain", "FALSE"), std::pair("", "FALSE")}) {
        const TraceCapture trace;
        IsEncodedNARVOV5(Handle(text));
        EXPECT_THAT(
            trace.Messages(kTestLabel),
            ElementsAre("the input value exists", std::string(" Valeur retournee : ") + result));
    }
}

TEST(IsEncodedNARVOV5, CutsOnlyATextOfFiveCharactersOrMore) {
    const struct {
        const char* text;
        std::size_t cuts;
    } kTexts[] = {{"", 0}, {"_ORX", 0}, {"_ORX_", 1}, {"plain", 1}, {"_ORX_S0000", 1}};
    for (const auto& [text, cuts] : kTexts) {
        const TraceCapture trace;
        IsEncodedNARVOV5(Handle(text));
        EXPECT_THAT(trace.Lines(), Contains("   SdaiPrimitiveH ORXTrunc -> {").Times(cuts)) << text;
    }
}

TEST(IsEncodedNARVOV5, TracesOnlyTheResultForAMissingValue) {
    const TraceCapture trace;
    IsEncodedNARVOV5({});
    EXPECT_THAT(trace.Messages(kTestLabel), ElementsAre(" Valeur retournee : FALSE"));
}

// ---- DecodeNARVOV5

TEST(DecodeNARVOV5, GivesTheFieldBehindTheMarker) {
    const SdaiPrimitiveH key = EncodeNARVOV5Doc(Documents()[1]);
    const char* const kFields[] = {"3D", "left door", "a note", "KOR", "EMPTY VALUE"};
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        long place = 0;
        for (const char* const field : kFields) {
            EXPECT_EQ(TextIn(DecodeNARVOV5(key, Handle(++place))), field);
        }
    }
}

TEST(DecodeNARVOV5, GivesWhateverKindTheKeyHolds) {
    const SdaiPrimitiveH key = "_ORX_I000223R00031.5X0002ABX000242S0003ab"_h;
    EXPECT_EQ(IntegerIn(DecodeNARVOV5(key, 1_h)), 23);
    EXPECT_EQ(RealIn(DecodeNARVOV5(key, 2_h)), 1.5);
    EXPECT_EQ(IntegerIn(DecodeNARVOV5(key, 3_h)), -1);
    EXPECT_EQ(IntegerIn(DecodeNARVOV5(key, 4_h)), 42);
    EXPECT_EQ(TextIn(DecodeNARVOV5(key, 5_h)), "ab");
}

TEST(DecodeNARVOV5, IsUnsetForAPlaceThatCannotBe) {
    const SdaiPrimitiveH key = "_ORX_S0002AB"_h;
    EXPECT_TRUE(IsUnset(DecodeNARVOV5(key, 0_h)));
    EXPECT_TRUE(IsUnset(DecodeNARVOV5(key, Handle(-1L))));
    // A text is not a position.
    EXPECT_TRUE(IsUnset(DecodeNARVOV5(key, "S_NAME"_h)));
}

TEST(DecodeNARVOV5, ReadsAnEmptyBodyAsDecodeKeyDoes) {
    EXPECT_EQ(IntegerIn(DecodeNARVOV5("_ORX_"_h, 1_h)), -1);
    EXPECT_EQ(TextIn(DecodeNARVOV5("_ORX_"_h, 2_h)), "EMPTY VALUE");
}

TEST(DecodeNARVOV5, TellsAMissingArgumentFromAMissingMarker) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_EQ(TextIn(DecodeNARVOV5({}, 1_h)), "EMPTY VALUE");
        EXPECT_EQ(TextIn(DecodeNARVOV5("_ORX_S0002AB"_h, {})), "EMPTY VALUE");
        EXPECT_EQ(TextIn(DecodeNARVOV5("plain"_h, {})), "EMPTY VALUE");
        EXPECT_EQ(TextIn(DecodeNARVOV5({}, {})), "EMPTY VALUE");

        EXPECT_TRUE(IsUnset(DecodeNARVOV5("plain"_h, 1_h)));
        EXPECT_TRUE(IsUnset(DecodeNARVOV5("S0002AB"_h, 1_h)));
        EXPECT_TRUE(IsUnset(DecodeNARVOV5("_ORX"_h, 1_h)));
        EXPECT_TRUE(IsUnset(DecodeNARVOV5(""_h, 1_h)));
        EXPECT_TRUE(IsUnset(DecodeNARVOV5("EMPTY VALUE"_h, 1_h)));
        EXPECT_TRUE(IsUnset(DecodeNARVOV5(7_h, 1_h)));
    }
}

TEST(DecodeNARVOV5, UndoesTheEncodingOfEveryDocument) {
    for (const unsigned long id : {1UL, 2UL, 3UL, 4UL, 5UL}) {
        const SdaiPrimitiveH document = Documents()[id];
        for (long place = 1; place <= 5; ++place) {
            EXPECT_EQ(TextIn(DecodeNARVOV5(EncodeNARVOV5Doc(document), Handle(place))),
                      TextIn(DecodeKey(ConcatDocAtb(document), Handle(place))))
                << id << ' ' << place;
        }
    }
}

TEST(DecodeNARVOV5, LosesNothingOfAttributesOfAnyLength) {
    for (const std::size_t length : {0U, 5U, 6U, 7U, 79U, 80U, 81U, 160U, 161U, 9999U}) {
        const std::string note(length, 'n');
        const TestModel model("cdma", "#1=CDM_DOCUMENT('3D','n','" + note + "','KOR');");
        const SdaiPrimitiveH key = EncodeNARVOV5Doc(model[1]);
        EXPECT_EQ(TextIn(DecodeNARVOV5(key, 3_h)), note) << length;
        EXPECT_EQ(TextIn(DecodeNARVOV5(key, 4_h)), "KOR") << length;
    }
}

TEST(DecodeNARVOV5, TracesThatItGoesAhead) {
    const struct {
        const char* key;
        std::size_t decoded;
    } kKeys[] = {{"_ORX_S0002AB", 1}, {"plain", 0}};
    for (const auto& [key, decoded] : kKeys) {
        const TraceCapture trace;
        DecodeNARVOV5(Handle(key), 1_h);
        EXPECT_THAT(trace.Messages(kDecodeLabel), ElementsAre("everything ok : go ahead")) << key;
        EXPECT_THAT(trace.Lines(), Contains("   SdaiPrimitiveH IsEncodedNARVOV5 -> {").Times(1));
        EXPECT_THAT(trace.Lines(), Contains("   SdaiPrimitiveH DecodeKey -> {").Times(decoded));
    }
}

TEST(DecodeNARVOV5, TracesNothingWhenAnArgumentIsMissing) {
    const TraceCapture trace;
    DecodeNARVOV5({}, 1_h);
    DecodeNARVOV5("_ORX_S0002AB"_h, {});
    EXPECT_THAT(trace.Messages(kDecodeLabel), IsEmpty());
    EXPECT_THAT(trace.Lines(), Contains("SdaiPrimitiveH DecodeNARVOV5 -> {").Times(2));
    EXPECT_THAT(trace.Lines(), Contains("SdaiPrimitiveH DecodeNARVOV5 -> }").Times(2));
}
