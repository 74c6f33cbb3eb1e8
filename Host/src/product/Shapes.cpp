// The walk through the shapes of parts.

#include "product/Shapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <numbers>
#include <unordered_map>

#include "SdaiIterator.h"
#include "model/Aggregate.h"

namespace host {

using namespace sdai_names;

namespace {

using kor::Cell;
using kor::Instance;
using kor::Tag;

// What the walk through a shape does with an instance.
enum class Role {
    Follow,  // everything that it refers to
    Ignore,  // places an axis, a line or a surface, or is not of this shape
    Point,
    Points,
    Face,
    Edge,
    CurveOnSurface,
    Conic,
    Spline,
    Sphere,
    Torus,
    Mapped,
};

struct NamedRole {
    const SdaiName* type;
    Role role;
    std::size_t values;  // that an instance must have at least
};

// Types of ISO 10303-42, -43 and -511, with the values that an exchange file has of them. A type
// that is none of these is followed.
const NamedRole kRoles[] = {
    {&"CARTESIAN_POINT"_name, Role::Point, 0},
    {&"PLACEMENT"_name, Role::Ignore, 0},
    {&"CARTESIAN_TRANSFORMATION_OPERATOR"_name, Role::Ignore, 0},
    {&"DIRECTION"_name, Role::Ignore, 0},
    {&"VECTOR"_name, Role::Ignore, 0},
    {&"REPRESENTATION"_name, Role::Ignore, 0},
    {&"REPRESENTATION_CONTEXT"_name, Role::Ignore, 0},
    {&"LINE"_name, Role::Ignore, 0},
    {&"PCURVE"_name, Role::Ignore, 0},
    {&"ADVANCED_FACE"_name, Role::Face, 3},  // name, bounds, surface, sense
    {&"FACE_SURFACE"_name, Role::Face, 3},
    {&"EDGE_CURVE"_name, Role::Edge, 5},               // name, start, end, curve, sense
    {&"SURFACE_CURVE"_name, Role::CurveOnSurface, 2},  // name, curve in space, others
    {&"SEAM_CURVE"_name, Role::CurveOnSurface, 2},
    {&"INTERSECTION_CURVE"_name, Role::CurveOnSurface, 2},
    {&"CIRCLE"_name, Role::Conic, 3},   // name, frame, radius
    {&"ELLIPSE"_name, Role::Conic, 4},  // name, frame, semi-axes
    {&"B_SPLINE_CURVE_WITH_KNOTS"_name, Role::Spline, 0},
    {&"SPHERICAL_SURFACE"_name, Role::Sphere, 3},  // name, frame, radius
    {&"TOROIDAL_SURFACE"_name, Role::Torus, 4},    // name, frame, major and minor radius
    {&"COORDINATES_LIST"_name, Role::Points, 3},   // name, count, triples
    {&"MAPPED_ITEM"_name, Role::Mapped, 0},
};

}  // namespace

// ---- Reading

class Shapes::Reader {
  public:
    Reader(const kor::Model& model, Shapes& shapes)
        : model_(model), shapes_(shapes), lastWalk_(model.InstanceCount()) {
        for (const kor::ModelType& type : model.Types()) roles_.push_back(RoleOf(*type.entity));
    }

    void Read() {
        FindRepresentations();
        const std::vector<Part>& parts = shapes_.assembly_.Parts();
        for (std::size_t i = 0; i < parts.size(); ++i) {
            const auto found = ofPart_.find(&parts[i]);
            if (found != ofPart_.end()) ReadShape(parts[i], found->second, shapes_.shapes_[i]);
        }
    }

  private:
    using Representations = std::vector<const SdaiEntityInstance*>;

    // What is followed again for another part, over all parts.
    static constexpr std::size_t kMostRepeats = 20'000'000;
    // Representations that are mapped into each other.
    static constexpr int kDeepest = 20;

    static Role RoleOf(const kor::EntityType& entity) {
        for (const NamedRole& named : kRoles) {
            if (!entity.IsKindOf(*named.type)) continue;
            // The values of a complex instance are at other positions.
            const bool isPositional = named.values != 0;
            if (isPositional && (entity.IsComplex() || entity.Slots().size() < named.values)) {
                return Role::Follow;
            }
            return named.role;
        }
        return Role::Follow;
    }

    void FindRepresentations() {
        SdaiIterator_Of_SdaiEntityInstanceH definitions(
            model_.Extent("SHAPE_DEFINITION_REPRESENTATION"_name));
        while (definitions.Next()) {
            const SdaiPrimitiveH definition(definitions.GetCurrentMember());
            const Part* part = shapes_.assembly_.Find(
                definition.GetAttr("DEFINITION"_name).GetAttr("DEFINITION"_name));
            const SdaiEntityInstance* representation =
                definition.GetAttr("USED_REPRESENTATION"_name);
            if (part == nullptr || representation == nullptr) continue;
            ofPart_[part].push_back(representation);
            owners_.emplace(representation, part);
        }
        SdaiIterator_Of_SdaiEntityInstanceH relations(
            model_.Extent("SHAPE_REPRESENTATION_RELATIONSHIP"_name));
        while (relations.Next()) {
            const SdaiPrimitiveH relation(relations.GetCurrentMember());
            if (relation.IsKindOf("REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION"_name)) continue;
            const SdaiEntityInstance* one = relation.GetAttr("REP_1"_name);
            const SdaiEntityInstance* other = relation.GetAttr("REP_2"_name);
            if (one == nullptr || other == nullptr || one == other) continue;
            related_[one].push_back(other);
            related_[other].push_back(one);
        }
    }

    void ReadShape(const Part& part, const Representations& own, Shape& shape) {
        Representations all(own);
        std::unordered_map<const SdaiEntityInstance*, bool> known;
        for (const SdaiEntityInstance* representation : own) known[representation] = true;
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (!shape.unit) shape.unit = UnitOfRepresentation(*all[i]);
            shape.box.Add(BoxOf(*all[i], 0));
            const auto related = related_.find(all[i]);
            if (related == related_.end()) continue;
            if (IsOverLimit(related->second.size())) break;
            for (const SdaiEntityInstance* next : related->second) {
                const auto owner = owners_.find(next);
                const bool isOther = owner != owners_.end() && owner->second != &part;
                if (!isOther && known.emplace(next, true).second) all.push_back(next);
            }
        }
        // Half a box would be a wrong one.
        if (isOverLimit_) shape.box = {};
    }

    bool IsOverLimit(std::size_t repeats) {
        repeats_ += repeats;
        if (repeats_ > kMostRepeats) isOverLimit_ = shapes_.isCut_ = true;
        return isOverLimit_;
    }

    // The box of a representation, which is found once.
    const Box& BoxOf(const SdaiEntityInstance& representation, int depth) {
        const auto [place, isNew] = boxes_.try_emplace(&representation);
        Box& box = place->second;
        if (!isNew || isOverLimit_) return box;  // empty while it is being found: a cycle
        if (depth > kDeepest) {
            shapes_.isCut_ = true;
            return box;
        }
        const SdaiPrimitiveH items = representation.GetAttr("ITEMS"_name);
        Walk walk(*this, depth);
        SdaiIterator_Of_SdaiEntityInstanceH item(items);
        while (item.Next()) walk.Push(item.GetCurrentMember());
        const Box found = walk.Run();
        box = found;
        return box;
    }

    // The walk through everything that the items of one representation refer to.
    class Walk {
      public:
        Walk(Reader& reader, int depth)
            : reader_(reader), depth_(depth), number_(++reader.walks_) {}

        void Push(const SdaiEntityInstance* instance) {
            if (instance == nullptr) return;
            const Instance& next = Instance::Of(*instance);
            if (next.Type().model != &reader_.model_) return;
            std::uint32_t& last = reader_.lastWalk_[next.Order()];
            if (last == number_) return;
            if (last != 0) {
                const bool isSpline = RoleOf(reader_, next) == Role::Spline;
                reader_.IsOverLimit(1 + next.Type().slotCount + (isSpline ? kCostOfSpline : 0));
            }
            last = number_;
            waiting_.push_back(&next);
        }

        Box Run() {
            while (!waiting_.empty() && !reader_.isOverLimit_) {
                const Instance& instance = *waiting_.back();
                waiting_.pop_back();
                Visit(instance);
            }
            return box_;
        }

      private:
        // As many steps of the walk take about the time of a curve.
        static constexpr std::size_t kCostOfSpline = 500;

        static SdaiPrimitiveH Value(const Instance& instance, std::size_t position) {
            return instance.Read(static_cast<int>(position));
        }

        static Role RoleOf(const Reader& reader, const Instance& instance) {
            return reader.roles_[instance.Type().number];
        }

        void Visit(const Instance& instance) {
            switch (RoleOf(reader_, instance)) {
                case Role::Ignore: break;
                case Role::Follow: Follow(instance); break;
                case Role::Point: AddPoint(instance.GetAttr("COORDINATES"_name)); break;
                case Role::Points: AddPoints(Value(instance, 2)); break;
                case Role::Face: VisitFace(instance); break;
                case Role::Edge: VisitEdge(instance); break;
                case Role::CurveOnSurface: Push(Value(instance, 1)); break;
                case Role::Conic: AddArc(instance, nullptr, nullptr); break;
                case Role::Spline:
                    if (!AddSpline(instance)) Follow(instance);
                    break;
                case Role::Sphere: AddRing(instance, 0, Value(instance, 2)); break;
                case Role::Torus: AddRing(instance, Value(instance, 2), Value(instance, 3)); break;
                case Role::Mapped: AddMapped(instance); break;
            }
        }

        void Follow(const Instance& instance) {
            for (const Cell& cell : instance.Values()) {
                if (cell.GetTag() == Tag::Instance) {
                    Push(cell.Get<SdaiEntityInstance*>());
                } else if (cell.GetTag() == Tag::Aggregate) {
                    FollowMembers(*cell.Get<SdaiAggrInstance*>());
                }
            }
        }

        void FollowMembers(const SdaiAggrInstance& whole) {
            std::vector<const SdaiAggrInstance*> aggregates{&whole};
            while (!aggregates.empty()) {
                const SdaiAggrInstance& aggregate = *aggregates.back();
                aggregates.pop_back();
                using Layout = kor::AggregateAccess::Layout;
                const Layout layout = kor::AggregateAccess::LayoutOf(aggregate);
                if (layout == Layout::Reals || layout == Layout::Integers) continue;
                const std::size_t count = kor::AggregateAccess::Count(aggregate);
                for (std::size_t i = 0; i < count; ++i) {
                    const Cell cell = kor::AggregateAccess::MemberCell(aggregate, i);
                    if (cell.GetTag() == Tag::Instance) {
                        Push(cell.Get<SdaiEntityInstance*>());
                    } else if (cell.GetTag() == Tag::Aggregate) {
                        aggregates.push_back(cell.Get<SdaiAggrInstance*>());
                    }
                }
            }
        }

        // A point in the plane is one of a parameter space; one without numbers is none.
        void AddPoint(const SdaiPrimitiveH& coordinates) {
            if (const auto point = PointOf(coordinates)) box_.Add(*point);
        }

        static std::optional<Point3> PointOf(const SdaiPrimitiveH& coordinates) {
            const SdaiAggrInstance* members = coordinates;
            if (members == nullptr || members->GetMemberCount() != 3) return std::nullopt;
            Point3 point;
            for (std::size_t i = 0; i < 3; ++i) {
                const Tag tag = kor::AggregateAccess::MemberCell(*members, i).GetTag();
                if (tag != Tag::Real && tag != Tag::Integer) return std::nullopt;
                point[i] = members->GetRealMember(static_cast<long>(i));
            }
            return point;
        }

        void AddPoints(const SdaiPrimitiveH& triples) {
            const SdaiAggrInstance* points = triples;
            const long count = points != nullptr ? points->GetMemberCount() : 0;
            for (long i = 0; i < count; ++i) AddPoint(points->GetMember(i));
        }

        // A face lies within its bounds, unless one of them is a vertex alone: a whole sphere or
        // torus.
        void VisitFace(const Instance& face) {
            const SdaiPrimitiveH bounds = Value(face, 1);
            const SdaiAggrInstance* members = bounds;
            const long count = members != nullptr ? members->GetMemberCount() : 0;
            for (long i = 0; i < count; ++i) {
                const SdaiEntityInstance* bound = members->GetInstanceMember(i);
                if (bound == nullptr) continue;
                Push(bound);
                const Instance& values = Instance::Of(*bound);
                const SdaiPrimitiveH loop =
                    values.Type().slotCount > 1 ? Value(values, 1) : SdaiPrimitiveH();
                if (loop.IsKindOf("VERTEX_LOOP"_name)) Push(Value(face, 2));
            }
        }

        void VisitEdge(const Instance& edge) {
            const SdaiEntityInstance* start = Value(edge, 1);
            const SdaiEntityInstance* end = Value(edge, 2);
            Push(start);
            Push(end);
            const SdaiEntityInstance* curve = Value(edge, 3);
            if (curve != nullptr && RoleOf(reader_, Instance::Of(*curve)) == Role::CurveOnSurface) {
                curve = Value(Instance::Of(*curve), 1);
            }
            if (curve == nullptr) return;
            if (RoleOf(reader_, Instance::Of(*curve)) != Role::Conic) return Push(curve);
            const SdaiPrimitiveH sense = Value(edge, 4);
            const bool isReversed = static_cast<const SdaiLogical&>(sense) == sdaiLFALSE;
            AddArc(Instance::Of(*curve), isReversed ? end : start, isReversed ? start : end);
        }

        // The coordinates of a vertex.
        static std::optional<Point3> PointOfVertex(const SdaiEntityInstance* vertex) {
            if (vertex == nullptr || Instance::Of(*vertex).Type().slotCount < 2)
                return std::nullopt;
            return PointOf(Value(Instance::Of(*vertex), 1).GetAttr("COORDINATES"_name));
        }

        // The extremes of a circle or an ellipse on the way from one vertex to another, against the
        // clock; all of them if it begins and ends at one place.
        void AddArc(const Instance& conic, const SdaiEntityInstance* from,
                    const SdaiEntityInstance* to) {
            const std::optional<orx::Placement> frame = FrameOf(Value(conic, 1));
            const double a = Value(conic, 2);
            const double b = conic.Type().slotCount > 3 ? static_cast<double>(Value(conic, 3)) : a;
            if (!frame || !IsFinite(*frame) || !(a > 0) || !(b > 0)) return;
            const std::array<double, 12> f = RealsOf(*frame);
            const std::optional<Point3> start = PointOfVertex(from);
            const std::optional<Point3> end = PointOfVertex(to);
            const auto angle = [&](const Point3& point) {
                double x = 0;
                double y = 0;
                for (std::size_t i = 0; i < 3; ++i) {
                    x += (point[i] - f[9 + i]) * f[i];
                    y += (point[i] - f[9 + i]) * f[3 + i];
                }
                return std::atan2(y / b, x / a);
            };
            constexpr double kTurn = 2 * std::numbers::pi;
            const auto ahead = [](double turn) {  // from 0 to a turn
                turn = std::fmod(turn, kTurn);
                return turn < 0 ? turn + kTurn : turn;
            };
            const bool isWhole = !start || !end || *start == *end;
            const double first = isWhole ? 0 : angle(*start);
            const double sweep = isWhole ? kTurn : ahead(angle(*end) - first);
            for (std::size_t i = 0; i < 3; ++i) {
                const double extreme = std::atan2(b * f[3 + i], a * f[i]);
                for (const double t : {extreme, extreme + std::numbers::pi}) {
                    if (!isWhole && !(ahead(t - first) <= sweep)) continue;
                    Point3 point;
                    for (std::size_t j = 0; j < 3; ++j) {
                        point[j] = f[9 + j] + a * std::cos(t) * f[j] + b * std::sin(t) * f[3 + j];
                    }
                    box_.Add(point);
                }
            }
        }

        // The extremes of a curve. False if it has not got what it needs for that.
        bool AddSpline(const Instance& instance) {
            const std::optional<Spline> spline = ReadSpline(instance);
            if (!spline) return false;
            // The curve lies between its control points.
            Box hull;
            for (const Point3& point : spline->points) hull.Add(point);
            for (std::size_t i = 0; i < 3; ++i) {
                if (hull.least[i] < box_.least[i]) box_.Add(spline->Extreme(i, -1));
                if (hull.most[i] > box_.most[i]) box_.Add(spline->Extreme(i, 1));
            }
            return true;
        }

        static std::optional<Spline> ReadSpline(const Instance& instance) {
            const kor::EntityType& entity = *instance.Type().entity;
            Spline spline;
            SdaiPrimitiveH degree;
            SdaiPrimitiveH points;
            SdaiPrimitiveH multiplicities;
            SdaiPrimitiveH knots;
            SdaiPrimitiveH weights;
            const auto take = [&](std::size_t first, std::initializer_list<SdaiPrimitiveH*> to) {
                for (SdaiPrimitiveH* value : to) {
                    if (first < entity.Slots().size()) *value = Value(instance, first++);
                }
            };
            if (!entity.IsComplex()) {  // name, degree, points, form, closed, intersecting, ...
                take(1, {&degree, &points});
                take(6, {&multiplicities, &knots});
            }
            for (const kor::EntityType::Part& part : entity.Parts()) {
                if (!entity.IsComplex()) break;
                if (part.name == "B_SPLINE_CURVE") take(part.firstSlot, {&degree, &points});
                if (part.name == "B_SPLINE_CURVE_WITH_KNOTS") {
                    take(part.firstSlot, {&multiplicities, &knots});
                }
                if (part.name == "RATIONAL_B_SPLINE_CURVE") take(part.firstSlot, {&weights});
            }
            const SdaiAggrInstance* members = points;
            const long count = members != nullptr ? members->GetMemberCount() : 0;
            for (long i = 0; i < count; ++i) {
                const auto point = PointOf(members->GetMember(i).GetAttr("COORDINATES"_name));
                if (!point) return std::nullopt;
                spline.points.push_back(*point);
            }
            const SdaiAggrInstance* values = knots;
            const SdaiAggrInstance* counts = multiplicities;
            const long size = values != nullptr ? values->GetMemberCount() : 0;
            for (long i = 0; i < size && counts != nullptr; ++i) {
                const long times = counts->GetMember(i);
                if (times < 0 || times > count + Spline::kHighestDegree + 1) return std::nullopt;
                spline.knots.insert(spline.knots.end(), static_cast<std::size_t>(times),
                                    values->GetRealMember(i));
                if (static_cast<long>(spline.knots.size()) > count + Spline::kHighestDegree + 1) {
                    return std::nullopt;
                }
            }
            const SdaiAggrInstance* factors = weights;
            const long number = factors != nullptr ? factors->GetMemberCount() : 0;
            for (long i = 0; i < number; ++i) {
                spline.weights.push_back(factors->GetRealMember(i));
            }
            if (spline.weights.empty()) spline.weights.assign(spline.points.size(), 1);
            const long p = degree;
            if (p < 1 || p > Spline::kHighestDegree) return std::nullopt;
            spline.degree = static_cast<std::size_t>(p);
            if (!spline.IsValid()) return std::nullopt;
            return spline;
        }

        // A ring of round wire around the z axis of a frame; a ball if its radius is 0.
        void AddRing(const Instance& surface, double radius, double wire) {
            const std::optional<orx::Placement> frame = FrameOf(Value(surface, 1));
            if (!frame || !IsFinite(*frame) || !(radius >= 0) || !(wire >= 0)) return;
            const std::array<double, 12> f = RealsOf(*frame);
            Point3 least;
            Point3 most;
            for (std::size_t i = 0; i < 3; ++i) {
                const double z = f[6 + i];
                const double reach = radius * std::sqrt(std::max(0.0, 1 - z * z)) + wire;
                least[i] = f[9 + i] - reach;
                most[i] = f[9 + i] + reach;
            }
            box_.Add(least);
            box_.Add(most);
        }

        void AddMapped(const Instance& item) {
            const SdaiPrimitiveH source = item.GetAttr("MAPPING_SOURCE"_name);
            const SdaiEntityInstance* mapped = source.GetAttr("MAPPED_REPRESENTATION"_name);
            const auto toOrigin = InverseFrameOf(source.GetAttr("MAPPING_ORIGIN"_name));
            const auto target = FrameOf(item.GetAttr("MAPPING_TARGET"_name));
            if (mapped == nullptr || !toOrigin || !target) return;
            const orx::Placement placement = Compose(*target, *toOrigin);
            if (IsFinite(placement)) {
                box_.Add(Placed(reader_.BoxOf(*mapped, depth_ + 1), placement));
            }
        }

        Reader& reader_;
        const int depth_;
        const std::uint32_t number_;
        std::vector<const Instance*> waiting_;
        Box box_;
    };

    const kor::Model& model_;
    Shapes& shapes_;
    std::vector<Role> roles_;              // by the number of the model's type
    std::vector<std::uint32_t> lastWalk_;  // that met an instance, by its order; 0: none
    std::uint32_t walks_ = 0;
    std::size_t repeats_ = 0;
    bool isOverLimit_ = false;
    std::unordered_map<const Part*, Representations> ofPart_;
    std::unordered_map<const SdaiEntityInstance*, const Part*> owners_;
    std::unordered_map<const SdaiEntityInstance*, Representations> related_;
    std::unordered_map<const SdaiEntityInstance*, Box> boxes_;
};

Shapes::Shapes(const kor::Model& model, const Assembly& assembly) : assembly_(assembly) {
    shapes_.resize(assembly.Parts().size());
    if (!assembly.IsDatabase()) Reader(model, *this).Read();
}

Shapes::~Shapes() = default;

const Box& Shapes::BoxOf(const Part& part) const {
    return shapes_[static_cast<std::size_t>(&part - assembly_.Parts().data())].box;
}

const std::optional<LengthUnit>& Shapes::UnitOf(const Part& part) const {
    return shapes_[static_cast<std::size_t>(&part - assembly_.Parts().data())].unit;
}

}  // namespace host
