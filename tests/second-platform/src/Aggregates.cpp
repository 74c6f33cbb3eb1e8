// Aggregates.

#include <algorithm>

#include "Models.h"
#include "SdaiAggrInstance.h"

SdaiAggrInstance::~SdaiAggrInstance() = default;

SdaiBoolean SdaiAggrInstance::IsMember(const SdaiPrimitiveH& value) const {
    for (const SdaiPrimitiveH& member : members_) {
        if (member == value) return sdaiTRUE;
    }
    return sdaiFALSE;
}

bool SdaiAggrInstance::IsMember(const SdaiEntityInstance* instance) const {
    return std::any_of(members_.begin(), members_.end(), [&](const SdaiEntityInstance* member) {
        return member != nullptr && member == instance;
    });
}

SdaiPrimitiveH SdaiAggrInstance::GetMember(long position) const {
    if (position < 0 || position >= GetMemberCount()) return {};
    return members_[static_cast<std::size_t>(position)];
}

void SdaiAggrInstance::Append(const SdaiPrimitiveH& value) {
    if (!extent_) members_.push_back(*second::Stored(value, nullptr));
}

void SdaiAggrInstance::RemoveAll() {
    if (extent_) return;
    removed_.insert(removed_.end(), members_.begin(), members_.end());
    members_.clear();
}

SdaiListClassOfSdaiReal::SdaiListClassOfSdaiReal(unsigned, unsigned) {}
SdaiListClassOfSdaiReal::~SdaiListClassOfSdaiReal() = default;
