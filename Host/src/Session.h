// The data sets that a script works on.

#ifndef HOST_SESSION_H
#define HOST_SESSION_H

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

  private:
    std::vector<NamedModel> models_;
};

}  // namespace host

#endif
