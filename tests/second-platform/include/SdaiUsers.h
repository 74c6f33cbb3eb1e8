// The users of an instance. The second platform keeps no back references: it visits every instance
// of the type, or every member of the aggregate, whatever the targets, as the contract allows.

#ifndef SDAIUSERS_H
#define SDAIUSERS_H

#include <span>

#include "SdaiAggrInstance.h"
#include "SdaiModel.h"
#include "SdaiName.h"

class SdaiIterator_Of_Users {
  public:
    using Targets = std::span<const SdaiEntityInstance* const>;

    explicit SdaiIterator_Of_Users(const SdaiAggrInstance* aggregate) : visited_(aggregate) {}
    SdaiIterator_Of_Users(const SdaiModel* model, const SdaiName& type, const SdaiName&, Targets)
        : visited_(model != nullptr ? model->GetEntityExtent(type) : nullptr) {}
    SdaiIterator_Of_Users(const SdaiModel* model, const SdaiName& type, const SdaiName&,
                          const SdaiName&, Targets)
        : visited_(model != nullptr ? model->GetEntityExtent(type) : nullptr) {}
    SdaiIterator_Of_Users(const SdaiAggrInstance* aggregate, const SdaiName&,
                          const SdaiEntityInstance*)
        : visited_(aggregate) {}
    SdaiIterator_Of_Users(const SdaiIterator_Of_Users&) = delete;
    SdaiIterator_Of_Users& operator=(const SdaiIterator_Of_Users&) = delete;

    void Fetch() {}
    SdaiBoolean Next() {
        if (visited_ != nullptr && position_ < visited_->GetMemberCount()) ++position_;
        return SdaiBoolean(visited_ != nullptr && position_ < visited_->GetMemberCount());
    }
    SdaiEntityInstance* GetCurrentMember() const {
        return visited_ != nullptr ? visited_->GetInstanceMember(position_) : nullptr;
    }

  private:
    const SdaiAggrInstance* visited_;
    long position_ = -1;
};

#endif
