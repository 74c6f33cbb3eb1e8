// The export table and the module that it describes: every function is found by its name and has
// the properties stated in the table, whatever its arguments.

#include "ORXExportTable.h"

#include <dlfcn.h>
#include <elf.h>
#include <gmock/gmock.h>
#include <link.h>

#include <limits>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ExchangeText.h"
#include "KORDMInstance.h"
#include "ORXExUtilities.h"
#include "Orx.h"
#include "ParsedModel.h"
#include "TraceCapture.h"

using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::UnorderedElementsAreArray;

namespace {

using enum orx::Kind;

enum Signature {
    NoHandle,
    OneHandle,
    TwoHandles,
    TextAndModel,        // SdaiEntityInstance* (SdaiString, SdaiModel*)
    TwoHandlesAndList,   // void (handle, handle, SdaiListClassOfSdaiReal*&)
    TextBetweenHandles,  // void (handle, const SdaiString&, handle)
};

struct Row {
    const char* name;
    Signature signature;
    orx::Kind result;
    const char* unit;
    const char* label;
    // The result if every argument is missing, as in an exchange file; null if it differs on each
    // call.
    const char* byDefault;
};

void PrintTo(const Row& row, std::ostream* stream) { *stream << row.name; }

// The identity placement.
constexpr char kIdentity[] = "(1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,0.)";

constexpr Row kFunctions[] = {
    {"IsEncodedKey", OneHandle, Logical, "ConcatAtb", "SdaiPrimitiveH IsEncodeKey ->", ".F."},
    {"DecodeKey", TwoHandles, String | Integer | Real | Unset, "ConcatAtb",
     "SdaiPrimitiveH DecodeKey ->", "$"},
    {"ConcatModelAtb", OneHandle, String, "ConcatAtb", "SdaiPrimitiveH ConcatModelAtb ->",
     "'EMPTY VALUE'"},
    {"ConcatDocAtb", OneHandle, String, "ConcatAtb", "SdaiPrimitiveH ConcatDocAtb ->",
     "'EMPTY VALUE'"},
    {"ConcatPartAtb", OneHandle, String, "ConcatAtb", "SdaiPrimitiveH ConcatPartAtb ->",
     "'EMPTY VALUE'"},
    {"IsPartInCfgitm", TwoHandles, Logical, "ConfigurationExport",
     "SdaiPrimitiveH IsPartInCfgitm ->", ".F."},
    {"IsRangeOrDateEffectivity", OneHandle, Logical, "ConfigurationExport",
     "SdaiPrimitiveH IsRangeOrDateEffectivity ->", ".F."},
    {"GetIDEff", OneHandle, String, "ConfigurationExport", "SdaiPrimitiveH GetIDEff ->",
     "'EMPTY VALUE'"},
    {"IsRangeType", OneHandle, Logical, "ConfigurationExport", "SdaiPrimitiveH IsRangeType ->",
     ".F."},
    {"GetRangeValue", TwoHandles, String, "ConfigurationExport", "SdaiPrimitiveH GetRangeValue ->",
     "''"},
    {"IsInfiniteRank", OneHandle, Logical, "ConfigurationExport",
     "SdaiPrimitiveH IsInfiniteRank ->", ".T."},
    {"IsDateType", OneHandle, Logical, "ConfigurationExport", "SdaiPrimitiveH IsDateType ->",
     ".F."},
    {"GetStartDate", TwoHandles, Instance | Unset, "ConfigurationExport",
     "SdaiPrimitiveH GetStartDate ->", "$"},
    {"IsInfiniteDate", OneHandle, Logical, "ConfigurationExport",
     "SdaiPrimitiveH IsInfiniteDate ->", ".T."},
    {"GetEndDate", TwoHandles, Instance | Unset, "ConfigurationExport",
     "SdaiPrimitiveH GetEndDate ->", "$"},
    {"BuildDatedEff", TextAndModel, Instance | Unset, "ConfigurationExport",
     "SdaiPrimitiveH BuildDatedEff ->", "$"},
    {"IsPartConfigurated", OneHandle, Logical, "ConfigurationExport",
     "SdaiPrimitiveH IsPartConfigurated ->", ".F."},
    {"IsUsedByPart", TwoHandles, Logical, "ConfigurationExport", "SdaiPrimitiveH IsUsedByPart ->",
     ".F."},
    {"ORXIdEff", TwoHandles, String, "ConfigurationExport", "SdaiPrimitiveH ORXIdEff ->",
     "'EMPTY VALUE'"},
    {"HasAORXValue", OneHandle, Logical, "ConfigurationExport", "SdaiPrimitiveH HasAORXValue ->",
     ".F."},
    {"ExtractCFGType", TwoHandles, Logical, "ConfigurationExport",
     "SdaiPrimitiveH ExtractCFGType ->", ".F."},
    {"ORXIdCfg", OneHandle, String, "ConfigurationExport", "SdaiPrimitiveH ORXIdCfg ->",
     "'EMPTY VALUE'"},
    {"ConcatEffAtb", OneHandle, String, "ConfigurationExport", "SdaiPrimitiveH ConcatEffAtb ->",
     "'EMPTY VALUE'"},
    {"GetValue", OneHandle, Integer, "ConfigurationImport", "SdaiPrimitiveH GetValue ->", "0"},
    {"GetDate", OneHandle, String, "ConfigurationImport", "SdaiPrimitiveH GetDate ->",
     "'00000000000000'"},
    {"ExtractEFFType", TwoHandles, Logical, "ConfigurationImport",
     "SdaiPrimitiveH ExtractEFFType ->", ".F."},
    {"IsAORXCfg", OneHandle, Logical, "ConfigurationImport", "SdaiPrimitiveH IsAORXCfg ->", ".F."},
    {"DecodeEFF", TwoHandles, String, "ConfigurationImport", "SdaiPrimitiveH DecodeEFF ->",
     "'EMPTY VALUE'"},
    {"GetExternalName", TwoHandles, String, "GetExternalName", "SdaiPrimitiveH GetExternalName ->",
     "''"},
    {"GetInst", TwoHandles, Any, "GetInst", "SdaiPrimitiveH GetInst ->", "0"},
    {"GetItem", TwoHandles, Any, "GetItem", "SdaiPrimitiveH GetItem ->", "$"},
    {"GetMemberCount", OneHandle, Integer, "GetMemberCount", "SdaiPrimitiveH GetMemberCount ->",
     "0"},
    {"ComputeABSPlacement", TwoHandlesAndList, Nothing, "GetPlacement",
     "void ComputeABSPlacement ->", kIdentity},
    {"GetPlacement0", TextBetweenHandles, Nothing, "GetPlacement", "void GetPlacement0 ->", "()"},
    {"GetPlacement1", TwoHandles, String, "GetPlacement", "SdaiPrimitiveH GetPlacement1 ->",
     "'GetPlacement1 done'"},
    {"GetPlacement2", TwoHandles, String, "GetPlacement", "SdaiPrimitiveH GetPlacement2 ->",
     "'GetPlacement2 done'"},
    {"Minus", OneHandle, Real, "GetPlacement", "SdaiPrimitiveH Minus ->", "0."},
    {"GetAbsPlacement", OneHandle, Aggregate, "GetPlacement", "SdaiPrimitiveH GetAbsPlacement->",
     kIdentity},
    {"GetRepFromProperty", OneHandle, Instance | Integer | Unset, "GetRepFromProperty",
     "SdaiPrimitiveH GetRepFromProperty->", "$"},
    {"GetUniqId", OneHandle, String, "GetUniqId", "SdaiPrimitiveH GetUniqId ->", nullptr},
    {"IsAnAssembly", OneHandle, Logical, "IsAnAssembly", "SdaiPrimitiveH IsAnAssembly ->", ".F."},
    {"IsFree", TwoHandles, Logical, "IsFree", "SdaiPrimitiveH IsFree ->", ".T."},
    {"PRDDFN_IsIn", TwoHandles, Logical, "IsIn", "SdaiPrimitiveH PRDDFN_IsIn ->", ".F."},
    {"IsInAssembly", TwoHandles, Logical, "IsInAssembly", "SdaiPrimitiveH IsInAssembly ->", ".F."},
    {"IsModelDocLinked", OneHandle, Logical, "IsModelDocLinked",
     "SdaiPrimitiveH IsModelDocLinked ->", ".F."},
    {"IsSame0", TwoHandles, Logical, "IsSame", "SdaiPrimitiveH IsSame0->", ".F."},
    {"IsSamePart", TwoHandles, Logical, "IsSame", "SdaiPrimitiveH IsSamePart->", ".F."},
    {"IsSameRelating", TwoHandles, Logical, "IsSame", "SdaiPrimitiveH IsSameRelating->", ".F."},
    {"IsSameRelated", TwoHandles, Logical, "IsSame", "SdaiPrimitiveH IsSameRelated->", ".F."},
    {"IsSameNAUO", TwoHandles, Logical, "IsSame", "SdaiPrimitiveH IsSameNAUO->", ".F."},
    {"IsSameShapeRep1", TwoHandles, Logical, "IsSame", "IsSameShapeRep1->", ".F."},
    {"IsSameIDT", TwoHandles, Logical, "IsSame", "IsSameIDT->", ".F."},
    {"IsSameDocVersion", TwoHandles, Logical, "IsSameDocVersion",
     "SdaiPrimitiveH IsSameDocVersion ->", ".F."},
    {"IsaNARVOModel", OneHandle, Logical, "IsaNARVOModel", "SdaiPrimitiveH IsaNARVOModel ->",
     ".F."},
    {"IsaNARVORepProperty", OneHandle, Logical, "IsaNARVOModel",
     "SdaiPrimitiveH IsaNARVORepProperty ->", ".F."},
    {"IsaNARVOV5Doc", OneHandle, Logical, "IsaNARVOV5Doc", "SdaiPrimitiveH IsaNARVOV5Doc ->",
     ".F."},
    {"GetNARVOV5Ext", OneHandle, String, "IsaNARVOV5Doc", "SdaiPrimitiveH GetNARVOV5Ext ->", "''"},
    {"QuantifyRef", TwoHandles, Real, "QuantifyRef", "SdaiPrimitiveH QuantifyRef ->", "0."},
    {"ReadMandatory", TwoHandles, String, "ReadMandatory", "SdaiPrimitiveH ReadMandatory->",
     "'ORX'"},
    {"ReadPartVersion", OneHandle, String, "ReadPartVersion", "SdaiPrimitiveH ReadPartVersion ->",
     "''"},
    {"EncodeNARVOV5Doc", OneHandle, String, "V5Document", "SdaiPrimitiveH EncodeNARVOV5Doc->",
     "'EMPTY VALUE'"},
    {"IsEncodedNARVOV5", OneHandle, Logical, "V5Document", "SdaiPrimitiveH IsEncodedNARVOV5 ->",
     ".F."},
    {"DecodeNARVOV5", TwoHandles, String | Integer | Real | Unset, "V5Document",
     "SdaiPrimitiveH DecodeNARVOV5 ->", "'EMPTY VALUE'"},
    {"ORXTrunc", TwoHandles, String, "ORXTrunc", "SdaiPrimitiveH ORXTrunc ->", "'NO VALUE'"},
    {"ORX_GetDocName", TwoHandles, String, "ORX_GetDocName", "SdaiPrimitiveH ORX_GetDocName ->",
     "''"},
    {"ORX_GetModelId_Exp", OneHandle, String, "ORX_GetModelId",
     "SdaiPrimitiveH ORX_GetModelId_Exp ->", "''"},
    {"ORX_GetModelId_Imp1", OneHandle, String, "ORX_GetModelId",
     "SdaiPrimitiveH ORX_GetModelId_Imp1 ->", "''"},
    {"ORX_GetModelId_Imp2", OneHandle, Integer, "ORX_GetModelId",
     "SdaiPrimitiveH ORX_GetModelId_Imp2 ->", "-999"},
    {"ORX_GetModelId_Imp3", OneHandle, String, "ORX_GetModelId",
     "SdaiPrimitiveH ORX_GetModelId_Imp3 ->", "'EMPTY VALUE'"},
    {"ORX_GetModelName", TwoHandles, String, "ORX_GetModelName",
     "SdaiPrimitiveH ORX_GetModelName ->", "''"},
    {"IsNewer", TwoHandles, Logical, "Version", "SdaiPrimitiveH IsNewer ->", ".F."},
    {"IsVersion", TwoHandles, Logical | Instance | Unset, "Version", "SdaiPrimitiveH IsVersion ->",
     ".F."},
    {"RemoveValueVersion", NoHandle, Logical, "Version", "SdaiPrimitiveH RemoveValueVersion ->",
     ".T."},
};

// ---- The module

// The file from which the library that this program is linked with was loaded.
std::string ModulePath() {
    Dl_info info{};
    EXPECT_NE(dladdr(reinterpret_cast<void*>(&IsEncodedKey), &info), 0);
    return info.dli_fname;
}

// The library as an engine gets it by name.
void* Module() {
    static void* const module = dlopen(ModulePath().c_str(), RTLD_LAZY | RTLD_NOLOAD);
    return module;
}

// The contents of a shared library file.
class ElfFile {
  public:
    explicit ElfFile(const std::string& path) : bytes_(ReadFile(path)) {}

    // The exported symbols, including duplicates.
    std::vector<std::string> ExportedNames() const {
        std::vector<std::string> names;
        ForEach<ElfW(Sym)>(SHT_DYNSYM, [&](const ElfW(Sym) & symbol, const char* strings) {
            const unsigned binding = symbol.st_info >> 4U;
            const unsigned visibility = symbol.st_other & 3U;
            if (symbol.st_shndx != SHN_UNDEF && binding != STB_LOCAL && visibility != STV_HIDDEN &&
                visibility != STV_INTERNAL) {
                names.emplace_back(strings + symbol.st_name);
            }
        });
        return names;
    }

    // The texts of the entries with this tag: DT_SONAME, DT_NEEDED.
    std::vector<std::string> DynamicTexts(long tag) const {
        std::vector<std::string> texts;
        ForEach<ElfW(Dyn)>(SHT_DYNAMIC, [&](const ElfW(Dyn) & entry, const char* strings) {
            if (entry.d_tag == tag) texts.emplace_back(strings + entry.d_un.d_val);
        });
        return texts;
    }

  private:
    template <class T>
    T At(std::size_t offset) const {
        T value;
        bytes_.copy(reinterpret_cast<char*>(&value), sizeof value, offset);
        return value;
    }

    // Visits each entry of the section of this type, with the texts that it refers to.
    template <class Entry, class Visit>
    void ForEach(unsigned type, const Visit& visit) const {
        const auto header = At<ElfW(Ehdr)>(0);
        const auto section = [&](std::size_t i) {
            return At<ElfW(Shdr)>(header.e_shoff + i * header.e_shentsize);
        };
        for (std::size_t i = 0; i < header.e_shnum; ++i) {
            const ElfW(Shdr) table = section(i);
            if (table.sh_type != type) continue;
            const char* strings = bytes_.data() + section(table.sh_link).sh_offset;
            for (std::size_t at = 0; at < table.sh_size; at += sizeof(Entry)) {
                visit(At<Entry>(table.sh_offset + at), strings);
            }
        }
    }

    std::string bytes_;
};

std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const Row& row : kFunctions) names.emplace_back(row.name);
    return names;
}

// ---- Calls by name

template <class Function>
Function* Find(const Row& row) {
    return reinterpret_cast<Function*>(dlsym(Module(), row.name));
}

// Calls a function with up to three arguments. The result of a function that returns nothing is the
// list that it fills: a new one for ComputeABSPlacement, the argument for GetPlacement0.
SdaiPrimitiveH Call(const Row& row, const SdaiPrimitiveH& a = {}, const SdaiPrimitiveH& b = {},
                    const SdaiPrimitiveH& c = {}) {
    using Handle = const SdaiPrimitiveH&;
    switch (row.signature) {
        case NoHandle: return Find<SdaiPrimitiveH()>(row)();
        case OneHandle: return Find<SdaiPrimitiveH(Handle)>(row)(a);
        case TwoHandles: return Find<SdaiPrimitiveH(Handle, Handle)>(row)(a, b);
        case TextAndModel:
            return Find<SdaiEntityInstance*(SdaiString, SdaiModel*)>(row)(
                static_cast<const SdaiString&>(a), b.FindEntityInstanceModel());
        case TwoHandlesAndList: {
            auto* list = new SdaiListClassOfSdaiReal(0, 12);
            SdaiPrimitiveH owner = SdaiPrimitiveH::TakeOver(list);
            Find<void(Handle, Handle, SdaiListClassOfSdaiReal*&)>(row)(a, b, list);
            return owner;
        }
        case TextBetweenHandles:
            Find<void(Handle, const SdaiString&, Handle)>(row)(a, b, c);
            return c;
    }
    return {};
}

// A value as in an exchange file; an instance with the name of its schema and its type.
std::string Show(const SdaiPrimitiveH& handle) {
    if (!handle.exists()) return "$";
    if (SdaiEntityInstance* instance = handle) {
        return std::string(instance->FindEntityInstanceModel()->SchemaName()) + "#" +
               std::to_string(instance->GetInstanceNameId()) + "=" +
               std::string(instance->GetInstanceType()->Name());
    }
    std::string text;
    if (const SdaiAggrInstance* members = handle) {
        for (long i = 0; i < members->GetMemberCount(); ++i) {
            text += (i > 0 ? "," : "") + Show(members->GetMember(i));
        }
        return "(" + text + ")";
    }
    const std::string kind(handle.UnderlyingTypeName());
    if (kind == "STRING") {
        exchange::AppendString(text, TextIn(handle));
    } else if (kind == "INTEGER") {
        exchange::AppendInteger(text, IntegerIn(handle));
    } else if (kind == "REAL") {
        exchange::AppendReal(text, RealIn(handle));
    } else if (kind == "LOGICAL") {
        exchange::AppendLogical(text, static_cast<const SdaiLogical&>(handle));
    } else {
        text = kind;
    }
    return text;
}

// The kind of a value; Any if only Any includes it.
orx::Kind KindOf(const SdaiPrimitiveH& handle) {
    if (!handle.exists()) return Unset;
    if (InstanceIn(handle) != nullptr) return Instance;
    const std::string kind(handle.UnderlyingTypeName());
    if (kind == "STRING") return String;
    if (kind == "INTEGER") return Integer;
    if (kind == "REAL") return Real;
    if (kind == "LOGICAL") return Logical;
    if (kind == "AGGREGATE") return Aggregate;
    return Any;
}

// ---- Values of every kind

constexpr char kStepData[] = R"(
    /* An assembly link with the placement of its component, all the way */
    #1=PRODUCT_DEFINITION('root',$,$,$);
    #2=PRODUCT_DEFINITION('leaf',$,$,$);
    #3=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#1,#2,$);
    #4=PRODUCT_DEFINITION_SHAPE('',$,#3);
    #5=CARTESIAN_POINT('',(1.,2.,3.));
    #6=DIRECTION('',(0.,0.,1.));
    #7=DIRECTION('',(1.,0.,0.));
    #8=AXIS2_PLACEMENT_3D('',#5,#6,#7);
    #9=AXIS2_PLACEMENT_3D('',$,$,$);
    #10=SHAPE_REPRESENTATION('',(#8),$);
    #11=SHAPE_REPRESENTATION('',(#9),$);
    #12=PRODUCT_DEFINITION_SHAPE('',$,#1);
    #13=PRODUCT_DEFINITION_SHAPE('',$,#2);
    #14=SHAPE_DEFINITION_REPRESENTATION(#12,#10);
    #15=SHAPE_DEFINITION_REPRESENTATION(#13,#11);
    #16=ITEM_DEFINED_TRANSFORMATION('',$,#8,#9);
    #17=(REPRESENTATION_RELATIONSHIP('',$,#10,#11)
         REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#16)SHAPE_REPRESENTATION_RELATIONSHIP());
    #18=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#17,#4);
    /* The same types with nothing set */
    #21=NEXT_ASSEMBLY_USAGE_OCCURRENCE($,$,$,$,$,$);
    #22=PRODUCT_DEFINITION_SHAPE($,$,$);
    #23=SHAPE_DEFINITION_REPRESENTATION($,$);
    #24=REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION($,$,$,$,$);
    #25=ITEM_DEFINED_TRANSFORMATION($,$,$,$);
    #26=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,$);
    /* and with values of other kinds, themselves among them */
    #31=NEXT_ASSEMBLY_USAGE_OCCURRENCE(1,2,.T.,'text',(#1,#31),5);
    #32=PRODUCT_DEFINITION_SHAPE('',$,#32);
    #33=SHAPE_DEFINITION_REPRESENTATION((1.,2.),'text');
    #34=REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION('',$,#10,#35,#36);
    #35=SHAPE_REPRESENTATION('',(#35,'text',5,(1.,#8)),7);
    #36=ITEM_DEFINED_TRANSFORMATION('',$,'text',#37);
    #37=AXIS2_PLACEMENT_3D('',#6,#38,'text');
    #38=CARTESIAN_POINT('',(1.,'text',.T.));
    #39=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#34,#32);
    /* Dates */
    #41=CALENDAR_DATE(2001,7,3);
    #42=LOCAL_TIME(8,$,$,$);
    #43=DATE_AND_TIME(#41,#42);
    #44=DATE_AND_TIME('text',5);
    #45=DATED_EFFECTIVITY('E',#43,#44);
    /* Configurations and documents */
    #51=CONFIGURATION_ITEM('c','n','S0003ORXS0004CFG1S0002H7',$,$);
    #52=CONFIGURATION_ITEM($,$,5,$,$);
    #53=DOCUMENT_FILE('a b.model','',$,$,'','');
    #54=PROPERTY_DEFINITION('',$,#53);
    #55=PROPERTY_DEFINITION_REPRESENTATION(#54,$);
    #56=EXTERNAL_SOURCE(IDENTIFIER('wheel.model'));
    #57=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('',$,#56,(#53));
    /* A type that the schema lacks */
    #61=A_TYPE_OF_ITS_OWN('text',#1,(1,2),.T.,$,MEASURE(2.5));
)";

constexpr char kDatabaseData[] = R"(
    #1=PART_OBJECT('ROOT','A',1,'t','d',(#3,#13),(#4),(),(#5),$);
    #2=PART_OBJECT($,$,$,$,$,$,$,$,$,$);
    #3=PART_LINK('l',$,#2,$,$,$,$);
    #4=MODEL_OBJECT('Wheel','3D',7,'A','','V5');
    #5=CDM_DOCUMENT('T','N','O','F');
    #6=RANGE_EFFECTIVITY('R',(#3),1,5);
    #7=DATE_EFFECTIVITY('D',$,$,'12312099235959');
    #8=OPTION_EFFECTIVITY('O',$,'option_date','O1',1,2,'01','02');
    #9=CONFIGURATION_ITEM('C','',#1);
    #10=CONFIGURATION_HANDLER('H',#1);
    #11=CDMA_ID(#1,'1A','2B','ENV','TAB');
    #12=CDMA_ID(#2,$,'no number',7,(1));
    #13=PART_LINK(5,$,'text',$,$,$,$);
    #14=CDMA_REVISION_HISTORY((#11));
    #15=PART_OBJECT(1,2.5,'text',.T.,$,'text',5,#1,(1.,2.),$);
    #16=RANGE_EFFECTIVITY(5,'text','text',.T.);
    #17=DATE_EFFECTIVITY(5,#3,5,(1,2));
)";

// Values of every kind, including some that the functions search for, and two models that contain
// them. While this exists, document management knows the revisions in the database model.
class World {
  public:
    World() : step_("AUTOMOTIVE_DESIGN", kStepData), database_("cdma", kDatabaseData) {
        AddTexts();
        AddNumbersAndTruthValues();
        AddAggregates();
        AddSelects();
        Add("a null instance", static_cast<SdaiEntityInstance*>(nullptr));
        Add("a null aggregate", static_cast<SdaiAggrInstance*>(nullptr));
        for (const unsigned long id :
             {1UL,  3UL,  5UL,  8UL,  12UL, 15UL, 16UL, 17UL, 18UL, 21UL, 22UL, 23UL, 24UL,
              25UL, 26UL, 31UL, 33UL, 35UL, 39UL, 43UL, 51UL, 52UL, 53UL, 55UL, 57UL, 61UL}) {
            Add("#" + std::to_string(id), step_[id]);
        }
        for (unsigned long id = 1; id <= 17; ++id) {
            Add("database #" + std::to_string(id), database_[id]);
        }
        KORDMStore::AddFamilies(database_.Model());
    }
    ~World() {
        RemoveValueVersion();
        KORDMStore::RemoveAll();
    }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    const std::vector<std::pair<std::string, SdaiPrimitiveH>>& Values() const { return values_; }

    // Everything that a call could change.
    std::string Content() const {
        std::string content = exchange::ToExchangeText(step_.DataSet()) +
                              exchange::ToExchangeText(database_.DataSet());
        for (const auto& [name, value] : values_) content += name + ": " + Show(value) + "\n";
        return content;
    }

  private:
    void Add(const std::string& name, const SdaiPrimitiveH& value) {
        values_.emplace_back(name, value);
    }

    void AddTexts() {
        Add("nothing", {});
        for (const char* text :
             {"", "text", "a text of some length", "ITEMS", "DEFINITION", "S0002ABI000212S0000",
              "S-001X", "_ORX_R00031.5", "S0012option_rangeS0002O1", "S0003ORXS0000S0010date",
              "12312099235959", "a b.model", "doc.KORShape",
              "X_ORXExchangedRep_12_ORXExchangedRep2_V5", "\xE9\xB1\n"}) {
            Add("'" + std::string(text) + "'", Handle(text));
        }
        Add("a text with a NUL", Handle(std::string_view("a\0b", 3)));
    }

    void AddNumbersAndTruthValues() {
        using Long = std::numeric_limits<long>;
        for (const long value : {0L, 1L, 2L, 7L, -7L, Long::max(), Long::min()}) {
            Add(std::to_string(value), value);
        }
        using Double = std::numeric_limits<double>;
        for (const double value :
             {0.0, -0.0, 1.5, -1e300, Double::quiet_NaN(), Double::infinity()}) {
            Add(std::to_string(value), value);
        }
        Add("TRUE", sdaiLTRUE);
        Add("FALSE", sdaiLFALSE);
        Add("UNKNOWN", SdaiLogical());
        Add("a boolean", sdaiTRUE);
        Add("an enumeration", SdaiPrimitiveH::Enumeration("MADE"));
        Add("a binary", SdaiPrimitiveH::Binary("3A9"));
    }

    void AddAggregates() {
        const auto add = [this](const std::string& name, std::vector<SdaiPrimitiveH> members) {
            auto* aggregate = new SdaiAggrInstance;
            const SdaiPrimitiveH owner = SdaiPrimitiveH::TakeOver(aggregate);
            for (const SdaiPrimitiveH& member : members) aggregate->Append(member);
            Add(name, owner);
        };
        add("()", {});
        add("(1.5)", {1.5_h});
        add("instances", {step_[1], step_[2], database_[1]});
        add("mixed", {"text"_h, 7_h, step_[8], SdaiPrimitiveH(), values_.back().second});
        Add("a list of reals", SdaiPrimitiveH::TakeOver(new SdaiListClassOfSdaiReal(0, 12)));
        Add("coordinates", step_[5].GetAttr("COORDINATES"));
        Add("items", step_[35].GetAttr("ITEMS"));
        Add("links", database_[1].GetAttr("KORASS"));
    }

    void AddSelects() {
        Add("a select of an instance", step_[17].GetAttr("TRANSFORMATION_OPERATOR"));
        Add("a select of a date", step_[45].GetAttr("EFFECTIVITY_START_DATE"));
        Add("a select of a text", SdaiSelectH("text"_h));
        Add("a select of a defined type", SdaiSelectH("LENGTH_MEASURE", 2.5_h));
        Add("a select of an aggregate", SdaiSelectH(values_.back().second));
        Add("a select of nothing", SdaiSelectH());
    }

    ParsedModel step_;
    ParsedModel database_;
    std::vector<std::pair<std::string, SdaiPrimitiveH>> values_;
};

// Calls a function with every value in every argument and returns the results.
std::vector<std::string> CallWithEveryValue(const Row& row, const World& world) {
    using Values = std::vector<std::pair<std::string, SdaiPrimitiveH>>;
    const Values none = {{"", {}}};
    const Values roles = {{"REP_1", "REP_1"_h}, {"REP_2", "REP_2"_h}, {"''", ""_h}};
    const Values* first = row.signature != NoHandle ? &world.Values() : &none;
    const Values* second = row.signature == NoHandle || row.signature == OneHandle ? &none
                           : row.signature == TextBetweenHandles                   ? &roles
                                                                 : &world.Values();
    const Values* third = row.signature == TextBetweenHandles ? &world.Values() : &none;

    std::vector<std::string> results;
    for (const auto& [nameOfA, a] : *first) {
        for (const auto& [nameOfB, b] : *second) {
            for (const auto& [nameOfC, c] : *third) {
                const SdaiPrimitiveH result = Call(row, a, b, c);
                results.push_back(std::string(row.name) + '(' + nameOfA + ", " + nameOfB + ", " +
                                  nameOfC + ") = " + Show(result));
                if (row.result == Nothing || row.result == Any) continue;
                EXPECT_NE(row.result & KindOf(result), 0U) << results.back();
                if (KindOf(result) == Logical) {
                    EXPECT_TRUE(IsTrue(result) || IsFalse(result)) << results.back();
                }
            }
        }
    }
    return results;
}

// Functions that create instances or fill a list passed to them.
bool WritesData(const std::string_view name) {
    return name == "GetStartDate" || name == "GetEndDate" || name == "BuildDatedEff" ||
           name.starts_with("GetPlacement");
}

class EveryFunction : public testing::TestWithParam<Row> {};

INSTANTIATE_TEST_SUITE_P(ExportTable, EveryFunction, testing::ValuesIn(kFunctions),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace

// ---- The table

TEST(ExportTable, DescribesTheFunctions) {
    ASSERT_EQ(orx::kExports.size(), std::size(kFunctions));
    for (std::size_t i = 0; i < std::size(kFunctions); ++i) {
        const Row& expected = kFunctions[i];
        const orx::Export& row = orx::kExports[i];
        EXPECT_EQ(row.name, expected.name);
        EXPECT_EQ(row.result, expected.result) << expected.name;
        EXPECT_EQ(row.unit, expected.unit) << expected.name;
        EXPECT_EQ(row.label, expected.label) << expected.name;
        EXPECT_EQ(row.label.data()[row.label.size()], '\0') << expected.name;
    }
}

TEST(ExportTable, TellsTheArgumentsOfEachFunction) {
    for (std::size_t i = 0; i < std::size(kFunctions); ++i) {
        const Row& expected = kFunctions[i];
        const auto& [first, second, third] = orx::kExports[i].arguments;
        static constexpr std::size_t kCounts[] = {0, 1, 2, 2, 3, 3};
        EXPECT_EQ(orx::kExports[i].ArgumentCount(), kCounts[expected.signature]) << expected.name;
        const bool takesTextAndModel = first == String && second == Model;
        const bool takesList = first != RealList && second != RealList && third == RealList;
        const bool takesTextBetween = third != None && third != RealList && second == String;
        EXPECT_EQ(takesTextAndModel, expected.signature == TextAndModel) << expected.name;
        EXPECT_EQ(takesList, expected.signature == TwoHandlesAndList) << expected.name;
        EXPECT_EQ(takesTextBetween, expected.signature == TextBetweenHandles) << expected.name;
    }
}

TEST(ExportTable, FindsAFunctionByItsExactName) {
    for (const Row& row : kFunctions) {
        ASSERT_NE(orx::FindExport(row.name), nullptr) << row.name;
        EXPECT_EQ(orx::FindExport(row.name)->name, row.name);
    }
    for (const char* name : {"", "getinst", "GetIns", "GetInstance", "GetInst ", "IsEncodeKey"}) {
        EXPECT_EQ(orx::FindExport(name), nullptr) << name;
    }
}

// ---- The module

TEST(Module, ResolvesEveryNameOfTheTable) {
    ASSERT_NE(Module(), nullptr) << dlerror();
    for (const Row& row : kFunctions) {
        void* const function = dlsym(Module(), row.name);
        ASSERT_NE(function, nullptr) << row.name;
        Dl_info info{};
        ASSERT_NE(dladdr(function, &info), 0) << row.name;
        EXPECT_EQ(info.dli_fname, ModulePath()) << row.name;
        EXPECT_STREQ(info.dli_sname, row.name);
    }
    EXPECT_EQ(dlsym(Module(), "IsEncodedKey"), reinterpret_cast<void*>(&IsEncodedKey));
}

TEST(Module, ExportsTheNamesOfTheTableAndNothingElse) {
    EXPECT_THAT(ElfFile(ModulePath()).ExportedNames(), UnorderedElementsAreArray(Names()));
}

TEST(Module, HasANameWithAVersion) {
    const ElfFile module(ModulePath());
    ASSERT_EQ(module.DynamicTexts(DT_SONAME).size(), 1U);
    const std::string name = module.DynamicTexts(DT_SONAME).front();
    EXPECT_THAT(name, MatchesRegex("libORXExUtilities\\.so\\.[0-9]+\\.[0-9]+"));
    EXPECT_EQ(dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD), Module());
}

// ---- Each function, by name

TEST_P(EveryFunction, GivesItsDefaultWhenItsArgumentsAreMissing) {
    // GetPlacement0 gets a list, to verify that it does not change.
    const auto call = [] {
        return Call(GetParam(), {}, {}, SdaiPrimitiveH::TakeOver(new SdaiAggrInstance));
    };
    const SdaiPrimitiveH untraced = call();
    const TraceCapture trace;
    const SdaiPrimitiveH traced = call();
    for (const SdaiPrimitiveH& result : {untraced, traced}) {
        if (GetParam().byDefault != nullptr) {
            EXPECT_EQ(Show(result), GetParam().byDefault);
        }
        if (GetParam().result != Nothing && GetParam().result != Any) {
            EXPECT_NE(GetParam().result & KindOf(result), 0U);
        }
    }
    if (GetParam().byDefault == nullptr) {
        EXPECT_NE(Show(untraced), Show(traced));
    }
}

TEST_P(EveryFunction, OpensAndClosesItsScope) {
    const std::string label = GetParam().label;
    TraceCapture trace;
    Call(GetParam());
    const std::vector<std::string> lines = trace.Lines();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines.front(), label + " {");
    EXPECT_EQ(lines.back(), label + " }");
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
        EXPECT_EQ(lines[i].substr(0, 3), "   ") << lines[i];
    }
}

TEST_P(EveryFunction, TakesEveryKindOfValue) {
    // Twice, with the trace off and on, in separate worlds: so the functions number new instances
    // alike, and the state of IsVersion is cleared.
    std::vector<std::string> untraced;
    {
        const World world;
        const std::string before = world.Content();
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        untraced = CallWithEveryValue(GetParam(), world);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        if (!WritesData(GetParam().name)) {
            EXPECT_EQ(world.Content(), before);
        }
    }
    const World world;
    TraceCapture trace;
    const std::vector<std::string> traced = CallWithEveryValue(GetParam(), world);
    if (GetParam().byDefault != nullptr) {
        ASSERT_EQ(traced.size(), untraced.size());
        for (std::size_t i = 0; i < traced.size(); ++i) ASSERT_EQ(traced[i], untraced[i]);
    }
    const std::vector<std::string> lines = trace.Lines();
    ASSERT_THAT(lines, Not(IsEmpty()));
    EXPECT_EQ(lines.front(), GetParam().label + std::string(" {"));
    EXPECT_EQ(lines.back(), GetParam().label + std::string(" }"));
}
