// Encoded keys for V5 documents, whose keys follow a marker. These functions throw std::bad_alloc
// when memory runs out.

#ifndef ORX_CONCATATB_H
#define ORX_CONCATATB_H

#include <string_view>

#include "SdaiPrimitiveH.h"

namespace orx {

// DecodeKey for the key that begins at position `start` of a text.
SdaiPrimitiveH DecodeKey(const KORUnicodeString& text, long start, const SdaiPrimitiveH& place);

// ConcatDocAtb with a prefix before the key; "EMPTY VALUE" without the prefix if the document is
// missing.
SdaiPrimitiveH DocumentKey(const SdaiPrimitiveH& document, std::string_view prefix);

}  // namespace orx

#endif
