// Values of mandatory attributes.

#include "Function.h"

using namespace orx;

SdaiPrimitiveH ReadMandatory(const SdaiPrimitiveH& value, const SdaiPrimitiveH& attribute) {
    return Function<"ReadMandatory">(SdaiString("ORX"), [&](Trace& trace, SdaiString& result) {
        SdaiString read;
        if (value.exists()) {
            read = TextOf(value);
            trace.Line("valeur lue :", read, " -> ", read);
        }
        if (read.length() == 0) {
            const SdaiString& name = attribute;
            trace.Line("ORX import mapping WARNING:");
            trace.Line("   The attribute [", name, "] is valuated by ORX");
        } else {
            result = read;
        }
        trace.Line("valeur retourne: >", result, "<");
    });
}
