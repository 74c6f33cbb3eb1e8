// The entity types of models as virtual tables of SQLite. The rows of a table are the instances of
// the type and of its subtypes, in the model's order, with the columns
//
//     instance   the instance number
//     entity     the name of the instance's own type, compared without regard to case
//     and those of the attributes (see exchange::ColumnsOf), an aggregate as a JSON array.
//
// Instances are found by number, by what they refer to and by their own type without a walk over
// the extent, and given in the order of their numbers or of what they refer to where that is asked
// for.

#ifndef SQL_VIRTUALTABLE_H
#define SQL_VIRTUALTABLE_H

#include <memory>

#include "Connection.h"

namespace sql {

// The name of the module of virtual tables.
inline constexpr const char* kVirtualTables = "orx";

void AddVirtualTables(const std::shared_ptr<Connection>& connection);

}  // namespace sql

#endif
