// Opens and saves data sets by name: an exchange file, a SQLite database (`sqlite:FILE`), or a
// PostgreSQL database (a `postgresql://` URI as libpq takes it).
//
// In a database each entity type has a table (see Tables.h for the columns). The other tables are:
//
//   orx_schema (name, layout)             the schema, and the version of this layout; where the
//                                         table is missing, the schema is cdma
//   orx_header (position, section, text)  header, anchors, references, data sections, scopes
//   orx_order (position, instance)        the order of creation, where it is not by number
//   orx_other (instance, text)            instances that no table holds exactly, as an exchange
//                                         file has them
//
// An aggregate is the count of its members in its column, and a table ENTITY_ATTRIBUTE (owner,
// position, value).
//
// Loading is one consistent snapshot; saving is one transaction, all of it or nothing. A data set
// that is saved where it was loaded from writes what has changed since alone; a row that another
// has changed meanwhile is a conflict. Anywhere else it takes the place of what is there.

#ifndef DATASETS_H
#define DATASETS_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Exchange.h"

namespace relational {

// Whether the name is that of a database.
bool IsDatabase(std::string_view name);

// The file that the name is of; empty for a database on a server.
std::string FileOf(const std::string& name);

// The name as messages show it: without a password.
std::string ReadableName(const std::string& name);

// Any text with the passwords of the URIs in it taken out.
std::string WithoutPasswords(std::string_view text);

// What a data set is called unless it is given a name: the stem of the file, or the database.
std::string StemOf(const std::string& name);

// Reads the data set. One without a model when there is an error: it is read as a whole or not at
// all. In a message the place of a database row is its table, key and column.
exchange::DataSet Open(const std::string& name, const exchange::SchemaCatalog& schemas,
                       const exchange::ReadOptions& options, exchange::Messages& messages);

struct SaveOptions {
    // As in exchange::WriteOptions; a database has no further links.
    bool inPlace = false;
    // Called from time to time while a database is written, with the number of instances written so
    // far and the number of those that are to be written. What it throws ends the transaction, and
    // nothing is changed.
    std::function<void(std::uint64_t written, std::uint64_t all)> progress;
};

// Writes it. On failure, which is reported, nothing is changed.
bool Save(const exchange::DataSet& dataSet, const std::string& name, exchange::Messages& messages,
          const SaveOptions& options = {});

// A kind of database: what makes the tables of a schema in it, as SQL. Empty for an unknown kind.
std::vector<std::string> DatabaseKinds();
std::string TablesAsSql(const kor::Schema& schema, std::string_view kind);

}  // namespace relational

#endif
