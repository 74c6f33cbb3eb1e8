// GetExternalName.

#include <gmock/gmock.h>

#include <string>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::Contains;
using testing::ElementsAre;

namespace {

const char* const kLabel = "SdaiPrimitiveH GetExternalName ->";

// Results must not depend on the trace: every table runs with it off and on.
const int kTraceLevels[] = {0, 12};

// #1x have an identifier of their own or have none; #2x are sources.
const TestModel& Names() {
    static const TestModel model("AUTOMOTIVE_DESIGN", R"(
#11=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('own.pdf',$,$,());
#12=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('',$,$,());
#13=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT($,$,$,());
#14=DOCUMENT('a document','',$,$);
#15=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('Left\X\B1Door.model',$,$,());
#16=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT(7,$,$,());
#17=APPLIED_IDENTIFICATION_ASSIGNMENT(' ',$,());
#21=EXTERNAL_SOURCE(IDENTIFIER('source.pdf'));
#22=EXTERNAL_SOURCE('plain.pdf');
#23=EXTERNAL_SOURCE(IDENTIFIER('Right\X\B1Door.model'));
#24=EXTERNAL_SOURCE(IDENTIFIER(''));
#25=EXTERNAL_SOURCE($);
#26=EXTERNAL_SOURCE(7);
#27=EXTERNAL_SOURCE(#11);
#28=DOCUMENT('a document','',$,$);
)");
    return model;
}

// A handle on an instance of the model; unset for 0.
SdaiPrimitiveH At(unsigned long id) { return id != 0 ? Names()[id] : SdaiPrimitiveH(); }

// The external name of an instance with this identifier.
std::string NameOf(const std::string& identifier) {
    const TestModel model("AUTOMOTIVE_DESIGN",
                          "#1=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('',$,$,());");
    static_cast<SdaiAppInstance*>(InstanceIn(model[1]))
        ->PutAttr(SdaiString("ASSIGNED_ID"), Handle(identifier));
    return TextIn(GetExternalName(model[1], {}));
}

}  // namespace

TEST(GetExternalName, IsTheAssignedIdentifierOrElseThatOfTheSource) {
    const struct {
        unsigned long instance;
        unsigned long source;
        const char* name;
        const char* why;
    } kCases[] = {
        {11, 21, "own.pdf", "its own identifier comes first"},
        {11, 0, "own.pdf", "which needs no source"},
        {17, 21, " ", "a blank is not empty"},
        {12, 21, "source.pdf", "an empty identifier"},
        {13, 21, "source.pdf", "no identifier"},
        {14, 21, "source.pdf", "a type without the attribute"},
        {16, 21, "source.pdf", "a number is no text"},
        {13, 22, "plain.pdf", "a source identifier that names no type"},
        {13, 24, "", "an empty source identifier"},
        {13, 25, "", "no source identifier"},
        {13, 26, "", "a source identifier that is a number"},
        {13, 27, "", "a source identifier that is an instance"},
        {13, 28, "", "a source without the attribute"},
        {13, 0, "", "no source"},
        {15, 21, "Left Door", "its own identifier names a model file"},
        {13, 23, "Right Door", "the source's identifier does"},
        // If the instance is missing, the source is not used.
        {0, 21, "", "no instance"},
        {0, 23, "", "no instance"},
        {0, 0, "", "neither"},
    };
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [instance, source, name, why] : kCases) {
            EXPECT_EQ(TextIn(GetExternalName(At(instance), At(source))), name) << why;
        }
    }
}

TEST(GetExternalName, AsksTheSourceForAnythingThatHasNoIdentifier) {
    EXPECT_EQ(TextIn(GetExternalName("text"_h, At(21))), "source.pdf");
    EXPECT_EQ(TextIn(GetExternalName(7_h, At(21))), "source.pdf");
    EXPECT_EQ(TextIn(GetExternalName(7_h, "text"_h)), "");
    EXPECT_EQ(TextIn(GetExternalName(7_h, 7_h)), "");
}

TEST(GetExternalName, GivesAModelFileInDatabaseForm) {
    const struct {
        const char* identifier;
        const char* name;
    } kNames[] = {
        {"x.model", "x"},
        {"Left\xB1"
         "Door.model",
         "Left Door"},
        {"a.model.model", "a.model"},
        {"\xB1.model", " "},
        {"..model", "."},
        // At least seven characters are required.
        {".model", ".model"},
        {"xmodel", "xmodel"},
        {"model", "model"},
        // Not a model file.
        {"x.MODEL", "x.MODEL"},
        {"x.models", "x.models"},
        {"x.model ", "x.model "},
        {"x_model", "x_model"},
        {"Left\xB1"
         "Door.pdf",
         "Left\xB1"
         "Door.pdf"},
        {".modelx.mode", ".modelx.mode"},
    };
    for (const int level : kTraceLevels) {
        const TraceCapture trace(level);
        for (const auto& [identifier, name] : kNames) EXPECT_EQ(NameOf(identifier), name);
    }
}

TEST(GetExternalName, LosesNothingOfNamesOfAnyLength) {
    for (const std::size_t length : {1U, 5U, 6U, 7U, 79U, 80U, 81U, 160U, 161U, 100000U}) {
        EXPECT_EQ(NameOf(std::string(length, '\xB1') + ".model"), std::string(length, ' '));
        EXPECT_EQ(NameOf(std::string(length, '\xB1')), std::string(length, '\xB1'));
    }
}

TEST(GetExternalName, KeepsAnyCharacter) {
    for (int c = 1; c < 256; ++c) {
        const std::string name = "a" + std::string(1, static_cast<char>(c)) + "z";
        EXPECT_EQ(NameOf(name), name) << c;
        EXPECT_EQ(NameOf(name + ".model"), c == 0xB1 ? "a z" : name) << c;
    }
}

TEST(GetExternalName, TracesTheName) {
    const struct {
        unsigned long instance;
        unsigned long source;
        const char* message;
    } kCases[] = {
        {11, 21, " -> nom de fichier retourne :own.pdf"},
        {15, 21, " -> nom de fichier retourne :Left Door"},
        {13, 0, " -> nom de fichier retourne :"},
        {0, 21, " -> nom de fichier retourne :"},
    };
    for (const auto& [instance, source, message] : kCases) {
        const TraceCapture trace;
        GetExternalName(At(instance), At(source));
        EXPECT_THAT(trace.Messages(kLabel), ElementsAre(message));
    }
}

TEST(GetExternalName, ReadsTheSourceAndConvertsOnlyWhenItMust) {
    const struct {
        unsigned long instance;
        unsigned long source;
        std::size_t reads;
        std::size_t conversions;
    } kCases[] = {
        {11, 21, 0, 0}, {15, 21, 0, 1}, {13, 21, 1, 0}, {13, 23, 1, 1},
        {13, 0, 1, 0},  {0, 23, 0, 0},  {12, 24, 1, 0},
    };
    for (const auto& [instance, source, reads, conversions] : kCases) {
        const TraceCapture trace;
        GetExternalName(At(instance), At(source));
        EXPECT_THAT(trace.Lines(), Contains("   SdaiPrimitiveH GetInst -> {").Times(reads))
            << instance << ' ' << source;
        EXPECT_THAT(trace.Lines(),
                    Contains("   SdaiPrimitiveH ORX_GetModelName -> {").Times(conversions))
            << instance << ' ' << source;
    }
}
