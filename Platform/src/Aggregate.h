// The members of an aggregate, as the in-memory model and the exchange file readers fill them.

#ifndef KOR_AGGREGATE_H
#define KOR_AGGREGATE_H

#include <cstddef>
#include <span>

#include "Arena.h"
#include "Cell.h"
#include "SdaiAggrInstance.h"

class KOR_API KORAggregateAccess {
  public:
    using Layout = SdaiAggrInstance::Layout;

    // An aggregate with these members, which takes over what they own. In an arena it is part of a
    // model; else it is made with `new` and has one owner.
    static SdaiAggrInstance* Make(std::span<const kor::Cell> members, bool selects,
                                  kor::Arena* arena);

    // The extent of an entity type.
    static void MakeExtent(SdaiAggrInstance& aggregate) {
        aggregate.extent_ = true;
        aggregate.layout_ = Layout::Instances;
    }
    static void ReserveExtent(SdaiAggrInstance& extent, std::size_t count) { Grow(extent, count); }
    static void AppendToExtent(SdaiAggrInstance& extent, SdaiEntityInstance* instance);

    static bool IsExtent(const SdaiAggrInstance& aggregate) { return aggregate.extent_; }
    static bool HoldsSelects(const SdaiAggrInstance& aggregate) { return aggregate.selects_; }
    static Layout LayoutOf(const SdaiAggrInstance& aggregate) { return aggregate.layout_; }

    template <class T>
    static T* Members(const SdaiAggrInstance& aggregate) {
        return static_cast<T*>(aggregate.members_);
    }
    static std::size_t Count(const SdaiAggrInstance& aggregate) { return aggregate.count_; }

    // What finds an instance among the members; null where they are few, or for want of memory.
    static const KORMemberIndex* IndexOf(const SdaiAggrInstance& aggregate);
    // Whether members may be instances of several models.
    static bool IsMixed(const SdaiAggrInstance& aggregate) { return aggregate.mixed_; }
    // Finds that out of members that are all there.
    static void NoteModels(SdaiAggrInstance& aggregate);

    // The member as a cell, which owns nothing.
    static kor::Cell MemberCell(const SdaiAggrInstance& aggregate, std::size_t position);

    static bool HasOwners(const SdaiAggrInstance& aggregate) {
        return aggregate.owners_.load(std::memory_order_relaxed) != 0;
    }
    static void AddOwner(SdaiAggrInstance& aggregate) {
        aggregate.owners_.fetch_add(1, std::memory_order_relaxed);
    }
    // Deletes the aggregate with its last owner.
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
    static void Grow(SdaiAggrInstance& aggregate, std::size_t count);
    static void MakeCells(SdaiAggrInstance& aggregate);
    static void FreeMembers(SdaiAggrInstance& aggregate);
    static void NoteMember(SdaiAggrInstance& aggregate, SdaiEntityInstance* instance);
    static void NoteModels(SdaiAggrInstance& aggregate, const SdaiEntityInstance* instance);
    static void DropIndex(SdaiAggrInstance& aggregate);
    static void ReleaseMembers(SdaiAggrInstance& aggregate);
    friend class SdaiAggrInstance;
    friend class SdaiListClassOfSdaiReal;
};

#endif
