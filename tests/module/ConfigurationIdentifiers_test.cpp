// The identifier strings of effectivities and configuration items.

#include <gmock/gmock.h>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

constexpr char kIsSame0[] = "SdaiPrimitiveH IsSame0->";
constexpr char kMissing[] = "KO : At least one of the entities doesn't exist";
constexpr char kItemsFound[] = "Get the configuration_item entities in schema cdma : OK ";
constexpr char kHandlersFound[] = "Get the configuration_handelr entities in schema cdma : OK ";
constexpr char kNoDesign[] = "NO design on the current configuration_item";
constexpr char kRetrieved[] = " The same Part has just been retrieved : OK ";
constexpr char kEffectivityExists[] = "Effectivity exists : OK ";

std::string Returned(const std::string& value) {
    return ">> la valeur retournee est : " + value + " <<";
}

// The number of instance comparisons in a trace.
std::size_t Comparisons(const TraceCapture& trace) { return trace.Messages(kIsSame0).size() / 3; }

// ---- ORXIdEff

constexpr char kORXIdEff[] = "SdaiPrimitiveH ORXIdEff ->";
constexpr char kBothExist[] = "Part & Effectivity exist : OK ";

// Part #1 is the design of CFG1, #2 of the third item, #3 of none; the last item has no design.
constexpr char kItems[] = R"(
    #1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);
    #2=PART_OBJECT('P2',$,$,$,$,$,$,$,$,$);
    #3=PART_OBJECT('P3',$,$,$,$,$,$,$,$,$);
    #11=CONFIGURATION_ITEM('CFG1',$,#1);
    #12=CONFIGURATION_ITEM('without',$,$);
    #13=CONFIGURATION_ITEM('CFG-3',$,#2);
    #14=CONFIGURATION_ITEM('CFG-4',$,#2);
    #15=CONFIGURATION_ITEM('last',$,$);
    #21=DATE_EFFECTIVITY('D',$,$,$);
    #22=RANGE_EFFECTIVITY('R',$,1,5);)";

TEST(ORXIdEff, NamesTheFirstItemThatDesignsThePart) {
    const TestModel model("cdma", kItems);
    const struct {
        unsigned long part;
        const char* identifier;
        std::vector<std::string> messages;
        std::size_t comparisons;
    } cases[] = {
        {1, "S0003ORXS0004CFG1S0016date_effectivity", {kRetrieved}, 1},
        {2, "S0003ORXS0005CFG-3S0016date_effectivity", {kNoDesign, kRetrieved}, 2},
        // If no item matches, the last one visited is used.
        {3, "S0003ORXS0004lastS0016date_effectivity", {kNoDesign, kNoDesign}, 3},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(TextIn(ORXIdEff(model[c.part], model[21])), c.identifier);
        TraceCapture trace;
        EXPECT_EQ(TextIn(ORXIdEff(model[c.part], model[21])), c.identifier);
        std::vector<std::string> messages{kBothExist, kItemsFound};
        messages.insert(messages.end(), c.messages.begin(), c.messages.end());
        messages.push_back(Returned(c.identifier));
        EXPECT_THAT(trace.Messages(kORXIdEff), ElementsAreArray(messages));
        EXPECT_EQ(Comparisons(trace), c.comparisons);
    }
}

TEST(ORXIdEff, FallsBackOnTheItemThatIsLastInTheModelNotByNumber) {
    const TestModel model("cdma", R"(
        #30=CONFIGURATION_ITEM('first',$,#2);
        #20=CONFIGURATION_ITEM('second',$,$);
        #10=CONFIGURATION_ITEM('third',$,#2);
        #1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);
        #2=PART_OBJECT('P2',$,$,$,$,$,$,$,$,$);
        #21=RANGE_EFFECTIVITY('R',$,1,5);)");
    EXPECT_EQ(TextIn(ORXIdEff(model[1], model[21])), "S0003ORXS0005thirdS0017range_effectivity");
    EXPECT_EQ(TextIn(ORXIdEff(model[2], model[21])), "S0003ORXS0005firstS0017range_effectivity");
}

TEST(ORXIdEff, LeavesTheItemEmptyInAModelWithoutItems) {
    const TestModel model("cdma",
                          "#1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);#2=RANGE_EFFECTIVITY('R',$,1,5);");
    const char identifier[] = "S0003ORXS0000S0017range_effectivity";
    EXPECT_EQ(TextIn(ORXIdEff(model[1], model[2])), identifier);
    TraceCapture trace;
    EXPECT_EQ(TextIn(ORXIdEff(model[1], model[2])), identifier);
    EXPECT_THAT(trace.Messages(kORXIdEff),
                ElementsAre(kBothExist, kItemsFound, Returned(identifier)));
}

// A design that is set but not an instance is compared, too, and has no type name. It matches no
// part: the last item is used.
TEST(ORXIdEff, ComparesADesignThatIsSetWhateverItIs) {
    const TestModel model(
        "SCHEMA small;"
        "ENTITY part; END_ENTITY;"
        "ENTITY range_effectivity; END_ENTITY;"
        "ENTITY configuration_item; id : STRING; design : OPTIONAL STRING; END_ENTITY;"
        "END_SCHEMA;",
        "#1=PART();#2=CONFIGURATION_ITEM('C1','no part');#3=CONFIGURATION_ITEM('C2',$);"
        "#4=RANGE_EFFECTIVITY();");
    const char identifier[] = "S0003ORXS0002C2S0017range_effectivity";
    EXPECT_EQ(TextIn(ORXIdEff(model[1], model[4])), identifier);
    TraceCapture trace;
    EXPECT_EQ(TextIn(ORXIdEff(model[1], model[4])), identifier);
    EXPECT_THAT(trace.Messages(kORXIdEff),
                ElementsAre(kBothExist, kItemsFound, kNoDesign, Returned(identifier)));
    EXPECT_THAT(
        trace.Messages(kIsSame0),
        ElementsAre("l'entite1: PART", "l'entite2        : ", "IsSame0 retourne sdaiLFALSE"));
}

TEST(ORXIdEff, AsksTheModelOfThePart) {
    const TestModel parts("cdma", kItems);
    const TestModel others("cdma",
                           "#1=CONFIGURATION_ITEM('other',$,$);#2=RANGE_EFFECTIVITY('R',$,1,5);");
    EXPECT_EQ(TextIn(ORXIdEff(parts[1], others[2])), "S0003ORXS0004CFG1S0017range_effectivity");
}

TEST(ORXIdEff, NamesTheTypeOfTheEffectivity) {
    const struct {
        const char* effectivity;
        const char* field;
    } cases[] = {
        {"RANGE_EFFECTIVITY($,$,$,$)", "S0017range_effectivity"},
        {"DATE_EFFECTIVITY($,$,$,$)", "S0016date_effectivity"},
        {"OPTION_EFFECTIVITY($,$,'option_range',$,$,$,$,$)", "S0012option_range"},
        {"OPTION_EFFECTIVITY($,$,'option_date',$,$,$,$,$)", "S0011option_date"},
        // Any other text is used as it is.
        {"OPTION_EFFECTIVITY($,$,'Some other type',$,$,$,$,$)", "S0015Some other type"},
        {"OPTION_EFFECTIVITY($,$,'',$,$,$,$,$)", "S0000"},
        {"OPTION_EFFECTIVITY('E',$,$,'O',$,$,$,$)", "S0009UNDEFINED"},
        {"CONFIGURATION_HANDLER('H',$)", "S0009UNDEFINED"},
        // The kinds are tried in the order option, range, date.
        {"(EFFECTIVITY_OBJECT($,$)OPTION_EFFECTIVITY('option_date',$,$,$,$,$)"
         "RANGE_EFFECTIVITY(1,5))",
         "S0011option_date"},
        {"(EFFECTIVITY_OBJECT($,$)OPTION_EFFECTIVITY($,$,$,$,$,$)RANGE_EFFECTIVITY(1,5))",
         "S0009UNDEFINED"},
        {"(DATE_EFFECTIVITY($,$)EFFECTIVITY_OBJECT($,$)RANGE_EFFECTIVITY(1,5))",
         "S0017range_effectivity"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.effectivity);
        const TestModel model("cdma",
                              "#1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);"
                              "#2=CONFIGURATION_ITEM('C',$,#1);#3=" +
                                  std::string(c.effectivity) + ";");
        EXPECT_EQ(TextIn(ORXIdEff(model[1], model[3])), std::string("S0003ORXS0001C") + c.field);
    }
}

TEST(ORXIdEff, TakesAnEffectivityThatIsNoInstanceForOneOfNoKind) {
    const TestModel model("cdma", kItems);
    EXPECT_EQ(TextIn(ORXIdEff(model[1], "R"_h)), "S0003ORXS0004CFG1S0009UNDEFINED");
}

TEST(ORXIdEff, SurvivesAPartThatIsNoInstance) {
    const TestModel model("cdma", kItems);
    EXPECT_EQ(TextIn(ORXIdEff("P1"_h, model[21])).find("S0003ORX"), 0U);
}

TEST(ORXIdEff, IsEmptyValueForAMissingArgument) {
    const TestModel model("cdma", kItems);
    const SdaiPrimitiveH unset;
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> cases[] = {
        {unset, model[21]}, {model[1], unset}, {unset, unset}};
    for (const auto& [part, effectivity] : cases) {
        EXPECT_EQ(TextIn(ORXIdEff(part, effectivity)), "EMPTY VALUE");
        TraceCapture trace;
        EXPECT_EQ(TextIn(ORXIdEff(part, effectivity)), "EMPTY VALUE");
        EXPECT_THAT(trace.Messages(kORXIdEff), ElementsAre(kMissing, Returned("EMPTY VALUE")));
    }
}

// ---- ORXIdCfg

constexpr char kORXIdCfg[] = "SdaiPrimitiveH ORXIdCfg ->";
constexpr char kItemExists[] = "Configuration Item exists : OK ";

TEST(ORXIdCfg, AppendsTheFirstHandlerThatAppliesToTheDesign) {
    const TestModel model("cdma", R"(
        #1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);
        #2=PART_OBJECT('P2',$,$,$,$,$,$,$,$,$);
        #3=PART_OBJECT('P3',$,$,$,$,$,$,$,$,$);
        #11=CONFIGURATION_ITEM('CFG1',$,#1);
        #12=CONFIGURATION_ITEM('CFG2',$,#2);
        #13=CONFIGURATION_ITEM('CFG3',$,#3);
        #21=CONFIGURATION_HANDLER('H7',#1);
        #22=CONFIGURATION_HANDLER('without',$);
        #23=CONFIGURATION_HANDLER('handler 2',#2);
        #24=CONFIGURATION_HANDLER('H9',#2);
        #25=CONFIGURATION_HANDLER('last',$);)");
    const struct {
        unsigned long item;
        const char* identifier;
        std::vector<std::string> messages;
        std::size_t comparisons;
    } cases[] = {
        {11, "S0003ORXS0004CFG1S0002H7", {kRetrieved}, 1},
        {12, "S0003ORXS0004CFG2S0009handler 2", {kNoDesign, kRetrieved}, 2},
        // Here there is no fallback.
        {13, "S0003ORXS0004CFG3", {kNoDesign, kNoDesign}, 3},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(TextIn(ORXIdCfg(model[c.item])), c.identifier);
        TraceCapture trace;
        EXPECT_EQ(TextIn(ORXIdCfg(model[c.item])), c.identifier);
        std::vector<std::string> messages{kItemExists, kHandlersFound};
        messages.insert(messages.end(), c.messages.begin(), c.messages.end());
        messages.push_back(Returned(c.identifier));
        EXPECT_THAT(trace.Messages(kORXIdCfg), ElementsAreArray(messages));
        EXPECT_EQ(Comparisons(trace), c.comparisons);
    }
}

TEST(ORXIdCfg, SearchesTheModelThatHoldsTheDesign) {
    const TestModel items("cdma", R"(
        #1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);
        #2=CONFIGURATION_ITEM('CFG1',$,$);
        #3=CONFIGURATION_HANDLER('of the items',$);)");
    const TestModel parts("cdma", R"(
        #1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);
        #3=CONFIGURATION_HANDLER('of the parts',$);)");
    const auto put = [](const SdaiPrimitiveH& owner, const char* attribute,
                        const SdaiPrimitiveH& value) {
        static_cast<SdaiAppInstance*>(InstanceIn(owner))->PutAttr(SdaiString(attribute), value);
    };
    // Both handlers apply to the design.
    put(items[2], "design", parts[1]);
    put(items[3], "apply", parts[1]);
    put(parts[3], "apply", parts[1]);
    EXPECT_EQ(TextIn(ORXIdCfg(items[2])), "S0003ORXS0004CFG1S0012of the parts");
    // Only the one in the item's model does.
    put(parts[3], "apply", SdaiPrimitiveH());
    EXPECT_EQ(TextIn(ORXIdCfg(items[2])), "S0003ORXS0004CFG1");
}

// A value that is set but not an instance is compared, too, and has no type name.
TEST(ORXIdCfg, ComparesWhatIsSetWhateverItIs) {
    const TestModel model(
        "SCHEMA small;"
        "ENTITY part; END_ENTITY;"
        "ENTITY configuration_item; id : STRING; design : OPTIONAL part; END_ENTITY;"
        "ENTITY configuration_handler; id : STRING; apply : OPTIONAL STRING; END_ENTITY;"
        "END_SCHEMA;",
        "#1=PART();#2=CONFIGURATION_ITEM('C',#1);#3=CONFIGURATION_HANDLER('H',$);"
        "#4=CONFIGURATION_HANDLER('H','no part');");
    EXPECT_EQ(TextIn(ORXIdCfg(model[2])), "S0003ORXS0001C");
    TraceCapture trace;
    EXPECT_EQ(TextIn(ORXIdCfg(model[2])), "S0003ORXS0001C");
    EXPECT_THAT(trace.Messages(kORXIdCfg),
                ElementsAre(kItemExists, kHandlersFound, kNoDesign, Returned("S0003ORXS0001C")));
    EXPECT_THAT(
        trace.Messages(kIsSame0),
        ElementsAre("l'entite1: PART", "l'entite2        : ", "IsSame0 retourne sdaiLFALSE"));
}

// No model holds a design that is not an instance, so there are no handlers to compare it with, not
// even one that applies to an equal value.
TEST(ORXIdCfg, HasNoThirdFieldForADesignThatIsNoInstance) {
    const TestModel model(
        "SCHEMA small;"
        "ENTITY configuration_item; id : STRING; design : OPTIONAL STRING; END_ENTITY;"
        "ENTITY configuration_handler; id : STRING; apply : OPTIONAL STRING; END_ENTITY;"
        "END_SCHEMA;",
        "#1=CONFIGURATION_ITEM('C','no part');#2=CONFIGURATION_HANDLER('H','no part');"
        "#3=CONFIGURATION_HANDLER('H',$);");
    EXPECT_EQ(TextIn(ORXIdCfg(model[1])), "S0003ORXS0001C");
    TraceCapture trace;
    EXPECT_EQ(TextIn(ORXIdCfg(model[1])), "S0003ORXS0001C");
    EXPECT_THAT(trace.Messages(kORXIdCfg),
                ElementsAre(kItemExists, kHandlersFound, Returned("S0003ORXS0001C")));
    EXPECT_EQ(Comparisons(trace), 0U);
}

TEST(ORXIdCfg, HasNoThirdFieldInAModelWithoutHandlers) {
    const TestModel model(
        "cdma", "#1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);#2=CONFIGURATION_ITEM('CFG1',$,#1);");
    TraceCapture trace;
    EXPECT_EQ(TextIn(ORXIdCfg(model[2])), "S0003ORXS0004CFG1");
    EXPECT_THAT(trace.Messages(kORXIdCfg),
                ElementsAre(kItemExists, kHandlersFound, Returned("S0003ORXS0004CFG1")));
}

TEST(ORXIdCfg, HasNoThirdFieldForAnItemWithoutDesign) {
    const TestModel model("cdma", R"(
        #1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);
        #2=CONFIGURATION_ITEM('CFG1',$,$);
        #3=CONFIGURATION_HANDLER('H1',$);
        #4=CONFIGURATION_HANDLER('H2',#1);)");
    EXPECT_EQ(TextIn(ORXIdCfg(model[2])), "S0003ORXS0004CFG1");
}

TEST(ORXIdCfg, WritesLengthsInFourDigits) {
    const struct {
        std::string id;
        const char* length;
    } cases[] = {
        {"", "0000"},
        {"C", "0001"},
        {std::string(12, 'C'), "0012"},
        {std::string(999, 'C'), "0999"},
        {std::string(9999, 'C'), "9999"},
        // A length that does not fit into four digits has more.
        {std::string(10000, 'C'), "10000"},
        // Characters are counted, not bytes.
        {"\xE9t\xE9", "0003"},
        // A text may look like fields.
        {"S0003ORXS0000", "0013"},
    };
    const TestModel model("cdma", R"(
        #1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);
        #2=CONFIGURATION_ITEM('C',$,#1);
        #3=CONFIGURATION_HANDLER('H',#1);)");
    auto* item = static_cast<SdaiAppInstance*>(InstanceIn(model[2]));
    auto* handler = static_cast<SdaiAppInstance*>(InstanceIn(model[3]));
    for (const auto& c : cases) {
        item->PutAttr("id", Handle(c.id));
        handler->PutAttr("id", Handle(c.id));
        const std::string field = std::string("S") + c.length + c.id;
        EXPECT_EQ(TextIn(ORXIdCfg(model[2])), "S0003ORX" + field + field);
    }
}

TEST(ORXIdCfg, TakesAnUnsetIdForAnEmptyOne) {
    const TestModel model("cdma", R"(
        #1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);
        #2=CONFIGURATION_ITEM('C',$,#1);
        #3=CONFIGURATION_HANDLER('H',#1);)");
    static_cast<SdaiAppInstance*>(InstanceIn(model[2]))->PutAttr("id", SdaiPrimitiveH());
    EXPECT_EQ(TextIn(ORXIdCfg(model[2])), "S0003ORXS0000S0001H");
    static_cast<SdaiAppInstance*>(InstanceIn(model[3]))->PutAttr("id", SdaiPrimitiveH());
    EXPECT_EQ(TextIn(ORXIdCfg(model[2])), "S0003ORXS0000S0000");
}

TEST(ORXIdCfg, IsEmptyValueForAMissingItem) {
    EXPECT_EQ(TextIn(ORXIdCfg(SdaiPrimitiveH())), "EMPTY VALUE");
    TraceCapture trace;
    EXPECT_EQ(TextIn(ORXIdCfg(SdaiPrimitiveH())), "EMPTY VALUE");
    EXPECT_THAT(trace.Messages(kORXIdCfg), ElementsAre("KO : Configuration Item doesn't exist"));
}

TEST(ORXIdCfg, TakesAValueThatIsNoInstanceForAnItemOfNothing) {
    EXPECT_EQ(TextIn(ORXIdCfg("CFG1"_h)), "S0003ORXS0000");
}

// ---- ConcatEffAtb

constexpr char kConcatEffAtb[] = "SdaiPrimitiveH ConcatEffAtb ->";

TEST(ConcatEffAtb, PacksTypeOptionAndId) {
    const struct {
        const char* effectivity;
        const char* attributes;
    } cases[] = {
        {"RANGE_EFFECTIVITY('R12',$,1,5)", "S0005rangeS0003R12"},
        {"RANGE_EFFECTIVITY($,$,1,5)", "S0005rangeS0000"},
        {"RANGE_EFFECTIVITY('',$,1,5)", "S0005rangeS0000"},
        {"DATE_EFFECTIVITY('D 1',$,$,$)", "S0004dateS0003D 1"},
        {"DATE_EFFECTIVITY($,$,$,$)", "S0004dateS0000"},
        {"OPTION_EFFECTIVITY('E07',$,'option_date','O1',$,$,$,$)",
         "S0011option_dateS0002O1S0003E07"},
        {"OPTION_EFFECTIVITY('E07',$,'option_range','O1',$,$,$,$)",
         "S0012option_rangeS0002O1S0003E07"},
        {"OPTION_EFFECTIVITY('E07',$,$,'O1',$,$,$,$)", "S0000S0002O1S0003E07"},
        {"OPTION_EFFECTIVITY('E07',$,'option_range',$,$,$,$,$)", "S0012option_rangeS0000S0003E07"},
        {"OPTION_EFFECTIVITY($,$,'option_range','O1',$,$,$,$)", "S0012option_rangeS0002O1S0000"},
        {"OPTION_EFFECTIVITY($,$,$,$,$,$,$,$)", "S0000S0000S0000"},
        {"OPTION_EFFECTIVITY('E',$,'anything','O',$,$,$,$)", "S0008anythingS0001OS0001E"},
        // The kinds are tried in the order option, range, date.
        {"(EFFECTIVITY_OBJECT('E',$)OPTION_EFFECTIVITY($,'O',$,$,$,$)RANGE_EFFECTIVITY(1,5))",
         "S0000S0001OS0001E"},
        {"(DATE_EFFECTIVITY($,$)EFFECTIVITY_OBJECT('E',$)RANGE_EFFECTIVITY(1,5))",
         "S0005rangeS0001E"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.effectivity);
        const TestModel model("cdma", std::string("#1=") + c.effectivity + ";");
        EXPECT_EQ(TextIn(ConcatEffAtb(model[1])), c.attributes);
        TraceCapture trace;
        EXPECT_EQ(TextIn(ConcatEffAtb(model[1])), c.attributes);
        EXPECT_THAT(trace.Messages(kConcatEffAtb),
                    ElementsAre(kEffectivityExists, Returned(c.attributes)));
    }
}

TEST(ConcatEffAtb, IsEmptyValueForAnotherType) {
    const TestModel model("cdma", "#1=CONFIGURATION_ITEM('C',$,$);");
    for (const SdaiPrimitiveH& other : {model[1], "R12"_h, 12_h}) {
        EXPECT_EQ(TextIn(ConcatEffAtb(other)), "EMPTY VALUE");
        TraceCapture trace;
        EXPECT_EQ(TextIn(ConcatEffAtb(other)), "EMPTY VALUE");
        EXPECT_THAT(trace.Messages(kConcatEffAtb),
                    ElementsAre(kEffectivityExists, "UNKNOWN EffectivityEMPTY VALUE <<"));
    }
}

TEST(ConcatEffAtb, IsEmptyValueForAnotherTypeWithTheAttributes) {
    const TestModel model(
        "SCHEMA small; ENTITY effectivity; id, option_type, option_id : STRING; END_ENTITY;"
        "END_SCHEMA;",
        "#1=EFFECTIVITY('E','option_range','O');");
    EXPECT_EQ(TextIn(ConcatEffAtb(model[1])), "EMPTY VALUE");
}

TEST(ConcatEffAtb, IsEmptyValueForAMissingEffectivity) {
    EXPECT_EQ(TextIn(ConcatEffAtb(SdaiPrimitiveH())), "EMPTY VALUE");
    TraceCapture trace;
    EXPECT_EQ(TextIn(ConcatEffAtb(SdaiPrimitiveH())), "EMPTY VALUE");
    EXPECT_THAT(trace.Messages(kConcatEffAtb), ElementsAre("KO : Effectivity doesn't exist"));
}

// ---- HasAORXValue

TEST(HasAORXValue, AcceptsWhatORXIdCfgWritesForAnItemWithAHandler) {
    const TestModel database("cdma", R"(
        #1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);
        #2=CONFIGURATION_ITEM('CFG1',$,#1);
        #3=CONFIGURATION_HANDLER('H7',#1);)");
    const TestModel step("CONFIG_CONTROL_DESIGN", "#1=CONFIGURATION_ITEM('C','',$,$,$);");
    auto* item = static_cast<SdaiAppInstance*>(InstanceIn(step[1]));
    item->PutAttr("DESCRIPTION", ORXIdCfg(database[2]));
    EXPECT_TRUE(IsTrue(HasAORXValue(step[1])));
    // Without a handler there are only two fields.
    static_cast<SdaiAppInstance*>(InstanceIn(database[3]))->PutAttr("apply", SdaiPrimitiveH());
    item->PutAttr("DESCRIPTION", ORXIdCfg(database[2]));
    EXPECT_TRUE(IsFalse(HasAORXValue(step[1])));
}

}  // namespace
