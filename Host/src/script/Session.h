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
#include "services/Suggestions.h"

namespace host {

// A data set and its name in scripts.
struct NamedModel {
    std::string name;
    std::string file;  // empty for a new one
    exchange::DataSet dataSet;
    bool changed = false;          // an attribute was changed since the model was read or saved
    std::uint64_t savedCount = 0;  // the number of its instances at that time

    kor::Model& Model() const { return *dataSet.model; }
};

// The names of the entity types of a model's schema, and of the model's undeclared types.
std::vector<std::string> EntityNames(const kor::Model& model);

// Suggestions for unknown names in statements and queries. Each is looked for among all known
// names, so only the first errors get one: nobody reads more, and a long script with many would
// take long.
class Suggestions {
  public:
    static constexpr int kMost = 20;

    // "; did you mean 'NAME'?" with the nearest of the names that known() gives, or nothing.
    template <class Known>
    std::string For(std::string_view name, Known known) {
        if (sought_ == kMost) return {};
        ++sought_;
        return kor::DidYouMean(name, known());
    }

    // Begins to count again.
    void Renew() { sought_ = 0; }

  private:
    int sought_ = 0;
};

// The models, in the order of the command line.
class Session {
  public:
    exchange::SchemaCatalog schemas;
    Suggestions suggestions;

    // Adds a data set, and its revision families to document management.
    void Add(NamedModel model);

    const std::vector<NamedModel>& Models() const { return models_; }
    std::vector<std::string> ModelNames() const;

    // "; known: a, b", for messages.
    std::string KnownModels() const;

    // Null if there is none of that name.
    const NamedModel* Find(std::string_view name) const;
    const NamedModel* Holding(const SdaiModel* model) const;

    // Records changes and saves. A change of an unknown model counts for every model.
    void NoteChange(const SdaiModel* model);
    void NoteSaved(std::string_view name);
    // Whether it was changed since it was read, created or saved.
    static bool IsUnsaved(const NamedModel& model) {
        return model.changed || model.Model().InstanceCount() != model.savedCount;
    }

  private:
    std::vector<NamedModel> models_;
};

}  // namespace host

#endif
