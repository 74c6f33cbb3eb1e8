#include "Users.h"

#include <algorithm>

namespace python {

namespace {

// Calls visit(instance) for every instance that a value holds until it gives true.
template <class Visit>
bool AnyInstance(const SdaiPrimitiveH& value, const Visit& visit) {
    if (SdaiEntityInstance* instance = value) return visit(*instance);
    const SdaiAggrInstance* members = value;
    if (members == nullptr || KORAggregateAccess::IsRealList(*members)) return false;
    for (long i = 0; i < members->GetMemberCount(); ++i) {
        if (AnyInstance(members->GetMember(i), visit)) return true;
    }
    return false;
}

}  // namespace

std::vector<SdaiEntityInstance*> UsersOf(const SdaiEntityInstance& instance,
                                         const kor::Model& model, const kor::EntityType& entity,
                                         std::string_view attribute) {
    const SdaiString name(attribute);
    std::vector<SdaiEntityInstance*> users;
    for (SdaiEntityInstance* user :
         model.Extent(std::string_view(entity.FoldedName()))->ExtentMembers()) {
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
