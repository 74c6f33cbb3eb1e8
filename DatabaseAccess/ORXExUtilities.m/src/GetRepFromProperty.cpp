// The DOCUMENT_FILE that a property refers to.

#include "Attributes.h"
#include "Function.h"

using namespace orx;

SdaiPrimitiveH GetRepFromProperty(const SdaiPrimitiveH& instance) {
    return Function<"GetRepFromProperty">(SdaiPrimitiveH(), [&](Trace&, SdaiPrimitiveH& result) {
        if (!instance.exists()) return;
        result = DocumentFileOf(instance);
        if (!result.exists()) result = 0L;
    });
}
