// Models for a program that embeds the stand-alone platform, in databases: loaded from SQLite
// (`sqlite:FILE`) or PostgreSQL (a `postgresql://` URI as libpq takes it) and saved there. It needs
// the contract headers alone.
//
// Loading is one consistent snapshot. Saving is one transaction, all of it or nothing; where the
// model was loaded, or saved before, it writes what has changed since alone, and refuses when
// another has changed the same rows meanwhile. Anywhere else the model takes the place of what is
// there.
//
// Problems are reported as messages, each with its place (a file's line and column, or a table, the
// key of the row and the column). They never contain a password. Only running out of memory throws
// (std::bad_alloc).

#ifndef DATABASEMODELS_H
#define DATABASEMODELS_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "SdaiModel.h"

namespace relational {

// A model, and what is known of the places that it was loaded from and saved to. One thread at a
// time may use it.
class StoredModel {
  public:
    // Loads a database, or reads an exchange file. Null, with messages, when that cannot be done: a
    // data set is read as a whole or not at all. `express`: schemas of the caller's own.
    static std::unique_ptr<StoredModel> Load(const std::string& name,
                                             std::vector<std::string>& messages,
                                             std::string_view express = {});
    // An empty model of a schema, to be saved somewhere.
    static std::unique_ptr<StoredModel> Make(std::string_view schema,
                                             std::vector<std::string>& messages,
                                             std::string_view express = {});
    ~StoredModel();
    StoredModel(const StoredModel&) = delete;
    StoredModel& operator=(const StoredModel&) = delete;

    // Belongs to this object.
    SdaiModel& Model();

    // Saves to a database, or writes an exchange file. On failure, with messages, what is there is
    // as it was.
    bool Save(const std::string& name, std::vector<std::string>& messages);

  private:
    struct Stored;
    explicit StoredModel(std::unique_ptr<Stored> stored);

    std::unique_ptr<Stored> stored_;
};

}  // namespace relational

#endif
