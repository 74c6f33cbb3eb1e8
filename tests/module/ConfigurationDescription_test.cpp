// HasAORXValue and IsAORXCfg: whether the description of a CONFIGURATION_ITEM is an identifier.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

namespace {

using testing::ElementsAre;

constexpr char kItemExists[] = "CONFIGURATION_ITEM exists : OK ";
constexpr char kOrx[] = ">> ORX DESCRIPTION OK <<";
constexpr char kNoOrx[] = ">> NO ORX DESCRIPTION <<";
constexpr char kBadFormat[] = "NOT a good format";
constexpr char kPastTheEnd[] = "On se moque";
constexpr char kNoLength[] = "On se moque encore";
constexpr char kSomethingElse[] = "j'abandonne";

struct Case {
    const char* description;
    const char* last;  // the last message; kOrx if accepted
};

struct Reader {
    const char* name;
    SdaiPrimitiveH (*function)(const SdaiPrimitiveH&);
    const char* label;
    std::vector<Case> cases;
};

void PrintTo(const Reader& reader, std::ostream* stream) { *stream << reader.name; }

class ConfigurationDescription : public testing::TestWithParam<Reader> {
  protected:
    // The result, which must be the same with and without tracing, and must be TRUE or FALSE.
    bool Accepts(const SdaiPrimitiveH& item) {
        const bool accepted = IsTrue(GetParam().function(item));
        const TraceCapture trace;
        const SdaiPrimitiveH result = GetParam().function(item);
        EXPECT_EQ(IsTrue(result), accepted);
        EXPECT_EQ(IsFalse(result), !accepted);
        messages_ = trace.Messages(GetParam().label);
        return accepted;
    }

    std::vector<std::string> messages_;
};

TEST_P(ConfigurationDescription, IsReadByItsFields) {
    const TestModel model("CONFIG_CONTROL_DESIGN", "#1=CONFIGURATION_ITEM('C','',$,$,$);");
    auto* item = static_cast<SdaiAppInstance*>(InstanceIn(model[1]));
    for (const Case& c : GetParam().cases) {
        SCOPED_TRACE(c.description);
        item->PutAttr("DESCRIPTION", Handle(c.description));
        EXPECT_EQ(Accepts(model[1]), c.last == kOrx);
        EXPECT_THAT(messages_, ElementsAre(kItemExists, c.last));
    }
}

TEST_P(ConfigurationDescription, IsRefusedWhenItIsNotSet) {
    const TestModel model("CONFIG_CONTROL_DESIGN",
                          "#1=CONFIGURATION_ITEM('C','',$,$,$);#2=DIRECTION('',(0.,0.,1.));");
    for (const SdaiPrimitiveH& item : {model[1], model[2], "S0003ORXS0004CFG1S0002H7"_h}) {
        EXPECT_FALSE(Accepts(item));
        EXPECT_THAT(
            messages_,
            ElementsAre(kItemExists, "NO DESCRIPTION attribute on CONFIGURATION_ITEM", kNoOrx));
    }
}

TEST_P(ConfigurationDescription, IsRefusedForAMissingItem) {
    EXPECT_FALSE(Accepts(SdaiPrimitiveH()));
    EXPECT_THAT(messages_, ElementsAre("KO : CONFIGURATION_ITEM doesn't exist", kNoOrx));
}

TEST_P(ConfigurationDescription, IsTakenForAnEmptyOneWhenItIsNoText) {
    const TestModel model(
        "SCHEMA small; ENTITY configuration_item; description : INTEGER; END_ENTITY; END_SCHEMA;",
        "#1=CONFIGURATION_ITEM(12345678);");
    EXPECT_FALSE(Accepts(model[1]));
    EXPECT_THAT(messages_, ElementsAre(kItemExists, "NOT a ORX DESCRIPTION : length = 0"));
}

// Three fields and nothing else.
const std::vector<Case> kThreeFields{
    {"S0003ORXS0004CFG1S0002H7", kOrx},
    // The contents of the fields do not matter.
    {"S0003orxS0004CFG1S0002H7", kOrx},
    {"S0000S0000S0000", kOrx},
    {"S0005rangeS0000S0000", kOrx},
    {"S0003ORXS0005S0001S0000", kOrx},
    {"S0003ORXS0000S0005S0000", kOrx},
    // Nor do blanks around a length.
    {"S  3 ORXS4   CFG1S   2H7", kOrx},
    // Too short for a field with the tag.
    {"", "NOT a ORX DESCRIPTION : length = 0"},
    {"S", "NOT a ORX DESCRIPTION : length = 1"},
    {"S0003OR", "NOT a ORX DESCRIPTION : length = 7"},
    // One field or two: the next marker is missing.
    {"S0003ORX", kBadFormat},
    {"S0003ORXS0004CFG1", kBadFormat},
    {"s0003ORXS0004CFG1S0002H7", kBadFormat},
    {"S0003ORXI0004CFG1S0002H7", kBadFormat},
    {"S0003ORXS0004CFG1R0002H7", kBadFormat},
    {"S0004ORXS0004CFG1S0002H7", kBadFormat},
    {"        ", kBadFormat},
    // The first or second field extends past the end.
    {"S0009ORX", kPastTheEnd},
    {"S9999ORXS0004CFG1S0002H7", kPastTheEnd},
    {"S0003ORXS0099CFG1S0002H7", kPastTheEnd},
    {"S0003ORXS0005CFG1", kPastTheEnd},
    // A length that is not a number, or is missing.
    {"S000xORXS0004CFG1S0002H7", kNoLength},
    {"SxxxxORXS0004CFG1S0002H7", kNoLength},
    {"S    ORXS0004CFG1S0002H7", kNoLength},
    {"S0003ORXS0004CFG1S 2 H7", kNoLength},
    {"S0003ORXSabcdCFG1S0002H7", kNoLength},
    {"S0003ORXS0004CFG1SORX2H7", kNoLength},
    {"S0003ORXS", kNoLength},
    {"S0003ORXS0004CFG1S", kNoLength},
    // The third field ends before the text, or after it.
    {"S0003ORXS0004CFG1S0002H7x", kSomethingElse},
    {"S0003ORXS0004CFG1S0002H7S0000", kSomethingElse},
    {"S0003ORXS0004CFG1S0003H7", kSomethingElse},
    {"S0003ORXS0004CFG1S0001H7", kSomethingElse},
    {"S0003ORXS0004CFG1S0000H7", kSomethingElse},
    {"S0003ORXS0004CFG1S9999H7", kSomethingElse},
    // A length with fewer digits at the very end is a number, too.
    {"S0003ORXS0004CFG1S00", kSomethingElse},
};

INSTANTIATE_TEST_SUITE_P(HasAORXValue, ConfigurationDescription,
                         testing::Values(Reader{"HasAORXValue", HasAORXValue,
                                                "SdaiPrimitiveH HasAORXValue ->", kThreeFields}));

// Only the first field matters.
const std::vector<Case> kTag{
    {"S0003ORX", kOrx},
    {"S0003ORXS0004CFG1", kOrx},
    {"S0003ORXS0004CFG1S0002H7", kOrx},
    {"S0003ORX and whatever follows", kOrx},
    // Blanks around a number do not matter.
    {"S   3ORX", kOrx},
    {"S3   ORX", kOrx},
    {"S003 ORX", kOrx},
    {"", "NOT a ORX DESCRIPTION : length = 0"},
    {"S0003OR", "NOT a ORX DESCRIPTION : length = 7"},
    {"s0003ORX", kNoOrx},
    {"I0003ORX", kNoOrx},
    {" S0003ORX", kNoOrx},
    {"S0003orxS0004CFG1", kNoOrx},
    {"S0003OrX", kNoOrx},
    {"S0003XRO", kNoOrx},
    {"S0004ORX", kNoOrx},
    {"S0002ORX", kNoOrx},
    {"S0030ORX", kNoOrx},
    {"S3000ORX", kNoOrx},
    {"S-003ORX", kNoOrx},
    {"S    ORX", kNoOrx},
    {"S000xORX", kNoOrx},
    {"SxxxxORX", kNoOrx},
    {"S003ORXS0004CFG1", kNoOrx},
    {"A plain description", kNoOrx},
};

INSTANTIATE_TEST_SUITE_P(IsAORXCfg, ConfigurationDescription,
                         testing::Values(Reader{"IsAORXCfg", IsAORXCfg,
                                                "SdaiPrimitiveH IsAORXCfg ->", kTag}));

}  // namespace
