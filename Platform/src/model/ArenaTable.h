// Maps objects to values. Most objects of a large model lie in segments of arenas, where a value is
// found by the object's place in its segment, in a row as dense as the objects themselves; the
// others are in a table of pointers. Objects are never removed.

#ifndef KOR_ARENATABLE_H
#define KOR_ARENATABLE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "model/Arena.h"
#include "model/PointerTable.h"

namespace kor {

template <class Value>
class ArenaTable {
  public:
    // The value of an object; null, or a value as made by default, if it was not added.
    const Value* Find(const void* object) const {
        const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(object);
        if (const Row* row = rows_.Find(SegmentOf(address))) return &row->values[row->At(address)];
        return elsewhere_.Find(object);
    }
    Value* Find(const void* object) {
        return const_cast<Value*>(static_cast<const ArenaTable*>(this)->Find(object));
    }

    // Fetches the value of an object from memory if it lies in a segment. Always inline: g++ drops
    // calls of functions that do nothing but fetch.
    [[gnu::always_inline]] void Fetch(const void* object) const {
        const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(object);
        const Row* const row = rows_.Find(SegmentOf(address));
        if (row != nullptr) __builtin_prefetch(&row->values[row->At(address)]);
    }

    // Adds an object that was not found; its value is valid until the next object is added.
    Value& Add(const void* object) { return elsewhere_.FindOrAdd(object); }
    // Adds one by its place in an arena that the table does not outlive, with objects of that size
    // only. Then all of them are added so.
    Value& Add(const void* object, const Arena& arena, std::size_t size) {
        if (!arena.IsInSegment(object)) return Add(object);
        const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(object);
        auto values = std::make_unique<Value[]>(Blocks::kSegment / size + 1);
        Row& row = rows_.FindOrAdd(SegmentOf(address));
        row = {std::move(values), static_cast<std::uint32_t>(size)};
        return row.values[row.At(address)];
    }

    // Calls visit(value) for the value of every object, and possibly for values as made by default.
    template <class Visit>
    void ForEach(Visit visit) {
        rows_.ForEach([&visit](const void*, Row& row) {
            for (std::size_t i = 0; i <= Blocks::kSegment / row.size; ++i) visit(row.values[i]);
        });
        elsewhere_.ForEach([&visit](const void*, Value& value) { visit(value); });
    }

    void Clear() {
        rows_.Clear();
        elsewhere_.Clear();
    }

  private:
    // The values of the objects in a segment.
    struct Row {
        std::unique_ptr<Value[]> values;
        std::uint32_t size = 1;  // of an object

        // Wherever the first object begins, no two have the same place.
        std::size_t At(std::uintptr_t address) const {
            return static_cast<std::uint32_t>(address % Blocks::kSegment) / size;
        }
    };

    static const void* SegmentOf(std::uintptr_t address) {
        return reinterpret_cast<const void*>(address - address % Blocks::kSegment);
    }

    PointerTable<Row> rows_;
    PointerTable<Value> elsewhere_;
};

}  // namespace kor

#endif
