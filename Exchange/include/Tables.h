// How the instances of an entity type are presented as a table: the names of the table and its
// columns, and the contents of each column. Everything that presents a model as tables uses this.
//
// A table is named like its entity type, in lower case. Its first columns are defined by the caller
// (one of them is always the instance number), followed by every explicit attribute, inherited ones
// first, in lower case. "_" is appended to a name until it is unique.

#ifndef TABLES_H
#define TABLES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "model/Cell.h"
#include "model/Dictionary.h"

namespace exchange {

// How a column, or the table of an aggregate's members, stores a value.
enum class ColumnKind : std::uint8_t {
    Text,     // a STRING, the item of an ENUMERATION; LOGICAL and BINARY as ExchangeForm gives them
    Integer,  // INTEGER
    Real,     // REAL and NUMBER
    Boolean,  // BOOLEAN
    Reference,  // values that can only be instances: the instance number
    Exchange,   // any other SELECT, GENERIC: as ExchangeForm gives it
    Aggregate,
};

// A null domain is that of an undeclared attribute.
ColumnKind ColumnKindOf(const kor::Domain* domain);

struct Column {
    std::string name;
    std::size_t slot;  // of the entity type
    ColumnKind kind;
    const kor::Domain* domain;
};

// The name of the table.
std::string TableName(const kor::EntityType& entity);

// The columns of the attributes. `taken` contains the names, in lower case, of the columns before
// them. An attribute that is redeclared as derived has no column; the values of an undeclared type
// are named value_1, value_2 and so on.
std::vector<Column> ColumnsOf(const kor::EntityType& entity,
                              std::vector<std::string> taken = {"instance"});

// The name, with "_" appended until it is not among those taken.
std::string FreeName(std::string name, const std::vector<std::string>& taken);

// A value in the notation of exchange files (ISO 10303-21): #12, .T., "0A", LENGTH_MEASURE(2.5).
std::string ExchangeForm(const kor::Cell& cell);

}  // namespace exchange

#endif
