// IsAnAssembly, IsInAssembly, QuantifyRef and IsModelDocLinked.

#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

// A car #1 with two axles #2 and a body #3, an axle with two wheels #4, and a wheel #5 with the
// values of #4 that is in no assembly.
constexpr char kCar[] = R"(
    #1=part_object('CAR',$,$,$,$,(#11,#12,#13),$,$,$,$);
    #2=part_object('AXLE',$,$,$,$,(#14,#15),$,$,$,$);
    #3=part_object('BODY',$,$,$,$,$,$,$,$,$);
    #4=part_object('WHEEL',$,$,$,$,(),$,$,$,$);
    #5=part_object('WHEEL',$,$,$,$,(),$,$,$,$);
    #11=part_link('1',$,#2,$,$,$,$);
    #12=part_link('2',$,#3,$,$,$,$);
    #13=part_link('3',$,#2,$,$,$,$);
    #14=part_link('4',$,#4,$,$,$,$);
    #15=part_link('5',$,#4,$,$,$,$);)";

// A result and its trace; the same result without tracing.
struct Traced {
    Traced(SdaiPrimitiveH (*function)(const SdaiPrimitiveH&), const char* label,
           const SdaiPrimitiveH& part) {
        const SdaiPrimitiveH untraced = function(part);
        const TraceCapture trace;
        result = function(part);
        EXPECT_TRUE(result == untraced);
        Read(trace, label);
    }
    Traced(SdaiPrimitiveH (*function)(const SdaiPrimitiveH&, const SdaiPrimitiveH&),
           const char* label, const SdaiPrimitiveH& root, const SdaiPrimitiveH& leaf) {
        const SdaiPrimitiveH untraced = function(root, leaf);
        const TraceCapture trace;
        result = function(root, leaf);
        EXPECT_TRUE(result == untraced);
        Read(trace, label);
    }

    SdaiPrimitiveH result;
    std::vector<std::string> messages;
    long comparisons = 0;  // calls of IsSame0
    bool opened = false;   // whether the call is traced

  private:
    void Read(const TraceCapture& trace, const std::string& label) {
        messages = trace.Messages(label);
        const auto lines = trace.Lines();
        comparisons = std::count(lines.begin(), lines.end(), "   SdaiPrimitiveH IsSame0-> {");
        opened = !lines.empty() && lines.front() == label + " {";
    }
};

Traced TraceIsAnAssembly(const SdaiPrimitiveH& part) {
    return {IsAnAssembly, "SdaiPrimitiveH IsAnAssembly ->", part};
}
Traced TraceIsInAssembly(const SdaiPrimitiveH& root, const SdaiPrimitiveH& leaf) {
    return {IsInAssembly, "SdaiPrimitiveH IsInAssembly ->", root, leaf};
}
Traced TraceQuantifyRef(const SdaiPrimitiveH& root, const SdaiPrimitiveH& leaf) {
    return {QuantifyRef, "SdaiPrimitiveH QuantifyRef ->", root, leaf};
}
Traced TraceIsModelDocLinked(const SdaiPrimitiveH& part) {
    return {IsModelDocLinked, "SdaiPrimitiveH IsModelDocLinked ->", part};
}

}  // namespace

// ---- IsAnAssembly

TEST(IsAnAssembly, HoldsForAPartWithLinks) {
    const TestModel model("cdma", kCar);
    for (const unsigned long id : {1UL, 2UL}) {
        const Traced call = TraceIsAnAssembly(model[id]);
        EXPECT_TRUE(IsTrue(call.result));
        EXPECT_THAT(call.messages, ElementsAre("il existe des liens", "Valeur de retour: [TRUE]"));
    }
}

TEST(IsAnAssembly, HoldsForAPartWithASingleLink) {
    const TestModel model("cdma", R"(
        #1=part_object('P',$,$,$,$,(#2),$,$,$,$);
        #2=part_link('1',$,#1,$,$,$,$);)");
    EXPECT_TRUE(IsTrue(IsAnAssembly(model[1])));
}

TEST(IsAnAssembly, DoesNotHoldForAPartWithAnEmptyList) {
    const TestModel model("cdma", kCar);
    const Traced call = TraceIsAnAssembly(model[4]);
    EXPECT_TRUE(IsFalse(call.result));
    EXPECT_THAT(call.messages, ElementsAre("il n''y a pas de lien", "Valeur de retour: [FALSE]"));
}

TEST(IsAnAssembly, DoesNotHoldForAPartWithoutAList) {
    const TestModel model("cdma", kCar);
    const Traced call = TraceIsAnAssembly(model[3]);
    EXPECT_TRUE(IsFalse(call.result));
    EXPECT_THAT(call.messages, ElementsAre("Valeur de retour: [FALSE]"));
}

TEST(IsAnAssembly, DoesNotHoldForWhatIsNoPart) {
    const TestModel model("cdma", kCar);
    for (const SdaiPrimitiveH& value : {SdaiPrimitiveH(), model[11], "CAR"_h, 1_h}) {
        const Traced call = TraceIsAnAssembly(value);
        EXPECT_TRUE(IsFalse(call.result));
        EXPECT_THAT(call.messages, ElementsAre("Valeur de retour: [FALSE]"));
    }
}

// ---- IsInAssembly and QuantifyRef

namespace {

struct Use {
    const char* description;
    unsigned long root;
    unsigned long leaf;
    double count;
    long comparisonsUpToTheFirst;
    long links;
};

void PrintTo(const Use& use, std::ostream* stream) { *stream << use.description; }

class UseOfAPart : public testing::TestWithParam<Use> {
  protected:
    const Use& use_ = GetParam();
    const TestModel model_{"cdma", kCar};
};

INSTANTIATE_TEST_SUITE_P(
    Car, UseOfAPart,
    testing::Values(Use{"TwiceBesideAnother", 1, 2, 2, 1, 3}, Use{"Once", 1, 3, 1, 2, 3},
                    Use{"OnlyTwice", 2, 4, 2, 1, 2}, Use{"TwoLevelsDown", 1, 4, 0, 3, 3},
                    Use{"LookAlike", 2, 5, 0, 2, 2}, Use{"Parent", 2, 1, 0, 2, 2},
                    Use{"ItselfWithLinks", 1, 1, 0, 3, 3}, Use{"ItselfWithoutLinks", 4, 4, 0, 0, 0},
                    Use{"WhereNoLinksAre", 3, 4, 0, 0, 0},
                    Use{"WhereTheListIsEmpty", 4, 5, 0, 0, 0}, Use{"LinkForPart", 1, 11, 0, 3, 3},
                    Use{"LinkForRoot", 11, 2, 0, 0, 0}),
    [](const auto& use) { return use.param.description; });

}  // namespace

TEST_P(UseOfAPart, IsFoundByIsInAssemblyAtTheFirstLinkToIt) {
    const Traced call = TraceIsInAssembly(model_[use_.root], model_[use_.leaf]);
    EXPECT_EQ(IsTrue(call.result), use_.count > 0);
    EXPECT_EQ(IsFalse(call.result), use_.count == 0);
    EXPECT_EQ(call.comparisons, use_.comparisonsUpToTheFirst);
    ASSERT_THAT(call.messages, Not(IsEmpty()));
    EXPECT_EQ(call.messages.back(),
              use_.count > 0 ? "Valeur de retour: [TRUE]" : "Valeur de retour: [FALSE]");
}

TEST_P(UseOfAPart, IsCountedByQuantifyRefOverAllLinks) {
    const Traced call = TraceQuantifyRef(model_[use_.root], model_[use_.leaf]);
    EXPECT_EQ(RealIn(call.result), use_.count);
    EXPECT_EQ(call.comparisons, use_.links);
    ASSERT_THAT(call.messages, Not(IsEmpty()));
    EXPECT_EQ(call.messages.back(), use_.count == 0   ? "Valeur de retour: [0]"
                                    : use_.count == 1 ? "Valeur de retour: [1]"
                                                      : "Valeur de retour: [2]");
}

TEST(IsInAssembly, NamesThePartsInTheTrace) {
    const TestModel model("cdma", kCar);
    EXPECT_THAT(TraceIsInAssembly(model[1], model[2]).messages,
                ElementsAre("iRootPart: [CAR]", "iLeafPart: [AXLE]", "KORASS ok pour [CAR]",
                            "Valeur de retour: [TRUE]"));
    EXPECT_THAT(TraceIsInAssembly(model[4], model[2]).messages,
                ElementsAre("iRootPart: [WHEEL]", "iLeafPart: [AXLE]", "KORASS ok pour [WHEEL]",
                            "Valeur de retour: [FALSE]"));
    EXPECT_THAT(
        TraceIsInAssembly(model[3], model[4]).messages,
        ElementsAre("iRootPart: [BODY]", "iLeafPart: [WHEEL]", "Valeur de retour: [FALSE]"));
}

TEST(IsInAssembly, KeepsTheBracketsOfPartsWithoutNumbers) {
    const TestModel model("cdma",
                          "#1=part_object($,$,$,$,$,(#2),$,$,$,$);#2=part_link('1',$,#1,$,$,$,$);");
    EXPECT_THAT(TraceIsInAssembly(model[1], model[1]).messages,
                ElementsAre("iRootPart: []", "iLeafPart: []", "KORASS ok pour []",
                            "Valeur de retour: [TRUE]"));
}

TEST(IsInAssembly, FindsALeafAmongManyLinks) {
    std::string links;
    std::string list;
    for (int id = 10; id < 1010; ++id) {
        const std::string link = "#" + std::to_string(id);
        list += (list.empty() ? "" : ",") + link;
        links += link + "=part_link('',$," + (id == 1009 ? "#2" : "#1") + ",$,$,$,$);";
    }
    const TestModel model("cdma", "#1=part_object('P',$,$,$,$,(" + list +
                                      "),$,$,$,$);#2=part_object('Q',$,$,$,$,$,$,$,$,$);"
                                      "#3=part_object('R',$,$,$,$,$,$,$,$,$);" +
                                      links);
    EXPECT_TRUE(IsTrue(IsInAssembly(model[1], model[1])));
    EXPECT_TRUE(IsTrue(IsInAssembly(model[1], model[2])));
    EXPECT_TRUE(IsFalse(IsInAssembly(model[1], model[3])));
}

TEST(QuantifyRef, TellsItsStepsInTheTrace) {
    const TestModel model("cdma", kCar);
    const char* const fetching = "Recuperation de la liste des liens";
    const char* const counting = "On boucle sur la liste des liens pour compter les iLeafPart";
    EXPECT_THAT(TraceQuantifyRef(model[1], model[2]).messages,
                ElementsAre(fetching, counting, "Valeur de retour: [2]"));
    EXPECT_THAT(TraceQuantifyRef(model[1], model[4]).messages,
                ElementsAre(fetching, counting, "Valeur de retour: [0]"));
    EXPECT_THAT(TraceQuantifyRef(model[4], model[1]).messages,
                ElementsAre(fetching, "Valeur de retour: [0]"));
    EXPECT_THAT(TraceQuantifyRef(model[3], model[1]).messages,
                ElementsAre("Valeur de retour: [0]"));
}

TEST(UseOfAPart, IsNoneWhenAnArgumentIsMissing) {
    const TestModel model("cdma", kCar);
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> arguments[] = {
        {{}, model[2]}, {model[1], {}}, {{}, {}}};
    for (const auto& [root, leaf] : arguments) {
        const Traced isIn = TraceIsInAssembly(root, leaf);
        EXPECT_TRUE(IsFalse(isIn.result));
        ASSERT_THAT(isIn.messages, Not(IsEmpty()));
        EXPECT_EQ(isIn.messages.back(), "Valeur de retour: [FALSE]");
        EXPECT_EQ(isIn.comparisons, 0);

        const Traced count = TraceQuantifyRef(root, leaf);
        EXPECT_EQ(RealIn(count.result), 0);
        EXPECT_THAT(count.messages, ElementsAre("Valeur de retour: [0]"));
    }
}

TEST(UseOfAPart, IsNoneForValuesThatAreNoInstances) {
    const TestModel model("cdma", kCar);
    for (const SdaiPrimitiveH& value : {"AXLE"_h, 2_h, model[1].GetAttr("KORASS")}) {
        EXPECT_TRUE(IsFalse(IsInAssembly(model[1], value)));
        EXPECT_TRUE(IsFalse(IsInAssembly(value, model[2])));
        EXPECT_EQ(RealIn(QuantifyRef(model[1], value)), 0);
        EXPECT_EQ(RealIn(QuantifyRef(value, model[2])), 0);
    }
}

// A leaf that is not an instance is compared, too, and has no type name.
TEST(UseOfAPart, IsAskedOfIsSame0ForALeafThatIsNoInstance) {
    const TestModel model("cdma", R"(
        #1=part_object('P',$,$,$,$,(#3),$,$,$,$);
        #2=part_object('Q',$,$,$,$,$,$,$,$,$);
        #3=part_link('1',$,#2,$,$,$,$);)");
    for (const auto function : {IsInAssembly, QuantifyRef}) {
        const TraceCapture trace;
        function(model[1], "Q"_h);
        EXPECT_THAT(trace.Messages("SdaiPrimitiveH IsSame0->"),
                    ElementsAre("l'entite1: part_object",
                                "l'entite2        : ", "IsSame0 retourne sdaiLFALSE"));
    }
}

TEST(UseOfAPart, IncludesThePartItselfWhenItListsItself) {
    const TestModel model(
        "cdma", "#1=part_object('P',$,$,$,$,(#2),$,$,$,$);#2=part_link('1',$,#1,$,$,$,$);");
    EXPECT_TRUE(IsTrue(IsInAssembly(model[1], model[1])));
    EXPECT_EQ(RealIn(QuantifyRef(model[1], model[1])), 1);
}

TEST(UseOfAPart, IsPassedOverByLinksThatLeadNowhere) {
    const TestModel model("cdma", R"(
        #1=part_object('P',$,$,$,$,(#3,#4,#3),$,$,$,$);
        #2=part_object('Q',$,$,$,$,$,$,$,$,$);
        #3=part_link('1',$,$,$,$,$,$);
        #4=part_link('2',$,#2,$,$,$,$);)");
    const Traced isIn = TraceIsInAssembly(model[1], model[2]);
    EXPECT_TRUE(IsTrue(isIn.result));
    EXPECT_EQ(isIn.comparisons, 2);
    const Traced count = TraceQuantifyRef(model[1], model[2]);
    EXPECT_EQ(RealIn(count.result), 1);
    EXPECT_EQ(count.comparisons, 3);
}

// A link that is listed twice counts twice.
TEST(QuantifyRef, CountsALinkAsOftenAsItIsListed) {
    const TestModel model("cdma", R"(
        #1=part_object('P',$,$,$,$,(#3,#3,#3),$,$,$,$);
        #2=part_object('Q',$,$,$,$,$,$,$,$,$);
        #3=part_link('1',$,#2,$,$,$,$);)");
    EXPECT_EQ(RealIn(QuantifyRef(model[1], model[2])), 3);
}

TEST(QuantifyRef, CountsManyLinks) {
    std::string links;
    std::string list;
    for (int id = 10; id < 1010; ++id) {
        const std::string link = "#" + std::to_string(id);
        list += (list.empty() ? "" : ",") + link;
        links += link + "=part_link('',$," + (id % 2 == 0 ? "#1" : "#2") + ",$,$,$,$);";
    }
    const TestModel model("cdma", "#1=part_object('P',$,$,$,$,(" + list +
                                      "),$,$,$,$);#2=part_object('Q',$,$,$,$,$,$,$,$,$);" + links);
    EXPECT_EQ(RealIn(QuantifyRef(model[1], model[2])), 500);
    EXPECT_EQ(RealIn(QuantifyRef(model[1], model[1])), 500);
}

TEST(UseOfAPart, IsNoneWhereTheListHoldsNoLinks) {
    const TestModel model(R"(SCHEMA cdma;
        ENTITY part_object; S_PART_NUMBER : STRING; KORASS : LIST OF STRING; END_ENTITY;
        END_SCHEMA;)",
                          "#1=part_object('P',('#1','P'));");
    EXPECT_TRUE(IsTrue(IsAnAssembly(model[1])));
    EXPECT_TRUE(IsFalse(IsInAssembly(model[1], model[1])));
    EXPECT_EQ(RealIn(QuantifyRef(model[1], model[1])), 0);
}

TEST(UseOfAPart, IsNoneWhereTheListIsNoList) {
    const TestModel model(R"(SCHEMA cdma;
        ENTITY part_object; S_PART_NUMBER : STRING; KORASS : STRING; END_ENTITY;
        END_SCHEMA;)",
                          "#1=part_object('P','links');");
    EXPECT_TRUE(IsFalse(IsAnAssembly(model[1])));
    EXPECT_TRUE(IsFalse(IsInAssembly(model[1], model[1])));
    EXPECT_EQ(RealIn(QuantifyRef(model[1], model[1])), 0);
}

// ---- IsModelDocLinked

namespace {

// A schema in which a part has these attributes, and an instance #1 of it with these values; #2 is
// a model and #3 a document.
struct LinkedPart {
    const char* description;
    std::vector<const char*> attributes;
    const char* values;
    bool linked;
};

void PrintTo(const LinkedPart& part, std::ostream* stream) { *stream << part.description; }

std::string PartSchema(const std::string& type, const std::vector<const char*>& attributes) {
    std::string schema = "SCHEMA cdma;ENTITY document;id : STRING;END_ENTITY;ENTITY " + type + ";";
    for (const char* attribute : attributes) {
        schema += std::string(attribute) + " : OPTIONAL LIST OF document;";
    }
    return schema + "END_ENTITY;END_SCHEMA;";
}

std::string PartData(const std::string& type, const std::string& values) {
    return "#1=" + type + "(" + values + ");#2=document('m');#3=document('d');";
}

class ModelDocLink : public testing::TestWithParam<LinkedPart> {};

INSTANTIATE_TEST_SUITE_P(
    Parts, ModelDocLink,
    testing::Values(
        LinkedPart{"Model", {"models", "docs1"}, "(#2),$", true},
        LinkedPart{"ModelsWithoutDocuments", {"models"}, "(#2)", true},
        LinkedPart{"ModelAndDocument", {"models", "docs1"}, "(#2),(#3)", true},
        LinkedPart{"Nothing", {"models", "docs1", "docs2"}, "$,$,$", false},
        LinkedPart{"EmptyLists", {"models", "docs1", "docs2"}, "(),(),()", false},
        LinkedPart{"FirstDocuments", {"models", "docs1", "docs2"}, "(),(#3),()", true},
        LinkedPart{"SecondDocuments", {"models", "docs1", "docs2"}, "(),(),(#3)", true},
        LinkedPart{"SecondDocumentsAfterNone", {"models", "docs1", "docs2"}, "$,$,(#3,#3)", true},
        LinkedPart{"NoModelsAttribute", {"docs1"}, "(#3)", true},
        LinkedPart{"NoAttributeAtAll", {"name"}, "(#3)", false},
        // The numbering ends at the first gap.
        LinkedPart{"NoFirstNumber", {"models", "docs2"}, "(),(#3)", false},
        LinkedPart{"GapInNumbers", {"models", "docs1", "docs3"}, "(),(),(#3)", false},
        LinkedPart{"NumberZero", {"docs0", "docs1"}, "(#3),()", false},
        LinkedPart{"NoNumber", {"docs", "docs1"}, "(#3),()", false},
        LinkedPart{"NumberWithLeadingZero", {"docs01", "docs1"}, "(#3),()", false},
        LinkedPart{"NumbersInAnyOrder", {"docs3", "docs1", "docs2"}, "(#3),(),()", true},
        LinkedPart{"NumberOfTwoDigits",
                   {"docs1", "docs2", "docs3", "docs4", "docs5", "docs6", "docs7", "docs8", "docs9",
                    "docs10", "docs11"},
                   "$,$,$,$,$,$,$,$,$,(),(#3)",
                   true},
        LinkedPart{"GapAfterNine",
                   {"docs1", "docs2", "docs3", "docs4", "docs5", "docs6", "docs7", "docs8", "docs9",
                    "docs11"},
                   "$,$,$,$,$,$,$,$,$,(#3)",
                   false}),
    [](const auto& part) { return part.param.description; });

}  // namespace

TEST_P(ModelDocLink, IsAModelOrADocumentOfAPart) {
    const TestModel model(PartSchema("part_object", GetParam().attributes),
                          PartData("part_object", GetParam().values));
    const Traced call = TraceIsModelDocLinked(model[1]);
    EXPECT_EQ(IsTrue(call.result), GetParam().linked);
    EXPECT_EQ(IsFalse(call.result), !GetParam().linked);
    EXPECT_TRUE(call.opened);
}

TEST_P(ModelDocLink, IsNoneOfAnInstanceOfAnotherType) {
    for (const char* type : {"part", "part_object_2", "assembly_part_object"}) {
        const TestModel model(PartSchema(type, GetParam().attributes),
                              PartData(type, GetParam().values));
        EXPECT_TRUE(IsFalse(TraceIsModelDocLinked(model[1]).result)) << type;
    }
}

TEST(IsModelDocLinked, DoesNotHoldForASubtypeOfAPart) {
    // The type is recognised by its name.
    const TestModel model(
        R"(SCHEMA cdma;
        ENTITY document; id : STRING; END_ENTITY;
        ENTITY part_object; models : OPTIONAL LIST OF document;
            docs1 : OPTIONAL LIST OF document; END_ENTITY;
        ENTITY standard_part SUBTYPE OF (part_object); END_ENTITY;
        END_SCHEMA;)",
        "#1=part_object((#3),(#3));#2=standard_part((#3),(#3));#3=document('m');");
    EXPECT_TRUE(IsTrue(IsModelDocLinked(model[1])));
    EXPECT_TRUE(IsFalse(IsModelDocLinked(model[2])));
}

TEST(IsModelDocLinked, ReadsTheDocumentsOfTheDatabase) {
    const TestModel model("cdma", R"(
        #1=part_object('P',$,$,$,$,$,(),(),(#3),$);
        #2=part_object('Q',$,$,$,$,$,(#4),$,$,$);
        #3=CDM_DOCUMENT($,$,$,$);
        #4=model_object('m',$,$,$,$,$);
        #5=part_object('R',$,$,$,$,(#6),$,$,$,$);
        #6=part_link('1',$,#1,$,$,$,$);)");
    EXPECT_TRUE(IsTrue(IsModelDocLinked(model[1])));
    EXPECT_TRUE(IsTrue(IsModelDocLinked(model[2])));
    EXPECT_TRUE(IsFalse(IsModelDocLinked(model[5]))) << "links to components are no documents";
}

TEST(IsModelDocLinked, DoesNotHoldForWhatIsNoPart) {
    const TestModel model("cdma", kCar);
    for (const SdaiPrimitiveH& value : {SdaiPrimitiveH(), model[11], "part_object"_h, 1_h}) {
        const Traced call = TraceIsModelDocLinked(value);
        EXPECT_TRUE(IsFalse(call.result));
        EXPECT_TRUE(call.opened);
    }
}

TEST(IsModelDocLinked, DoesNotHoldWhereTheAttributesAreNoLists) {
    const TestModel model(R"(SCHEMA cdma;
        ENTITY part_object; models : STRING; docs1 : INTEGER; docs2 : part_object; END_ENTITY;
        END_SCHEMA;)",
                          "#1=part_object('m',7,#1);");
    EXPECT_TRUE(IsFalse(IsModelDocLinked(model[1])));
}

TEST(AssemblyQueries, WriteNothingToTheStandardStreams) {
    const TestModel model("cdma", kCar);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (const SdaiPrimitiveH& root : {model[1], SdaiPrimitiveH()}) {
        IsAnAssembly(root);
        IsInAssembly(root, model[2]);
        QuantifyRef(root, model[2]);
        IsModelDocLinked(root);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}
