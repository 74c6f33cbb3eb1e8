// References between instances.

#include "Users.h"

#include <algorithm>
#include <string>

namespace python {

namespace {

// Calls visit(instance) for every instance in a value until it returns true.
template <class Visit>
bool AnyInstance(const SdaiPrimitiveH& value, const Visit& visit) {
    if (SdaiEntityInstance* instance = value) return visit(*instance);
    const SdaiAggrInstance* members = value;
    if (members == nullptr || kor::AggregateAccess::IsRealList(*members)) return false;
    for (long i = 0; i < members->GetMemberCount(); ++i) {
        if (AnyInstance(members->GetMember(i), visit)) return true;
    }
    return false;
}

// Whether an attribute of the domain may hold an aggregate; a null domain is that of an undeclared
// type.
bool MayBeAggregate(const kor::Domain* domain) {
    using kor::Base;
    if (domain == nullptr || domain->base == Base::Generic) return true;
    if (domain->base != Base::Select) return domain->base == Base::Aggregate;
    return std::any_of(domain->choices.begin(), domain->choices.end(),
                       [](const auto& choice) { return MayBeAggregate(choice.second); });
}

// Whether the attribute is never an aggregate in instances of the entity type.
bool IsSingle(const kor::Model& model, const kor::EntityType& entity, std::string_view attribute) {
    return std::all_of(model.Types().begin(), model.Types().end(), [&](const kor::ModelType& type) {
        if (!type.entity->IsKindOf(std::string_view(entity.FoldedName()))) return true;
        const kor::Index slot = type.entity->SlotOf(attribute);
        return !slot || !MayBeAggregate(type.entity->Slots()[*slot].domain);
    });
}

}  // namespace

std::vector<SdaiEntityInstance*> UsersOf(const SdaiEntityInstance& instance,
                                         const kor::Model& model, const kor::EntityType& entity,
                                         std::string_view attribute) {
    const std::string& type = entity.FoldedName();
    if (IsSingle(model, entity, attribute)) {
        const std::string folded = kor::Folded(attribute);
        return model.UsersOf(instance, {type, type, SdaiNameHash(type)},
                             {folded, folded, SdaiNameHash(folded)});
    }
    const SdaiString name(attribute);
    std::vector<SdaiEntityInstance*> users;
    const SdaiAggrInstance* extent = model.Extent(std::string_view(type));
    for (SdaiEntityInstance* user : kor::AggregateAccess::ExtentMembers(*extent)) {
        const auto isSought = [&](const SdaiEntityInstance& held) { return &held == &instance; };
        if (AnyInstance(user->GetAttr(name), isSought)) users.push_back(user);
    }
    return users;
}

bool RefersOnlyTo(const kor::Model& model, const SdaiPrimitiveH& value) {
    return !AnyInstance(value, [&](const SdaiEntityInstance& held) {
        return held.FindEntityInstanceModel() != &model;
    });
}

}  // namespace python
