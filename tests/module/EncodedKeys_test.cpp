// IsEncodedKey and DecodeKey: keys of typed, length-prefixed fields.

#include <gmock/gmock.h>

#include <limits>
#include <string>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kIsEncodedKey[] = "SdaiPrimitiveH IsEncodeKey ->";  // without the d of the name
constexpr char kDecodeKey[] = "SdaiPrimitiveH DecodeKey ->";

const SdaiPrimitiveH kMissing;

// The string AB, the integer 12 and the empty string.
constexpr char kThreeFields[] = "S0002ABI000212S0000";

const std::string kLongest(9999, 'x');  // the longest value that four digits can describe

}  // namespace

// ---- IsEncodedKey

TEST(IsEncodedKey, AcceptsWellFormedKeys) {
    const std::string keys[] = {
        "S0000",
        "S0003ABC",
        "I000223",
        "I0003-23",
        "R00031.5",
        kThreeFields,
        "R00031.5I00017S0001A",
        "S0006S0001X",     // a value that looks like a field
        "S0003S00",        // or like the start of one
        "S0004\xE9\n\t ",  // a value may contain any character
        "S9999" + kLongest,
        "S9999" + kLongest + "I00011",
        "I0003abcS0001A",  // the value is not checked
        std::string("S0003a\0bS0000", 13),
    };
    for (const std::string& key : keys) EXPECT_TRUE(IsTrue(IsEncodedKey(Handle(key)))) << key;
}

TEST(IsEncodedKey, AcceptsALastFieldThatIsCutShort) {
    for (const char* key : {"S0005AB", "S0001", "S9999", "S0002ABI0001", "R0100"}) {
        EXPECT_TRUE(IsTrue(IsEncodedKey(Handle(key)))) << key;
    }
}

TEST(IsEncodedKey, AcceptsALengthWithBlanksAroundIt) {
    EXPECT_TRUE(IsTrue(IsEncodedKey("S   2AB"_h)));
}

TEST(IsEncodedKey, RejectsAnUnknownTypeLetter) {
    for (const char* key : {"X0002AB", "s0002AB", "i000223", "r00031.5", " S0002AB", "00002AB", "X",
                            "B0001\x01", "EMPTY VALUE"}) {
        EXPECT_TRUE(IsFalse(IsEncodedKey(Handle(key)))) << key;
    }
}

TEST(IsEncodedKey, RejectsALengthThatIsNoNumber) {
    for (const char* key : {"S", "Sabcd", "S00x2AB", "S----", "S    ", "S0x1F", "S1e01", "SS0001A",
                            "I\xB9\xB9\xB9\xB9"}) {
        EXPECT_TRUE(IsFalse(IsEncodedKey(Handle(key)))) << key;
    }
}

TEST(IsEncodedKey, RejectsANegativeLength) {
    // Going back five characters from the end of the field's head leads to its own start.
    for (const char* key : {"S-005ABCDE", "S-001AB", "S-999", "S0002ABS-012"}) {
        EXPECT_TRUE(IsFalse(IsEncodedKey(Handle(key)))) << key;
    }
}

TEST(IsEncodedKey, RejectsWhatFollowsTheLastField) {
    for (const char* key : {"S0002ABC", "S0002AB ", "S0000S", "S0002ABI000212x", "S0001XX0001X"}) {
        EXPECT_TRUE(IsFalse(IsEncodedKey(Handle(key)))) << key;
    }
}

TEST(IsEncodedKey, RejectsAnEmptyKeyAndAMissingOne) {
    EXPECT_TRUE(IsFalse(IsEncodedKey(""_h)));
    EXPECT_TRUE(IsFalse(IsEncodedKey(kMissing)));
}

TEST(IsEncodedKey, RejectsWhatIsNoText) {
    EXPECT_TRUE(IsFalse(IsEncodedKey(7_h)));
    EXPECT_TRUE(IsFalse(IsEncodedKey(1.5_h)));
    EXPECT_TRUE(IsFalse(IsEncodedKey(SdaiPrimitiveH(sdaiLTRUE))));
}

TEST(IsEncodedKey, ReadsAKeyThroughASelect) {
    EXPECT_TRUE(IsTrue(IsEncodedKey(SdaiSelectH("LABEL", "S0002AB"_h))));
}

TEST(IsEncodedKey, TracesEachFieldItReads) {
    TraceCapture trace;
    IsEncodedKey(Handle(kThreeFields));
    // The index of the character after the letter.
    EXPECT_THAT(trace.Messages(kIsEncodedKey), ElementsAre("StartIndex = 1", "Type a lire: S",   //
                                                           "StartIndex = 8", "Type a lire: I",   //
                                                           "StartIndex = 15", "Type a lire: S",  //
                                                           "IsEncodedKey retourne: TRUE"));
}

TEST(IsEncodedKey, TracesTheFieldThatIsWrongAndStops) {
    {
        TraceCapture trace;
        IsEncodedKey("X0002ABS0001C"_h);
        EXPECT_THAT(trace.Messages(kIsEncodedKey), ElementsAre("StartIndex = 1", "Type a lire: X",
                                                               "IsEncodedKey retourne: FALSE"));
    }
    {
        TraceCapture trace;
        IsEncodedKey("S0001AIabcd12S0000"_h);
        EXPECT_THAT(trace.Messages(kIsEncodedKey),
                    ElementsAre("StartIndex = 1", "Type a lire: S", "StartIndex = 7",
                                "Type a lire: I", "IsEncodedKey retourne: FALSE"));
    }
    for (const char* letter : {"S", "X"}) {
        TraceCapture trace;
        IsEncodedKey(Handle(letter));
        EXPECT_THAT(trace.Messages(kIsEncodedKey),
                    ElementsAre("StartIndex = 1", std::string("Type a lire: ") + letter,
                                "IsEncodedKey retourne: FALSE"));
    }
}

TEST(IsEncodedKey, TracesOnlyTheResultOfAnEmptyKeyAndOfAMissingOne) {
    TraceCapture trace;
    IsEncodedKey(""_h);
    IsEncodedKey(kMissing);
    EXPECT_THAT(trace.Messages(kIsEncodedKey),
                ElementsAre("IsEncodedKey retourne: FALSE", "IsEncodedKey retourne: FALSE"));
}

// ---- DecodeKey

TEST(DecodeKey, GivesStrings) {
    const struct {
        std::string key;
        long place;
        std::string value;
    } kCases[] = {
        {"S0003ABC", 1, "ABC"},
        {"S0000", 1, ""},
        {kThreeFields, 1, "AB"},
        {kThreeFields, 3, ""},
        {"I000212S0003end", 2, "end"},
        {"S0005AB", 1, "AB"},  // a truncated field has its available text
        {"S0001", 1, ""},
        {"S0001AS9999rest", 2, "rest"},
        {"S0006S0001X", 1, "S0001X"},  // fields are located by their lengths, not by searching
        {"S0006S0001XS0001Y", 2, "Y"},
        {"S0004a \xE9 ", 1, "a \xE9 "},
        {"S9999" + kLongest, 1, kLongest},
        {"S9999" + kLongest + "S0003end", 2, "end"},
        {std::string("S0003a\0b", 8), 1, std::string("a\0b", 3)},
        {"SabcdS0001X", 1, ""},     // a length that is not a number counts as 0
        {"SabcdS0001X", 2, "X"},    // so the next field follows immediately
        {"X0002ABS0001C", 2, "C"},  // a skipped field may have any letter
        {"s0002ABS0001C", 2, "C"},
    };
    for (const auto& [key, place, value] : kCases) {
        EXPECT_EQ(TextIn(DecodeKey(Handle(key), Handle(place))), value) << key << ' ' << place;
    }
}

TEST(DecodeKey, GivesIntegers) {
    static constexpr struct {
        const char* key;
        long place;
        long value;
    } kCases[] = {
        {"I000223", 1, 23},
        {"I0003-12", 1, -12},
        {"I00010", 1, 0},
        {kThreeFields, 2, 12},
        {"I0019"
         "9223372036854775807",
         1, std::numeric_limits<long>::max()},
        {"I0020"
         "-9223372036854775808",
         1, std::numeric_limits<long>::min()},
        {"I0003123456", 1, 123},  // not more characters than the length
        {"I0005123", 1, 123},     // the available characters
        // Texts that are not integers
        {"I0000", 1, 0},
        {"I0003abc", 1, 0},
        {"I000412ab", 1, 0},
        {"I0019"
         "9223372036854775808",
         1, 0},
    };
    for (const auto& [key, place, value] : kCases) {
        EXPECT_EQ(IntegerIn(DecodeKey(Handle(key), Handle(place))), value) << key << ' ' << place;
    }
}

TEST(DecodeKey, GivesReals) {
    static constexpr struct {
        const char* key;
        long place;
        double value;
    } kCases[] = {
        {"R00031.5", 1, 1.5},
        {"R0004-2.5", 1, -2.5},
        {"R00017", 1, 7.0},  // still a real
        {"S0002ABR00050.125", 2, 0.125},
        {"R0000", 1, 0.0},
        {"R0003abc", 1, 0.0},
    };
    for (const auto& [key, place, value] : kCases) {
        EXPECT_EQ(RealIn(DecodeKey(Handle(key), Handle(place))), value) << key << ' ' << place;
    }
}

TEST(DecodeKey, ReadsAFieldOfAnyOtherLetterAsAnInteger) {
    static constexpr struct {
        const char* key;
        long place;
        long value;
    } kCases[] = {
        {"X000242", 1, 42},
        {"X0002AB", 1, -1},
        {"X0000", 1, -1},
        {"s0002AB", 1, -1},
        {"i000242", 1, 42},
        {"S0001AX0003-42", 2, -42},
        // Not a key: the letter h, an invalid length, no value.
        {"hello", 1, -1},
        {"", 1, -1},
    };
    for (const auto& [key, place, value] : kCases) {
        EXPECT_EQ(IntegerIn(DecodeKey(Handle(key), Handle(place))), value) << key << ' ' << place;
    }
}

TEST(DecodeKey, HasNoValueBeyondTheLastField) {
    static constexpr struct {
        const char* key;
        long place;
    } kCases[] = {
        {"S0003ABC", 2},
        {"S0000", 2},
        {kThreeFields, 4},
        {kThreeFields, 1000000},
        {"S0006S0001X", 2},
        {"S0005AB", 2},
        {"", 2},
        {"", 3},
        {"S", 2},
        {"hello", 2},
        {kThreeFields, std::numeric_limits<int>::max()},
        {kThreeFields, std::numeric_limits<long>::max()},
    };
    for (const auto& [key, place] : kCases) {
        EXPECT_EQ(TextIn(DecodeKey(Handle(key), Handle(place))), "EMPTY VALUE")
            << key << ' ' << place;
    }
}

TEST(DecodeKey, EndsAtANegativeLength) {
    for (const char* key : {"S-005ABCDE", "S-001ABCDE", "S-999ABCDE"}) {
        for (const long place : {1L, 2L, 3L, std::numeric_limits<long>::max()}) {
            EXPECT_EQ(TextIn(DecodeKey(Handle(key), Handle(place))), "EMPTY VALUE")
                << key << ' ' << place;
        }
    }
    EXPECT_EQ(TextIn(DecodeKey("S0001AI-006"_h, 1_h)), "A");
    EXPECT_EQ(TextIn(DecodeKey("S0001AI-006"_h, 2_h)), "EMPTY VALUE");
    EXPECT_EQ(TextIn(DecodeKey("S0001AI-006"_h, 3_h)), "EMPTY VALUE");
}

TEST(DecodeKey, IsUnsetForAPlaceBelowOne) {
    for (const long place : {0L, -1L, std::numeric_limits<long>::min(), -0xFFFFFFFFL}) {
        EXPECT_TRUE(IsUnset(DecodeKey(Handle(kThreeFields), Handle(place)))) << place;
        EXPECT_TRUE(IsUnset(DecodeKey(""_h, Handle(place)))) << place;
    }
}

TEST(DecodeKey, TellsPlacesApartThatDifferBeyond32Bits) {
    EXPECT_EQ(TextIn(DecodeKey(Handle(kThreeFields), 0x100000001_h)), "EMPTY VALUE");
}

TEST(DecodeKey, IsUnsetWhenAnArgumentIsMissing) {
    TraceCapture trace;
    EXPECT_TRUE(IsUnset(DecodeKey(kMissing, 1_h)));
    EXPECT_TRUE(IsUnset(DecodeKey(Handle(kThreeFields), kMissing)));
    EXPECT_TRUE(IsUnset(DecodeKey(kMissing, kMissing)));
    EXPECT_THAT(trace.Messages(kDecodeKey), IsEmpty());
}

TEST(DecodeKey, ReadsOtherKindsOfArguments) {
    EXPECT_EQ(TextIn(DecodeKey("S0003ABC"_h, 1.0_h)), "ABC");
    EXPECT_TRUE(IsUnset(DecodeKey("S0003ABC"_h, "1"_h)));  // a text reads as the integer 0
    EXPECT_EQ(IntegerIn(DecodeKey(7_h, 1_h)), -1);         // a number reads as an empty text
    EXPECT_EQ(TextIn(DecodeKey(SdaiSelectH("LABEL", "S0003ABC"_h), 1_h)), "ABC");
}

TEST(DecodeKey, LeavesTheKeyAsItIs) {
    const SdaiPrimitiveH key = Handle(kThreeFields);
    DecodeKey(key, 2_h);
    EXPECT_EQ(TextIn(key), kThreeFields);
}

TEST(DecodeKey, TracesTheWayToTheField) {
    TraceCapture trace;
    DecodeKey(Handle(kThreeFields), 2_h);
    EXPECT_THAT(
        trace.Messages(kDecodeKey),
        ElementsAre("TheEncodedKey = S0002ABI000212S0000", "ThePlacement = 2", "CurrPlacement = 1",
                    "Type a lire: S", "Index de debut : 5", "Longueur a lire: 2",
                    "on saute la valeur lue et on continue", "CurrPlacement = 2", "Type a lire: I",
                    "Index de debut : 12", "Longueur a lire: 2",
                    "on a trouve a priori le bon placement", "Lecture de la valeur entiere: [12]"));
}

TEST(DecodeKey, TracesTheValueByItsType) {
    static constexpr struct {
        const char* key;
        const char* message;
    } kCases[] = {
        {"S0003ABC", "Lecture de la chaine de caracteres: [ABC]"},
        {"S0000", "Lecture de la chaine de caracteres: []"},
        {"I0002-7", "Lecture de la valeur entiere: [-7]"},
        {"R00031.5", "Lecture de la valeur reelle: [1.5]"},
        {"X000242", "Valeur forcee a [WRONG TYPE ENCODING]"},
    };
    for (const auto& [key, message] : kCases) {
        TraceCapture trace;
        DecodeKey(Handle(key), 1_h);
        const std::string type(1, key[0]);
        const std::string length = std::to_string(std::stoi(std::string(key).substr(1, 4)));
        EXPECT_THAT(trace.Messages(kDecodeKey),
                    ElementsAre(std::string("TheEncodedKey = ") + key, "ThePlacement = 1",
                                "CurrPlacement = 1", "Type a lire: " + type, "Index de debut : 5",
                                "Longueur a lire: " + length,
                                "on a trouve a priori le bon placement", message));
    }
}

TEST(DecodeKey, TracesTheEndOfTheKey) {
    TraceCapture trace;
    DecodeKey("S0003ABC"_h, 5_h);
    EXPECT_THAT(trace.Messages(kDecodeKey),
                ElementsAre("TheEncodedKey = S0003ABC", "ThePlacement = 5", "CurrPlacement = 1",
                            "Type a lire: S", "Index de debut : 5", "Longueur a lire: 3",
                            "on saute la valeur lue et on continue",
                            "on sort car la place demandee est inconnue"));
}

TEST(DecodeKey, TracesAnEmptyKey) {
    TraceCapture trace;
    DecodeKey(""_h, 1_h);
    EXPECT_THAT(trace.Messages(kDecodeKey),
                ElementsAre("TheEncodedKey = ", "ThePlacement = 1", "CurrPlacement = 1",
                            "Type a lire: ", "Index de debut : 5", "Longueur a lire: 0",
                            "on a trouve a priori le bon placement",
                            "Valeur forcee a [WRONG TYPE ENCODING]"));
}

TEST(DecodeKey, TracesOnlyItsArgumentsForAPlaceBelowOne) {
    TraceCapture trace;
    DecodeKey("S0003ABC"_h, Handle(-3L));
    EXPECT_THAT(trace.Messages(kDecodeKey),
                ElementsAre("TheEncodedKey = S0003ABC", "ThePlacement = -3"));
}
