// The operations of the data access interface on instances, entity types and models.

#include <string_view>

#include "model/Model.h"

using kor::EntityType;
using kor::Instance;
using kor::Model;

// The dictionary is immutable, but the interface returns its types without `const`.
static SdaiEntity* Definition(const EntityType* entity) { return const_cast<EntityType*>(entity); }

// ---- Instances

unsigned long SdaiEntityInstance::GetInstanceNameId() const { return Instance::Of(*this).Id(); }

SdaiModel* SdaiEntityInstance::FindEntityInstanceModel() const {
    return Instance::Of(*this).Type().model;
}

SdaiNamedType* SdaiEntityInstance::GetInstanceType() const {
    return Definition(Instance::Of(*this).Type().entity);
}

SdaiPrimitiveH SdaiEntityInstance::GetAttr(const SdaiString& name) const {
    const Instance& instance = Instance::Of(*this);
    return instance.Read(instance.SlotOf(name.View()));
}

SdaiPrimitiveH SdaiEntityInstance::GetAttr(const SdaiName& name) const {
    const Instance& instance = Instance::Of(*this);
    instance.FetchCells();
    return instance.Read(instance.SlotOf(name));
}

SdaiBoolean SdaiEntityInstance::TestAttr(const SdaiString& name) const {
    const Instance& instance = Instance::Of(*this);
    return SdaiBoolean(instance.HasValue(instance.SlotOf(name.View())));
}

SdaiBoolean SdaiEntityInstance::TestAttr(const SdaiName& name) const {
    const Instance& instance = Instance::Of(*this);
    return SdaiBoolean(instance.HasValue(instance.SlotOf(name)));
}

SdaiBoolean SdaiEntityInstance::IsKindOf(const SdaiString& typeName) const {
    return SdaiBoolean(Instance::Of(*this).Type().entity->IsKindOf(typeName.View()));
}

SdaiBoolean SdaiEntityInstance::IsKindOf(const SdaiName& typeName) const {
    return SdaiBoolean(Instance::Of(*this).Type().entity->IsKindOf(typeName));
}

void SdaiAppInstance::PutAttr(const SdaiString& name, const SdaiPrimitiveH& value) {
    Instance& instance = Instance::Of(*this);
    instance.Write(instance.SlotOf(name.View()), value);
}

void SdaiAppInstance::PutAttr(const SdaiName& name, const SdaiPrimitiveH& value) {
    Instance& instance = Instance::Of(*this);
    instance.Write(instance.SlotOf(name), value);
}

// ---- Entity types

SdaiAppInstance* SdaiEntity::CreateEntityInstance(SdaiModel* model) const {
    if (model == nullptr) return nullptr;
    const kor::ModelType* type = Model::Of(*model).TypeOf(static_cast<const EntityType&>(*this));
    return type != nullptr ? &Model::Of(*model).Create(*type) : nullptr;
}

static const SdaiAttribute* AttributeAt(const EntityType& entity, kor::Index slot) {
    return slot ? entity.Slots()[*slot].attribute : nullptr;
}

const SdaiAttribute* SdaiEntity::AttrDefinition(const SdaiString& name) const {
    const auto& entity = static_cast<const EntityType&>(*this);
    return AttributeAt(entity, entity.SlotOf(name.View()));
}

const SdaiAttribute* SdaiEntity::AttrDefinition(const SdaiName& name) const {
    const auto& entity = static_cast<const EntityType&>(*this);
    return AttributeAt(entity, entity.SlotOf(name));
}

// ---- Models

SdaiSchema* SdaiModel::Underlying_schema() const {
    return const_cast<kor::Schema*>(&Model::Of(*this).GetSchema());
}

const SdaiString& SdaiModel::SchemaName() const { return Model::Of(*this).GetSchema().Name(); }

SdaiEntity* SdaiModel::GetEntityDefinition(const SdaiString& name) const {
    return Definition(Model::Of(*this).FindEntity(name.View()));
}

SdaiEntity* SdaiModel::GetEntityDefinition(const SdaiName& name) const {
    return Definition(Model::Of(*this).FindEntity(name));
}

const SdaiAggrInstance* SdaiModel::GetEntityExtent(const SdaiString& name) const {
    return Model::Of(*this).Extent(name.View());
}

const SdaiAggrInstance* SdaiModel::GetEntityExtent(const SdaiName& name) const {
    return Model::Of(*this).Extent(name);
}

const SdaiAggrInstance* SdaiModel::GetEntityExtent(const SdaiEntity* entity) const {
    std::string_view name;
    if (entity != nullptr) name = static_cast<const EntityType*>(entity)->FoldedName();
    return Model::Of(*this).Extent(name);
}
