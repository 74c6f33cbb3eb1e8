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
        if (entries_.empty()) return nullptr;
        const Entry& entry = entries_[PlaceOf(pointer)];
        return entry.pointer != nullptr ? &entry.value : nullptr;
    }
    Value* Find(const void* pointer) {
        return const_cast<Value*>(static_cast<const PointerTable*>(this)->Find(pointer));
    }

    // Returns the value of a pointer, which must not be null, adding it if necessary. Valid until
    // the next pointer is added.
    Value& FindOrAdd(const void* pointer) {
        if (3 * (count_ + 1) > 2 * entries_.size()) Reserve(std::max(2 * count_, kLeast));
        Entry& entry = entries_[PlaceOf(pointer)];
        if (entry.pointer == nullptr) {
            entry.pointer = pointer;
            ++count_;
        }
        return entry.value;
    }

    // Makes room for `count` pointers.
    void Reserve(std::size_t count) {
        const std::size_t size = count + count / 2 + 1;
        if (size <= entries_.size()) return;
        std::vector<Entry> old(size);
        old.swap(entries_);
        for (Entry& entry : old) {
            if (entry.pointer != nullptr) entries_[PlaceOf(entry.pointer)] = std::move(entry);
        }
    }

    template <class Visit>
    void ForEach(Visit visit) {
        for (Entry& entry : entries_) {
            if (entry.pointer != nullptr) visit(entry.pointer, entry.value);
        }
    }

    void Clear() {
        entries_ = {};
        count_ = 0;
    }

  private:
    struct Entry {
        const void* pointer = nullptr;
        Value value{};
    };

    static constexpr std::size_t kLeast = 8;

    // The position of the pointer, or where to insert it: there is always an empty entry.
    std::size_t PlaceOf(const void* pointer) const {
        const std::uint64_t hash = reinterpret_cast<std::uintptr_t>(pointer) * 0x9E3779B97F4A7C15U;
        const std::size_t size = entries_.size();
        // The high bits of the hash as a fraction of the size.
        std::size_t place = static_cast<std::size_t>(((hash >> 32) * size) >> 32);
        while (entries_[place].pointer != nullptr && entries_[place].pointer != pointer) {
            if (++place == size) place = 0;
        }
        return place;
    }

    std::vector<Entry> entries_;
    std::size_t count_ = 0;
};

}  // namespace kor

#endif
