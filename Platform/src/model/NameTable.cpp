// Dictionary names: case folding and lookup tables.

#include "model/NameTable.h"

#include <algorithm>

namespace kor {

std::string Folded(std::string_view name) {
    std::string folded(name);
    for (char& c : folded) c = SdaiFoldCase(c);
    return folded;
}

bool IsWord(std::string_view text) {
    const auto belongs = [](char c) {
        const char folded = SdaiFoldCase(c);
        return (folded >= 'A' && folded <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    };
    return !text.empty() && std::all_of(text.begin(), text.end(), belongs);
}

bool NameTable::Add(std::string_view folded, std::size_t index) {
    if (Find(folded).has_value()) return false;
    if (2 * (size_ + 1) > entries_.size()) {
        std::vector<Entry> old(2 * entries_.size());
        old.swap(entries_);
        mask_ = entries_.size() - 1;
        for (const Entry& entry : old) {
            if (entry.index == kFree) continue;
            std::size_t i = entry.hash & mask_;
            while (entries_[i].index != kFree) i = (i + 1) & mask_;
            entries_[i] = entry;
        }
    }
    const std::uint32_t hash = SdaiNameHash(folded);
    std::size_t i = hash & mask_;
    while (entries_[i].index != kFree) i = (i + 1) & mask_;
    entries_[i] = {folded, hash, static_cast<std::uint32_t>(index)};
    ++size_;
    return true;
}

Index NameTable::Find(std::string_view name) const {
    const std::uint32_t hash = SdaiNameHash(name);
    for (std::size_t i = hash & mask_;; i = (i + 1) & mask_) {
        const Entry& entry = entries_[i];
        if (entry.index == kFree) return std::nullopt;
        if (entry.hash == hash && MatchesFolded(name, entry.name)) return entry.index;
    }
}

}  // namespace kor
