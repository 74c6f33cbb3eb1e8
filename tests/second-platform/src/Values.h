// The contents of a value handle.

#ifndef SECOND_VALUES_H
#define SECOND_VALUES_H

#include <memory>
#include <variant>

#include "SdaiAggrInstance.h"
#include "SdaiPrimitiveH.h"

namespace second {

struct Boolean {
    SdaiLogical value;
};
struct Item {
    SdaiString name;
};
struct Bits {
    SdaiString digits;
};
struct Typed {
    SdaiString type;
    SdaiPrimitiveH value;
};
// An aggregate that is owned by its handles, or by somebody else.
using Aggregate = std::shared_ptr<SdaiAggrInstance>;

struct Value {
    std::variant<long, double, SdaiLogical, Boolean, SdaiString, Item, Bits, SdaiEntityInstance*,
                 Aggregate, Typed>
        held;
};

// The contents as one kind, inside any defined types; null if of another kind.
template <class Kind>
const Kind* Held(const SdaiPrimitiveH& handle) {
    const Value* value = handle.Get();
    while (value != nullptr && std::holds_alternative<Typed>(value->held)) {
        value = std::get<Typed>(value->held).value.Get();
    }
    return value != nullptr ? std::get_if<Kind>(&value->held) : nullptr;
}

}  // namespace second

#endif
