// Whether values match the declared domains.

#include "Expectation.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "model/Aggregate.h"
#include "model/Cell.h"
#include "model/Model.h"

namespace calls {

namespace {

using kor::Base;

bool IsInstanceOf(const SdaiEntityInstance& instance, const kor::EntityType& entity) {
    const kor::EntityType& type = *kor::Instance::Of(instance).Type().entity;
    if (type.IsKindOf(std::string_view(entity.FoldedName()))) return true;
    return std::any_of(type.Lineage().begin(), type.Lineage().end(),
                       [](const kor::EntityType* kind) { return !kind->IsDeclared(); });
}

bool IsItemName(std::string_view text) {
    const auto isLetter = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    return !text.empty() && isLetter(text[0]) && std::all_of(text.begin(), text.end(), [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9');
    });
}

bool FitsSelect(const SdaiPrimitiveH& value, const kor::Domain& select) {
    if (const kor::TypedValue* typed = kor::HandleAccess::TypedOf(value)) {
        const kor::Domain* choice = select.Choice(typed->definedType.View());
        return choice != nullptr && Fits(typed->value, choice);
    }
    if (const SdaiEntityInstance* instance = value) {
        return std::any_of(select.entities.begin(), select.entities.end(),
                           [&](const auto* entity) { return IsInstanceOf(*instance, *entity); });
    }
    return std::any_of(select.choices.begin(), select.choices.end(),
                       [&](const auto& choice) { return Fits(value, choice.second); });
}

bool FitsAggregate(const SdaiAggrInstance* members, const kor::Domain* element) {
    if (members == nullptr) return false;
    for (long i = 0; i < members->GetMemberCount(); ++i) {
        if (!Fits(members->GetMember(i), element)) return false;
    }
    return true;
}

}  // namespace

bool Fits(const SdaiPrimitiveH& value, const kor::Domain* domain) {
    if (!value.exists() || domain == nullptr) return true;
    const SdaiKind kind = value.Kind();
    switch (domain->base) {
        case Base::Generic: return true;
        case Base::Select: return FitsSelect(value, *domain);
        case Base::Integer: return kind == SdaiKind::Integer;
        case Base::Real:
        case Base::Number: return kind == SdaiKind::Real || kind == SdaiKind::Integer;
        case Base::String: return kind == SdaiKind::String;
        case Base::Binary: return kind == SdaiKind::Binary;
        case Base::Logical: return kind == SdaiKind::Logical || kind == SdaiKind::Boolean;
        case Base::Boolean:
            return kind == SdaiKind::Boolean ||
                   (kind == SdaiKind::Logical &&
                    static_cast<const SdaiLogical&>(value) != SdaiLogical());
        case Base::Enumeration:
            return kind == SdaiKind::Enumeration ||
                   (kind == SdaiKind::String && IsItemName(TextOf(value).View()));
        case Base::Entity: {
            const SdaiEntityInstance* instance = value;
            return instance != nullptr && IsInstanceOf(*instance, *domain->entity);
        }
        case Base::Aggregate: return FitsAggregate(value, domain->element);
    }
    return true;
}

std::string Expectation(const kor::Domain& domain) {
    switch (domain.base) {
        case Base::Integer: return "an integer";
        case Base::Real: return "a real";
        case Base::Number: return "a number";
        case Base::String: return "a text";
        case Base::Boolean: return "a boolean";
        case Base::Logical: return "a logical";
        case Base::Binary: return "a binary";
        case Base::Enumeration: return "an item of an enumeration";
        case Base::Entity: return "an instance of " + std::string(domain.entity->Name().View());
        case Base::Aggregate:
            return "a list of " + (domain.element != nullptr ? Expectation(*domain.element)
                                                             : std::string("values"));
        case Base::Select: {
            std::string names;
            for (const auto& [name, choice] : domain.choices) {
                names += (names.empty() ? "" : ", ") + name;
            }
            for (const kor::EntityType* entity : domain.entities) {
                names += (names.empty() ? "" : ", ") + std::string(entity->Name().View());
            }
            return "one of " + names;
        }
        case Base::Generic: break;
    }
    return "a value";
}

namespace {

std::string Choices(const char* keyword, const std::vector<std::string>& names) {
    constexpr std::size_t kShown = 4;
    std::string text = keyword;
    for (std::size_t i = 0; i < std::min(names.size(), kShown); ++i) {
        text += (i == 0 ? " (" : ", ") + names[i];
    }
    if (names.size() > kShown) text += ", ...";
    return names.empty() ? text : text + ')';
}

std::string DeclaredAggregate(const kor::Domain& domain) {
    static constexpr const char* kKinds[] = {"ARRAY", "BAG", "LIST", "SET"};
    const kor::AggregateForm& form = domain.form;
    const std::string most =
        form.most == kor::AggregateForm::kUnbounded ? "?" : std::to_string(form.most);
    // For an array, only its length is known.
    const std::uint64_t least = form.kind == kor::AggregateForm::Kind::Array ? 1 : form.least;
    return kKinds[static_cast<std::size_t>(form.kind)] + (" [" + std::to_string(least)) + ':' +
           most + "] OF " + DeclaredType(domain.element);
}

}  // namespace

std::string DeclaredType(const kor::Domain* domain) {
    if (domain == nullptr) return "GENERIC";
    switch (domain->base) {
        case Base::Integer: return "INTEGER";
        case Base::Real: return "REAL";
        case Base::Number: return "NUMBER";
        case Base::String: return "STRING";
        case Base::Boolean: return "BOOLEAN";
        case Base::Logical: return "LOGICAL";
        case Base::Binary: return "BINARY";
        case Base::Enumeration: return Choices("ENUMERATION", domain->items);
        case Base::Entity: return std::string(domain->entity->Name().View());
        case Base::Aggregate: return DeclaredAggregate(*domain);
        case Base::Select: {
            std::vector<std::string> names;
            for (const auto& [name, choice] : domain->choices) names.push_back(name);
            for (const kor::EntityType* entity : domain->entities) {
                names.emplace_back(entity->Name().View());
            }
            return Choices("SELECT", names);
        }
        case Base::Generic: break;
    }
    return "GENERIC";
}

}  // namespace calls
