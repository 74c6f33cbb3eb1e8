// Whether a part of the database is a component of another.

#include "Attributes.h"
#include "Identity.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH IsInAssembly(const SdaiPrimitiveH& root, const SdaiPrimitiveH& leaf) {
    return Function<"IsInAssembly">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (trace.IsActive()) {
            const SdaiPrimitiveH rootNumber = root.GetAttr("S_PART_NUMBER"_name);
            const SdaiPrimitiveH leafNumber = leaf.GetAttr("S_PART_NUMBER"_name);
            trace.Line("iRootPart: [", TextOf(rootNumber), "]");
            trace.Line("iLeafPart: [", TextOf(leafNumber), "]");
            if (root.TestAttr("KORASS"_name)) {
                trace.Line("KORASS ok pour [", TextOf(rootNumber), "]");
            }
        }
        if (root.exists() && leaf.exists() && root.TestAttr("KORASS"_name)) {
            SdaiEntityInstance* component = leaf;
            const SdaiPrimitiveH links = root.GetAttr("KORASS"_name);
            SdaiIterator_Of_Users link = Candidates(trace, links, "ref"_name, component);
            while (!result && link.Next()) {
                SdaiEntityInstance* part = ReferredBy(link.GetCurrentMember(), "ref"_name);
                if (IsSame0Of(part, component, [&] { return leaf; })) result = sdaiLTRUE;
            }
        }
        trace.Line("Valeur de retour: [", result, "]");
    });
}
