// Vectors and matrices.

#include <gtest/gtest.h>

#include <cmath>

#include "KORMath.h"

namespace {

void ExpectVector(const KORMathVector& vector, double x, double y, double z) {
    EXPECT_NEAR(vector[0], x, 1e-12);
    EXPECT_NEAR(vector[1], y, 1e-12);
    EXPECT_NEAR(vector[2], z, 1e-12);
}

void ExpectColumns(const KORMath3x3Matrix& matrix, const KORMathVector& first,
                   const KORMathVector& second, const KORMathVector& third) {
    ExpectVector(matrix.GetFirstColumn(), first[0], first[1], first[2]);
    ExpectVector(matrix.GetSecondColumn(), second[0], second[1], second[2]);
    ExpectVector(matrix.GetThirdColumn(), third[0], third[1], third[2]);
}

// x to y, y to z, z to x.
const KORMath3x3Matrix kTurn({0, 1, 0}, {0, 0, 1}, {1, 0, 0});

}  // namespace

TEST(Vector, IsZeroUnlessBuiltOtherwise) {
    ExpectVector(KORMathVector(), 0, 0, 0);
    ExpectVector(KORMathVector(1, -2, 3.5), 1, -2, 3.5);
}

TEST(Vector, HasTheEuclideanLength) {
    EXPECT_EQ(KORMathVector().Norm(), 0.0);
    EXPECT_DOUBLE_EQ(KORMathVector(3, 4, 0).Norm(), 5.0);
    EXPECT_DOUBLE_EQ(KORMathVector(-2, 3, -6).Norm(), 7.0);
    EXPECT_DOUBLE_EQ(KORMathVector(0, 0, -1).Norm(), 1.0);
    // The intermediate results must neither overflow nor underflow.
    EXPECT_DOUBLE_EQ(KORMathVector(2e200, 3e200, 6e200).Norm(), 7e200);
    EXPECT_DOUBLE_EQ(KORMathVector(-2e-200, 3e-200, 6e-200).Norm(), 7e-200);
}

TEST(Vector, IsSubtractedScaledAndDivided) {
    ExpectVector(KORMathVector(4, 6, 8) - KORMathVector(1, 2, 3), 3, 4, 5);
    ExpectVector(2.0 * KORMathVector(1, -2, 3), 2, -4, 6);
    ExpectVector(KORMathVector(2, -4, 6) / 2.0, 1, -2, 3);
}

TEST(Vector, GivesValuesThatAreNotFiniteWhenDividedByZero) {
    const KORMathVector vector = KORMathVector(1, -1, 0) / 0.0;
    EXPECT_TRUE(std::isinf(vector[0]));
    EXPECT_TRUE(std::isinf(vector[1]));
    EXPECT_TRUE(std::isnan(vector[2]));
}

TEST(Vector, HasADotAndACrossProduct) {
    EXPECT_DOUBLE_EQ(Dot({1, 2, 3}, {4, -5, 6}), 12.0);
    EXPECT_DOUBLE_EQ(Dot({1, 0, 0}, {0, 1, 0}), 0.0);
    ExpectVector(Cross({1, 0, 0}, {0, 1, 0}), 0, 0, 1);
    ExpectVector(Cross({0, 1, 0}, {1, 0, 0}), 0, 0, -1);
    // (2*6 - 3*5, 3*4 - 1*6, 1*5 - 2*4)
    ExpectVector(Cross({1, 2, 3}, {4, 5, 6}), -3, 6, -3);
}

TEST(Matrix, IsTheIdentityUnlessBuiltOtherwise) {
    ExpectColumns(KORMath3x3Matrix(), {1, 0, 0}, {0, 1, 0}, {0, 0, 1});
}

TEST(Matrix, IsBuiltFromColumns) {
    ExpectColumns(KORMath3x3Matrix({1, 2, 3}, {4, 5, 6}, {7, 8, 9}), {1, 2, 3}, {4, 5, 6},
                  {7, 8, 9});
}

TEST(Matrix, MultipliesLeftAfterRight) {
    // The columns of A * B are A applied to the columns of B; with columns (1,2,3), (4,5,6),
    // (7,8,10) of A that is
    //   2 * (1,2,3)            = (2,4,6)
    //   (4,5,6)                = (4,5,6)
    //   (1,2,3) + (7,8,10)     = (8,10,13)
    const KORMath3x3Matrix a({1, 2, 3}, {4, 5, 6}, {7, 8, 10});
    const KORMath3x3Matrix b({2, 0, 0}, {0, 1, 0}, {1, 0, 1});
    ExpectColumns(a * b, {2, 4, 6}, {4, 5, 6}, {8, 10, 13});
    // B * (x, y, z) = (2x + z, y, z)
    ExpectColumns(b * a, {5, 2, 3}, {14, 5, 6}, {24, 8, 10});
}

TEST(Matrix, MultipliedByTheIdentityStays) {
    const KORMath3x3Matrix a({1, 2, 3}, {4, 5, 6}, {7, 8, 10});
    ExpectColumns(a * KORMath3x3Matrix(), {1, 2, 3}, {4, 5, 6}, {7, 8, 10});
    ExpectColumns(KORMath3x3Matrix() * a, {1, 2, 3}, {4, 5, 6}, {7, 8, 10});
}

TEST(Matrix, HasAnInverse) {
    ExpectColumns(KORMath3x3Matrix().Inverse(), {1, 0, 0}, {0, 1, 0}, {0, 0, 1});
    ExpectColumns(KORMath3x3Matrix({2, 0, 0}, {0, 4, 0}, {0, 0, -5}).Inverse(), {0.5, 0, 0},
                  {0, 0.25, 0}, {0, 0, -0.2});
    // A rotation's inverse is its transpose.
    ExpectColumns(kTurn.Inverse(), {0, 0, 1}, {1, 0, 0}, {0, 1, 0});
    // A shear is undone by the opposite shear, not by its transpose.
    ExpectColumns(KORMath3x3Matrix({1, 0, 0}, {3, 1, 0}, {0, 0, 1}).Inverse(), {1, 0, 0},
                  {-3, 1, 0}, {0, 0, 1});
}

TEST(Matrix, MultipliedByItsInverseIsTheIdentity) {
    const KORMath3x3Matrix a({1, 2, 3}, {4, 5, 6}, {7, 8, 10});
    ExpectColumns(a * a.Inverse(), {1, 0, 0}, {0, 1, 0}, {0, 0, 1});
    ExpectColumns(a.Inverse() * a, {1, 0, 0}, {0, 1, 0}, {0, 0, 1});
}

TEST(Matrix, HasNoFiniteInverseWhenSingular) {
    const KORMath3x3Matrix zero({0, 0, 0}, {0, 0, 0}, {0, 0, 0});
    const KORMathVector column = zero.Inverse().GetFirstColumn();
    EXPECT_FALSE(std::isfinite(column[0]));
    EXPECT_FALSE(std::isfinite(column[1]));
    EXPECT_FALSE(std::isfinite(column[2]));
}
