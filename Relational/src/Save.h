// Saving a data set to a database.

#ifndef RELATIONAL_SAVE_H
#define RELATIONAL_SAVE_H

#include <string>

#include "DataSets.h"
#include "Database.h"
#include "Exchange.h"

namespace relational {

// `name` is for messages.
bool SaveTo(Database& database, const exchange::DataSet& dataSet, const std::string& name,
            const SaveOptions& options, exchange::Messages& messages);

}  // namespace relational

#endif
