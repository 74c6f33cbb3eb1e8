// Loads the module by name and calls every function of its table that takes and returns handles
// only, with unset arguments: each returns its default.

#include <iostream>

#include "../../examples/embed/Engine.h"

int main() {
    const Engine engine;
    const SdaiPrimitiveH unset;
    int called = 0;
    for (const orx::Export& row : orx::kExports) {
        if (row.result == orx::Nothing || row.arguments[1] == orx::Model) continue;
        switch (row.ArgumentCount()) {
            case 0: engine.Call(row.name); break;
            case 1: engine.Call(row.name, unset); break;
            default: engine.Call(row.name, unset, unset);
        }
        ++called;
    }
    const SdaiPrimitiveH isKey =
        engine.Call("IsEncodedKey", SdaiPrimitiveH(SdaiString("S0002ABI000212S0000")));
    const SdaiPrimitiveH number = engine.Call(
        "DecodeKey", SdaiPrimitiveH(SdaiString("S0002ABI000212S0000")), SdaiPrimitiveH(2));
    const bool right = called == 70 && static_cast<const SdaiLogical&>(isKey) == sdaiLTRUE &&
                       static_cast<long>(number) == 12;
    if (!right) std::cerr << "wrong results\n";
    return right ? 0 : 1;
}
