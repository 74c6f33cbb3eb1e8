// ComputeABSPlacement, GetPlacement0, 1 and 2, and Minus.

#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <ostream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Ge;
using testing::Gt;
using testing::SizeIs;
using testing::StartsWith;

namespace {

using Reals = std::vector<double>;

constexpr double kRounding = 1e-12;

MATCHER_P(IsNearly, expected, "") {
    if (arg.size() != expected.size()) return false;
    for (std::size_t i = 0; i < arg.size(); ++i) {
        if (!(std::abs(arg[i] - expected[i]) <= kRounding)) return false;
    }
    return true;
}

// The numbers in a text.
Reals Numbers(const std::string& text) {
    Reals numbers;
    std::istringstream stream(text);
    for (double number = 0; stream >> number;) numbers.push_back(number);
    return numbers;
}

// A placement as in the data: coordinate lists "(x,y,z)", "" if unset.
struct Frame {
    std::string location;
    std::string axis;
    std::string refDirection;
};

// The AXIS2_PLACEMENT_3D with this number; its components have the next three numbers.
std::string Instances(unsigned long id, const Frame& frame) {
    const std::pair<const char*, const std::string&> parts[] = {{"CARTESIAN_POINT", frame.location},
                                                                {"DIRECTION", frame.axis},
                                                                {"DIRECTION", frame.refDirection}};
    std::ostringstream placement;
    std::ostringstream others;
    placement << '#' << id << "=AXIS2_PLACEMENT_3D(''";
    for (const auto& [type, coordinates] : parts) {
        ++id;
        if (coordinates.empty()) {
            placement << ",$";
        } else {
            placement << ",#" << id;
            others << '#' << id << '=' << type << "(''," << coordinates << ");";
        }
    }
    return placement.str() + ");" + others.str() + "\n";
}

// A list that functions fill, and a handle on it.
class List {
  public:
    explicit List(const Reals& values = {}) {
        for (const double value : values) list_.Append(value);
    }

    operator SdaiPrimitiveH() { return &list_; }
    SdaiListClassOfSdaiReal*& Pointer() { return pointer_; }
    Reals Values() { return RealsIn(&list_); }

  private:
    SdaiListClassOfSdaiReal list_{0, INT_MAX};
    SdaiListClassOfSdaiReal* pointer_ = &list_;
};

Reals Compose(const SdaiPrimitiveH& daughter, const SdaiPrimitiveH& mother) {
    List list;
    ComputeABSPlacement(daughter, mother, list.Pointer());
    return list.Values();
}

const Frame kOrigin{"(0.,0.,0.)", "(0.,0.,1.)", "(1.,0.,0.)"};
// A quarter turn about z: x along y, y along -x.
const Frame kTurned{"(1.,2.,3.)", "(0.,0.,1.)", "(0.,1.,0.)"};
// The axis along x, x along y; so y, the cross product of the two, along z.
const Frame kCyclic{"(4.,6.,8.)", "(1.,0.,0.)", "(0.,1.,0.)"};

// The daughter kTurned in the mother kCyclic. kTurned takes x to y and y to -x, its inverse x to -y
// and y to x; kCyclic takes x to y, y to z and z to x. Combined: x to -z, y to y, z to x.
const Reals kTurnedInCyclic{0, 0, -1, 0, 1, 0, 1, 0, 0, 3, 4, 5};
// The inverse: the transpose, and the negated translation.
const Reals kCyclicInTurned{0, 0, 1, 0, 1, 0, -1, 0, 0, -3, -4, -5};

}  // namespace

// ---- ComputeABSPlacement

namespace {

struct Composition {
    const char* description;
    Frame daughter;
    Frame mother;
    Reals expected;
};

void PrintTo(const Composition& composition, std::ostream* stream) {
    *stream << composition.description;
}

const double kHalf = std::sqrt(0.5);

const Composition kCompositions[] = {
    {"TranslatedFrames",
     {"(1.,2.,3.)", "(0.,0.,1.)", "(1.,0.,0.)"},
     {"(4.,6.,8.)", "(0.,0.,1.)", "(1.,0.,0.)"},
     {1, 0, 0, 0, 1, 0, 0, 0, 1, 3, 4, 5}},
    {"IdenticalFrames", kCyclic, kCyclic, {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}},
    {"TwoTurnedFrames", kTurned, kCyclic, kTurnedInCyclic},
    {"TwoTurnedFramesTheOtherWayRound", kCyclic, kTurned, kCyclicInTurned},
    // The mother's frame itself; the translation is not rotated.
    {"TurnedMother",
     {"(4.,6.,8.)", "(0.,0.,1.)", "(1.,0.,0.)"},
     kTurned,
     {0, 1, 0, -1, 0, 0, 0, 0, 1, -3, -4, -5}},
    // The inverse of the daughter's frame.
    {"TurnedDaughter",
     kTurned,
     {"(4.,6.,8.)", "(0.,0.,1.)", "(1.,0.,0.)"},
     {0, -1, 0, 1, 0, 0, 0, 0, 1, 3, 4, 5}},
    {"ReversedAxis",
     kOrigin,
     {"(0.,0.,0.)", "(0.,0.,-1.)", "(1.,0.,0.)"},
     {1, 0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0}},
    {"TiltedAxis",
     kOrigin,
     {"(0.,0.,0.)", "(0.,3.,4.)", "(1.,0.,0.)"},
     {1, 0, 0, 0, .8, -.6, 0, .6, .8, 0, 0, 0}},
    // The component of the reference direction along the axis does not count: with (0,3,4), (5,3,4)
    // is equivalent to (5,0,0).
    {"ObliqueReferenceDirection",
     kOrigin,
     {"(0.,0.,0.)", "(0.,3.,4.)", "(5.,3.,4.)"},
     {1, 0, 0, 0, .8, -.6, 0, .6, .8, 0, 0, 0}},
    {"ObliqueReferenceDirectionOfMother",
     kOrigin,
     {"(0.,0.,0.)", "(0.,0.,1.)", "(1.,0.,1.)"},
     {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}},
    {"ObliqueReferenceDirectionOfDaughter",
     {"(0.,0.,0.)", "(0.,0.,1.)", "(1.,0.,1.)"},
     kOrigin,
     {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}},
    // Only the direction of a vector counts, not its length.
    {"LongAndShortDirections",
     {"(0.,0.,0.)", "(0.,0.,1.E6)", "(0.,1.E-6,0.)"},
     {"(3.,4.,5.)", "(1.E-6,0.,0.)", "(0.,2.,0.)"},
     kTurnedInCyclic},
    // The defaults are the axis z, the reference direction x (y if the axis is along x) and the
    // origin.
    {"NothingSet",
     {"(1.,2.,3.)", "(0.,0.,1.)", "(1.,0.,0.)"},
     {},
     {1, 0, 0, 0, 1, 0, 0, 0, 1, -1, -2, -3}},
    {"NothingSetInTheDaughter", {}, kCyclic, {0, 1, 0, 0, 0, 1, 1, 0, 0, 4, 6, 8}},
    {"NoAxis", kOrigin, {"(0.,0.,0.)", "", "(0.,1.,0.)"}, {0, 1, 0, -1, 0, 0, 0, 0, 1, 0, 0, 0}},
    {"NoReferenceDirection",
     kOrigin,
     {"(0.,0.,0.)", "(0.,3.,4.)", ""},
     {1, 0, 0, 0, .8, -.6, 0, .6, .8, 0, 0, 0}},
    {"NoReferenceDirectionAndAnAxisAcrossX",
     kOrigin,
     {"(0.,0.,0.)", "(1.,1.,0.)", ""},
     {kHalf, -kHalf, 0, 0, 0, -1, kHalf, kHalf, 0, 0, 0, 0}},
    {"NoReferenceDirectionAndAnAxisAlongX",
     kOrigin,
     {"(0.,0.,0.)", "(5.,0.,0.)", ""},
     {0, 1, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0}},
    {"NoReferenceDirectionAndAnAxisAgainstX",
     kOrigin,
     {"(0.,0.,0.)", "(-2.,0.,0.)", ""},
     {0, 1, 0, 0, 0, -1, -1, 0, 0, 0, 0, 0}},
    {"NoLocation",
     {"", "(0.,0.,1.)", "(0.,1.,0.)"},
     {"(3.,4.,5.)", "(1.,0.,0.)", "(0.,1.,0.)"},
     kTurnedInCyclic},
    {"LocationInThePlane",
     {"(1.,2.)", "(0.,0.,1.)", "(1.,0.,0.)"},
     {"(4.,6.,8.)", "(0.,0.,1.)", "(1.,0.,0.)"},
     {1, 0, 0, 0, 1, 0, 0, 0, 1, 3, 4, 8}},
    {"IntegersForReals",
     {"(1,2,3)", "(0,0,1)", "(0,1,0)"},
     {"(4,6,8)", "(1,0,0)", "(0,1,0)"},
     kTurnedInCyclic},
};

class ComputeABSPlacementOf : public testing::TestWithParam<Composition> {};

INSTANTIATE_TEST_SUITE_P(Frames, ComputeABSPlacementOf, testing::ValuesIn(kCompositions),
                         [](const auto& composition) { return composition.param.description; });

}  // namespace

TEST_P(ComputeABSPlacementOf, GivesRotationAndDifferenceOfOrigins) {
    const TestModel model("AUTOMOTIVE_DESIGN",
                          Instances(1, GetParam().daughter) + Instances(5, GetParam().mother));
    EXPECT_THAT(Compose(model[1], model[5]), IsNearly(GetParam().expected));
    const TraceCapture trace;
    EXPECT_THAT(Compose(model[1], model[5]), IsNearly(GetParam().expected)) << "traced";
}

TEST(ComputeABSPlacement, TakesTheDifferenceOfTheOriginsAsItIs) {
    const TestModel model("AUTOMOTIVE_DESIGN",
                          Instances(1, {"(0.1,1.E10,-7.)", "(0.,3.,4.)", "(1.,1.,0.)"}) +
                              Instances(5, {"(0.3,1.,1.E-10)", "(1.,1.,1.)", "(0.,1.,0.)"}));
    const Reals placement = Compose(model[1], model[5]);
    ASSERT_THAT(placement, SizeIs(12));
    EXPECT_EQ(placement[9], 0.3 - 0.1);
    EXPECT_EQ(placement[10], 1.0 - 1e10);
    EXPECT_EQ(placement[11], 1e-10 + 7.0);
}

TEST(ComputeABSPlacement, AppendsToWhatTheListHolds) {
    const TestModel model("AUTOMOTIVE_DESIGN", Instances(1, kTurned) + Instances(5, kCyclic));
    List list({7, 8});
    ComputeABSPlacement(model[1], model[5], list.Pointer());
    ComputeABSPlacement(model[5], model[1], list.Pointer());
    Reals expected{7, 8};
    expected.insert(expected.end(), kTurnedInCyclic.begin(), kTurnedInCyclic.end());
    expected.insert(expected.end(), kCyclicInTurned.begin(), kCyclicInTurned.end());
    EXPECT_THAT(list.Values(), IsNearly(expected));
}

TEST(ComputeABSPlacement, LeavesAListThatIsNotThere) {
    const TestModel model("AUTOMOTIVE_DESIGN", Instances(1, kTurned) + Instances(5, kCyclic));
    SdaiListClassOfSdaiReal* none = nullptr;
    ComputeABSPlacement(model[1], model[5], none);
    EXPECT_EQ(none, nullptr);
}

TEST(ComputeABSPlacement, AppendsTwelveValuesWhateverThePlacementsAre) {
    const TestModel model("AUTOMOTIVE_DESIGN", Instances(1, kTurned));
    for (const SdaiPrimitiveH& other : {SdaiPrimitiveH(), "text"_h, 3_h, model[2]}) {
        EXPECT_THAT(Compose(other, model[1]), SizeIs(12));
        EXPECT_THAT(Compose(model[1], other), SizeIs(12));
        EXPECT_THAT(Compose(other, other), SizeIs(12));
    }
}

TEST(ComputeABSPlacement, TellsItsStepsInTheTrace) {
    const TestModel model("AUTOMOTIVE_DESIGN",
                          Instances(1, {"(1.,2.5,-3.)", "(0.,0.,1.)", "(1.,0.,0.)"}) +
                              Instances(5, {"(4.,6.,8.)", "(0.,0.,1.)", "(1.,0.,0.)"}));
    TraceCapture trace;
    Compose(model[1], model[5]);
    auto messages = trace.Messages("void ComputeABSPlacement ->");

    ASSERT_THAT(messages, SizeIs(Gt(2U)));
    EXPECT_EQ(messages[0], "Creation de la matrice fille");
    // The nine values are in three lines after the heading.
    const std::string heading = "RelatedAxisMatrix:";
    ASSERT_THAT(messages[1], StartsWith(heading));
    const auto mother = std::find(messages.begin(), messages.end(), "Creation de la matrice mere");
    std::string values = messages[1].substr(heading.size());
    for (auto line = messages.begin() + 2; line != mother; ++line) values += " " + *line;
    EXPECT_THAT(Numbers(values), ElementsAre(1, 0, 0, 0, 1, 0, 0, 0, 1));

    messages.erase(messages.begin(), mother);
    ASSERT_THAT(messages, SizeIs(Ge(10U)));
    messages.resize(10);
    EXPECT_THAT(
        messages,
        ElementsAre(
            "Creation de la matrice mere", "composition des matrices:",
            "renseignement de la translation", AllOf(StartsWith("x_ed"), EndsWith("1")),
            AllOf(StartsWith("y_ed"), EndsWith("2.5")), AllOf(StartsWith("z_ed"), EndsWith("-3")),
            AllOf(StartsWith("x_ing"), EndsWith("4")), AllOf(StartsWith("y_ing"), EndsWith("6")),
            AllOf(StartsWith("z_ing"), EndsWith("8")), "Valuation de la liste de sortie"));
}

// ---- Directions that span no frame

namespace {

struct Degenerate {
    const char* description;
    Frame frame;
};

void PrintTo(const Degenerate& degenerate, std::ostream* stream) {
    *stream << degenerate.description;
}

const Degenerate kDegenerates[] = {
    {"NoLengthOfAxis", {"(4.,6.,8.)", "(0.,0.,0.)", "(1.,0.,0.)"}},
    {"NoLengthOfReferenceDirection", {"(4.,6.,8.)", "(0.,0.,1.)", "(0.,0.,0.)"}},
    {"ParallelDirections", {"(4.,6.,8.)", "(0.,0.,2.)", "(0.,0.,5.)"}},
    {"OppositeDirections", {"(4.,6.,8.)", "(1.,0.,0.)", "(-1.,0.,0.)"}},
};

class DegenerateFrame : public testing::TestWithParam<Degenerate> {};

INSTANTIATE_TEST_SUITE_P(Frames, DegenerateFrame, testing::ValuesIn(kDegenerates),
                         [](const auto& degenerate) { return degenerate.param.description; });

const auto kIsNotFinite =
    testing::ResultOf([](double value) { return std::isfinite(value); }, testing::IsFalse());

}  // namespace

TEST_P(DegenerateFrame, GivesARotationThatIsNotFinite) {
    const TestModel model("AUTOMOTIVE_DESIGN",
                          Instances(1, GetParam().frame) + Instances(5, kOrigin));
    const std::pair<unsigned long, unsigned long> orders[] = {{1, 5}, {5, 1}};
    for (const auto& [daughter, mother] : orders) {
        const Reals placement = Compose(model[daughter], model[mother]);
        ASSERT_THAT(placement, SizeIs(12));
        EXPECT_THAT(Reals(placement.begin(), placement.begin() + 9), Contains(kIsNotFinite));
        const double sign = daughter == 1 ? -1 : 1;
        EXPECT_EQ(Reals(placement.begin() + 9, placement.end()),
                  (Reals{sign * 4, sign * 6, sign * 8}));
    }
}

TEST_P(DegenerateFrame, FillsTheListOfGetPlacement1) {
    const TestModel model("AUTOMOTIVE_DESIGN",
                          Instances(10, GetParam().frame) + Instances(20, kOrigin) + R"(
                          #1=SHAPE_REPRESENTATION('',(#10),$);
                          #2=ITEM_DEFINED_TRANSFORMATION('','',#10,#20);
                          #3=(REPRESENTATION_RELATIONSHIP('','',#1,$)
                              REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#2)
                              SHAPE_REPRESENTATION_RELATIONSHIP());
                          #4=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#3,$);)");
    const TraceCapture trace;
    List list;
    GetPlacement1(model[4], list);
    EXPECT_THAT(list.Values(), SizeIs(12));
    EXPECT_THAT(list.Values(), Contains(kIsNotFinite));
}

// ---- Properties of all frames

namespace {

using Matrix = Reals;  // nine values, column by column

Matrix Rotation(const Reals& placement) { return {placement.begin(), placement.begin() + 9}; }
Reals Translation(const Reals& placement) { return {placement.begin() + 9, placement.end()}; }
Reals Column(const Matrix& matrix, int i) {
    return {matrix.begin() + 3 * i, matrix.begin() + 3 * i + 3};
}

double Dot(const Reals& a, const Reals& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Reals CrossProduct(const Reals& a, const Reals& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Matrix Transposed(const Matrix& m) {
    return {m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]};
}

Matrix Product(const Matrix& left, const Matrix& right) {
    const Matrix rows = Transposed(left);
    Matrix product;
    for (int column = 0; column < 3; ++column) {
        for (int row = 0; row < 3; ++row) {
            product.push_back(Dot(Column(rows, row), Column(right, column)));
        }
    }
    return product;
}

const Matrix kIdentity{1, 0, 0, 0, 1, 0, 0, 0, 1};

// Placements with random locations and directions, from #100 on, and one at the origin.
class RandomFrames : public testing::Test {
  protected:
    static constexpr unsigned long kCount = 300;
    static constexpr unsigned long kFirst = 100;

    RandomFrames() {
        std::string data = Instances(1, kOrigin);
        for (unsigned long id = kFirst; id < kFirst + 4 * kCount; id += 4) {
            locations_.push_back(Vector(1000));
            axes_.push_back(Direction());
            refDirections_.push_back(Direction());
            while (AreNearlyParallel(axes_.back(), refDirections_.back())) {
                refDirections_.back() = Direction();
            }
            data += Instances(id, {Coordinates(locations_.back()), Coordinates(axes_.back()),
                                   Coordinates(refDirections_.back())});
        }
        model_ = std::make_unique<TestModel>("AUTOMOTIVE_DESIGN", data);
    }

    SdaiPrimitiveH Origin() const { return (*model_)[1]; }
    SdaiPrimitiveH Placement(std::size_t i) const { return (*model_)[kFirst + 4 * (i % kCount)]; }

    std::vector<Reals> locations_;
    std::vector<Reals> axes_;
    std::vector<Reals> refDirections_;

  private:
    static double Square(const Reals& vector) { return Dot(vector, vector); }

    // Directions at an angle of less than about six degrees, where rounding errors grow.
    static bool AreNearlyParallel(const Reals& a, const Reals& b) {
        return Square(CrossProduct(a, b)) < .01 * Square(a) * Square(b);
    }

    static std::string Coordinates(const Reals& values) {
        std::ostringstream text;
        text.precision(17);
        text << std::showpoint << std::uppercase << '(' << values[0] << ',' << values[1] << ','
             << values[2] << ')';
        return text.str();
    }

    Reals Vector(double size) {
        std::uniform_real_distribution<double> coordinate(-size, size);
        return {coordinate(random_), coordinate(random_), coordinate(random_)};
    }
    Reals Direction() {
        Reals direction;
        do direction = Vector(10);
        while (Square(direction) < 1);
        return direction;
    }

    std::mt19937 random_{20240229};  // the same frames in every run
    std::unique_ptr<TestModel> model_;
};

}  // namespace

TEST_F(RandomFrames, GiveRotations) {
    for (std::size_t i = 0; i < kCount; ++i) {
        const Matrix rotation = Rotation(Compose(Placement(i), Placement(i + 1)));
        EXPECT_THAT(Product(Transposed(rotation), rotation), IsNearly(kIdentity));
        const double determinant =
            Dot(Column(rotation, 0), CrossProduct(Column(rotation, 1), Column(rotation, 2)));
        EXPECT_NEAR(determinant, 1, kRounding);
    }
}

// The axis is the third column, and the reference direction is in the plane of the first and the
// third, on the side of the first: this determines the rotation.
TEST_F(RandomFrames, GiveThemselvesSeenFromTheOrigin) {
    for (std::size_t i = 0; i < kCount; ++i) {
        const Reals placement = Compose(Origin(), Placement(i));
        const Matrix frame = Rotation(placement);
        const double length = std::sqrt(Dot(axes_[i], axes_[i]));
        EXPECT_THAT(Column(frame, 2), IsNearly(Reals{axes_[i][0] / length, axes_[i][1] / length,
                                                     axes_[i][2] / length}));
        EXPECT_NEAR(Dot(Column(frame, 1), refDirections_[i]), 0, kRounding * 20);
        EXPECT_GT(Dot(Column(frame, 0), refDirections_[i]), 0);
        EXPECT_EQ(Translation(placement), locations_[i]);
    }
}

TEST_F(RandomFrames, GiveTheirInverseForAMotherAtTheOrigin) {
    for (std::size_t i = 0; i < kCount; ++i) {
        const Matrix frame = Rotation(Compose(Origin(), Placement(i)));
        EXPECT_THAT(Rotation(Compose(Placement(i), Origin())), IsNearly(Transposed(frame)));
    }
}

TEST_F(RandomFrames, AreTakenFromDaughterToMother) {
    for (std::size_t i = 0; i < kCount; ++i) {
        const Matrix daughter = Rotation(Compose(Origin(), Placement(i)));
        const Matrix mother = Rotation(Compose(Origin(), Placement(i + 1)));
        const Reals placement = Compose(Placement(i), Placement(i + 1));
        EXPECT_THAT(Product(Rotation(placement), daughter), IsNearly(mother));
        const Reals& to = locations_[(i + 1) % kCount];
        EXPECT_EQ(Translation(placement), (Reals{to[0] - locations_[i][0], to[1] - locations_[i][1],
                                                 to[2] - locations_[i][2]}));
    }
}

TEST_F(RandomFrames, GiveTheIdentityWhenTheyAreTheSame) {
    for (std::size_t i = 0; i < kCount; ++i) {
        const Reals placement = Compose(Placement(i), Placement(i));
        EXPECT_THAT(Rotation(placement), IsNearly(kIdentity));
        EXPECT_EQ(Translation(placement), (Reals{0, 0, 0}));
    }
}

TEST_F(RandomFrames, ComposeAlongAChain) {
    for (std::size_t i = 0; i < kCount; ++i) {
        const Matrix first = Rotation(Compose(Placement(i), Placement(i + 1)));
        const Matrix second = Rotation(Compose(Placement(i + 1), Placement(i + 2)));
        EXPECT_THAT(Product(second, first),
                    IsNearly(Rotation(Compose(Placement(i), Placement(i + 2)))));
    }
}

// ---- GetPlacement0

namespace {

// T1 is #10 (kTurned), T2 is #20 (kCyclic); #30 and #40 have the values of T1 and T2. The context
// is #5.
std::string Wiring(const std::string& rep1Items, const std::string& rep2Items) {
    return Instances(10, kTurned) + Instances(20, kCyclic) + Instances(30, kTurned) +
           Instances(40, kCyclic) + R"(
           #1=ITEM_DEFINED_TRANSFORMATION('','',#10,#20);
           #2=SHAPE_REPRESENTATION('',()" +
           rep1Items + R"(),$);
           #3=SHAPE_REPRESENTATION('',()" +
           rep2Items + R"(),$);
           #4=(REPRESENTATION_RELATIONSHIP('','',#2,#3)
               REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#1)
               SHAPE_REPRESENTATION_RELATIONSHIP());
           #5=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#4,$);)";
}

const char* const kLabel0 = "void GetPlacement0 ->";
const char* const kBegin = " CALCUL POSITIONNEMENT ...";
const char* const kImpossible = "CALCUL POSITIONNEMENT ABSOLU IMPOSSIBLE";

enum class Outcome { Straight, Crossed, None };

struct WiringCase {
    const char* description;
    const char* role;
    const char* rep1Items;
    const char* rep2Items;
    Outcome outcome;
    unsigned long comparisons;  // of items with T1 or T2
};

void PrintTo(const WiringCase& wiring, std::ostream* stream) { *stream << wiring.description; }

const WiringCase kWirings[] = {
    {"T1InRep1", "REP_1", "#10", "#20", Outcome::Straight, 1},
    {"T1LastInRep1", "REP_1", "#30,#40,#10", "#20", Outcome::Straight, 3},
    {"T1FirstInRep1", "REP_1", "#10,#30,#40", "#20", Outcome::Straight, 1},
    {"BothInRep1", "REP_1", "#20,#10", "#40", Outcome::Straight, 2},
    // T2 is not searched for in REP_1.
    {"T2InRep1", "REP_1", "#20", "#10", Outcome::None, 1},
    {"NeitherInRep1", "REP_1", "#30,#40", "#10,#20", Outcome::None, 2},
    {"NothingInRep1", "REP_1", "", "#10,#20", Outcome::None, 0},
    {"T2InRep2", "REP_2", "#10", "#20", Outcome::Straight, 1},
    {"T2LastInRep2", "REP_2", "#10", "#30,#40,#20", Outcome::Straight, 3},
    // The search for T2 is completed before the search for T1.
    {"T1BeforeT2InRep2", "REP_2", "#10", "#10,#20", Outcome::Straight, 2},
    {"T1InRep2", "REP_2", "#20", "#10", Outcome::Crossed, 2},
    {"T1AmongOthersInRep2", "REP_2", "#20", "#30,#10,#40", Outcome::Crossed, 5},
    {"NeitherInRep2", "REP_2", "#10,#20", "#30,#40", Outcome::None, 4},
    {"NothingInRep2", "REP_2", "#10,#20", "", Outcome::None, 0},
};

class GetPlacement0Of : public testing::TestWithParam<WiringCase> {
  protected:
    const WiringCase& wiring_ = GetParam();
    const TestModel model_{"AUTOMOTIVE_DESIGN", Wiring(wiring_.rep1Items, wiring_.rep2Items)};
    const Reals before_{7, 8, 9};
    const Reals expected_ = wiring_.outcome == Outcome::Straight  ? kTurnedInCyclic
                            : wiring_.outcome == Outcome::Crossed ? kCyclicInTurned
                                                                  : before_;
};

INSTANTIATE_TEST_SUITE_P(Wirings, GetPlacement0Of, testing::ValuesIn(kWirings),
                         [](const auto& wiring) { return wiring.param.description; });

}  // namespace

TEST_P(GetPlacement0Of, ReplacesTheListOrLeavesIt) {
    List list(before_);
    GetPlacement0(model_[5], wiring_.role, list);
    EXPECT_THAT(list.Values(), IsNearly(expected_));
    GetPlacement0(model_[5], wiring_.role, list);
    EXPECT_THAT(list.Values(), IsNearly(expected_)) << "a second time";
}

TEST_P(GetPlacement0Of, GivesTheSameThroughGetPlacement1Or2) {
    List list(before_);
    const bool first = std::string(wiring_.role) == "REP_1";
    const auto function = first ? GetPlacement1 : GetPlacement2;
    EXPECT_EQ(TextIn(function(model_[5], list)),
              first ? "GetPlacement1 done" : "GetPlacement2 done");
    EXPECT_THAT(list.Values(), IsNearly(expected_));
}

TEST_P(GetPlacement0Of, ComparesNoMoreItemsThanItMust) {
    List list(before_);
    TraceCapture trace;
    GetPlacement0(model_[5], wiring_.role, list);
    EXPECT_THAT(list.Values(), IsNearly(expected_)) << "traced";
    EXPECT_THAT(trace.Lines(),
                Contains("   SdaiPrimitiveH IsSame0-> {").Times(wiring_.comparisons));
}

TEST_P(GetPlacement0Of, SaysHowTheItemsAreWired) {
    List list(before_);
    TraceCapture trace;
    GetPlacement0(model_[5], wiring_.role, list);
    auto messages = trace.Messages(kLabel0);
    const char* const fetching = "Recuperation des placements";
    if (wiring_.outcome == Outcome::None) {
        EXPECT_THAT(messages, ElementsAre(kBegin, fetching,
                                          "!!! CABLAGE NON CONFORME A LA NORME !!!", kImpossible));
        return;
    }
    ASSERT_THAT(messages, SizeIs(Gt(4U)));
    messages.resize(4);
    EXPECT_THAT(messages,
                ElementsAre(kBegin, fetching,
                            wiring_.outcome == Outcome::Straight ? "... Cablage NON croise"
                                                                 : "... Cablage croise",
                            "GetPlacement0 - Creation de la matrice TRANSFORM_ITEM_1"));
}

// A crossed translation is the straight one times -1, zeros included.
TEST(GetPlacement0, TurnsTheSignOfACrossedTranslation) {
    const char* const origin = "(1.,2.,3.)";
    const TestModel model("AUTOMOTIVE_DESIGN",
                          Instances(10, {origin, "(0.,0.,1.)", "(1.,0.,0.)"}) +
                              Instances(20, {"(1.,2.,5.)", "(0.,0.,1.)", "(1.,0.,0.)"}) + R"(
        #1=ITEM_DEFINED_TRANSFORMATION('','',#10,#20);
        #2=SHAPE_REPRESENTATION('',(#10),$);
        #3=SHAPE_REPRESENTATION('',(#20),$);
        #4=(REPRESENTATION_RELATIONSHIP('','',#3,#2)
            REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#1)
            SHAPE_REPRESENTATION_RELATIONSHIP());
        #5=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#4,$);
        #6=(REPRESENTATION_RELATIONSHIP('','',#2,#3)
            REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#1)
            SHAPE_REPRESENTATION_RELATIONSHIP());
        #7=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#6,$);)");
    const auto signs = [&model](unsigned long context, const Reals& translation) {
        List list;
        GetPlacement0(model[context], "REP_2", list);
        const Reals values = list.Values();
        std::vector<bool> negative;
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(values.at(9 + i), translation[i]);
            negative.push_back(std::signbit(values.at(9 + i)));
        }
        return negative;
    };
    EXPECT_THAT(signs(7, {0, 0, 2}), ElementsAre(false, false, false));
    EXPECT_THAT(signs(5, {0, 0, -2}), ElementsAre(true, true, true));
}

TEST(GetPlacement0, TellsItsStepsInTheTrace) {
    const Frame translated{"(4.,6.,8.5)", "(0.,0.,1.)", "(1.,0.,0.)"};
    const TestModel model(
        "AUTOMOTIVE_DESIGN",
        Instances(10, {"(1.,2.,3.)", "(0.,0.,1.)", "(1.,0.,0.)"}) + Instances(20, translated) + R"(
        #1=ITEM_DEFINED_TRANSFORMATION('','',#10,#20);
        #2=SHAPE_REPRESENTATION('',(#10),$);
        #4=(REPRESENTATION_RELATIONSHIP('','',#2,$)
            REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#1)
            SHAPE_REPRESENTATION_RELATIONSHIP());
        #5=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#4,$);)");
    List list;
    TraceCapture trace;
    GetPlacement0(model[5], "REP_1", list);
    const auto messages = trace.Messages(kLabel0);

    // In this order; values of matrices and of the list may come between them.
    const testing::Matcher<std::string> expected[] = {
        kBegin,
        "Recuperation des placements",
        "... Cablage NON croise",
        "GetPlacement0 - Creation de la matrice TRANSFORM_ITEM_1",
        StartsWith("Axis1_Matrix:"),
        "GetPlacement0 - Creation de la matrice TRANSFORM_ITEM_2",
        StartsWith("Axis2_Matrix:"),
        "Composition des placements",
        "Renseignement de la translation",
        AllOf(StartsWith("x_1"), EndsWith("1")),
        AllOf(StartsWith("y_1"), EndsWith("2")),
        AllOf(StartsWith("z_1"), EndsWith("3")),
        AllOf(StartsWith("x_2"), EndsWith("4")),
        AllOf(StartsWith("y_2"), EndsWith("6")),
        AllOf(StartsWith("z_2"), EndsWith("8.5")),
        AllOf(StartsWith("t_1"), EndsWith("3")),
        AllOf(StartsWith("t_2"), EndsWith("4")),
        AllOf(StartsWith("t_3"), EndsWith("5.5")),
        "Valuation de la liste de sortie",
        StartsWith("Ligne 1"),
        StartsWith("Ligne 2"),
        StartsWith("Ligne 3"),
        StartsWith("Ligne 4"),
        "Positionnement calcule:",
        "1  0  0",
        "0  1  0",
        "0  0  1",
        "3  4  5.5",
        "...CALCUL POSITIONNEMENT FINI",
    };
    auto message = messages.begin();
    for (const auto& matcher : expected) {
        message = std::find_if(message, messages.end(),
                               [&](const std::string& text) { return matcher.Matches(text); });
        ASSERT_NE(message, messages.end())
            << "no line that " << testing::DescribeMatcher<std::string>(matcher) << " there";
        ++message;
    }
    EXPECT_EQ(message, messages.end()) << "the last line closes the calculation";
    // The list is in four lines, just before the last.
    ASSERT_THAT(messages, SizeIs(Ge(6U)));
    EXPECT_EQ(messages[messages.size() - 6], "Positionnement calcule:");
}

TEST(GetPlacement0, TracesTheNineValuesOfItsMatrices) {
    const TestModel model("AUTOMOTIVE_DESIGN", Instances(10, kOrigin) + R"(
        #1=ITEM_DEFINED_TRANSFORMATION('','',#10,#10);
        #2=SHAPE_REPRESENTATION('',(#10),$);
        #4=(REPRESENTATION_RELATIONSHIP('','',#2,$)
            REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#1)
            SHAPE_REPRESENTATION_RELATIONSHIP());
        #5=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#4,$);)");
    List list;
    TraceCapture trace;
    GetPlacement0(model[5], "REP_1", list);
    std::string text;
    for (const std::string& message : trace.Messages(kLabel0)) text += message + " ";
    const std::string heading = "Axis1_Matrix:";
    const std::size_t begin = text.find(heading) + heading.size();
    const std::size_t end = text.find("GetPlacement0 - ", begin);
    EXPECT_THAT(Numbers(text.substr(begin, end - begin)), ElementsAre(1, 0, 0, 0, 1, 0, 0, 0, 1));
}

TEST(GetPlacement0, LeavesTheListWhenAnArgumentIsMissing) {
    const TestModel model("AUTOMOTIVE_DESIGN", Wiring("#10", "#20"));
    List list({7, 8});
    TraceCapture trace;
    GetPlacement0({}, "REP_1", list);
    EXPECT_THAT(trace.Messages(kLabel0), ElementsAre(kBegin, kImpossible));
    EXPECT_THAT(list.Values(), ElementsAre(7, 8));
}

TEST(GetPlacement0, CalculatesNothingWithoutAList) {
    const TestModel model("AUTOMOTIVE_DESIGN", Wiring("#10", "#20"));
    for (const SdaiPrimitiveH& context : {model[5], SdaiPrimitiveH()}) {
        TraceCapture trace;
        GetPlacement0(context, "REP_1", {});
        EXPECT_THAT(trace.Messages(kLabel0), ElementsAre(kBegin, kImpossible));
    }
}

TEST(GetPlacement0, SurvivesAListThatIsNone) {
    const TestModel model("AUTOMOTIVE_DESIGN", Wiring("#10", "#20"));
    for (const SdaiPrimitiveH& list : {"text"_h, 3_h, model[5]}) {
        GetPlacement0(model[5], "REP_1", list);
        EXPECT_TRUE(list.exists());
    }
}

TEST(GetPlacement0, LeavesTheListWhereTheContextIsNone) {
    const TestModel model("AUTOMOTIVE_DESIGN", R"(
        #1=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,$);
        #2=(REPRESENTATION_RELATIONSHIP('','',$,$)
            REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION($)SHAPE_REPRESENTATION_RELATIONSHIP());
        #3=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#2,$);
        #4=PRODUCT('','','',());)");
    for (const SdaiPrimitiveH& context : {model[1], model[3], model[4], "text"_h, 3_h}) {
        for (const char* role : {"REP_1", "REP_2"}) {
            List list({7, 8});
            GetPlacement0(context, role, list);
            EXPECT_THAT(list.Values(), ElementsAre(7, 8));
        }
    }
}

TEST(GetPlacement0, LeavesTheListForARoleThatIsNone) {
    const TestModel model("AUTOMOTIVE_DESIGN", Wiring("#10,#20", "#10,#20"));
    for (const char* role : {"", "REP_3", "NAME", "TRANSFORMATION_OPERATOR"}) {
        List list({7, 8});
        GetPlacement0(model[5], role, list);
        EXPECT_THAT(list.Values(), ElementsAre(7, 8)) << role;
    }
}

// A cartesian operator has no transformation items.
TEST(GetPlacement0, LeavesTheListForACartesianOperator) {
    const TestModel model("AUTOMOTIVE_DESIGN", Instances(10, kTurned) + R"(
        #1=CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',$,$,#11,$,$);
        #2=SHAPE_REPRESENTATION('',(#10),$);
        #4=(REPRESENTATION_RELATIONSHIP('','',#2,#2)
            REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#1)
            SHAPE_REPRESENTATION_RELATIONSHIP());
        #5=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#4,$);)");
    for (const char* role : {"REP_1", "REP_2"}) {
        List list({7, 8});
        TraceCapture trace;
        GetPlacement0(model[5], role, list);
        EXPECT_THAT(trace.Messages(kLabel0),
                    ElementsAre(kBegin, "Recuperation des placements",
                                "!!! CABLAGE NON CONFORME A LA NORME !!!", kImpossible));
        EXPECT_THAT(list.Values(), ElementsAre(7, 8));
    }
}

TEST(GetPlacement0, TakesAnyOperatorThatHasTheTwoItems) {
    const TestModel model(R"(SCHEMA workshop;
        ENTITY cartesian_point; coordinates : LIST OF REAL; END_ENTITY;
        ENTITY direction; direction_ratios : LIST OF REAL; END_ENTITY;
        ENTITY axis2_placement_3d;
            location : cartesian_point; axis : direction; ref_direction : direction;
        END_ENTITY;
        ENTITY representation; items : SET OF axis2_placement_3d; END_ENTITY;
        ENTITY move;
            transform_item_1 : axis2_placement_3d; transform_item_2 : axis2_placement_3d;
        END_ENTITY;
        TYPE transformation = SELECT (move); END_TYPE;
        ENTITY relationship;
            rep_1 : representation; transformation_operator : transformation;
        END_ENTITY;
        ENTITY context; representation_relation : relationship; END_ENTITY;
        END_SCHEMA;)",
                          R"(
        #1=DIRECTION((0.,0.,1.));
        #2=DIRECTION((1.,0.,0.));
        #3=AXIS2_PLACEMENT_3D(#11,#1,#2);
        #4=AXIS2_PLACEMENT_3D(#12,#1,#2);
        #5=MOVE(#3,#4);
        #6=REPRESENTATION((#3));
        #7=RELATIONSHIP(#6,#5);
        #8=CONTEXT(#7);
        #11=CARTESIAN_POINT((1.,2.,3.));
        #12=CARTESIAN_POINT((4.,6.,8.));)");
    List list;
    GetPlacement0(model[8], "REP_1", list);
    EXPECT_THAT(list.Values(), IsNearly(Reals{1, 0, 0, 0, 1, 0, 0, 0, 1, 3, 4, 5}));
}

// ---- GetPlacement1 and GetPlacement2

TEST(GetPlacement1, IsDoneWhateverHappened) {
    const TestModel model("AUTOMOTIVE_DESIGN", Wiring("#20", "#10"));
    List list({7, 8});
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> arguments[] = {
        {{}, {}}, {model[5], {}}, {{}, list}, {model[5], list}, {"text"_h, list}};
    for (const auto& [context, filled] : arguments) {
        EXPECT_EQ(TextIn(GetPlacement1(context, filled)), "GetPlacement1 done");
    }
    EXPECT_THAT(list.Values(), ElementsAre(7, 8));
}

TEST(GetPlacement2, IsDoneWhateverHappened) {
    const TestModel model("AUTOMOTIVE_DESIGN", Wiring("#10", "#30"));
    List list({7, 8});
    const std::pair<SdaiPrimitiveH, SdaiPrimitiveH> arguments[] = {
        {{}, {}}, {model[5], {}}, {{}, list}, {model[5], list}, {"text"_h, list}};
    for (const auto& [context, filled] : arguments) {
        EXPECT_EQ(TextIn(GetPlacement2(context, filled)), "GetPlacement2 done");
    }
    EXPECT_THAT(list.Values(), ElementsAre(7, 8));
}

TEST(GetPlacement1, SaysThatItBeginsAndLeavesTheRestToGetPlacement0) {
    const TestModel model("AUTOMOTIVE_DESIGN", Wiring("#10", "#20"));
    List list;
    TraceCapture trace;
    GetPlacement1(model[5], list);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH GetPlacement1 ->"),
                ElementsAre("CALCUL POSITIONNEMENT ..."));
    EXPECT_THAT(trace.Lines(), Contains("   void GetPlacement0 -> {").Times(1));
}

TEST(GetPlacement2, SaysThatItBeginsAndLeavesTheRestToGetPlacement0) {
    TraceCapture trace;
    GetPlacement2({}, {});
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH GetPlacement2 ->"),
                ElementsAre("CALCUL POSITIONNEMENT ..."));
    EXPECT_THAT(trace.Messages(kLabel0), ElementsAre(kBegin, kImpossible));
}

// ---- Minus

TEST(Minus, ChangesTheSign) {
    const double kInfinity = std::numeric_limits<double>::infinity();
    const std::pair<double, double> cases[] = {{-2.5, 2.5},     {2.5, -2.5},
                                               {1e300, -1e300}, {-5e-324, 5e-324},
                                               {12, -12},       {kInfinity, -kInfinity}};
    for (const auto& [value, expected] : cases) EXPECT_EQ(RealIn(Minus(value)), expected);
}

TEST(Minus, GivesNoNegativeZero) {
    for (const SdaiPrimitiveH& value : {SdaiPrimitiveH(0.0), SdaiPrimitiveH(-0.0), SdaiPrimitiveH(),
                                        "text"_h, SdaiPrimitiveH(0L)}) {
        const double result = RealIn(Minus(value));
        EXPECT_EQ(result, 0.0);
        EXPECT_FALSE(std::signbit(result));
    }
}

TEST(Minus, TakesAnIntegerForAReal) { EXPECT_EQ(RealIn(Minus(3_h)), -3.0); }

TEST(Minus, PassesOnWhatIsNoNumber) {
    EXPECT_TRUE(std::isnan(RealIn(Minus(std::numeric_limits<double>::quiet_NaN()))));
}

TEST(Minus, TracesBothValues) {
    TraceCapture trace;
    EXPECT_EQ(RealIn(Minus(-2.5)), 2.5);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH Minus ->"),
                ElementsAre("valeur d''entree -2.5", "valeur de sortie -> 2.5"));
}

TEST(Minus, TracesTheResultAloneForAMissingValue) {
    TraceCapture trace;
    EXPECT_EQ(RealIn(Minus({})), 0.0);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH Minus ->"), ElementsAre("valeur de sortie -> 0"));
}

TEST(Placements, WriteNothingToTheStandardStreams) {
    const TestModel model("AUTOMOTIVE_DESIGN", Wiring("#20", "#10"));
    List list;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    ComputeABSPlacement(model[10], model[20], list.Pointer());
    GetPlacement1(model[5], list);
    GetPlacement2(model[5], list);
    GetPlacement1({}, {});
    Minus(1.0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}
