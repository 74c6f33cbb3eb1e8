// Whether a value matches a domain that a schema declares.

#ifndef CALLS_EXPECTATION_H
#define CALLS_EXPECTATION_H

#include <string>

#include "SdaiPrimitiveH.h"
#include "model/Dictionary.h"

namespace calls {

// Whether the value is of the kind that the domain declares (null: any). An integer is accepted as
// a real, a text that is an identifier as an enumeration item, unset for any domain, and an
// instance of an undeclared type for any type.
bool Fits(const SdaiPrimitiveH& value, const kor::Domain* domain);

// A description of the domain for messages: "a list of an instance of PRODUCT_CONTEXT".
std::string Expectation(const kor::Domain& domain);

// The domain in EXPRESS (ISO 10303-11) without the names of defined types: "LIST [1:?] OF PRODUCT",
// "SELECT (LENGTH_MEASURE, PRODUCT, ...)". A select or enumeration with many members is shortened.
// Null: "GENERIC".
std::string DeclaredType(const kor::Domain* domain);

}  // namespace calls

#endif
