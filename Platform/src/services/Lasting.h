// Objects that remain usable in static destructors and ending threads.

#ifndef KOR_LASTING_H
#define KOR_LASTING_H

#include <cstddef>
#include <new>

namespace kor {

// The object of that type, created on first use and never destroyed.
template <class T>
T& Lasting() {
    alignas(T) static std::byte storage[sizeof(T)];
    static T& object = *new (storage) T;
    return object;
}

}  // namespace kor

#endif
