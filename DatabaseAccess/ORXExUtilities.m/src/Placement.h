// Placements and the frames that they are computed from.

#ifndef ORX_PLACEMENT_H
#define ORX_PLACEMENT_H

#include "KORMath.h"
#include "SdaiAggrInstance.h"
#include "SdaiName.h"
#include "SdaiPrimitiveH.h"

namespace orx {

// A rotation and a translation; by default, the identity.
struct Placement {
    KORMath3x3Matrix rotation;
    KORMathVector translation;
};

inline constexpr Placement kIdentity;

// The placement by `inner` in a frame that is placed by `outer`: `inner` is applied first.
inline Placement Compose(const Placement& outer, const Placement& inner) {
    const KORMathVector& x = outer.rotation.GetFirstColumn();
    const KORMathVector& y = outer.rotation.GetSecondColumn();
    const KORMathVector& z = outer.rotation.GetThirdColumn();
    const KORMathVector& t = inner.translation;
    const auto row = [&](int i) {
        return outer.translation[i] + x[i] * t[0] + y[i] * t[1] + z[i] * t[2];
    };
    return {outer.rotation * inner.rotation, {row(0), row(1), row(2)}};
}

// The inverse of a placement whose rotation is orthonormal; nothing is scaled back.
inline Placement Inverse(const Placement& placement) {
    const KORMathVector& x = placement.rotation.GetFirstColumn();
    const KORMathVector& y = placement.rotation.GetSecondColumn();
    const KORMathVector& z = placement.rotation.GetThirdColumn();
    const KORMathVector& t = placement.translation;
    // Subtracting from 0.0 leaves no component -0.0.
    const auto back = [&t](const KORMathVector& axis) {
        return 0.0 - axis[0] * t[0] - axis[1] * t[1] - axis[2] * t[2];
    };
    return {{{x[0], y[0], z[0]}, {x[1], y[1], z[1]}, {x[2], y[2], z[2]}},
            {back(x), back(y), back(z)}};
}

// ---- Frames

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

// ---- Reading points and directions

// Three members of an aggregate, from a position on. A missing member counts as 0.
inline KORMathVector VectorAt(const SdaiAggrInstance& members, long position) {
    return {members.GetRealMember(position), members.GetRealMember(position + 1),
            members.GetRealMember(position + 2)};
}

// The first three members of an aggregate; the default if the value is not an aggregate.
inline KORMathVector VectorOf(const SdaiPrimitiveH& value, const KORMathVector& byDefault) {
    const SdaiAggrInstance* members = value;
    return members != nullptr ? VectorAt(*members, 0) : byDefault;
}

// The direction ratios of the DIRECTION that an attribute refers to; the default if there is none.
inline KORMathVector DirectionOf(const SdaiPrimitiveH& owner, const SdaiName& attribute,
                                 const KORMathVector& byDefault) {
    using namespace sdai_names;
    return VectorOf(owner.GetAttr(attribute).GetAttr("DIRECTION_RATIOS"_name), byDefault);
}

// The coordinates of the CARTESIAN_POINT that an attribute refers to; the origin if there is none.
inline KORMathVector PointOf(const SdaiPrimitiveH& owner, const SdaiName& attribute) {
    using namespace sdai_names;
    return VectorOf(owner.GetAttr(attribute).GetAttr("COORDINATES"_name), {0, 0, 0});
}

// The aggregates of numbers of an AXIS2_PLACEMENT_3D.
struct AxisPlacement {
    SdaiPrimitiveH coordinates;
    SdaiPrimitiveH axis;
    SdaiPrimitiveH reference;

    KORMathVector Location() const { return VectorOf(coordinates, {0, 0, 0}); }
    KORMath3x3Matrix Frame() const {
        const KORMathVector z = Normalised(VectorOf(axis, {0, 0, 1}));
        return FrameOf(z, VectorOf(reference, DefaultReference(z)));
    }
};

inline AxisPlacement AxisPlacementOf(const SdaiPrimitiveH& placement) {
    using namespace sdai_names;
    // All instances before the first of their attributes, so that they are fetched from memory side
    // by side.
    const SdaiPrimitiveH location = placement.GetAttr("LOCATION"_name);
    const SdaiPrimitiveH axis = placement.GetAttr("AXIS"_name);
    const SdaiPrimitiveH reference = placement.GetAttr("REF_DIRECTION"_name);
    return {location.GetAttr("COORDINATES"_name), axis.GetAttr("DIRECTION_RATIOS"_name),
            reference.GetAttr("DIRECTION_RATIOS"_name)};
}

}  // namespace orx

#endif
