// Aggregates of the data access interface: LIST, SET, BAG and ARRAY values, and the extents of
// entity types, all as sequences of members in a fixed order.
//
// Ownership. An aggregate read from an instance, and every extent, belongs to its model and lives
// as long as the model, whether it came from a data set or from PutAttr, and even after another
// value has replaced it: handles, pointers and iterators to it stay valid. An aggregate created
// with `new` belongs to its creator until SdaiPrimitiveH::TakeOver passes it to handles. An
// aggregate on the stack is never owned by handles. Members that are instances are shared. Members
// that are aggregates live as long as the aggregate they were put into, even if it is cleared, or
// as long as handles own them.
//
// Any number of threads may read an aggregate that no thread writes.

#ifndef SDAIAGGRINSTANCE_H
#define SDAIAGGRINSTANCE_H

#include <atomic>
#include <cstddef>
#include <cstdint>

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

    // The member at a position, counted from 0; unset if the position is outside the aggregate.
    SdaiPrimitiveH GetMember(long position) const;
    // The same for a member that is an instance or a number; null or 0.0 for any other member.
    SdaiEntityInstance* GetInstanceMember(long position) const {
        if (layout_ == Layout::Instances && position >= 0 && position < GetMemberCount()) {
            return static_cast<SdaiEntityInstance**>(members_)[position];
        }
        return GetMember(position);
    }
    double GetRealMember(long position) const {
        if (layout_ == Layout::Reals && position >= 0 && position < GetMemberCount()) {
            return static_cast<double*>(members_)[position];
        }
        return GetMember(position);
    }

    // Appends a member. Has no effect on an extent, which grows as instances are created.
    void Append(const SdaiPrimitiveH& value);

    // Removes every member. Has no effect on an extent.
    void RemoveAll();

    // Makes room for `count` members, so that appending up to that number does not allocate.
    void Reserve(long count);

  private:
    friend class kor::AggregateAccess;

    // Members of one kind are stored as bare numbers or pointers, 8 bytes each; others as
    // kor::Cell.
    enum class Layout : std::uint8_t { Cells, Reals, Integers, Instances };

    void* members_ = nullptr;
    std::uint32_t count_ = 0;
    std::uint32_t capacity_ = 0;            // 0: the members are in memory of the model
    std::atomic<std::uint32_t> owners_{0};  // the handles that own the aggregate
    Layout layout_ = Layout::Cells;
    bool selects_ : 1 = false;   // the members are select values
    bool extent_ : 1 = false;    // read-only
    bool realList_ : 1 = false;  // an SdaiListClassOfSdaiReal
    bool mixed_ : 1 = false;     // members may be instances of several models
    bool keeps_ : 1 = false;     // keeps former members that are aggregates until it is destroyed
    // An index to find instances among many members; null until needed.
    mutable std::atomic<kor::MemberIndex*> index_{nullptr};
};

// A list of reals. Up to twelve, the size of a placement, are stored in the object itself: creating
// a list with `new` and filling it takes one allocation.
class KOR_API SdaiListClassOfSdaiReal : public SdaiAggrInstance {
  public:
    // An empty list. The bounds are documentation only; they are not enforced.
    SdaiListClassOfSdaiReal(unsigned lowerBound, unsigned upperBound);
    ~SdaiListClassOfSdaiReal();

    void Append(const double& value);

  private:
    friend class kor::AggregateAccess;

    static constexpr std::size_t kInPlace = 12;
    double inPlace_[kInPlace];
};

#endif
