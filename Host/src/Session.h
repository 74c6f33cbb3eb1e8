// The data sets that a script works on.

#ifndef HOST_SESSION_H
#define HOST_SESSION_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Exchange.h"

namespace host {

// A data set and the name under which scripts know it.
struct NamedModel {
    std::string name;
    std::string file;  // empty for a new one
    exchange::DataSet dataSet;
    bool changed = false;          // since it was read or saved, an attribute of an instance
    std::uint64_t savedCount = 0;  // its instances at that time

    kor::Model& Model() const { return *dataSet.model; }
};

// The names of the entity types of a model's schema, and of those that it holds without it.
std::vector<std::string> EntityNames(const kor::Model& model);

// The models, in the order of the command line.
class Session {
  public:
    exchange::SchemaCatalog schemas;

    // Adds a data set; its revision families go into document management.
    void Add(NamedModel model);

    const std::vector<NamedModel>& Models() const { return models_; }
    std::vector<std::string> ModelNames() const;

    // "; known: a, b", for messages.
    std::string KnownModels() const;

    // Null when there is none of that name.
    const NamedModel* Find(std::string_view name) const;
    const NamedModel* Holding(const SdaiModel* model) const;

    // What a session changes and saves. A change of a model that is not known is one of each.
    void NoteChange(const SdaiModel* model);
    void NoteSaved(std::string_view name);
    // Whether it has been changed since it was read, made or saved.
    static bool IsUnsaved(const NamedModel& model) {
        return model.changed || model.Model().InstanceCount() != model.savedCount;
    }

  private:
    std::vector<NamedModel> models_;
};

}  // namespace host

#endif
