// How often a part of the database is a component of another.

#include "Attributes.h"
#include "Identity.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH QuantifyRef(const SdaiPrimitiveH& root, const SdaiPrimitiveH& leaf) {
    return Function<"QuantifyRef">(0.0, [&](Trace& trace, double& count) {
        if (root.exists() && leaf.exists() && root.TestAttr("KORASS"_name)) {
            trace.Line("Recuperation de la liste des liens");
            const SdaiPrimitiveH links = root.GetAttr("KORASS"_name);
            if (links.GetMemberCount() > 0) {
                trace.Line("On boucle sur la liste des liens pour compter les iLeafPart");
                SdaiEntityInstance* component = leaf;
                SdaiIterator_Of_Users link = Candidates(trace, links, "ref"_name, component);
                while (link.Next()) {
                    SdaiEntityInstance* part = ReferredBy(link.GetCurrentMember(), "ref"_name);
                    if (IsSame0Of(part, component, [&] { return leaf; })) count += 1.0;
                }
            }
        }
        trace.Line("Valeur de retour: [", count, "]");
    });
}
