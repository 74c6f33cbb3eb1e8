// Models for programs that embed the platform.

#include "ExchangeModels.h"

#include <filesystem>
#include <optional>
#include <utility>

#include "Exchange.h"
#include "services/Suggestions.h"

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

namespace {

// Reads with read(catalog, options, messages), which returns the data set that `name` stands for.
template <class Read>
std::unique_ptr<SdaiModel> ReadWith(const ModelOptions& options, const std::string& name,
                                    Lines& messages, Read read) {
    const std::optional<SchemaCatalog> catalog = CatalogWith(options.express, messages);
    if (!catalog.has_value()) return nullptr;
    ReadOptions reading;
    reading.lenient = options.lenient;
    reading.progress = options.progress;
    Messages ofFile;
    DataSet dataSet = read(*catalog, reading, ofFile);
    if (dataSet.model != nullptr && !IsPlain(dataSet.structure)) {
        ofFile.AddWarning({name, 0, 0,
                           "anchors, references, names of data sections and scopes are no part of "
                           "the model and are not written with it"});
    }
    Tell(ofFile, messages);
    return std::move(dataSet.model);
}

}  // namespace

std::unique_ptr<SdaiModel> ReadModel(const std::string& path, Lines& messages,
                                     std::string_view express) {
    return ReadModel(path, messages, ModelOptions{.express = express});
}

std::unique_ptr<SdaiModel> ReadModel(const std::string& path, Lines& messages,
                                     const ModelOptions& options) {
    return ReadWith(options, path, messages,
                    [&](const SchemaCatalog& catalog, const ReadOptions& reading, Messages& told) {
                        return ReadDataSet(path, catalog, reading, told);
                    });
}

std::unique_ptr<SdaiModel> ReadText(std::string_view text, Lines& messages,
                                    const ModelOptions& options, const std::string& name) {
    return ReadWith(options, name, messages,
                    [&](const SchemaCatalog& catalog, const ReadOptions& reading, Messages& told) {
                        return ParseDataSet(text, name, catalog, reading, told);
                    });
}

std::string WriteText(const SdaiModel& model, Lines& messages, const std::string& name) {
    // The data set borrows the model, which is only read.
    struct Borrowed {
        ~Borrowed() { static_cast<void>(dataSet.model.release()); }
        DataSet dataSet;
    } borrowed;
    kor::Model& written = const_cast<kor::Model&>(kor::Model::Of(model));
    borrowed.dataSet.header = NewHeader(written.GetSchema(), name);
    borrowed.dataSet.model.reset(&written);
    std::string problem;
    std::string text = ToExchangeText(borrowed.dataSet, &problem);
    if (problem.empty()) return text;
    messages.push_back(problem);
    return "";
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
