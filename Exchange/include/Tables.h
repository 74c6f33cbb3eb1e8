// How the instances of an entity type stand in a table: what the table and its columns are called,
// and what each column holds. Whatever shows a model as tables goes by it.
//
// A table is named like its entity type, in lower case. Its first columns are of whoever makes it
// (the instance number is always one of them); then comes every explicit attribute, inherited ones
// first, in lower case. A name that is taken gets "_" appended until it is free.

#ifndef TABLES_H
#define TABLES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Cell.h"
#include "Dictionary.h"

namespace exchange {

// What a column, or the table of an aggregate's members, holds of a value.
enum class ColumnKind : std::uint8_t {
    Text,     // a STRING, the item of an ENUMERATION; LOGICAL and BINARY as ExchangeForm gives them
    Integer,  // INTEGER
    Real,     // REAL and NUMBER
    Boolean,  // BOOLEAN
    Reference,  // what can be instances alone: the instance number
    Exchange,   // any other SELECT, GENERIC: as ExchangeForm gives it
    Aggregate,
};

// Null is the domain of an attribute that no schema declares.
ColumnKind ColumnKindOf(const kor::Domain* domain);

struct Column {
    std::string name;
    std::size_t slot;  // of the entity type
    ColumnKind kind;
    const kor::Domain* domain;
};

// The name of the table.
std::string TableName(const kor::EntityType& entity);

// The columns of the attributes. `taken` are the names, in lower case, of the columns before them.
// An attribute that the type redeclares as derived has no column; the values of a type that no
// schema declares are value_1, value_2 and so on.
std::vector<Column> ColumnsOf(const kor::EntityType& entity,
                              std::vector<std::string> taken = {"instance"});

// The name, with "_" appended until it is none of those taken.
std::string FreeName(std::string name, const std::vector<std::string>& taken);

// A value as an exchange file (ISO 10303-21) writes it: #12, .T., "0A", LENGTH_MEASURE(2.5).
std::string ExchangeForm(const kor::Cell& cell);

}  // namespace exchange

#endif
