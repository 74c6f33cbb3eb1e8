// The catalogue of schemas, and the schemas that are built in.

#include <algorithm>
#include <array>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Exchange.h"
#include "Quoted.h"
#include "SchemaTexts.h"

namespace exchange {

SchemaPtr SchemaCatalog::Find(std::string_view name) const {
    const std::string folded = kor::Folded(name);
    for (const SchemaPtr& schema : added_) {
        if (kor::MatchesFolded(schema->Name().View(), folded)) return schema;
    }
    return BuiltInSchema(name);
}

std::vector<std::string> SchemaCatalog::Names() const {
    std::vector<std::string> names = BuiltInSchemaNames();
    for (const SchemaPtr& schema : added_) names.emplace_back(schema->Name().View());
    return names;
}

namespace {

// A built-in schema and the texts that its declarations come from.
struct BuiltIn {
    const char* name;
    std::vector<const char*> texts;
};

const std::vector<BuiltIn>& BuiltIns() {
    static const std::vector<BuiltIn> kBuiltIns{
        {"CONFIG_CONTROL_DESIGN", {k_resources, k_config_control_design, k_named_area_units}},
        {"AUTOMOTIVE_DESIGN", {k_resources, k_later_editions, k_derived_area_units}},
        {"PDM_SCHEMA", {k_resources, k_later_editions, k_named_area_units}},
        {"AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF",
         {k_resources, k_later_editions, k_derived_area_units}},
        {"AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF",
         {k_resources, k_later_editions, k_derived_area_units}},
        {"cdma", {k_cdma}},
    };
    return kBuiltIns;
}

// The resource schemas of product structure in their latest edition.
constexpr const char* kLatest = "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF";

// Schemas of other application protocols of ISO 10303 that are not named by their number.
constexpr std::array<std::string_view, 14> kOtherProtocols{
    "ASSOCIATIVE_DRAUGHTING",        "BUILDING_DESIGN_SCHEMA",
    "DIMENSIONAL_INSPECTION_SCHEMA", "ELECTROTECHNICAL_DESIGN",
    "EXPLICIT_DRAUGHTING",           "FEATURE_BASED_PROCESS_PLANNING",
    "INTEGRATED_CNC_SCHEMA",         "MODEL_BASED_INTEGRATED_MANUFACTURING_SCHEMA",
    "PLANT_SPATIAL_CONFIGURATION",   "SHIP_ARRANGEMENT_SCHEMA",
    "SHIP_MOULDED_FORM_SCHEMA",      "SHIP_STRUCTURES_SCHEMA",
    "STRUCTURAL_ANALYSIS_DESIGN",    "TECHNICAL_DATA_PACKAGING",
};

// Whether a schema, by its name in upper case, is that of an application protocol: AP209_..., or
// the long form of a modular one.
bool IsOfProtocol(std::string_view folded) {
    const bool isNumbered = folded.starts_with("AP") && folded.size() > 5 &&
                            std::all_of(folded.begin() + 2, folded.begin() + 5,
                                        [](char c) { return c >= '0' && c <= '9'; });
    return isNumbered || folded.ends_with("_MIM_LF") ||
           std::find(kOtherProtocols.begin(), kOtherProtocols.end(), folded) !=
               kOtherProtocols.end();
}

std::string TextOf(const BuiltIn& schema) {
    std::string text = std::string("SCHEMA ") + schema.name + ";\n";
    for (const char* part : schema.texts) text += part;
    return text += "END_SCHEMA;\n";
}

SchemaPtr Parse(const BuiltIn& schema) {
    Messages messages;
    const std::vector<SchemaPtr> schemas = ParseSchemas(TextOf(schema), schema.name, messages);
    return schemas.empty() ? nullptr : schemas.front();
}

}  // namespace

std::vector<std::string> BuiltInSchemaNames() {
    std::vector<std::string> names;
    for (const BuiltIn& schema : BuiltIns()) names.emplace_back(schema.name);
    return names;
}

std::string BuiltInSchemaText(std::string_view name) {
    const std::string folded = kor::Folded(name);
    for (const BuiltIn& schema : BuiltIns()) {
        if (kor::MatchesFolded(schema.name, folded)) return TextOf(schema);
    }
    return {};
}

SchemaPtr BuiltInSchema(std::string_view name) {
    // Each is read once, on first use.
    static std::mutex mutex;
    static std::vector<SchemaPtr> parsed(BuiltIns().size());
    const std::lock_guard lock(mutex);
    const std::string folded = kor::Folded(name);
    for (std::size_t i = 0; i < parsed.size(); ++i) {
        const BuiltIn& schema = BuiltIns()[i];
        if (!kor::MatchesFolded(schema.name, folded)) continue;
        if (parsed[i] == nullptr) parsed[i] = Parse(schema);
        return parsed[i];
    }
    return nullptr;
}

SchemaCatalog::ForFile SchemaCatalog::FindForFile(std::string_view name) const {
    if (SchemaPtr named = Find(name)) return {std::move(named), ""};
    const std::string folded = kor::Folded(name);
    for (const BuiltIn& schema : BuiltIns()) {
        if (folded.starts_with(kor::Folded(schema.name))) return {BuiltInSchema(schema.name), ""};
    }
    if (!IsOfProtocol(folded)) return {};
    return {BuiltInSchema(kLatest),
            "schema " + Quoted(name) + " is not built in: read with what it shares with " +
                kLatest + " (give its EXPRESS file with --schema for all of it)"};
}

}  // namespace exchange
