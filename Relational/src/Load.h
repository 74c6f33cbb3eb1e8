// Loading a data set from a database.

#ifndef RELATIONAL_LOAD_H
#define RELATIONAL_LOAD_H

#include <string>

#include "Database.h"
#include "Exchange.h"

namespace relational {

// `name` is for messages, `stem` for the header of a data set whose database has none.
exchange::DataSet Load(Database& database, const std::string& name, const std::string& stem,
                       const exchange::SchemaCatalog& schemas, const exchange::ReadOptions& options,
                       exchange::Messages& messages);

// Reads the rows of orx_header, in their order.
struct HeaderRow;

}  // namespace relational

#endif
