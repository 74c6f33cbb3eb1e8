// Maps pointers to values: an open-addressed table, at most two thirds full. Pointers are never
// removed; the table is no larger than its contents require.

#ifndef KOR_POINTERTABLE_H
#define KOR_POINTERTABLE_H

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace kor {

template <class Value>
class PointerTable {
  public:
    // Returns null if the pointer is not in the table.
    const Value* Find(const void* pointer) const {
        if (groups_.empty()) return nullptr;
        // Most often a neighbour is sought next.
        __builtin_prefetch(&groups_[GroupOf(PieceOf(pointer) / kGroup + 1)]);
        const Entry& entry = At(PlaceOf(pointer));
        return entry.pointer != nullptr ? &entry.value : nullptr;
    }
    Value* Find(const void* pointer) {
        return const_cast<Value*>(static_cast<const PointerTable*>(this)->Find(pointer));
    }

    // Returns the value of a pointer, which must not be null, adding it if necessary. Valid until
    // the next pointer is added.
    Value& FindOrAdd(const void* pointer) {
        if (3 * (count_ + 1) > 2 * Size()) Reserve(std::max(2 * count_, kLeast));
        Entry& entry = At(PlaceOf(pointer));
        if (entry.pointer == nullptr) {
            entry.pointer = pointer;
            ++count_;
        }
        return entry.value;
    }

    // Makes room for `count` pointers.
    void Reserve(std::size_t count) {
        const std::size_t groups = (count + count / 2) / kGroup + 1;
        if (groups <= groups_.size()) return;
        std::vector<Group> old(groups);
        old.swap(groups_);
        const auto move = [this](Entry& entry) { At(PlaceOf(entry.pointer)) = std::move(entry); };
        ForEachEntry(old, move);
    }

    template <class Visit>
    void ForEach(Visit visit) {
        ForEachEntry(groups_, [&visit](Entry& entry) { visit(entry.pointer, entry.value); });
    }

    void Clear() {
        groups_ = std::vector<Group>();
        count_ = 0;
    }

  private:
    static constexpr std::size_t kLeast = 8;

    // Pointers into neighbouring pieces of memory have neighbouring places in one group, so that
    // what is sought in the order of memory is found in few cache lines.
    static constexpr std::size_t kGroup = 4;
    static constexpr std::size_t kPiece = 64;

    struct Entry {
        const void* pointer = nullptr;
        Value value{};
    };
    struct alignas(64) Group {
        Entry entries[kGroup];
    };

    template <class Visit>
    static void ForEachEntry(std::vector<Group>& groups, Visit visit) {
        for (Group& group : groups) {
            for (Entry& entry : group.entries) {
                if (entry.pointer != nullptr) visit(entry);
            }
        }
    }

    static std::uint64_t PieceOf(const void* pointer) {
        return reinterpret_cast<std::uintptr_t>(pointer) / kPiece;
    }

    std::size_t Size() const { return groups_.size() * kGroup; }
    Entry& At(std::size_t place) { return groups_[place / kGroup].entries[place % kGroup]; }
    const Entry& At(std::size_t place) const {
        return groups_[place / kGroup].entries[place % kGroup];
    }

    // The group of that many pieces.
    std::size_t GroupOf(std::uint64_t pieces) const {
        const std::uint64_t hash = pieces * 0x9E3779B97F4A7C15U;
        // The high bits of the hash as a fraction of the number of groups.
        return static_cast<std::size_t>(((hash >> 32) * groups_.size()) >> 32);
    }

    // The position of the pointer, or where to insert it: there is always an empty entry.
    std::size_t PlaceOf(const void* pointer) const {
        const std::uint64_t piece = PieceOf(pointer);
        std::size_t place = GroupOf(piece / kGroup) * kGroup + piece % kGroup;
        while (At(place).pointer != nullptr && At(place).pointer != pointer) {
            if (++place == Size()) place = 0;
        }
        return place;
    }

    std::vector<Group> groups_;
    std::size_t count_ = 0;
};

}  // namespace kor

#endif
