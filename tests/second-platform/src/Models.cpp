// The dictionary, models and instances.

#include "Models.h"

#include <algorithm>

#include "Values.h"

namespace second {

std::string Folded(std::string_view name) {
    std::string folded(name);
    for (char& c : folded) c = SdaiFoldCase(c);
    return folded;
}

// ---- The dictionary

void Entity::Inherit(const Entity& other) {
    kinds.insert(other.kinds.begin(), other.kinds.end());
    attributes.insert(other.attributes.begin(), other.attributes.end());
}

Schema::Schema(const tables::Schema& declared)
    : SdaiSchema(
          SdaiString(Folded(declared.name) == "CDMA" ? declared.name : Folded(declared.name))),
      types_(declared.types) {
    // A supertype may be declared after its subtypes: each round adds the entities whose supertypes
    // have been added.
    std::vector<const tables::Entity*> waiting;
    for (const tables::Entity& entity : declared.entities) waiting.push_back(&entity);
    for (bool progress = true; progress && !waiting.empty();) {
        progress = std::erase_if(waiting, [this](const tables::Entity* entity) {
                       auto made = std::make_unique<Entity>(Spelt(entity->name), *this);
                       made->kinds.insert(Folded(entity->name));
                       for (const std::string& supertype : entity->supertypes) {
                           const Entity* inherited = Find(Folded(supertype));
                           if (inherited == nullptr) return false;
                           made->Inherit(*inherited);
                       }
                       for (const tables::Attribute& attribute : entity->attributes) {
                           made->attributes[Folded(attribute.name)] =
                               std::make_shared<Attribute>(Spelt(attribute.name), attribute);
                       }
                       entities_[Folded(entity->name)] = std::move(made);
                       return true;
                   }) != 0;
    }
}

const Entity* Schema::Find(const std::string& folded) const {
    const auto found = entities_.find(folded);
    return found != entities_.end() ? found->second.get() : nullptr;
}

const tables::Domain& Schema::Underlying(const tables::Domain& domain) const {
    const tables::Domain* underlying = &domain;
    while (underlying->kind == tables::Domain::Kind::Named) {
        const auto type = types_.find(Folded(underlying->names.front()));
        if (type == types_.end()) break;  // an entity type
        underlying = &type->second;
    }
    return *underlying;
}

SdaiString Schema::Spelt(std::string_view name) const {
    return SdaiString(Name() == "cdma" ? std::string(name) : Folded(name));
}

// ---- Storing values

namespace {

using Kind = tables::Domain::Kind;

std::optional<SdaiPrimitiveH> StoredItem(const SdaiString& name, const tables::Domain& domain) {
    const auto isName = [&](const std::string& item) {
        return Folded(item) == Folded(name.View());
    };
    if (std::none_of(domain.names.begin(), domain.names.end(), isName)) return std::nullopt;
    return SdaiPrimitiveH::Enumeration(name);
}

std::optional<SdaiPrimitiveH> StoredCopy(const SdaiAggrInstance& aggregate, const Place* place) {
    auto* copy = new SdaiAggrInstance;
    const SdaiPrimitiveH owner = SdaiPrimitiveH::TakeOver(copy);
    std::optional<Place> member;
    if (place != nullptr && place->domain.members != nullptr) {
        member.emplace(Place{place->schema, *place->domain.members});
    }
    for (long i = 0; i < aggregate.GetMemberCount(); ++i) {
        const auto stored = Stored(aggregate.GetMember(i), member.has_value() ? &*member : nullptr);
        if (!stored.has_value()) return std::nullopt;
        copy->Append(*stored);
    }
    return owner;
}

}  // namespace

std::optional<SdaiPrimitiveH> Stored(const SdaiPrimitiveH& value, const Place* place) {
    if (place == nullptr) {
        const auto* list = Held<Aggregate>(value);
        return list != nullptr ? StoredCopy(**list, nullptr) : value;
    }
    const Place to{place->schema, place->schema.Underlying(place->domain)};
    if (to.domain.kind == Kind::Select || to.domain.kind == Kind::Any)
        return Stored(value, nullptr);
    const SdaiPrimitiveH held = static_cast<const SdaiSelectH&>(value).getValue();
    if (const auto* list = Held<Aggregate>(held)) return StoredCopy(**list, &to);
    switch (to.domain.kind) {
        case Kind::Real:
            return Held<long>(held) != nullptr ? SdaiPrimitiveH(static_cast<double>(held)) : held;
        case Kind::Boolean:
            if (const auto* truth = Held<SdaiLogical>(held); truth && !(*truth == SdaiLogical())) {
                return SdaiPrimitiveH(*truth == sdaiLTRUE);
            }
            return held;
        case Kind::Logical:
            if (const auto* truth = Held<Boolean>(held)) return SdaiPrimitiveH(truth->value);
            return held;
        case Kind::Enumeration:
            if (const auto* text = Held<SdaiString>(held)) return StoredItem(*text, to.domain);
            if (const auto* item = Held<Item>(held)) return StoredItem(item->name, to.domain);
            return held;
        default: return held;
    }
}

// ---- Models

Model::Model(std::shared_ptr<const Schema> schema) : schema_(std::move(schema)) {
    AddExtent("");
    for (const auto& [name, entity] : schema_->Entities()) AddExtent(name);
}

const Entity* Model::Find(const std::string& folded) const {
    const auto found = own_.find(folded);
    return found != own_.end() ? found->second.get() : schema_->Find(folded);
}

const Entity& Model::FindOrAdd(const std::string& name) {
    const Entity* found = Find(Folded(name));
    return found != nullptr ? *found : Add(Folded(name));
}

const Entity* Model::Complex(const std::vector<std::string>& types) {
    std::set<std::string> sorted;
    for (const std::string& type : types) sorted.insert(Folded(type));
    std::string name;
    for (const std::string& type : sorted) {
        const Entity* entity = schema_->Find(type);
        if (entity == nullptr) return nullptr;
        name += (name.empty() ? "" : "+") + std::string(entity->Name().View());
    }
    if (const Entity* found = Find(Folded(name))) return found;
    Entity& complex = Add(name);
    for (const std::string& type : sorted) complex.Inherit(*schema_->Find(type));
    return &complex;
}

Entity& Model::Add(const std::string& name) {
    std::unique_ptr<Entity>& entity = own_[Folded(name)];
    entity = std::make_unique<Entity>(SdaiString(std::string_view(name)), *schema_);
    entity->kinds.insert(Folded(name));
    AddExtent(Folded(name));
    return *entity;
}

Instance& Model::Create(const Entity& entity, unsigned long number) {
    instances_.push_back(std::make_unique<Instance>(*this, entity, number));
    largest_ = std::max(largest_, number);
    for (const std::string& kind : entity.kinds) {
        extents_.at(kind)->members_.emplace_back(instances_.back().get());
    }
    return *instances_.back();
}

void Model::AddExtent(const std::string& folded) {
    auto& extent = extents_[folded];
    extent = std::make_unique<SdaiAggrInstance>();
    extent->extent_ = true;
}

const SdaiAggrInstance* Model::Extent(const std::string& folded) const {
    const auto found = extents_.find(folded);
    return (found != extents_.end() ? found : extents_.find(""))->second.get();
}

std::unique_ptr<SdaiModel> NewModel(const tables::Schema& schema) {
    return std::make_unique<Model>(std::make_shared<const Schema>(schema));
}

SdaiAppInstance* Create(SdaiModel& model, const std::vector<std::string>& types,
                        unsigned long number) {
    Model& to = static_cast<Model&>(model);
    const Entity* entity = types.size() == 1 ? &to.FindOrAdd(types.front()) : to.Complex(types);
    return entity != nullptr ? &to.Create(*entity, number) : nullptr;
}

}  // namespace second

using second::Entity;
using second::Folded;
using second::Instance;
using second::Model;

namespace {

const Instance& Of(const SdaiEntityInstance& instance) {
    return static_cast<const Instance&>(instance);
}
const Model& Of(const SdaiModel& model) { return static_cast<const Model&>(model); }
const Entity& Of(const SdaiEntity& entity) { return static_cast<const Entity&>(entity); }

}  // namespace

// ---- Instances

unsigned long SdaiEntityInstance::GetInstanceNameId() const { return Of(*this).number; }

SdaiModel* SdaiEntityInstance::FindEntityInstanceModel() const { return &Of(*this).model; }

SdaiNamedType* SdaiEntityInstance::GetInstanceType() const {
    return const_cast<Entity*>(&Of(*this).entity);
}

SdaiPrimitiveH SdaiEntityInstance::GetAttr(const SdaiString& name) const {
    const auto value = Of(*this).values.find(Folded(name.View()));
    return value != Of(*this).values.end() ? value->second : SdaiPrimitiveH();
}

SdaiBoolean SdaiEntityInstance::TestAttr(const SdaiString& name) const {
    return GetAttr(name).exists();
}

SdaiBoolean SdaiEntityInstance::IsKindOf(const SdaiString& typeName) const {
    return SdaiBoolean(Of(*this).entity.kinds.contains(Folded(typeName.View())));
}

void SdaiAppInstance::PutAttr(const SdaiString& name, const SdaiPrimitiveH& value) {
    Instance& instance = static_cast<Instance&>(*this);
    const auto attribute = instance.entity.attributes.find(Folded(name.View()));
    if (attribute == instance.entity.attributes.end() || attribute->second->derived) return;
    const second::Place place{instance.entity.schema, attribute->second->domain};
    const std::optional<SdaiPrimitiveH> stored = second::Stored(value, &place);
    if (!stored.has_value()) return;
    SdaiPrimitiveH& kept = instance.values[attribute->first];
    if (second::Held<second::Aggregate>(kept) != nullptr) instance.replaced.push_back(kept);
    kept = *stored;
}

// This platform treats a constant name like any other text.
SdaiPrimitiveH SdaiEntityInstance::GetAttr(const SdaiName& name) const {
    return GetAttr(SdaiString(name.text));
}
SdaiBoolean SdaiEntityInstance::TestAttr(const SdaiName& name) const {
    return TestAttr(SdaiString(name.text));
}
SdaiBoolean SdaiEntityInstance::IsKindOf(const SdaiName& name) const {
    return IsKindOf(SdaiString(name.text));
}
void SdaiAppInstance::PutAttr(const SdaiName& name, const SdaiPrimitiveH& value) {
    PutAttr(SdaiString(name.text), value);
}

// ---- Entity types

SdaiAppInstance* SdaiEntity::CreateEntityInstance(SdaiModel* model) const {
    if (model == nullptr || &Of(*model).GetSchema() != &Of(*this).schema) return nullptr;
    return &static_cast<Model*>(model)->Create(Of(*this), Of(*model).LargestNumber() + 1);
}

const SdaiAttribute* SdaiEntity::AttrDefinition(const SdaiString& name) const {
    const auto found = Of(*this).attributes.find(Folded(name.View()));
    return found != Of(*this).attributes.end() ? found->second.get() : nullptr;
}
const SdaiAttribute* SdaiEntity::AttrDefinition(const SdaiName& name) const {
    return AttrDefinition(SdaiString(name.text));
}

// ---- Models

const SdaiString& SdaiModel::SchemaName() const { return Of(*this).GetSchema().Name(); }

SdaiSchema* SdaiModel::Underlying_schema() const {
    return const_cast<second::Schema*>(&Of(*this).GetSchema());
}

SdaiEntity* SdaiModel::GetEntityDefinition(const SdaiString& name) const {
    return const_cast<Entity*>(Of(*this).Find(Folded(name.View())));
}
SdaiEntity* SdaiModel::GetEntityDefinition(const SdaiName& name) const {
    return GetEntityDefinition(SdaiString(name.text));
}

const SdaiAggrInstance* SdaiModel::GetEntityExtent(const SdaiString& name) const {
    return Of(*this).Extent(Folded(name.View()));
}
const SdaiAggrInstance* SdaiModel::GetEntityExtent(const SdaiName& name) const {
    return GetEntityExtent(SdaiString(name.text));
}
const SdaiAggrInstance* SdaiModel::GetEntityExtent(const SdaiEntity* entity) const {
    return GetEntityExtent(entity != nullptr ? entity->Name() : SdaiString());
}
