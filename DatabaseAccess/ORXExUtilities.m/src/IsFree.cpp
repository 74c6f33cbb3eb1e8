// Whether an attribute has no value.

#include "Function.h"

using namespace orx;

SdaiPrimitiveH IsFree(const SdaiPrimitiveH& instance, const SdaiPrimitiveH& attribute) {
    return Function<"IsFree">(sdaiLTRUE, [&](Trace& trace, SdaiLogical& result) {
        const SdaiString& name = attribute;
        trace.Line("IsFree sur l'entite:", TypeNameOf{instance});
        trace.Line("et l'attribut      :", name);
        if (!instance.exists()) return;
        if (instance.TestAttr(name)) {
            result = sdaiLFALSE;
            trace.Line("Attribut value");
        } else {
            trace.Line("Attribut NON value");
        }
    });
}
