// Whether a value may stand where a schema declares a domain.

#ifndef CALLS_EXPECTATION_H
#define CALLS_EXPECTATION_H

#include <string>

#include "Dictionary.h"
#include "SdaiPrimitiveH.h"

namespace calls {

// Whether the value is of the kind that the domain declares (null: any value is). An integer may
// stand for a real, a text that is a name for the item of an enumeration, and unset for anything;
// an instance of a type that the schema does not declare may be of any type.
bool Fits(const SdaiPrimitiveH& value, const kor::Domain* domain);

// What the domain declares, for messages: "a list of an instance of PRODUCT_CONTEXT".
std::string Expectation(const kor::Domain& domain);

// What the domain declares, as an EXPRESS schema (ISO 10303-11) would write it without names of
// defined types: "LIST [1:?] OF PRODUCT", "SELECT (LENGTH_MEASURE, PRODUCT, ...)". A select or
// enumeration of many members is cut short. Null: "GENERIC".
std::string DeclaredType(const kor::Domain* domain);

}  // namespace calls

#endif
