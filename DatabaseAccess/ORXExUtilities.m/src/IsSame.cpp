// Identity comparisons: each function follows a short chain of attributes from one or both
// arguments and tests whether both ends are the same instance.

#include <algorithm>
#include <initializer_list>

#include "Attributes.h"
#include "Identity.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH IsSame0(const SdaiPrimitiveH& a, const SdaiPrimitiveH& b) {
    return Function<"IsSame0">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (a.exists() && b.exists()) {
            trace.Line("l'entite1: ", TypeNameOf{a});
            trace.Line("l'entite2        : ", TypeNameOf{b});
            result = SdaiBoolean(AreSame(a, b));
        }
        trace.Line("IsSame0 retourne ", result ? "sdaiLTRUE" : "sdaiLFALSE");
    });
}

namespace {

// Whether the attribute "DEFINITION" is a select in the schema of the instance's model, that is,
// whether the schema's name begins with one of the ten-character prefixes.
bool DefinitionIsSelect(Trace& trace, const SdaiPrimitiveH& instance,
                        std::initializer_list<const char*> prefixes) {
    const SdaiModel* model = instance.FindEntityInstanceModel();
    const SdaiString name = model != nullptr ? model->SchemaName() : SdaiString();
    const SdaiString kept = name.substr(0, 9);
    trace.Line("nom du schema : ", name);
    trace.Line("nom garde: ", kept);
    return std::any_of(prefixes.begin(), prefixes.end(),
                       [&](const char* prefix) { return kept == prefix; });
}

SdaiPrimitiveH Definition(const SdaiPrimitiveH& shape, bool isSelect) {
    return isSelect ? SelectedOf(shape, "DEFINITION"_name) : shape.GetAttr("DEFINITION"_name);
}

// The assembly link of a context-dependent shape representation.
SdaiPrimitiveH LinkOf(const SdaiPrimitiveH& context) {
    return SelectedOf(context.GetAttr("REPRESENTED_PRODUCT_RELATION"_name), "DEFINITION"_name);
}

// Compares the ends of two chains.
SdaiLogical Compare(Trace& trace, const SdaiPrimitiveH& a, const SdaiPrimitiveH& b) {
    const SdaiBoolean same(AreSame(a, b));
    trace.Line(same ? "cas egalite" : "cas difference");
    return same;
}

}  // namespace

SdaiPrimitiveH IsSamePart(const SdaiPrimitiveH& definition, const SdaiPrimitiveH& shape) {
    return Function<"IsSamePart">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (definition.exists() && shape.exists()) {
            // In this function, the attribute is read as a plain reference under "AUTOMOTIVE" as
            // well.
            const bool isSelect = DefinitionIsSelect(trace, shape, {"PDM_SCHEMA"});
            const SdaiPrimitiveH productShape = Definition(shape, isSelect);
            trace.Line("apres recuperation de definition");
            const SdaiPrimitiveH end = SelectedOf(productShape, "DEFINITION"_name);
            trace.Line("entite1: ", TypeNameOf{definition});
            trace.Line("entite2.DEFINITION : ", TypeNameOf{productShape});
            trace.Line("entite2.DEFINITION.DEFINITION : ", TypeNameOf{end});
            result = Compare(trace, definition, end);
        }
        trace.Line(result ? "retourne sdaiLTRUE" : " retourne sdaiLFALSE");
    });
}

SdaiPrimitiveH IsSameRelating(const SdaiPrimitiveH& shape, const SdaiPrimitiveH& context) {
    return Function<"IsSameRelating">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (shape.exists() && context.exists()) {
            const bool isSelect = DefinitionIsSelect(trace, context, {"PDM_SCHEMA", "AUTOMOTIVE"});
            const SdaiPrimitiveH productShape = Definition(shape, isSelect);
            trace.Line("apres recuperation de definition");
            trace.Line("entite1.DEFINITION : ", TypeNameOf{productShape});
            const SdaiPrimitiveH part = SelectedOf(productShape, "DEFINITION"_name);
            trace.Line("entite1.DEFINITION.DEFINITION : ", TypeNameOf{part});
            const SdaiPrimitiveH link = LinkOf(context);
            trace.Line("entite2.REPRESENTED_PRODUCT_RELATION.DEFINITION : ", TypeNameOf{link});
            const SdaiPrimitiveH relating = link.GetAttr("RELATING_PRODUCT_DEFINITION"_name);
            trace.Line("entite2.RELATING_PRODUCT_DEFINITION : ", TypeNameOf{relating});
            result = Compare(trace, part, relating);
        }
        trace.Line("IsSameRelating retourne ", result ? "sdaiLTRUE" : "sdaiLFALSE");
    });
}

SdaiPrimitiveH IsSameRelated(const SdaiPrimitiveH& shape, const SdaiPrimitiveH& context) {
    return Function<"IsSameRelated">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (shape.exists() && context.exists()) {
            const bool isSelect = DefinitionIsSelect(trace, context, {"PDM_SCHEMA", "AUTOMOTIVE"});
            const SdaiPrimitiveH productShape = Definition(shape, isSelect);
            trace.Line("apres recuperation de definition");
            trace.Line("IsSameRelated: entite1.DEFINITION              : ",
                       TypeNameOf{productShape});
            const SdaiPrimitiveH part = SelectedOf(productShape, "DEFINITION"_name);
            trace.Line("IsSameRelated: entite1.DEFINITION.DEFINITION   : ", TypeNameOf{part});
            const SdaiPrimitiveH link = LinkOf(context);
            trace.Line("IsSameRelated: entite2.REPRESENTED_PRODUCT_RELATION.DEFINITION : ",
                       TypeNameOf{link});
            const SdaiPrimitiveH related = link.GetAttr("RELATED_PRODUCT_DEFINITION"_name);
            trace.Line("IsSameRelated: entite2.RELATED_PRODUCT_DEFINITION : ", TypeNameOf{related});
            result = Compare(trace, part, related);
        }
        trace.Line("IsSameRelated retourne ", result ? "sdaiLTRUE" : "sdaiLFALSE");
    });
}

SdaiPrimitiveH IsSameNAUO(const SdaiPrimitiveH& link, const SdaiPrimitiveH& context) {
    return Function<"IsSameNAUO">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (link.exists() && context.exists()) {
            const SdaiPrimitiveH end = LinkOf(context);
            trace.Line("IsSameNAUO: entite1: ", TypeNameOf{link});
            trace.Line("IsSameNAUO: entite2.REPRESENTED_PRODUCT_RELATION.DEFINITION: ",
                       TypeNameOf{end});
            result = Compare(trace, link, end);
        }
        trace.Line("IsSameNAUO retourne ", result ? "sdaiLTRUE" : "sdaiLFALSE");
    });
}

SdaiPrimitiveH IsSameShapeRep1(const SdaiPrimitiveH& shape, const SdaiPrimitiveH& context) {
    return Function<"IsSameShapeRep1">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (shape.exists() && context.exists()) {
            const SdaiPrimitiveH used = shape.GetAttr("USED_REPRESENTATION"_name);
            const SdaiPrimitiveH first =
                context.GetAttr("REPRESENTATION_RELATION"_name).GetAttr("REP_1"_name);
            trace.Line("IsSameShapeRep1: entite1.USED_REPRESENTATION: ", TypeNameOf{used});
            // This line starts with the name of another function.
            trace.Line("IsSameNAUO: entite2.REPRESENTATION_RELATION.REP_1: ", TypeNameOf{first});
            result = Compare(trace, used, first);
        }
        trace.Line("IsSameShapeRep1 retourne ", result ? "sdaiLTRUE" : "sdaiLFALSE");
    });
}

SdaiPrimitiveH IsSameIDT(const SdaiPrimitiveH& transformation, const SdaiPrimitiveH& relationship) {
    return Function<"IsSameIDT">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (transformation.exists() && relationship.exists()) {
            const SdaiPrimitiveH transformer =
                SelectedOf(relationship, "TRANSFORMATION_OPERATOR"_name);
            trace.Line("IsSameIDT: entite1: ", TypeNameOf{transformation});
            trace.Line("IsSameIDT: entite2.TRANSFORMATION_OPERATOR: ", TypeNameOf{transformer});
            // The exact type: subtypes do not count.
            const SdaiNamedType* type = transformer.GetInstanceType();
            if (type != nullptr && type->Name() == "ITEM_DEFINED_TRANSFORMATION") {
                result = Compare(trace, transformation, transformer);
            }
        }
        trace.Line("IsSameIDT retourne ", result ? "sdaiLTRUE" : "sdaiLFALSE");
    });
}
