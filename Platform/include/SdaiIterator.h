// Iterators over aggregates. An iterator is built on the stack, owns nothing and must not outlive
// its aggregate; a null aggregate has no members. It visits the members that the aggregate had when
// `Beginning` was called (or the iterator was built), in their order; members added meanwhile are
// not visited, and members that were removed are not missed: where the aggregate has become shorter
// the iteration ends at its end.

#ifndef SDAIITERATOR_H
#define SDAIITERATOR_H

#include <algorithm>

#include "SdaiAggrInstance.h"

class SdaiIterInstance {
  public:
    explicit SdaiIterInstance(const SdaiAggrInstance* aggregate) : aggregate_(aggregate) {
        Beginning();
    }

    // Goes before the first member.
    void Beginning() {
        position_ = -1;
        end_ = aggregate_ != nullptr ? aggregate_->GetMemberCount() : 0;
    }

    // Goes to the next member; FALSE when there is none.
    SdaiBoolean Next() {
        if (aggregate_ != nullptr) end_ = std::min(end_, aggregate_->GetMemberCount());
        if (position_ < end_) ++position_;
        return SdaiBoolean(position_ < end_);
    }

    // The current member; unset where there is none.
    SdaiPrimitiveH GetCurrentValue() const {
        return aggregate_ != nullptr ? aggregate_->GetMember(Position()) : SdaiPrimitiveH();
    }

  protected:
    // Where the current member stands; nowhere, -1, past the end: a member may have been added.
    long Position() const { return position_ < end_ ? position_ : -1; }

    const SdaiAggrInstance* aggregate_;
    long position_;
    long end_;
};

// What an iteration may do with the aggregate. The iterators only read, whatever is asked for.
enum SdaiAccessMode { sdaiRO, sdaiRW };

// Over an aggregate of entity instances; a select member gives the instance that it holds.
class SdaiIterator_Of_SdaiEntityInstanceH : public SdaiIterInstance {
  public:
    explicit SdaiIterator_Of_SdaiEntityInstanceH(const SdaiAggrInstance* aggregate,
                                                 SdaiAccessMode = sdaiRO)
        : SdaiIterInstance(aggregate) {}

    // The current member; null where there is none or it is no instance.
    SdaiEntityInstance* GetCurrentMember() const {
        return aggregate_ != nullptr ? aggregate_->GetInstanceMember(Position()) : nullptr;
    }
};

// Over an aggregate of reals.
class SdaiIterator_Of_SdaiReal : public SdaiIterInstance {
  public:
    explicit SdaiIterator_Of_SdaiReal(const SdaiAggrInstance* aggregate, SdaiAccessMode = sdaiRO)
        : SdaiIterInstance(aggregate) {}

    // The current member; 0.0 where there is none or it is no number.
    double GetCurrentMember() const {
        return aggregate_ != nullptr ? aggregate_->GetRealMember(Position()) : 0.0;
    }
};

#endif
