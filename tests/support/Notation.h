// Tables written as text: schemas as EXPRESS (ISO 10303-11), data sets as the data section of an
// exchange file (ISO 10303-21). Reads what tests write, independent of a platform; throws
// std::runtime_error for anything else.

#ifndef TESTS_NOTATION_H
#define TESTS_NOTATION_H

#include <string>

#include "PlainTables.h"

namespace tables {

// A schema declared as "SCHEMA ... END_SCHEMA;".
Schema ReadSchema(const std::string& express);

// "cdma", "AUTOMOTIVE_DESIGN" and so on, from the declarations that are built into the exchange
// library.
const Schema& BuiltInSchema(const std::string& name);

// The instances in "#1=PRODUCT('p','Part',$,());...". Values are assigned to attributes in the
// order of the schema.
DataSet ReadData(const Schema& schema, const std::string& data);

}  // namespace tables

#endif
