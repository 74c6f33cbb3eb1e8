// Effectivities and configurations that are exported from a database to an exchange file, and read
// from that file.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "ORXExUtilities.h"
#include "Orx.h"
#include "ParsedModel.h"

namespace {

// #21 has a handler, #22 has none; the ids contain blanks, quotes and a character beyond ASCII.
constexpr char kDatabase[] = R"(
    #1=PART_OBJECT('P1',$,$,$,$,(#11),$,$,$,$);
    #2=PART_OBJECT('P2',$,$,$,$,$,$,$,$,$);
    #11=PART_LINK('L',$,#2,$,$,$,$);
    #21=CONFIGURATION_ITEM('Left ''A''',$,#1);
    #22=CONFIGURATION_ITEM('CFG\X\E9',$,#2);
    #31=CONFIGURATION_HANDLER('H 7',#1);
    #41=RANGE_EFFECTIVITY('R12',(#11),3,250);
    #42=RANGE_EFFECTIVITY('R13',(#11),7,$);
    #43=DATE_EFFECTIVITY('D 1',(#11),'01022003040506','12312099235959');
    #44=OPTION_EFFECTIVITY('E07',(#11),'option_date','O1',$,$,'02292024000000',$);
    #45=OPTION_EFFECTIVITY('E08',(#11),'option_range','O2',5,9,$,$);)";

SdaiAppInstance* Create(SdaiModel& model, const char* type) {
    return model.GetEntityDefinition(SdaiString(type))->CreateEntityInstance(&model);
}

// The functions' results for the database, in a model of the schema: items #1 and #2, effectivities
// #3 to #7, followed by the instances that belong to them.
void Export(const ParsedModel& database, kor::Model& step) {
    for (const unsigned long id : {21UL, 22UL}) {
        SdaiAppInstance* item = Create(step, "CONFIGURATION_ITEM");
        item->PutAttr(SdaiString("ID"), database[id].GetAttr("id"));
        item->PutAttr(SdaiString("DESCRIPTION"), ORXIdCfg(database[id]));
    }
    std::vector<SdaiAppInstance*> exported;
    for (const unsigned long id : {41UL, 42UL, 43UL, 44UL, 45UL}) {
        const bool isRange = IsTrue(IsRangeType(database[id]));
        exported.push_back(
            Create(step, isRange ? "SERIAL_NUMBERED_EFFECTIVITY" : "DATED_EFFECTIVITY"));
        exported.back()->PutAttr(SdaiString("ID"), ConcatEffAtb(database[id]));
        EXPECT_NE(isRange, IsTrue(IsDateType(database[id])));
    }
    for (const std::size_t i : {0U, 1U, 4U}) {
        const SdaiPrimitiveH effectivity = database[41 + i];
        exported[i]->PutAttr(SdaiString("EFFECTIVITY_START_ID"), GetRangeValue(effectivity, 1_h));
        exported[i]->PutAttr(SdaiString("EFFECTIVITY_END_ID"), GetRangeValue(effectivity, 2_h));
    }
    for (const std::size_t i : {2U, 3U}) {
        const SdaiPrimitiveH effectivity = database[41 + i];
        const SdaiPrimitiveH anchor(exported[i]);
        exported[i]->PutAttr(SdaiString("EFFECTIVITY_START_DATE"),
                             GetStartDate(effectivity, anchor));
        exported[i]->PutAttr(SdaiString("EFFECTIVITY_END_DATE"), GetEndDate(effectivity, anchor));
    }
}

class WrittenFile : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    Schemas, WrittenFile,
    testing::Values("CONFIG_CONTROL_DESIGN", "AUTOMOTIVE_DESIGN", "PDM_SCHEMA",
                    "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_"
                    "MIM_LF",
                    "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF"),
    [](const auto& schema) { return std::string(schema.param); });

}  // namespace

TEST_P(WrittenFile, GivesBackTheEffectivitiesAndConfigurationsThatWentOut) {
    const TemporaryDirectory directory;
    exchange::Messages messages;
    {
        const ParsedModel database("cdma", kDatabase);
        exchange::DataSet written =
            exchange::NewDataSet(exchange::BuiltInSchema(GetParam()), "out");
        Export(database, *written.model);
        ASSERT_TRUE(exchange::WriteDataSet(written, directory / "out.stp", messages));
    }
    const exchange::DataSet read =
        exchange::ReadDataSet(directory / "out.stp", exchange::SchemaCatalog(), {}, messages);
    ASSERT_NE(read.model, nullptr);
    EXPECT_TRUE(messages.Errors().empty());
    const auto at = [&](unsigned long id) { return SdaiPrimitiveH(read.model->Find(id)); };

    const char* const kDescriptions[] = {"S0003ORXS0008Left 'A'S0003H 7", "S0003ORXS0004CFG\xE9"};
    const char* const kIds[] = {"Left 'A'", "CFG\xE9"};
    for (const unsigned long id : {1UL, 2UL}) {
        const SdaiPrimitiveH description = at(id).GetAttr("DESCRIPTION");
        EXPECT_EQ(TextIn(at(id).GetAttr("ID")), kIds[id - 1]);
        EXPECT_EQ(TextIn(description), kDescriptions[id - 1]);
        EXPECT_EQ(TextIn(DecodeKey(description, 2_h)), kIds[id - 1]);
        EXPECT_TRUE(IsTrue(IsAORXCfg(at(id))));
    }
    // Three fields, the last of which is the handler's.
    EXPECT_TRUE(IsTrue(HasAORXValue(at(1))));
    EXPECT_EQ(TextIn(DecodeKey(at(1).GetAttr("DESCRIPTION"), 3_h)), "H 7");
    EXPECT_TRUE(IsFalse(HasAORXValue(at(2))));

    const struct {
        unsigned long id;
        const char* attributes;
        long mode;  // of ExtractEFFType
        const char* effectivity;
        const char* option;
    } kEffectivities[] = {
        {3, "S0005rangeS0003R12", 1, "R12", "EMPTY VALUE"},
        {4, "S0005rangeS0003R13", 1, "R13", "EMPTY VALUE"},
        {5, "S0004dateS0003D 1", 2, "D 1", "EMPTY VALUE"},
        {6, "S0011option_dateS0002O1S0003E07", 4, "E07", "O1"},
        {7, "S0012option_rangeS0002O2S0003E08", 3, "E08", "O2"},
    };
    for (const auto& effectivity : kEffectivities) {
        const SdaiPrimitiveH attributes = at(effectivity.id).GetAttr("ID");
        EXPECT_EQ(TextIn(attributes), effectivity.attributes);
        for (long mode = 1; mode <= 4; ++mode) {
            EXPECT_EQ(IsTrue(ExtractEFFType(attributes, Handle(mode))), mode == effectivity.mode);
        }
        EXPECT_EQ(TextIn(DecodeEFF(attributes, 1_h)), effectivity.effectivity);
        EXPECT_EQ(TextIn(DecodeEFF(attributes, 2_h)), effectivity.option);
    }

    const struct {
        unsigned long id;
        long start;
        long end;
    } kRanges[] = {{3, 3, 250}, {4, 7, 0}, {7, 5, 9}};
    for (const auto& range : kRanges) {
        EXPECT_EQ(IntegerIn(GetValue(at(range.id).GetAttr("EFFECTIVITY_START_ID"))), range.start);
        EXPECT_EQ(IntegerIn(GetValue(at(range.id).GetAttr("EFFECTIVITY_END_ID"))), range.end);
    }
    const struct {
        unsigned long id;
        const char* start;
        const char* end;
    } kDates[] = {{5, "01022003040506", "12312099235959"}, {6, "02292024000000", "00000000000000"}};
    for (const auto& date : kDates) {
        EXPECT_EQ(TextIn(GetDate(at(date.id).GetAttr("EFFECTIVITY_START_DATE"))), date.start);
        EXPECT_EQ(TextIn(GetDate(at(date.id).GetAttr("EFFECTIVITY_END_DATE"))), date.end);
    }
}
