// Keys of V5 documents: the document's encoded key behind a marker.

#include "Function.h"

using namespace orx;

namespace {

constexpr const char* kMarker = "_ORX_";
constexpr int kMarkerLength = 5;

}  // namespace

SdaiPrimitiveH EncodeNARVOV5Doc(const SdaiPrimitiveH& document) {
    return Function<"EncodeNARVOV5Doc">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (document.exists()) {
            trace.Line("the Document exists");
            const SdaiPrimitiveH key = ConcatDocAtb(document);
            result = SdaiString(kMarker) + static_cast<const SdaiString&>(key);
        }
        trace.Line("la valeur retournee est ", result);
    });
}

SdaiPrimitiveH IsEncodedNARVOV5(const SdaiPrimitiveH& value) {
    return Function<"IsEncodedNARVOV5">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (value.exists()) {
            trace.Line("the input value exists");
            if (static_cast<const SdaiString&>(value).length() >= kMarkerLength) {
                const SdaiPrimitiveH start = ORXTrunc(value, SdaiPrimitiveH(kMarkerLength));
                result = static_cast<const SdaiString&>(start) == kMarker;
            }
        }
        trace.Line(" Valeur retournee : ", result);
    });
}

SdaiPrimitiveH DecodeNARVOV5(const SdaiPrimitiveH& key, const SdaiPrimitiveH& place) {
    return Function<"DecodeNARVOV5">(SdaiPrimitiveH(), [&](Trace& trace, SdaiPrimitiveH& result) {
        if (!key.exists() || !place.exists()) {
            result = kEmptyValue;
            return;
        }
        trace.Line("everything ok : go ahead");
        if (!static_cast<const SdaiLogical&>(IsEncodedNARVOV5(key))) return;
        const KORUnicodeString& text = static_cast<const SdaiString&>(key);
        const KORUnicodeString body =
            text.SubString(kMarkerLength, text.GetLengthInChar() - kMarkerLength);
        result = DecodeKey(SdaiPrimitiveH(SdaiString(body)), place);
    });
}
