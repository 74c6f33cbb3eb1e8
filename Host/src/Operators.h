// Comparisons of values, and the logic of three truth values.

#ifndef HOST_OPERATORS_H
#define HOST_OPERATORS_H

#include <optional>

#include "Script.h"
#include "SdaiPrimitiveH.h"

namespace host {

// Numbers compare by their value whatever their kinds, texts by their characters, logicals as
// FALSE, UNKNOWN, TRUE; instances are equal when they are one; unset equals unset alone. Values of
// different kinds are not equal. Nothing for an order of values that have none.
std::optional<SdaiLogical> Compare(Operator comparison, const SdaiPrimitiveH& left,
                                   const SdaiPrimitiveH& right);

// The truth value that a value is; an unset one is UNKNOWN. Nothing for any other value.
std::optional<SdaiLogical> TruthOf(const SdaiPrimitiveH& value);

}  // namespace host

#endif
