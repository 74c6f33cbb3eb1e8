// What the functions of encoded keys do for those of V5 documents, whose keys stand behind a
// marker. They throw what they cannot get memory for.

#ifndef ORX_KEYS_H
#define ORX_KEYS_H

#include "SdaiPrimitiveH.h"

namespace orx {

// DecodeKey of the key that a text has from `start` on.
SdaiPrimitiveH DecodeKey(const KORUnicodeString& text, long start, const SdaiPrimitiveH& place);

// ConcatDocAtb, with a prefix before the key; "EMPTY VALUE" alone when the document is missing.
SdaiPrimitiveH DocumentKey(const SdaiPrimitiveH& document, const KORUnicodeString& prefix);

}  // namespace orx

#endif
