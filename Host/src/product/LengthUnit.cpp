// Units of length.

#include "product/LengthUnit.h"

#include <cctype>
#include <cmath>

#include "SdaiIterator.h"

namespace host {

using namespace sdai_names;

namespace {

struct Prefix {
    const char* item;
    const char* symbol;
    double factor;
};
constexpr Prefix kPrefixes[] = {
    {"$", "", 1},           {".EXA.", "E", 1e18},  {".PETA.", "P", 1e15},  {".TERA.", "T", 1e12},
    {".GIGA.", "G", 1e9},   {".MEGA.", "M", 1e6},  {".KILO.", "k", 1e3},   {".HECTO.", "h", 1e2},
    {".DECA.", "da", 1e1},  {".DECI.", "d", 1e-1}, {".CENTI.", "c", 1e-2}, {".MILLI.", "m", 1e-3},
    {".MICRO.", "µ", 1e-6}, {".NANO.", "n", 1e-9}, {".PICO.", "p", 1e-12}, {".FEMTO.", "f", 1e-15},
    {".ATTO.", "a", 1e-18},
};

struct KnownName {
    const char* name;
    const char* symbol;
};
constexpr KnownName kKnownNames[] = {{"INCH", "in"}, {"INCHES", "in"}, {"FOOT", "ft"},
                                     {"FEET", "ft"}, {"YARD", "yd"},   {"MILE", "mi"}};

std::optional<LengthUnit> SiUnit(const SdaiPrimitiveH& unit) {
    if (ToString(unit.GetAttr("NAME"_name)) != ".METRE.") return std::nullopt;
    const std::string item = ToString(unit.GetAttr("PREFIX"_name));
    for (const Prefix& prefix : kPrefixes) {
        if (item == prefix.item) return LengthUnit{std::string(prefix.symbol) + 'm', prefix.factor};
    }
    return std::nullopt;
}

// A unit of length: an SI unit, or one that is converted into another.
std::optional<LengthUnit> UnitOfLength(SdaiPrimitiveH unit) {
    if (!unit.IsKindOf("LENGTH_UNIT"_name)) return std::nullopt;
    std::optional<std::string> name;
    double factor = 1;
    // Conversions into conversions are rare; a cycle of them ends here.
    for (int steps = 0; steps < 8; ++steps) {
        if (unit.IsKindOf("SI_UNIT"_name)) {
            std::optional<LengthUnit> found = SiUnit(unit);
            if (!found || !name) return found;
            found->metres *= factor;
            if (!(found->metres > 0) || !std::isfinite(found->metres)) return std::nullopt;
            found->symbol = *name;
            return found;
        }
        if (!unit.IsKindOf("CONVERSION_BASED_UNIT"_name)) return std::nullopt;
        if (!name) {
            name = TextOf(unit.GetAttr("NAME"_name)).ToUtf8();
            std::string folded = *name;
            for (char& c : folded)
                c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
            for (const KnownName& known : kKnownNames) {
                if (folded == known.name) name = known.symbol;
            }
            if (name->empty()) return std::nullopt;
        }
        const SdaiPrimitiveH conversion = unit.GetAttr("CONVERSION_FACTOR"_name);
        factor *= static_cast<double>(conversion.GetAttr("VALUE_COMPONENT"_name));
        unit = conversion.GetAttr("UNIT_COMPONENT"_name);
    }
    return std::nullopt;
}

}  // namespace

std::optional<LengthUnit> UnitOfRepresentation(const SdaiEntityInstance& representation) {
    const SdaiPrimitiveH context = representation.GetAttr("CONTEXT_OF_ITEMS"_name);
    const SdaiPrimitiveH units = context.GetAttr("UNITS"_name);
    SdaiIterator_Of_SdaiEntityInstanceH unit(units);
    while (unit.Next()) {
        if (auto found = UnitOfLength(unit.GetCurrentMember())) return found;
    }
    return std::nullopt;
}

}  // namespace host
