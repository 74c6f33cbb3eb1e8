// Memory that is allocated piece by piece and freed as a whole.

#ifndef KOR_ARENA_H
#define KOR_ARENA_H

#include <cstddef>
#include <vector>

#include "KORExport.h"

namespace kor {

class KOR_API Arena {
  public:
    Arena() = default;
    ~Arena();
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    // Uninitialised memory for an object of that size, aligned to 8 bytes.
    void* Allocate(std::size_t size) {
        void* memory = Reserve(size);
        chunks_.back().used += Rounded(size);
        return memory;
    }
    // The memory that the next call of Allocate with that size will return, without failing.
    void* Reserve(std::size_t size) {
        size = Rounded(size);
        if (chunks_.empty() || size > chunks_.back().size - chunks_.back().used) AddChunk(size);
        return chunks_.back().memory + chunks_.back().used;
    }

    // Takes over what another arena has allocated, after what this one has. Takes nothing if memory
    // runs out.
    void TakeOver(Arena& other) {
        ReserveFor(other);
        chunks_.insert(chunks_.end(), other.chunks_.begin(), other.chunks_.end());
        other.chunks_.clear();
    }
    // After this, taking over needs no memory.
    void ReserveFor(const Arena& other) { chunks_.reserve(chunks_.size() + other.chunks_.size()); }

    // Calls visit(memory) for every object, in order of allocation. All objects must have that
    // size.
    template <class Visit>
    void ForEach(std::size_t size, Visit visit) const {
        size = Rounded(size);
        for (const Chunk& chunk : chunks_) {
            for (std::size_t at = 0; at < chunk.used; at += size) visit(chunk.memory + at);
        }
    }

  private:
    struct Chunk {
        std::byte* memory;
        std::size_t size;
        std::size_t used;
    };

    static std::size_t Rounded(std::size_t size) { return (size + 7) & ~std::size_t{7}; }

    void AddChunk(std::size_t objectSize);

    std::vector<Chunk> chunks_;
    std::size_t nextSize_ = std::size_t{1} << 10;
};

}  // namespace kor

#endif
