// STEP ranges and dates in database form.

#include <gmock/gmock.h>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

std::string Returned(const std::string& value) {
    return ">> la valeur retournee est : " + value + " <<";
}

// ---- GetValue

constexpr char kGetValue[] = "SdaiPrimitiveH GetValue ->";

TEST(GetValue, ReadsANumberAndTakesAnythingElseForZero) {
    const struct {
        const char* text;
        long value;
    } cases[] = {
        {"42", 42},
        {"0", 0},
        {"-7", -7},
        {"0042", 42},
        {" 42 ", 42},
        {"9223372036854775807", 9223372036854775807L},
        {"-9223372036854775807", -9223372036854775807L},
        {"abc", 0},
        {"", 0},
        {" ", 0},
        {"42abc", 0},
        {"abc42", 0},
        {"4 2", 0},
        {"-", 0},
        {"--7", 0},
        {"0x2A", 0},
        {"UNLIMITED", 0},
        // Out of range.
        {"9223372036854775808", 0},
        {"99999999999999999999", 0},
        {"-99999999999999999999", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(IntegerIn(GetValue(Handle(c.text))), c.value);
        TraceCapture trace;
        EXPECT_EQ(IntegerIn(GetValue(Handle(c.text))), c.value);
        EXPECT_THAT(trace.Messages(kGetValue),
                    ElementsAre("String exists : OK ", Returned(std::to_string(c.value))));
    }
}

TEST(GetValue, ReadsATextThatASelectHolds) {
    const SdaiPrimitiveH select = SdaiSelectH("LABEL", "42"_h);
    EXPECT_EQ(IntegerIn(GetValue(select)), 42);
}

TEST(GetValue, IsZeroForAValueThatIsNoText) {
    const TestModel model("CONFIG_CONTROL_DESIGN", "#1=DIRECTION('42',(0.,0.,1.));");
    EXPECT_EQ(IntegerIn(GetValue(model[1])), 0);
    TraceCapture trace;
    EXPECT_EQ(IntegerIn(GetValue(42_h)), 0);
    EXPECT_THAT(trace.Messages(kGetValue), ElementsAre("String exists : OK ", Returned("0")));
}

TEST(GetValue, IsZeroForAMissingText) {
    EXPECT_EQ(IntegerIn(GetValue(SdaiPrimitiveH())), 0);
    TraceCapture trace;
    EXPECT_EQ(IntegerIn(GetValue(SdaiPrimitiveH())), 0);
    EXPECT_THAT(trace.Messages(kGetValue),
                ElementsAre("KO : String doesn't exist => Infinite Value", Returned("0")));
}

// ---- GetDate

constexpr char kGetDate[] = "SdaiPrimitiveH GetDate ->";
constexpr char kOpenDate[] = "00000000000000";
constexpr char kSelectExists[] = "Select Entity exists : OK ";
constexpr char kDateAndTime[] = "Type of input entity :DATE_AND_TIME";
constexpr char kNoDate[] = " -> DATE_COMPONENT attribute does not exist";
constexpr char kIncompleteDate[] = " -> DATE_COMPONENT is incomplete ";
constexpr char kNoTime[] = " -> TIME_COMPONENT attribute does not exist";
constexpr char kIncompleteTime[] = " -> TIME_COMPONENT is incomplete ";
constexpr char kNoMinute[] = "Mi. unset : OK ";
constexpr char kNoSecond[] = "S. unset : OK ";

// An effectivity, #1, whose start is a select with DATE_AND_TIME #2, made of date #3 and time #4.
TestModel Dated(const std::string& date, const std::string& time) {
    return TestModel("AUTOMOTIVE_DESIGN",
                     "#1=DATED_EFFECTIVITY('E',$,#2);#2=DATE_AND_TIME(#3,#4);#3=" + date +
                         ";#4=" + time + ";#5=COORDINATED_UNIVERSAL_TIME_OFFSET(0,$,.AHEAD.);");
}

SdaiPrimitiveH Start(const TestModel& model) { return model[1].GetAttr("EFFECTIVITY_START_DATE"); }

// Checks the string and the messages after those about the select.
void ExpectDate(const SdaiPrimitiveH& select, const std::string& text,
                const std::vector<std::string>& messages) {
    EXPECT_EQ(TextIn(GetDate(select)), text);
    TraceCapture trace;
    EXPECT_EQ(TextIn(GetDate(select)), text);
    std::vector<std::string> all{kSelectExists, kDateAndTime};
    all.insert(all.end(), messages.begin(), messages.end());
    EXPECT_THAT(trace.Messages(kGetDate), ElementsAreArray(all));
}

TEST(GetDate, WritesTheMonthFirst) {
    const struct {
        const char* date;
        const char* time;
        const char* text;
    } cases[] = {
        {"CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,5,9.,#5)", "03072001080509"},
        {"CALENDAR_DATE(2099,31,12)", "LOCAL_TIME(23,59,59.,#5)", "12312099235959"},
        {"CALENDAR_DATE(0,0,0)", "LOCAL_TIME(0,0,0.,#5)", "00000000000000"},
        {"CALENDAR_DATE(33,1,2)", "LOCAL_TIME(3,4,5.,#5)", "02010033030405"},
        // Nothing is checked; larger values have more digits.
        {"CALENDAR_DATE(12345,45,13)", "LOCAL_TIME(99,88,77.,#5)", "134512345998877"},
        {"CALENDAR_DATE(-44,3,15)", "LOCAL_TIME(1,2,3.,#5)", "1503-044010203"},
        {"CALENDAR_DATE(2001,-7,123)", "LOCAL_TIME(100,-5,3.,#5)", "123-72001100-503"},
        // The second is written as a real with up to six digits.
        {"CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,5,12.5,#5)",
         "030720010805"
         "12.5"},
        {"CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,5,0.5,#5)",
         "030720010805"
         "0.5"},
        {"CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,5,0.00001,#5)",
         "030720010805"
         "1e-05"},
        {"CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,5,59.9999,#5)",
         "030720010805"
         "59.9999"},
        {"CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,5,59.9999999,#5)",
         "030720010805"
         "60"},
        {"CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,5,100.,#5)",
         "030720010805"
         "100"},
        {"CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,5,1000000.,#5)",
         "030720010805"
         "1e+06"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const TestModel model = Dated(c.date, c.time);
        ExpectDate(Start(model), c.text,
                   {"Y. OK", "Mo. OK", "D. OK", "H. OK", "Mi. OK", "S. OK", "Mi. OK", "S. OK",
                    Returned(c.text)});
    }
}

TEST(GetDate, TakesZeroForAMissingMinuteButOneForAMissingSecond) {
    const TestModel noSecond = Dated("CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,5,$,#5)");
    ExpectDate(Start(noSecond), "03072001080501",
               {"Y. OK", "Mo. OK", "D. OK", "H. OK", "Mi. OK", "Mi. OK", kNoSecond,
                Returned("03072001080501")});
    const TestModel noMinute = Dated("CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,$,9.,#5)");
    ExpectDate(Start(noMinute), "03072001080009",
               {"Y. OK", "Mo. OK", "D. OK", "H. OK", "S. OK", kNoMinute, "S. OK",
                Returned("03072001080009")});
    const TestModel neither = Dated("CALENDAR_DATE(2001,7,3)", "LOCAL_TIME(8,$,$,$)");
    ExpectDate(
        Start(neither), "03072001080001",
        {"Y. OK", "Mo. OK", "D. OK", "H. OK", kNoMinute, kNoSecond, Returned("03072001080001")});
}

TEST(GetDate, IsOpenForAnIncompleteDate) {
    const struct {
        const char* date;
        std::vector<std::string> present;
    } cases[] = {
        {"CALENDAR_DATE(2001,$,3)", {"Y. OK", "Mo. OK"}},
        {"CALENDAR_DATE(2001,7,$)", {"Y. OK", "D. OK"}},
        {"CALENDAR_DATE($,7,3)", {"Mo. OK", "D. OK"}},
        {"CALENDAR_DATE($,$,3)", {"Mo. OK"}},
        {"CALENDAR_DATE($,$,$)", {}},
        // A DATE has neither month nor day.
        {"DATE(2001)", {"Y. OK"}},
        {"LOCAL_TIME(8,5,9.,#5)", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.date);
        const TestModel model = Dated(c.date, "LOCAL_TIME(8,5,9.,#5)");
        std::vector<std::string> messages = c.present;
        messages.emplace_back(kIncompleteDate);
        ExpectDate(Start(model), kOpenDate, messages);
    }
}

TEST(GetDate, IsOpenForADayOfTheYear) {
    const TestModel model("CONFIG_CONTROL_DESIGN", R"(
        #2=DATE_AND_TIME(#3,#4);
        #3=ORDINAL_DATE(2001,66);
        #4=LOCAL_TIME(8,5,9.,$);)");
    ExpectDate(model[2], kOpenDate, {"Y. OK", "D. OK", kIncompleteDate});
}

TEST(GetDate, IsOpenForAnIncompleteTime) {
    const struct {
        const char* time;
        std::vector<std::string> present;
    } cases[] = {
        {"LOCAL_TIME($,5,9.,#5)", {"Mi. OK", "S. OK"}},
        {"LOCAL_TIME($,5,$,#5)", {"Mi. OK"}},
        {"LOCAL_TIME($,$,9.,#5)", {"S. OK"}},
        {"LOCAL_TIME($,$,$,#5)", {}},
        {"CALENDAR_DATE(2001,7,3)", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.time);
        const TestModel model = Dated("CALENDAR_DATE(2001,7,3)", c.time);
        std::vector<std::string> messages{"Y. OK", "Mo. OK", "D. OK"};
        messages.insert(messages.end(), c.present.begin(), c.present.end());
        messages.emplace_back(kIncompleteTime);
        ExpectDate(Start(model), kOpenDate, messages);
    }
}

TEST(GetDate, IsOpenWithoutADate) {
    const TestModel model("AUTOMOTIVE_DESIGN", R"(
        #1=DATED_EFFECTIVITY('E',$,#2);
        #2=DATE_AND_TIME($,#4);
        #4=LOCAL_TIME(8,5,9.,$);)");
    ExpectDate(Start(model), kOpenDate, {kNoDate});
}

TEST(GetDate, DiscardsTheDateWithoutATime) {
    const TestModel model("AUTOMOTIVE_DESIGN", R"(
        #1=DATED_EFFECTIVITY('E',$,#2);
        #2=DATE_AND_TIME(#3,$);
        #3=CALENDAR_DATE(2001,7,3);)");
    ExpectDate(Start(model), kOpenDate, {"Y. OK", "Mo. OK", "D. OK", kNoTime});
}

TEST(GetDate, TellsOfAnIncompleteDateBeforeAMissingTime) {
    const TestModel model("AUTOMOTIVE_DESIGN", R"(
        #1=DATED_EFFECTIVITY('E',$,#2);
        #2=DATE_AND_TIME(#3,$);
        #3=CALENDAR_DATE(2001,$,3);)");
    ExpectDate(Start(model), kOpenDate, {"Y. OK", "Mo. OK", kIncompleteDate});
}

TEST(GetDate, IsOpenForAMissingSelect) {
    const TestModel model("AUTOMOTIVE_DESIGN", "#1=DATED_EFFECTIVITY('E',$,$);");
    for (const SdaiPrimitiveH& missing : {SdaiPrimitiveH(), Start(model)}) {
        EXPECT_EQ(TextIn(GetDate(missing)), kOpenDate);
        TraceCapture trace;
        EXPECT_EQ(TextIn(GetDate(missing)), kOpenDate);
        EXPECT_THAT(trace.Messages(kGetDate),
                    ElementsAre("KO : Select Entity doesn't exist => infinite value",
                                ">> la valeur retournee est : 00000000000000 <<"));
    }
}

TEST(GetDate, ReadsAPlainReferenceAsItsOwnSelect) {
    const TestModel model("CONFIG_CONTROL_DESIGN", R"(
        #1=DATED_EFFECTIVITY('E',#2,$);
        #2=DATE_AND_TIME(#3,#4);
        #3=CALENDAR_DATE(2001,7,3);
        #4=LOCAL_TIME(8,5,9.,$);)");
    EXPECT_EQ(TextIn(GetDate(model[1].GetAttr("EFFECTIVITY_START_DATE"))), "03072001080509");
    EXPECT_EQ(TextIn(GetDate(model[2])), "03072001080509");
}

TEST(GetDate, IsOpenForASelectOfSomethingElse) {
    const TestModel model("AUTOMOTIVE_DESIGN", R"(
        #1=DATED_EFFECTIVITY('E',$,#2);
        #2=CALENDAR_DATE(2001,7,3);)");
    const std::pair<SdaiPrimitiveH, const char*> cases[] = {
        {Start(model), "Type of input entity :CALENDAR_DATE"},
        {SdaiSelectH("LABEL", "03072001080509"_h), "Type of input entity :STRING"},
        {"03072001080509"_h, "Type of input entity :STRING"},
        {7_h, "Type of input entity :INTEGER"}};
    for (const auto& [select, type] : cases) {
        EXPECT_EQ(TextIn(GetDate(select)), kOpenDate);
        TraceCapture trace;
        EXPECT_EQ(TextIn(GetDate(select)), kOpenDate);
        EXPECT_THAT(trace.Messages(kGetDate), ElementsAre(kSelectExists, type, kNoDate));
    }
}

TEST(GetDate, GivesBackWhatTheExportBuilt) {
    const TestModel database("cdma", "#1=DATE_EFFECTIVITY('E',$,$,$);");
    const TestModel step("CONFIG_CONTROL_DESIGN", "#1=DIRECTION('',(0.,0.,1.));");
    auto* effectivity = static_cast<SdaiAppInstance*>(InstanceIn(database[1]));
    for (const char* date : {"12312099235959", "01022003040506", "00000000000000", "01010001000001",
                             "99999999999999"}) {
        effectivity->PutAttr("start_date", Handle(date));
        effectivity->PutAttr("end_date", Handle(date));
        EXPECT_EQ(TextIn(GetDate(GetStartDate(database[1], step[1]))), date);
        EXPECT_EQ(TextIn(GetDate(GetEndDate(database[1], step[1]))), date);
    }
    // An open end is restored as the open date.
    effectivity->PutAttr("end_date", SdaiPrimitiveH());
    EXPECT_EQ(TextIn(GetDate(GetEndDate(database[1], step[1]))), kOpenDate);
}

TEST(GetValue, GivesBackWhatTheExportWrote) {
    const TestModel database("cdma", "#1=RANGE_EFFECTIVITY('E',$,17,$);");
    EXPECT_EQ(IntegerIn(GetValue(GetRangeValue(database[1], 1_h))), 17);
    EXPECT_EQ(IntegerIn(GetValue(GetRangeValue(database[1], 2_h))), 0);
}

}  // namespace
