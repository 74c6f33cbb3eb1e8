// Names in database form (with blanks) and in file form (with the byte 0xB1 in their place).

#ifndef ORX_NAMES_H
#define ORX_NAMES_H

#include <string_view>

#include "SdaiPrimitiveH.h"
#include "SdaiString.h"

namespace orx {

// The byte 0xB1, in traces.
inline constexpr const char* kFileBlank = "\xB1";

inline constexpr std::string_view kModelExtension = ".model";

// The name in file form, with an ending; and in database form. A name of any length and of any
// bytes is converted whole.
SdaiString ToFileName(std::string_view name, std::string_view ending = {});
SdaiString ToDatabaseName(std::string_view fileName);

// ORX_GetModelName, for the functions that call it: throws what it cannot get memory for.
SdaiPrimitiveH ModelName(const SdaiPrimitiveH& name, const SdaiPrimitiveH& direction);

}  // namespace orx

#endif
