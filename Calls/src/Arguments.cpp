// Arguments of the mapping functions.

#include "Arguments.h"

#include <algorithm>

#include "model/Aggregate.h"
#include "model/Cell.h"

namespace calls {

namespace {

// The kinds of argument that a value, taken out of its selects, can serve as.
orx::Kind KindsOf(const SdaiPrimitiveH& value) {
    switch (value.Kind()) {
        case SdaiKind::String: return orx::String;
        case SdaiKind::Integer: return orx::Integer | orx::Real;
        case SdaiKind::Real: return orx::Real;
        case SdaiKind::Logical:
        case SdaiKind::Boolean: return orx::Logical;
        case SdaiKind::Instance: return orx::Instance;
        case SdaiKind::Aggregate: return orx::Aggregate;
        default: return orx::Select;  // items of enumerations and binaries
    }
}

}  // namespace

bool Accepts(orx::Kind expected, const SdaiPrimitiveH& value) {
    const bool any = (expected & orx::Select) != 0;  // whatever a SELECT may hold
    return any || !value.exists() || (expected & KindsOf(value)) != 0;
}

bool IsFilled(const orx::Export& row, std::size_t argument) {
    return row.result == orx::Nothing && argument + 1 == row.ArgumentCount();
}

bool MayCreate(const orx::Export& row) {
    return row.name == "GetStartDate" || row.name == "GetEndDate" || row.name == "BuildDatedEff";
}

SdaiPrimitiveH ListOf(std::span<const SdaiPrimitiveH> members) {
    auto* aggregate = new SdaiAggrInstance;
    SdaiPrimitiveH list = SdaiPrimitiveH::TakeOver(aggregate);
    for (const SdaiPrimitiveH& member : members) aggregate->Append(member);
    return list;
}

SdaiPrimitiveH LiteralList(std::span<const SdaiPrimitiveH> members) {
    const bool numbers = std::all_of(members.begin(), members.end(), [](const auto& member) {
        const SdaiKind kind = member.Kind();
        return kind == SdaiKind::Integer || kind == SdaiKind::Real;
    });
    if (!numbers) return ListOf(members);
    auto* reals = new SdaiListClassOfSdaiReal(0, 0);
    SdaiPrimitiveH list = SdaiPrimitiveH::TakeOver(reals);
    for (const SdaiPrimitiveH& member : members) reals->Append(static_cast<double>(member));
    return list;
}

}  // namespace calls
