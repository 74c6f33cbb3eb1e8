// Functions of the export table, as they are shown.

#ifndef CALLS_SIGNATURE_H
#define CALLS_SIGNATURE_H

#include <string>
#include <vector>

#include "ORXExportTable.h"

namespace calls {

std::vector<std::string> FunctionNames();

// "string | integer", of all kinds in the set.
std::string KindNames(orx::Kind kinds);

// The kinds of the arguments, one after the other.
std::vector<std::string> ArgumentKinds(const orx::Export& row);

// "DecodeKey(string, integer)".
std::string Signature(const orx::Export& row);

}  // namespace calls

#endif
