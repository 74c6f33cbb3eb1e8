// Placements and the frames that they are computed from.

#ifndef ORX_PLACEMENT_H
#define ORX_PLACEMENT_H

#include "KORMath.h"

namespace orx {

// A rotation and a translation; by default, the identity.
struct Placement {
    KORMath3x3Matrix rotation;
    KORMathVector translation;
};

inline KORMathVector Normalised(const KORMathVector& v) { return v / v.Norm(); }

// The reference direction for a z axis without one.
inline KORMathVector DefaultReference(const KORMathVector& z) {
    const bool alongX = z[1] == 0 && z[2] == 0;
    return alongX ? KORMathVector(0, 1, 0) : KORMathVector(1, 0, 0);
}

// The frame of a normalised z axis and a reference direction: its x, y and z axes as columns. x is
// the part of the reference direction orthogonal to z. The divisions are unguarded: degenerate
// directions give values that are not finite.
inline KORMath3x3Matrix FrameOf(const KORMathVector& z, const KORMathVector& reference) {
    const KORMathVector r = Normalised(reference);
    const KORMathVector x = Normalised(r - Dot(r, z) * z);
    const KORMathVector y = Normalised(Cross(z, x));
    return {x, y, z};
}

}  // namespace orx

#endif
