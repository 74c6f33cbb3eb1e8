// Boxes, frames and B-splines.

#include "product/Geometry.h"

#include <algorithm>
#include <cmath>

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

Point3 Placed(const Point3& point, const orx::Placement& placement) {
    const std::array<KORMathVector, 3> axes = AxesOf(placement);
    const auto coordinate = [&](int i) {
        return axes[0][i] * point[0] + axes[1][i] * point[1] + axes[2][i] * point[2] +
               placement.translation[i];
    };
    return {coordinate(0), coordinate(1), coordinate(2)};
}

Box Placed(const Box& box, const orx::Placement& placement) {
    Box around;
    if (box.IsEmpty()) return around;
    for (unsigned corner = 0; corner < 8; ++corner) {
        around.Add(Placed(box.Corner(corner), placement));
    }
    return around;
}

// ---- Placements

std::array<KORMathVector, 3> AxesOf(const orx::Placement& placement) {
    return {placement.rotation.GetFirstColumn(), placement.rotation.GetSecondColumn(),
            placement.rotation.GetThirdColumn()};
}

std::array<double, 12> RealsOf(const orx::Placement& placement) {
    const auto [x, y, z] = AxesOf(placement);
    const KORMathVector& t = placement.translation;
    return {x[0], x[1], x[2], y[0], y[1], y[2], z[0], z[1], z[2], t[0], t[1], t[2]};
}

bool IsFinite(const orx::Placement& placement) {
    const std::array<double, 12> reals = RealsOf(placement);
    return std::all_of(reals.begin(), reals.end(),
                       [](double value) { return std::isfinite(value); });
}

namespace {

// What a frame is scaled by.
double ScaleOf(const SdaiPrimitiveH& axes) {
    const SdaiPrimitiveH scale = axes.GetAttr("SCALE"_name);
    return scale.exists() ? static_cast<double>(scale) : 1;
}

}  // namespace

std::optional<orx::Placement> FrameOf(const SdaiPrimitiveH& axes) {
    if (axes.IsKindOf("AXIS2_PLACEMENT_3D"_name)) {
        const orx::AxisPlacement placement = orx::AxisPlacementOf(axes);
        return orx::Placement{placement.Frame(), placement.Location()};
    }
    if (axes.IsKindOf("CARTESIAN_TRANSFORMATION_OPERATOR"_name)) {
        const auto direction = [&axes](const SdaiName& name, const KORMathVector& byDefault) {
            return orx::Normalised(orx::DirectionOf(axes, name, byDefault));
        };
        const double factor = ScaleOf(axes);
        const KORMathVector x = direction("AXIS1"_name, {1, 0, 0});
        const KORMathVector y = direction("AXIS2"_name, {0, 1, 0});
        const KORMathVector z = direction("AXIS3"_name, Cross(x, y));
        return orx::Placement{{factor * x, factor * y, factor * z},
                              orx::PointOf(axes, "LOCAL_ORIGIN"_name)};
    }
    return std::nullopt;
}

std::optional<orx::Placement> InverseFrameOf(const SdaiPrimitiveH& axes) {
    const std::optional<orx::Placement> frame = FrameOf(axes);
    if (!frame) return std::nullopt;
    const orx::Placement back = Inverse(*frame);
    const double scale = ScaleOf(axes);
    const double square = scale * scale;
    const auto [x, y, z] = AxesOf(back);
    return orx::Placement{{x / square, y / square, z / square}, back.translation / square};
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
