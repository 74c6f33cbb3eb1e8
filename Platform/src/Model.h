// The in-memory model: instances as rows of cells. Those of one type stand side by side, so that a
// walk over an extent goes through memory in one direction; the order of creation over all types is
// kept apart.

#ifndef KOR_MODEL_H
#define KOR_MODEL_H

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Aggregate.h"
#include "Arena.h"
#include "Cell.h"
#include "Dictionary.h"
#include "IdTable.h"
#include "Relation.h"
#include "SdaiModel.h"

namespace kor {

class Instance;
class Model;

// A relation of a model, and where a type keeps the attribute.
struct RelatedSlot {
    int slot;
    Relation* relation;
};

// What the instances of one entity type have in common in one model.
struct ModelType {
    ModelType(Model* ofModel, const EntityType& ofEntity, std::size_t ofNumber)
        : model(ofModel), entity(&ofEntity), slotCount(ofEntity.Slots().size()), number(ofNumber) {}

    Model* const model;
    const EntityType* const entity;
    const std::size_t slotCount;
    const std::size_t number;         // in the order in which the model met its types
    std::uint64_t instanceCount = 0;  // exactly of this type
    Arena memory;                     // of its instances
    mutable std::vector<SdaiAggrInstance*> extents;  // those made so far that list its instances
    mutable std::vector<RelatedSlot> relations;      // those made so far that its instances are in

    // Calls visit(instance) for every instance exactly of this type, in the order of creation.
    template <class Visit>
    void ForEachInstance(Visit visit) const;
};

// An instance; its cells follow it, one for each slot of its type.
class KOR_API Instance final : public SdaiAppInstance {
  public:
    Instance(const ModelType& type, std::uint64_t id, std::uint64_t order)
        : SdaiAppInstance(&type), id_(id), order_(order) {}

    const ModelType& Type() const {
        return *static_cast<const ModelType*>(SdaiEntityInstance::Type());
    }
    std::uint64_t Id() const { return id_; }
    // Its place in the model's order of creation.
    std::uint64_t Order() const { return order_; }
    Cell* Cells() { return reinterpret_cast<Cell*>(this + 1); }
    const Cell* Cells() const { return reinterpret_cast<const Cell*>(this + 1); }
    std::span<const Cell> Values() const { return {Cells(), Type().slotCount}; }
    void SetId(std::uint64_t id) { id_ = id; }
    static std::size_t Size(const ModelType& type) {
        return sizeof(Instance) + type.slotCount * sizeof(Cell);
    }

    // The slot of an attribute, or NameTable::kAbsent.
    template <class Name>
    int SlotOf(const Name& attribute) const {
        return Type().entity->SlotOf(attribute);
    }
    SdaiPrimitiveH Read(int slot) const;
    bool HasValue(int slot) const {
        return slot != NameTable::kAbsent && Cells()[slot].GetTag() > Tag::Derived;
    }
    void Write(int slot, const SdaiPrimitiveH& value);

    static const Instance& Of(const SdaiEntityInstance& instance) {
        return static_cast<const Instance&>(instance);
    }
    static Instance& Of(SdaiEntityInstance& instance) { return static_cast<Instance&>(instance); }

  private:
    std::uint64_t id_;
    std::uint64_t order_;
};

template <class Visit>
void ModelType::ForEachInstance(Visit visit) const {
    memory.ForEach(Instance::Size(*this),
                   [&visit](std::byte* place) { visit(*reinterpret_cast<Instance*>(place)); });
}

class KOR_API Model final : public SdaiModel {
  public:
    // The largest instance name that a data set is written with. While one is read, larger ones may
    // stand for names that are greater still; they get their own at the end (MoveToFreeId).
    static constexpr std::uint64_t kLargestId = 0x7FFF'FFFF'FFFF'FFFF;

    explicit Model(std::shared_ptr<const Schema> schema);
    ~Model() override;

    const Schema& GetSchema() const { return *schema_; }

    // ---- Types

    // More entity types that no schema declares, and combinations of types, than any data set has.
    // What a type takes is many times what it says in a file.
    static constexpr std::size_t kMostOwn = 10'000;

    // A declared entity type, or one that the model holds instances of; null when there is neither.
    template <class Name>
    const EntityType* FindEntity(const Name& name) const {
        const int number = ExtentNumber(name);
        return number == NameTable::kAbsent ? nullptr
                                            : extentEntities_[static_cast<std::size_t>(number)];
    }

    // The types that instances of the model have had so far.
    const std::deque<ModelType>& Types() const { return types_; }

    // The type of instances of an entity type of the schema or of this model; null for any other.
    const ModelType* TypeOf(const EntityType& entity);
    // A type that the schema does not declare, whose instances have that many values. Null when the
    // model has too many types of its own (kMostOwn).
    const EntityType* UndeclaredEntity(std::string_view foldedName, std::size_t valueCount);
    // The type of instances that are of several types at once: declared ones and ones that the
    // schema does not declare, in alphabetical order.
    // Null when the model has too many types of its own, or such that inherit too much.
    const EntityType* ComplexEntity(const std::vector<const EntityType*>& parts);

    // ---- Instances

    // A new instance with these values, which it takes over. The instance name must be free.
    Instance& Create(const ModelType& type, std::uint64_t id, std::span<const Cell> values);
    // A new instance without values, numbered after the largest; where that cannot be, with the
    // smallest free number.
    Instance& Create(const ModelType& type);
    // Numbers an instance anew: with the smallest free number, which is returned.
    std::uint64_t MoveToFreeId(SdaiEntityInstance& instance);

    // The instance with that instance name, or null.
    SdaiEntityInstance* Find(std::uint64_t id) const { return ids_.Find(id); }

    std::uint64_t InstanceCount() const { return instances_.size(); }
    std::uint64_t LargestId() const { return largestId_; }

    // Calls visit(instance) for every instance, in the order of creation.
    template <class Visit>
    void ForEachInstance(Visit visit) const {
        for (Instance* instance : instances_) visit(*instance);
    }

    // Keeps what a value was until the model goes: handles may be on it.
    void Retire(const Cell& cell) { retired_.push_back(cell); }

    // ---- Reading a data set

    // A reference to an instance that may not be there yet. It is good as a value of Create or as
    // a member of NewAggregate.
    Cell Reference(std::uint64_t id);
    // An aggregate of the model with these members, which it takes over.
    Cell NewAggregate(std::span<const Cell> members, bool selects);
    // A select value with the name of its defined type; takes the value over.
    Cell NewTyped(SdaiString definedType, const Cell& value);
    // Gives the typed value its instance once every instance is there.
    void AddPending(const Cell& typed, std::uint64_t id);
    // The instance names that are referred to and have no instance, in ascending order. Their
    // references become unset. To be called once, after the last instance.
    std::vector<std::uint64_t> SettleReferences();

    // ---- Extents

    template <class Name>
    const SdaiAggrInstance* Extent(const Name& name) const {
        const int number = ExtentNumber(name);
        return number == NameTable::kAbsent ? &noInstances_
                                            : ExtentByNumber(static_cast<std::size_t>(number));
    }

    // ---- Back references

    // Which instances refer to which through the attributes of a name; null where that is not
    // known, for want of memory or while references wait for their instances.
    template <class Name>
    const Relation* FindRelation(const Name& attribute) const {
        return RelationByNumber(schema_->AttributeNumber(attribute));
    }

    // The instances of an entity type, its subtypes included, that refer to `target` through the
    // attribute, in the order of their creation.
    std::vector<SdaiEntityInstance*> UsersOf(const SdaiEntityInstance& target, const SdaiName& type,
                                             const SdaiName& attribute) const;

    // Whether an instance of the model has been given a reference to one of another model.
    bool RefersOutside() const { return refersOutside_; }
    void NoteTarget(const SdaiEntityInstance& target);

    // From now on the model answers with whole extents, as where memory lacks.
    void ForgoRelations() { forgoesRelations_ = true; }

    static const Model& Of(const SdaiModel& model) { return static_cast<const Model&>(model); }
    static Model& Of(SdaiModel& model) { return static_cast<Model&>(model); }

  private:
    template <class Name>
    int ExtentNumber(const Name& name) const {
        return extentNumbers_.Find(name);
    }
    const SdaiAggrInstance* ExtentByNumber(std::size_t number) const;
    const Relation* RelationByNumber(int number) const;
    const Relation* MakeRelation(std::size_t number) const;
    void SettleRelations();
    ModelType& AddType(const EntityType& entity);
    std::uint64_t SmallestFreeId();
    bool MayAddOwn() const;
    const EntityType* AddOwn(std::unique_ptr<EntityType> entity);
    void AddExtent(const EntityType& entity);
    void ConnectReference(std::byte* place, std::uintptr_t kind);
    void Connect(std::uintptr_t chain, SdaiEntityInstance* instance);

    std::shared_ptr<const Schema> schema_;
    std::deque<ModelType> types_;
    std::vector<ModelType*> declaredTypes_;  // by the number of the entity type
    std::vector<ModelType*> ownTypes_;       // the same for the entity types below

    // Entity types that the schema does not declare: by name, then by number of values (none under
    // the name of a complex type); and those that are several types at once.
    std::vector<std::vector<const EntityType*>> undeclared_;
    std::map<std::vector<const EntityType*>, const EntityType*> complex_;
    std::vector<std::unique_ptr<EntityType>> ownEntities_;

    // Extents, numbered: first those of the schema's entity types, then of the model's own.
    NameTable extentNumbers_;
    std::vector<const EntityType*> extentEntities_;
    mutable std::deque<std::atomic<SdaiAggrInstance*>> extents_;
    mutable std::vector<std::size_t> madeExtents_;  // the numbers of those that are there
    mutable std::mutex extentMutex_;                // held while an extent is made
    SdaiAggrInstance noInstances_;

    // Relations, by the numbers that the schema gives the names of attributes.
    mutable std::vector<std::atomic<Relation*>> relations_;
    mutable std::vector<Relation*> madeRelations_;
    mutable std::mutex relationMutex_;  // held while a relation is made
    const Relation noRelation_{{}};     // for a name that no attribute has
    bool unsettled_ = false;            // references wait for their instances
    bool refersOutside_ = false;
    bool forgoesRelations_ = false;

    std::deque<Instance*> instances_;  // in the order of creation
    Arena aggregates_;
    IdTable ids_;
    std::vector<std::pair<Cell, std::uint64_t>> pendingTyped_;
    std::vector<Cell> retired_;
    std::uint64_t largestId_ = 0;
    std::uint64_t smallestFreeId_ = 1;  // none below it is free
    std::size_t inheritedByOwn_ = 0;  // attributes and supertypes, over the types of several types
};

}  // namespace kor

#endif
