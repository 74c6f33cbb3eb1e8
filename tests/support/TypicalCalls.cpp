// A call of every function on typical data.

#include "TypicalCalls.h"

#include <algorithm>
#include <stdexcept>

#include "KORDMInstance.h"

namespace {

using namespace typical;

// ---- The data

// #1 is the part in the calls: every search finds it last.
std::string DatabaseData() {
    std::string data = R"(
        #1=PART_OBJECT('ABC-123456-01','A',12,'PART','Wheel, front left',
            (#21,#22,#23,#24,#25,#26,#27,#28,#29,#30),(),(),(#32),$);
        #31=MODEL_OBJECT('Wheel front left','3D',7,'A','wheel left','V5 R19 SP3');
        #32=CDM_DOCUMENT('DOC','Wheel front left','Released for production','PDF');
        #41=RANGE_EFFECTIVITY('EFFECTIVITY-00002',(#21,#30),100,250);
        #42=DATE_EFFECTIVITY('EFFECTIVITY-00003',(#22),'01012024000000','12312024235959');
        #43=OPTION_EFFECTIVITY('EFFECTIVITY-00001',(#30),'option_date','OPTION-LEFT-HAND',1,20,
            '01012024000000','12312024235959');
        #81=CDMA_REVISION_HISTORY((#79,#80));)";
    for (int i = 1; i <= 10; ++i) {
        const std::string number = std::to_string(i);
        // Links, items, handlers and identities: the tenth belongs to #1.
        const std::string part = '#' + std::to_string(i < 10 ? i + 1 : 1);
        const std::string component = '#' + std::to_string(i + 1);
        data += component + "=PART_OBJECT('ABC-123456-0" + number + "','A',1,'PART',$,$,$,$,$,$);";
        data += '#' + std::to_string(20 + i) + "=PART_LINK('" + number + "',#1," + component +
                ",$,$,$,$);";
        data += '#' + std::to_string(50 + i) + "=CONFIGURATION_ITEM('CFG-0000" +
                std::to_string(50 + i) + "',$," + part + ");";
        data += '#' + std::to_string(60 + i) + "=CONFIGURATION_HANDLER('HANDLER-0" +
                std::to_string(60 + i) + "'," + part + ");";
        data += '#' + std::to_string(70 + i) + "=CDMA_ID(" + part + ",'1A2B','" +
                std::to_string(70 + i) + "','ENV','TAB');";
    }
    return data;
}

std::string StepData() {
    return AssemblyData(10) + R"(
        #1011=DOCUMENT_FILE('Wheel\X\B1front\X\B1left.model','',$,$,'','');
        #1012=PROPERTY_DEFINITION('',$,#1011);
        #1013=PROPERTY_DEFINITION_REPRESENTATION(#1012,$);
        #1014=EXTERNAL_SOURCE(IDENTIFIER('vault'));
        #1015=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('Wheel\X\B1front\X\B1left.model',$,#1014,
            (#1011));
        #1021=CALENDAR_DATE(2024,31,12);
        #1022=LOCAL_TIME(23,59,59.,$);
        #1023=DATE_AND_TIME(#1021,#1022);
        #1024=DATED_EFFECTIVITY('EFFECTIVITY-00003',$,#1023);
        #1031=CONFIGURATION_ITEM('CFG-000060','',')" +
           std::string(kConfigurationId) + "',$,$);";
}

exchange::SchemaPtr DocumentSchema() {
    exchange::Messages messages;
    return exchange::ParseSchemas(kDocumentSchema, "schema", messages).at(0);
}

// ---- The calls

// An argument: an instance of one of the data sets, the value of one of its attributes, or another
// value.
struct Argument {
    enum Source { None, Database, Step, Documents, Anchor, Text, Integer, Real, List };

    Source source = None;
    long number = 0;
    std::string_view text{};
    double real = 0;

    SdaiPrimitiveH In(const TypicalData& data) const {
        switch (source) {
            case None: return {};
            case Database: return Attribute(data.Database(Id()));
            case Step: return Attribute(data.Step(Id()));
            case Documents: return Attribute(data.Documents(Id()));
            case Anchor: return data.Anchor();
            case Text: return SdaiString(text);
            case Integer: return number;
            case Real: return real;
            case List: {
                auto* list = new SdaiListClassOfSdaiReal(12, 12);
                list->Reserve(12);
                return SdaiPrimitiveH::TakeOver(list);
            }
        }
        return {};
    }

  private:
    unsigned long Id() const { return static_cast<unsigned long>(number); }
    SdaiPrimitiveH Attribute(const SdaiPrimitiveH& instance) const {
        return text.empty() ? instance : instance.GetAttr(SdaiString(text));
    }
};

constexpr Argument Database(long id, std::string_view attribute = {}) {
    return {Argument::Database, id, attribute};
}
constexpr Argument Step(long id, std::string_view attribute = {}) {
    return {Argument::Step, id, attribute};
}
constexpr Argument Documents(long id) { return {Argument::Documents, id}; }
constexpr Argument Text(std::string_view text) { return {Argument::Text, 0, text}; }
constexpr Argument Integer(long value) { return {Argument::Integer, value}; }
constexpr Argument Real(double value) { return {Argument::Real, 0, {}, value}; }
constexpr Argument kAnchor{Argument::Anchor};
constexpr Argument kList{Argument::List};

struct Row {
    std::string_view function;
    std::array<Argument, 3> arguments;
};

constexpr std::array kRows{
    Row{"IsEncodedKey", {Text(kKey)}},
    Row{"DecodeKey", {Text(kKey), Integer(4)}},
    Row{"ConcatModelAtb", {Database(31)}},
    Row{"ConcatDocAtb", {Database(32)}},
    Row{"ConcatPartAtb", {Database(1)}},
    Row{"IsPartInCfgitm", {Database(1), Database(60)}},
    Row{"IsRangeOrDateEffectivity", {Database(43)}},
    Row{"GetIDEff", {Database(43)}},
    Row{"IsRangeType", {Database(41)}},
    Row{"GetRangeValue", {Database(41), Integer(2)}},
    Row{"IsInfiniteRank", {Database(41)}},
    Row{"IsDateType", {Database(42)}},
    Row{"GetStartDate", {Database(42), kAnchor}},
    Row{"IsInfiniteDate", {Database(42)}},
    Row{"GetEndDate", {Database(42), kAnchor}},
    Row{"BuildDatedEff", {Text(kDate), kAnchor}},
    Row{"IsPartConfigurated", {Database(1)}},
    Row{"IsUsedByPart", {Database(1), Database(43)}},
    Row{"ORXIdEff", {Database(1), Database(43)}},
    Row{"HasAORXValue", {Step(1031)}},
    Row{"ExtractCFGType", {Text(kEffectivityId), Integer(4)}},
    Row{"ORXIdCfg", {Database(60)}},
    Row{"ConcatEffAtb", {Database(43)}},
    Row{"GetValue", {Text("250")}},
    Row{"GetDate", {Step(1024, "EFFECTIVITY_START_DATE")}},
    Row{"ExtractEFFType", {Text(kEffectivityAttributes), Integer(4)}},
    Row{"IsAORXCfg", {Step(1031)}},
    Row{"DecodeEFF", {Text(kEffectivityAttributes), Integer(1)}},
    Row{"GetExternalName", {Step(1015), Step(1014)}},
    Row{"GetInst", {Step(1012), Text("DEFINITION")}},
    Row{"GetItem", {Integer(2), Step(215, "TRANSFORMATION_OPERATOR")}},
    Row{"GetMemberCount", {Database(1, "KORASS")}},
    Row{"ComputeABSPlacement", {Step(208), Step(204), kList}},
    Row{"GetPlacement0", {Step(216), Text("REP_1"), kList}},
    Row{"GetPlacement1", {Step(216), kList}},
    Row{"GetPlacement2", {Step(216), kList}},
    Row{"Minus", {Real(2.5)}},
    Row{"GetAbsPlacement", {Step(212)}},
    Row{"GetRepFromProperty", {Step(1013)}},
    Row{"GetUniqId", {}},
    Row{"IsAnAssembly", {Database(1)}},
    Row{"IsFree", {Step(1012), Text("DEFINITION")}},
    Row{"PRDDFN_IsIn", {Step(204), Step(2)}},
    Row{"IsInAssembly", {Database(1), Database(11)}},
    Row{"IsModelDocLinked", {Database(1)}},
    Row{"IsSame0", {Database(1), Database(1)}},
    Row{"IsSamePart", {Step(200), Step(211)}},
    Row{"IsSameRelating", {Step(5), Step(216)}},
    Row{"IsSameRelated", {Step(211), Step(216)}},
    Row{"IsSameNAUO", {Step(212), Step(216)}},
    Row{"IsSameShapeRep1", {Step(211), Step(216)}},
    Row{"IsSameIDT", {Step(214), Step(215)}},
    Row{"IsSameDocVersion", {Documents(2), Documents(3)}},
    Row{"IsaNARVOModel", {Text(kModelFile)}},
    Row{"IsaNARVORepProperty", {Step(1013)}},
    Row{"IsaNARVOV5Doc", {Text(kDocumentFile)}},
    Row{"GetNARVOV5Ext", {Text(kDocumentFile)}},
    Row{"QuantifyRef", {Database(1), Database(11)}},
    Row{"ReadMandatory", {Text(kName), Text("NAME")}},
    Row{"ReadPartVersion", {Text("A")}},
    Row{"EncodeNARVOV5Doc", {Database(32)}},
    Row{"IsEncodedNARVOV5", {Text(kDocumentKey)}},
    Row{"DecodeNARVOV5", {Text(kDocumentKey), Integer(2)}},
    Row{"ORXTrunc", {Text(kDocumentKey), Integer(20)}},
    Row{"ORX_GetDocName", {Text(kName), Integer(1)}},
    Row{"ORX_GetModelId_Exp", {Database(31)}},
    Row{"ORX_GetModelId_Imp1", {Text(kModelId)}},
    Row{"ORX_GetModelId_Imp2", {Text(kModelId)}},
    Row{"ORX_GetModelId_Imp3", {Text(kModelId)}},
    Row{"ORX_GetModelName", {Text(kName), Integer(1)}},
    Row{"IsNewer", {Database(1), Database(10)}},
    Row{"IsVersion", {Database(1), Integer(1)}},
    Row{"RemoveValueVersion", {}},
};

// Each function has a row, in the order of the table.
static_assert(std::ranges::equal(kRows, orx::kExports, {}, &Row::function, &orx::Export::name));

}  // namespace

std::string AssemblyData(long occurrences) {
    std::string records =
        "#1=PRODUCT_DEFINITION('assembly',$,$,$);"
        "#3=AXIS2_PLACEMENT_3D('',$,$,$);"
        "#4=PRODUCT_DEFINITION_SHAPE('',$,#1);"
        "#5=SHAPE_DEFINITION_REPRESENTATION(#4,#2);";
    std::string items = "#3";
    for (long i = 1; i <= occurrences; ++i) {
        const auto id = [i](long k) { return '#' + std::to_string(20 * i + k); };
        const auto placement = [&](long k, const std::string& x) {
            records += id(k) + "=CARTESIAN_POINT('',(" + x + ".5,20.25,-3.));";
            records += id(k + 1) + "=DIRECTION('',(0.,0.,1.));";
            records += id(k + 2) + "=DIRECTION('',(0.,1.,0.));";
            records += id(k + 3) + "=AXIS2_PLACEMENT_3D(''," + id(k) + ',' + id(k + 1) + ',' +
                       id(k + 2) + ");";
        };
        records += id(0) + "=PRODUCT_DEFINITION('component',$,$,$);";
        placement(1, std::to_string(i));
        placement(5, "0");
        records += id(9) + "=SHAPE_REPRESENTATION('',(" + id(8) + "),$);";
        records += id(10) + "=PRODUCT_DEFINITION_SHAPE('',$," + id(0) + ");";
        records += id(11) + "=SHAPE_DEFINITION_REPRESENTATION(" + id(10) + ',' + id(9) + ");";
        records += id(12) + "=NEXT_ASSEMBLY_USAGE_OCCURRENCE('" + std::to_string(i) + "','',$,#1," +
                   id(0) + ",$);";
        records += id(13) + "=PRODUCT_DEFINITION_SHAPE('',$," + id(12) + ");";
        records += id(14) + "=ITEM_DEFINED_TRANSFORMATION('',$," + id(8) + ',' + id(4) + ");";
        records += id(15) + "=(REPRESENTATION_RELATIONSHIP('',$," + id(9) +
                   ",#2)REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(" + id(14) +
                   ")SHAPE_REPRESENTATION_RELATIONSHIP());";
        records +=
            id(16) + "=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(" + id(15) + ',' + id(13) + ");\n";
        items += ',' + id(4);
    }
    return records + "#2=SHAPE_REPRESENTATION('',(" + items + "),$);";
}

exchange::DataSet ReadData(const exchange::SchemaPtr& schema, const std::string& data) {
    exchange::SchemaCatalog schemas;
    schemas.Add(schema);
    exchange::Messages messages;
    exchange::DataSet dataSet = exchange::ParseDataSet(
        "ISO-10303-21;HEADER;FILE_SCHEMA(('" + std::string(schema->Name().View()) +
            "'));ENDSEC;DATA;\n" + data + "\nENDSEC;END-ISO-10303-21;",
        "data", schemas, {}, messages);
    if (dataSet.model == nullptr) throw std::runtime_error(messages.Errors().at(0).ToString());
    return dataSet;
}

TypicalData::TypicalData()
    : database_(ReadData(exchange::BuiltInSchema("cdma"), DatabaseData())),
      step_(ReadData(exchange::BuiltInSchema("AUTOMOTIVE_DESIGN"), StepData())),
      documents_(ReadData(DocumentSchema(), R"(
          #1=PRODUCT_DEFINITION_FORMATION('A');
          #2=PRODUCT_DEFINITION(#1);
          #3=DOCUMENT_PRODUCT_ASSOCIATION(#1);)")),
      target_(ReadData(exchange::BuiltInSchema("AUTOMOTIVE_DESIGN"),
                       "#1=PRODUCT_DEFINITION('',$,$,$);")) {
    KORDMStore::AddFamilies(*database_.model);
}

TypicalData::~TypicalData() { KORDMStore::RemoveAll(); }

TypicalArguments ArgumentsOf(const orx::Export& function, const TypicalData& data) {
    const auto& [a, b, c] =
        kRows[static_cast<std::size_t>(&function - orx::kExports.data())].arguments;
    return {a.In(data), b.In(data), c.In(data)};
}
