// Dictionary names: case folding, hashing, and small lookup tables.

#ifndef KOR_NAMETABLE_H
#define KOR_NAMETABLE_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KORExport.h"
#include "SdaiName.h"

namespace kor {

// The name in upper case.
KOR_API std::string Folded(std::string_view name);

// Whether the characters of `name`, changed by `fold`, are those of `folded`. Compares eight at a
// time, without a call; the last eight overlap those before them.
template <class Fold>
bool Matches(std::string_view name, std::string_view folded, Fold fold) {
    const std::size_t size = name.size();
    if (size != folded.size()) return false;
    const auto matches = [&](std::size_t at) {
        std::uint64_t a;
        std::uint64_t b;
        std::memcpy(&a, name.data() + at, sizeof a);
        std::memcpy(&b, folded.data() + at, sizeof b);
        return fold(a) == b;
    };
    if (size < 8) {
        return std::equal(name.begin(), name.end(), folded.begin(),
                          [fold](char a, char b) { return fold(a) == b; });
    }
    for (std::size_t at = 0; at + 8 < size; at += 8) {
        if (!matches(at)) return false;
    }
    return matches(size - 8);
}

inline bool AreEqual(std::string_view a, std::string_view b) {
    return a.size() < 8 ? a == b : Matches(a, b, std::identity());
}

// Whether `name`, in upper case, equals `folded`.
inline bool MatchesFolded(std::string_view name, std::string_view folded) {
    return Matches(name, folded, [](auto characters) { return SdaiFoldCase(characters); });
}

// The index of what has a name; none if nothing has it.
using Index = std::optional<std::size_t>;

// Finds indexes by names: an open-addressed table that is at most half full. The names must be in
// upper case and outlive the table. Once built it may be read by any number of threads.
class KOR_API NameTable {
  public:
    // Adds a name unless the table has it already; returns whether it was added.
    bool Add(std::string_view folded, std::size_t index);

    Index Find(const SdaiName& name) const {
        for (std::size_t i = name.hash & mask_;; i = (i + 1) & mask_) {
            const Entry& entry = entries_[i];
            if (entry.index == kFree) return std::nullopt;
            if (entry.hash == name.hash && AreEqual(name.folded, entry.name)) return entry.index;
        }
    }

    // The name in any case.
    Index Find(std::string_view name) const;

    std::size_t Size() const { return size_; }

  private:
    static constexpr std::uint32_t kFree = 0xFFFF'FFFF;  // marks an entry without a name

    struct Entry {
        std::string_view name;
        std::uint32_t hash = 0;
        std::uint32_t index = kFree;
    };

    std::vector<Entry> entries_ = std::vector<Entry>(2);
    std::size_t mask_ = 1;
    std::size_t size_ = 0;
};

// Whether a text is a word, like enumeration items: letters, digits and underscores.
KOR_API bool IsWord(std::string_view text);

}  // namespace kor

#endif
