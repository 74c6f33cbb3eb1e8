// Tests whether two references denote the same entity instance.

#ifndef ORX_IDENTITY_H
#define ORX_IDENTITY_H

#include "Function.h"

namespace orx {

// Whether both exist and are the same instance.
inline bool AreSame(const SdaiEntityInstance* a, const SdaiEntityInstance* b) {
    return a != nullptr && a->IsSameInstance(b);
}

// The result of IsSame0 for two values. Functions that search an extent call it for every instance
// that they visit; with tracing off, it only compares, without a trace scope.
inline bool IsSame0Of(const SdaiPrimitiveH& a, const SdaiPrimitiveH& b) {
    if (KORPSNTrace::LevelIsActive(Trace::kLevel) == 0) return AreSame(a, b);
    return static_cast<const SdaiLogical&>(IsSame0(a, b));
}

// The same for searches that compare `a` with the value of an attribute: `b` is the instance that
// the attribute holds, or null if it holds none. In that case IsSame0 is called with value(), the
// unchanged value of the attribute, so that the trace shows it.
template <class Value>
bool IsSame0Of(SdaiEntityInstance* a, SdaiEntityInstance* b, Value&& value) {
    if (KORPSNTrace::LevelIsActive(Trace::kLevel) == 0) return AreSame(a, b);
    const SdaiPrimitiveH held = b != nullptr ? SdaiPrimitiveH(b) : value();
    return static_cast<const SdaiLogical&>(IsSame0(SdaiPrimitiveH(a), held));
}

}  // namespace orx

#endif
