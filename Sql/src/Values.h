// Values of models as values of SQL, and the reverse.

#ifndef SQL_VALUES_H
#define SQL_VALUES_H

#include <string_view>

#include "Models.h"
#include "Module.h"
#include "Sqlite.h"
#include "Tables.h"

namespace sql {

// The instance that a cell holds, directly or under the name of a defined type; null for none.
const SdaiEntityInstance* TargetOf(const kor::Cell& cell);

// Gives the value of a column. Texts of ASCII characters are not copied: the model must stay as it
// is until the row has been used.
void Give(sqlite3_context* to, const kor::Cell& cell, exchange::ColumnKind kind,
          const kor::Domain* domain);

// Gives the result of a function: a logical as 1, 0 or NULL, an aggregate as a JSON array, an
// instance as its number, one of another than the first model as its text.
void Give(sqlite3_context* to, const SdaiPrimitiveH& value, const Models& models);

// The value as an argument of that kind. Throws std::runtime_error, with what was expected and what
// was found, for a value that is of another.
calls::Argument TakeArgument(sqlite3_value* value, orx::Kind kind, const Models& models);

// A UTF-8 text; U+FFFD replaces bytes that are not part of a character.
KORUnicodeString TextOf(std::string_view utf8);

}  // namespace sql

#endif
