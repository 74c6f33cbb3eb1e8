// The items of an ITEM_DEFINED_TRANSFORMATION.

#include "Function.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH GetItem(const SdaiPrimitiveH& index, const SdaiPrimitiveH& transformation) {
    return Function<"GetItem">(SdaiPrimitiveH(), [&](Trace& trace, SdaiPrimitiveH& result) {
        if (!index.exists() || !transformation.exists()) return;
        const long n = index;
        const SdaiPrimitiveH item = static_cast<const SdaiSelectH&>(transformation).getValue();
        const SdaiName& name = n == 1 ? "TRANSFORM_ITEM_1"_name : "TRANSFORM_ITEM_2"_name;
        trace.Line("Nom d'entite:", TypeNameOf{item});
        trace.Line("Attribut lu :", name.text);
        result = item.GetAttr(name);
    });
}
