// Whether an instance is one of the items of another.

#include "Function.h"
#include "SdaiIterator.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH PRDDFN_IsIn(const SdaiPrimitiveH& definition, const SdaiPrimitiveH& set) {
    return Function<"PRDDFN_IsIn">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (definition.exists() && set.exists()) {
            const SdaiEntityInstance* sought = definition;
            const SdaiPrimitiveH items = set.GetAttr("ITEMS"_name);
            SdaiIterator_Of_SdaiEntityInstanceH member(static_cast<SdaiAggrInstance*>(items));
            while (!result && sought != nullptr && member.Next()) {
                if (sought->IsSameInstance(member.GetCurrentMember())) result = sdaiLTRUE;
            }
        }
        trace.Line(result ? "c''est un element de la liste"
                          : "ce n''est pas un element de la liste");
    });
}
