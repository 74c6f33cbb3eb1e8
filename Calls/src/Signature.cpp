// Display of the functions' signatures.

#include "Signature.h"

#include <string_view>

#include "model/Cell.h"

namespace calls {

std::vector<std::string> FunctionNames() {
    std::vector<std::string> names;
    names.reserve(orx::kExports.size());
    for (const orx::Export& row : orx::kExports) names.emplace_back(row.name);
    return names;
}

namespace {

struct KindName {
    orx::Kind kind;
    const char* name;
};
constexpr KindName kKindNames[] = {
    {orx::String, "string"},   {orx::Integer, "integer"},    {orx::Real, "real"},
    {orx::Logical, "logical"}, {orx::Instance, "instance"},  {orx::Aggregate, "aggregate"},
    {orx::Select, "select"},   {orx::RealList, "real list"}, {orx::Model, "model"},
    {orx::Nothing, "nothing"}, {orx::Unset, "unset"},
};

// The names of all kinds in a set, as shown(name) gives them.
template <class Show>
std::string Joined(orx::Kind kinds, const char* separator, Show shown) {
    std::string names;
    for (const KindName& name : kKindNames) {
        if ((kinds & name.kind) == 0) continue;
        if (!names.empty()) names += separator;
        names += shown(name.name);
    }
    return names;
}

}  // namespace

std::string KindNames(orx::Kind kinds) {
    if (kinds == orx::Any) return "any";
    return Joined(kinds, " | ", [](const char* name) { return std::string(name); });
}

std::string KindPhrase(orx::Kind kinds) {
    return Joined(kinds, " or ", [](const char* name) {
        const bool vowel = std::string_view("aeiou").find(*name) != std::string_view::npos;
        return (vowel ? "an " : "a ") + std::string(name);
    });
}

orx::Kind KindOf(const SdaiPrimitiveH& value) {
    switch (value.Kind()) {
        case SdaiKind::Unset: return orx::Unset;
        case SdaiKind::Integer: return orx::Integer;
        case SdaiKind::Real: return orx::Real;
        case SdaiKind::Logical:
        case SdaiKind::Boolean: return orx::Logical;
        case SdaiKind::Instance: return orx::Instance;
        case SdaiKind::Aggregate: return orx::Aggregate;
        case SdaiKind::String: return orx::String;
        default: return orx::None;
    }
}

bool Takes(orx::Kind taken, orx::Kind kind) {
    constexpr unsigned kNumbers = orx::Integer | orx::Real;
    constexpr unsigned kAnything = orx::Select | orx::RealList | orx::Model;
    const unsigned read = (taken & kNumbers) != 0 ? taken | kNumbers : unsigned{taken};
    return kind == orx::None || kind == orx::Unset || ((read & kind) | (taken & kAnything)) != 0;
}

std::vector<std::string> ArgumentKinds(const orx::Export& row) {
    std::vector<std::string> kinds;
    for (std::size_t i = 0; i < row.ArgumentCount(); ++i) {
        kinds.push_back(KindNames(row.arguments[i]));
    }
    return kinds;
}

std::string Signature(const orx::Export& row) {
    std::string list;
    for (const std::string& kind : ArgumentKinds(row)) list += (list.empty() ? "" : ", ") + kind;
    return std::string(row.name) + '(' + list + ')';
}

}  // namespace calls
