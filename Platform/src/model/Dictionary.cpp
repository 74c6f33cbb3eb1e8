// Resolves the declarations of a schema into its dictionary.

#include "model/Dictionary.h"
#include "services/Suggestions.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace kor {

namespace {

// Limits on a schema, far above what any real schema needs and small enough for any machine.
// Subtypes inherit from their supertypes, and selects from their member selects, so that without
// limits a short text could exhaust memory.
constexpr std::size_t kMostLevels = 1'000;         // of subtypes
constexpr std::size_t kMostInherited = 2'000'000;  // attributes and supertypes, over all entities
constexpr std::size_t kMostChoices = 1'000'000;    // over all selects
constexpr std::size_t kMostItems = 1'000'000;      // over all enumerations

// After this many unknown names, messages have no suggestions.
constexpr std::size_t kMostSuggestions = 20;

}  // namespace

const Domain* Domain::Choice(std::string_view definedType) const {
    for (const auto& [name, domain] : choices) {
        if (MatchesFolded(definedType, name)) return domain;
    }
    return nullptr;
}

TagSet Domain::Admitted() const {
    switch (base) {
        case Base::Integer: return {Tag::Unset, Tag::Derived, Tag::Integer};
        case Base::Real: return {Tag::Unset, Tag::Derived, Tag::Real};
        case Base::Number: return {Tag::Unset, Tag::Derived, Tag::Integer, Tag::Real};
        case Base::String: return {Tag::Unset, Tag::Derived, Tag::Text};
        case Base::Boolean: return {Tag::Unset, Tag::Derived, Tag::Boolean};
        case Base::Logical: return {Tag::Unset, Tag::Derived, Tag::Logical};
        case Base::Binary: return {Tag::Unset, Tag::Derived, Tag::Binary};
        case Base::Enumeration: return {Tag::Unset, Tag::Derived, Tag::Enumeration};
        case Base::Entity: return {Tag::Unset, Tag::Derived, Tag::Instance, Tag::Pending};
        case Base::Aggregate: return {Tag::Unset, Tag::Derived, Tag::Aggregate};
        case Base::Select:
            if (choices.empty()) return {Tag::Unset, Tag::Derived, Tag::Instance, Tag::Pending};
            if (entities.empty()) return {Tag::Unset, Tag::Derived, Tag::Typed};
            return {Tag::Unset, Tag::Derived, Tag::Instance, Tag::Pending, Tag::Typed};
        case Base::Generic: break;
    }
    return kAnyKind;
}

bool Domain::AdmitsItem(std::string_view word) const {
    if (base == Base::Enumeration) {
        return items.empty() || std::binary_search(items.begin(), items.end(), Folded(word));
    }
    bool hasEnumeration = false;
    for (const auto& [name, choice] : choices) {
        if (choice->base != Base::Enumeration) continue;
        if (choice->AdmitsItem(word)) return true;
        hasEnumeration = true;
    }
    return !hasEnumeration;
}

// ---- Entity types

void EntityType::AddKind(const EntityType& kind) {
    if (kinds_.Add(kind.folded_, 0)) lineage_.push_back(&kind);
}

void EntityType::AddSlot(const Slot& slot, Places& places) {
    if (slot.attribute != nullptr) places.emplace(slot.attribute, slots_.size());
    slots_.push_back(slot);
}

// Inherits the slots that the type does not have yet, and the supertype's redeclarations of those
// that it has. Nothing is inherited from an undeclared type.
void EntityType::InheritFrom(const EntityType& supertype, Places& places) {
    for (const Slot& inherited : supertype.slots_) {
        if (inherited.attribute == nullptr) continue;
        const auto place = places.find(inherited.attribute);
        if (place == places.end()) {
            AddSlot(inherited, places);
        } else if (inherited.derived || inherited.domain != inherited.attribute->domain ||
                   inherited.optional != inherited.attribute->optional) {
            Slot& known = slots_[place->second];
            known.derived |= inherited.derived;
            known.domain = inherited.domain;
            known.optional = inherited.optional;
        }
    }
    renamed_.insert(renamed_.end(), supertype.renamed_.begin(), supertype.renamed_.end());
    for (const EntityType* kind : supertype.lineage_) AddKind(*kind);
}

// Enters the slots under the names of their attributes, unless a name is already used.
void EntityType::AddNames(const Places& places) {
    for (const Slot& slot : slots_) {
        if (slot.attribute == nullptr) continue;
        attributes_.Add(slot.attribute->folded, static_cast<std::size_t>(&slot - slots_.data()));
    }
    for (const Renamed& renamed : renamed_) {
        const auto place = places.find(renamed.attribute);
        if (place == places.end() || place->second >= slots_.size()) continue;
        attributes_.Add(renamed.name, place->second);
    }
}

std::vector<std::string> EntityType::AttributeNames() const {
    std::vector<std::string> names;
    for (const Slot& slot : slots_) {
        if (slot.attribute != nullptr) names.emplace_back(slot.attribute->Name().View());
    }
    return names;
}

std::unique_ptr<EntityType> EntityType::MakeUndeclared(std::string_view foldedName,
                                                       std::size_t slotCount, std::size_t number) {
    std::unique_ptr<EntityType> type(new EntityType(SdaiString(foldedName), false));
    type->number_ = number;
    type->slots_.resize(slotCount);
    type->parts_.push_back({type->folded_, 0, slotCount});
    type->AddKind(*type);
    return type;
}

std::unique_ptr<EntityType> EntityType::MakeComplex(const std::vector<const EntityType*>& parts,
                                                    std::size_t number) {
    std::string name;
    bool declared = true;
    for (const EntityType* part : parts) {
        if (!name.empty()) name += '+';
        name += part->Name().View();
        declared = declared && part->declared_;
    }
    std::unique_ptr<EntityType> type(new EntityType(SdaiString(name), declared));
    type->complex_ = true;
    type->number_ = number;
    Places places;
    std::size_t ownSlots = 0;
    for (const EntityType* part : parts) ownSlots += part->OwnSlots().size();
    type->slots_.reserve(ownSlots);
    for (const EntityType* part : parts) {
        const std::size_t first = type->slots_.size();
        for (const Slot& slot : part->OwnSlots()) type->AddSlot(slot, places);
        type->parts_.push_back({part->folded_, first, type->slots_.size() - first});
    }
    // One part may narrow or derive an attribute that another declares. Supertypes that are not
    // among the parts have no values here.
    const std::size_t slotCount = type->slots_.size();
    for (const EntityType* part : parts) type->InheritFrom(*part, places);
    type->kinds_.Add(type->folded_, 0);
    type->slots_.resize(slotCount);
    type->AddNames(places);
    return type;
}

// ---- Schemas

std::vector<std::string> Schema::EntityNames() const {
    std::vector<std::string> names;
    names.reserve(entities_.size());
    for (const EntityType* entity : entities_) names.emplace_back(entity->Name().View());
    return names;
}

class Schema::Resolver {
  public:
    Resolver(const SchemaDeclaration& declaration, Schema& schema, std::vector<Diagnostic>& errors)
        : declaration_(declaration),
          schema_(schema),
          errors_(errors),
          keepSpelling_(MatchesFolded(declaration.name, "CDMA")) {}

    void Run() {
        NameEverything();
        try {
            for (std::size_t i = 0; i < declaration_.types.size(); ++i) ResolveType(i);
            ResolveEnumerations();
            ResolveSelects();
            ResolveEntities();
        } catch (const TooMuch&) {
            return;
        }
        for (Domain& domain : schema_.domains_) domain.admitted = domain.Admitted();
        NumberAttributes();
    }

  private:
    // A limit was exceeded, and this has been reported.
    struct TooMuch {};

    SdaiString Spelled(std::string_view name) const {
        return SdaiString(keepSpelling_ ? std::string(name) : Folded(name));
    }

    void Fail(Place place, std::string message) { errors_.push_back({place, std::move(message)}); }

    // Enters all types and entities before resolving any, since declarations come in any order.
    void NameEverything() {
        for (const TypeDeclaration& type : declaration_.types) {
            schema_.domains_.emplace_back();
            schema_.typeNames_.push_back(Folded(type.name));
            if (!schema_.typeTable_.Add(schema_.typeNames_.back(), typeDomains_.size())) {
                Fail(type.place, "type '" + type.name + "' is declared twice");
            }
            typeDomains_.push_back(&schema_.domains_.back());
        }
        for (const EntityDeclaration& entity : declaration_.entities) {
            schema_.ownedEntities_.emplace_back(new EntityType(Spelled(entity.name), true));
            EntityType& type = *schema_.ownedEntities_.back();
            if (schema_.typeTable_.Find(std::string_view(type.folded_)).has_value() ||
                !schema_.entityTable_.Add(type.folded_, schema_.entities_.size())) {
                Fail(entity.place, "entity '" + entity.name + "' is declared twice");
            }
            type.abstract_ = entity.abstract;
            type.number_ = schema_.entities_.size();
            schema_.entities_.push_back(&type);
            schema_.domains_.emplace_back();
            schema_.domains_.back().base = Base::Entity;
            schema_.domains_.back().entity = &type;
            entityDomains_.push_back(&schema_.domains_.back());
        }
    }

    // The domain of a type expression. The domain of an alias is complete only after ResolveType.
    const Domain* DomainOf(const TypeExpression& expression) {
        if (expression.kind == TypeExpression::Kind::Named) {
            const std::string_view name = expression.name;
            if (const Index type = schema_.typeTable_.Find(name)) return typeDomains_[*type];
            if (const Index entity = schema_.entityTable_.Find(name)) {
                return entityDomains_[*entity];
            }
            Unknown(expression.place, "type", expression.name);
            return &generic_;
        }
        schema_.domains_.emplace_back();
        Domain& domain = schema_.domains_.back();
        FillIn(domain, expression);
        return &domain;
    }

    // Sets the domain to that of a simple or aggregate type.
    void FillIn(Domain& domain, const TypeExpression& expression) {
        if (expression.kind == TypeExpression::Kind::Simple) {
            // The simple types come first among the bases, in the same order.
            domain.base = expression.simple;
        } else {
            domain.base = Base::Aggregate;
            domain.form = expression.form;
            domain.element = DomainOf(*expression.element);
        }
    }

    // Of a "type", which entity types are as well, or of an "entity".
    void Unknown(Place place, const std::string& what, const std::string& name) {
        std::string suggestion;
        if (errors_.size() < kMostSuggestions) {
            std::vector<std::string> known = schema_.EntityNames();
            for (const TypeDeclaration& type : declaration_.types) {
                if (what == "type") known.emplace_back(Spelled(type.name).View());
            }
            suggestion = DidYouMean(name, known);
        }
        Fail(place, "unknown " + what + " '" + name + "'" + suggestion);
    }

    [[noreturn]] void FailOfLimit(Place place, std::string message) {
        Fail(place, std::move(message));
        throw TooMuch();
    }

    // The type that this type is an alias of; none if it is not an alias.
    Index AliasOf(std::size_t index) const {
        const TypeDeclaration& type = declaration_.types[index];
        if (type.kind != TypeDeclaration::Kind::Alias ||
            type.alias.kind != TypeExpression::Kind::Named) {
            return std::nullopt;
        }
        return schema_.typeTable_.Find(std::string_view(type.alias.name));
    }

    // Resolves a type and the types that it is an alias of, each once.
    void ResolveType(std::size_t index) {
        std::vector<std::size_t> path;
        Index next = index;
        for (; next.has_value() && types_[*next].state == State::Unseen; next = AliasOf(*next)) {
            types_[*next].state = State::Open;
            path.push_back(*next);
        }
        if (next.has_value() && types_[*next].state != State::Resolved) {
            for (const std::size_t type : path) {
                types_[type].state = State::Circular;
                Fail(declaration_.types[type].place,
                     "type '" + declaration_.types[type].name + "' is defined by itself");
            }
            return;
        }
        for (; !path.empty(); path.pop_back()) {
            const std::size_t type = path.back();
            types_[type].state = State::Resolved;
            if (next.has_value()) {
                *typeDomains_[type] = *typeDomains_[*next];
                types_[type].select = types_[*next].select;
                types_[type].enumeration = types_[*next].enumeration;
            } else {
                Define(type);
            }
            if (types_[type].select != nullptr) {
                selects_.emplace_back(typeDomains_[type], types_[type].select);
            }
            if (types_[type].enumeration != nullptr) {
                enumerations_.emplace_back(typeDomains_[type], types_[type].enumeration);
            }
            next = type;
        }
    }

    // Creates the domain of a type that is not an alias.
    void Define(std::size_t index) {
        const TypeDeclaration& type = declaration_.types[index];
        Domain& domain = *typeDomains_[index];
        switch (type.kind) {
            case TypeDeclaration::Kind::Alias:
                if (type.alias.kind == TypeExpression::Kind::Named) {
                    domain = *DomainOf(type.alias);
                } else {
                    FillIn(domain, type.alias);
                }
                break;
            case TypeDeclaration::Kind::Enumeration:
                domain.base = Base::Enumeration;
                types_[index].enumeration = &type;
                break;
            case TypeDeclaration::Kind::Select:
                domain.base = Base::Select;
                types_[index].select = &type;
                break;
        }
    }

    // Lists the items of each enumeration: its own, those of the enumeration that it extends, and
    // those of its extensions.
    void ResolveEnumerations() {
        std::multimap<std::string, const TypeDeclaration*> extensions;
        for (const TypeDeclaration& type : declaration_.types) {
            if (type.kind == TypeDeclaration::Kind::Enumeration && !type.basedOn.empty()) {
                extensions.emplace(Folded(type.basedOn), &type);
            }
        }
        for (const auto& [domain, declaration] : enumerations_) {
            std::set<const TypeDeclaration*> seen;
            const auto add = [&, items = &domain->items](const TypeDeclaration* type) {
                const bool isEnumeration = type->kind == TypeDeclaration::Kind::Enumeration;
                if (!isEnumeration || !seen.insert(type).second) return false;
                listed_ += type->members.size() + 1;
                if (listed_ > kMostItems) {
                    FailOfLimit(type->place,
                                "the enumerations of the schema list more than 1,000,000 items");
                }
                for (const std::string& item : type->members) items->push_back(Folded(item));
                return true;
            };
            const TypeDeclaration* base = declaration;
            while (add(base)) {
                const Index next = schema_.typeTable_.Find(std::string_view(base->basedOn));
                if (!next) break;
                base = &declaration_.types[*next];
            }
            std::vector<const TypeDeclaration*> open{declaration};
            while (!open.empty()) {
                const auto [first, last] = extensions.equal_range(Folded(open.back()->name));
                open.pop_back();
                for (auto extension = first; extension != last; ++extension) {
                    if (add(extension->second)) open.push_back(extension->second);
                }
            }
            std::sort(domain->items.begin(), domain->items.end());
        }
    }

    // Lists the choices of each select: members that are selects are replaced by their choices, and
    // the choices of its extensions are added.
    void ResolveSelects() {
        std::multimap<std::string, const TypeDeclaration*> extensions;
        for (const auto& [domain, declaration] : selects_) {
            if (!declaration->basedOn.empty()) {
                extensions.emplace(Folded(declaration->basedOn), declaration);
            }
        }
        for (const auto& [domain, declaration] : selects_) {
            std::set<std::string> seen;
            std::vector<const TypeDeclaration*> open{declaration};
            while (!open.empty()) {
                const TypeDeclaration& select = *open.back();
                open.pop_back();
                std::vector<std::string> members = select.members;
                if (!select.basedOn.empty()) members.push_back(select.basedOn);
                const auto [first, last] = extensions.equal_range(Folded(select.name));
                for (auto extension = first; extension != last; ++extension) {
                    members.push_back(extension->second->name);
                }
                chosen_ += members.size();
                if (chosen_ > kMostChoices) {
                    FailOfLimit(declaration->place,
                                "the selects of the schema list more than 1,000,000 types in all");
                }
                for (const std::string& member : members) {
                    if (seen.insert(Folded(member)).second)
                        AddChoice(*domain, member, select, open);
                }
            }
        }
    }

    void AddChoice(Domain& domain, const std::string& member, const TypeDeclaration& select,
                   std::vector<const TypeDeclaration*>& open) {
        if (const Index type = schema_.typeTable_.Find(std::string_view(member))) {
            if (declaration_.types[*type].kind == TypeDeclaration::Kind::Select) {
                open.push_back(&declaration_.types[*type]);
            } else {
                domain.choices.emplace_back(schema_.typeNames_[*type], typeDomains_[*type]);
            }
        } else if (const EntityType* entity = schema_.FindEntity(std::string_view(member))) {
            domain.entities.push_back(entity);
        } else {
            Unknown(select.place, "type", member);
        }
    }

    // Supertypes before subtypes, otherwise in the order of declaration.
    void ResolveEntities() {
        const std::size_t count = declaration_.entities.size();
        std::vector<std::size_t> missing(count, 0);
        std::vector<std::vector<std::size_t>> subtypes(count);
        std::vector<std::size_t> ready;
        for (std::size_t i = 0; i < count; ++i) {
            for (const std::string& name : declaration_.entities[i].supertypes) {
                const Index supertype = schema_.entityTable_.Find(std::string_view(name));
                if (!supertype) {
                    Unknown(declaration_.entities[i].place, "entity", name);
                    continue;
                }
                subtypes[*supertype].push_back(i);
                ++missing[i];
            }
            if (missing[i] == 0) ready.push_back(i);
        }
        std::vector<std::size_t> level(count, 0);
        std::size_t resolved = 0;
        for (; resolved < ready.size(); ++resolved) {
            const std::size_t entity = ready[resolved];
            if (level[entity] > kMostLevels) {
                FailOfLimit(declaration_.entities[entity].place,
                            "entity '" + declaration_.entities[entity].name +
                                "' has more than 1,000 levels of supertypes");
            }
            ResolveEntity(entity);
            for (const std::size_t subtype : subtypes[entity]) {
                level[subtype] = std::max(level[subtype], level[entity] + 1);
                if (--missing[subtype] == 0) ready.push_back(subtype);
            }
        }
        for (std::size_t i = 0; resolved < count && i < count; ++i) {
            if (missing[i] != 0) {
                Fail(declaration_.entities[i].place,
                     "entity '" + declaration_.entities[i].name + "' is a subtype of itself");
            }
        }
    }

    void ResolveEntity(std::size_t index) {
        const EntityDeclaration& declaration = declaration_.entities[index];
        EntityType& type = *schema_.ownedEntities_[index];
        type.AddKind(type);
        EntityType::Places places;
        for (const std::string& name : declaration.supertypes) {
            if (const EntityType* supertype = schema_.FindEntity(std::string_view(name))) {
                inherited_ += supertype->Slots().size() + supertype->Lineage().size() +
                              supertype->renamed_.size();
                if (inherited_ > kMostInherited) {
                    FailOfLimit(declaration.place,
                                "the entities of the schema inherit more than 2,000,000 attributes "
                                "and supertypes in all");
                }
                type.InheritFrom(*supertype, places);
            }
        }
        type.firstOwnSlot_ = type.slots_.size();
        for (const AttributeDeclaration& attribute : declaration.attributes) {
            if (attribute.Redeclares()) {
                Redeclare(type, attribute, places);
            } else {
                Declare(type, attribute, places);
            }
        }
        type.AddNames(places);
        type.parts_.push_back({type.folded_, 0, type.slots_.size()});
    }

    void Declare(EntityType& type, const AttributeDeclaration& declaration,
                 EntityType::Places& places) {
        schema_.attributes_.emplace_back(Spelled(declaration.name), DomainOf(declaration.type),
                                         declaration.optional);
        const Attribute& attribute = schema_.attributes_.back();
        // Added before the inherited attributes, so that it hides one of the same name.
        if (!type.attributes_.Add(attribute.folded, type.slots_.size())) {
            Fail(declaration.place, "attribute '" + declaration.name + "' is declared twice");
        }
        type.AddSlot({&attribute, attribute.domain, false, attribute.optional}, places);
    }

    void Redeclare(EntityType& type, const AttributeDeclaration& declaration,
                   const EntityType::Places& places) {
        const EntityType* owner =
            schema_.FindEntity(std::string_view(declaration.redeclaredEntity));
        const Index ownerSlot =
            owner == nullptr ? std::nullopt
                             : owner->SlotOf(std::string_view(declaration.redeclaredAttribute));
        const Attribute* attribute = ownerSlot ? owner->Slots()[*ownerSlot].attribute : nullptr;
        const auto place = places.find(attribute);
        if (place == places.end() || place->second >= type.firstOwnSlot_) {
            Fail(declaration.place, "'" + declaration.redeclaredEntity + "." +
                                        declaration.redeclaredAttribute +
                                        "' is not an attribute of a supertype");
            return;
        }
        Slot& slot = type.slots_[place->second];
        slot.derived |= declaration.derived;
        slot.domain = DomainOf(declaration.type);
        slot.optional = declaration.optional;
        if (!declaration.name.empty()) {
            type.renamed_.push_back({Folded(declaration.name), attribute});
        }
    }

    void NumberAttributes() {
        const auto add = [this](const std::string& name) {
            const std::size_t number = schema_.attributeNames_.size();
            if (schema_.attributeTable_.Add(name, number)) schema_.attributeNames_.push_back(name);
        };
        for (const Attribute& attribute : schema_.attributes_) add(attribute.folded);
        for (const auto& entity : schema_.ownedEntities_) {
            for (const EntityType::Renamed& renamed : entity->renamed_) add(renamed.name);
        }
    }

    const SchemaDeclaration& declaration_;
    Schema& schema_;
    std::vector<Diagnostic>& errors_;
    const bool keepSpelling_;
    const Domain generic_;
    enum class State : std::uint8_t { Unseen, Open, Resolved, Circular };
    struct TypeState {
        State state = State::Unseen;
        // The select or enumeration that the type finally is an alias of.
        const TypeDeclaration* select = nullptr;
        const TypeDeclaration* enumeration = nullptr;
    };
    std::vector<TypeState> types_ = std::vector<TypeState>(declaration_.types.size());
    std::vector<Domain*> typeDomains_;
    std::vector<Domain*> entityDomains_;
    std::vector<std::pair<Domain*, const TypeDeclaration*>> selects_;
    std::vector<std::pair<Domain*, const TypeDeclaration*>> enumerations_;
    std::size_t inherited_ = 0;
    std::size_t chosen_ = 0;
    std::size_t listed_ = 0;
};

std::shared_ptr<const Schema> Schema::Make(const SchemaDeclaration& declaration,
                                           std::vector<Diagnostic>& errors) {
    const bool keepSpelling = MatchesFolded(declaration.name, "CDMA");
    std::shared_ptr<Schema> schema(
        new Schema(SdaiString(keepSpelling ? declaration.name : Folded(declaration.name))));
    const std::size_t before = errors.size();
    Resolver(declaration, *schema, errors).Run();
    if (errors.size() != before) return nullptr;
    return schema;
}

}  // namespace kor
