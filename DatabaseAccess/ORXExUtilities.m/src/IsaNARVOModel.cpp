// Names of model files.

#include "Attributes.h"
#include "Function.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH IsaNARVOModel(const SdaiPrimitiveH& name) {
    return Function<"IsaNARVOModel">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (name.exists()) {
            const KORUnicodeString& text = TextOf(name);
            const int length = text.GetLengthInChar();
            trace.Line("IsaNARVOModel sur: ", text);
            // Only the first ".model" at or after the first "." counts.
            const int dot = text.SearchSubString(".", 0, KORSearchFirst);
            const int model = dot < 0 ? -1 : text.SearchSubString(".model", dot, KORSearchForward);
            if (model >= 0) {
                trace.Line("longueur du nom de model: ", length);
                trace.Line("le . d'extension est trouve en position: ", dot);
                trace.Line("Position du l de .model: ", model + 6);
                result = SdaiBoolean(model + 6 == length);
            }
        }
        trace.Line("IsaNARVOModel retourne: ", result);
    });
}

SdaiPrimitiveH IsaNARVORepProperty(const SdaiPrimitiveH& representation) {
    return Function<"IsaNARVORepProperty">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (representation.exists()) {
            const SdaiPrimitiveH file = DocumentFileOf(representation);
            if (file.exists()) {
                result = static_cast<const SdaiLogical&>(IsaNARVOModel(file.GetAttr("ID"_name)));
            }
        }
        trace.Line(" ", "on retourne: ", result);
    });
}
