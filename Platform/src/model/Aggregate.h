// Access to the members of an aggregate for the in-memory model and the exchange file readers.

#ifndef KOR_AGGREGATE_H
#define KOR_AGGREGATE_H

#include <atomic>
#include <cstddef>
#include <span>

#include "SdaiAggrInstance.h"
#include "model/Arena.h"
#include "model/Cell.h"

namespace kor {

class KOR_API AggregateAccess {
  public:
    using Layout = SdaiAggrInstance::Layout;

    // Creates an aggregate of these members and takes ownership of what they own. In an arena it is
    // part of a model; otherwise it is created with `new` and has one owner.
    static SdaiAggrInstance* Make(std::span<const Cell> members, bool selects, Arena* arena);
    // The same for reals that are part of a model.
    static SdaiAggrInstance* Make(std::span<const double> reals, bool selects, Arena& arena);

    // The extent of an entity type.
    static void MakeExtent(SdaiAggrInstance& aggregate) {
        aggregate.extent_ = true;
        aggregate.layout_ = Layout::Instances;
    }
    static void ReserveExtent(SdaiAggrInstance& extent, std::size_t count) { Grow(extent, count); }
    static void AppendToExtent(SdaiAggrInstance& extent, SdaiEntityInstance* instance);

    // The members of an extent, until the next instance is created in the model.
    static std::span<SdaiEntityInstance* const> ExtentMembers(const SdaiAggrInstance& extent) {
        return {Members<SdaiEntityInstance*>(extent), Count(extent)};
    }
    static bool HoldsSelects(const SdaiAggrInstance& aggregate) { return aggregate.selects_; }
    static Layout LayoutOf(const SdaiAggrInstance& aggregate) { return aggregate.layout_; }

    template <class T>
    static T* Members(const SdaiAggrInstance& aggregate) {
        return static_cast<T*>(aggregate.members_);
    }
    static std::size_t Count(const SdaiAggrInstance& aggregate) { return aggregate.count_; }

    // The index that finds instances among the members; null if there are few, or if memory runs
    // out.
    static const MemberIndex* IndexOf(const SdaiAggrInstance& aggregate);
    // Whether members may be instances of several models.
    static bool IsMixed(const SdaiAggrInstance& aggregate) { return aggregate.mixed_; }
    // Determines that from the members, which must be complete.
    static void NoteModels(SdaiAggrInstance& aggregate);

    // The member as a cell that owns nothing.
    static Cell MemberCell(const SdaiAggrInstance& aggregate, std::size_t position);

    static bool HasOwners(const SdaiAggrInstance& aggregate) {
        return aggregate.owners_.load(std::memory_order_relaxed) != 0;
    }
    static void AddOwner(SdaiAggrInstance& aggregate) {
        aggregate.owners_.fetch_add(1, std::memory_order_relaxed);
    }
    // Whether there is anything to release when a model gives up an aggregate: another owner, or
    // memory that is not the model's.
    static bool OwnsAnything(const SdaiAggrInstance& aggregate) {
        return aggregate.layout_ == Layout::Cells || aggregate.capacity_ != 0 || aggregate.keeps_ ||
               HasOwners(aggregate) || aggregate.index_.load(std::memory_order_relaxed) != nullptr;
    }
    // Removes an owner; the last one deletes the aggregate.
    static void RemoveOwner(SdaiAggrInstance& aggregate);

    static bool IsRealList(const SdaiAggrInstance& aggregate) { return aggregate.realList_; }
    static void MakeRealList(SdaiListClassOfSdaiReal& list) {
        list.layout_ = Layout::Reals;
        list.realList_ = true;
        list.members_ = list.inPlace_;
        list.capacity_ = SdaiListClassOfSdaiReal::kInPlace;
    }
    static void AppendReal(SdaiAggrInstance& aggregate, double value);

  private:
    static SdaiAggrInstance* MakeIn(Arena& arena, Layout layout, std::size_t count, bool selects);
    static void Grow(SdaiAggrInstance& aggregate, std::size_t count);
    static void MakeCells(SdaiAggrInstance& aggregate);
    static void FreeMembers(SdaiAggrInstance& aggregate);
    static void NoteMember(SdaiAggrInstance& aggregate, SdaiEntityInstance* instance);
    static void NoteModels(SdaiAggrInstance& aggregate, const SdaiEntityInstance* instance);
    static void DropIndex(SdaiAggrInstance& aggregate);
    static void ReleaseMembers(SdaiAggrInstance& aggregate);
    friend class ::SdaiAggrInstance;
    friend class ::SdaiListClassOfSdaiReal;
};

}  // namespace kor

#endif
