// Placements: composes two axis placements into a rotation and a translation, and finds the
// placement of an assembly occurrence in the STEP structure.

#include <cstddef>
#include <iostream>
#include <new>
#include <optional>

#include "Attributes.h"
#include "Identity.h"
#include "KORMath.h"
#include "Placement.h"
#include "PlacementReserve.h"
#include "SdaiIterator.h"

using namespace orx;
using namespace sdai_names;

namespace {

// ---- Placements

constexpr long kPlacementSize = 12;

// Appends the twelve values of a placement to a list, all or none, and traces each row.
template <class List>
void AppendTo(List& list, const Placement& placement, Trace* trace = nullptr) {
    list.Reserve(list.GetMemberCount() + kPlacementSize);
    const auto appendRow = [&](const char* name, const KORMathVector& row) {
        if (trace != nullptr) trace->Line(name);
        for (int i = 0; i < 3; ++i) list.Append(row[i]);
    };
    appendRow("Ligne 1", placement.rotation.GetFirstColumn());
    appendRow("Ligne 2", placement.rotation.GetSecondColumn());
    appendRow("Ligne 3", placement.rotation.GetThirdColumn());
    appendRow("Ligne 4", placement.translation);
}

// ---- Traces of values

void TraceVector(Trace& trace, const KORMathVector& v) { trace.Line(v[0], "  ", v[1], "  ", v[2]); }

void TraceMatrix(Trace& trace, const char* title, const KORMath3x3Matrix& matrix) {
    trace.Line(title);
    TraceVector(trace, matrix.GetFirstColumn());
    TraceVector(trace, matrix.GetSecondColumn());
    TraceVector(trace, matrix.GetThirdColumn());
}

void TraceNumbers(Trace& trace, const char* const (&names)[3], const KORMathVector& v) {
    for (int i = 0; i < 3; ++i) trace.Line(names[i], " = ", v[i]);
}

// Traces a list in rows of three values.
void TraceList(Trace& trace, const char* title, const SdaiAggrInstance& list) {
    if (!trace.IsActive()) return;
    trace.Line(title);
    for (long i = 0; i + 3 <= list.GetMemberCount(); i += 3) {
        TraceVector(trace, VectorAt(list, i));
    }
}

// A piece of a trace line: the instance's number, "=" and its type name; empty for null.
struct NumberAndType {
    const SdaiEntityInstance* instance;

    friend std::ostream& operator<<(std::ostream& line, const NumberAndType& piece) {
        if (piece.instance == nullptr) return line;
        return line << piece.instance->GetInstanceNameId() << "="
                    << piece.instance->GetInstanceType()->Name();
    }
};

}  // namespace

void ComputeABSPlacement(const SdaiPrimitiveH& daughter, const SdaiPrimitiveH& mother,
                         SdaiListClassOfSdaiReal*& list) {
    Procedure<"ComputeABSPlacement">([&](Trace& trace) {
        const AxisPlacement daughterAxes = AxisPlacementOf(daughter);
        const AxisPlacement motherAxes = AxisPlacementOf(mother);
        trace.Line("Creation de la matrice fille");
        const KORMath3x3Matrix daughterFrame = daughterAxes.Frame();
        TraceMatrix(trace, "RelatedAxisMatrix:", daughterFrame);
        trace.Line("Creation de la matrice mere");
        const KORMath3x3Matrix motherFrame = motherAxes.Frame();

        trace.Line("composition des matrices:");
        const KORMath3x3Matrix rotation = motherFrame * daughterFrame.Inverse();

        trace.Line("renseignement de la translation");
        const KORMathVector daughterLocation = daughterAxes.Location();
        TraceNumbers(trace, {"x_ed", "y_ed", "z_ed"}, daughterLocation);
        const KORMathVector motherLocation = motherAxes.Location();
        TraceNumbers(trace, {"x_ing", "y_ing", "z_ing"}, motherLocation);

        trace.Line("Valuation de la liste de sortie");
        if (list == nullptr) return;
        AppendTo(*list, {rotation, motherLocation - daughterLocation}, &trace);
    });
}

namespace {

// Whether an instance is an item of a representation. With tracing on, IsSame0 is called for each.
bool IsItem(Trace& trace, const SdaiAggrInstance* items, const SdaiPrimitiveH& item) {
    SdaiEntityInstance* sought = item;
    if (!trace.IsActive()) return items != nullptr && items->IsMember(sought);
    const auto value = [&] { return item; };
    SdaiIterator_Of_SdaiEntityInstanceH member(items);
    while (member.Next()) {
        if (IsSame0Of(member.GetCurrentMember(), sought, value)) return true;
    }
    return false;
}

enum class Wiring { None, Straight, Crossed };

// How the items of a transformation are wired to the representation in a role. Item 2 is wanted on
// REP_2, item 1 on any other. Only on REP_2 is the other item accepted, as crossed wiring.
Wiring WiringOf(Trace& trace, const SdaiString& role, const SdaiAggrInstance* items,
                const SdaiPrimitiveH& item1, const SdaiPrimitiveH& item2) {
    const bool onRep2 = static_cast<bool>(role == "REP_2");
    const SdaiPrimitiveH& wanted = onRep2 ? item2 : item1;
    if (IsItem(trace, items, wanted)) {
        return onRep2 || role == "REP_1" ? Wiring::Straight : Wiring::Crossed;
    }
    return onRep2 && IsItem(trace, items, item1) ? Wiring::Crossed : Wiring::None;
}

// The placement that two axis placements define: the first in the second or, crossed, the second in
// the first.
Placement PlacementOf(Trace& trace, const SdaiPrimitiveH& item1, const SdaiPrimitiveH& item2,
                      bool crossed) {
    const AxisPlacement axes1 = AxisPlacementOf(item1);
    const AxisPlacement axes2 = AxisPlacementOf(item2);
    trace.Line("GetPlacement0 - Creation de la matrice TRANSFORM_ITEM_1");
    const KORMath3x3Matrix frame1 = axes1.Frame();
    TraceMatrix(trace, "Axis1_Matrix:", frame1);
    trace.Line("GetPlacement0 - Creation de la matrice TRANSFORM_ITEM_2");
    const KORMath3x3Matrix frame2 = axes2.Frame();
    TraceMatrix(trace, "Axis2_Matrix:", frame2);

    trace.Line("Composition des placements");
    const KORMath3x3Matrix rotation =
        crossed ? frame1 * frame2.Inverse() : frame2 * frame1.Inverse();

    trace.Line("Renseignement de la translation");
    const KORMathVector location1 = axes1.Location();
    TraceNumbers(trace, {"x_1", "y_1", "z_1"}, location1);
    const KORMathVector location2 = axes2.Location();
    TraceNumbers(trace, {"x_2", "y_2", "z_2"}, location2);
    KORMathVector translation = location2 - location1;
    if (crossed) translation = -1.0 * translation;
    TraceNumbers(trace, {"t_1", "t_2", "t_3"}, translation);
    return {rotation, translation};
}

}  // namespace

void GetPlacement0(const SdaiPrimitiveH& context, const SdaiString& role,
                   const SdaiPrimitiveH& list) {
    Procedure<"GetPlacement0">([&](Trace& trace) {
        trace.Line(" CALCUL POSITIONNEMENT ...");
        SdaiAggrInstance* output = list;
        if (!context.exists() || output == nullptr) {
            trace.Line("CALCUL POSITIONNEMENT ABSOLU IMPOSSIBLE");
            return;
        }
        trace.Line("Recuperation des placements");
        const SdaiPrimitiveH relationship = context.GetAttr("REPRESENTATION_RELATION"_name);
        const SdaiPrimitiveH transformation =
            SelectedOf(relationship, "TRANSFORMATION_OPERATOR"_name);
        const SdaiPrimitiveH item1 = transformation.GetAttr("TRANSFORM_ITEM_1"_name);
        const SdaiPrimitiveH item2 = transformation.GetAttr("TRANSFORM_ITEM_2"_name);
        const SdaiPrimitiveH items = relationship.GetAttr(role).GetAttr("ITEMS"_name);
        const Wiring wiring = WiringOf(trace, role, items, item1, item2);
        if (wiring == Wiring::None) {
            trace.Line("!!! CABLAGE NON CONFORME A LA NORME !!!");
            trace.Line("CALCUL POSITIONNEMENT ABSOLU IMPOSSIBLE");
            return;
        }
        const bool crossed = wiring == Wiring::Crossed;
        trace.Line(crossed ? "... Cablage croise" : "... Cablage NON croise");
        const Placement placement = PlacementOf(trace, item1, item2, crossed);

        trace.Line("Valuation de la liste de sortie");
        // Reserve first: if memory runs out, the list keeps its contents.
        output->Reserve(kPlacementSize);
        output->RemoveAll();
        AppendTo(*output, placement, &trace);
        TraceList(trace, "Positionnement calcule:", *output);
        trace.Line("...CALCUL POSITIONNEMENT FINI");
    });
}

namespace {

constexpr const char* kPlacement1Done = "GetPlacement1 done";
constexpr const char* kPlacement2Done = "GetPlacement2 done";

// These results need memory, which is allocated before any call. Engines may still call functions
// while the process ends, so this object is never destroyed. It is emptied when the module is
// unloaded or the process ends, and later calls make their own texts.
struct DoneTexts {
    SdaiString placement1;
    SdaiString placement2;
};
alignas(DoneTexts) std::byte doneStorage[sizeof(DoneTexts)];
DoneTexts& doneTexts = *new (doneStorage) DoneTexts{kPlacement1Done, kPlacement2Done};

const struct DoneEmptied {
    ~DoneEmptied() { doneTexts = DoneTexts(); }
} doneEmptied;

}  // namespace

SdaiPrimitiveH GetPlacement1(const SdaiPrimitiveH& context, const SdaiPrimitiveH& list) {
    return Function<"GetPlacement1">(doneTexts.placement1, [&](Trace& trace, SdaiString& result) {
        trace.Line("CALCUL POSITIONNEMENT ...");
        GetPlacement0(context, "REP_1", list);
        if (result.length() == 0) result = kPlacement1Done;
    });
}

SdaiPrimitiveH GetPlacement2(const SdaiPrimitiveH& context, const SdaiPrimitiveH& list) {
    return Function<"GetPlacement2">(doneTexts.placement2, [&](Trace& trace, SdaiString& result) {
        trace.Line("CALCUL POSITIONNEMENT ...");
        GetPlacement0(context, "REP_2", list);
        if (result.length() == 0) result = kPlacement2Done;
    });
}

SdaiPrimitiveH Minus(const SdaiPrimitiveH& value) {
    return Function<"Minus">(0.0, [&](Trace& trace, double& result) {
        if (value.exists()) {
            const double input = value;
            trace.Line("valeur d''entree ", input);
            if (input != 0.0) result = input * -1.0;  // never -0.0
        }
        trace.Line("valeur de sortie -> ", result);
    });
}

// ---- The placement of an assembly occurrence

namespace {

// The context-dependent shape representation of a link; null if the model has none.
SdaiEntityInstance* ContextOf(const Trace& trace, SdaiEntityInstance* link) {
    const SdaiEntityInstance* const targets[] = {link};
    SdaiIterator_Of_Users context = Candidates(
        trace, link->FindEntityInstanceModel(), "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION"_name,
        "REPRESENTED_PRODUCT_RELATION"_name, "DEFINITION"_name, targets);
    while (context.Next()) {
        SdaiEntityInstance* relation =
            ReferredBy(context.GetCurrentMember(), "REPRESENTED_PRODUCT_RELATION"_name);
        const auto value = [&] { return SelectedOf(relation, "DEFINITION"_name); };
        if (IsSame0Of(link, ReferredBy(relation, "DEFINITION"_name), value)) break;
    }
    return context.GetCurrentMember();
}

// The shape definition representations of both sides of a link; null for a side that has none.
struct Shapes {
    SdaiEntityInstance* relating = nullptr;
    SdaiEntityInstance* related = nullptr;
};

// Searches for them. Created before they are needed, so that what is to be read is fetched from
// memory during other work.
class ShapeSearch {
  public:
    ShapeSearch(const Trace& trace, const SdaiEntityInstance& link)
        : relating_(link.GetAttr("RELATING_PRODUCT_DEFINITION"_name)),
          related_(link.GetAttr("RELATED_PRODUCT_DEFINITION"_name)),
          representation_(Candidates(trace, link.FindEntityInstanceModel(),
                                     "SHAPE_DEFINITION_REPRESENTATION"_name, "DEFINITION"_name,
                                     "DEFINITION"_name, targets_)) {}

    void Fetch() { representation_.Fetch(); }
    Shapes Find(Trace& trace);

  private:
    SdaiEntityInstance* const relating_;
    SdaiEntityInstance* const related_;
    const SdaiEntityInstance* const targets_[2] = {relating_, related_};
    SdaiIterator_Of_Users representation_;
};

Shapes ShapeSearch::Find(Trace& trace) {
    Shapes shapes;
    // The DEFINITION of a shape definition representation is a direct reference to the product
    // definition shape in CONFIG_CONTROL_DESIGN, and a select in other schemas. ReferredBy reads
    // both.
    trace.Line(" -> SHAPE_DEFINITION_REPRESENTATION OK ");
    while (shapes.relating == nullptr || shapes.related == nullptr) {
        if (!representation_.Next()) break;
        SdaiEntityInstance* current = representation_.GetCurrentMember();
        SdaiEntityInstance* productShape = ReferredBy(current, "DEFINITION"_name);
        SdaiEntityInstance* definition = ReferredBy(productShape, "DEFINITION"_name);
        trace.Line(" - CurrShapeDefRep : #", NumberAndType{current});
        trace.Line(" - CurrP_D_S : #", NumberAndType{productShape});
        trace.Line(" - CurrProdDef : #", NumberAndType{definition});
        const auto value = [&] { return SelectedOf(productShape, "DEFINITION"_name); };
        // A representation is never used for both sides.
        if (shapes.relating == nullptr && IsSame0Of(relating_, definition, value)) {
            shapes.relating = current;
        } else if (shapes.related == nullptr && IsSame0Of(related_, definition, value)) {
            shapes.related = current;
        }
    }
    return shapes;
}

// A cartesian transformation operator states its placement directly: the axes are not normalised
// and the scale is ignored. Unset attributes default to those of the identity.
Placement OperatorPlacement(Trace& trace, const SdaiPrimitiveH& transformation) {
    trace.Line("GetAbsPlacement - CARTESIAN_TRANSFORMATION_OPERATOR");
    const KORMathVector origin = PointOf(transformation, "LOCAL_ORIGIN"_name);
    const KORMathVector axis1 = DirectionOf(transformation, "AXIS1"_name, {1, 0, 0});
    const KORMathVector axis2 = DirectionOf(transformation, "AXIS2"_name, {0, 1, 0});
    // A third axis that is set is used even if it has no direction ratios.
    const SdaiPrimitiveH third = transformation.GetAttr("AXIS3"_name);
    const KORMathVector axis3 = third.exists()
                                    ? VectorOf(third.GetAttr("DIRECTION_RATIOS"_name), {0, 0, 0})
                                    : Cross(axis1, axis2);
    return {{axis1, axis2, axis3}, origin};
}

// The representations of the two sides of a link.
struct Sides {
    SdaiPrimitiveH relating;
    SdaiPrimitiveH related;
};

// Finds the representations of both sides; no value if one is missing, which is reported.
std::optional<Sides> SidesOf(Trace& trace, ShapeSearch& search) {
    trace.Line(" -> RELATING_PRODUCT_DEFINITION OK ");
    trace.Line(" -> RELATED_PRODUCT_DEFINITION OK ");

    const Shapes shapes = search.Find(trace);
    if (shapes.relating == nullptr) {
        // The only message that goes to standard error instead of the trace.
        std::cerr << "SHAPE_REPRESENTATION of the RELATING part NOT FOUND" << std::endl;
    }
    if (shapes.related == nullptr) {
        trace.Line("SHAPE_REPRESENTATION of the RELATED part NOT FOUND");
    }
    if (shapes.relating == nullptr || shapes.related == nullptr) return std::nullopt;

    trace.Line("RELATING SHAPE_REPRESENTATION recupere");
    trace.Line("RELATED SHAPE_REPRESENTATION recupere");
    Sides sides{shapes.relating->GetAttr("USED_REPRESENTATION"_name),
                shapes.related->GetAttr("USED_REPRESENTATION"_name)};
    trace.Line(" - RelatingShapeRep : #", NumberAndType{sides.relating});
    trace.Line(" - RelatedShapeRep : #", NumberAndType{sides.related});
    return sides;
}

// Whether a relationship is between the representations of the two sides, in either direction.
bool Connects(Trace& trace, const SdaiPrimitiveH& rep1, const SdaiPrimitiveH& rep2,
              const Sides& sides) {
    trace.Line(" - ShapeRep1 : #", NumberAndType{rep1});
    trace.Line(" - ShapeRep2 : #", NumberAndType{rep2});
    return (IsSame0Of(rep1, sides.relating) && IsSame0Of(rep2, sides.related)) ||
           (IsSame0Of(rep2, sides.relating) && IsSame0Of(rep1, sides.related));
}

bool IsMemberOf(const SdaiPrimitiveH& items, const SdaiPrimitiveH& item) {
    const SdaiAggrInstance* members = items;
    return members != nullptr && members->IsMember(static_cast<SdaiEntityInstance*>(item));
}

// Which of two axis placements belongs to the component, the related side; the other one belongs to
// the parent. Null if the data are inconsistent.
const SdaiPrimitiveH* DaughterOf(Trace& trace, const SdaiPrimitiveH& item1,
                                 const SdaiPrimitiveH& item2, const Sides& sides) {
    const SdaiPrimitiveH relatingItems = sides.relating.GetAttr("ITEMS"_name);
    const SdaiPrimitiveH relatedItems = sides.related.GetAttr("ITEMS"_name);
    const SdaiPrimitiveH name = item1.GetAttr("NAME"_name);
    if (!(TextOf(name) == "DEFAULT_PLACEMENT")) {
        trace.Line(" > External Placement < ");
        if (IsMemberOf(relatingItems, item1) && IsMemberOf(relatedItems, item2)) return &item2;
        if (IsMemberOf(relatingItems, item2) && IsMemberOf(relatedItems, item1)) return &item1;
    } else {
        // Only the representation of item 2 matters.
        trace.Line(" > Placement RZ < ");
        if (IsMemberOf(relatedItems, item2)) return &item2;
        if (IsMemberOf(relatingItems, item2)) return &item1;
    }
    return nullptr;
}

// Appends the placement that two axis placements define together: the component's is the daughter,
// the parent's the mother. Returns false and appends nothing if the data are inconsistent.
bool AppendItemDefined(Trace& trace, ShapeSearch& search, const SdaiPrimitiveH& relationship,
                       const SdaiPrimitiveH& transformation, SdaiListClassOfSdaiReal* list) {
    static constexpr const char* kCannotUnderstand = "Cannot understand the STEP WILD WEB - 1";
    trace.Line("GetAbsPlacement - ITEM_DEFINED_TRANSFORMATION ");
    search.Fetch();
    // These are fetched from memory, too, while the sides are sought.
    const SdaiPrimitiveH item1 = transformation.GetAttr("TRANSFORM_ITEM_1"_name);
    const SdaiPrimitiveH item2 = transformation.GetAttr("TRANSFORM_ITEM_2"_name);
    const SdaiPrimitiveH rep1 = relationship.GetAttr("REP_1"_name);
    const SdaiPrimitiveH rep2 = relationship.GetAttr("REP_2"_name);
    const std::optional<Sides> sides = SidesOf(trace, search);
    if (!sides.has_value()) return false;
    if (!Connects(trace, rep1, rep2, *sides)) {
        trace.Line(kCannotUnderstand);
        return false;
    }
    trace.Line(" - A2P3D_1 : #", NumberAndType{item1});
    trace.Line(" - A2P3D_2 : #", NumberAndType{item2});
    const SdaiPrimitiveH* daughter = DaughterOf(trace, item1, item2, *sides);
    if (daughter == nullptr) {
        trace.Line(kCannotUnderstand);
        return false;
    }
    ComputeABSPlacement(*daughter, daughter == &item1 ? item2 : item1, list);
    return true;
}

// Appends the placement of a link. Returns false and appends nothing if the data do not state one.
bool AppendPlacement(Trace& trace, SdaiEntityInstance* link, SdaiListClassOfSdaiReal* list) {
    if (link == nullptr) {
        trace.Line("Input argument not allocated");
        return false;
    }
    trace.Line("Nom du schema: ", link->FindEntityInstanceModel()->Underlying_schema()->Name());
    ShapeSearch search(trace, *link);
    SdaiEntityInstance* context = ContextOf(trace, link);
    search.Fetch();
    if (context == nullptr) {
        trace.Line("RRWT not found");
        return false;
    }
    trace.Line("Absolute placement computation");
    const SdaiPrimitiveH relationship = context->GetAttr("REPRESENTATION_RELATION"_name);
    const SdaiPrimitiveH transformation = SelectedOf(relationship, "TRANSFORMATION_OPERATOR"_name);
    if (transformation.IsKindOf("ITEM_DEFINED_TRANSFORMATION"_name)) {
        return AppendItemDefined(trace, search, relationship, transformation, list);
    }
    AppendTo(*list, OperatorPlacement(trace, transformation));
    return true;
}

}  // namespace

SdaiPrimitiveH GetAbsPlacement(const SdaiPrimitiveH& link) {
    PlacementList* list = NewPlacementList();
    const SdaiPrimitiveH owner = SdaiPrimitiveH::TakeOver(list);
    SdaiPrimitiveH result = Function<"GetAbsPlacement">(owner, [&](Trace& trace, const auto&) {
        if (list == nullptr) throw std::bad_alloc();
        trace.Line(" CALCUL POSITIONNEMENT ...");
        if (!AppendPlacement(trace, link, list)) {
            trace.Line("Use of default placement");
            AppendTo(*list, kIdentity);
        }
        TraceList(trace, "Affichage du positionnement:", *list);
    });
    // Memory ran out on the way.
    if (list != nullptr && list->GetMemberCount() == 0) AppendTo(*list, kIdentity);
    return result;
}
