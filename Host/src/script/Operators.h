// Comparisons of values, and the logic of three truth values.

#ifndef HOST_OPERATORS_H
#define HOST_OPERATORS_H

#include <optional>

#include "SdaiPrimitiveH.h"
#include "script/Script.h"

namespace host {

// Numbers are compared by value, even of different kinds, texts by characters, logicals in the
// order FALSE, UNKNOWN, TRUE. Instances are equal if they are the same; unset equals only unset.
// Values of different kinds are not equal. No value if the operator needs an order and the values
// have none.
std::optional<SdaiLogical> Compare(Operator comparison, const SdaiPrimitiveH& left,
                                   const SdaiPrimitiveH& right);

// The truth value of a logical; UNKNOWN for an unset value. No value for any other value.
std::optional<SdaiLogical> TruthOf(const SdaiPrimitiveH& value);

}  // namespace host

#endif
