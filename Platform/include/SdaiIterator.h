// Iterators over aggregates. An iterator is created on the stack, owns nothing and must not outlive
// its aggregate; a null aggregate has no members. It visits the members that the aggregate had when
// the iterator was created or `Beginning` was last called, in order. Members added later are not
// visited; if members are removed, the iteration ends at the new end.

#ifndef SDAIITERATOR_H
#define SDAIITERATOR_H

#include <algorithm>

#include "SdaiAggrInstance.h"

class SdaiIterInstance {
  public:
    explicit SdaiIterInstance(const SdaiAggrInstance* aggregate) : aggregate_(aggregate) {
        Beginning();
    }

    // Moves before the first member.
    void Beginning() {
        position_ = -1;
        end_ = aggregate_ != nullptr ? aggregate_->GetMemberCount() : 0;
    }

    // Moves to the next member; returns FALSE if there is none.
    SdaiBoolean Next() {
        if (aggregate_ != nullptr) end_ = std::min(end_, aggregate_->GetMemberCount());
        if (position_ < end_) ++position_;
        return SdaiBoolean(position_ < end_);
    }

    // The current member; unset if there is none.
    SdaiPrimitiveH GetCurrentValue() const {
        return aggregate_ != nullptr ? aggregate_->GetMember(Position()) : SdaiPrimitiveH();
    }

  protected:
    // The position of the current member; -1 past the end, since a member may have been added
    // there.
    long Position() const { return position_ < end_ ? position_ : -1; }

    const SdaiAggrInstance* aggregate_;
    long position_;
    long end_;
};

// The access that an iteration requests. The iterators only read, whichever mode is given.
enum SdaiAccessMode { sdaiRO, sdaiRW };

// Iterates over an aggregate of entity instances. For a select member, returns the instance that it
// holds.
class SdaiIterator_Of_SdaiEntityInstanceH : public SdaiIterInstance {
  public:
    explicit SdaiIterator_Of_SdaiEntityInstanceH(const SdaiAggrInstance* aggregate,
                                                 SdaiAccessMode = sdaiRO)
        : SdaiIterInstance(aggregate) {}

    // The current member; null if there is none or it is not an instance.
    SdaiEntityInstance* GetCurrentMember() const {
        return aggregate_ != nullptr ? aggregate_->GetInstanceMember(Position()) : nullptr;
    }
};

// Iterates over an aggregate of reals.
class SdaiIterator_Of_SdaiReal : public SdaiIterInstance {
  public:
    explicit SdaiIterator_Of_SdaiReal(const SdaiAggrInstance* aggregate, SdaiAccessMode = sdaiRO)
        : SdaiIterInstance(aggregate) {}

    // The current member; 0.0 if there is none or it is not a number.
    double GetCurrentMember() const {
        return aggregate_ != nullptr ? aggregate_->GetRealMember(Position()) : 0.0;
    }
};

#endif
