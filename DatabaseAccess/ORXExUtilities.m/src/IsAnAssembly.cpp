// Whether a part of the database has components.

#include "Function.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH IsAnAssembly(const SdaiPrimitiveH& part) {
    return Function<"IsAnAssembly">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (part.exists() && part.TestAttr("KORASS"_name)) {
            if (part.GetAttr("KORASS"_name).GetMemberCount() > 0) {
                trace.Line("il existe des liens");
                result = sdaiLTRUE;
            } else {
                trace.Line("il n''y a pas de lien");
            }
        }
        trace.Line("Valeur de retour: [", result, "]");
    });
}
