// Counts how often each instance is a member of a long aggregate.

#ifndef KOR_MEMBERINDEX_H
#define KOR_MEMBERINDEX_H

#include <cstdint>

#include "model/PointerTable.h"

class SdaiEntityInstance;

namespace kor {

class MemberIndex {
  public:
    void Reserve(std::size_t count) { counts_.Reserve(count); }
    void Add(const SdaiEntityInstance* instance) { ++counts_.FindOrAdd(instance); }

    std::uint32_t CountOf(const SdaiEntityInstance* instance) const {
        const std::uint32_t* count = counts_.Find(instance);
        return count != nullptr ? *count : 0;
    }

  private:
    PointerTable<std::uint32_t> counts_;
};

}  // namespace kor

#endif
