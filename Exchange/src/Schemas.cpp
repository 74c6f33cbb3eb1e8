// The catalogue of schemas, and the schemas that are built in.

#include <mutex>
#include <string>

#include "Exchange.h"
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

}  // namespace exchange
