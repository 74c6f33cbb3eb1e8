// Version texts of imported parts.

#include "Function.h"
#include "KORDMNarvo.h"

using namespace orx;

SdaiPrimitiveH ReadPartVersion(const SdaiPrimitiveH& version) {
    return Function<"ReadPartVersion">(SdaiString(), [&](Trace& trace, SdaiString& result) {
        // Read on every call, whether needed or not.
        const SdaiString start = KORDMNarvo::GetRevVerStartValue(1, "", "", "", nullptr);
        if (version.exists()) {
            const SdaiString& input = version;
            trace.Line("ReadPartVersion - ", input, " -> ", input);
            if (input.length() >= 1 && input.length() <= 3) {
                result = input;
            } else {
                result = start;
                trace.Line("ORX import mapping WARNING:");
                trace.Line("   input value   >", input, "<");
                trace.Line("   substitued by >", start, "<");
                trace.Line("");
            }
        }
        trace.Line("ReadPartVersion retourne: >", result, "<");
    });
}
