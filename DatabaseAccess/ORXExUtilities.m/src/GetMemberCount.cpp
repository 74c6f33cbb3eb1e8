// The number of members of an aggregate.

#include "Function.h"

using namespace orx;

SdaiPrimitiveH GetMemberCount(const SdaiPrimitiveH& aggregate) {
    return Function<"GetMemberCount">(0L, [&](Trace& trace, long& count) {
        if (aggregate.exists()) count = aggregate.GetMemberCount();
        trace.Line("Taille", count);
    });
}
