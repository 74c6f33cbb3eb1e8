// What a database holds besides the tables of entity types.

#ifndef RELATIONAL_STORED_H
#define RELATIONAL_STORED_H

#include <string>
#include <vector>

#include "Database.h"
#include "Fingerprint.h"

namespace relational {

struct StoredSchema {
    std::string name;  // cdma where nothing says it
    bool isThere = false;
    std::string problem;  // why it cannot be used; empty where it can
};

StoredSchema ReadStoredSchema(Database& database, const Relations& relations);

// The rows of orx_header, in their order.
std::vector<HeaderRow> ReadHeader(Database& database, const Relations& relations);

}  // namespace relational

#endif
