// Models for programs that embed the platform.

#include "ExchangeModels.h"

#include <filesystem>
#include <optional>

#include "Exchange.h"

namespace exchange {

namespace {

using Lines = std::vector<std::string>;

void Tell(const Messages& messages, Lines& lines) {
    for (const auto& kind : {messages.Errors(), messages.Warnings()}) {
        for (const Message& message : kind) lines.push_back(message.ToString());
    }
}

// The built-in schemas and the caller's; no value if the caller's cannot be read.
std::optional<SchemaCatalog> CatalogWith(std::string_view express, Lines& lines) {
    SchemaCatalog catalog;
    Messages messages;
    if (!express.empty()) {
        for (SchemaPtr& schema : ParseSchemas(express, "<schema>", messages)) {
            catalog.Add(std::move(schema));
        }
    }
    Tell(messages, lines);
    if (messages.ErrorCount() != 0) return std::nullopt;
    return catalog;
}

// Whether the file has only a single unnamed section around its instances.
bool IsPlain(const Structure& structure) {
    return structure.anchors.empty() && structure.references.empty() && structure.scopes.empty() &&
           structure.sections.size() <= 1 &&
           (structure.sections.empty() || structure.sections.front().parameters.empty());
}

}  // namespace

std::unique_ptr<SdaiModel> NewModel(std::string_view schema, Lines& messages,
                                    std::string_view express) {
    const std::optional<SchemaCatalog> catalog = CatalogWith(express, messages);
    if (!catalog.has_value()) return nullptr;
    SchemaPtr found = catalog->Find(schema);
    if (found == nullptr) {
        messages.push_back("unknown schema '" + std::string(schema) + "'" +
                           kor::DidYouMean(schema, catalog->Names()));
        return nullptr;
    }
    return std::make_unique<kor::Model>(std::move(found));
}

std::unique_ptr<SdaiModel> ReadModel(const std::string& path, Lines& messages,
                                     std::string_view express) {
    const std::optional<SchemaCatalog> catalog = CatalogWith(express, messages);
    if (!catalog.has_value()) return nullptr;
    Messages ofFile;
    DataSet dataSet = ReadDataSet(path, *catalog, {}, ofFile);
    if (dataSet.model != nullptr && !IsPlain(dataSet.structure)) {
        ofFile.AddWarning({path, 0, 0,
                           "anchors, references, names of data sections and scopes are no part of "
                           "the model and are not written with it"});
    }
    Tell(ofFile, messages);
    return std::move(dataSet.model);
}

bool WriteModel(const SdaiModel& model, const std::string& path, Lines& messages) {
    const kor::Model& written = kor::Model::Of(model);
    const std::string name = std::filesystem::path(path).filename().string();
    Messages ofFile;
    const bool done = WriteDataSet(NewHeader(written.GetSchema(), name), {}, written, path, ofFile);
    Tell(ofFile, messages);
    return done;
}

}  // namespace exchange
