// Which parts are configured, and which effectivities apply to their links.

#include <gmock/gmock.h>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr char kIsSame0[] = "SdaiPrimitiveH IsSame0->";
constexpr char kMissing[] = "KO : At least one of the entities doesn't exist";

// The trace of IsSame0 comparing two parts.
std::vector<std::string> Comparisons(std::initializer_list<bool> answers) {
    std::vector<std::string> messages;
    for (const bool same : answers) {
        messages.insert(messages.end(),
                        {"l'entite1: part_object", "l'entite2        : part_object",
                         same ? "IsSame0 retourne sdaiLTRUE" : "IsSame0 retourne sdaiLFALSE"});
    }
    return messages;
}

// ---- IsPartInCfgitm

constexpr char kIsPartInCfgitm[] = "SdaiPrimitiveH IsPartInCfgitm ->";
constexpr char kNotIn[] = ">> Part NOT IN CfgItem <<";
constexpr char kIn[] = ">> Part IS IN CfgItem <<";

// Two parts with equal values, and items with the first, the second and no design.
constexpr char kItems[] = R"(
    #1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);
    #2=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);
    #11=CONFIGURATION_ITEM('C1',$,#1);
    #12=CONFIGURATION_ITEM('C2',$,#2);
    #13=CONFIGURATION_ITEM('C3',$,$);)";

TEST(IsPartInCfgitm, TellsWhetherThePartIsTheDesign) {
    const TestModel model("cdma", kItems);
    const struct {
        unsigned long part;
        unsigned long item;
        bool in;
    } cases[] = {{1, 11, true}, {1, 12, false}, {2, 11, false}, {2, 12, true}, {11, 11, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(IsTrue(IsPartInCfgitm(model[c.part], model[c.item])), c.in);
        TraceCapture trace;
        const SdaiPrimitiveH result = IsPartInCfgitm(model[c.part], model[c.item]);
        EXPECT_EQ(IsTrue(result), c.in);
        EXPECT_EQ(IsFalse(result), !c.in);
        EXPECT_THAT(trace.Messages(kIsPartInCfgitm),
                    ElementsAre("Part & CfgItem exist : OK ", c.in ? kIn : kNotIn));
    }
}

TEST(IsPartInCfgitm, AsksIsSame0) {
    const TestModel model("cdma", kItems);
    TraceCapture trace;
    IsPartInCfgitm(model[1], model[11]);
    IsPartInCfgitm(model[1], model[12]);
    EXPECT_THAT(trace.Messages(kIsSame0), ElementsAreArray(Comparisons({true, false})));
}

// A design that is set but not an instance is compared, too, and has no type name.
TEST(IsPartInCfgitm, ComparesADesignThatIsSetWhateverItIs) {
    const TestModel model(
        "SCHEMA small;"
        "ENTITY part; END_ENTITY;"
        "ENTITY configuration_item; design : OPTIONAL STRING; END_ENTITY;"
        "END_SCHEMA;",
        "#1=PART();#2=CONFIGURATION_ITEM('no part');");
    EXPECT_TRUE(IsFalse(IsPartInCfgitm(model[1], model[2])));
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(IsPartInCfgitm(model[1], model[2])));
    EXPECT_THAT(trace.Messages(kIsPartInCfgitm), ElementsAre("Part & CfgItem exist : OK ", kNotIn));
    EXPECT_THAT(
        trace.Messages(kIsSame0),
        ElementsAre("l'entite1: PART", "l'entite2        : ", "IsSame0 retourne sdaiLFALSE"));
}

TEST(IsPartInCfgitm, IsFalseForAnItemWithoutDesign) {
    const TestModel model("cdma", kItems);
    // A part does not even have the attribute.
    for (const SdaiPrimitiveH& item : {model[13], model[1], "C3"_h}) {
        EXPECT_TRUE(IsFalse(IsPartInCfgitm(model[1], item)));
        TraceCapture trace;
        EXPECT_TRUE(IsFalse(IsPartInCfgitm(model[1], item)));
        EXPECT_THAT(trace.Messages(kIsPartInCfgitm),
                    ElementsAre("Part & CfgItem exist : OK ", "NO design on the configuration_item",
                                kNotIn));
        EXPECT_THAT(trace.Messages(kIsSame0), IsEmpty());
    }
}

TEST(IsPartInCfgitm, IsFalseForAMissingArgument) {
    const TestModel model("cdma", kItems);
    const SdaiPrimitiveH unset;
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> cases[] = {
        {unset, model[11]}, {model[1], unset}, {unset, unset}};
    for (const auto& [part, item] : cases) {
        EXPECT_TRUE(IsFalse(IsPartInCfgitm(part, item)));
        TraceCapture trace;
        EXPECT_TRUE(IsFalse(IsPartInCfgitm(part, item)));
        EXPECT_THAT(trace.Messages(kIsPartInCfgitm), ElementsAre(kMissing, kNotIn));
    }
}

TEST(IsPartInCfgitm, IsFalseForAPartThatIsNoInstance) {
    const TestModel model("cdma", kItems);
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(IsPartInCfgitm("P"_h, model[11])));
    EXPECT_THAT(trace.Messages(kIsPartInCfgitm), ElementsAre("Part & CfgItem exist : OK ", kNotIn));
}

// ---- IsPartConfigurated

constexpr char kIsPartConfigurated[] = "SdaiPrimitiveH IsPartConfigurated ->";
constexpr char kPartExists[] = "Part exists : OK ";
constexpr char kItemsFound[] = "Get the configuration_item entities in schema cdma : OK ";
constexpr char kNoDesign[] = "NO design on the current configuration_item";
constexpr char kRetrieved[] = " The same Part has just been retrieved : OK ";
constexpr char kConfigurated[] = " >> PART IS CONFIGURATED << ";
constexpr char kNotConfigurated[] = ">> Part IS NOT configurated <<";

// Five items; the second has no design, and the last but one has the same as the third.
constexpr char kFiveItems[] = R"(
    #1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);
    #2=PART_OBJECT('P2',$,$,$,$,$,$,$,$,$);
    #3=PART_OBJECT('P3',$,$,$,$,$,$,$,$,$);
    #4=PART_OBJECT('P4',$,$,$,$,$,$,$,$,$);
    #11=CONFIGURATION_ITEM('C1',$,#1);
    #12=CONFIGURATION_ITEM('C2',$,$);
    #13=CONFIGURATION_ITEM('C3',$,#3);
    #14=CONFIGURATION_ITEM('C4',$,#3);
    #15=CONFIGURATION_ITEM('C5',$,#2);)";

TEST(IsPartConfigurated, VisitsTheItemsUpToTheFirstThatDesignsThePart) {
    const TestModel model("cdma", kFiveItems);
    const struct {
        unsigned long part;
        std::vector<std::string> messages;
        std::vector<std::string> comparisons;
    } cases[] = {
        {1, {kPartExists, kItemsFound, kRetrieved, kConfigurated}, Comparisons({true})},
        {3,
         {kPartExists, kItemsFound, kNoDesign, kRetrieved, kConfigurated},
         Comparisons({false, true})},
        {2,
         {kPartExists, kItemsFound, kNoDesign, kRetrieved, kConfigurated},
         Comparisons({false, false, false, true})},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(IsTrue(IsPartConfigurated(model[c.part])));
        TraceCapture trace;
        EXPECT_TRUE(IsTrue(IsPartConfigurated(model[c.part])));
        EXPECT_THAT(trace.Messages(kIsPartConfigurated), ElementsAreArray(c.messages));
        EXPECT_THAT(trace.Messages(kIsSame0), ElementsAreArray(c.comparisons));
    }
}

TEST(IsPartConfigurated, IsFalseForAPartThatNoItemDesigns) {
    const TestModel model("cdma", kFiveItems);
    EXPECT_TRUE(IsFalse(IsPartConfigurated(model[4])));
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(IsPartConfigurated(model[4])));
    EXPECT_THAT(trace.Messages(kIsPartConfigurated),
                ElementsAre(kPartExists, kItemsFound, kNoDesign, kNotConfigurated));
    EXPECT_THAT(trace.Messages(kIsSame0),
                ElementsAreArray(Comparisons({false, false, false, false})));
}

TEST(IsPartConfigurated, IsFalseInAModelWithoutItems) {
    const TestModel model("cdma", "#1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);");
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(IsPartConfigurated(model[1])));
    EXPECT_THAT(trace.Messages(kIsPartConfigurated),
                ElementsAre(kPartExists, kItemsFound, kNotConfigurated));
}

TEST(IsPartConfigurated, FollowsTheModelsOrderWhateverTheNumbers) {
    const TestModel model("cdma", R"(
        #30=CONFIGURATION_ITEM('C1',$,#1);
        #20=CONFIGURATION_ITEM('C2',$,$);
        #10=CONFIGURATION_ITEM('C3',$,#2);
        #1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);
        #2=PART_OBJECT('P2',$,$,$,$,$,$,$,$,$);)");
    TraceCapture trace;
    EXPECT_TRUE(IsTrue(IsPartConfigurated(model[1])));
    EXPECT_THAT(trace.Messages(kIsPartConfigurated),
                ElementsAre(kPartExists, kItemsFound, kRetrieved, kConfigurated));
}

TEST(IsPartConfigurated, AsksTheModelOfThePart) {
    const TestModel other("cdma", kFiveItems);
    const TestModel model("cdma", "#1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);");
    EXPECT_TRUE(IsFalse(IsPartConfigurated(model[1])));
    EXPECT_TRUE(IsTrue(IsPartConfigurated(other[1])));
}

TEST(IsPartConfigurated, SeesItemsAsTheyAreAtEachCall) {
    const TestModel model("cdma", kFiveItems);
    EXPECT_TRUE(IsFalse(IsPartConfigurated(model[4])));
    SdaiEntity* type = model.Model().GetEntityDefinition("configuration_item");
    ASSERT_NE(type, nullptr);
    type->CreateEntityInstance(&model.Model())->PutAttr("design", model[4]);
    EXPECT_TRUE(IsTrue(IsPartConfigurated(model[4])));
}

TEST(IsPartConfigurated, IsFalseForAMissingPart) {
    EXPECT_TRUE(IsFalse(IsPartConfigurated(SdaiPrimitiveH())));
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(IsPartConfigurated(SdaiPrimitiveH())));
    EXPECT_THAT(trace.Messages(kIsPartConfigurated),
                ElementsAre("KO : Part doesn't exist", kNotConfigurated));
}

TEST(IsPartConfigurated, IsFalseForAPartThatIsNoInstance) {
    EXPECT_TRUE(IsFalse(IsPartConfigurated("P1"_h)));
    EXPECT_TRUE(IsFalse(IsPartConfigurated(1_h)));
}

// ---- IsUsedByPart

constexpr char kIsUsedByPart[] = "SdaiPrimitiveH IsUsedByPart ->";
constexpr char kBothExist[] = "Part & Effectivity exist : OK ";
constexpr char kLinkFound[] = "ONE LINK FOUND";
constexpr char kCannotBeUsed[] = ">> Effectivity CANNOT BE USED by Part <<";
constexpr char kNotUsed[] = ">> Effectivity NOT USED by Part <<";
constexpr char kUsed[] = ">> Effectivity USED by Part<<";

// Parts #1 to #5 are configured, #6 is not; #11 to #13 are links of #1, #14 is one of #6.
constexpr char kLinks[] = R"(
    #1=PART_OBJECT('P1',$,$,$,$,(#11,#12,#13),$,$,$,$);
    #2=PART_OBJECT('P2',$,$,$,$,$,$,$,$,$);
    #3=PART_OBJECT('P3',$,$,$,$,(),$,$,$,$);
    #4=PART_OBJECT('P4',$,$,$,$,(#12,#12),$,$,$,$);
    #5=PART_OBJECT('P5',$,$,$,$,(#13),$,$,$,$);
    #6=PART_OBJECT('P6',$,$,$,$,(#14),$,$,$,$);
    #11=PART_LINK('L',$,#2,$,$,$,$);
    #12=PART_LINK('L',$,#2,$,$,$,$);
    #13=PART_LINK('L',$,#3,$,$,$,$);
    #14=PART_LINK('L',$,#2,$,$,$,$);
    #21=CONFIGURATION_ITEM('C1',$,#1);
    #22=CONFIGURATION_ITEM('C2',$,#2);
    #23=CONFIGURATION_ITEM('C3',$,#3);
    #24=CONFIGURATION_ITEM('C4',$,#4);
    #25=CONFIGURATION_ITEM('C5',$,#5);
    #31=RANGE_EFFECTIVITY('no usage',$,1,5);
    #32=RANGE_EFFECTIVITY('empty usage',(),1,5);
    #33=RANGE_EFFECTIVITY('one link of #1',(#12),1,5);
    #34=DATE_EFFECTIVITY('links of #1, one twice',(#14,#13,#13,#11),$,$);
    #35=OPTION_EFFECTIVITY('links of others',(#14,#14),$,$,$,$,$,$);)";

struct Use {
    const char* name;
    unsigned long part;
    unsigned long effectivity;
    bool used;
    std::vector<std::string> messages;  // after the first, which is always the same
};

void PrintTo(const Use& use, std::ostream* stream) { *stream << use.name; }

const Use kUses[] = {
    {"NotConfigured", 6, 35, false, {"Part not configurated !", kCannotBeUsed}},
    {"WithoutKorass", 2, 33, false, {"NO KORASS under the Part !", kCannotBeUsed}},
    {"EmptyKorass",
     3,
     33,
     false,
     {"NO Link FOUND under the Part !!! Very Strange case", kCannotBeUsed}},
    {"WithoutUsage",
     1,
     31,
     false,
     {"3 link(s) found in part KORASS", "NO usage for this effectivity ", kCannotBeUsed}},
    {"EmptyUsage",
     1,
     32,
     false,
     {"3 link(s) found in part KORASS", "NO link found in usage effectivity !!! Very Strange case",
      kCannotBeUsed}},
    {"OneLink",
     1,
     33,
     true,
     {"3 link(s) found in part KORASS", "1 link(s) found in effectivity usage", kLinkFound, kUsed}},
    // A link listed twice in the usage is found once.
    {"TwoLinks",
     1,
     34,
     true,
     {"3 link(s) found in part KORASS", "4 link(s) found in effectivity usage", kLinkFound,
      kLinkFound, kUsed}},
    // A link listed twice in the part is found twice.
    {"SameLinkTwiceInPart",
     4,
     33,
     true,
     {"2 link(s) found in part KORASS", "1 link(s) found in effectivity usage", kLinkFound,
      kLinkFound, kUsed}},
    // Links with equal values are still different links.
    {"LinksOfOthers",
     1,
     35,
     false,
     {"3 link(s) found in part KORASS", "2 link(s) found in effectivity usage", kNotUsed}},
    {"OtherLinkOfThePart",
     5,
     33,
     false,
     {"1 link(s) found in part KORASS", "1 link(s) found in effectivity usage", kNotUsed}},
};

class IsUsedByPartCases : public testing::TestWithParam<Use> {};

TEST_P(IsUsedByPartCases, GiveTheAnswerWithItsReason) {
    const Use& use = GetParam();
    const TestModel model("cdma", kLinks);
    EXPECT_EQ(IsTrue(IsUsedByPart(model[use.part], model[use.effectivity])), use.used);
    TraceCapture trace;
    const SdaiPrimitiveH result = IsUsedByPart(model[use.part], model[use.effectivity]);
    EXPECT_EQ(IsTrue(result), use.used);
    EXPECT_EQ(IsFalse(result), !use.used);
    std::vector<std::string> messages{kBothExist};
    messages.insert(messages.end(), use.messages.begin(), use.messages.end());
    EXPECT_THAT(trace.Messages(kIsUsedByPart), ElementsAreArray(messages));
}

INSTANTIATE_TEST_SUITE_P(Uses, IsUsedByPartCases, testing::ValuesIn(kUses),
                         [](const auto& use) { return use.param.name; });

TEST(IsUsedByPart, TellsTheFirstOfSeveralReasons) {
    const TestModel model("cdma", std::string(kLinks) + R"(
        #7=PART_OBJECT('P7',$,$,$,$,$,$,$,$,$);
        #8=PART_OBJECT('P8',$,$,$,$,(),$,$,$,$);)");
    const struct {
        unsigned long part;
        unsigned long effectivity;
        const char* reason;
    } cases[] = {
        // Neither configured nor linked, with an effectivity without usage.
        {7, 31, "Part not configurated !"},
        {7, 32, "Part not configurated !"},
        {8, 31, "Part not configurated !"},
        {8, 33, "Part not configurated !"},
        {6, 31, "Part not configurated !"},
        // Configured.
        {2, 31, "NO KORASS under the Part !"},
        {2, 32, "NO KORASS under the Part !"},
        {3, 31, "NO Link FOUND under the Part !!! Very Strange case"},
        {3, 32, "NO Link FOUND under the Part !!! Very Strange case"},
    };
    for (const auto& c : cases) {
        TraceCapture trace;
        EXPECT_TRUE(IsFalse(IsUsedByPart(model[c.part], model[c.effectivity])));
        EXPECT_THAT(trace.Messages(kIsUsedByPart), ElementsAre(kBothExist, c.reason, kCannotBeUsed))
            << c.part << ' ' << c.effectivity;
    }
}

TEST(IsUsedByPart, AsksFirstWhetherThePartIsConfigured) {
    const TestModel model("cdma", kLinks);
    TraceCapture trace;
    IsUsedByPart(model[1], model[33]);
    IsUsedByPart(model[6], model[35]);
    EXPECT_THAT(trace.Messages(kIsPartConfigurated),
                ElementsAre(kPartExists, kItemsFound, kRetrieved, kConfigurated,  // of #1
                            kPartExists, kItemsFound, kNotConfigurated));         // of #6
}

TEST(IsUsedByPart, IsFalseForAMissingArgument) {
    const TestModel model("cdma", kLinks);
    const SdaiPrimitiveH unset;
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> cases[] = {
        {unset, model[33]}, {model[1], unset}, {unset, unset}};
    for (const auto& [part, effectivity] : cases) {
        EXPECT_TRUE(IsFalse(IsUsedByPart(part, effectivity)));
        TraceCapture trace;
        EXPECT_TRUE(IsFalse(IsUsedByPart(part, effectivity)));
        EXPECT_THAT(trace.Messages(kIsUsedByPart), ElementsAre(kMissing, kNotUsed));
        EXPECT_THAT(trace.Messages(kIsPartConfigurated), IsEmpty());
    }
}

TEST(IsUsedByPart, IsFalseForValuesThatAreNoInstances) {
    const TestModel model("cdma", kLinks);
    EXPECT_TRUE(IsFalse(IsUsedByPart("P1"_h, model[33])));
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(IsUsedByPart(model[1], "E"_h)));
    EXPECT_THAT(trace.Messages(kIsUsedByPart),
                ElementsAre(kBothExist, "3 link(s) found in part KORASS",
                            "NO usage for this effectivity ", kCannotBeUsed));
}

// Attributes of other kinds than the functions expect.
constexpr char kOddLinks[] = R"(SCHEMA small;
    ENTITY part; KORASS : LIST OF REAL; design : OPTIONAL part; END_ENTITY;
    ENTITY texts; KORASS : STRING; usage : STRING; END_ENTITY;
    ENTITY configuration_item; design : part; END_ENTITY;
    ENTITY special_item SUBTYPE OF (configuration_item); END_ENTITY;
    ENTITY effectivity; usage : LIST OF REAL; END_ENTITY;
    END_SCHEMA;)";

TEST(IsUsedByPart, FindsNoLinkAmongMembersThatAreNoInstances) {
    const TestModel model(kOddLinks, R"(
        #1=PART((1.,2.),$);
        #2=CONFIGURATION_ITEM(#1);
        #3=EFFECTIVITY((1.,2.,3.));)");
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(IsUsedByPart(model[1], model[3])));
    EXPECT_THAT(trace.Messages(kIsUsedByPart),
                ElementsAre(kBothExist, "2 link(s) found in part KORASS",
                            "3 link(s) found in effectivity usage", kNotUsed));
}

TEST(IsUsedByPart, IsFalseForLinksThatAreNoAggregates) {
    const TestModel model(kOddLinks, R"(
        #1=TEXTS('link','link');
        #2=CONFIGURATION_ITEM(#1);
        #3=PART((1.,2.),$);
        #4=CONFIGURATION_ITEM(#3);)");
    EXPECT_TRUE(IsFalse(IsUsedByPart(model[1], model[1])));
    EXPECT_TRUE(IsFalse(IsUsedByPart(model[3], model[1])));
}

TEST(IsUsedByPart, FindsNoLinkAmongMembersThatAreUnset) {
    const TestModel model("cdma", R"(
        #1=PART_OBJECT('P1',$,$,$,$,($,#2),$,$,$,$);
        #2=PART_LINK('L',$,#1,$,$,$,$);
        #3=CONFIGURATION_ITEM('C1',$,#1);
        #4=PART_LINK('L',$,#1,$,$,$,$);
        #5=RANGE_EFFECTIVITY('E',($,#4),1,5);)");
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(IsUsedByPart(model[1], model[5])));
    EXPECT_THAT(trace.Messages(kIsUsedByPart),
                ElementsAre(kBothExist, "2 link(s) found in part KORASS",
                            "2 link(s) found in effectivity usage", kNotUsed));
}

TEST(IsPartConfigurated, ComparesADesignThatIsSetWhateverItIs) {
    const TestModel model(
        "SCHEMA small;"
        "ENTITY part; END_ENTITY;"
        "ENTITY configuration_item; design : OPTIONAL STRING; END_ENTITY;"
        "END_SCHEMA;",
        "#1=PART();#2=CONFIGURATION_ITEM('no part');#3=CONFIGURATION_ITEM($);");
    TraceCapture trace;
    EXPECT_TRUE(IsFalse(IsPartConfigurated(model[1])));
    // Only #3 has no design.
    EXPECT_THAT(trace.Messages(kIsPartConfigurated),
                ElementsAre(kPartExists, kItemsFound, kNoDesign, kNotConfigurated));
    // #2 is compared, and its design has no type to name.
    EXPECT_THAT(
        trace.Messages(kIsSame0),
        ElementsAre("l'entite1: PART", "l'entite2        : ", "IsSame0 retourne sdaiLFALSE"));
}

TEST(IsPartConfigurated, CountsItemsOfSubtypes) {
    const TestModel model(kOddLinks, "#1=PART((),$);#2=SPECIAL_ITEM(#1);#3=PART((),#1);");
    EXPECT_TRUE(IsTrue(IsPartConfigurated(model[1])));
    // Only a configuration_item configures a part: #3 has a design, too, but is not one.
    EXPECT_TRUE(IsFalse(IsPartConfigurated(model[3])));
    const TestModel none(kOddLinks, "#1=PART((),$);#3=PART((),#1);");
    EXPECT_TRUE(IsFalse(IsPartConfigurated(none[1])));
}

}  // namespace
