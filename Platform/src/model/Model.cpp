// The in-memory model: types, instances, references, extents and back references.

#include "model/Model.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>
#include <string>

#include "SdaiUsers.h"

namespace kor {

namespace {

// The place of a pending reference: a cell, or a bare member of an aggregate. Addresses are
// multiples of 8, which leaves a bit to distinguish them.
constexpr std::uintptr_t kInCell = 0;
constexpr std::uintptr_t kBare = 2;

void SetReference(std::byte* place, std::uintptr_t kind, SdaiEntityInstance* instance) {
    if (kind == kBare) {
        std::memcpy(place, &instance, sizeof instance);
    } else {
        *reinterpret_cast<Cell*>(place) =
            instance != nullptr ? Cell::Of(Tag::Instance, instance) : Cell();
    }
}

// Whether there is anything to release in a cell of an instance. Most values own nothing.
bool OwnsAnything(const Cell& cell) {
    switch (cell.GetTag()) {
        case Tag::Text:
        case Tag::Enumeration:
        case Tag::Binary: return cell.Buffer() != nullptr;
        case Tag::Aggregate:
            return AggregateAccess::OwnsAnything(*cell.Get<const SdaiAggrInstance*>());
        case Tag::Typed: return true;
        default: return false;
    }
}

// Limit on what all complex types together may inherit.
constexpr std::size_t kMostInheritedByOwn = 2'000'000;

}  // namespace

Model::Model(std::shared_ptr<const Schema> schema)
    : schema_(std::move(schema)),
      declaredTypes_(schema_->Entities().size()),
      relations_(schema_->AttributeNameCount()) {
    for (const EntityType* entity : schema_->Entities()) AddExtent(*entity);
    AggregateAccess::MakeExtent(noInstances_);
}

Model::~Model() {
    for (const ModelType& type : types_) {
        type.ForEachInstance([count = type.slotCount](const Instance& instance) {
            for (const Cell& cell : std::span(instance.Cells(), count)) {
                if (OwnsAnything(cell)) ReleaseCell(cell);
            }
        });
    }
    for (const Cell& cell : retired_) ReleaseCell(cell);
    for (const auto& [typed, id] : pendingTyped_) ReleaseCell(typed);
    for (const auto& extent : extents_) delete extent.load(std::memory_order_relaxed);
    for (const Relation* relation : madeRelations_) delete relation;
}

// ---- Types

void Model::AddExtent(const EntityType& entity) {
    extentNumbers_.Add(entity.FoldedName(), extentEntities_.size());
    extentEntities_.push_back(&entity);
    extents_.emplace_back(nullptr);
}

ModelType& Model::AddType(const EntityType& entity) {
    ModelType& type = types_.emplace_back(this, entity, types_.size(), blocks_);
    for (const std::size_t number : madeExtents_) {
        if (entity.IsKindOf(std::string_view(extentEntities_[number]->FoldedName()))) {
            type.extents.push_back(extents_[number].load(std::memory_order_relaxed));
        }
    }
    for (Relation* relation : madeRelations_) {
        const Index slot = entity.SlotOf(std::string_view(relation->Attribute()));
        if (!slot) continue;
        type.relations.push_back({*slot, relation});
        relation->AddType(type, *slot);
    }
    return type;
}

const ModelType* Model::NewTypeOf(const EntityType& entity) {
    const std::size_t number = entity.Number();
    if (number < declaredTypes_.size() && schema_->Entities()[number] == &entity) {
        return declaredTypes_[number] = &AddType(entity);
    }
    if (number < ownTypes_.size() && ownEntities_[number].get() == &entity) {
        return ownTypes_[number] = &AddType(entity);
    }
    return nullptr;
}

bool Model::MayAddOwn() const { return ownEntities_.size() < kMostOwn; }

const EntityType* Model::AddOwn(std::unique_ptr<EntityType> entity) {
    ownTypes_.push_back(nullptr);
    ownEntities_.push_back(std::move(entity));
    return ownEntities_.back().get();
}

const EntityType* Model::UndeclaredEntity(std::string_view foldedName, std::size_t valueCount) {
    const Index extent = extentNumbers_.Find(foldedName);
    const std::size_t declaredCount = declaredTypes_.size();
    if (extent) {
        for (const EntityType* entity : undeclared_[*extent - declaredCount]) {
            if (entity->Slots().size() == valueCount) return entity;
        }
    }
    if (!MayAddOwn()) return nullptr;
    const EntityType* entity =
        AddOwn(EntityType::MakeUndeclared(foldedName, valueCount, ownEntities_.size()));
    if (extent) {
        undeclared_[*extent - declaredCount].push_back(entity);
    } else {
        AddExtent(*entity);
        undeclared_.push_back({entity});
    }
    return entity;
}

const EntityType* Model::ComplexEntity(const std::vector<const EntityType*>& parts) {
    const auto found = complex_.find(parts);
    if (found != complex_.end()) return found->second;
    for (const EntityType* part : parts) {
        inheritedByOwn_ += part->IsDeclared() ? part->Slots().size() + part->Lineage().size() : 0;
    }
    if (!MayAddOwn() || inheritedByOwn_ > kMostInheritedByOwn) return nullptr;
    const EntityType* entity = AddOwn(EntityType::MakeComplex(parts, ownEntities_.size()));
    // Undeclared parts of the same name may have different numbers of values.
    if (!extentNumbers_.Find(std::string_view(entity->FoldedName()))) {
        AddExtent(*entity);
        undeclared_.emplace_back();
    }
    return complex_[parts] = entity;
}

// ---- Instances

void Instance::Write(Index slot, const SdaiPrimitiveH& value) {
    if (!slot) return;
    const Slot& definition = Type().entity->Slots()[*slot];
    if (definition.derived) return;
    if (WrongItem(value, definition.domain).has_value()) return;
    Model& model = *Type().model;
    CellHolder cell(ToCell(value, definition.domain, &model));
    Cell& place = Cells()[*slot];
    const SdaiEntityInstance* before = Relation::TargetOf(place);
    const SdaiEntityInstance* target = Relation::TargetOf(cell.Get());
    if (target != nullptr) model.NoteTarget(*Type().entity, *slot, *target);
    if (place.GetTag() == Tag::Aggregate) {
        model.Retire(place);
    } else {
        ReleaseCell(place);
    }
    place = cell.Take();
    for (const RelatedSlot& related : Type().relations) {
        if (related.slot == slot) related.relation->Change(before, target, *this);
    }
}

Instance& Model::Create(const ModelType& type, std::uint64_t id, std::span<const Cell> values) {
    assert(values.size() == type.slotCount && ids_.Find(id) == nullptr);
    // Everything that may run out of memory comes first.
    IdTable::Entry& entry = ids_.ForDefinition(id);
    for (SdaiAggrInstance* extent : type.extents) {
        AggregateAccess::ReserveExtent(*extent, AggregateAccess::Count(*extent) + 1);
    }
    const std::size_t size = Instance::Size(type);
    void* const memory = type.memory.Reserve(size);
    void* const listed = instances_.Allocate(sizeof(Instance*));
    type.memory.TakeReserved(size);
    Instance& instance = *new (memory) Instance(type, id, instanceCount_++);
    *static_cast<Instance**>(listed) = &instance;
    bool isPending = false;
    for (std::size_t i = 0; i < values.size(); ++i) {
        instance.Cells()[i] = values[i];
        isPending |= values[i].GetTag() == Tag::Pending;
    }

    const std::uintptr_t chain = entry.Chain();
    entry.SetInstance(&instance);
    if (chain != 0) Connect(chain, &instance);
    if (isPending) ConnectReferences({instance.Cells(), values.size()});
    for (SdaiAggrInstance* extent : type.extents) {
        AggregateAccess::AppendToExtent(*extent, &instance);
    }
    for (const RelatedSlot& related : type.relations) {
        related.relation->Change(nullptr, Relation::TargetOf(instance.Cells()[related.slot]),
                                 instance);
    }
    ++type.instanceCount;
    if (id <= kLargestId) largestId_ = std::max(largestId_, id);
    return instance;
}

Instance& Model::Create(const ModelType& type) {
    std::vector<Cell> values(type.slotCount);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (type.entity->Slots()[i].derived) values[i] = Cell::Of(Tag::Derived, 0);
    }
    return Create(type, NextId(), values);
}

std::uint64_t Model::NextId() {
    std::uint64_t id = largestId_;
    do {
        if (id == kLargestId) return SmallestFreeId();
        ++id;
    } while (keptFree_.contains(id));
    return id;
}

std::uint64_t Model::SmallestFreeId() {
    while (ids_.Find(smallestFreeId_) != nullptr || keptFree_.contains(smallestFreeId_)) {
        ++smallestFreeId_;
    }
    return smallestFreeId_;
}

std::uint64_t Model::MoveToFreeId(SdaiEntityInstance& instance) {
    Instance& moved = Instance::Of(instance);
    const std::uint64_t id = SmallestFreeId();
    ids_.ForDefinition(id).SetInstance(&moved);
    ids_.ForReference(moved.Id()).SetInstance(nullptr);
    moved.SetId(id);
    largestId_ = std::max(largestId_, id);
    return id;
}

void Model::PutInOrder(std::span<Instance* const> instances) {
    assert(instances.size() == instanceCount_ && madeExtents_.empty() && madeRelations_.empty());
    std::uint64_t order = 0;
    instances_.ForEach(sizeof(Instance*), [&](std::byte* listed) {
        Instance* const instance = instances[order];
        instance->SetOrder(order++);
        *reinterpret_cast<Instance**>(listed) = instance;
    });
}

// ---- References

// Inserts a place that refers to a missing instance at the head of the waiting chain.
void Model::ConnectReference(std::byte* place, std::uintptr_t kind) {
    std::uint64_t id;
    std::memcpy(&id, place, sizeof id);
    IdTable::Entry& entry = ids_.ForReference(id);
    if (SdaiEntityInstance* instance = entry.Instance()) {
        // The instance exists by now: it refers to itself.
        SetReference(place, kind, instance);
        return;
    }
    unsettled_ = true;
    const std::uintptr_t next = entry.Chain();
    std::memcpy(place, &next, sizeof next);
    entry.SetChain(reinterpret_cast<std::uintptr_t>(place) | kind);
}

[[gnu::noinline]] void Model::ConnectReferences(std::span<Cell> cells) {
    for (Cell& cell : cells) {
        if (cell.GetTag() != Tag::Pending) continue;
        ConnectReference(reinterpret_cast<std::byte*>(&cell), kInCell);
    }
}

// Sets every place of a chain to the instance, or to unset if it is null.
void Model::Connect(std::uintptr_t chain, SdaiEntityInstance* instance) {
    while (chain != 0) {
        auto* place = reinterpret_cast<std::byte*>(chain & ~kBare);
        std::uintptr_t next;
        std::memcpy(&next, place, sizeof next);
        SetReference(place, chain & kBare, instance);
        chain = next;
    }
}

// Appends a chain to another.
void Model::Append(std::uintptr_t chain, std::uintptr_t behind) {
    for (;;) {
        auto* place = reinterpret_cast<std::byte*>(chain & ~kBare);
        std::memcpy(&chain, place, sizeof chain);
        if (chain != 0) continue;
        std::memcpy(place, &behind, sizeof behind);
        return;
    }
}

Cell Model::NewAggregate(std::span<const Cell> members, bool selects) {
    SdaiAggrInstance* aggregate = AggregateAccess::Make(members, selects, &aggregates_);
    using Layout = AggregateAccess::Layout;
    const Layout layout = AggregateAccess::LayoutOf(*aggregate);
    const bool bare = layout == Layout::Instances;
    const bool mayRefer = bare || layout == Layout::Cells;
    auto* first = AggregateAccess::Members<std::byte>(*aggregate);
    for (std::size_t i = 0; mayRefer && i < members.size(); ++i) {
        if (members[i].GetTag() != Tag::Pending) continue;
        if (bare) {
            ConnectReference(first + i * sizeof(SdaiEntityInstance*), kBare);
        } else {
            ConnectReference(first + i * sizeof(Cell), kInCell);
        }
    }
    return Cell::Of(Tag::Aggregate, aggregate);
}

Cell Model::NewTyped(SdaiString definedType, const Cell& value) {
    // The typed value shares the contents of the cell; an aggregate still belongs to the model.
    CellHolder holder(value);
    if (value.GetTag() == Tag::Aggregate) {
        Retire(holder.Get());
        holder.Take();
    }
    return Cell::Of(Tag::Typed, new TypedValue(std::move(definedType), ToHandle(value, false)));
}

void Model::AddPending(const Cell& typed, std::uint64_t id) {
    unsettled_ = true;
    pendingTyped_.emplace_back(typed, id);
    typed.Get<TypedValue*>()->owners.fetch_add(1, std::memory_order_relaxed);
}

std::vector<std::uint64_t> Model::SettleReferences() {
    std::vector<std::uint64_t> missing;
    ids_.ForEachPending([&](std::uint64_t id, IdTable::Entry& entry) {
        missing.push_back(id);
        Connect(entry.Chain(), nullptr);
        entry.SetInstance(nullptr);
    });
    for (const auto& [typed, id] : pendingTyped_) {
        if (SdaiEntityInstance* instance = Find(id)) {
            typed.Get<TypedValue*>()->Set(SdaiPrimitiveH(instance));
        } else {
            missing.push_back(id);
        }
        ReleaseCell(typed);
    }
    pendingTyped_.clear();
    SettleRelations();
    std::sort(missing.begin(), missing.end());
    missing.erase(std::unique(missing.begin(), missing.end()), missing.end());
    return missing;
}

// ---- Taking over another model

// The same type of this model as one that another model of the schema has for itself; null when
// this one has too many of its own.
const EntityType* Model::OwnEntityLike(const EntityType& entity, const Model& of) {
    if (!entity.IsComplex()) return UndeclaredEntity(entity.FoldedName(), entity.Slots().size());
    const auto known =
        std::find_if(of.complex_.begin(), of.complex_.end(),
                     [&entity](const auto& complex) { return complex.second == &entity; });
    std::vector<const EntityType*> parts;
    for (const EntityType* part : known->first) {
        const bool isOwn = !part->IsDeclared();
        parts.push_back(isOwn ? UndeclaredEntity(part->FoldedName(), part->Slots().size()) : part);
        if (parts.back() == nullptr) return nullptr;
    }
    return ComplexEntity(parts);
}

bool Model::TakeOver(Model& part) {
    assert(part.madeExtents_.empty() && part.madeRelations_.empty());
    if (ids_.Shares(part.ids_)) return false;
    // Whatever may fail for want of memory comes first.
    std::vector<const EntityType*> own;
    for (const auto& entity : part.ownEntities_) {
        own.push_back(OwnEntityLike(*entity, part));
        if (own.back() == nullptr) return false;
    }
    std::vector<ModelType*> types;
    for (const ModelType& theirs : part.types_) {
        const std::size_t number = theirs.entity->Number();
        const bool isOwn =
            number < part.ownEntities_.size() && part.ownEntities_[number].get() == theirs.entity;
        types.push_back(&types_[TypeOf(isOwn ? *own[number] : *theirs.entity)->number]);
        types.back()->memory.ReserveFor(theirs.memory);
    }
    blocks_.ReserveFor(part.blocks_);
    instances_.ReserveFor(part.instances_);
    aggregates_.ReserveFor(part.aggregates_);
    retired_.reserve(retired_.size() + part.retired_.size());
    pendingTyped_.reserve(pendingTyped_.size() + part.pendingTyped_.size());
    ids_.TakeOver(part.ids_, [](IdTable::Entry& mine, const IdTable::Entry& theirs) {
        if (SdaiEntityInstance* instance = theirs.Instance()) {
            const std::uintptr_t chain = mine.Chain();
            mine.SetInstance(instance);
            Connect(chain, instance);
        } else if (mine.Instance() != nullptr) {
            Connect(theirs.Chain(), mine.Instance());
        } else {
            Append(theirs.Chain(), mine.Chain());
            mine.SetChain(theirs.Chain());
        }
    });
    for (std::size_t i = 0; i < types.size(); ++i) {
        ModelType& theirs = part.types_[i];
        theirs.ForEachInstance([&](Instance& instance) {
            new (&instance) Instance(*types[i], instance.Id(), instanceCount_ + instance.Order());
        });
        types[i]->memory.TakeOver(theirs.memory);
        types[i]->instanceCount += theirs.instanceCount;
    }
    blocks_.TakeOver(part.blocks_);
    instances_.TakeOver(part.instances_);
    instanceCount_ += std::exchange(part.instanceCount_, 0);
    aggregates_.TakeOver(part.aggregates_);
    const auto takeAll = [](auto& to, auto& from) {
        to.insert(to.end(), from.begin(), from.end());
        from.clear();
    };
    takeAll(retired_, part.retired_);
    takeAll(pendingTyped_, part.pendingTyped_);
    largestId_ = std::max(largestId_, part.largestId_);
    unsettled_ = unsettled_ || part.unsettled_;
    return true;
}

// ---- Extents

const SdaiAggrInstance* Model::ExtentByNumber(std::size_t number) const {
    if (const SdaiAggrInstance* made = extents_[number].load(std::memory_order_acquire)) {
        return made;
    }
    const std::lock_guard lock(extentMutex_);
    if (const SdaiAggrInstance* made = extents_[number].load(std::memory_order_acquire)) {
        return made;
    }
    const std::string_view name = extentEntities_[number]->FoldedName();
    std::vector<bool> belongs;
    std::uint64_t count = 0;
    for (const ModelType& type : types_) {
        belongs.push_back(type.entity->IsKindOf(name));
        if (belongs.back()) {
            count += type.instanceCount;
            type.extents.reserve(type.extents.size() + 1);
        }
    }
    auto extent = std::make_unique<SdaiAggrInstance>();
    AggregateAccess::MakeExtent(*extent);
    madeExtents_.reserve(madeExtents_.size() + 1);
    AggregateAccess::ReserveExtent(*extent, count);
    if (count != 0) {
        ForEachInstance([&](Instance& instance) {
            if (belongs[instance.Type().number]) {
                AggregateAccess::AppendToExtent(*extent, &instance);
            }
        });
    }
    for (const ModelType& type : types_) {
        if (belongs[type.number]) type.extents.push_back(extent.get());
    }
    madeExtents_.push_back(number);
    extents_[number].store(extent.get(), std::memory_order_release);
    return extent.release();
}

// ---- Back references

const Relation* Model::RelationByNumber(Index number) const {
    if (forgoesRelations_ || unsettled_) return nullptr;
    if (!number) return &noRelation_;
    std::atomic<Relation*>& place = relations_[*number];
    const Relation* relation = place.load(std::memory_order_acquire);
    if (relation == nullptr) relation = MakeRelation(*number);
    return relation == nullptr || relation->IsLost() ? nullptr : relation;
}

// Returns null if memory runs out.
const Relation* Model::MakeRelation(std::size_t number) const {
    const std::lock_guard lock(relationMutex_);
    std::atomic<Relation*>& place = relations_[number];
    if (const Relation* made = place.load(std::memory_order_acquire)) return made;
    try {
        const std::string_view name = schema_->AttributeName(number);
        auto relation = std::make_unique<Relation>(std::string(name));
        std::vector<Index> slots;
        for (const ModelType& type : types_) {
            slots.push_back(type.entity->SlotOf(name));
            if (!slots.back()) continue;
            relation->AddType(type, *slots.back());
            type.relations.reserve(type.relations.size() + 1);
        }
        madeRelations_.reserve(madeRelations_.size() + 1);
        relation->Fill(*this);
        for (const ModelType& type : types_) {
            if (!slots[type.number]) continue;
            type.relations.push_back({*slots[type.number], relation.get()});
        }
        madeRelations_.push_back(relation.get());
        place.store(relation.get(), std::memory_order_release);
        return relation.release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// References were added or removed without updating the relations.
void Model::SettleRelations() {
    if (!unsettled_) return;
    unsettled_ = false;
    for (Relation* relation : madeRelations_) relation->Fill(*this);
}

void Model::NoteTarget(const EntityType& type, std::size_t slot, const SdaiEntityInstance& target) {
    if (Instance::Of(target).Type().model != this) outside_.emplace(&type, slot);
}

std::vector<SdaiEntityInstance*> Model::UsersOf(const SdaiEntityInstance& target,
                                                const SdaiName& type,
                                                const SdaiName& attribute) const {
    std::vector<SdaiEntityInstance*> users;
    const SdaiEntityInstance* const targets[] = {&target};
    SdaiIterator_Of_Users user(this, type, attribute, targets);
    while (user.Next()) {
        SdaiEntityInstance* candidate = user.GetCurrentMember();
        if (static_cast<SdaiEntityInstance*>(candidate->GetAttr(attribute)) == &target)
            users.push_back(candidate);
    }
    return users;
}

}  // namespace kor
