// Boxes, frames and B-splines.

#include "product/Geometry.h"

#include <algorithm>
#include <cmath>

#include "SdaiAggrInstance.h"
#include "src/Placement.h"

namespace host {

using namespace sdai_names;

// ---- Boxes

void Box::Add(const Point3& point) {
    constexpr double kFarthest = 1e30;
    for (const double value : point) {
        if (!(std::abs(value) <= kFarthest)) return;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        least[i] = std::min(least[i], point[i]);
        most[i] = std::max(most[i], point[i]);
    }
}

void Box::Add(const Box& other) {
    if (other.IsEmpty()) return;
    Add(other.least);
    Add(other.most);
}

Point3 Box::Corner(unsigned number) const {
    Point3 corner;
    for (unsigned i = 0; i < 3; ++i) corner[i] = ((number >> i) & 1) != 0 ? most[i] : least[i];
    return corner;
}

Point3 Box::Middle() const {
    return {least[0] / 2 + most[0] / 2, least[1] / 2 + most[1] / 2, least[2] / 2 + most[2] / 2};
}

Point3 Placed(const Point3& point, const Placement& p) {
    Point3 placed;
    for (std::size_t i = 0; i < 3; ++i) {
        placed[i] = p[i] * point[0] + p[3 + i] * point[1] + p[6 + i] * point[2] + p[9 + i];
    }
    return placed;
}

Box Placed(const Box& box, const Placement& placement) {
    Box around;
    if (box.IsEmpty()) return around;
    for (unsigned corner = 0; corner < 8; ++corner) {
        around.Add(Placed(box.Corner(corner), placement));
    }
    return around;
}

// ---- Frames

namespace {

Placement PlacementOfFrame(const KORMath3x3Matrix& frame, const KORMathVector& origin) {
    Placement placement;
    double* to = placement.data();
    for (const KORMathVector& column :
         {frame.GetFirstColumn(), frame.GetSecondColumn(), frame.GetThirdColumn(), origin}) {
        for (int i = 0; i < 3; ++i) *to++ = column[i];
    }
    return placement;
}

KORMathVector Members(const SdaiPrimitiveH& value, const KORMathVector& byDefault) {
    const SdaiAggrInstance* members = value;
    if (members == nullptr) return byDefault;
    return {members->GetRealMember(0), members->GetRealMember(1), members->GetRealMember(2)};
}

}  // namespace

bool IsFinite(const Placement& placement) {
    return std::all_of(placement.begin(), placement.end(),
                       [](double value) { return std::isfinite(value); });
}

std::optional<Placement> FrameOf(const SdaiPrimitiveH& axes) {
    if (axes.IsKindOf("AXIS2_PLACEMENT_3D"_name)) {
        const KORMathVector z = orx::Normalised(
            Members(axes.GetAttr("AXIS"_name).GetAttr("DIRECTION_RATIOS"_name), {0, 0, 1}));
        const KORMathVector reference =
            Members(axes.GetAttr("REF_DIRECTION"_name).GetAttr("DIRECTION_RATIOS"_name),
                    orx::DefaultReference(z));
        return PlacementOfFrame(
            orx::FrameOf(z, reference),
            Members(axes.GetAttr("LOCATION"_name).GetAttr("COORDINATES"_name), {0, 0, 0}));
    }
    if (axes.IsKindOf("CARTESIAN_TRANSFORMATION_OPERATOR"_name)) {
        const auto direction = [&axes](const SdaiName& name, const KORMathVector& byDefault) {
            return orx::Normalised(
                Members(axes.GetAttr(name).GetAttr("DIRECTION_RATIOS"_name), byDefault));
        };
        const SdaiPrimitiveH scale = axes.GetAttr("SCALE"_name);
        const double factor = scale.exists() ? static_cast<double>(scale) : 1;
        const KORMathVector x = direction("AXIS1"_name, {1, 0, 0});
        const KORMathVector y = direction("AXIS2"_name, {0, 1, 0});
        const KORMathVector z = direction("AXIS3"_name, Cross(x, y));
        return PlacementOfFrame(
            {factor * x, factor * y, factor * z},
            Members(axes.GetAttr("LOCAL_ORIGIN"_name).GetAttr("COORDINATES"_name), {0, 0, 0}));
    }
    return std::nullopt;
}

Placement Inverse(const Placement& p) {
    Placement inverse = kIdentity;
    for (std::size_t i = 0; i < 3; ++i) {
        inverse[9 + i] = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            inverse[3 * j + i] = p[3 * i + j];
            inverse[9 + i] -= p[3 * i + j] * p[9 + j];
        }
    }
    return inverse;
}

// ---- Splines

bool Spline::IsValid() const {
    const auto isPositive = [](double weight) { return weight > 0 && weight < 1e30; };
    return points.size() > degree && weights.size() == points.size() &&
           knots.size() == points.size() + degree + 1 &&
           std::all_of(weights.begin(), weights.end(), isPositive) &&
           std::all_of(knots.begin(), knots.end(),
                       [](double knot) { return std::isfinite(knot); }) &&
           std::is_sorted(knots.begin(), knots.end());
}

Point3 Spline::At(double parameter, std::size_t span) const {
    std::array<double, 4> row[kHighestDegree + 1];  // weighted points, and weights
    for (std::size_t j = 0; j <= degree; ++j) {
        const std::size_t i = span - degree + j;
        for (std::size_t k = 0; k < 3; ++k) row[j][k] = weights[i] * points[i][k];
        row[j][3] = weights[i];
    }
    for (std::size_t level = 1; level <= degree; ++level) {
        for (std::size_t j = degree; j >= level; --j) {
            const std::size_t i = span - degree + j;
            const double width = knots[i + degree + 1 - level] - knots[i];
            const double part = width > 0 ? (parameter - knots[i]) / width : 0;
            for (std::size_t k = 0; k < 4; ++k) {
                row[j][k] = (1 - part) * row[j - 1][k] + part * row[j][k];
            }
        }
    }
    const std::array<double, 4>& sum = row[degree];
    return {sum[0] / sum[3], sum[1] / sum[3], sum[2] / sum[3]};
}

Point3 Spline::Extreme(std::size_t axis, double way) const {
    constexpr int kSteps = 8;
    double farthest = -std::numeric_limits<double>::infinity();
    Point3 found = points.front();
    double parameter = 0;
    std::size_t span = 0;
    const auto look = [&](double at, std::size_t inSpan) {
        const Point3 point = At(at, inSpan);
        if (!(way * point[axis] > farthest)) return false;
        farthest = way * point[axis];
        found = point;
        parameter = at;
        span = inSpan;
        return true;
    };
    for (std::size_t i = degree; i < points.size(); ++i) {
        const double width = knots[i + 1] - knots[i];
        if (!(width > 0)) continue;
        for (int step = 0; step <= kSteps; ++step) look(knots[i] + width * step / kSteps, i);
    }
    if (span == 0) return found;
    const double least = knots[span];
    const double most = knots[span + 1];
    for (double step = (most - least) / kSteps; step > (most - least) * 1e-8;) {
        const bool isFarther = look(std::min(parameter + step, most), span) ||
                               look(std::max(parameter - step, least), span);
        if (!isFarther) step /= 2;
    }
    return found;
}

}  // namespace host
