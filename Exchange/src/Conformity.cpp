// The check of a data set against its schema.

#include "Conformity.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ExchangeText.h"
#include "model/Aggregate.h"

namespace exchange {

namespace {

using kor::AggregateForm;
using kor::Cell;
using kor::Domain;
using kor::Tag;

// Describes a value, for messages.
std::string KindOf(const Cell& cell) {
    switch (cell.GetTag()) {
        case Tag::Integer: return "an integer";
        case Tag::Real: return "a real";
        case Tag::Logical: return "a logical";
        case Tag::Boolean: return "a boolean";
        case Tag::Text: return "a string";
        case Tag::Enumeration: return "an enumeration item";
        case Tag::Binary: return "a binary";
        case Tag::Aggregate: return "an aggregate";
        case Tag::Instance: {
            const auto& instance = kor::Instance::Of(*cell.Get<SdaiEntityInstance*>());
            return "the " + instance.Type().entity->FoldedName() + " #" +
                   std::to_string(instance.Id());
        }
        case Tag::Typed:
            return "a " + std::string(cell.Get<kor::TypedValue*>()->definedType.View());
        default: return "nothing";
    }
}

// Describes what a domain requires.
std::string WantedBy(const Domain& domain) {
    switch (domain.base) {
        case kor::Base::Integer: return "an integer";
        case kor::Base::Real: return "a real";
        case kor::Base::Number: return "a number";
        case kor::Base::String: return "a string";
        case kor::Base::Boolean: return "a boolean";
        case kor::Base::Logical: return "a logical";
        case kor::Base::Binary: return "a binary";
        case kor::Base::Enumeration: return "an enumeration item";
        case kor::Base::Entity: return "a " + domain.entity->FoldedName();
        case kor::Base::Aggregate: return "an aggregate";
        default: return "one of the types of its select";
    }
}

bool IsKindOf(const Cell& reference, const kor::EntityType& type) {
    const auto& instance = kor::Instance::Of(*reference.Get<SdaiEntityInstance*>());
    return instance.Type().entity->IsKindOf(std::string_view(type.FoldedName()));
}

// An instance of an undeclared type is accepted for any type.
bool IsUndeclared(const Cell& reference) {
    return !kor::Instance::Of(*reference.Get<SdaiEntityInstance*>()).Type().entity->IsDeclared();
}

// Checks a value and its members; calls `tell` for each violation.
class ValueCheck {
  public:
    explicit ValueCheck(const std::function<void(std::string)>& tell) : tell_(tell) {}

    void Check(const Cell& cell, const Domain& domain) {
        if (cell.GetTag() == Tag::Typed && domain.IsSelect()) return CheckTyped(cell, domain);
        if (!Allows(domain, cell)) {
            tell_(KindOf(cell) + " where " + WantedBy(domain) + " is declared");
        } else if (cell.GetTag() == Tag::Aggregate && domain.base == kor::Base::Aggregate) {
            CheckMembers(cell, domain);
        }
    }

  private:
    static bool Allows(const Domain& domain, const Cell& cell) {
        if (!domain.admitted.Has(cell.GetTag())) return false;
        if (cell.GetTag() != Tag::Instance || IsUndeclared(cell)) return true;
        if (domain.base == kor::Base::Entity) return IsKindOf(cell, *domain.entity);
        if (!domain.IsSelect()) return true;
        return std::any_of(domain.entities.begin(), domain.entities.end(),
                           [&](const kor::EntityType* type) { return IsKindOf(cell, *type); });
    }

    void CheckTyped(const Cell& cell, const Domain& select) {
        const kor::TypedValue& typed = *cell.Get<kor::TypedValue*>();
        const Domain* choice = select.Choice(typed.definedType.View());
        if (choice == nullptr) {
            return tell_(KindOf(cell) + " where " + WantedBy(select) + " is declared");
        }
        Check(typed.cell, *choice);
    }

    void CheckMembers(const Cell& cell, const Domain& domain) {
        const SdaiAggrInstance& members = *cell.Get<SdaiAggrInstance*>();
        const AggregateForm& form = domain.form;
        const std::uint64_t count = kor::AggregateAccess::Count(members);
        if (count < form.least || count > form.most) {
            tell_(std::to_string(count) + " members, " +
                  (count < form.least ? "at least " + std::to_string(form.least)
                                      : "at most " + std::to_string(form.most)) +
                  " allowed");
        }
        std::unordered_set<const SdaiEntityInstance*> seen;
        for (std::size_t i = 0; i < count; ++i) {
            const Cell member = kor::AggregateAccess::MemberCell(members, i);
            if (member.GetTag() == Tag::Unset) {
                if (!form.optionalMembers) tell_("member " + std::to_string(i + 1) + " is unset");
                continue;
            }
            Check(member, *domain.element);
            if (form.unique && member.GetTag() == Tag::Instance &&
                !seen.insert(member.Get<SdaiEntityInstance*>()).second) {
                tell_(KindOf(member) + " is a member twice");
            }
        }
    }

    const std::function<void(std::string)>& tell_;
};

}  // namespace

Conformity CheckModel(const kor::Model& model, const std::function<void(const Violation&)>& tell) {
    Conformity result;
    model.ForEachInstance([&](const kor::Instance& instance) {
        const kor::EntityType& type = *instance.Type().entity;
        if (!type.IsDeclared()) ++result.undeclared[type.FoldedName()];
        const std::vector<kor::Slot>& slots = type.Slots();
        for (std::size_t i = 0; i < slots.size(); ++i) {
            const kor::Slot& slot = slots[i];
            if (slot.attribute == nullptr || slot.domain == nullptr || slot.derived) continue;
            const std::function<void(std::string)> say = [&](std::string text) {
                ++result.violations;
                tell({&instance, std::string(slot.attribute->Name().View()), std::move(text)});
            };
            const Cell& cell = instance.Values()[i];
            if (cell.GetTag() != Tag::Unset) {
                ValueCheck(say).Check(cell, *slot.domain);
            } else if (!slot.optional) {
                say("is mandatory and unset");
            }
        }
    });
    return result;
}

}  // namespace exchange
