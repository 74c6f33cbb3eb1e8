// Display of the functions' signatures.

#include "Signature.h"

namespace calls {

std::vector<std::string> FunctionNames() {
    std::vector<std::string> names;
    names.reserve(orx::kExports.size());
    for (const orx::Export& row : orx::kExports) names.emplace_back(row.name);
    return names;
}

std::string KindNames(orx::Kind kinds) {
    struct Name {
        orx::Kind kind;
        const char* name;
    };
    static constexpr Name kNames[] = {
        {orx::String, "string"},   {orx::Integer, "integer"},    {orx::Real, "real"},
        {orx::Logical, "logical"}, {orx::Instance, "instance"},  {orx::Aggregate, "aggregate"},
        {orx::Select, "select"},   {orx::RealList, "real list"}, {orx::Model, "model"},
        {orx::Nothing, "nothing"}, {orx::Unset, "unset"},
    };
    if (kinds == orx::Any) return "any";
    std::string names;
    for (const Name& name : kNames) {
        if ((kinds & name.kind) == 0) continue;
        if (!names.empty()) names += " | ";
        names += name.name;
    }
    return names;
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
