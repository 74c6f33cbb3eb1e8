// Aggregates of the second platform: a plain vector of handles, with linear search. The operations
// are documented in the contract's header.

#ifndef SDAIAGGRINSTANCE_H
#define SDAIAGGRINSTANCE_H

#include <memory>
#include <vector>

#include "SdaiLogical.h"
#include "SdaiPrimitiveH.h"

namespace second {
class Model;
}

class KOR_API SdaiAggrInstance : public std::enable_shared_from_this<SdaiAggrInstance> {
  public:
    SdaiAggrInstance() = default;
    SdaiAggrInstance(const SdaiAggrInstance&) = delete;
    SdaiAggrInstance& operator=(const SdaiAggrInstance&) = delete;
    virtual ~SdaiAggrInstance();

    long GetMemberCount() const { return static_cast<long>(members_.size()); }
    SdaiBoolean IsMember(const SdaiPrimitiveH& value) const;
    bool IsMember(const SdaiEntityInstance* instance) const;
    SdaiPrimitiveH GetMember(long position) const;
    SdaiEntityInstance* GetInstanceMember(long position) const { return GetMember(position); }
    double GetRealMember(long position) const { return GetMember(position); }

    void Append(const SdaiPrimitiveH& value);
    void RemoveAll();
    void Reserve(long) {}

  private:
    friend class second::Model;

    std::vector<SdaiPrimitiveH> members_;
    std::vector<SdaiPrimitiveH> removed_;  // keeps removed aggregates alive
    bool extent_ = false;                  // only the model adds members
};

class KOR_API SdaiListClassOfSdaiReal : public SdaiAggrInstance {
  public:
    SdaiListClassOfSdaiReal(unsigned lowerBound, unsigned upperBound);
    ~SdaiListClassOfSdaiReal() override;

    void Append(const double& value) { SdaiAggrInstance::Append(value); }
};

#endif
