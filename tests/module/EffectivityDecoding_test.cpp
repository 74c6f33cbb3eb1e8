// Decoding the effectivity and configuration strings of STEP files.

#include <gmock/gmock.h>

#include <climits>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

constexpr char kMissing[] = "KO : At least one of the entities doesn't exist";
constexpr char kBothExist[] = "The attibute ID & InputFlag exist : OK ";

std::string Returned(const std::string& value) {
    return ">> la valeur retournee est : " + value + " <<";
}

// ---- ExtractEFFType

constexpr char kExtractEFFType[] = "SdaiPrimitiveH ExtractEFFType ->";

TEST(ExtractEFFType, AcceptsTheTypeOfTheModeAlone) {
    const struct {
        const char* text;
        long mode;  // the mode that accepts it; 0 for none
    } cases[] = {
        {"S0005rangeS0003R12", 1},
        {"S0004dateS0003D12", 2},
        {"S0012option_rangeS0002O1S0003E07", 3},
        {"S0011option_dateS0002O1S0003E07", 4},
        // Only the first field counts.
        {"S0005range", 1},
        {"S0004dateS0005range", 2},
        {"S0005rangeand whatever follows", 1},
        // The length truncates the type, and the end of the text truncates the length.
        {"S0005ranges", 1},
        {"S0099range", 1},
        {"S0004datefoo", 2},
        {"S0006rangesS0000", 0},
        {"S0004rangeS0000", 0},
        // Blanks around a number do not matter.
        {"S   5rangeS0000", 1},
        {"S5   rangeS0000", 1},
        // Types must be identical, unlike in ExtractCFGType.
        {"S0004rang", 0},
        {"S0001r", 0},
        {"S0007option_", 0},
        {"S0000S0002O1S0003E07", 0},
        {"S0005RangeS0003R12", 0},
        {"S0005RANGES0003R12", 0},
        {"S0006 range", 0},
        {"S0017range_effectivityS0003R12", 0},
        {"S0016date_effectivityS0003R12", 0},
        {"S0009UNDEFINEDS0003R12", 0},
        // A different marker.
        {"s0005rangeS0003R12", 0},
        {"I0005rangeS0003R12", 0},
        {" S0005range", 0},
        {"range", 0},
        {"", 0},
        {"S", 0},
        {"S0005", 0},
        {"Srange", 0},
    };
    for (const auto& c : cases) {
        for (long mode = 1; mode <= 4; ++mode) {
            SCOPED_TRACE(std::string(c.text) + ", mode " + std::to_string(mode));
            const bool accepted = mode == c.mode;
            EXPECT_EQ(IsTrue(ExtractEFFType(Handle(c.text), Handle(mode))), accepted);
            TraceCapture trace;
            const SdaiPrimitiveH result = ExtractEFFType(Handle(c.text), Handle(mode));
            EXPECT_EQ(IsTrue(result), accepted);
            EXPECT_EQ(IsFalse(result), !accepted);
            EXPECT_THAT(trace.Messages(kExtractEFFType),
                        ElementsAre(kBothExist, accepted ? ">> IS A CORRECT TYPE <<"
                                                         : ">> NOT A CORRECT TYPE<<"));
        }
    }
}

TEST(ExtractEFFType, RefusesOtherModesAtOnce) {
    for (const long mode : {0L, 5L, -1L, 4294967297L, LONG_MAX, LONG_MIN}) {
        for (const char* text : {"S0005rangeS0003R12", ""}) {
            EXPECT_TRUE(IsFalse(ExtractEFFType(Handle(text), Handle(mode))));
            TraceCapture trace;
            EXPECT_TRUE(IsFalse(ExtractEFFType(Handle(text), Handle(mode))));
            EXPECT_THAT(trace.Messages(kExtractEFFType),
                        ElementsAre(kBothExist,
                                    " >> Invalid search mode : " + std::to_string(mode) + " << "));
        }
    }
}

TEST(ExtractEFFType, IsFalseForAMissingArgument) {
    const SdaiPrimitiveH unset;
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> cases[] = {
        {unset, 1_h}, {"S0005rangeS0003R12"_h, unset}, {unset, unset}, {unset, 9_h}};
    for (const auto& [text, mode] : cases) {
        EXPECT_TRUE(IsFalse(ExtractEFFType(text, mode)));
        TraceCapture trace;
        EXPECT_TRUE(IsFalse(ExtractEFFType(text, mode)));
        EXPECT_THAT(trace.Messages(kExtractEFFType),
                    ElementsAre(kMissing, ">> NOT A CORRECT TYPE<<"));
    }
}

TEST(ExtractEFFType, TakesAValueOfAnotherKindForAnEmptyTextOrModeZero) {
    EXPECT_TRUE(IsFalse(ExtractEFFType(1_h, 1_h)));
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(ExtractEFFType("S0005rangeS0003R12"_h, "1"_h)));
    EXPECT_THAT(trace.Messages(kExtractEFFType),
                ElementsAre(kBothExist, " >> Invalid search mode : 0 << "));
}

// ---- DecodeEFF

constexpr char kDecodeEFF[] = "SdaiPrimitiveH DecodeEFF ->";
constexpr char kEmpty[] = "EMPTY VALUE";

// Checks the value for a text and a mode, and the messages after the one about the mode.
void ExpectDecoded(const std::string& text, long mode, const std::string& value,
                   const std::vector<std::string>& messages) {
    SCOPED_TRACE(text + ", mode " + std::to_string(mode));
    EXPECT_EQ(TextIn(DecodeEFF(Handle(text), Handle(mode))), value);
    TraceCapture trace;
    EXPECT_EQ(TextIn(DecodeEFF(Handle(text), Handle(mode))), value);
    std::vector<std::string> all{kBothExist, " -> InputFlag = " + std::to_string(mode)};
    all.insert(all.end(), messages.begin(), messages.end());
    EXPECT_THAT(trace.Messages(kDecodeEFF), ElementsAreArray(all));
}

TEST(DecodeEFF, GivesTheIdAndTheOptionOfAnOptionEffectivity) {
    const struct {
        const char* text;
        const char* id;
        const char* option;
    } cases[] = {
        {"S0012option_rangeS0002O1S0003E07", "E07", "O1"},
        {"S0011option_dateS0002O1S0003E07", "E07", "O1"},
        // Any type except "range" and "date" is taken for an option's.
        {"S0000S0002O1S0003E07", "E07", "O1"},
        {"S0008anythingS0002O1S0003E07", "E07", "O1"},
        {"S0005RangeS0002O1S0003E07", "E07", "O1"},
        {"S0005DATE S0002O1S0003E07", "E07", "O1"},
        {"S0004rangS0002O1S0003E07", "E07", "O1"},
        {"S0006rangesS0002O1S0003E07", "E07", "O1"},
        {"S0003datS0002O1S0003E07", "E07", "O1"},
        {"S0005datesS0002O1S0003E07", "E07", "O1"},
        {"S0017range_effectivityS0002O1S0003E07", "E07", "O1"},
        {"S0012option_rangeS0000S0003E07", "E07", ""},
        {"S0012option_rangeS0002O1S0000", "", "O1"},
        {"S0000S0000S0000", "", ""},
        // Values that look like fields.
        {"S0012option_rangeS0006S0001XS0006S0001Y", "S0001Y", "S0001X"},
        // Text after the last field does not matter; a truncated one has its available text.
        {"S0012option_rangeS0002O1S0003E07S0001X", "E07", "O1"},
        {"S0012option_rangeS0002O1S0009E07", "E07", "O1"},
        {"S0012option_rangeS0002O1S", "", "O1"},
        {"S0012option_rangeS0002O1SxxxxE07", "", "O1"},
        // Blanks around a length do not matter.
        {"S 12 option_rangeS2   O1S   3E07", "E07", "O1"},
    };
    for (const auto& c : cases) {
        ExpectDecoded(c.text, 1, c.id, {Returned(c.id)});
        ExpectDecoded(c.text, 2, c.option, {Returned(c.option)});
    }
}

TEST(DecodeEFF, GivesTheIdOfARangeOrDateEffectivityAndNoOption) {
    const struct {
        const char* text;
        const char* id;
    } cases[] = {
        {"S0005rangeS0003R12", "R12"},
        {"S0004dateS0003D12", "D12"},
        {"S0005rangeS0000", ""},
        {"S0004dateS0000", ""},
        {"S0005rangeS0006S0001X", "S0001X"},
        {"S0005rangeS0003R12S0003E07", "R12"},
        {"S0005rangeS0002R12", "R1"},
        {"S0005rangeS0009R12", "R12"},
        {"S0005rangeS", ""},
        {"S0005rangeSxxxxR12", ""},
    };
    for (const auto& c : cases) {
        ExpectDecoded(c.text, 1, c.id, {Returned(c.id)});
        ExpectDecoded(c.text, 2, kEmpty,
                      {" >> Incompatible search mode with Input Value << ",
                       std::string(" >> Eff type : ") + c.text + " << "});
    }
}

TEST(DecodeEFF, IsEmptyValueForAnIncorrectString) {
    const char kIncorrect[] = " >> Incorrect encoded string << ";
    const struct {
        const char* text;
        bool optionThere;  // whether the second field is readable
        const char* option;
    } cases[] = {
        // No second marker.
        {"S0012option_range", false, ""},
        {"S0012option_rangs0002O1S0003E07", false, ""},
        {"S0012option_rangeI0002O1S0003E07", false, ""},
        {"S0012option_range S0002O1S0003E07", false, ""},
        {"S0099option_rangeS0002O1S0003E07", false, ""},
        {"S", false, ""},
        {"S00", false, ""},
        {"S0000", false, ""},
        {"S0000range", false, ""},
        {"Sxxxxoption_rangeS0002O1", false, ""},
        // No third marker.
        {"S0012option_rangeS0002O1", true, "O1"},
        {"S0012option_rangeS0002O1s0003E07", true, "O1"},
        {"S0012option_rangeS0009O1S0003E07", true, "O1S0003E0"},
        {"S0012option_rangeS0099O1", true, "O1"},
        {"S0000S0002O1 S0003E07", true, "O1"},
        {"S0000S", true, ""},
    };
    for (const auto& c : cases) {
        ExpectDecoded(c.text, 1, kEmpty, {kIncorrect});
        if (c.optionThere) {
            ExpectDecoded(c.text, 2, c.option, {Returned(c.option)});
        } else {
            ExpectDecoded(c.text, 2, kEmpty, {kIncorrect});
        }
    }
    for (const char* text : {"S0005range", "S0004date", "S0005ranges0003R12", "S0004date S0001X"}) {
        ExpectDecoded(text, 1, kEmpty, {kIncorrect});
        // The mode is rejected first.
        ExpectDecoded(text, 2, kEmpty,
                      {" >> Incompatible search mode with Input Value << ",
                       std::string(" >> Eff type : ") + text + " << "});
    }
}

TEST(DecodeEFF, IsEmptyValueForATextWithoutTheFirstMarker) {
    for (const char* text :
         {"", "s0005rangeS0003R12", "I0005rangeS0003R12", " S0005rangeS0003R12", "R12"}) {
        for (const long mode : {1L, 2L}) ExpectDecoded(text, mode, kEmpty, {Returned(kEmpty)});
    }
}

TEST(DecodeEFF, RefusesOtherModesAtOnce) {
    for (const long mode : {0L, 3L, 4L, -1L, 4294967297L, 4294967298L, LONG_MAX, LONG_MIN}) {
        for (const char* text : {"S0005rangeS0003R12", "S0012option_rangeS0002O1S0003E07", ""}) {
            ExpectDecoded(text, mode, kEmpty, {" >> Invalid search mode << "});
        }
    }
}

TEST(DecodeEFF, IsEmptyValueForAMissingArgument) {
    const SdaiPrimitiveH unset;
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> cases[] = {
        {unset, 1_h}, {"S0005rangeS0003R12"_h, unset}, {unset, unset}, {unset, 9_h}};
    for (const auto& [text, mode] : cases) {
        EXPECT_EQ(TextIn(DecodeEFF(text, mode)), kEmpty);
        TraceCapture trace;
        EXPECT_EQ(TextIn(DecodeEFF(text, mode)), kEmpty);
        EXPECT_THAT(trace.Messages(kDecodeEFF), ElementsAre(kMissing, Returned(kEmpty)));
    }
}

TEST(DecodeEFF, TakesAValueOfAnotherKindForAnEmptyTextOrModeZero) {
    EXPECT_EQ(TextIn(DecodeEFF(1_h, 1_h)), kEmpty);
    TraceCapture trace;
    EXPECT_EQ(TextIn(DecodeEFF("S0005rangeS0003R12"_h, "1"_h)), kEmpty);
    EXPECT_THAT(trace.Messages(kDecodeEFF),
                ElementsAre(kBothExist, " -> InputFlag = 0", " >> Invalid search mode << "));
}

// ---- Writers and readers

// Possible identifiers of a database.
std::vector<std::string> Identifiers() {
    return {"",
            "R12",
            " blanks at both ends ",
            "S0003ORX",
            "rangeS0005range",
            "\xE9\xB1\xFF",
            "it's",
            std::string(15, 'x'),
            std::string(16, 'x'),
            std::string(9999, 'x')};
}

TEST(EffectivityStrings, AreReadAsTheyWereWritten) {
    const TestModel database("cdma", R"(
        #1=RANGE_EFFECTIVITY('E',$,1,5);
        #2=DATE_EFFECTIVITY('E',$,$,$);
        #3=OPTION_EFFECTIVITY('E',$,'option_range','O',$,$,$,$);
        #4=OPTION_EFFECTIVITY('E',$,'option_date','O',$,$,$,$);)");
    for (const std::string& id : Identifiers()) {
        const std::string option(id.rbegin(), id.rend());
        for (unsigned long kind = 1; kind <= 4; ++kind) {
            SCOPED_TRACE(id.substr(0, 20) + ", kind " + std::to_string(kind));
            auto* effectivity = static_cast<SdaiAppInstance*>(InstanceIn(database[kind]));
            effectivity->PutAttr("id", Handle(id));
            effectivity->PutAttr("option_id", Handle(option));
            const SdaiPrimitiveH text = ConcatEffAtb(effectivity);
            for (unsigned long mode = 1; mode <= 4; ++mode) {
                EXPECT_EQ(IsTrue(ExtractEFFType(text, Handle(static_cast<long>(mode)))),
                          mode == kind);
            }
            EXPECT_EQ(TextIn(DecodeEFF(text, 1_h)), id);
            EXPECT_EQ(TextIn(DecodeEFF(text, 2_h)), kind <= 2 ? kEmpty : option);
        }
    }
}

TEST(ConfigurationStrings, AreReadAsTheyWereWritten) {
    const TestModel database("cdma", R"(
        #1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);
        #2=CONFIGURATION_ITEM('C',$,#1);
        #3=CONFIGURATION_HANDLER('H',#1);
        #11=RANGE_EFFECTIVITY('E',$,1,5);
        #12=DATE_EFFECTIVITY('E',$,$,$);
        #13=OPTION_EFFECTIVITY('E',$,'option_range','O',$,$,$,$);
        #14=OPTION_EFFECTIVITY('E',$,'option_date','O',$,$,$,$);)");
    const TestModel step("CONFIG_CONTROL_DESIGN", "#1=CONFIGURATION_ITEM('C','',$,$,$);");
    for (const std::string& id : Identifiers()) {
        SCOPED_TRACE(id.substr(0, 20));
        for (const unsigned long named : {2UL, 3UL}) {
            static_cast<SdaiAppInstance*>(InstanceIn(database[named]))->PutAttr("id", Handle(id));
        }
        static_cast<SdaiAppInstance*>(InstanceIn(step[1]))
            ->PutAttr("DESCRIPTION", ORXIdCfg(database[2]));
        EXPECT_TRUE(IsTrue(IsAORXCfg(step[1])));
        EXPECT_TRUE(IsTrue(HasAORXValue(step[1])));
        for (long kind = 1; kind <= 4; ++kind) {
            const SdaiPrimitiveH text =
                ORXIdEff(database[1], database[static_cast<unsigned long>(10 + kind)]);
            for (long mode = 1; mode <= 4; ++mode) {
                EXPECT_EQ(IsTrue(ExtractCFGType(text, Handle(mode))), mode == kind);
            }
            EXPECT_TRUE(IsTrue(IsEncodedKey(text)));
            EXPECT_EQ(TextIn(DecodeKey(text, 2_h)), id);
        }
    }
}

}  // namespace
