// The value of an attribute by its name.

#include "Function.h"

using namespace orx;

SdaiPrimitiveH GetInst(const SdaiPrimitiveH& instance, const SdaiPrimitiveH& attribute) {
    return Function<"GetInst">(SdaiPrimitiveH(), [&](Trace& trace, SdaiPrimitiveH& result) {
        const SdaiString& name = attribute;
        trace.Line("GetInst sur l'entite:", TypeNameOf{instance});
        trace.Line("et l'attribut      :", name);
        if (instance.exists() && attribute.exists()) {
            const SdaiPrimitiveH value = instance.GetAttr(name);
            result = static_cast<const SdaiSelectH&>(value).getValue();
        } else {
            result = 0L;
        }
    });
}
