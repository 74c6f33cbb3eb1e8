// What the functions of encoded keys do for those of V5 documents, whose keys stand behind a
// marker. They throw what they cannot get memory for.

#ifndef ORX_KEYS_H
#define ORX_KEYS_H

#include <string_view>

#include "SdaiPrimitiveH.h"

namespace orx {

// DecodeKey of a key that is part of a text.
SdaiPrimitiveH DecodeKey(std::string_view key, const SdaiPrimitiveH& place);

// ConcatDocAtb, with a prefix before the key; "EMPTY VALUE" alone when the document is missing.
SdaiPrimitiveH DocumentKey(const SdaiPrimitiveH& document, std::string_view prefix);

}  // namespace orx

#endif
