// The in-memory model: instances as rows of cells. Instances of one type are contiguous in memory,
// so that an extent is read sequentially; the order of creation over all types is stored
// separately.

#ifndef KOR_MODEL_H
#define KOR_MODEL_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SdaiModel.h"
#include "model/Aggregate.h"
#include "model/Arena.h"
#include "model/Cell.h"
#include "model/Dictionary.h"
#include "model/IdTable.h"
#include "model/Relation.h"

namespace kor {

class Instance;
class Model;

// A relation of a model, and the slot in which a type stores its attribute.
struct RelatedSlot {
    std::size_t slot;
    Relation* relation;
};

// The data shared by the instances of one entity type in one model.
struct ModelType {
    ModelType(Model* ofModel, const EntityType& ofEntity, std::size_t ofNumber, Blocks& blocks)
        : model(ofModel),
          entity(&ofEntity),
          slotCount(ofEntity.Slots().size()),
          number(ofNumber),
          memory(blocks) {}

    Model* const model;
    const EntityType* const entity;
    const std::size_t slotCount;
    const std::size_t number;  // in the order in which the model first used its types
    mutable std::uint64_t instanceCount = 0;         // without subtypes
    mutable Arena memory;                            // for its instances
    mutable std::vector<SdaiAggrInstance*> extents;  // those created so far that list its instances
    mutable std::vector<RelatedSlot> relations;  // those created so far that contain its instances

    // Calls visit(instance) for every instance of exactly this type, in the order of creation.
    template <class Visit>
    void ForEachInstance(Visit visit) const;
};

// An instance, followed by its cells, one for each slot of its type.
class KOR_API Instance final : public SdaiAppInstance {
  public:
    Instance(const ModelType& type, std::uint64_t id, std::uint64_t order)
        : SdaiAppInstance(&type), id_(id), order_(order) {}

    const ModelType& Type() const {
        return *static_cast<const ModelType*>(SdaiEntityInstance::Type());
    }
    std::uint64_t Id() const { return id_; }
    // Its position in the model's order of creation.
    std::uint64_t Order() const { return order_; }
    Cell* Cells() { return reinterpret_cast<Cell*>(this + 1); }
    const Cell* Cells() const { return reinterpret_cast<const Cell*>(this + 1); }
    std::span<const Cell> Values() const { return {Cells(), Type().slotCount}; }
    void SetId(std::uint64_t id) { id_ = id; }
    void SetOrder(std::uint64_t order) { order_ = order; }
    static std::size_t Size(const ModelType& type) {
        return sizeof(Instance) + type.slotCount * sizeof(Cell);
    }

    // Fetches the memory that the first cells go on in, while the type is still looked up.
    void FetchCells() const {
        __builtin_prefetch(reinterpret_cast<const std::byte*>(this) + 64);
        FetchAhead(this);
    }

    // The slot of an attribute.
    template <class Name>
    Index SlotOf(const Name& attribute) const {
        return Type().entity->SlotOf(attribute);
    }
    SdaiPrimitiveH Read(Index slot) const {
        if (!slot) return {};
        return AttributeHandle(Cells()[*slot], Type().entity->Slots()[*slot].IsSelect());
    }
    bool HasValue(Index slot) const {
        return slot.has_value() && Cells()[*slot].GetTag() > Tag::Derived;
    }
    void Write(Index slot, const SdaiPrimitiveH& value);

    static const Instance& Of(const SdaiEntityInstance& instance) {
        return static_cast<const Instance&>(instance);
    }
    static Instance& Of(SdaiEntityInstance& instance) { return static_cast<Instance&>(instance); }

  private:
    std::uint64_t id_;
    std::uint64_t order_;
};

// The order of an extent.
inline bool IsCreatedBefore(const SdaiEntityInstance* a, const SdaiEntityInstance* b) {
    return Instance::Of(*a).Order() < Instance::Of(*b).Order();
}

template <class Visit>
void ModelType::ForEachInstance(Visit visit) const {
    memory.ForEach(Instance::Size(*this),
                   [&visit](std::byte* place) { visit(*reinterpret_cast<Instance*>(place)); });
}

class KOR_API Model final : public SdaiModel {
  public:
    // The largest instance name that is written to a data set. While a data set is read, larger
    // numbers may stand for names that are too large; they are renumbered at the end
    // (MoveToFreeId).
    static constexpr std::uint64_t kLargestId = 0x7FFF'FFFF'FFFF'FFFF;

    explicit Model(std::shared_ptr<const Schema> schema);
    ~Model() override;

    const Schema& GetSchema() const { return *schema_; }
    const std::shared_ptr<const Schema>& SharedSchema() const { return schema_; }

    // ---- Types

    // A limit on undeclared entity types and combinations of types, above what any real data set
    // has: a type takes many times more memory than its text in a file.
    static constexpr std::size_t kMostOwn = 10'000;

    // The declared entity type of that name, or an undeclared one of which the model has instances;
    // null if there is neither.
    template <class Name>
    const EntityType* FindEntity(const Name& name) const {
        const Index number = extentNumbers_.Find(name);
        return number ? extentEntities_[*number] : nullptr;
    }

    // The types of the model's instances so far.
    const std::deque<ModelType>& Types() const { return types_; }

    // The data for instances of an entity type of the schema or of this model; null for any other
    // type.
    const ModelType* TypeOf(const EntityType& entity) {
        const std::size_t number = entity.Number();
        for (const std::vector<ModelType*>* types : {&declaredTypes_, &ownTypes_}) {
            if (number >= types->size()) continue;
            const ModelType* const type = (*types)[number];
            if (type != nullptr && type->entity == &entity) return type;
        }
        return NewTypeOf(entity);
    }
    // An undeclared type whose instances have that many values. Null if the model has too many
    // types of its own (kMostOwn).
    const EntityType* UndeclaredEntity(std::string_view foldedName, std::size_t valueCount);
    // The type of instances that are of several types at once: declared ones and ones that the
    // schema does not declare, in alphabetical order. Null if the model has too many types of its
    // own, or if they inherit too much.
    const EntityType* ComplexEntity(const std::vector<const EntityType*>& parts);

    // ---- Instances

    // Creates an instance with these values and takes ownership of them. The instance name must be
    // free.
    Instance& Create(const ModelType& type, std::uint64_t id, std::span<const Cell> values);
    // Creates an instance without values, numbered one above the largest number or, if that is
    // impossible, with the smallest free one.
    Instance& Create(const ModelType& type);
    // Keeps a number free: an instance that the model numbers itself gets another.
    void KeepFree(std::uint64_t id) { keptFree_.insert(id); }
    // Renumbers an instance with the smallest free number, which is returned.
    std::uint64_t MoveToFreeId(SdaiEntityInstance& instance);

    // The instance with that instance name; null if there is none.
    SdaiEntityInstance* Find(std::uint64_t id) const { return ids_.Find(id); }

    std::uint64_t InstanceCount() const { return instanceCount_; }

    // Calls visit(instance) for every instance, in the order of creation.
    template <class Visit>
    void ForEachInstance(Visit visit) const {
        instances_.ForEach(sizeof(Instance*), [&visit](std::byte* listed) {
            visit(**reinterpret_cast<Instance**>(listed));
        });
    }

    // Makes this the order of creation: all instances of the model, each once. Only while the model
    // is being read, before an extent or relation is asked for.
    void PutInOrder(std::span<Instance* const> instances);

    // Keeps a former value until the model is destroyed, since handles may refer to it.
    void Retire(const Cell& cell) { retired_.push_back(cell); }

    // ---- Reading a data set

    // A reference to an instance that may not exist yet, for use as a value of Create or a member
    // of NewAggregate.
    Cell Reference(std::uint64_t id) {
        SdaiEntityInstance* instance = ids_.ForReference(id).Instance();
        return instance != nullptr ? Cell::Of(Tag::Instance, instance) : Cell::Of(Tag::Pending, id);
    }
    // Creates an aggregate of the model with these members and takes ownership of them.
    Cell NewAggregate(std::span<const Cell> members, bool selects);
    Cell NewAggregate(std::span<const double> reals, bool selects) {
        return Cell::Of(Tag::Aggregate, AggregateAccess::Make(reals, selects, aggregates_));
    }
    // Creates a select value with its defined type and takes ownership of the value.
    Cell NewTyped(SdaiString definedType, const Cell& value);
    // Sets the instance of the typed value once every instance exists.
    void AddPending(const Cell& typed, std::uint64_t id);
    // Returns the instance names that are referred to but have no instance, in ascending order, and
    // unsets references to them. Call once, after the last instance.
    std::vector<std::uint64_t> SettleReferences();

    // Takes over the instances of another model of the same schema, which was read from the next
    // part of the same data set: they are appended, and references of either model find their
    // instances in both. The other model is empty afterwards. Returns false and takes nothing if
    // both models have an instance of the same name, or if this one would have too many types of
    // its own. Call it before extents or back references of either model have been used.
    bool TakeOver(Model& part);

    // ---- Extents

    template <class Name>
    const SdaiAggrInstance* Extent(const Name& name) const {
        const Index number = extentNumbers_.Find(name);
        return number ? ExtentByNumber(*number) : &noInstances_;
    }

    // ---- Back references

    // The back references through the attributes of a name; null if they are not available because
    // memory ran out or references are still pending.
    template <class Name>
    const Relation* FindRelation(const Name& attribute) const {
        return RelationByNumber(schema_->AttributeNumber(attribute));
    }

    // The instances of an entity type and its subtypes that refer to `target` through the
    // attribute, in the order of creation.
    std::vector<SdaiEntityInstance*> UsersOf(const SdaiEntityInstance& target, const SdaiName& type,
                                             const SdaiName& attribute) const;

    // Whether an instance of the model refers, or once referred, to an instance of another model
    // through the attribute.
    template <class Name>
    bool RefersOutside(const Name& attribute) const {
        return std::any_of(outside_.begin(), outside_.end(), [&attribute](const auto& place) {
            return place.first->SlotOf(attribute) == place.second;
        });
    }
    // Call before an instance of the type refers to the target from that slot.
    void NoteTarget(const EntityType& type, std::size_t slot, const SdaiEntityInstance& target);

    // From now on the model returns whole extents, as if memory had run out.
    void ForgoRelations() { forgoesRelations_ = true; }

    static const Model& Of(const SdaiModel& model) { return static_cast<const Model&>(model); }
    static Model& Of(SdaiModel& model) { return static_cast<Model&>(model); }

  private:
    const SdaiAggrInstance* ExtentByNumber(std::size_t number) const;
    const Relation* RelationByNumber(Index number) const;
    const Relation* MakeRelation(std::size_t number) const;
    void SettleRelations();
    const ModelType* NewTypeOf(const EntityType& entity);
    ModelType& AddType(const EntityType& entity);
    std::uint64_t NextId();
    std::uint64_t SmallestFreeId();
    bool MayAddOwn() const;
    const EntityType* AddOwn(std::unique_ptr<EntityType> entity);
    void AddExtent(const EntityType& entity);
    const EntityType* OwnEntityLike(const EntityType& entity, const Model& of);
    void ConnectReference(std::byte* place, std::uintptr_t kind);
    void ConnectReferences(std::span<Cell> cells);
    static void Connect(std::uintptr_t chain, SdaiEntityInstance* instance);
    static void Append(std::uintptr_t chain, std::uintptr_t behind);

    std::shared_ptr<const Schema> schema_;
    Blocks blocks_;  // of the arenas below and those of the types
    std::deque<ModelType> types_;
    std::vector<ModelType*> declaredTypes_;  // by the index of the entity type
    std::vector<ModelType*> ownTypes_;       // the same for the entity types below

    // Undeclared entity types, by name and then by number of values (empty for the name of a
    // complex type), and complex types.
    std::vector<std::vector<const EntityType*>> undeclared_;
    std::map<std::vector<const EntityType*>, const EntityType*> complex_;
    std::vector<std::unique_ptr<EntityType>> ownEntities_;

    // Extents: first those of the schema's entity types, then those of the model's own types.
    NameTable extentNumbers_;
    std::vector<const EntityType*> extentEntities_;
    mutable std::deque<std::atomic<SdaiAggrInstance*>> extents_;
    mutable std::vector<std::size_t> madeExtents_;  // the numbers of existing extents
    mutable std::mutex extentMutex_;                // held while an extent is created
    SdaiAggrInstance noInstances_;

    // Relations, by the schema's index of the attribute name.
    mutable std::vector<std::atomic<Relation*>> relations_;
    mutable std::vector<Relation*> madeRelations_;
    mutable std::mutex relationMutex_;  // held while a relation is created
    const Relation noRelation_{{}};     // for a name that is not an attribute
    bool unsettled_ = false;            // references are pending
    // The slots from which instances have referred to instances of other models.
    std::set<std::pair<const EntityType*, std::size_t>> outside_;
    bool forgoesRelations_ = false;

    Arena instances_{blocks_};  // pointers to them, in the order of creation
    std::uint64_t instanceCount_ = 0;
    Arena aggregates_{blocks_};
    IdTable ids_;
    std::vector<std::pair<Cell, std::uint64_t>> pendingTyped_;
    std::vector<Cell> retired_;
    std::uint64_t largestId_ = 0;
    std::uint64_t smallestFreeId_ = 1;  // no number below it is free
    std::set<std::uint64_t> keptFree_;
    std::size_t inheritedByOwn_ = 0;  // attributes and supertypes, over all complex types
};

}  // namespace kor

#endif
