// The data of the floors: the typical data and the generated models as plain structs. Nothing is
// looked up by name, and types are known at compile time.

#ifndef BENCHMARKS_PLAIN_H
#define BENCHMARKS_PLAIN_H

#include <algorithm>
#include <array>
#include <deque>
#include <string>
#include <vector>

#include "KORMath.h"

namespace bench {

using Reals = std::array<double, 12>;

// ---- An assembly, as AssemblyData makes it

struct PlainAxes {
    KORMathVector location;
    KORMathVector axis{0, 0, 1};
    KORMathVector reference{1, 0, 0};

    KORMath3x3Matrix Frame() const {
        const KORMathVector z = axis / axis.Norm();
        const KORMathVector r = reference / reference.Norm();
        const KORMathVector across = r - Dot(r, z) * z;
        const KORMathVector x = across / across.Norm();
        const KORMathVector y = Cross(z, x);
        return {x, y / y.Norm(), z};
    }
};

// The placement of a daughter in a mother.
inline Reals Compose(const PlainAxes& daughter, const PlainAxes& mother) {
    const KORMath3x3Matrix rotation = mother.Frame() * daughter.Frame().Inverse();
    const KORMathVector rows[] = {rotation.GetFirstColumn(), rotation.GetSecondColumn(),
                                  rotation.GetThirdColumn(), mother.location - daughter.location};
    Reals reals;
    for (std::size_t i = 0; i < 12; ++i) reals[i] = rows[i / 3][static_cast<int>(i % 3)] + 0.0;
    return reals;
}

struct PlainPartDefinition {
    std::string id;
};
struct PlainRepresentation {
    std::vector<const PlainAxes*> items;

    bool Has(const PlainAxes* item) const {
        return std::find(items.begin(), items.end(), item) != items.end();
    }
};
struct PlainProductShape {
    const void* definition;
};
struct PlainShape {
    const PlainProductShape* definition;
    const PlainRepresentation* representation;
};
struct PlainOccurrence {
    const PlainPartDefinition* relating;
    const PlainPartDefinition* related;
};
struct PlainTransformation {
    const PlainAxes* item1;
    const PlainAxes* item2;
};
struct PlainRelationship {
    const PlainRepresentation* rep1;
    const PlainRepresentation* rep2;
    const PlainTransformation* transformation;
};
struct PlainContext {
    const PlainRelationship* relationship;
    const PlainProductShape* product;
};

struct PlainAssembly {
    explicit PlainAssembly(long occurrenceCount) {
        const PlainPartDefinition* assembly = &definitions.emplace_back();
        const PlainRepresentation* whole =
            AddShape(assembly, &axes.emplace_back(PlainAxes{{0, 0, 0}}));
        for (long i = 1; i <= occurrenceCount; ++i) {
            const PlainPartDefinition* component = &definitions.emplace_back();
            const PlainAxes* place = &axes.emplace_back(
                PlainAxes{{static_cast<double>(i) + 0.5, 20.25, -3}, {0, 0, 1}, {0, 1, 0}});
            const PlainAxes* origin =
                &axes.emplace_back(PlainAxes{{0.5, 20.25, -3}, {0, 0, 1}, {0, 1, 0}});
            representations.front().items.push_back(place);
            const PlainRepresentation* own = AddShape(component, origin);
            occurrences.push_back({assembly, component});
            productShapes.push_back({&occurrences.back()});
            const PlainProductShape* product = &productShapes.back();
            transformations.push_back({origin, place});
            relationships.push_back({own, whole, &transformations.back()});
            contexts.push_back({&relationships.back(), product});
        }
    }
    PlainAssembly(const PlainAssembly&) = delete;
    PlainAssembly& operator=(const PlainAssembly&) = delete;

    Reals PlacementOf(const PlainOccurrence* occurrence) const {
        const auto context = std::find_if(contexts.begin(), contexts.end(), [&](const auto& c) {
            return c.product->definition == occurrence;
        });
        const PlainShape* relating = nullptr;
        const PlainShape* related = nullptr;
        for (const PlainShape& shape : shapes) {
            const void* definition = shape.definition->definition;
            if (relating == nullptr && definition == occurrence->relating) {
                relating = &shape;
            } else if (related == nullptr && definition == occurrence->related) {
                related = &shape;
            }
            if (relating != nullptr && related != nullptr) break;
        }
        const auto& [item1, item2] = *context->relationship->transformation;
        if (relating->representation->Has(item1) && related->representation->Has(item2)) {
            return Compose(*item2, *item1);
        }
        if (relating->representation->Has(item2) && related->representation->Has(item1)) {
            return Compose(*item1, *item2);
        }
        return {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    }

    std::deque<PlainPartDefinition> definitions;
    std::deque<PlainAxes> axes;
    std::deque<PlainRepresentation> representations;
    std::deque<PlainProductShape> productShapes;
    std::vector<PlainShape> shapes;  // contiguous: these are searched
    std::deque<PlainOccurrence> occurrences;
    std::deque<PlainTransformation> transformations;
    std::deque<PlainRelationship> relationships;
    std::vector<PlainContext> contexts;  // contiguous: these are searched

  private:
    const PlainRepresentation* AddShape(const PlainPartDefinition* of, const PlainAxes* item) {
        representations.push_back({{item}});
        productShapes.push_back({of});
        shapes.push_back({&productShapes.back(), &representations.back()});
        return &representations.back();
    }
};

// ---- The database

struct PlainPart;
struct PlainLink {
    const PlainPart* ref;
};
struct PlainPart {
    std::string number;
    std::string change;
    long version;
    std::string type;
    std::vector<const PlainLink*> links;
    std::vector<const void*> models;
    std::vector<const void*> docs1;
    std::vector<const void*> docs2;
};
// A configuration item and its design, a handler and what it applies to.
struct PlainItem {
    std::string id;
    const PlainPart* part;
};
// The identity of a part.
struct PlainIdentity {
    std::string caenv;
    std::string catab;
    double coid;
    double compid;

    bool operator==(const PlainIdentity&) const = default;
};
struct PlainRecord {
    const PlainPart* part;
    std::string coid;
    std::string compid;
    std::string caenv;
    std::string catab;

    PlainIdentity Identity() const {
        return {caenv, catab, static_cast<double>(std::stoul(coid, nullptr, 16)),
                static_cast<double>(std::stoul(compid, nullptr, 16))};
    }
};

}  // namespace bench

#endif
