// The one test of sameness: two instances are the same when they are one instance.

#ifndef ORX_SAME_H
#define ORX_SAME_H

#include "Function.h"

namespace orx {

// Whether both are there and are the same instance.
inline bool AreSame(const SdaiEntityInstance* a, const SdaiEntityInstance* b) {
    return a != nullptr && a->IsSameInstance(b);
}

// What IsSame0 answers for two instances. The functions that search a whole extent ask it for every
// instance that they visit: untraced, it is the comparison alone, without a scope or handles.
inline bool IsSame0Of(SdaiEntityInstance* a, SdaiEntityInstance* b) {
    if (KORPSNTrace::LevelIsActive(Trace::kLevel) == 0) return AreSame(a, b);
    return static_cast<const SdaiLogical&>(IsSame0(SdaiPrimitiveH(a), SdaiPrimitiveH(b)));
}

inline bool IsSame0Of(const SdaiPrimitiveH& a, const SdaiPrimitiveH& b) {
    if (KORPSNTrace::LevelIsActive(Trace::kLevel) == 0) return AreSame(a, b);
    return static_cast<const SdaiLogical&>(IsSame0(a, b));
}

// The same in a search for what holds the instance `a`: `b` is the instance that an attribute
// holds, null where it holds none. IsSame0 then gets value(), the value of the attribute, as it is.
template <class Value>
bool IsSame0Of(SdaiEntityInstance* a, SdaiEntityInstance* b, Value&& value) {
    if (b != nullptr || KORPSNTrace::LevelIsActive(Trace::kLevel) == 0) return IsSame0Of(a, b);
    return static_cast<const SdaiLogical&>(IsSame0(SdaiPrimitiveH(a), value()));
}

}  // namespace orx

#endif
