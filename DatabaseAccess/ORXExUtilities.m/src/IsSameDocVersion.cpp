// Whether a document is associated with the version of a product definition.

#include "Attributes.h"
#include "Identity.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH IsSameDocVersion(const SdaiPrimitiveH& definition,
                                const SdaiPrimitiveH& association) {
    return Function<"IsSameDocVersion">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (definition.exists() && association.exists()) {
            const SdaiPrimitiveH formation = definition.GetAttr("FORMATION"_name);
            const SdaiPrimitiveH end = SelectedOf(association, "RELATED_PRODUCT_OR_FORMATION"_name);
            trace.Line("entite1.FORMATION : ", TypeNameOf{formation});
            trace.Line("entite2.RELATED_PRODUCT_OR_FORMATION : ", TypeNameOf{end});
            result = SdaiBoolean(AreSame(formation, end));
            trace.Line(result ? "cas egalite" : "cas difference");
        }
        trace.Line("IsSameDocVersion retourne ", result ? "sdaiLTRUE" : "sdaiLFALSE");
    });
}
