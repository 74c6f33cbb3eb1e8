// Aggregates of the data access interface: LIST, SET, BAG and ARRAY values, and the extents of
// entity types, all as runs of members in a fixed order.
//
// Ownership. An aggregate that was read from an instance, and every extent, belongs to its model
// and stays as long as the model does, whether a data set brought it or PutAttr, and also once
// another value has taken its place: handles, pointers and iterators on it go on giving its
// members. One that was made with `new` belongs to whoever made it until SdaiPrimitiveH::TakeOver
// gives it to handles. One that stands on the stack stays there. Members that are instances are
// shared. Members that are aggregates stay as long as the aggregate that they were put into, or as
// handles own it, whether it is cleared or not.
//
// Any number of threads may read an aggregate that no thread writes.

#ifndef SDAIAGGRINSTANCE_H
#define SDAIAGGRINSTANCE_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

#include "SdaiLogical.h"
#include "SdaiPrimitiveH.h"

class KOR_API SdaiAggrInstance {
  public:
    // An empty aggregate for members of any kind.
    SdaiAggrInstance() noexcept = default;
    SdaiAggrInstance(const SdaiAggrInstance&) = delete;
    SdaiAggrInstance& operator=(const SdaiAggrInstance&) = delete;
    ~SdaiAggrInstance();

    // The number of members; 0 for an empty aggregate.
    long GetMemberCount() const { return static_cast<long>(count_); }

    // Whether a member equals the value (for instances: is the same instance).
    SdaiBoolean IsMember(const SdaiPrimitiveH& value) const;
    bool IsMember(const SdaiEntityInstance* instance) const;

    // The member at a position counted from 0; unset outside the aggregate.
    SdaiPrimitiveH GetMember(long position) const;
    // The same for a member that is an instance or a number: null or 0.0 for any other.
    SdaiEntityInstance* GetInstanceMember(long position) const {
        if (layout_ == Layout::Instances && position >= 0 && position < GetMemberCount()) {
            return static_cast<SdaiEntityInstance**>(members_)[position];
        }
        return GetMember(position);
    }
    double GetRealMember(long position) const;

    // The members of an extent, side by side; none of any other aggregate. To be used until the
    // next instance is created in the model.
    std::span<SdaiEntityInstance* const> ExtentMembers() const {
        if (!extent_) return {};
        return {static_cast<SdaiEntityInstance* const*>(members_), count_};
    }

    // Adds a member at the end. An extent takes none: it grows as instances are created.
    void Append(const SdaiPrimitiveH& value);

    // Removes every member. An extent stays as it is.
    void RemoveAll();

    // Makes room for that many members, so that appending up to it allocates no more.
    void Reserve(long count);

  private:
    friend class KORAggregateAccess;  // the in-memory model

    // Members of one kind stand side by side as bare numbers or pointers, 8 bytes each; others as
    // cells of the in-memory model.
    enum class Layout : std::uint8_t { Cells, Reals, Integers, Instances };

    void* members_ = nullptr;
    std::uint32_t count_ = 0;
    std::uint32_t capacity_ = 0;            // 0: the members stand in memory of the model's
    std::atomic<std::uint32_t> owners_{0};  // the handles that own the aggregate
    Layout layout_ = Layout::Cells;
    bool selects_ : 1 = false;   // the members are select values
    bool extent_ : 1 = false;    // may not be written
    bool realList_ : 1 = false;  // an SdaiListClassOfSdaiReal
    bool mixed_ : 1 = false;     // members may be instances of several models
    bool keeps_ : 1 = false;     // aggregates that were members are kept until it goes
    // Finds instances among many members; null until it is needed.
    mutable std::atomic<class KORMemberIndex*> index_{nullptr};
};

// A list of reals. The twelve of a placement stand in the list itself: making one with `new` and
// filling it is one allocation.
class KOR_API SdaiListClassOfSdaiReal : public SdaiAggrInstance {
  public:
    // An empty list. The bounds document what the list is for; they are not enforced.
    SdaiListClassOfSdaiReal(unsigned lowerBound, unsigned upperBound);
    ~SdaiListClassOfSdaiReal();

    void Append(const double& value);

  private:
    friend class KORAggregateAccess;

    static constexpr std::size_t kInPlace = 12;
    double inPlace_[kInPlace];
};

#endif
