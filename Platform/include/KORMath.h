// 3D vectors and matrices. Plain values. No operation fails: undefined results, such as the inverse
// of a singular matrix, have values that are not finite.

#ifndef KORMATH_H
#define KORMATH_H

#include <array>

#include "KORExport.h"

class KOR_API KORMathVector {
  public:
    // The zero vector.
    constexpr KORMathVector() : values_{} {}
    constexpr KORMathVector(double x, double y, double z) : values_{x, y, z} {}

    constexpr double operator[](int i) const { return values_[static_cast<unsigned>(i)]; }

    // The Euclidean length.
    double Norm() const;

  private:
    std::array<double, 3> values_;
};

constexpr KORMathVector operator-(const KORMathVector& a, const KORMathVector& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
constexpr KORMathVector operator*(double s, const KORMathVector& v) {
    return {s * v[0], s * v[1], s * v[2]};
}
constexpr KORMathVector operator/(const KORMathVector& v, double s) {
    return {v[0] / s, v[1] / s, v[2] / s};
}
constexpr double Dot(const KORMathVector& a, const KORMathVector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
constexpr KORMathVector Cross(const KORMathVector& a, const KORMathVector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

class KOR_API KORMath3x3Matrix {
  public:
    // The identity.
    constexpr KORMath3x3Matrix() : columns_{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}} {}
    constexpr KORMath3x3Matrix(const KORMathVector& first, const KORMathVector& second,
                               const KORMathVector& third)
        : columns_{{first, second, third}} {}

    constexpr const KORMathVector& GetFirstColumn() const { return columns_[0]; }
    constexpr const KORMathVector& GetSecondColumn() const { return columns_[1]; }
    constexpr const KORMathVector& GetThirdColumn() const { return columns_[2]; }

    // The inverse of any matrix, not only of a rotation.
    KORMath3x3Matrix Inverse() const;

  private:
    std::array<KORMathVector, 3> columns_;
};

// The matrix product: `left` is applied after `right`.
KOR_API KORMath3x3Matrix operator*(const KORMath3x3Matrix& left, const KORMath3x3Matrix& right);

#endif
