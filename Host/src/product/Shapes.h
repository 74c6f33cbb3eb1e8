// The shapes of parts, as far as they can be determined without a geometry kernel: the box around
// the points of a part, and its unit of length.

#ifndef HOST_SHAPES_H
#define HOST_SHAPES_H

#include <optional>
#include <vector>

#include "model/Model.h"
#include "product/Assembly.h"
#include "product/Geometry.h"
#include "product/LengthUnit.h"

namespace host {

// Exchange data: the representations of a PRODUCT_DEFINITION, and those that are related to them
// without a transformation. A box goes around vertices, edges (arcs and B-splines as far as they
// reach, control points of other curves), tessellations and mapped items; points that only place an
// axis, a line or a surface are not points of a part, and a face lies within its edges. A database
// has no shapes.
//
// The time is proportional to the size of the data: what several parts share is followed for each
// of them only up to a limit.
class Shapes {
  public:
    Shapes(const kor::Model& model, const Assembly& assembly);
    ~Shapes();

    // Empty for a part without geometry. In the part's own frame and unit.
    const Box& BoxOf(const Part& part) const;
    // No value if the data do not say it.
    const std::optional<LengthUnit>& UnitOf(const Part& part) const;
    // Whether boxes are missing because of the limit.
    bool IsCut() const { return isCut_; }

  private:
    class Reader;
    struct Shape {
        Box box;
        std::optional<LengthUnit> unit;
    };

    const Assembly& assembly_;
    std::vector<Shape> shapes_;  // by part; empty if there are none
    bool isCut_ = false;
};

}  // namespace host

#endif
