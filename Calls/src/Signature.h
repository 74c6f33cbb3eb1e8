// Display of functions of the export table.

#ifndef CALLS_SIGNATURE_H
#define CALLS_SIGNATURE_H

#include <string>
#include <vector>

#include "ORXExportTable.h"
#include "SdaiPrimitiveH.h"

namespace calls {

std::vector<std::string> FunctionNames();

// All kinds in the set: "string | integer".
std::string KindNames(orx::Kind kinds);

// The kinds of the arguments, in order.
std::vector<std::string> ArgumentKinds(const orx::Export& row);

// "a string or an integer", of all kinds in the set.
std::string KindPhrase(orx::Kind kinds);

// The kind of a value: None for one that is of no kind of the table (an enumeration item, a
// binary).
orx::Kind KindOf(const SdaiPrimitiveH& value);

// Whether a function that takes `taken` reads a value of that kind as what it is: numbers convert
// into each other, any value can stand for a select, and none is of another kind than any.
bool Takes(orx::Kind taken, orx::Kind kind);

// "DecodeKey(string, integer)".
std::string Signature(const orx::Export& row);

}  // namespace calls

#endif
