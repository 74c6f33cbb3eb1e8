// Keys of V5 documents: a marker followed by the document's encoded key.

#include <string_view>

#include "ConcatAtb.h"
#include "Function.h"

using namespace orx;

namespace {

constexpr std::string_view kMarker = "_ORX_";
constexpr int kMarkerLength = 5;

}  // namespace

SdaiPrimitiveH EncodeNARVOV5Doc(const SdaiPrimitiveH& document) {
    return Function<"EncodeNARVOV5Doc">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (document.exists()) {
            trace.Line("the Document exists");
            const SdaiPrimitiveH key = DocumentKey(document, kMarker);
            result = TextOf(key);
        }
        trace.Line("la valeur retournee est ", result);
    });
}

SdaiPrimitiveH IsEncodedNARVOV5(const SdaiPrimitiveH& value) {
    return Function<"IsEncodedNARVOV5">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (value.exists()) {
            trace.Line("the input value exists");
            const KORUnicodeString& text = TextOf(value);
            // With tracing on, ORXTrunc runs for its trace; the comparison itself needs no copy.
            if (trace.IsActive() && text.GetLengthInChar() >= kMarkerLength) {
                ORXTrunc(value, kMarkerLength);
            }
            result = SdaiBoolean(text.ComparePart(0, kMarkerLength, kMarker) == 2);
        }
        trace.Line(" Valeur retournee : ", result);
    });
}

SdaiPrimitiveH DecodeNARVOV5(const SdaiPrimitiveH& key, const SdaiPrimitiveH& place) {
    const SdaiPrimitiveH byDefault(kEmptyValue);
    return Function<"DecodeNARVOV5">(byDefault, [&](Trace& trace, SdaiPrimitiveH& result) {
        if (!key.exists() || !place.exists()) return;
        trace.Line("everything ok : go ahead");
        if (!static_cast<const SdaiLogical&>(IsEncodedNARVOV5(key))) {
            result = SdaiPrimitiveH();
            return;
        }
        result = orx::DecodeKey(TextOf(key), kMarkerLength, place);
    });
}
