// IsaNARVOModel, IsaNARVORepProperty, IsaNARVOV5Doc and GetNARVOV5Ext.

#include <gmock/gmock.h>

#include <string>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::Contains;
using testing::ElementsAre;

namespace {

const char* const kModelLabel = "SdaiPrimitiveH IsaNARVOModel ->";
const char* const kPropertyLabel = "SdaiPrimitiveH IsaNARVORepProperty ->";
const char* const kV5Label = "SdaiPrimitiveH IsaNARVOV5Doc ->";
const char* const kExtensionLabel = "SdaiPrimitiveH GetNARVOV5Ext ->";

// Results must not depend on the trace: every table runs with it off and on.
const int kTraceLevels[] = {0, 12};

// Around the buffer for names of 80 characters, around the six characters of ".model", and far
// beyond.
const std::size_t kLengths[] = {0, 1, 5, 6, 7, 79, 80, 81, 160, 161, 100000};

// Files and their descriptions: #1x are representations of properties.
const TestModel& Files() {
    static const TestModel model("AUTOMOTIVE_DESIGN", R"(
#1=DOCUMENT_FILE('engine.model','',$,$,'',$);
#2=DOCUMENT_FILE('engine.pdf','',$,$,'',$);
#3=DOCUMENT_FILE($,'',$,$,'',$);
#4=CHARACTERIZED_OBJECT('engine.model',$);
#5=DOCUMENT('engine.model','',$,$);
#6=(CHARACTERIZED_OBJECT('',$)DOCUMENT('hood.model','',$,$)DOCUMENT_FILE());
#11=PROPERTY_DEFINITION_REPRESENTATION(#21,$);
#12=PROPERTY_DEFINITION_REPRESENTATION(#22,$);
#13=PROPERTY_DEFINITION_REPRESENTATION(#23,$);
#14=PROPERTY_DEFINITION_REPRESENTATION(#24,$);
#15=PROPERTY_DEFINITION_REPRESENTATION(#25,$);
#16=PROPERTY_DEFINITION_REPRESENTATION(#26,$);
#17=PROPERTY_DEFINITION_REPRESENTATION(#27,$);
#18=PROPERTY_DEFINITION_REPRESENTATION(#28,$);
#19=PROPERTY_DEFINITION_REPRESENTATION($,$);
#20=PROPERTY_DEFINITION_REPRESENTATION(#29,$);
#21=PROPERTY_DEFINITION('',$,#1);
#22=PROPERTY_DEFINITION('',$,#2);
#23=PROPERTY_DEFINITION('',$,#3);
#24=PROPERTY_DEFINITION('',$,#4);
#25=PROPERTY_DEFINITION('',$,#5);
#26=PROPERTY_DEFINITION('',$,$);
#27=PRODUCT_DEFINITION_SHAPE('',$,#1);
#28=GENERAL_PROPERTY('','',$);
#29=PROPERTY_DEFINITION('',$,#6);
#30=EXTERNAL_SOURCE(IDENTIFIER('part.model'));
#31=EXTERNAL_SOURCE(IDENTIFIER('doc.KORShape'));
)");
    return model;
}

}  // namespace

// ---- IsaNARVOModel

TEST(IsaNARVOModel, WantsTheFirstModelExtensionAfterTheFirstDotToEndTheName) {
    const struct {
        const char* name;
        bool isModel;
    } kNames[] = {
        {"part.model", true},
        {"a.b.model", true},
        {".model", true},
        {"..model", true},
        {"a. .model", true},
        {"a.mod.model", true},
        {"left door.model", true},
        {"part.model.bak", false},
        {"part.mode", false},
        {"part", false},
        {"part.MODEL", false},
        {"part.Model", false},
        {"part.models", false},
        {"part.model ", false},
        {"part.model.", false},
        {"partmodel", false},
        {"model", false},
        {"model.", false},
        {".", false},
        {"", false},
        // The first match decides, even if another one ends the name.
        {"x.model.model", false},
        {"a.b.model.model", false},
        {"a.modelx.model", false},
        {".model.model", false},
    };
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [name, isModel] : kNames) {
            EXPECT_EQ(IsTrue(IsaNARVOModel(Handle(name))), isModel) << name;
            EXPECT_EQ(IsFalse(IsaNARVOModel(Handle(name))), !isModel) << name;
        }
    }
}

TEST(IsaNARVOModel, TakesNamesOfAnyLength) {
    for (const std::size_t length : kLengths) {
        const std::string name(length, 'n');
        EXPECT_TRUE(IsTrue(IsaNARVOModel(Handle(name + ".model")))) << length;
        EXPECT_TRUE(IsFalse(IsaNARVOModel(Handle(name + ".model.")))) << length;
        EXPECT_TRUE(IsFalse(IsaNARVOModel(Handle(name)))) << length;
        // Only dots before the extension.
        EXPECT_TRUE(IsTrue(IsaNARVOModel(Handle(std::string(length, '.') + ".model")))) << length;
    }
}

TEST(IsaNARVOModel, TakesNamesWithAnyCharacter) {
    for (int c = 0; c < 256; ++c) {
        const std::string character(1, static_cast<char>(c));
        EXPECT_TRUE(IsTrue(IsaNARVOModel(Handle("a" + character + "b.model")))) << c;
        EXPECT_TRUE(IsFalse(IsaNARVOModel(Handle("a.model" + character)))) << c;
    }
}

TEST(IsaNARVOModel, IsFalseForAnythingButAText) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_TRUE(IsFalse(IsaNARVOModel({})));
        EXPECT_TRUE(IsFalse(IsaNARVOModel(7_h)));
        EXPECT_TRUE(IsFalse(IsaNARVOModel(1.5_h)));
        EXPECT_TRUE(IsFalse(IsaNARVOModel(sdaiLTRUE)));
        EXPECT_TRUE(IsFalse(IsaNARVOModel(Files()[1])));
    }
}

TEST(IsaNARVOModel, ReadsATextThroughItsSelect) {
    EXPECT_TRUE(IsTrue(IsaNARVOModel(Files()[30].GetAttr("SOURCE_ID"))));
}

TEST(IsaNARVOModel, TracesWhereItFoundTheExtension) {
    const TraceCapture trace;
    IsaNARVOModel("a.b.model"_h);
    EXPECT_THAT(trace.Messages(kModelLabel),
                ElementsAre("IsaNARVOModel sur: a.b.model", "longueur du nom de model: 9",
                            "le . d'extension est trouve en position: 1",
                            "Position du l de .model: 9", "IsaNARVOModel retourne: TRUE"));
}

TEST(IsaNARVOModel, TracesThePlaceOfAnExtensionThatDoesNotEndTheName) {
    const TraceCapture trace;
    IsaNARVOModel("x.model.model"_h);
    EXPECT_THAT(trace.Messages(kModelLabel),
                ElementsAre("IsaNARVOModel sur: x.model.model", "longueur du nom de model: 13",
                            "le . d'extension est trouve en position: 1",
                            "Position du l de .model: 7", "IsaNARVOModel retourne: FALSE"));
}

TEST(IsaNARVOModel, TracesANameWithoutDotOrExtension) {
    for (const char* const name : {"part", "part.bak", ""}) {
        const TraceCapture trace;
        IsaNARVOModel(Handle(name));
        const auto messages = trace.Messages(kModelLabel);
        ASSERT_GE(messages.size(), 2U);
        EXPECT_EQ(messages.front(), std::string("IsaNARVOModel sur: ") + name);
        EXPECT_EQ(messages.back(), "IsaNARVOModel retourne: FALSE");
    }
}

TEST(IsaNARVOModel, TracesOnlyTheResultForAMissingName) {
    const TraceCapture trace;
    IsaNARVOModel({});
    EXPECT_THAT(trace.Lines(), ElementsAre("SdaiPrimitiveH IsaNARVOModel -> {",
                                           "   SdaiPrimitiveH IsaNARVOModel -> "
                                           "IsaNARVOModel retourne: FALSE",
                                           "SdaiPrimitiveH IsaNARVOModel -> }"));
}

// ---- IsaNARVORepProperty

TEST(IsaNARVORepProperty, TellsFromTheDocumentFileBehindTheProperty) {
    const struct {
        unsigned long id;
        bool isModel;
        const char* why;
    } kRepresentations[] = {
        {11, true, "a model file"},
        {12, false, "another file"},
        {13, false, "a file without identifier"},
        {14, false, "the definition is no document file"},
        {15, false, "a document that is no file"},
        {16, false, "a property of nothing"},
        {17, true, "a subtype of the property definition"},
        {18, false, "no property definition"},
        {19, false, "no definition"},
        {20, true, "a file that is several types at once"},
        {21, false, "the property itself: its definition is the file"},
        {1, false, "the file itself has no definition"},
    };
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [id, isModel, why] : kRepresentations) {
            EXPECT_EQ(IsTrue(IsaNARVORepProperty(Files()[id])), isModel) << why;
            EXPECT_EQ(IsFalse(IsaNARVORepProperty(Files()[id])), !isModel) << why;
        }
    }
}

TEST(IsaNARVORepProperty, IsFalseForAnythingButAnInstance) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_TRUE(IsFalse(IsaNARVORepProperty({})));
        EXPECT_TRUE(IsFalse(IsaNARVORepProperty("engine.model"_h)));
        EXPECT_TRUE(IsFalse(IsaNARVORepProperty(7_h)));
    }
}

TEST(IsaNARVORepProperty, TracesTheResultAfterTwoBlanks) {
    const TraceCapture trace;
    IsaNARVORepProperty(Files()[11]);
    // The message itself begins with a blank.
    EXPECT_THAT(trace.Messages(kPropertyLabel), ElementsAre(" on retourne: TRUE"));
    EXPECT_THAT(trace.Messages(kModelLabel),
                ElementsAre("IsaNARVOModel sur: engine.model", "longueur du nom de model: 12",
                            "le . d'extension est trouve en position: 6",
                            "Position du l de .model: 12", "IsaNARVOModel retourne: TRUE"));
}

TEST(IsaNARVORepProperty, TracesOnlyTheResultForAMissingRepresentation) {
    const TraceCapture trace;
    IsaNARVORepProperty({});
    EXPECT_THAT(trace.Lines(),
                ElementsAre("SdaiPrimitiveH IsaNARVORepProperty -> {",
                            "   SdaiPrimitiveH IsaNARVORepProperty ->  on retourne: FALSE",
                            "SdaiPrimitiveH IsaNARVORepProperty -> }"));
}

TEST(IsaNARVORepProperty, ReadsNoFurtherThanTheFirstLinkThatDoesNotFit) {
    const struct {
        unsigned long id;
        std::size_t links;
        std::size_t names;
    } kWays[] = {{18, 1, 0}, {19, 1, 0}, {14, 2, 0}, {16, 2, 0}, {12, 2, 1}, {13, 2, 1}};
    for (const auto& [id, links, names] : kWays) {
        const TraceCapture trace;
        IsaNARVORepProperty(Files()[id]);
        EXPECT_THAT(trace.Lines(), Contains("   SdaiPrimitiveH GetInst -> {").Times(links)) << id;
        EXPECT_THAT(trace.Lines(), Contains("   SdaiPrimitiveH IsaNARVOModel -> {").Times(names))
            << id;
        EXPECT_THAT(trace.Messages(kPropertyLabel), ElementsAre(" on retourne: FALSE")) << id;
    }
}

// ---- IsaNARVOV5Doc and GetNARVOV5Ext

namespace {

struct FileName {
    const char* name;
    const char* extension;  // "" if it is not a V5 document
};

const FileName kFileNames[] = {
    {"doc.KORShape", "KORShape"},
    {"a.KORx", "KORx"},
    {".KORx", "KORx"},
    {"left door.KOR 1", "KOR 1"},
    // The extension extends to the end, further dots included.
    {"a.KORb.c", "KORb.c"},
    {"a.KOR.", "KOR."},
    {"a.KORKOR.KORShape", "KORKOR.KORShape"},
    // More than the three characters are required.
    {"a.KOR", ""},
    {"a.KO", ""},
    {"a.K", ""},
    {"doc.", ""},
    {".", ""},
    {"doc", ""},
    {"KORShape", ""},
    {"", ""},
    {"doc.korShape", ""},
    {"doc.KoRShape", ""},
    {"doc. KORShape", ""},
    {"doc.xKORShape", ""},
    // The first dot counts.
    {"a.b.KORShape", ""},
    {"a..KORShape", ""},
};

}  // namespace

TEST(IsaNARVOV5Doc, TellsFromWhatFollowsTheFirstDot) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [name, extension] : kFileNames) {
            const bool isV5 = *extension != '\0';
            EXPECT_EQ(IsTrue(IsaNARVOV5Doc(Handle(name))), isV5) << name;
            EXPECT_EQ(IsFalse(IsaNARVOV5Doc(Handle(name))), !isV5) << name;
        }
    }
}

TEST(GetNARVOV5Ext, GivesWhatFollowsTheFirstDot) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [name, extension] : kFileNames) {
            EXPECT_EQ(TextIn(GetNARVOV5Ext(Handle(name))), extension) << name;
        }
    }
}

TEST(GetNARVOV5Ext, GivesExtensionsOfAnyLength) {
    for (const std::size_t length : kLengths) {
        const std::string extension = "KORx" + std::string(length, 'y');
        const std::string name = std::string(length, 'n') + "." + extension;
        EXPECT_EQ(TextIn(GetNARVOV5Ext(Handle(name))), extension) << length;
        EXPECT_TRUE(IsTrue(IsaNARVOV5Doc(Handle(name)))) << length;
    }
}

TEST(GetNARVOV5Ext, KeepsAnyCharacter) {
    for (int c = 0; c < 256; ++c) {
        const std::string extension = "KOR" + std::string(1, static_cast<char>(c));
        EXPECT_EQ(TextIn(GetNARVOV5Ext(Handle("a." + extension))), extension) << c;
        EXPECT_TRUE(IsTrue(IsaNARVOV5Doc(Handle("a." + extension)))) << c;
    }
}

TEST(IsaNARVOV5Doc, IsFalseForAnythingButAText) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_TRUE(IsFalse(IsaNARVOV5Doc({})));
        EXPECT_TRUE(IsFalse(IsaNARVOV5Doc(7_h)));
        EXPECT_TRUE(IsFalse(IsaNARVOV5Doc(1.5_h)));
        EXPECT_TRUE(IsFalse(IsaNARVOV5Doc(Files()[1])));
    }
}

TEST(GetNARVOV5Ext, IsAnEmptyTextForAnythingButAText) {
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        EXPECT_EQ(TextIn(GetNARVOV5Ext({})), "");
        EXPECT_EQ(TextIn(GetNARVOV5Ext(7_h)), "");
        EXPECT_EQ(TextIn(GetNARVOV5Ext(1.5_h)), "");
        EXPECT_EQ(TextIn(GetNARVOV5Ext(Files()[1])), "");
    }
}

TEST(IsaNARVOV5Doc, ReadsATextThroughItsSelect) {
    EXPECT_TRUE(IsTrue(IsaNARVOV5Doc(Files()[31].GetAttr("SOURCE_ID"))));
    EXPECT_EQ(TextIn(GetNARVOV5Ext(Files()[31].GetAttr("SOURCE_ID"))), "KORShape");
}

TEST(IsaNARVOV5Doc, TracesThePositionsAndTheExtension) {
    const struct {
        const char* name;
        std::vector<std::string> messages;
    } kTraces[] = {
        {"doc.KORShape",
         {"IsaNARVOV5Doc sur: doc.KORShape", "EndPos : 12", "StartPos : 3",
          "son extension : KORShape", "IsaNARVOV5DOC retourne: TRUE"}},
        {"doc.xKORShape",
         {"IsaNARVOV5Doc sur: doc.xKORShape", "EndPos : 13", "StartPos : 3",
          "son extension : xKORShape", "IsaNARVOV5DOC retourne: FALSE"}},
        {"doc.KOR",
         {"IsaNARVOV5Doc sur: doc.KOR", "EndPos : 7", "StartPos : 3", "son extension : KOR",
          "IsaNARVOV5DOC retourne: FALSE"}},
        {"doc.",
         {"IsaNARVOV5Doc sur: doc.", "EndPos : 4", "StartPos : 3",
          "son extension : ", "IsaNARVOV5DOC retourne: FALSE"}},
        {"doc",
         {"IsaNARVOV5Doc sur: doc", "EndPos : 3", "StartPos : -1",
          "IsaNARVOV5DOC retourne: FALSE"}},
        {"",
         {"IsaNARVOV5Doc sur: ", "EndPos : 0", "StartPos : -1", "IsaNARVOV5DOC retourne: FALSE"}},
    };
    for (const auto& [name, messages] : kTraces) {
        const TraceCapture trace;
        IsaNARVOV5Doc(Handle(name));
        EXPECT_EQ(trace.Messages(kV5Label), messages) << name;
    }
}

TEST(GetNARVOV5Ext, TracesThePositionsAndTheExtension) {
    const struct {
        const char* name;
        std::vector<std::string> messages;
    } kTraces[] = {
        {"doc.KORShape",
         {"GetNARVOV5Ext: doc.KORShape", "EndPos : 12", "StartPos : 3", "son extension : KORShape",
          "GetNARVOV5Ext retourne: KORShape"}},
        {"a.b.KORShape",
         {"GetNARVOV5Ext: a.b.KORShape", "EndPos : 12", "StartPos : 1",
          "son extension : b.KORShape", "GetNARVOV5Ext retourne: "}},
        {"doc.KOR",
         {"GetNARVOV5Ext: doc.KOR", "EndPos : 7", "StartPos : 3", "son extension : KOR",
          "GetNARVOV5Ext retourne: "}},
        {"doc", {"GetNARVOV5Ext: doc", "EndPos : 3", "StartPos : -1", "GetNARVOV5Ext retourne: "}},
    };
    for (const auto& [name, messages] : kTraces) {
        const TraceCapture trace;
        GetNARVOV5Ext(Handle(name));
        EXPECT_EQ(trace.Messages(kExtensionLabel), messages) << name;
    }
}

TEST(IsaNARVOV5Doc, TracesOnlyTheResultForAMissingName) {
    const TraceCapture trace;
    IsaNARVOV5Doc({});
    EXPECT_THAT(trace.Messages(kV5Label), ElementsAre("IsaNARVOV5DOC retourne: FALSE"));
}

TEST(GetNARVOV5Ext, TracesOnlyTheResultForAMissingName) {
    const TraceCapture trace;
    GetNARVOV5Ext({});
    EXPECT_THAT(trace.Messages(kExtensionLabel), ElementsAre("GetNARVOV5Ext retourne: "));
}
