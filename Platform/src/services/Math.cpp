// 3D vectors and matrices.

#include "KORMath.h"

#include <cmath>

double KORMathVector::Norm() const { return std::hypot(values_[0], values_[1], values_[2]); }

KORMath3x3Matrix KORMath3x3Matrix::Inverse() const {
    // The rows of the inverse are the cross products of the columns, divided by the determinant.
    const KORMathVector& a = columns_[0];
    const KORMathVector& b = columns_[1];
    const KORMathVector& c = columns_[2];
    const double determinant = Dot(a, Cross(b, c));
    const KORMathVector r1 = Cross(b, c) / determinant;
    const KORMathVector r2 = Cross(c, a) / determinant;
    const KORMathVector r3 = Cross(a, b) / determinant;
    return {{r1[0], r2[0], r3[0]}, {r1[1], r2[1], r3[1]}, {r1[2], r2[2], r3[2]}};
}

static KORMathVector operator*(const KORMath3x3Matrix& matrix, const KORMathVector& v) {
    // The sum starts at +0.0, so that no component becomes -0.0.
    KORMathVector sum;
    const KORMathVector* columns[] = {&matrix.GetFirstColumn(), &matrix.GetSecondColumn(),
                                      &matrix.GetThirdColumn()};
    for (int i = 0; i < 3; ++i) {
        const KORMathVector term = v[i] * *columns[i];
        sum = {sum[0] + term[0], sum[1] + term[1], sum[2] + term[2]};
    }
    return sum;
}

KORMath3x3Matrix operator*(const KORMath3x3Matrix& left, const KORMath3x3Matrix& right) {
    return {left * right.GetFirstColumn(), left * right.GetSecondColumn(),
            left * right.GetThirdColumn()};
}
