// Display of functions of the export table.

#ifndef CALLS_SIGNATURE_H
#define CALLS_SIGNATURE_H

#include <string>
#include <vector>

#include "ORXExportTable.h"

namespace calls {

std::vector<std::string> FunctionNames();

// All kinds in the set: "string | integer".
std::string KindNames(orx::Kind kinds);

// The kinds of the arguments, in order.
std::vector<std::string> ArgumentKinds(const orx::Export& row);

// "DecodeKey(string, integer)".
std::string Signature(const orx::Export& row);

}  // namespace calls

#endif
