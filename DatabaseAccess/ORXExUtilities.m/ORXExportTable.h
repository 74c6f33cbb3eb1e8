// The export table: every mapping function with its arguments, result, source unit and trace label.
// An engine uses it to bind its rules, the module takes its labels from it, and the list of
// exported symbols is generated from it.

#ifndef ORXEXPORTTABLE_H
#define ORXEXPORTTABLE_H

#include <array>
#include <cstddef>
#include <string_view>

namespace orx {

// Kinds of values. An argument's kinds are those that the function expects; a value of another kind
// is never rejected, but read as empty.
enum Kind : unsigned {
    None = 0,
    String = 1U << 0,
    Integer = 1U << 1,
    Real = 1U << 2,
    Logical = 1U << 3,
    Instance = 1U << 4,
    Aggregate = 1U << 5,
    Select = 1U << 6,
    Unset = 1U << 7,
    Any = (1U << 8) - 1,
    RealList = 1U << 8,  // an SdaiListClassOfSdaiReal, by reference
    Model = 1U << 9,     // an SdaiModel
    Nothing = 1U << 10,  // the function returns nothing
};

constexpr Kind operator|(Kind a, Kind b) {
    return static_cast<Kind>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

struct Export {
    std::string_view name;
    std::array<Kind, 3> arguments;  // None after the last
    Kind result;                    // all kinds that the function may return
    std::string_view unit;
    std::string_view label;  // NUL-terminated

    constexpr std::size_t ArgumentCount() const {
        std::size_t count = 0;
        while (count < arguments.size() && arguments[count] != None) ++count;
        return count;
    }
};

// Every function takes one handle per argument, by constant reference, and returns a handle, except
//   SdaiEntityInstance* BuildDatedEff(SdaiString, SdaiModel*)
//   void ComputeABSPlacement(const SdaiPrimitiveH&, const SdaiPrimitiveH&,
//                            SdaiListClassOfSdaiReal*&)
//   void GetPlacement0(const SdaiPrimitiveH&, const SdaiString&, const SdaiPrimitiveH&)
//   SdaiPrimitiveH RemoveValueVersion()
// One row per line.
// clang-format off
inline constexpr std::array kExports{
    Export{"IsEncodedKey",             {String},                       Logical,                         "ConcatAtb",           "SdaiPrimitiveH IsEncodeKey ->"},
    Export{"DecodeKey",                {String, Integer},              String | Integer | Real | Unset, "ConcatAtb",           "SdaiPrimitiveH DecodeKey ->"},
    Export{"ConcatModelAtb",           {Instance},                     String,                          "ConcatAtb",           "SdaiPrimitiveH ConcatModelAtb ->"},
    Export{"ConcatDocAtb",             {Instance},                     String,                          "ConcatAtb",           "SdaiPrimitiveH ConcatDocAtb ->"},
    Export{"ConcatPartAtb",            {Instance},                     String,                          "ConcatAtb",           "SdaiPrimitiveH ConcatPartAtb ->"},
    Export{"IsPartInCfgitm",           {Instance, Instance},           Logical,                         "ConfigurationExport", "SdaiPrimitiveH IsPartInCfgitm ->"},
    Export{"IsRangeOrDateEffectivity", {Instance},                     Logical,                         "ConfigurationExport", "SdaiPrimitiveH IsRangeOrDateEffectivity ->"},
    Export{"GetIDEff",                 {Instance},                     String,                          "ConfigurationExport", "SdaiPrimitiveH GetIDEff ->"},
    Export{"IsRangeType",              {Instance},                     Logical,                         "ConfigurationExport", "SdaiPrimitiveH IsRangeType ->"},
    Export{"GetRangeValue",            {Instance, Integer},            String,                          "ConfigurationExport", "SdaiPrimitiveH GetRangeValue ->"},
    Export{"IsInfiniteRank",           {Instance},                     Logical,                         "ConfigurationExport", "SdaiPrimitiveH IsInfiniteRank ->"},
    Export{"IsDateType",               {Instance},                     Logical,                         "ConfigurationExport", "SdaiPrimitiveH IsDateType ->"},
    Export{"GetStartDate",             {Instance, Instance},           Instance | Unset,                "ConfigurationExport", "SdaiPrimitiveH GetStartDate ->"},
    Export{"IsInfiniteDate",           {Instance},                     Logical,                         "ConfigurationExport", "SdaiPrimitiveH IsInfiniteDate ->"},
    Export{"GetEndDate",               {Instance, Instance},           Instance | Unset,                "ConfigurationExport", "SdaiPrimitiveH GetEndDate ->"},
    Export{"BuildDatedEff",            {String, Model},                Instance | Unset,                "ConfigurationExport", "SdaiPrimitiveH BuildDatedEff ->"},
    Export{"IsPartConfigurated",       {Instance},                     Logical,                         "ConfigurationExport", "SdaiPrimitiveH IsPartConfigurated ->"},
    Export{"IsUsedByPart",             {Instance, Instance},           Logical,                         "ConfigurationExport", "SdaiPrimitiveH IsUsedByPart ->"},
    Export{"ORXIdEff",                 {Instance, Instance},           String,                          "ConfigurationExport", "SdaiPrimitiveH ORXIdEff ->"},
    Export{"HasAORXValue",             {Instance},                     Logical,                         "ConfigurationExport", "SdaiPrimitiveH HasAORXValue ->"},
    Export{"ExtractCFGType",           {String, Integer},              Logical,                         "ConfigurationExport", "SdaiPrimitiveH ExtractCFGType ->"},
    Export{"ORXIdCfg",                 {Instance},                     String,                          "ConfigurationExport", "SdaiPrimitiveH ORXIdCfg ->"},
    Export{"ConcatEffAtb",             {Instance},                     String,                          "ConfigurationExport", "SdaiPrimitiveH ConcatEffAtb ->"},
    Export{"GetValue",                 {String},                       Integer,                         "ConfigurationImport", "SdaiPrimitiveH GetValue ->"},
    Export{"GetDate",                  {Select},                       String,                          "ConfigurationImport", "SdaiPrimitiveH GetDate ->"},
    Export{"ExtractEFFType",           {String, Integer},              Logical,                         "ConfigurationImport", "SdaiPrimitiveH ExtractEFFType ->"},
    Export{"IsAORXCfg",                {Instance},                     Logical,                         "ConfigurationImport", "SdaiPrimitiveH IsAORXCfg ->"},
    Export{"DecodeEFF",                {String, Integer},              String,                          "ConfigurationImport", "SdaiPrimitiveH DecodeEFF ->"},
    Export{"GetExternalName",          {Instance, Instance},           String,                          "GetExternalName",     "SdaiPrimitiveH GetExternalName ->"},
    Export{"GetInst",                  {Instance, String},             Any,                             "GetInst",             "SdaiPrimitiveH GetInst ->"},
    Export{"GetItem",                  {Integer, Select},              Any,                             "GetItem",             "SdaiPrimitiveH GetItem ->"},
    Export{"GetMemberCount",           {Aggregate},                    Integer,                         "GetMemberCount",      "SdaiPrimitiveH GetMemberCount ->"},
    Export{"ComputeABSPlacement",      {Instance, Instance, RealList}, Nothing,                         "GetPlacement",        "void ComputeABSPlacement ->"},
    Export{"GetPlacement0",            {Instance, String, Aggregate},  Nothing,                         "GetPlacement",        "void GetPlacement0 ->"},
    Export{"GetPlacement1",            {Instance, Aggregate},          String,                          "GetPlacement",        "SdaiPrimitiveH GetPlacement1 ->"},
    Export{"GetPlacement2",            {Instance, Aggregate},          String,                          "GetPlacement",        "SdaiPrimitiveH GetPlacement2 ->"},
    Export{"Minus",                    {Real},                         Real,                            "GetPlacement",        "SdaiPrimitiveH Minus ->"},
    Export{"GetAbsPlacement",          {Instance},                     Aggregate,                       "GetPlacement",        "SdaiPrimitiveH GetAbsPlacement->"},
    Export{"GetRepFromProperty",       {Instance},                     Instance | Integer | Unset,      "GetRepFromProperty",  "SdaiPrimitiveH GetRepFromProperty->"},
    Export{"GetUniqId",                {Any},                          String,                          "GetUniqId",           "SdaiPrimitiveH GetUniqId ->"},
    Export{"IsAnAssembly",             {Instance},                     Logical,                         "IsAnAssembly",        "SdaiPrimitiveH IsAnAssembly ->"},
    Export{"IsFree",                   {Instance, String},             Logical,                         "IsFree",              "SdaiPrimitiveH IsFree ->"},
    Export{"PRDDFN_IsIn",              {Instance, Instance},           Logical,                         "IsIn",                "SdaiPrimitiveH PRDDFN_IsIn ->"},
    Export{"IsInAssembly",             {Instance, Instance},           Logical,                         "IsInAssembly",        "SdaiPrimitiveH IsInAssembly ->"},
    Export{"IsModelDocLinked",         {Instance},                     Logical,                         "IsModelDocLinked",    "SdaiPrimitiveH IsModelDocLinked ->"},
    Export{"IsSame0",                  {Instance, Instance},           Logical,                         "IsSame",              "SdaiPrimitiveH IsSame0->"},
    Export{"IsSamePart",               {Instance, Instance},           Logical,                         "IsSame",              "SdaiPrimitiveH IsSamePart->"},
    Export{"IsSameRelating",           {Instance, Instance},           Logical,                         "IsSame",              "SdaiPrimitiveH IsSameRelating->"},
    Export{"IsSameRelated",            {Instance, Instance},           Logical,                         "IsSame",              "SdaiPrimitiveH IsSameRelated->"},
    Export{"IsSameNAUO",               {Instance, Instance},           Logical,                         "IsSame",              "SdaiPrimitiveH IsSameNAUO->"},
    Export{"IsSameShapeRep1",          {Instance, Instance},           Logical,                         "IsSame",              "IsSameShapeRep1->"},
    Export{"IsSameIDT",                {Instance, Instance},           Logical,                         "IsSame",              "IsSameIDT->"},
    Export{"IsSameDocVersion",         {Instance, Instance},           Logical,                         "IsSameDocVersion",    "SdaiPrimitiveH IsSameDocVersion ->"},
    Export{"IsaNARVOModel",            {String},                       Logical,                         "IsaNARVOModel",       "SdaiPrimitiveH IsaNARVOModel ->"},
    Export{"IsaNARVORepProperty",      {Instance},                     Logical,                         "IsaNARVOModel",       "SdaiPrimitiveH IsaNARVORepProperty ->"},
    Export{"IsaNARVOV5Doc",            {String},                       Logical,                         "IsaNARVOV5Doc",       "SdaiPrimitiveH IsaNARVOV5Doc ->"},
    Export{"GetNARVOV5Ext",            {String},                       String,                          "IsaNARVOV5Doc",       "SdaiPrimitiveH GetNARVOV5Ext ->"},
    Export{"QuantifyRef",              {Instance, Instance},           Real,                            "QuantifyRef",         "SdaiPrimitiveH QuantifyRef ->"},
    Export{"ReadMandatory",            {String, String},               String,                          "ReadMandatory",       "SdaiPrimitiveH ReadMandatory->"},
    Export{"ReadPartVersion",          {String},                       String,                          "ReadPartVersion",     "SdaiPrimitiveH ReadPartVersion ->"},
    Export{"EncodeNARVOV5Doc",         {Instance},                     String,                          "V5Document",          "SdaiPrimitiveH EncodeNARVOV5Doc->"},
    Export{"IsEncodedNARVOV5",         {String},                       Logical,                         "V5Document",          "SdaiPrimitiveH IsEncodedNARVOV5 ->"},
    Export{"DecodeNARVOV5",            {String, Integer},              String | Integer | Real | Unset, "V5Document",          "SdaiPrimitiveH DecodeNARVOV5 ->"},
    Export{"ORXTrunc",                 {String, Integer},              String,                          "ORXTrunc",            "SdaiPrimitiveH ORXTrunc ->"},
    Export{"ORX_GetDocName",           {String, Integer},              String,                          "ORX_GetDocName",      "SdaiPrimitiveH ORX_GetDocName ->"},
    Export{"ORX_GetModelId_Exp",       {Instance},                     String,                          "ORX_GetModelId",      "SdaiPrimitiveH ORX_GetModelId_Exp ->"},
    Export{"ORX_GetModelId_Imp1",      {String},                       String,                          "ORX_GetModelId",      "SdaiPrimitiveH ORX_GetModelId_Imp1 ->"},
    Export{"ORX_GetModelId_Imp2",      {String},                       Integer,                         "ORX_GetModelId",      "SdaiPrimitiveH ORX_GetModelId_Imp2 ->"},
    Export{"ORX_GetModelId_Imp3",      {String},                       String,                          "ORX_GetModelId",      "SdaiPrimitiveH ORX_GetModelId_Imp3 ->"},
    Export{"ORX_GetModelName",         {String, Integer},              String,                          "ORX_GetModelName",    "SdaiPrimitiveH ORX_GetModelName ->"},
    Export{"IsNewer",                  {Instance, Instance},           Logical,                         "Version",             "SdaiPrimitiveH IsNewer ->"},
    Export{"IsVersion",                {Instance, Integer},            Logical | Instance | Unset,      "Version",             "SdaiPrimitiveH IsVersion ->"},
    Export{"RemoveValueVersion",       {},                             Logical,                         "Version",             "SdaiPrimitiveH RemoveValueVersion ->"},
};
// clang-format on

static_assert(kExports.size() == 73);

// Returns the row of a function, or null if there is no such function.
constexpr const Export* FindExport(std::string_view name) {
    for (const Export& row : kExports) {
        if (row.name == name) return &row;
    }
    return nullptr;
}

}  // namespace orx

#endif
