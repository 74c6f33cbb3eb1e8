// ORX_GetDocName, ORX_GetModelName and the model identifier: ORX_GetModelId_Exp and its readers
// ORX_GetModelId_Imp1, ORX_GetModelId_Imp2 and ORX_GetModelId_Imp3.

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "KORLocale.h"
#include "KORNameConversion.h"
#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const char* const kDocLabel = "SdaiPrimitiveH ORX_GetDocName ->";
const char* const kModelLabel = "SdaiPrimitiveH ORX_GetModelName ->";
const char* const kExpLabel = "SdaiPrimitiveH ORX_GetModelId_Exp ->";
const char* const kImp1Label = "SdaiPrimitiveH ORX_GetModelId_Imp1 ->";
const char* const kImp2Label = "SdaiPrimitiveH ORX_GetModelId_Imp2 ->";
const char* const kImp3Label = "SdaiPrimitiveH ORX_GetModelId_Imp3 ->";

const std::string kTag1 = "_ORXExchangedRep_";
const std::string kTag2 = "_ORXExchangedRep2_";

// Results must not depend on the trace: every table runs with it off and on.
const int kTraceLevels[] = {0, 12};

// Around the buffer for names of 80 characters, around the six characters of ".model", and far
// beyond.
const std::size_t kLengths[] = {0, 1, 5, 6, 7, 79, 80, 81, 160, 161, 100000};

std::string Replaced(std::string text, char from, char to) {
    std::replace(text.begin(), text.end(), from, to);
    return text;
}
std::string ToFileForm(const std::string& name) { return Replaced(name, ' ', '\xB1'); }
std::string ToDatabaseForm(const std::string& name) { return Replaced(name, '\xB1', ' '); }

// A name of this length with a blank at every third position, including the last one.
std::string NameOfLength(std::size_t length) {
    std::string name(length, 'n');
    for (std::size_t i = 0; i < length; i += 3) name[length - 1 - i] = ' ';
    return name;
}

// A random name of up to 200 characters that a database could contain: any character except 0xB1,
// with many blanks.
std::string RandomName(std::mt19937& random) {
    std::uniform_int_distribution<std::size_t> length(0, 200);
    std::uniform_int_distribution<int> character(1, 255);
    std::uniform_int_distribution<int> oneInFour(0, 3);
    std::string name(length(random), ' ');
    for (char& c : name) {
        const int other = character(random);
        if (oneInFour(random) != 0 && other != 0xB1) c = static_cast<char>(other);
    }
    return name;
}

std::string DocName(const std::string& name, long direction) {
    return TextIn(ORX_GetDocName(Handle(name), Handle(direction)));
}
std::string ModelName(const std::string& name, long direction) {
    return TextIn(ORX_GetModelName(Handle(name), Handle(direction)));
}

// ---- A platform with its own routines
//
// They record how the functions call them while a recording is on, and call the platform's
// routines.

struct RoutineCall {
    std::string routine;
    std::string input;
    bool operator==(const RoutineCall& other) const {
        return routine == other.routine && input == other.input;
    }
};
void PrintTo(const RoutineCall& call, std::ostream* stream) {
    *stream << call.routine << " '" << call.input << '\'';
}

class Recording {
  public:
    Recording() { current = this; }
    ~Recording() { current = nullptr; }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    std::vector<RoutineCall> calls;
    std::vector<const char*> outputs;
    std::vector<int> statuses;
    std::vector<double> numbers;  // formatted with 6 and 0

    static inline Recording* current = nullptr;
};

template <class Function>
Function* OfThePlatform(const char* symbol) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol));
}

// An output buffer has room for at least 81 characters; text after the name in it does not count.
void Spoil(char* output, std::size_t from) {
    for (std::size_t i = from; i < 81; ++i) output[i] = '!';
}

}  // namespace

void cmbflmd(const char* name, char* fileName, int* status) {
    Recording* recording = Recording::current;
    if (recording != nullptr) {
        recording->calls.push_back({"cmbflmd", name});
        recording->outputs.push_back(fileName);
        recording->statuses.push_back(*status);
    }
    OfThePlatform<void(const char*, char*, int*)>("cmbflmd")(name, fileName, status);
    if (recording != nullptr) Spoil(fileName, std::strlen(name));
}

void cmbrcmd(const char* fileName, char* name) {
    Recording* recording = Recording::current;
    if (recording != nullptr) {
        recording->calls.push_back({"cmbrcmd", fileName});
        recording->outputs.push_back(name);
    }
    OfThePlatform<void(const char*, char*)>("cmbrcmd")(fileName, name);
    if (recording != nullptr) Spoil(name, std::strlen(fileName));
}

KORUnicodeString KORLocale::sConvertNumToString(double value, int digits, int decimals) {
    if (Recording::current != nullptr && digits == 6 && decimals == 0) {
        Recording::current->numbers.push_back(value);
    }
    return OfThePlatform<KORUnicodeString(double, int, int)>(
        "_ZN9KORLocale19sConvertNumToStringEdii")(value, digits, decimals);
}

TEST(NameConversion, ConvertsEachNameInOneCall) {
    const std::string name81 = NameOfLength(81);
    const std::string name300 = NameOfLength(300);
    const struct {
        SdaiPrimitiveH (*function)(const SdaiPrimitiveH&, const SdaiPrimitiveH&);
        std::string name;
        long direction;
        RoutineCall call;
        std::string result;
    } cases[] = {
        {ORX_GetDocName, "a b", 1, {"cmbflmd", "a b"}, "a\xB1\x62"},
        {ORX_GetDocName, "", 1, {"cmbflmd", ""}, ""},
        {ORX_GetDocName, name81, 1, {"cmbflmd", name81}, ToFileForm(name81)},
        {ORX_GetDocName, "a\xB1\x62", 0, {"cmbrcmd", "a\xB1\x62"}, "a b"},
        {ORX_GetDocName, "", 0, {"cmbrcmd", ""}, ""},
        {ORX_GetDocName, ToFileForm(name300), 0, {"cmbrcmd", ToFileForm(name300)}, name300},
        {ORX_GetModelName, "a b", 1, {"cmbflmd", "a b"}, "a\xB1\x62.model"},
        {ORX_GetModelName, "", 1, {"cmbflmd", ""}, ".model"},
        {ORX_GetModelName, name300, 1, {"cmbflmd", name300}, ToFileForm(name300) + ".model"},
        {ORX_GetModelName, "a\xB1\x62.model", 0, {"cmbrcmd", "a\xB1\x62"}, "a b"},
        {ORX_GetModelName, ".model", 0, {"cmbrcmd", ""}, ""},
        {ORX_GetModelName, "abc", 0, {"cmbrcmd", ""}, ""},
    };
    for (const auto& c : cases) {
        Recording recording;
        EXPECT_EQ(TextIn(c.function(Handle(c.name), Handle(c.direction))), c.result);
        EXPECT_THAT(recording.calls, ElementsAre(c.call));
        for (const int status : recording.statuses) EXPECT_EQ(status, 0);
    }
}

// The routines stop at a NUL. The NULs of a name stay, whatever a routine leaves after a piece.
TEST(NameConversion, ConvertsANameWithNulsPieceByPiece) {
    const std::string name("a b\0\0c d", 8);
    const std::string file = ToFileForm(name);
    const struct {
        SdaiPrimitiveH (*function)(const SdaiPrimitiveH&, const SdaiPrimitiveH&);
        std::string name;
        long direction;
        std::string routine;
        std::string pieces[3];
        std::string result;
    } cases[] = {
        {ORX_GetDocName, name, 1, "cmbflmd", {"a b", "", "c d"}, file},
        {ORX_GetDocName, file, 0, "cmbrcmd", {"a\xB1\x62", "", "c\xB1\x64"}, name},
        {ORX_GetModelName, name, 1, "cmbflmd", {"a b", "", "c d"}, file + ".model"},
        {ORX_GetModelName, file + ".model", 0, "cmbrcmd", {"a\xB1\x62", "", "c\xB1\x64"}, name},
    };
    for (const auto& c : cases) {
        Recording recording;
        EXPECT_EQ(TextIn(c.function(Handle(c.name), Handle(c.direction))), c.result);
        EXPECT_THAT(recording.calls, ElementsAre(RoutineCall{c.routine, c.pieces[0]},
                                                 RoutineCall{c.routine, c.pieces[1]},
                                                 RoutineCall{c.routine, c.pieces[2]}));
    }
}

TEST(NameConversion, ConvertsTheFieldsOfAnIdentifier) {
    const struct {
        SdaiPrimitiveH (*function)(const SdaiPrimitiveH&);
        std::string identifier;
        std::vector<RoutineCall> calls;
    } cases[] = {
        {ORX_GetModelId_Imp1,
         "A\xB1\x42" + kTag1 + "12" + kTag2 + "V5",
         {{"cmbrcmd", "A\xB1\x42"}}},
        {ORX_GetModelId_Imp1, "no tag", {{"cmbrcmd", ""}}},
        {ORX_GetModelId_Imp1, kTag1 + "5", {{"cmbrcmd", ""}}},
        {ORX_GetModelId_Imp3, "A" + kTag1 + "12" + kTag2 + "V\xB1\x35", {{"cmbrcmd", "V\xB1\x35"}}},
        {ORX_GetModelId_Imp3, "A" + kTag2, {{"cmbrcmd", ""}}},
        {ORX_GetModelId_Imp3, "no tag", {}},
        {ORX_GetModelId_Imp2, "A" + kTag1 + "12", {}},
    };
    for (const auto& c : cases) {
        Recording recording;
        c.function(Handle(c.identifier));
        EXPECT_EQ(recording.calls, c.calls) << c.identifier;
    }
}

// The type of representation and the number are computed, although the identifier does not contain
// them; both names use one buffer.
TEST(NameConversion, ConvertsTwoAttributesForAModelIdentifier) {
    const TestModel model("cdma", "#1=MODEL_OBJECT($,'a b',3,$,$,'R 1');");
    Recording recording;
    EXPECT_EQ(TextIn(ORX_GetModelId_Exp(model[1])), "R\xB1\x31_ORXExchangedRep2_R 1");
    EXPECT_THAT(recording.calls,
                ElementsAre(RoutineCall{"cmbflmd", "a b"}, RoutineCall{"cmbflmd", "R 1"}));
    ASSERT_EQ(recording.outputs.size(), 2U);
    EXPECT_EQ(recording.outputs[0], recording.outputs[1]);
    EXPECT_THAT(recording.statuses, ElementsAre(0, 0));
    EXPECT_THAT(recording.numbers, ElementsAre(3.0));
}

TEST(NameConversion, ConvertsWhatAModelHasInThePlaceOfItsAttributes) {
    const TestModel model("cdma", "#1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);");
    Recording recording;
    EXPECT_EQ(TextIn(ORX_GetModelId_Exp(model[1])), "EMPTY\xB1VALUE_ORXExchangedRep2_EMPTY VALUE");
    EXPECT_THAT(recording.calls,
                ElementsAre(RoutineCall{"cmbflmd", ""}, RoutineCall{"cmbflmd", "EMPTY VALUE"}));
    EXPECT_THAT(recording.numbers, testing::IsEmpty());
}

TEST(NameConversion, IsNotCalledForAMissingName) {
    Recording recording;
    ORX_GetDocName({}, 1_h);
    ORX_GetDocName("a b"_h, {});
    ORX_GetModelName({}, 0_h);
    ORX_GetModelId_Exp({});
    ORX_GetModelId_Imp1({});
    ORX_GetModelId_Imp3({});
    EXPECT_THAT(recording.calls, testing::IsEmpty());
}

// ---- ORX_GetDocName

TEST(ORX_GetDocName, TurnsBlanksIntoPlusMinusAndBack) {
    const struct {
        const char* database;
        const char* file;
    } kNames[] = {
        {"Left Door",
         "Left\xB1"
         "Door"},
        {"", ""},
        {" ", "\xB1"},
        {"   ", "\xB1\xB1\xB1"},
        {" both ends ",
         "\xB1"
         "both\xB1"
         "ends\xB1"},
        {"none", "none"},
        {"part.model", "part.model"},
        {"tab\tstays", "tab\tstays"},
        {"no\xA0"
         "break",
         "no\xA0"
         "break"},
        {"\xE9t\xE9", "\xE9t\xE9"},
    };
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [database, file] : kNames) {
            EXPECT_EQ(DocName(database, 1), file);
            EXPECT_EQ(DocName(file, 0), database);
        }
    }
}

TEST(ORX_GetDocName, TakesOnlyTheDirection1AsTowardsTheFile) {
    for (const long direction : {0L, 2L, 3L, -1L, 11L, 4294967297L}) {
        EXPECT_EQ(DocName("a b\xB1"
                          "c",
                          direction),
                  "a b c")
            << direction;
    }
    EXPECT_EQ(DocName("a b\xB1"
                      "c",
                      1),
              "a\xB1"
              "b\xB1"
              "c");
    // A real reads as an integer, a text as 0.
    EXPECT_EQ(TextIn(ORX_GetDocName("a b"_h, 1.9_h)),
              "a\xB1"
              "b");
    EXPECT_EQ(TextIn(ORX_GetDocName("a\xB1"
                                    "b"_h,
                                    "1"_h)),
              "a b");
}

TEST(ORX_GetDocName, LosesNothingOfNamesOfAnyLength) {
    for (const std::size_t length : kLengths) {
        const std::string name = NameOfLength(length);
        const std::string file = ToFileForm(name);
        EXPECT_EQ(DocName(name, 1), file) << length;
        EXPECT_EQ(DocName(file, 0), name) << length;
    }
}

TEST(ORX_GetDocName, ChangesNoCharacterButTheBlankAndThePlusMinus) {
    for (int c = 1; c < 256; ++c) {
        const std::string character(1, static_cast<char>(c));
        EXPECT_EQ(DocName("a" + character + "z", 1), "a" + ToFileForm(character) + "z") << c;
        EXPECT_EQ(DocName("a" + character + "z", 0), "a" + ToDatabaseForm(character) + "z") << c;
    }
}

TEST(ORX_GetDocName, KeepsWhatFollowsANul) {
    const std::string name("a b\0c d", 7);
    const std::string file(
        "a\xB1"
        "b\0c\xB1"
        "d",
        7);
    EXPECT_EQ(DocName(name, 1), file);
    EXPECT_EQ(DocName(file, 0), name);
}

TEST(ORX_GetDocName, GivesBackEveryNameWithoutPlusMinus) {
    std::mt19937 random(20240701);
    for (int i = 0; i < 1000; ++i) {
        const std::string name = RandomName(random);
        const std::string file = DocName(name, 1);
        EXPECT_THAT(file, testing::Not(HasSubstr(" ")));
        EXPECT_EQ(DocName(file, 0), name);
    }
}

TEST(ORX_GetDocName, GivesAnEmptyTextWhenAnArgumentIsMissing) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_EQ(TextIn(ORX_GetDocName({}, 1_h)), "");
        EXPECT_EQ(TextIn(ORX_GetDocName({}, 0_h)), "");
        EXPECT_EQ(TextIn(ORX_GetDocName("Left Door"_h, {})), "");
        EXPECT_EQ(TextIn(ORX_GetDocName({}, {})), "");
    }
}

TEST(ORX_GetDocName, GivesAnEmptyTextForANameThatIsNoText) {
    EXPECT_EQ(TextIn(ORX_GetDocName(12_h, 1_h)), "");
    EXPECT_EQ(TextIn(ORX_GetDocName(sdaiLTRUE, 0_h)), "");
}

TEST(ORX_GetDocName, TracesTheWayToTheFile) {
    const TraceCapture trace;
    ORX_GetDocName("Left Door"_h, 1_h);
    EXPECT_THAT(
        trace.Messages(kDocLabel),
        ElementsAre("nom rentre Left Door", "Conversion NARVO name -> file name",
                    "Nom de document en base: Left Door", "On remplace les blancs par des \xB1",
                    "Nom de model traite : Left\xB1"
                    "Door",
                    "le nom du document retourne: >Left\xB1"
                    "Door<"));
}

TEST(ORX_GetDocName, TracesTheWayBack) {
    const TraceCapture trace;
    ORX_GetDocName(
        "Left\xB1"
        "Door"_h,
        0_h);
    EXPECT_THAT(
        trace.Messages(kDocLabel),
        ElementsAre("nom rentre Left\xB1"
                    "Door",
                    "Conversion file name - >NARVO name ",
                    "Nom du fichier: Left\xB1"
                    "Door",
                    "Longueur: 9", "On remplace les \xB1 par des blancs",
                    "Nom de model traite : Left Door", "le nom du document retourne: >Left Door<"));
}

TEST(ORX_GetDocName, TracesTheBracketsAroundAnEmptyName) {
    const TraceCapture trace;
    ORX_GetDocName(""_h, 1_h);
    EXPECT_THAT(trace.Messages(kDocLabel),
                ElementsAre("nom rentre ", "Conversion NARVO name -> file name",
                            "Nom de document en base: ", "On remplace les blancs par des \xB1",
                            "Nom de model traite : ", "le nom du document retourne: ><"));
}

TEST(ORX_GetDocName, TracesOnlyTheResultWhenAnArgumentIsMissing) {
    const TraceCapture trace;
    ORX_GetDocName({}, 1_h);
    ORX_GetDocName("Left Door"_h, {});
    EXPECT_THAT(trace.Messages(kDocLabel),
                ElementsAre("le nom du document retourne: ><", "le nom du document retourne: ><"));
}

// ---- ORX_GetModelName

TEST(ORX_GetModelName, AddsAndStripsTheExtension) {
    const struct {
        const char* database;
        const char* file;
    } kNames[] = {
        {"Left Door",
         "Left\xB1"
         "Door.model"},
        {"", ".model"},
        {" ", "\xB1.model"},
        {"part", "part.model"},
        {"part.model", "part.model.model"},
        {"a.b", "a.b.model"},
    };
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [database, file] : kNames) {
            EXPECT_EQ(ModelName(database, 1), file);
            EXPECT_EQ(ModelName(file, 0), database);
        }
    }
}

TEST(ORX_GetModelName, DropsTheLastSixCharactersWhateverTheyAre) {
    const struct {
        const char* file;
        const char* database;
    } kNames[] = {
        {"abcdefgh", "ab"},
        {"abcdefg", "a"},
        {"abcdef", ""},
        {"a b\xB1"
         "c 12345",
         "a b c"},
        {"engine.models", "engine."},
        {"\xB1\xB1\xB1\xB1\xB1\xB1\xB1", " "},
    };
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [file, database] : kNames) EXPECT_EQ(ModelName(file, 0), database);
    }
}

TEST(ORX_GetModelName, GivesAnEmptyTextForAFileNameShorterThanTheExtension) {
    for (const char* const file : {"", "a", "ab", "odel", "model"}) {
        EXPECT_EQ(ModelName(file, 0), "") << file;
    }
}

TEST(ORX_GetModelName, TakesOnlyTheDirection1AsTowardsTheFile) {
    for (const long direction : {0L, 2L, 3L, -1L, 11L, 4294967297L}) {
        EXPECT_EQ(ModelName("a b\xB1"
                            "c.model",
                            direction),
                  "a b c")
            << direction;
    }
    EXPECT_EQ(TextIn(ORX_GetModelName("a b"_h, 1.9_h)),
              "a\xB1"
              "b.model");
    EXPECT_EQ(TextIn(ORX_GetModelName("a\xB1"
                                      "b.model"_h,
                                      "1"_h)),
              "a b");
}

TEST(ORX_GetModelName, LosesNothingOfNamesOfAnyLength) {
    for (const std::size_t length : kLengths) {
        const std::string name = NameOfLength(length);
        const std::string file = ToFileForm(name);
        EXPECT_EQ(ModelName(name, 1), file + ".model") << length;
        EXPECT_EQ(ModelName(file + ".model", 0), name) << length;
        const std::string kept = length < 6 ? "" : name.substr(0, length - 6);
        EXPECT_EQ(ModelName(file, 0), kept) << length;
    }
}

TEST(ORX_GetModelName, ChangesNoCharacterButTheBlankAndThePlusMinus) {
    for (int c = 1; c < 256; ++c) {
        const std::string character(1, static_cast<char>(c));
        EXPECT_EQ(ModelName("a" + character, 1), "a" + ToFileForm(character) + ".model") << c;
        EXPECT_EQ(ModelName("a" + character + ".model", 0), "a" + ToDatabaseForm(character)) << c;
    }
}

TEST(ORX_GetModelName, KeepsWhatFollowsANul) {
    const std::string name("a b\0c d", 7);
    const std::string file(
        "a\xB1"
        "b\0c\xB1"
        "d.model",
        13);
    EXPECT_EQ(ModelName(name, 1), file);
    EXPECT_EQ(ModelName(file, 0), name);
}

TEST(ORX_GetModelName, GivesBackEveryNameWithoutPlusMinus) {
    std::mt19937 random(20240702);
    for (int i = 0; i < 1000; ++i) {
        const std::string name = RandomName(random);
        EXPECT_EQ(ModelName(ModelName(name, 1), 0), name);
    }
}

TEST(ORX_GetModelName, GivesAnEmptyTextWhenAnArgumentIsMissing) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_EQ(TextIn(ORX_GetModelName({}, 1_h)), "");
        EXPECT_EQ(TextIn(ORX_GetModelName({}, 0_h)), "");
        EXPECT_EQ(TextIn(ORX_GetModelName("Left Door"_h, {})), "");
        EXPECT_EQ(TextIn(ORX_GetModelName({}, {})), "");
    }
}

TEST(ORX_GetModelName, TakesANameThatIsNoTextAsEmpty) {
    EXPECT_EQ(TextIn(ORX_GetModelName(12_h, 1_h)), ".model");
    EXPECT_EQ(TextIn(ORX_GetModelName(12_h, 0_h)), "");
}

TEST(ORX_GetModelName, TracesTheWayToTheFile) {
    const TraceCapture trace;
    ORX_GetModelName("Left Door"_h, 1_h);
    // The extension is added after the conversion.
    EXPECT_THAT(
        trace.Messages(kModelLabel),
        ElementsAre("nom rentre Left Door", "Conversion NARVO name -> file name",
                    "Nom de model en base: Left Door", "On remplace les blancs par des \xB1",
                    "Nom de model traite : Left\xB1"
                    "Door",
                    "le nom du modele retourne: >Left\xB1"
                    "Door.model<"));
}

// A line contains a text as characters up to a NUL.
TEST(ORX_GetModelName, TracesANameUpToItsFirstNul) {
    const TraceCapture trace;
    const SdaiPrimitiveH name(SdaiString(std::string_view("a\0b", 3)));
    ORX_GetModelName(name, 1_h);
    EXPECT_EQ(trace.Messages(kModelLabel).at(4), "Nom de model traite : a");
}

TEST(ORX_GetModelName, TracesTheWayBack) {
    const TraceCapture trace;
    ORX_GetModelName(
        "Left\xB1"
        "Door.model"_h,
        0_h);
    EXPECT_THAT(
        trace.Messages(kModelLabel),
        ElementsAre("nom rentre Left\xB1"
                    "Door.model",
                    "Conversion file name - >NARVO name ",
                    "Nom du fichier: Left\xB1"
                    "Door.model",
                    "On supprime l'extension .model", "Longueur: 15",
                    "Nom du fichier SANS extension: Left\xB1"
                    "Door",
                    "Longueur: 9", "On remplace les \xB1 par des blancs",
                    "Nom de model traite : Left Door", "le nom du modele retourne: >Left Door<"));
}

TEST(ORX_GetModelName, TracesOnlyTheResultWhenAnArgumentIsMissing) {
    const TraceCapture trace;
    ORX_GetModelName({}, 1_h);
    ORX_GetModelName("Left Door"_h, {});
    EXPECT_THAT(trace.Messages(kModelLabel),
                ElementsAre("le nom du modele retourne: ><", "le nom du modele retourne: ><"));
}

// ---- ORX_GetModelId_Exp

namespace {

// Models of entity types with and without the attributes of the identifier.
const TestModel& Models() {
    static const TestModel model(R"(SCHEMA cdma;
ENTITY plain_model;
  S_NAME : STRING;
END_ENTITY;
ENTITY full_model;
  S_TYPE_REP : OPTIONAL STRING;
  S_NEXT : OPTIONAL INTEGER;
  C_SOFT_VER : OPTIONAL STRING;
END_ENTITY;
ENTITY unnumbered_model;
  S_TYPE_REP : OPTIONAL STRING;
  C_SOFT_VER : OPTIONAL STRING;
END_ENTITY;
ENTITY unversioned_model;
  S_TYPE_REP : OPTIONAL STRING;
  S_NEXT : OPTIONAL INTEGER;
END_ENTITY;
ENTITY late_model SUBTYPE OF (full_model);
END_ENTITY;
END_SCHEMA;)",
                                 R"(
#1=FULL_MODEL('a b',3,'R 1');
#2=FULL_MODEL($,$,'V5');
#3=FULL_MODEL('a b',3,$);
#4=FULL_MODEL('a b',3,'');
#5=FULL_MODEL('a b',3,'_ORXExchangedRep_4_ORXExchangedRep2_5');
#6=FULL_MODEL('a b',-2147483648,'\X\B1 ');
#11=UNNUMBERED_MODEL('a b','R 1');
#21=UNVERSIONED_MODEL('a b',3);
#31=PLAIN_MODEL('a b');
#41=LATE_MODEL('a b',3,'R 1');
#51=ELSEWHERE_MODEL('a b',3,'R 1');
)");
    return model;
}

}  // namespace

TEST(ORX_GetModelId_Exp, IsMadeOfTheSoftwareVersionAlone) {
    const struct {
        unsigned long id;
        std::string identifier;
    } kModels[] = {
        {1,
         "R\xB1"
         "1" +
             kTag2 + "R 1"},
        {2, "V5" + kTag2 + "V5"},
        {3, kTag2},  // the type has the attribute: unset reads as an empty text
        {4, kTag2},
        {5, kTag1 + "4" + kTag2 + "5" + kTag2 + kTag1 + "4" + kTag2 + "5"},
        {6, "\xB1\xB1" + kTag2 + "\xB1 "},
        {11,
         "R\xB1"
         "1" +
             kTag2 + "R 1"},
        {21, "EMPTY\xB1VALUE" + kTag2 + "EMPTY VALUE"},
        {31, "EMPTY\xB1VALUE" + kTag2 + "EMPTY VALUE"},
        {41,
         "R\xB1"
         "1" +
             kTag2 + "R 1"},
        // A type that the schema does not declare has no attributes.
        {51, "EMPTY\xB1VALUE" + kTag2 + "EMPTY VALUE"},
    };
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [id, identifier] : kModels) {
            EXPECT_EQ(TextIn(ORX_GetModelId_Exp(Models()[id])), identifier) << id;
        }
    }
}

TEST(ORX_GetModelId_Exp, TakesTheModelsOfTheDatabase) {
    const TestModel model("cdma", R"(
#1=MODEL_OBJECT('n','a b',3,$,$,'R 1');
#2=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);
)");
    EXPECT_EQ(TextIn(ORX_GetModelId_Exp(model[1])),
              "R\xB1"
              "1" +
                  kTag2 + "R 1");
    EXPECT_EQ(TextIn(ORX_GetModelId_Exp(model[2])), "EMPTY\xB1VALUE" + kTag2 + "EMPTY VALUE");
}

TEST(ORX_GetModelId_Exp, ReadsAnInstanceOfSeveralTypes) {
    const TestModel model(
        "SCHEMA s; ENTITY a; c_soft_ver : STRING; END_ENTITY;"
        " ENTITY b; s_next : INTEGER; END_ENTITY; END_SCHEMA;",
        "#1=(A('R 1')B(3));");
    EXPECT_EQ(TextIn(ORX_GetModelId_Exp(model[1])),
              "R\xB1"
              "1" +
                  kTag2 + "R 1");
}

TEST(ORX_GetModelId_Exp, LosesNothingOfVersionsAndTypesOfAnyLength) {
    const TestModel model("cdma", "#1=MODEL_OBJECT('','',1,$,$,'');");
    SdaiAppInstance* instance = static_cast<SdaiAppInstance*>(InstanceIn(model[1]));
    for (const std::size_t length : kLengths) {
        const std::string version = NameOfLength(length);
        instance->PutAttr("C_SOFT_VER", Handle(version));
        // The converted version overwrites the type: either may be longer.
        for (const std::string& type : {std::string("t"), std::string(length * 2, ' ')}) {
            instance->PutAttr("S_TYPE_REP", Handle(type));
            EXPECT_EQ(TextIn(ORX_GetModelId_Exp(model[1])), ToFileForm(version) + kTag2 + version)
                << length;
        }
    }
}

TEST(ORX_GetModelId_Exp, IsReadBackAsNoNameNoNumberAndTheVersion) {
    const SdaiPrimitiveH identifier = ORX_GetModelId_Exp(Models()[1]);
    EXPECT_EQ(TextIn(ORX_GetModelId_Imp1(identifier)), "");
    EXPECT_EQ(IntegerIn(ORX_GetModelId_Imp2(identifier)), -999);
    EXPECT_EQ(TextIn(ORX_GetModelId_Imp3(identifier)), "R 1");
}

TEST(ORX_GetModelId_Exp, GivesAnEmptyTextForAMissingModel) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_EQ(TextIn(ORX_GetModelId_Exp({})), "");
    }
}

TEST(ORX_GetModelId_Exp, GivesATextForAnythingButAnInstance) {
    for (const SdaiPrimitiveH& value : {"text"_h, 7_h, 1.5_h, SdaiPrimitiveH(sdaiLTRUE)}) {
        TextIn(ORX_GetModelId_Exp(value));  // fails for another kind
    }
}

TEST(ORX_GetModelId_Exp, TracesItsSteps) {
    const TraceCapture trace;
    ORX_GetModelId_Exp(Models()[1]);
    EXPECT_THAT(trace.Messages(kExpLabel),
                ElementsAre("RECUPERATION DE S_TYPE_REP", "RECUPERATION DE S_NEXT",
                            "RECUPERATION DE C_SOFT_VER", "ON REMPLACE LES BLANCS PAR DES \xB1",
                            "CREATION DE LA CHAINE POUR LA SORTIE",
                            "ORX_GetModelId en mode EXPORT de donnees retourne: "
                            ">R\xB1"
                            "1_ORXExchangedRep2_R 1<"));
}

TEST(ORX_GetModelId_Exp, TracesOnlyTheResultForAMissingModel) {
    const TraceCapture trace;
    ORX_GetModelId_Exp({});
    EXPECT_THAT(trace.Messages(kExpLabel),
                ElementsAre("ORX_GetModelId en mode EXPORT de donnees retourne: ><"));
}

// The number is not part of the result, but is created.
TEST(ORX_GetModelId_Exp, MakesAUniqueIdentifierExactlyWhenTheTypeHasNoNumber) {
    const struct {
        unsigned long id;
        std::size_t calls;
    } kModels[] = {{1, 0}, {2, 0}, {21, 0}, {41, 0}, {11, 1}, {31, 1}, {51, 1}};
    for (const auto& [id, calls] : kModels) {
        const TraceCapture trace;
        ORX_GetModelId_Exp(Models()[id]);
        EXPECT_THAT(trace.Lines(), Contains("   SdaiPrimitiveH GetUniqId -> {").Times(calls)) << id;
    }
}

TEST(ORX_GetModelId_Exp, MakesTheUniqueIdentifierBetweenItsReads) {
    const TraceCapture trace;
    ORX_GetModelId_Exp(Models()[11]);
    const std::string label = std::string("   ") + kExpLabel;
    EXPECT_THAT(
        trace.Lines(),
        ElementsAre(std::string(kExpLabel) + " {", label + " RECUPERATION DE S_TYPE_REP",
                    label + " RECUPERATION DE S_NEXT", "   SdaiPrimitiveH GetUniqId -> {",
                    StartsWith("      SdaiPrimitiveH GetUniqId -> valeur rendue = "),
                    "   SdaiPrimitiveH GetUniqId -> }", label + " RECUPERATION DE C_SOFT_VER",
                    label + " ON REMPLACE LES BLANCS PAR DES \xB1",
                    label + " CREATION DE LA CHAINE POUR LA SORTIE",
                    label + " ORX_GetModelId en mode EXPORT de donnees retourne: "
                            ">R\xB1"
                            "1_ORXExchangedRep2_R 1<",
                    std::string(kExpLabel) + " }"));
}

// ---- ORX_GetModelId_Imp1, ORX_GetModelId_Imp2 and ORX_GetModelId_Imp3

namespace {

struct Identifier {
    std::string text;
    std::string name;
    long number;
    std::string version;
};

const Identifier kIdentifiers[] = {
    {"A\xB1"
     "B_ORXExchangedRep_12_ORXExchangedRep2_V5",
     "A B", 12, "V5"},
    {"A_ORXExchangedRep_-5_ORXExchangedRep2_R\xB1"
     "1",
     "A", -5, "R 1"},
    // Blanks around the number are ignored.
    {"A_ORXExchangedRep_ 12 _ORXExchangedRep2_V5", "A", 12, "V5"},
    // Fields without text.
    {"A_ORXExchangedRep_12_ORXExchangedRep2_", "A", 12, ""},
    {"A_ORXExchangedRep_", "A", 0, "EMPTY VALUE"},
    // Without the second tag the number extends to the end.
    {"X_ORXExchangedRep_7", "X", 7, "EMPTY VALUE"},
    {"X_ORXExchangedRep_7_ORXExchangedRep3_8", "X", 0, "EMPTY VALUE"},
    // Without the first tag.
    {"X_ORXExchangedRep2_V5", "", -999, "V5"},
    {"X", "", -999, "EMPTY VALUE"},
    {"", "", -999, "EMPTY VALUE"},
    {"X_orxexchangedrep_7_orxexchangedrep2_8", "", -999, "EMPTY VALUE"},
    {"X_ORXExchangedRep", "", -999, "EMPTY VALUE"},
    // A tag at the very start counts as missing.
    {"_ORXExchangedRep_5", "", -999, "EMPTY VALUE"},
    {"_ORXExchangedRep_5_ORXExchangedRep2_V5", "", -999, "V5"},
    {"_ORXExchangedRep2_V5", "", -999, "EMPTY VALUE"},
    {"_ORXExchangedRep_", "", -999, "EMPTY VALUE"},
    {"_ORXExchangedRep2_", "", -999, "EMPTY VALUE"},
    // Only the first tag of each kind counts, even at the start.
    {"_ORXExchangedRep_5_ORXExchangedRep_6", "", -999, "EMPTY VALUE"},
    {"_ORXExchangedRep2_V_ORXExchangedRep2_W", "", -999, "EMPTY VALUE"},
    {"X_ORXExchangedRep_7_ORXExchangedRep_8", "X", 0, "EMPTY VALUE"},
    {"X_ORXExchangedRep_7_ORXExchangedRep2_V_ORXExchangedRep2_W", "X", 7, "V_ORXExchangedRep2_W"},
    // The second tag directly after the first one: it begins the remainder, so that all of this is
    // the number, which is invalid.
    {"X_ORXExchangedRep__ORXExchangedRep2_9", "X", 0, "9"},
    // One underscore for both tags: it belongs to the first one if that would otherwise be
    // incomplete.
    {"X_ORXExchangedRep_ORXExchangedRep2_9", "X", 0, "9"},
    // The tags in the other order.
    {"X_ORXExchangedRep2_V_ORXExchangedRep_7", "X_ORXExchangedRep2_V", 7, "V_ORXExchangedRep_7"},
    // Invalid numbers.
    {"X_ORXExchangedRep_7a_ORXExchangedRep2_V5", "X", 0, "V5"},
    {"X_ORXExchangedRep_99999999999999999999_ORXExchangedRep2_V5", "X", 0, "V5"},
    {"X_ORXExchangedRep_9223372036854775807_ORXExchangedRep2_V5", "X", 9223372036854775807, "V5"},
    // Blanks are kept.
    {" X _ORXExchangedRep_7_ORXExchangedRep2_ V ", " X ", 7, " V "},
};

}  // namespace

TEST(ORX_GetModelId_Imp, TakesTheThreeFieldsApart) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [text, name, number, version] : kIdentifiers) {
            EXPECT_EQ(TextIn(ORX_GetModelId_Imp1(Handle(text))), name) << text;
            EXPECT_EQ(IntegerIn(ORX_GetModelId_Imp2(Handle(text))), number) << text;
            EXPECT_EQ(TextIn(ORX_GetModelId_Imp3(Handle(text))), version) << text;
        }
    }
}

TEST(ORX_GetModelId_Imp, FallsBackInThreeWaysForAMissingIdentifier) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_EQ(TextIn(ORX_GetModelId_Imp1({})), "");
        EXPECT_EQ(IntegerIn(ORX_GetModelId_Imp2({})), -999);
        EXPECT_EQ(TextIn(ORX_GetModelId_Imp3({})), "EMPTY VALUE");
    }
}

TEST(ORX_GetModelId_Imp, FallsBackForAnythingButAText) {
    for (const SdaiPrimitiveH& value : {7_h, 1.5_h, SdaiPrimitiveH(sdaiLTRUE), Models()[1]}) {
        EXPECT_EQ(TextIn(ORX_GetModelId_Imp1(value)), "");
        EXPECT_EQ(IntegerIn(ORX_GetModelId_Imp2(value)), -999);
        EXPECT_EQ(TextIn(ORX_GetModelId_Imp3(value)), "EMPTY VALUE");
    }
}

TEST(ORX_GetModelId_Imp, LosesNothingOfFieldsOfAnyLength) {
    for (const std::size_t length : kLengths) {
        const std::string name = NameOfLength(length);
        const std::string file = ToFileForm(name);
        const SdaiPrimitiveH identifier = Handle(file + kTag1 + "12" + kTag2 + file);
        EXPECT_EQ(TextIn(ORX_GetModelId_Imp1(identifier)), name) << length;
        // With an empty name the first tag is at the start, where it does not count.
        EXPECT_EQ(IntegerIn(ORX_GetModelId_Imp2(identifier)), length == 0 ? -999 : 12) << length;
        EXPECT_EQ(TextIn(ORX_GetModelId_Imp3(identifier)), name) << length;
    }
}

TEST(ORX_GetModelId_Imp, ChangesNoCharacterButThePlusMinus) {
    for (int c = 1; c < 256; ++c) {
        const std::string field = "a" + std::string(1, static_cast<char>(c)) + "z";
        const SdaiPrimitiveH identifier = Handle(field + kTag1 + "12" + kTag2 + field);
        EXPECT_EQ(TextIn(ORX_GetModelId_Imp1(identifier)), ToDatabaseForm(field)) << c;
        EXPECT_EQ(IntegerIn(ORX_GetModelId_Imp2(identifier)), 12) << c;
        EXPECT_EQ(TextIn(ORX_GetModelId_Imp3(identifier)), ToDatabaseForm(field)) << c;
    }
}

TEST(ORX_GetModelId_Imp, KeepsWhatFollowsANul) {
    const std::string file("a\xB1\0z", 4);
    const std::string name("a \0z", 4);
    const SdaiPrimitiveH identifier = Handle(file + kTag1 + "12" + kTag2 + file);
    EXPECT_EQ(TextIn(ORX_GetModelId_Imp1(identifier)), name);
    EXPECT_EQ(IntegerIn(ORX_GetModelId_Imp2(identifier)), 12);
    EXPECT_EQ(TextIn(ORX_GetModelId_Imp3(identifier)), name);
}

TEST(ORX_GetModelId_Imp1, TracesItsSteps) {
    const TraceCapture trace;
    ORX_GetModelId_Imp1(
        "A\xB1"
        "B_ORXExchangedRep_12"_h);
    EXPECT_THAT(trace.Messages(kImp1Label),
                ElementsAre("Conversion file name -> NARVO name ",
                            "Nom du fichier: A\xB1"
                            "B_ORXExchangedRep_12",
                            "ON RECUPERE LA CHAINE AVANT LE TAG ORX_TAG",
                            "ON REMPLACE LES \xB1 PAR DES BLANCS", "on retourne comme cle: >A B<"));
}

TEST(ORX_GetModelId_Imp1, TracesTheConversionOfAnEmptyField) {
    const TraceCapture trace;
    ORX_GetModelId_Imp1("X"_h);
    EXPECT_THAT(trace.Messages(kImp1Label),
                ElementsAre("Conversion file name -> NARVO name ", "Nom du fichier: X",
                            "ON RECUPERE LA CHAINE AVANT LE TAG ORX_TAG",
                            "ON REMPLACE LES \xB1 PAR DES BLANCS", "on retourne comme cle: ><"));
}

TEST(ORX_GetModelId_Imp1, TracesOnlyTheResultForAMissingIdentifier) {
    const TraceCapture trace;
    ORX_GetModelId_Imp1({});
    EXPECT_THAT(trace.Messages(kImp1Label), ElementsAre("on retourne comme cle: ><"));
}

TEST(ORX_GetModelId_Imp2, TracesItsSteps) {
    for (const std::string id : {"X_ORXExchangedRep_7", "X_ORXExchangedRep_7_ORXExchangedRep2_V"}) {
        const TraceCapture trace;
        ORX_GetModelId_Imp2(Handle(id));
        EXPECT_THAT(
            trace.Messages(kImp2Label),
            ElementsAre("Conversion file name -> NARVO name ", "Nom du fichier: " + id,
                        "ON RECUPERE LA CHAINE APRES LE TAG ORX_TAG",
                        "il faut garder la chaine avant le tag ORX_TAG2",
                        "on a la chaine desiree on peut la convertir", "on retourne la cle : >7<"));
    }
}

TEST(ORX_GetModelId_Imp2, TracesNoConversionWithoutTheTag) {
    for (const std::string id : {"X", "_ORXExchangedRep_5"}) {
        const TraceCapture trace;
        ORX_GetModelId_Imp2(Handle(id));
        EXPECT_THAT(trace.Messages(kImp2Label),
                    ElementsAre("Conversion file name -> NARVO name ", "Nom du fichier: " + id,
                                "ON RECUPERE LA CHAINE APRES LE TAG ORX_TAG",
                                "on retourne la cle : >-999<"));
    }
}

TEST(ORX_GetModelId_Imp2, TracesOnlyTheResultForAMissingIdentifier) {
    const TraceCapture trace;
    ORX_GetModelId_Imp2({});
    EXPECT_THAT(trace.Messages(kImp2Label), ElementsAre("on retourne la cle : >-999<"));
}

TEST(ORX_GetModelId_Imp3, TracesItsSteps) {
    const TraceCapture trace;
    ORX_GetModelId_Imp3(
        "X_ORXExchangedRep2_R\xB1"
        "1"_h);
    // The result opens without a bracket and closes with one.
    EXPECT_THAT(trace.Messages(kImp3Label),
                ElementsAre("Conversion file name -> NARVO name ",
                            "Nom du fichier: X_ORXExchangedRep2_R\xB1"
                            "1",
                            "ON RECUPERE LA CHAINE APRES LE TAG ORX_TAG2",
                            "on remplace les \xB1 par des blancs", "on retourne la cle: R 1<"));
}

TEST(ORX_GetModelId_Imp3, TracesNoConversionWithoutTheTag) {
    for (const std::string id : {"X", "_ORXExchangedRep2_V5"}) {
        const TraceCapture trace;
        ORX_GetModelId_Imp3(Handle(id));
        EXPECT_THAT(trace.Messages(kImp3Label),
                    ElementsAre("Conversion file name -> NARVO name ", "Nom du fichier: " + id,
                                "ON RECUPERE LA CHAINE APRES LE TAG ORX_TAG2",
                                "on retourne la cle: EMPTY VALUE<"));
    }
}

TEST(ORX_GetModelId_Imp3, TracesOnlyTheResultForAMissingIdentifier) {
    const TraceCapture trace;
    ORX_GetModelId_Imp3({});
    EXPECT_THAT(trace.Messages(kImp3Label), ElementsAre("on retourne la cle: EMPTY VALUE<"));
}
