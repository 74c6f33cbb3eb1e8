// Arguments of the mapping functions, as every language that calls them makes and checks them.

#ifndef CALLS_ARGUMENTS_H
#define CALLS_ARGUMENTS_H

#include <cstddef>
#include <span>

#include "ORXExportTable.h"
#include "SdaiPrimitiveH.h"

namespace calls {

// Whether a value is of a kind that an argument is read as. Unset fits everywhere, an integer where
// a real is read, and anything where a SELECT is.
bool Accepts(orx::Kind expected, const SdaiPrimitiveH& value);

// Whether the function fills that argument, a list, and gives nothing else.
bool IsFilled(const orx::Export& row, std::size_t argument);

// Whether the function may create instances, in the model of an argument.
bool MayCreate(const orx::Export& row);

// A list of the values, which belongs to the handles on it. As a literal, one whose members are all
// numbers, or that has none, is a list of reals, which a function can fill.
SdaiPrimitiveH ListOf(std::span<const SdaiPrimitiveH> members);
SdaiPrimitiveH LiteralList(std::span<const SdaiPrimitiveH> members);

}  // namespace calls

#endif
