// Composing and inverting placements, and reading three reals.

#include <gmock/gmock.h>

#include <cmath>
#include <vector>

#include "KORMath.h"
#include "SdaiAggrInstance.h"
#include "SdaiPrimitiveH.h"
#include "src/Placement.h"

using testing::Each;
using testing::ElementsAre;
using testing::ResultOf;

namespace {

using orx::Compose;
using orx::Inverse;
using orx::kIdentity;
using orx::Placement;

using Reals = std::vector<double>;

Reals RealsOf(const KORMathVector& v) { return {v[0], v[1], v[2]}; }

// The columns of the rotation, then the translation.
Reals RealsOf(const Placement& placement) {
    Reals reals;
    for (const KORMathVector& column :
         {placement.rotation.GetFirstColumn(), placement.rotation.GetSecondColumn(),
          placement.rotation.GetThirdColumn(), placement.translation}) {
        for (int i = 0; i < 3; ++i) reals.push_back(column[i]);
    }
    return reals;
}

// A quarter turn around z: x to y, y to -x.
const Placement kQuarter{{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}, {10, 20, 30}};
// x to y, y to z, z to x.
const Placement kCycle{{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}, {1, 2, 3}};
const Placement kSlanted{{{0.6, 0.8, 0}, {-0.8, 0.6, 0}, {0, 0, 1}}, {5, 10, -1}};

TEST(PlacementTest, IsTheIdentityByDefault) {
    const Reals identity{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    EXPECT_EQ(RealsOf(Placement()), identity);
    EXPECT_EQ(RealsOf(kIdentity), identity);
}

TEST(ComposeTest, AppliesTheInnerPlacementFirst) {
    // The turn takes y to -x, z to z and x to y, and the point (1,2,3) to (-2,1,3).
    EXPECT_THAT(RealsOf(Compose(kQuarter, kCycle)),
                ElementsAre(-1, 0, 0, 0, 0, 1, 0, 1, 0, 8, 21, 33));
    // The cycle takes y to z, -x to -y and z to x, and the point (10,20,30) to (30,10,20).
    EXPECT_THAT(RealsOf(Compose(kCycle, kQuarter)),
                ElementsAre(0, 0, 1, 0, -1, 0, 1, 0, 0, 31, 12, 23));
}

TEST(ComposeTest, ChangesNothingWithTheIdentity) {
    EXPECT_EQ(RealsOf(Compose(kIdentity, kSlanted)), RealsOf(kSlanted));
    EXPECT_EQ(RealsOf(Compose(kSlanted, kIdentity)), RealsOf(kSlanted));
}

TEST(ComposeTest, ScalesWhatIsWithinALargerFrame) {
    const Placement twice{{{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}, {1, 1, 1}};
    const Placement moved{{}, {3, 4, 5}};
    EXPECT_THAT(RealsOf(Compose(twice, moved)), ElementsAre(2, 0, 0, 0, 2, 0, 0, 0, 2, 7, 9, 11));
    EXPECT_THAT(RealsOf(Compose(moved, twice)), ElementsAre(2, 0, 0, 0, 2, 0, 0, 0, 2, 4, 5, 6));
}

TEST(InverseTest, TurnsAndMovesBack) {
    // Back, x goes to -y and y to x: the point (-10,-20,-30) goes to (-20,10,-30).
    EXPECT_THAT(RealsOf(Inverse(kQuarter)), ElementsAre(0, -1, 0, 1, 0, 0, 0, 0, 1, -20, 10, -30));
    // Back, x goes to z, y to x and z to y: the point (-1,-2,-3) goes to (-2,-3,-1).
    EXPECT_THAT(RealsOf(Inverse(kCycle)), ElementsAre(0, 0, 1, 1, 0, 0, 0, 1, 0, -2, -3, -1));
}

TEST(InverseTest, LeavesTheIdentityFromEitherSide) {
    for (const Placement& placement : {kQuarter, kCycle}) {
        EXPECT_EQ(RealsOf(Compose(placement, Inverse(placement))), RealsOf(kIdentity));
        EXPECT_EQ(RealsOf(Compose(Inverse(placement), placement)), RealsOf(kIdentity));
    }
}

TEST(InverseTest, HasNoNegativeZeros) {
    const auto isNegative = [](double value) { return std::signbit(value); };
    EXPECT_THAT(RealsOf(Inverse(kIdentity)), Each(ResultOf(isNegative, false)));
}

TEST(VectorTest, CountsMissingMembersAsZero) {
    SdaiListClassOfSdaiReal list(0, 12);
    for (const double value : {1.0, 2.0, 3.0, 4.0, 5.0}) list.Append(value);
    EXPECT_THAT(RealsOf(orx::VectorAt(list, 0)), ElementsAre(1, 2, 3));
    EXPECT_THAT(RealsOf(orx::VectorAt(list, 1)), ElementsAre(2, 3, 4));
    EXPECT_THAT(RealsOf(orx::VectorAt(list, 3)), ElementsAre(4, 5, 0));
    EXPECT_THAT(RealsOf(orx::VectorAt(list, 5)), ElementsAre(0, 0, 0));
}

TEST(VectorTest, HasADefaultForWhatIsNoAggregate) {
    const KORMathVector byDefault(7, 8, 9);
    SdaiListClassOfSdaiReal list(0, 12);
    EXPECT_THAT(RealsOf(orx::VectorOf(SdaiPrimitiveH(&list), byDefault)), ElementsAre(0, 0, 0));
    list.Append(1.5);
    EXPECT_THAT(RealsOf(orx::VectorOf(SdaiPrimitiveH(&list), byDefault)), ElementsAre(1.5, 0, 0));
    EXPECT_THAT(RealsOf(orx::VectorOf(SdaiPrimitiveH(), byDefault)), ElementsAre(7, 8, 9));
    EXPECT_THAT(RealsOf(orx::VectorOf(SdaiPrimitiveH(2.5), byDefault)), ElementsAre(7, 8, 9));
}

}  // namespace
