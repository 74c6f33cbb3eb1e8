// Models in databases, for programs that embed the platform.

#include "DatabaseModels.h"

#include <utility>

#include "DataSets.h"
#include "services/Suggestions.h"

namespace relational {

namespace {

using Lines = std::vector<std::string>;

void Tell(const exchange::Messages& messages, Lines& lines) {
    for (const auto& kind : {messages.Errors(), messages.Warnings()}) {
        for (const exchange::Message& message : kind) lines.push_back(message.ToString());
    }
}

// The built-in schemas and the caller's.
exchange::SchemaCatalog CatalogWith(std::string_view express, exchange::Messages& messages) {
    exchange::SchemaCatalog catalog;
    if (express.empty()) return catalog;
    for (exchange::SchemaPtr& schema : exchange::ParseSchemas(express, "<schema>", messages)) {
        catalog.Add(std::move(schema));
    }
    return catalog;
}

}  // namespace

struct StoredModel::Stored {
    exchange::DataSet dataSet;
};

StoredModel::StoredModel(std::unique_ptr<Stored> stored) : stored_(std::move(stored)) {}
StoredModel::~StoredModel() = default;

SdaiModel& StoredModel::Model() { return *stored_->dataSet.model; }

std::unique_ptr<StoredModel> StoredModel::Load(const std::string& name, Lines& messages,
                                               std::string_view express) {
    exchange::Messages told;
    exchange::DataSet dataSet;
    const exchange::SchemaCatalog catalog = CatalogWith(express, told);
    if (told.ErrorCount() == 0) dataSet = Open(name, catalog, {}, told);
    Tell(told, messages);
    if (dataSet.model == nullptr) return nullptr;
    return std::unique_ptr<StoredModel>(
        new StoredModel(std::make_unique<Stored>(Stored{std::move(dataSet)})));
}

std::unique_ptr<StoredModel> StoredModel::Make(std::string_view schema, Lines& messages,
                                               std::string_view express) {
    exchange::Messages told;
    const exchange::SchemaCatalog catalog = CatalogWith(express, told);
    const exchange::SchemaPtr found = catalog.Find(schema);
    if (found == nullptr && told.ErrorCount() == 0) {
        told.AddError({"<schema>", 0, 0,
                       "unknown schema '" + std::string(schema) + "'" +
                           kor::DidYouMean(schema, catalog.Names())});
    }
    Tell(told, messages);
    if (told.ErrorCount() != 0) return nullptr;
    return std::unique_ptr<StoredModel>(
        new StoredModel(std::make_unique<Stored>(Stored{exchange::NewDataSet(found, "model")})));
}

bool StoredModel::Save(const std::string& name, Lines& messages) {
    exchange::Messages told;
    const bool done = relational::Save(stored_->dataSet, name, told);
    Tell(told, messages);
    return done;
}

}  // namespace relational
