// Geometry as far as boxes around parts need it: points, boxes, frames and B-splines.

#ifndef HOST_GEOMETRY_H
#define HOST_GEOMETRY_H

#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include "KORMath.h"
#include "SdaiPrimitiveH.h"
#include "src/Placement.h"

namespace host {

using Point3 = std::array<double, 3>;

// An upright box; empty without a point.
struct Box {
    static constexpr double kInfinity = std::numeric_limits<double>::infinity();

    Point3 least{kInfinity, kInfinity, kInfinity};
    Point3 most{-kInfinity, -kInfinity, -kInfinity};

    bool IsEmpty() const { return !(least[0] <= most[0]); }
    // A point that is not finite, or too far away for any product, is ignored.
    void Add(const Point3& point);
    void Add(const Box& other);
    // Its eight corners: bit i of the number selects the larger i-th coordinate.
    Point3 Corner(unsigned number) const;
    Point3 Middle() const;
};

// The box around a box that is placed.
Box Placed(const Box& box, const orx::Placement& placement);

// A point that is placed.
Point3 Placed(const Point3& point, const orx::Placement& placement);

// The columns of a placement's rotation: where it takes the directions of x, y and z.
std::array<KORMathVector, 3> AxesOf(const orx::Placement& placement);

// A placement as GetAbsPlacement returns it: the columns of its rotation, then its translation.
std::array<double, 12> RealsOf(const orx::Placement& placement);

bool IsFinite(const orx::Placement& placement);

// The frame of an AXIS2_PLACEMENT_3D or of a CARTESIAN_TRANSFORMATION_OPERATOR_3D; values that are
// not finite if its directions are degenerate.
std::optional<orx::Placement> FrameOf(const SdaiPrimitiveH& axes);
// The placement that takes such a frame back to the identity, scaled back as well.
std::optional<orx::Placement> InverseFrameOf(const SdaiPrimitiveH& axes);

// A B-spline curve, perhaps a rational one.
struct Spline {
    static constexpr long kHighestDegree = 25;

    std::size_t degree = 0;
    std::vector<Point3> points;
    std::vector<double> weights;
    std::vector<double> knots;  // each as often as it counts

    bool IsValid() const;

    // The point at a parameter between knots[span] and knots[span + 1] (de Boor's algorithm).
    Point3 At(double parameter, std::size_t span) const;

    // The point that is farthest along an axis, or against it (`way` is 1 or -1): the farthest one
    // of some on each span, and from there by halving steps.
    Point3 Extreme(std::size_t axis, double way) const;
};

}  // namespace host

#endif
