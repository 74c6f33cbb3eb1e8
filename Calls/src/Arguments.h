// Arguments of the mapping functions: created and checked in the same way for every calling
// language.

#ifndef CALLS_ARGUMENTS_H
#define CALLS_ARGUMENTS_H

#include <cstddef>
#include <span>

#include "ORXExportTable.h"
#include "SdaiPrimitiveH.h"

namespace calls {

// Whether a value is of a kind that the function expects. Unset is always accepted, an integer as a
// real, and anything as a SELECT.
bool Accepts(orx::Kind expected, const SdaiPrimitiveH& value);

// Whether the function's only result is to fill that argument, a list.
bool IsFilled(const orx::Export& row, std::size_t argument);

// Whether the function may create instances, in the model of an argument.
bool MayCreate(const orx::Export& row);

// A list of the values, owned by the handles to it. A literal whose members are all numbers, or
// that is empty, is a list of reals, which a function can fill.
SdaiPrimitiveH ListOf(std::span<const SdaiPrimitiveH> members);
SdaiPrimitiveH LiteralList(std::span<const SdaiPrimitiveH> members);

}  // namespace calls

#endif
