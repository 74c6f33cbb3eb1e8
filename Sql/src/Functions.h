// The mapping functions as functions of SQL, under their names.
//
// A list that a function fills is a JSON array that is given back filled. Those that create
// instances refuse: models are not written.

#ifndef SQL_FUNCTIONS_H
#define SQL_FUNCTIONS_H

#include <memory>

#include "Connection.h"

namespace sql {

void AddFunctions(const std::shared_ptr<Connection>& connection);

}  // namespace sql

#endif
